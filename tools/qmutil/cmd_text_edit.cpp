// qmutil text replace | find | fields | merge-field | sort-lines: the text scanning and
// replacement functions on files.
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "command.h"
#include "input_file.h"
#include "utils/common/utils_text.h"

namespace {

using Args = std::vector<std::string>;

// "-" is standard input.
std::string ReadFile(const std::string& path) { return qmutil::ReadInputFile(path, qmutil::kMaxTextBytes, true); }

void WriteFile(const std::string& path, const std::string& data) {
    qmutil::CheckOutputFile(path);
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out || !out.write(data.data(), (std::streamsize)data.size()))
        throw qmutil::UsageError("cannot write '" + path + "'");
}

void Print(const std::string& data) { std::fwrite(data.data(), 1, data.size(), stdout); }

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// With -e, arguments may spell control bytes: \r \n \t \\ and \xHH (two hex digits).
std::string Unescape(const std::string& s) {
    std::string out;
    for (size_t i = 0; i < s.size(); ++i) {
        if (s[i] != '\\') {
            out += s[i];
            continue;
        }
        if (i + 1 >= s.size()) throw qmutil::UsageError("a lone '\\' ends '" + s + "'");
        const char c = s[++i];
        switch (c) {
        case 'r': out += '\r'; break;
        case 'n': out += '\n'; break;
        case 't': out += '\t'; break;
        case '\\': out += '\\'; break;
        case 'x': {
            const int hi = i + 1 < s.size() ? HexDigit(s[i + 1]) : -1;
            const int lo = i + 2 < s.size() ? HexDigit(s[i + 2]) : -1;
            if (hi < 0 || lo < 0) throw qmutil::UsageError("'\\x' needs two hex digits in '" + s + "'");
            out += (char)(hi * 16 + lo);
            i += 2;
            break;
        }
        default: throw qmutil::UsageError(std::string("unknown escape '\\") + c + "' in '" + s + "'");
        }
    }
    return out;
}

// Splits flags (words starting with "--", "-e" and "-o FILE") from positional arguments; after
// a bare "--" every word is positional.
struct Parsed {
    Args positional;
    std::vector<std::string> flags;
    std::string output;  // -o FILE
    bool escapes = false;
    bool Has(const char* flag) const {
        for (const std::string& f : flags)
            if (f == flag) return true;
        return false;
    }
};

Parsed Parse(const Args& args, std::initializer_list<const char*> allowed, const char* usage) {
    Parsed p;
    bool optionsEnded = false;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (optionsEnded) {
            p.positional.push_back(p.escapes ? Unescape(a) : a);
        } else if (a == "--") {
            optionsEnded = true;
        } else if (a == "-e") {
            p.escapes = true;
        } else if (a == "-o") {
            if (i + 1 >= args.size()) throw qmutil::UsageError("-o needs a file name");
            p.output = args[++i];
        } else if (a.size() > 2 && a.compare(0, 2, "--") == 0) {
            bool ok = false;
            for (const char* f : allowed) ok = ok || a == f;
            if (!ok) throw qmutil::UsageError("unknown option '" + a + "' (usage: qmutil " + usage + ")");
            p.flags.push_back(a);
        } else {
            p.positional.push_back(p.escapes ? Unescape(a) : a);
        }
    }
    return p;
}

void Emit(const Parsed& p, const std::string& data) {
    if (p.output.empty()) Print(data);
    else WriteFile(p.output, data);
}

CString ToCString(const std::string& s) { return CString(s.data(), (int)s.size()); }

// --- replace -----------------------------------------------------------------------------

const char* const kReplaceUsage = "text replace FILE FIND REPLACEMENT [--case] [--truncate] [-e] [-o OUT]";

int RunReplace(const Args& args) {
    const Parsed p = Parse(args, {"--case", "--truncate"}, kReplaceUsage);
    if (p.positional.size() != 3) throw qmutil::UsageError(std::string("usage: qmutil ") + kReplaceUsage);
    if (p.positional[1].empty()) throw qmutil::UsageError("FIND must not be empty");
    CString text = ToCString(ReadFile(p.positional[0]));
    const int n = ReplaceString(text, ToCString(p.positional[1]), ToCString(p.positional[2]), p.Has("--truncate"),
                                p.Has("--case"));
    if (n < 0) {
        std::fprintf(stderr, "qmutil: the result would be too long (use --truncate)\n");
        return 1;
    }
    Emit(p, text.str());
    std::fprintf(stderr, "%d replaced\n", n);
    return 0;
}

// --- find ----------------------------------------------------------------------------------

const char* const kFindUsage = "text find FILE PATTERN [--skip-commands] [-e]";

int RunFind(const Args& args) {
    const Parsed p = Parse(args, {"--skip-commands"}, kFindUsage);
    if (p.positional.size() != 2) throw qmutil::UsageError(std::string("usage: qmutil ") + kFindUsage);
    const std::string text = ReadFile(p.positional[0]);
    const bool skip = p.Has("--skip-commands");
    // Every occurrence, each search starting one byte after the previous hit.
    int found = 0;
    for (const char* at = text.c_str();;) {
        const char* hit = skip ? InStringSkipCommands(p.positional[1].c_str(), at) : InString(p.positional[1].c_str(), at);
        if (!hit) break;
        std::printf("%ld\n", (long)(hit - text.c_str()));
        ++found;
        if (!*hit) break;
        at = hit + 1;
    }
    return found ? 0 : 1;
}

// --- fields / merge-field --------------------------------------------------------------------

const char* const kFieldsUsage = "text wrap-fields NAME DATAFILE TEMPLATEFILE [-e] [-o OUT]";

int RunFields(const Args& args) {
    const Parsed p = Parse(args, {}, kFieldsUsage);
    if (p.positional.size() != 3) throw qmutil::UsageError(std::string("usage: qmutil ") + kFieldsUsage);
    const std::string data = ReadFile(p.positional[1]);
    CString out = ToCString(ReadFile(p.positional[2]));
    ReplaceFields(p.positional[0].c_str(), data.c_str(), out);
    Emit(p, out.str());
    return 0;
}

const char* const kMergeUsage = "text merge-field TEMPLATEFILE MARKER VALUE [-e] [-o OUT]";

int RunMergeField(const Args& args) {
    const Parsed p = Parse(args, {}, kMergeUsage);
    if (p.positional.size() != 3) throw qmutil::UsageError(std::string("usage: qmutil ") + kMergeUsage);
    if (p.positional[1].empty()) throw qmutil::UsageError("MARKER must not be empty");
    CString out = ToCString(ReadFile(p.positional[0]));
    MergeFieldIntoText(out, ToCString(p.positional[1]), ToCString(p.positional[2]));
    Emit(p, out.str());
    return 0;
}

// --- sort-lines ------------------------------------------------------------------------------

const char* const kSortUsage = "text sort-lines FILE [--descending] [--ignore-case] [-o OUT]";

bool g_sortIgnoreCase = false;

int CompareLines(const void* a, const void* b) {
    const std::string& x = **static_cast<const std::string* const*>(a);
    const std::string& y = **static_cast<const std::string* const*>(b);
    if (!g_sortIgnoreCase) return x.compare(y);
    return CString(x).CompareNoCase(y.c_str());
}

int RunSortLines(const Args& args) {
    const Parsed p = Parse(args, {"--descending", "--ignore-case"}, kSortUsage);
    if (p.positional.size() != 1) throw qmutil::UsageError(std::string("usage: qmutil ") + kSortUsage);
    const std::string text = ReadFile(p.positional[0]);
    std::vector<std::string> lines;
    for (size_t start = 0; start < text.size();) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos) end = text.size();
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    // The records sorted are pointers to the lines; equal lines keep their order.
    std::vector<const std::string*> records;
    for (const std::string& l : lines) records.push_back(&l);
    g_sortIgnoreCase = p.Has("--ignore-case");
    ListMergeSort(records.data(), (unsigned)records.size(), sizeof(const std::string*), CompareLines,
                  p.Has("--descending") ? 0 : 1);
    std::string out;
    for (const std::string* l : records) out += *l + "\n";
    Emit(p, out);
    return 0;
}

// --- tour ------------------------------------------------------------------------------------

void ShowText(const char* label, const std::string& s) {
    std::string shown;
    for (char c : s) {
        if (c == '\r') shown += "\\r";
        else if (c == '\n') shown += "\\n";
        else if ((unsigned char)c < 32) {
            char buf[8];
            std::snprintf(buf, sizeof buf, "\\x%02X", (unsigned char)c);
            shown += buf;
        } else shown += c;
    }
    std::printf("%s%s\n", label, shown.c_str());
}

void TourTextEdit() {
    const std::string note = "Meeting notes: the NOTE about the note folder.";
    std::printf("(note.txt holds: %s)\n", note.c_str());
    qmutil::TourStep("text replace note.txt note annotation");
    CString s(note.c_str());
    const int n = ReplaceString(s, "note", "annotation", 0, 0);
    std::printf("%s\n%d replaced\n", s.GetString(), n);

    qmutil::TourStep("text replace note.txt note memo --case");
    s = note.c_str();
    const int k = ReplaceString(s, "note", "memo", 0, 1);
    std::printf("%s\n%d replaced\n", s.GetString(), k);

    const std::string data = "Contacts\nPERSON:\nJane Roe\nEditor\n\nPERSON:\nJohn Doe\n";
    const std::string tmpl = "Dear @1,\nyour role: {@2}; phone: {@3}.\n";  // the blank third line removes {@3}
    ShowText("(data.txt holds: ", data + ")");
    ShowText("(letter.txt holds: ", tmpl + ")");
    qmutil::TourStep("text wrap-fields person: data.txt letter.txt");
    CString out(tmpl.c_str());
    ReplaceFields("person:", data.c_str(), out);
    std::printf("%s", out.GetString());

    const std::string form = "Name: [{name        }] Room: [{room }]\n";
    ShowText("(form.txt holds: ", form + ")");
    qmutil::TourStep("text merge-field form.txt {name Ann");
    CString f(form.c_str());
    MergeFieldIntoText(f, "{name", "Ann");
    std::printf("%s", f.GetString());
}

const qmutil::Registrar kReplace({"text", "replace", "replace every occurrence of a text in a file",
                                  "usage: qmutil text replace FILE FIND REPLACEMENT [--case] [--truncate] [-e] [-o OUT]\n"
                                  "  Replaces every occurrence of FIND in FILE (\"-\" for standard input) and prints\n"
                                  "  the result (or writes it to OUT); the count goes to standard error.\n"
                                  "  --case      match case exactly (only when REPLACEMENT is not longer than FIND;\n"
                                  "              a longer replacement always matches regardless of case)\n"
                                  "  --truncate  when the result would exceed the maximum string length, replace\n"
                                  "              only the occurrences that fit instead of failing\n"
                                  "  -e          read \\r \\n \\t \\\\ and \\xHH in the arguments that follow\n"
                                  "  -o OUT      write the result to OUT byte for byte (a Windows console's\n"
                                  "              standard output turns each LF into CR LF)\n",
                                  RunReplace, TourTextEdit, 50});
const qmutil::Registrar kFind({"text", "find", "offsets of a text in a file, ignoring case",
                               "usage: qmutil text find FILE PATTERN [--skip-commands] [-e]\n"
                               "  Prints the byte offset of every occurrence of PATTERN, compared ignoring case.\n"
                               "  --skip-commands  pass over inline command runs (0x01 ... 0x02), also inside a\n"
                               "                   match. Exit code 1 when nothing is found.\n",
                               RunFind, nullptr, 51});
const qmutil::Registrar kFields({"text", "wrap-fields", "fill @1..@9 of a template from the lines after a name",
                                 "usage: qmutil text wrap-fields NAME DATAFILE TEMPLATEFILE [-e] [-o OUT]\n"
                                 "  Finds NAME in DATAFILE (inline command runs are skipped); the lines after it,\n"
                                 "  up to the next NAME, fill the markers @1 to @9 of TEMPLATEFILE. A marker in\n"
                                 "  braces, {@1}, loses its braces; a blank value removes the marker.\n",
                                 RunFields, nullptr, 52});
const qmutil::Registrar kMerge({"text", "merge-field", "replace a field marker in a template by a value",
                                "usage: qmutil text merge-field TEMPLATEFILE MARKER VALUE [-e] [-o OUT]\n"
                                "  Replaces MARKER (compared ignoring case) by VALUE. A marker \"{name\" is a field\n"
                                "  only when spaces and \"}\" follow it: the spaces are the width kept for the value.\n"
                                "  A blank VALUE removes the marker with its braces and padding.\n",
                                RunMergeField, nullptr, 53});
const qmutil::Registrar kSort({"text", "sort-lines", "sort the lines of a file (ties keep their order)",
                               "usage: qmutil text sort-lines FILE [--descending] [--ignore-case] [-o OUT]\n"
                               "  Sorts the lines byte-wise with the library's list merge sort; equal lines keep\n"
                               "  their order.\n",
                               RunSortLines, nullptr, 54});

}  // namespace

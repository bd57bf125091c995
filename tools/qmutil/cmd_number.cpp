// qmutil number format | parse | size | ordinal | alpha | escape | unescape: number texts.
#include <cerrno>
#include <cfloat>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "command.h"
#include "utils/common/utils_numbers.h"

namespace {

// Splits the arguments into positionals and the options the action knows; an option that
// takes a value reads the next argument. Anything else starting with "--" is refused.
struct Arguments {
    std::vector<std::string> positional;
    std::vector<std::pair<std::string, std::string>> options;

    bool Has(const char* name) const {
        for (const auto& o : options)
            if (o.first == name) return true;
        return false;
    }
    const std::string* Value(const char* name) const {
        for (const auto& o : options)
            if (o.first == name) return &o.second;
        return nullptr;
    }
};

Arguments Split(const std::vector<std::string>& args, const std::vector<std::string>& flags,
                const std::vector<std::string>& valued, const char* usage) {
    Arguments out;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (a.size() < 3 || a.compare(0, 2, "--") != 0) {
            out.positional.push_back(a);
            continue;
        }
        bool known = false;
        for (const std::string& f : flags)
            if (a == f) {
                out.options.push_back({a, ""});
                known = true;
            }
        for (const std::string& v : valued)
            if (a == v) {
                if (i + 1 >= args.size()) throw qmutil::UsageError("option " + a + " needs a value (usage: qmutil " + usage + ")");
                out.options.push_back({a, args[++i]});
                known = true;
            }
        if (!known) throw qmutil::UsageError("unknown option '" + a + "' (usage: qmutil " + usage + ")");
    }
    return out;
}

long ParseInRange(const std::string& text, const char* what, long low, long high) {
    long v = qmutil::ParseLong(text, what);
    if (v < low || v > high)
        throw qmutil::UsageError(std::string(what) + " " + text + " is out of range (" + std::to_string(low) + " to " +
                                 std::to_string(high) + ")");
    return v;
}

long long ParseInt64(const std::string& text, const char* what) {
    char* end = nullptr;
    errno = 0;
    long long v = std::strtoll(text.c_str(), &end, 10);
    if (text.empty() || *end || errno) throw qmutil::UsageError(std::string("invalid ") + what + " '" + text + "' (expected a 64-bit integer)");
    return v;
}

// ---- format -------------------------------------------------------------------------------

const char kFormatUsage[] = "number format NUMBER [--decimals N | --digits N | --width N [--hex]]";

int RunFormat(const std::vector<std::string>& args) {
    Arguments a = Split(args, {"--hex"}, {"--decimals", "--digits", "--width"}, kFormatUsage);
    if (a.positional.size() != 1) throw qmutil::UsageError(std::string("usage: qmutil ") + kFormatUsage);
    int modes = (a.Has("--decimals") ? 1 : 0) + (a.Has("--digits") ? 1 : 0) + (a.Has("--width") ? 1 : 0);
    if (modes > 1) throw qmutil::UsageError("choose one of --decimals, --digits and --width");
    if (a.Has("--hex") && !a.Has("--width")) throw qmutil::UsageError("--hex goes with --width");
    const std::string& number = a.positional[0];
    CString out;
    if (const std::string* d = a.Value("--decimals")) {
        Double2Str(qmutil::ParseDouble(number, "number"), out, (int)ParseInRange(*d, "decimals", 0, 4));
    } else if (const std::string* g = a.Value("--digits")) {
        fltstr(qmutil::ParseDouble(number, "number"), (int)ParseInRange(*g, "digits", 1, 24), out);
        if (out.IsEmpty()) throw qmutil::UsageError("the text of " + number + " with " + *g + " digits does not fit 24 characters");
    } else if (const std::string* w = a.Value("--width")) {
        int width = (int)ParseInRange(*w, "width", 1, 32);
        char buf[40];
        char* end;
        if (a.Has("--hex")) {
            long long v = ParseInt64(number, "number");
            if (v < 0 || v > 0xFFFFFFFFll) throw qmutil::UsageError("number " + number + " is out of range (0 to 4294967295)");
            end = numstrx((DWORD)v, buf, width);
        } else {
            end = numstr((LONG)qmutil::ParseLong(number, "number"), buf, width);
        }
        out = CString(buf, (int)(end - buf));
    } else {
        numstr_formatted((LONG)qmutil::ParseLong(number, "number"), out);
    }
    std::printf("%s\n", out.GetString());
    return 0;
}

void TourFormat() {
    const std::vector<std::vector<std::string>> steps = {
        {"1234567"}, {"-5000"}, {"3.14159", "--decimals", "2"}, {"0.5", "--decimals", "1"},
        {"1e10", "--digits", "5"}, {"-42", "--width", "4"}, {"31", "--width", "4", "--hex"}};
    for (const auto& s : steps) {
        std::string line = "number format";
        for (const std::string& part : s) line += " " + part;
        qmutil::TourStep(line.c_str());
        RunFormat(s);
    }
}

// ---- parse --------------------------------------------------------------------------------

int RunParse(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 1, "number parse TEXT");
    int decimals = 0;
    double v = StrToDouble(CString(args[0].c_str()), decimals);
    if (v == DBL_MIN) throw qmutil::UsageError("'" + args[0] + "' is not a number");
    CString text;
    fltstr(v, 15, text);
    std::printf("value     %s\ndecimals  %d\n", text.GetString(), decimals);
    return 0;
}

void TourParse() {
    for (const char* s : {"$12.50", "2.5e3", "12 apples"}) {
        std::string line = std::string("number parse \"") + s + "\"";
        qmutil::TourStep(line.c_str());
        try {
            RunParse({s});
        } catch (const qmutil::UsageError& e) {
            std::printf("qmutil: %s\n", e.what());
        }
    }
}

// ---- size ---------------------------------------------------------------------------------

int RunSize(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 1, "number size BYTES");
    long long bytes = ParseInt64(args[0], "byte count");
    CString up_to_g;
    GetSizeText(up_to_g, (double)bytes);
    std::printf("%s\n", kmgSize(bytes).GetString());
    if (up_to_g != kmgSize(bytes)) std::printf("(in a list of files: %s)\n", up_to_g.GetString());
    return 0;
}

void TourSize() {
    for (const char* s : {"500", "1536", "1048577", "5497558138880"}) {
        std::string line = std::string("number size ") + s;
        qmutil::TourStep(line.c_str());
        RunSize({s});
    }
}

// ---- ordinal and alpha --------------------------------------------------------------------

int RunOrdinal(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 1, "number ordinal N");
    long n = qmutil::ParseLong(args[0], "number");
    std::printf("%ld%s\n", n, NumSuffix((int)n).GetString());
    return 0;
}

void TourOrdinal() {
    for (const char* s : {"1", "12", "22", "113"}) {
        std::string line = std::string("number ordinal ") + s;
        qmutil::TourStep(line.c_str());
        RunOrdinal({s});
    }
}

const char kAlphaUsage[] = "number alpha N [--upper]";
constexpr long kAlphaMax = 26 * 100;  // at most 100 letters

int RunAlpha(const std::vector<std::string>& args) {
    Arguments a = Split(args, {"--upper"}, {}, kAlphaUsage);
    if (a.positional.size() != 1) throw qmutil::UsageError(std::string("usage: qmutil ") + kAlphaUsage);
    long n = ParseInRange(a.positional[0], "counter", 1, kAlphaMax);
    std::vector<char> buf((size_t)((n - 1) / 26 + 2));
    AlphaFormat(buf.data(), (int)n, a.Has("--upper") ? 1 : 0);
    std::printf("%s\n", buf.data());
    return 0;
}

void TourAlpha() {
    const std::vector<std::vector<std::string>> steps = {{"3"}, {"28"}, {"53", "--upper"}};
    for (const auto& s : steps) {
        std::string line = "number alpha";
        for (const std::string& part : s) line += " " + part;
        qmutil::TourStep(line.c_str());
        RunAlpha(s);
    }
}

// ---- escape and unescape ------------------------------------------------------------------

const char kEscapeUsage[] = "number escape TEXT [--extended]";
const char kUnescapeUsage[] = "number unescape TEXT [--extended] [--raw]";

int RunEscape(const std::vector<std::string>& args) {
    Arguments a = Split(args, {"--extended"}, {}, kEscapeUsage);
    if (a.positional.size() != 1) throw qmutil::UsageError(std::string("usage: qmutil ") + kEscapeUsage);
    std::printf("%s\n", atofa(CString(a.positional[0].c_str()), a.Has("--extended")).GetString());
    return 0;
}

// Control bytes are shown as "^X" (and DEL as "^?") so that the decoded text stays readable.
int RunUnescape(const std::vector<std::string>& args) {
    Arguments a = Split(args, {"--extended", "--raw"}, {}, kUnescapeUsage);
    if (a.positional.size() != 1) throw qmutil::UsageError(std::string("usage: qmutil ") + kUnescapeUsage);
    CString raw = fatoa(CString(a.positional[0].c_str()), a.Has("--extended"));
    if (a.Has("--raw")) {
        std::fwrite(raw.GetString(), 1, (size_t)raw.GetLength(), stdout);
        return 0;
    }
    std::string shown;
    for (int i = 0; i < raw.GetLength(); ++i) {
        unsigned char c = (unsigned char)raw[i];
        if (c < 32 || c == 127) {
            shown += '^';
            shown += c == 127 ? '?' : (char)(c + 64);
        } else {
            shown += (char)c;
        }
    }
    std::printf("%s\n", shown.c_str());
    return 0;
}

void TourEscape() {
    qmutil::TourStep("number escape \"$(printf 'a\\tb\\\\c\\033')\"");
    RunEscape({"a\tb\\c\x1B"});
    qmutil::TourStep("number escape \"$(printf '\\001bold\\002')\" --extended");
    RunEscape({"\x01" "bold\x02", "--extended"});
}

void TourUnescape() {
    for (const char* s : {"a\\tb\\x4a", "\\q\\\\"}) {
        std::string line = std::string("number unescape '") + s + "'";
        qmutil::TourStep(line.c_str());
        RunUnescape({s});
    }
}

qmutil::Registrar format({"number", "format", "grouped, fixed-decimal, significant-digit or fixed-width number text",
                          "usage: qmutil number format NUMBER [--decimals N | --digits N | --width N [--hex]]\n"
                          "  NUMBER alone         groups a 32-bit integer by thousands (\"1,234,567\"; values\n"
                          "                       below 1000, negatives included, are not grouped)\n"
                          "  --decimals 0..4      a real number with N decimals, cut rather than rounded, with\n"
                          "                       the user's decimal separator (\"0.5\" gives \".5\")\n"
                          "  --digits 1..24       N significant digits in the Windows runtime's form (\"1.e+010\")\n"
                          "  --width 1..32        exactly N zero-padded digits (a wider value keeps its lowest\n"
                          "                       digits); with --hex, upper-case hexadecimal of 0..4294967295\n",
                          RunFormat, TourFormat, 30});
qmutil::Registrar parse({"number", "parse", "read a decimal number, with an optional currency mark",
                         "usage: qmutil number parse TEXT\n"
                         "  Reads TEXT as a decimal number with the user's decimal separator; blanks around it\n"
                         "  and one \"$\" (or \"?\") before or after it are allowed. Prints the value and the count\n"
                         "  of characters after the point. Text that is not a number is refused (exit code 2).\n",
                         RunParse, TourParse, 31});
qmutil::Registrar size({"number", "size", "a byte count with K, M, G or T",
                        "usage: qmutil number size BYTES\n"
                        "  Prints BYTES (a 64-bit integer) in the largest unit up to T with one decimal,\n"
                        "  and, when it differs, the file-list form, which stops at G.\n",
                        RunSize, TourSize, 32});
qmutil::Registrar ordinal({"number", "ordinal", "1st, 2nd, 3rd, 4th ...",
                           "usage: qmutil number ordinal N\n  N is a 32-bit integer; negative numbers take the suffix of their magnitude.\n",
                           RunOrdinal, TourOrdinal, 33});
qmutil::Registrar alpha({"number", "alpha", "alphabetic list counter (a .. z, aa, bb ...)",
                         "usage: qmutil number alpha N [--upper]\n  N from 1 to 2600: 1 is \"a\", 26 \"z\", 27 \"aa\", 28 \"bb\".\n",
                         RunAlpha, TourAlpha, 34});
qmutil::Registrar escape({"number", "escape", "escape control bytes for one-line storage",
                          "usage: qmutil number escape TEXT [--extended]\n"
                          "  TAB, LF, CR and backslash become \\t \\n \\r \\\\, other bytes below 32 \\xHH;\n"
                          "  with --extended bytes 1 and 2 become \\b and \\e.\n",
                          RunEscape, TourEscape, 35});
qmutil::Registrar unescape({"number", "unescape", "decode escaped one-line text",
                            "usage: qmutil number unescape TEXT [--extended] [--raw]\n"
                            "  Reverses 'number escape'; unknown escapes are kept as they are. Control bytes\n"
                            "  in the result are shown as ^X unless --raw writes the bytes unchanged.\n",
                            RunUnescape, TourUnescape, 36});

}  // namespace

// qmutil path ...: the path algebra on Windows-style paths, with the Linux path a drive path
// names where that helps.
#include <cstdio>
#include <string>
#include <vector>

#include "command.h"
#include "path_output.h"
#include "utils/common/FileSystem.h"
#include "utils/platform/host.h"

namespace {

using Args = std::vector<std::string>;

int RunSplit(const Args& a) {
    qmutil::RequireArgs(a, 1, "path split PATH");
    CString p = a[0].c_str();
    std::printf("folder     %s\n", FileSystem::ExtractPath(p).GetString());
    std::printf("file       %s\n", FileSystem::ExtractFile(p).GetString());
    std::printf("name       %s\n", FileSystem::ExtractFileName(p).GetString());
    std::printf("extension  %s\n", FileSystem::ExtractExtension(p).GetString());
    std::printf("full path  %s\n", FileSystem::IsFullPath(p) ? "yes (holds a colon or a slash)" : "no");
    return 0;
}

int RunForm(const Args& a, const char* usage, int (*form)(CString&), const char* what) {
    qmutil::RequireArgs(a, 1, usage);
    CString p = a[0].c_str();
    if (!form(p)) return qmutil::ReportFailure(what, a[0]);
    std::printf("%s%s\n", p.GetString(), qmutil::NativeNote(p).c_str());
    return 0;
}

int RunFull(const Args& a) { return RunForm(a, "path full PATH", FileSystem::MakeFull, "full form"); }
int RunLong(const Args& a) { return RunForm(a, "path long PATH", FileSystem::MakeLong, "long form"); }
int RunShort(const Args& a) { return RunForm(a, "path short PATH", FileSystem::MakeShort, "short form"); }

int RunRel(const Args& a) {
    qmutil::RequireArgs(a, 2, "path rel FILE BASE-FILE   (a base folder ends in a backslash)");
    CString r = FileSystem::GetRelativePath(a[0].c_str(), a[1].c_str());
    std::printf("%s\n", r.IsEmpty() ? "(no relative form: keep the absolute path)" : r.GetString());
    return 0;
}

int RunAbs(const Args& a) {
    qmutil::RequireArgs(a, 2, "path abs RELATIVE BASE-FILE");
    std::printf("%s\n", FileSystem::GetAbsolutePath(a[0].c_str(), a[1].c_str()).GetString());
    return 0;
}

int RunCompact(const Args& a) {
    qmutil::RequireArgs(a, 2, "path compact PATH MAX");
    long max = qmutil::ParseLong(a[1], "maximum");
    if (max < 0 || max > 100000) throw qmutil::UsageError("maximum must be between 0 and 100000");
    CString out;
    FileSystem::CompactPath(a[0].c_str(), out, (unsigned)max);
    std::printf("%s\n", out.GetString());
    return 0;
}

int RunIncrement(const Args& a) {
    qmutil::RequireArgs(a, 1, "path increment PATH");
    std::printf("%s\n", FileSystem::IncrementFileName(a[0].c_str()).GetString());
    return 0;
}

int RunUnique(const Args& a) {
    qmutil::RequireArgs(a, 1, "path unique PATH");
    CString p = a[0].c_str();
    FileSystem::MakeUniqueFileName(p);
    std::printf("%s%s\n", p.GetString(), qmutil::NativeNote(p).c_str());
    return 0;
}

int RunDrive(const Args& a) {
    qmutil::RequireArgs(a, 1, "path drive PATH");
    std::printf("%s\n", FileSystem::ExtractDrive(a[0].c_str()).GetString());
    return 0;
}

int RunUnc(const Args& a) {
    qmutil::RequireArgs(a, 1, "path unc PATH");
    std::printf("%s\n", FileSystem::GetUniversalName(a[0].c_str()).GetString());
    return 0;
}

int RunQuote(const Args& a) {
    qmutil::RequireArgs(a, 1, "path quote TEXT");
    CString p = a[0].c_str();
    std::printf("%s\n", FileSystem::AddQuotes(p).GetString());
    return 0;
}

int RunUnquote(const Args& a) {
    qmutil::RequireArgs(a, 1, "path unquote TEXT");
    CString p = a[0].c_str();
    int removed = FileSystem::RemoveQuotes(p);
    std::printf("%s\n%s\n", p.GetString(), removed ? "(quotes removed)" : "(no leading quote: unchanged)");
    return 0;
}

int RunSearch(const Args& a) {
    qmutil::RequireArgs(a, 2, "path search FILE VARIABLE   (e.g. path search ls PATH)");
    CString found = FileSystem::SearchEnvironment(a[0].c_str(), a[1].c_str());
    if (found.IsEmpty()) {
        std::printf("%s: not found in the current folder or in %s\n", a[0].c_str(), a[1].c_str());
        return 1;
    }
    std::printf("%s%s\n", found.GetString(), qmutil::NativeNote(found).c_str());
    return 0;
}

void TourSplit() {
    qmutil::TourStep("path split C:\\v1.2\\archive.tar.gz");
    RunSplit({"C:\\v1.2\\archive.tar.gz"});
    qmutil::TourStep("path full Z:\\tmp\\..\\usr\\.\\bin");
    RunFull({"Z:\\tmp\\..\\usr\\.\\bin"});
}

void TourRelative() {
    qmutil::TourStep("path rel C:\\A\\B\\c.txt C:\\A\\x.doc");
    RunRel({"C:\\A\\B\\c.txt", "C:\\A\\x.doc"});
    qmutil::TourStep("path rel C:\\A\\B\\c.txt C:\\Other\\x.doc");
    RunRel({"C:\\A\\B\\c.txt", "C:\\Other\\x.doc"});
    qmutil::TourStep("path abs sub\\f.txt C:\\A\\x.doc");
    RunAbs({"sub\\f.txt", "C:\\A\\x.doc"});
}

void TourNames() {
    qmutil::TourStep("path compact C:\\some\\long\\folder\\name\\file.txt 20");
    RunCompact({"C:\\some\\long\\folder\\name\\file.txt", "20"});
    qmutil::TourStep("path increment C:\\d\\Report9.txt");
    RunIncrement({"C:\\d\\Report9.txt"});
}

qmutil::Registrar g_split({"path", "split", "folder, file name and extension of a path",
                           "usage: qmutil path split PATH\n"
                           "  The extension is taken after the last dot of the whole text.\n",
                           RunSplit, TourSplit, 80});
qmutil::Registrar g_full({"path", "full", "the full form (\".\" and \"..\" resolved, per-drive current folders)",
                          "usage: qmutil path full PATH\n", RunFull, nullptr, 0});
qmutil::Registrar g_long({"path", "long", "the long form of an existing path, as the disk spells it",
                          "usage: qmutil path long PATH\n", RunLong, nullptr, 0});
qmutil::Registrar g_short({"path", "short", "the short (8.3) form of an existing path",
                           "usage: qmutil path short PATH\n  Linux has no 8.3 names: the short form is the long one.\n",
                           RunShort, nullptr, 0});
qmutil::Registrar g_rel({"path", "rel", "a file's path relative to a base file's folder",
                         "usage: qmutil path rel FILE BASE-FILE\n"
                         "  Gives the rest below the base's folder, the drive-rooted form on the same\n"
                         "  drive, or nothing. A base folder must end in a backslash.\n",
                         RunRel, TourRelative, 81});
qmutil::Registrar g_abs({"path", "abs", "a relative path made absolute against a base file's folder",
                         "usage: qmutil path abs RELATIVE BASE-FILE\n", RunAbs, nullptr, 0});
qmutil::Registrar g_compact({"path", "compact", "shorten a path for display with an ellipsis",
                             "usage: qmutil path compact PATH MAX\n  MAX counts the terminating zero.\n",
                             RunCompact, TourNames, 82});
qmutil::Registrar g_increment({"path", "increment", "add one to the number that ends a file name",
                               "usage: qmutil path increment PATH\n", RunIncrement, nullptr, 0});
qmutil::Registrar g_unique({"path", "unique", "a name that nothing on the disk has yet (\"Report 2.txt\" ...)",
                            "usage: qmutil path unique PATH\n", RunUnique, nullptr, 0});
qmutil::Registrar g_drive({"path", "drive", "the drive or share root of a path",
                           "usage: qmutil path drive PATH\n", RunDrive, nullptr, 0});
qmutil::Registrar g_unc({"path", "unc", "a network drive path as \\\\server\\share\\...",
                         "usage: qmutil path unc PATH\n", RunUnc, nullptr, 0});
qmutil::Registrar g_quote({"path", "quote", "put a path between double quotes",
                           "usage: qmutil path quote TEXT\n", RunQuote, nullptr, 0});
qmutil::Registrar g_unquote({"path", "unquote", "take the double quotes off a path",
                             "usage: qmutil path unquote TEXT\n", RunUnquote, nullptr, 0});
qmutil::Registrar g_search({"path", "search", "find a file in the folders of an environment variable",
                            "usage: qmutil path search FILE VARIABLE\n"
                            "  The current folder first, then each folder the variable lists.\n",
                            RunSearch, nullptr, 0});

}  // namespace

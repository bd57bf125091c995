// qmutil temp list | add | clean: a temporary-file list file; qmutil sys: facts about the
// machine (version, name, free disk space, memory, elevation).
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <string>
#include <vector>

#include "command.h"
#include "input_file.h"
#include "utils/common/CVLogger.h"
#include "utils/common/TempList.h"
#include "utils/common/mfcutils.h"
#include "utils/common/utils.h"
#include "utils/platform/files.h"

namespace {

// A path as the library takes it: native absolute POSIX paths are turned into their
// Windows form ("/tmp/x" -> "Z:\tmp\x"); anything else is taken as it is.
std::string LibraryPath(const std::string& path) {
    if (path.empty() || path[0] != '/') return path;
    std::string windows;
    if (!qm::platform::ToWindowsPath(path.c_str(), windows)) throw qmutil::UsageError("no drive covers '" + path + "'");
    return windows;
}

// A list file holds paths of at most 259 characters a line; more than this is not a list.
constexpr std::uintmax_t kMaxListBytes = 16ull << 20;

const char kListUsage[] = "temp list FILE";

int RunList(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 1, kListUsage);
    qmutil::CheckInputFile(args[0], kMaxListBytes, true);
    CStringList paths;
    CTempList::ReadListFile(LibraryPath(args[0]).c_str(), paths);
    for (POSITION pos = paths.GetHeadPosition(); pos;) {
        const CString& path = paths.GetNext(pos);
        std::printf("%s%s\n", path.GetString(), FileExists(path) ? "" : "   (missing)");
    }
    return 0;
}

const char kAddUsage[] = "temp add FILE PATH...";

int RunAdd(const std::vector<std::string>& args) {
    if (args.size() < 2) throw qmutil::UsageError(std::string("usage: qmutil ") + kAddUsage);
    qmutil::CheckOutputFile(args[0]);
    std::error_code missing;
    if (std::filesystem::exists(args[0], missing)) qmutil::CheckInputFile(args[0], kMaxListBytes, true);
    CTempList list(LibraryPath(args[0]).c_str());
    for (size_t i = 1; i < args.size(); ++i) new CTempFile(LibraryPath(args[i]).c_str(), &list);
    std::printf("%d entries in %s\n", (int)list.GetCount(), list.GetListFileName().GetString());
    // The files stay for a later "temp clean" (or the host): the entries are let go without
    // deleting anything, and the list file keeps them.
    list.Detach(nullptr);
    return 0;
}

const char kCleanUsage[] = "temp clean FILE";

int RunClean(const std::vector<std::string>& args) {
    qmutil::RequireArgs(args, 1, kCleanUsage);
    qmutil::CheckInputFile(args[0], kMaxListBytes, true);
    CTempList list(LibraryPath(args[0]).c_str());
    int deleted = 0, count = (int)list.GetCount();
    for (POSITION pos = list.GetHeadPosition(); pos;)
        if (list.GetNext(pos)->FileExists()) ++deleted;
    list.RemoveAll();
    std::printf("%d entries, %d files deleted; %s is empty\n", count, deleted, list.GetListFileName().GetString());
    return 0;
}

std::string g_trace;
void CollectTrace(const char* text) { g_trace += text; }

const char kSysUsage[] = "sys [PATH]";

int RunSys(const std::vector<std::string>& args) {
    if (args.size() > 1) throw qmutil::UsageError(std::string("usage: qmutil ") + kSysUsage);
    // The free space is that of the path's drive: a path that does not exist would answer for
    // whatever else lies on that drive.
    if (!args.empty() && !FileExists(LibraryPath(args[0]).c_str()))
        throw qmutil::UsageError("'" + args[0] + "': no such file or folder");
    std::printf("version: %d.%d%s\n", GetOSVersionNum(), GetOSMinorVersionNum(), IsWinNT() ? " (NT family)" : "");
    std::printf("name: %s\n", GetOSName().GetString());
    ULONGLONG space = args.empty() ? FreeDiskSpace() : FreeDiskSpace(LibraryPath(args[0]).c_str(), 0);
    if (space == ~0ULL) std::printf("free disk space: unknown\n");
    else std::printf("free disk space: %llu bytes\n", (unsigned long long)space);
    g_trace.clear();
    CvTraceSink previous = SetCvTraceSink(&CollectTrace);
    TraceMemoryInfo();
    LogSecurityDetails();
    SetCvTraceSink(previous);
    std::printf("%s", g_trace.c_str());
    return 0;
}

void TourSys() {
    qmutil::TourStep("sys");
    RunSys({});
}

qmutil::Registrar list({"temp", "list", "show the entries of a temporary-file list file",
                        "usage: qmutil temp list FILE\n"
                        "  Reads FILE (e.g. tempfiles.lst, at most 16 MiB) by the library's rules and prints one\n"
                        "  path a line; files that do not exist are marked. Nothing is changed.\n",
                        RunList, nullptr, 70});
qmutil::Registrar add({"temp", "add", "register files in a temporary-file list file",
                       "usage: qmutil temp add FILE PATH...\n"
                       "  Adds each PATH to FILE (made when missing; at most 16 MiB); nothing is deleted.\n",
                       RunAdd, nullptr, 71});
qmutil::Registrar clean({"temp", "clean", "delete every file a temporary-file list names",
                         "usage: qmutil temp clean FILE\n"
                         "  Deletes the listed files (a file in its own subfolder of the temporary folder takes\n"
                         "  the subfolder) and leaves FILE empty. FILE must exist (at most 16 MiB).\n",
                         RunClean, nullptr, 72});
qmutil::Registrar sys({"sys", nullptr, "operating system, free disk space, memory and elevation",
                       "usage: qmutil sys [PATH]\n"
                       "  Prints the version and name of the system, the free disk space of PATH's drive (or of\n"
                       "  the current folder), the memory status and the process's elevation type.\n",
                       RunSys, TourSys, 73});

}  // namespace

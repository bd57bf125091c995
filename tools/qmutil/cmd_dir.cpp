// qmutil dir ...: folders, drives and iteration on Windows-style paths.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "command.h"
#include "path_output.h"
#include "utils/common/FileSystem.h"
#include "utils/platform/files.h"

namespace {

using Args = std::vector<std::string>;

int RunList(const Args& a) {
    if (a.size() > 1) throw qmutil::UsageError("usage: qmutil dir list [PATTERN]");
    // "Z:\tmp\*.txt" lists Z:\tmp with *.txt; a folder alone lists everything in it.
    CString pattern = a.empty() ? CString("*.*") : CString(a[0].c_str());
    CString folder = FileSystem::ExtractPath(pattern), mask = pattern.Mid(folder.GetLength());
    if (mask.IsEmpty() || (mask.FindOneOf("*?") < 0 && FileSystem::FileExists(pattern) &&
                           (qm::platform::GetFileAttributesA(pattern) & FILE_ATTRIBUTE_DIRECTORY))) {
        folder = pattern;
        mask = "*.*";
    }
    if (folder.IsEmpty()) folder = FileSystem::GetCurrentDirectory();
    std::printf("%s%s\n", FileSystem::CreateFilePath(folder, mask).GetString(), qmutil::NativeNote(folder).c_str());
    int count = 0;
    for (FileSystem::CFileItr it(folder, mask); it.IsValid(); it.Next(), ++count)
        std::printf("  %s%s\n", *it, it.IsDirectory() ? "\\" : "");
    std::printf("%d entr%s\n", count, count == 1 ? "y" : "ies");
    return 0;
}

int RunMake(const Args& a) {
    qmutil::RequireArgs(a, 1, "dir make PATH");
    if (FileSystem::FileExists(a[0].c_str())) {
        std::printf("%s already exists\n", a[0].c_str());
        return 1;
    }
    if (FileSystem::MakePath(a[0].c_str()) != 0) return qmutil::ReportFailure("make", a[0]);
    std::printf("created %s%s\n", a[0].c_str(), qmutil::NativeNote(a[0].c_str()).c_str());
    return 0;
}

int RunRemove(const Args& a) {
    qmutil::RequireArgs(a, 1, "dir remove PATH");
    // Only folders: the shell's delete would also take a file or a device, deleting it outright
    // where the trash cannot hold it.
    const DWORD attributes = qm::platform::GetFileAttributesA(a[0].c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) throw qmutil::UsageError("'" + a[0] + "': no such folder");
    if (!(attributes & FILE_ATTRIBUTE_DIRECTORY)) throw qmutil::UsageError("'" + a[0] + "': not a folder");
    if (!FileSystem::RemoveFolder(a[0].c_str())) return qmutil::ReportFailure("remove", a[0]);
    std::printf("removed %s (to the trash where it can go)\n", a[0].c_str());
    return 0;
}

int RunCopy(const Args& a) {
    qmutil::RequireArgs(a, 2, "dir copy SOURCE TARGET\\   (the target should end in a backslash)");
    if (!MFCFileSystem::CopyDirectory(a[0].c_str(), a[1].c_str())) return qmutil::ReportFailure("copy", a[0]);
    std::printf("copied the files of %s to %s\n", a[0].c_str(), a[1].c_str());
    return 0;
}

int RunTempFile(const Args& a) {
    qmutil::RequireArgs(a, 0, "dir tempfile");
    CString name = FileSystem::GetTempFileName();
    if (name.IsEmpty()) return qmutil::ReportFailure("tempfile", "the temporary folder");
    std::printf("%s%s\n", name.GetString(), qmutil::NativeNote(name).c_str());
    return 0;
}

int RunDrives(const Args& a) {
    qmutil::RequireArgs(a, 0, "dir drives");
    char* list = nullptr;
    FileSystem::GetDriveStrings(&list);
    if (!list) return qmutil::ReportFailure("drives", "this system");
    for (const char* d = list; *d; d += std::strlen(d) + 1) {
        std::string mapped = qm::platform::DriveMapping(d[0]);
        CString unc = FileSystem::GetUniversalName(CString(d, 2));
        std::printf("%s%s%s%s%s\n", d, mapped.empty() ? "" : "  = ", mapped.c_str(), unc.GetLength() > 2 ? "  " : "",
                    unc.GetLength() > 2 ? unc.GetString() : "");
    }
    std::free(list);
    return 0;
}

int RunCd(const Args& a) {
    if (a.size() > 1) throw qmutil::UsageError("usage: qmutil dir cd [PATH]");
    if (a.size() == 1 && !FileSystem::SetCurrentDirectory(a[0].c_str())) return qmutil::ReportFailure("cd", a[0]);
    CString cwd = FileSystem::GetCurrentDirectory();
    std::printf("%s%s\n", cwd.GetString(), qmutil::NativeNote(cwd).c_str());
    std::printf("drive %d\n", FileSystem::GetDrive());
    return 0;
}

void TourDrives() {
    qmutil::TourStep("dir drives");
    RunDrives({});
    qmutil::TourStep("dir cd Z:\\tmp");
    RunCd({"Z:\\tmp"});
}

qmutil::Registrar g_list({"dir", "list", "the entries of a folder that match a pattern",
                          "usage: qmutil dir list [PATTERN]\n"
                          "  PATTERN is a folder, a folder and a wildcard (Z:\\tmp\\*.txt) or a wildcard in\n"
                          "  the current folder. '*.*' matches names without a dot too.\n",
                          RunList, nullptr, 0});
qmutil::Registrar g_make({"dir", "make", "create a folder with its missing parents",
                          "usage: qmutil dir make PATH\n", RunMake, nullptr, 0});
qmutil::Registrar g_remove({"dir", "remove", "remove a folder and everything in it (to the trash)",
                            "usage: qmutil dir remove PATH\n", RunRemove, nullptr, 0});
qmutil::Registrar g_copy({"dir", "copy", "copy the files (not the subfolders) of a folder",
                          "usage: qmutil dir copy SOURCE TARGET\n"
                          "  Names are appended to TARGET as they are: end it in a backslash.\n",
                          RunCopy, nullptr, 0});
qmutil::Registrar g_temp({"dir", "tempfile", "create a fresh temporary file (QMxxxx.tmp)",
                          "usage: qmutil dir tempfile\n", RunTempFile, nullptr, 0});
qmutil::Registrar g_drives({"dir", "drives", "the drives, their Linux folders and network shares",
                            "usage: qmutil dir drives\n", RunDrives, TourDrives, 85});
qmutil::Registrar g_cd({"dir", "cd", "show (or change, for this run) the current folder",
                        "usage: qmutil dir cd [PATH]\n", RunCd, nullptr, 0});

}  // namespace

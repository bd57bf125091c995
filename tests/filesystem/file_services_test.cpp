// The platform's file services: Windows error codes and wildcard rules (checked against the
// system itself under Wine), and on POSIX the drive mapping, the trash and the mount table.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>
#include <string>

#include "fs_fixture.h"

namespace {

namespace fs = qm::platform;
using Names = std::set<std::string>;

class FileServices : public qmtest::TempFolderTest {};

TEST_F(FileServices, FailuresGiveTheWindowsErrorCodes) {
    Folder("d");
    Touch("d\\f.txt");
    Touch("other.txt");
    WIN32_FIND_DATAA data;
    struct Case {
        const char* what;
        std::function<bool()> call;  // true on success
        DWORD error;
    } cases[] = {
        {"attributes of a missing file", [&] { return fs::FileGetAttributes(At("missing")) != INVALID_FILE_ATTRIBUTES; }, 2},
        {"attributes below a missing folder", [&] { return fs::FileGetAttributes(At("none\\x")) != INVALID_FILE_ATTRIBUTES; }, 3},
        {"create an existing folder", [&] { return fs::FolderCreate(At("d"), nullptr) != 0; }, 183},
        {"create below a missing folder", [&] { return fs::FolderCreate(At("none\\d"), nullptr) != 0; }, 3},
        {"remove a folder that is not empty", [&] { return fs::FolderRemove(At("d")) != 0; }, 145},
        {"remove a file as a folder", [&] { return fs::FolderRemove(At("other.txt")) != 0; }, 267},
        {"delete a missing file", [&] { return fs::FileDelete(At("missing")) != 0; }, 2},
        {"delete a folder as a file", [&] { return fs::FileDelete(At("d")) != 0; }, 5},
        {"copy onto an existing file", [&] { return fs::FileCopy(At("other.txt"), At("d\\f.txt"), TRUE) != 0; }, 80},
        {"copy a missing file", [&] { return fs::FileCopy(At("missing"), At("new.txt"), FALSE) != 0; }, 2},
        {"move onto an existing file", [&] { return fs::FileMove(At("other.txt"), At("d\\f.txt")) != 0; }, 183},
        {"search a missing folder", [&] { return fs::FindFirstEntry(At("none\\*"), &data) != INVALID_HANDLE_VALUE; }, 3},
        {"search without a match", [&] { return fs::FindFirstEntry(At("*.zzz"), &data) != INVALID_HANDLE_VALUE; }, 2},
        {"current folder that is missing", [&] { return fs::FolderSetCurrent(At("none")) != 0; }, 2},
    };
    for (const auto& c : cases) {
        fs::SetLastError(0);
        EXPECT_FALSE(c.call()) << c.what;
        EXPECT_EQ(fs::GetLastError(), c.error) << c.what;
    }
    HANDLE h = fs::FindFirstEntry(At("d\\*"), &data);
    ASSERT_NE(h, INVALID_HANDLE_VALUE);
    while (fs::FindNextEntry(h, &data)) {
    }
    EXPECT_EQ(fs::GetLastError(), (DWORD)ERROR_NO_MORE_FILES);
    EXPECT_TRUE(fs::FindEnd(h));
    EXPECT_TRUE(fs::FileCopy(At("other.txt"), At("d\\f.txt"), FALSE));
    EXPECT_TRUE(fs::FileMove(At("d\\f.txt"), At("moved.txt")));
    EXPECT_EQ(fs::FileGetAttributes(At("d")) & FILE_ATTRIBUTE_DIRECTORY, (DWORD)FILE_ATTRIBUTE_DIRECTORY);
}

class Wildcards : public qmtest::TempFolderTest {
protected:
    struct Case { const char* pattern; Names matches; };
    void Check(std::initializer_list<Case> cases) {
        for (const char* f : {"a.txt", "b.TXT", "readme", "x.tar.gz", "ab", "abc.d"}) Touch(f);
        for (const auto& c : cases) {
            SCOPED_TRACE(c.pattern);
            Names found;
            WIN32_FIND_DATAA data;
            HANDLE h = fs::FindFirstEntry(At(c.pattern), &data);
            if (h != INVALID_HANDLE_VALUE) {
                do {
                    std::string name = data.cFileName;
                    if (name != "." && name != "..") found.insert(name);
                } while (fs::FindNextEntry(h, &data));
                fs::FindEnd(h);
            }
            EXPECT_EQ(found, c.matches);
        }
    }
};

TEST_F(Wildcards, MatchWithoutRegardToCase) {
    const Names all = {"a.txt", "b.TXT", "readme", "x.tar.gz", "ab", "abc.d"};
    Check({{"*", all}, {"*.*", all}, {"*.txt", {"a.txt", "b.TXT"}}, {"readme.*", {"readme"}},
           {"a*", {"a.txt", "ab", "abc.d"}}, {"??", {"ab"}}, {"*.gz", {"x.tar.gz"}}, {"x.*.gz", {"x.tar.gz"}},
           {"README", {"readme"}}, {"?b*", {"ab", "abc.d"}}, {"zz*", {}}});
}

#if !defined(_WIN32)
// The system's own rules for '?' before a dot or at the end and for a trailing dot; Wine's
// kernel treats these patterns more simply, so they are checked on the POSIX backend only.
TEST_F(Wildcards, PosixKeepsTheDosRulesOfTheSystem) {
    Check({{"*.", {"readme", "ab"}}, {"*.TXT?", {"a.txt", "b.TXT"}}, {"ab??", {"ab"}}, {"a??.d", {"abc.d"}},
           {"?.*", {"a.txt", "b.TXT", "x.tar.gz"}}});
}
#endif

TEST_F(FileServices, FullPathsResolveDotsAndSeparators) {
    struct Case {
        const char* path;
        const char* full;
        const char* name;  // where the file part starts, nullptr for none
    } cases[] = {
        {"Z:\\a\\.\\b\\..\\c", "Z:\\a\\c", "c"}, {"Z:\\a\\b\\", "Z:\\a\\b\\", nullptr}, {"Z:\\..\\..\\x", "Z:\\x", "x"},
        {"Z:/a//b", "Z:\\a\\b", "b"},         {"Z:\\a\\b.", "Z:\\a\\b", "b"},          {"Z:\\a\\b  ", "Z:\\a\\b", "b"},
        {"\\\\srv\\share\\..\\x", "\\\\srv\\share\\x", "x"},       {"Z:\\", "Z:\\", nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        char buffer[MAX_PATH];
        char* name = buffer;
        EXPECT_EQ(fs::PathGetFull(c.path, MAX_PATH, buffer, &name), (DWORD)std::strlen(c.full));
        EXPECT_STREQ(buffer, c.full);
        if (c.name) EXPECT_STREQ(name, c.name);
        else EXPECT_EQ(name, nullptr);
    }
    char tiny[4];
    EXPECT_EQ(fs::PathGetFull("Z:\\abc\\def", sizeof tiny, tiny, nullptr), 11u);  // the size needed
    DWORD needed = fs::FolderGetCurrent(0, nullptr);
    std::string cwd(needed, '\0');
    EXPECT_EQ(fs::FolderGetCurrent(needed, cwd.data()), needed - 1);
}

TEST_F(FileServices, TempFileNamesAndReadOnlyFiles) {
    CString folder = root.Left(root.GetLength() - 1);
    char name[MAX_PATH];
    // A number given is used (its low 16 bits) and nothing is created.
    EXPECT_EQ(fs::TempFileCreateName(folder, "QMXY", 0x1234A, name), 0x234Au);
    EXPECT_EQ(CString(name).CompareNoCase(At("QMX234A.tmp")), 0);
    EXPECT_FALSE(FileSystem::FileExists(name));
    // Numbers the system picks are created exclusively, so they never repeat.
    Names created;
    for (int i = 0; i < 40; ++i) {
        ASSERT_NE(fs::TempFileCreateName(folder, "Q", 0, name), 0u);
        EXPECT_TRUE(FileSystem::FileExists(name));
        created.insert(name);
    }
    EXPECT_EQ(created.size(), 40u);

    Touch("ro.txt");
    EXPECT_TRUE(fs::FileSetAttributes(At("ro.txt"), FILE_ATTRIBUTE_READONLY));
    EXPECT_NE(fs::FileGetAttributes(At("ro.txt")) & FILE_ATTRIBUTE_READONLY, 0u);
    EXPECT_FALSE(fs::FileDelete(At("ro.txt")));
    EXPECT_EQ(fs::GetLastError(), (DWORD)ERROR_ACCESS_DENIED);
    EXPECT_TRUE(fs::FileSetAttributes(At("ro.txt"), FILE_ATTRIBUTE_NORMAL));
    EXPECT_TRUE(fs::FileDelete(At("ro.txt")));
}

TEST_F(FileServices, ShellCopiesMovesRenamesAndDeletes) {
    Folder("src");
    Folder("src\\inner");
    Touch("src\\a.txt");
    Touch("src\\b.log");
    Touch("src\\inner\\c.txt");
    auto shell = [](UINT func, std::string from, std::string to) {
        from.push_back('\0');
        to.push_back('\0');
        SHFILEOPSTRUCTA op = {};
        op.wFunc = func;
        op.pFrom = from.c_str();
        op.pTo = to.size() > 1 ? to.c_str() : nullptr;
        op.fFlags = FOF_SILENT | FOF_NOCONFIRMATION | FOF_NOERRORUI | FOF_NOCONFIRMMKDIR;
        return fs::ShellFileOperation(&op);
    };
    EXPECT_EQ(shell(FO_COPY, At("src").GetString(), At("copy").GetString()), 0);  // a folder under a new name
    EXPECT_TRUE(FileSystem::FileExists(At("copy\\inner\\c.txt")));
    Folder("txt");
    EXPECT_EQ(shell(FO_COPY, At("src\\*.txt").GetString(), At("txt").GetString()), 0);  // matches into a folder
    EXPECT_TRUE(FileSystem::FileExists(At("txt\\a.txt")));
    EXPECT_FALSE(FileSystem::FileExists(At("txt\\b.log")));
    EXPECT_FALSE(FileSystem::FileExists(At("txt\\inner")));
    EXPECT_EQ(shell(FO_MOVE, At("copy\\b.log").GetString(), At("txt").GetString()), 0);  // into a folder
    EXPECT_TRUE(FileSystem::FileExists(At("txt\\b.log")));
    EXPECT_FALSE(FileSystem::FileExists(At("copy\\b.log")));
    EXPECT_EQ(shell(FO_RENAME, At("copy").GetString(), At("renamed").GetString()), 0);
    EXPECT_TRUE(FileSystem::FileExists(At("renamed\\inner\\c.txt")));
    std::string both = std::string(At("renamed")) + '\0' + std::string(At("txt"));
    EXPECT_EQ(shell(FO_DELETE, both, ""), 0);
    EXPECT_FALSE(FileSystem::FileExists(At("renamed")));
    EXPECT_FALSE(FileSystem::FileExists(At("txt")));
    EXPECT_NE(shell(FO_DELETE, At("missing").GetString(), ""), 0);
}

TEST(FileServiceText, SplitterAndJoinerNeverOverrun) {
    char drive[3], dir[8], name[8], ext[8];
    EXPECT_EQ(fs::SplitPathS("C:\\d\\n.e", drive, 3, dir, 8, name, 8, ext, 8), 0);
    EXPECT_STREQ(dir, "\\d\\");
    EXPECT_EQ(fs::SplitPathS("C:\\folder\\n.e", drive, 3, dir, 8, name, 8, ext, 8), ERANGE);
    EXPECT_STREQ(drive, "");
    EXPECT_STREQ(name, "");
    char out[8] = "stale";
    EXPECT_EQ(fs::MakePathS(out, sizeof out, "C", "d", "n", "e"), 0);
    EXPECT_STREQ(out, "C:d\\n.e");
    EXPECT_EQ(fs::MakePathS(out, sizeof out, "C:", "dir", "name", ".ext"), ERANGE);
    EXPECT_STREQ(out, "");
    char combined[MAX_PATH];
    EXPECT_STREQ(fs::PathJoin(combined, "C:\\a\\b", "..\\..\\..\\c"), "C:\\c");
    EXPECT_STREQ(fs::PathJoin(combined, "C:\\a\\b", "\\x"), "C:\\x");
    EXPECT_STREQ(fs::PathJoin(combined, "C:\\a", "D:\\y"), "D:\\y");
    EXPECT_EQ(fs::PathJoin(combined, "C:\\a", std::string(300, 'x').c_str()), nullptr);
}

#if !defined(_WIN32)

std::string NativeOf(const CString& windows) {
    std::string native;
    EXPECT_TRUE(fs::ToNativePath(windows, native));
    return native;
}

TEST_F(FileServices, PosixDrivesMapToFoldersWithTheirOwnCurrentFolder) {
    Folder("q");
    Folder("q\\Sub");
    Touch("q\\Sub\\File.txt");
    std::string qDir = NativeOf(At("q"));
    ASSERT_TRUE(fs::SetDriveMapping('q', qDir.c_str()));
    EXPECT_TRUE(FileSystem::FileExists("Q:\\sub\\FILE.TXT"));
    Touch("q\\.dotted");
    EXPECT_EQ(fs::FileGetAttributes("Q:\\.dotted"), (DWORD)(FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN));
    std::string windows;
    EXPECT_TRUE(fs::ToWindowsPath((qDir + "/Sub/./x/../File.txt").c_str(), windows));
    EXPECT_EQ(windows, "Q:\\Sub\\File.txt");  // the closest drive wins over Z:
    char drives[64];
    EXPECT_EQ(fs::DriveListStrings(sizeof drives, drives), 8u);
    EXPECT_EQ(std::string(drives, 8), std::string("Q:\\\0Z:\\\0", 8));

    ASSERT_TRUE(FileSystem::SetCurrentDirectory("Q:\\Sub"));
    ASSERT_TRUE(FileSystem::SetCurrentDirectory(At("")));
    EXPECT_STREQ(FileSystem::GetDriveCurrent(17), "Q:\\Sub\\");
    CString relative = "Q:File.txt";
    EXPECT_EQ(FileSystem::MakeFull(relative), 1);
    EXPECT_STREQ(relative, "Q:\\Sub\\File.txt");
    EXPECT_EQ(FileSystem::SetDrive(17), 1);
    EXPECT_STREQ(FileSystem::GetCurrentDirectory(), "Q:\\Sub\\");
    EXPECT_EQ(FileSystem::SetDrive(3), 0);  // C: is not mapped

    CFile found("Q:\\SUB\\file.TXT", CFile::modeRead);  // the framework's files go through the drives too
    found.Close();
    ASSERT_TRUE(fs::SetDriveMapping('Q', nullptr));
    CFile unmapped;
    CFileException error;
    EXPECT_FALSE(unmapped.Open("Q:\\Sub\\File.txt", CFile::modeRead, &error));
    EXPECT_EQ(error.m_cause, CFileException::fileNotFound);
    EXPECT_EQ(fs::FileGetAttributes("Q:\\Sub"), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(fs::GetLastError(), (DWORD)ERROR_PATH_NOT_FOUND);
    ASSERT_TRUE(fs::SetDriveMapping('Z', nullptr));
    EXPECT_FALSE(fs::ToWindowsPath("/tmp", windows));  // no drive covers it: not guessed
    char temp[MAX_PATH];
    EXPECT_EQ(fs::TempFolderGet(MAX_PATH, temp), 0u);
    fs::ReloadDriveMappings();
    EXPECT_EQ(fs::DriveMapping('z'), "/");
    EXPECT_EQ(fs::FileGetAttributes("Q:\\Sub"), INVALID_FILE_ATTRIBUTES);
}

TEST_F(FileServices, PosixRemoveFolderMovesItToTheTrashWithItsInfoFile) {
    Folder("data");
    Folder("doomed");
    Touch("doomed\\keep.txt", "restorable");
    std::string dataHome = NativeOf(At("data"));
    const char* saved = std::getenv("XDG_DATA_HOME");
    std::string savedValue = saved ? saved : "";
    setenv("XDG_DATA_HOME", dataHome.c_str(), 1);
    std::string original = NativeOf(At("doomed"));
    EXPECT_EQ(FileSystem::RemoveFolder(At("doomed\\")), 1);
    Folder("doomed");  // a second folder of the same name gets the next trash name
    EXPECT_EQ(FileSystem::RemoveFolder(At("doomed")), 1);
    if (saved) setenv("XDG_DATA_HOME", savedValue.c_str(), 1);
    else unsetenv("XDG_DATA_HOME");

    EXPECT_FALSE(FileSystem::FileExists(At("doomed")));
    std::ifstream kept(dataHome + "/Trash/files/doomed/keep.txt");
    std::string text;
    kept >> text;
    EXPECT_EQ(text, "restorable");
    for (const char* entry : {"doomed", "doomed.2"}) {
        std::ifstream info(dataHome + "/Trash/info/" + entry + ".trashinfo");
        std::stringstream content;
        content << info.rdbuf();
        EXPECT_EQ(content.str().rfind("[Trash Info]\nPath=" + original + "\nDeletionDate=", 0), 0u) << entry;
        EXPECT_TRUE(FileSystem::FileExists(At("data\\Trash\\files\\") + entry));
    }
}

TEST(FileServiceText, PosixMountTableGivesShareNames) {
    const std::string table =
        "/dev/sda1 / ext4 rw 0 0\n"
        "//fileserver/Public /mnt/pub cifs rw 0 0\n"
        "nas:/export/home /mnt/my\\040home nfs4 rw 0 0\n"
        "tmpfs /mnt/pub/cache tmpfs rw 0 0\n"
        "//old/gone /mnt/re cifs rw 0 0\n"
        "/dev/sdb1 /mnt/re ext4 rw 0 0\n";
    struct Case { const char* dir; const char* remote; } cases[] = {
        {"/mnt/pub", "\\\\fileserver\\Public"}, {"/mnt/pub/", "\\\\fileserver\\Public"},
        {"/mnt/pub/docs/x", "\\\\fileserver\\Public\\docs\\x"}, {"/mnt/my home/a", "\\\\nas\\export\\home\\a"},
        {"/mnt/pub/cache", ""},  // a local mount inside the share
        {"/mnt/re", ""},         // the later mount hides the share
        {"/home", ""},
    };
    for (const auto& c : cases) EXPECT_EQ(fs::RemoteNameFromMountTable(table, c.dir), c.remote) << c.dir;
}

#endif

}  // namespace

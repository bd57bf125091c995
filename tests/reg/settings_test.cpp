#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "tests/reg/reg_env.h"
#include "tests/support/recording_sink.h"
#include "utils/common/FileSystem.h"
#include "utils/common/mfcutils.h"
#include "utils/common/utils.h"
#include "utils/platform/files.h"
#include "utils/platform/host.h"

using namespace regtest;

namespace {

const char kValue[] = "FilesToDeleteOnStart";

CString Pending() { return ReadFromRegistry(GetQMKey(), kValue, "<none>"); }

}  // namespace

// Registrations against a model of the value: paths joined by one carriage return, and a
// list of 200 characters or more no longer readable, so replaced by the next path.
TEST(DeferredDeletion, RegistrationsFollowTheValueModel) {
    DeleteFromRegistry(GetQMKey(), kValue);
    std::string model;
    for (int i = 0; i < 30; ++i) {
        std::string path = File("pending" + std::to_string(i) + ".tmp");
        DeleteFileOnNextStartIfExists(path.c_str());
        model = model.size() >= 200 || model.empty() ? path : model + "\r" + path;
        ASSERT_EQ(std::string(Pending()), model.size() < 200 ? model : "<none>") << i;
    }
    DeleteFromRegistry(GetQMKey(), kValue);
}

TEST(DeferredDeletion, DeletesListedFilesSkipsEmptyPiecesAndRemovesTheValue) {
    const std::string a = File("a.tmp"), b = File("b.tmp"), kept = File("kept.tmp");
    for (const auto& f : {a, b, kept}) WriteFile(f, "x");
    DeleteFromRegistry(GetQMKey(), kValue);
    DeleteFileOnNextStartIfExists(a.c_str());
    DeleteFileOnNextStartIfExists(File("missing.tmp").c_str());
    EXPECT_EQ(std::string(Pending()), a + "\r" + File("missing.tmp"));
    DeleteFilesOnStart();
    EXPECT_FALSE(Exists(a));
    EXPECT_FALSE(IsInRegistry(GetQMKey(), kValue, nullptr));

    WriteFile(a, "x");
    WriteToRegistry(GetQMKey(), kValue, CString((a + "\r\r" + b).c_str()));
    DeleteFilesOnStart();
    EXPECT_FALSE(Exists(a));
    EXPECT_FALSE(Exists(b));
    EXPECT_TRUE(Exists(kept));

    WriteToRegistry(GetQMKey(), kValue, "");  // an empty value stays
    DeleteFilesOnStart();
    EXPECT_TRUE(IsInRegistry(GetQMKey(), kValue, nullptr));
    DeleteFromRegistry(GetQMKey(), kValue);
}

TEST(Locations, FolderIniNameAndDataPathOverTheDocumentsFolder) {
    struct { const char* path; const char* folder; } cases[] = {{"C:\\dir\\f.txt", "C:\\dir"}, {"C:\\f.txt", "C:\\"}, {"f.txt", ""},      {"\\f.txt", ""},
                 {"C:\\a\\b\\", "C:\\a\\b"},    {"ab\\f", "ab"},        {"x:\\", "x:\\"}, {"", ""}};
    for (auto& c : cases) EXPECT_EQ(GetFolderLocation(c.path), c.folder) << c.path;
    EXPECT_EQ(GetIniFileName(), "test_reg.ini");
    DeleteFromRegistry(GetQMKey(), "DataPath");
    DeleteFromRegistry(GetPriorVersionQMKey(), "DataPath");
    const CString documents = GetAssertFileDirectory();
    ASSERT_GT(documents.GetLength(), (int)strlen("\\Quillmark Desk\\"));
    EXPECT_EQ(documents.Right(16), "\\Quillmark Desk\\");
    EXPECT_EQ(GetProgramSettingsDirectory(), documents);
    EXPECT_EQ(GetPriorVersionSettingsDirectory(), "");
    WriteToRegistry(GetQMKey(), "DataPath", "D:\\Data");
    WriteToRegistry(GetPriorVersionQMKey(), "DataPath", "E:\\Old\\");
    EXPECT_EQ(GetProgramSettingsDirectory(), "D:\\Data\\");
    EXPECT_EQ(GetPriorVersionSettingsDirectory(), "E:\\Old\\");
    EXPECT_EQ(GetAssertFileDirectory(), documents);
    DeleteFromRegistry(GetQMKey(), "DataPath");
    DeleteFromRegistry(GetPriorVersionQMKey(), "DataPath");
}

TEST(Files, AlternateAndUniqueNamesLengthAndExistence) {
    const std::string base = File("alt.txt");
    WriteFile(File("alt0.txt"), "");
    WriteFile(File("alt1.txt"), "");
    CString name = base.c_str();
    EXPECT_EQ(GenerateAlternateName(name), 1);
    EXPECT_EQ(std::string(name), File("alt2.txt"));

    char folder[MAX_PATH + 1] = {};
    qm::platform::TempFolderGet(MAX_PATH, folder);
    const std::string taken = std::string(folder) + "qm-unique-test.tmp";
    WriteFile(taken, "");
    CString temp = "Z:\\nowhere\\qm-unique-test.tmp";
    GetUniqueTempFileName(temp);
    EXPECT_EQ(std::string(temp), std::string(folder) + "qm-unique-test0.tmp");
    qm::platform::FileDelete(taken.c_str());

    WriteFile(File("len.bin"), std::string(1234, 'z'));
    EXPECT_EQ(GetFileLength(File("len.bin").c_str()), 1234u);
    EXPECT_EQ(GetFileLength(File("none.bin").c_str()), 0u);
    EXPECT_TRUE(FileExists(regtest::Folder().c_str()));
    qmtest::RecordingAssertSink asserts;
    EXPECT_FALSE(FileExists(nullptr));
    EXPECT_EQ(asserts.Reports().at(0).module + ": " + asserts.Reports()[0].expression, "Common\\utils: NULL != lpszFileSpec");
}

TEST(Files, LoadFileToStringConvertsOnlySignedUtf16) {
    // "Aé€" in UTF-16LE with the signature, and an odd trailing byte that is ignored.
    const std::string utf16("\xFF\xFE" "A\0\xE9\0\xAC\x20\x3A\x26" "Z", 11);
    struct { std::string bytes; bool convert; std::string text; } cases[] = {
        {utf16, true, "A\xE9\x80?"},
        {utf16, false, utf16},
        {"plain\r\nbytes\x80", true, "plain\r\nbytes\x80"},
        {std::string("\xFE\xFF\0A", 4), true, std::string("\xFE\xFF\0A", 4)},  // big-endian: as it is
        {std::string("\xFF\xFE", 2), true, ""},
        {"", true, ""},
    };
    for (auto& c : cases) {
        WriteFile(File("load.txt"), c.bytes);
        CString text = "old";
        LoadFileToString(text, File("load.txt").c_str(), c.convert);
        EXPECT_EQ(std::string(text.GetString(), (size_t)text.GetLength()), c.text);
    }
    CString text = "old";
    EXPECT_EQ(LoadFileToString(text, File("absent.txt").c_str(), true), 0u);
    EXPECT_TRUE(text.IsEmpty());

    CFile out(File("ansi.txt").c_str(), CFile::modeCreate | CFile::modeWrite);
    WriteStringToAnsiFile(&out, "one\xE9");
    WriteStringToAnsiFile(&out, CString("\0two", 4));
    out.Close();
    EXPECT_EQ(ReadFile(File("ansi.txt")), std::string("one\xE9\0two", 8));
}

TEST(Files, HtsTempFilesMoveFromTheCurrentFolder) {
    const CString previous = FileSystem::GetCurrentDirectory();
    const std::string work = File("hts\\"), target = File("hts-target");
    FileSystem::MakePath(work.c_str());
    // One matching file: the Windows target's shell under Wine refuses to move several files
    // into one folder.
    for (const char* name : {"HTS1.tmp", "other.tmp", "HTS2.txt"}) WriteFile(work + name, name);
    ASSERT_TRUE(FileSystem::SetCurrentDirectory(work.c_str()));
    qmtest::RecordingAssertSink asserts;
    DeleteHTSTempFiles(target.c_str());
    DeleteHTSTempFiles(target.c_str());  // nothing left to move: no report either
    FileSystem::SetCurrentDirectory(previous);
    EXPECT_EQ(asserts.Expressions(), std::vector<std::string>{});
    EXPECT_EQ(ReadFile(target + "\\HTS1.tmp"), "HTS1.tmp");
    EXPECT_FALSE(Exists(work + "HTS1.tmp"));
    EXPECT_TRUE(Exists(work + "other.tmp"));
    EXPECT_TRUE(Exists(work + "HTS2.txt"));
#if !defined(_WIN32)  // a second file of the same name is renamed, not written over
    WriteFile(work + "HTS1.tmp", "again");
    FileSystem::SetCurrentDirectory(work.c_str());
    DeleteHTSTempFiles(target.c_str());
    FileSystem::SetCurrentDirectory(previous);
    EXPECT_EQ(ReadFile(target + "\\HTS1.tmp") + ReadFile(target + "\\HTS1 (2).tmp"), "HTS1.tmpagain");
#endif
}

#if !defined(_WIN32)
TEST(Files, PosixAttachmentsGoToTheTrash) {
    const std::string trash = regtest::NativeFolder() + "data";
    setenv("XDG_DATA_HOME", trash.c_str(), 1);
    WriteFile(File("attachment.doc"), "mail");
    DeleteAttachmentFiles(File("attachment.doc").c_str());
    unsetenv("XDG_DATA_HOME");
    EXPECT_FALSE(Exists(File("attachment.doc")));
    EXPECT_EQ(ReadFile(File("data\\Trash\\files\\attachment.doc")), "mail");
}
#endif

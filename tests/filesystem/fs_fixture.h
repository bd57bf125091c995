// A fresh folder under Z:\tmp for each test (Z: is "/" on POSIX and under Wine alike), removed
// afterwards together with everything in it; the current folder is restored.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "utils/common/FileSystem.h"
#include "utils/framework/CFile.h"
#include "utils/platform/files.h"

namespace qmtest {

class TempFolderTest : public ::testing::Test {
protected:
    void SetUp() override {
        char name[MAX_PATH];
        ASSERT_NE(qm::platform::TempFileCreateName("Z:\\tmp", "qfs", 0, name), 0u);
        ASSERT_TRUE(qm::platform::FileDelete(name));
        ASSERT_TRUE(qm::platform::FolderCreate(name, nullptr));
        root = CString(name) + "\\";
        savedCwd = FileSystem::GetCurrentDirectory();
    }
    void TearDown() override {
        if (!savedCwd.IsEmpty()) FileSystem::SetCurrentDirectory(savedCwd);
        if (root.IsEmpty()) return;
        std::string from(root.GetString(), (size_t)root.GetLength() - 1);
        from.push_back('\0');
        SHFILEOPSTRUCTA op = {};
        op.wFunc = FO_DELETE;
        op.pFrom = from.c_str();
        op.fFlags = FOF_SILENT | FOF_NOCONFIRMATION | FOF_NOERRORUI;
        EXPECT_EQ(qm::platform::ShellFileOperation(&op), 0);
    }
    CString At(const char* relative) const { return root + relative; }
    // Writes a file through the framework's CFile, which takes Windows paths on every target.
    void Touch(const char* relative, const char* text = "x") {
        CFile f(At(relative), CFile::modeCreate | CFile::modeWrite);
        f.Write(text, (UINT)std::char_traits<char>::length(text));
    }
    void Folder(const char* relative) { ASSERT_TRUE(qm::platform::FolderCreate(At(relative), nullptr)); }

    CString root;  // ends in a backslash
    CString savedCwd;
};

}  // namespace qmtest

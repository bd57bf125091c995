// Names are found without regard to case in a folder the library keeps filling, also when
// files appear, disappear or change case behind its back between two of its lookups.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>

#include "fs_fixture.h"

namespace {

class NameLookup : public qmtest::TempFolderTest {
protected:
    // Made with the C runtime on the native path, as another program would.
    void MakeBehind(const char* relative) {
        std::string native;
        ASSERT_TRUE(qm::platform::ToNativePath(At(relative), native));
        ASSERT_TRUE(std::ofstream(native, std::ios::binary) << relative);
    }
    void RemoveBehind(const char* relative) {
        std::string native;
        ASSERT_TRUE(qm::platform::ToNativePath(At(relative), native));
        ASSERT_EQ(std::remove(native.c_str()), 0);
    }
    // What the library reads under `relative` ("" when it finds no file).
    std::string Read(const char* relative) {
        CFile f;
        if (!f.Open(At(relative), CFile::modeRead)) return "";
        char buf[64] = {};
        UINT n = f.Read(buf, sizeof buf - 1);
        return std::string(buf, n);
    }
};

TEST_F(NameLookup, ChangesBehindTheLibrarysBackAreSeenAtTheNextLookup) {
    for (int i = 0; i < 300; ++i) {
        std::string mine = "mine" + std::to_string(i) + ".txt", theirs = "Theirs" + std::to_string(i) + ".TXT";
        Touch(mine.c_str(), "mine");
        EXPECT_EQ(Read(("MINE" + std::to_string(i) + ".TXT").c_str()), "mine") << i;
        // Right after the library looked at the folder, another program adds a file.
        MakeBehind(theirs.c_str());
        std::string asked = "theirs" + std::to_string(i) + ".txt";
        EXPECT_EQ(Read(asked.c_str()), theirs) << i;
        // Writing under another spelling reaches the file that exists, not a second one.
        Touch(asked.c_str(), "over");
        EXPECT_EQ(Read(theirs.c_str()), "over") << i;
        if (i % 3 == 0) {
            RemoveBehind(theirs.c_str());
            EXPECT_EQ(Read(asked.c_str()), "") << i;
        }
    }
    int count = 0;
    for (FileSystem::CFileItr it(root, "*.*"); it.IsValid(); it.Next()) ++count;
    EXPECT_EQ(count, 300 + 200);
}

}  // namespace

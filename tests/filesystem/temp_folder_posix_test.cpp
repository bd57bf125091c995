// The POSIX temporary folder is the user's own: what someone else placed under its name is
// never used. POSIX only (Windows keeps the system's per-user folder).
#if !defined(_WIN32)
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <random>
#include <string>

#include "utils/common/FileSystem.h"
#include "utils/platform/files.h"
#include "utils/platform/tempfiles.h"

namespace {

namespace stdfs = std::filesystem;

// A scratch $TMPDIR for one test, restored and removed afterwards.
class TempFolder : public testing::Test {
protected:
    void SetUp() override {
        const char* saved = std::getenv("TMPDIR");
        hadTmpdir_ = saved != nullptr;
        if (saved) savedTmpdir_ = saved;
        base_ = stdfs::current_path() / ("qmtmp-" + std::to_string(std::random_device{}() % 1000000000u));
        stdfs::create_directories(base_);
        setenv("TMPDIR", base_.c_str(), 1);
        fixed_ = base_ / ("mfcqmutils-" + std::to_string((unsigned long)geteuid()));
    }
    void TearDown() override {
        if (hadTmpdir_) setenv("TMPDIR", savedTmpdir_.c_str(), 1);
        else unsetenv("TMPDIR");
        std::error_code ec;
        stdfs::permissions(base_ / "other", stdfs::perms::owner_all, ec);
        stdfs::remove_all(base_, ec);
    }
    // The native folder the library reports now.
    stdfs::path Reported() {
        char temp[MAX_PATH + 1] = {};
        if (qm::platform::GetTempPathA(MAX_PATH, temp) == 0) return {};
        std::string native;
        qm::platform::ToNativePath(temp, native);
        return stdfs::path(native).parent_path();
    }
    stdfs::path base_, fixed_;
    bool hadTmpdir_ = false;
    std::string savedTmpdir_;
};

void ExpectPrivate(const stdfs::path& folder) {
    struct stat st;
    ASSERT_EQ(lstat(folder.c_str(), &st), 0) << folder;
    EXPECT_TRUE(S_ISDIR(st.st_mode)) << folder;
    EXPECT_EQ(st.st_uid, geteuid()) << folder;
    EXPECT_EQ(st.st_mode & 0777, 0700u) << folder;
}

}  // namespace

TEST_F(TempFolder, MadeForTheUserWithNoAccessForOthers) {
    const stdfs::path reported = Reported();
    EXPECT_EQ(reported, fixed_);
    ExpectPrivate(reported);
    EXPECT_EQ(Reported(), fixed_);  // found again, not made anew
    stdfs::remove_all(fixed_);     // removed behind the library's back: made again
    EXPECT_EQ(Reported(), fixed_);
    ExpectPrivate(fixed_);
}

// Each thing found under the folder's name is left as it is, and a fresh private folder with
// another name is used instead.
TEST_F(TempFolder, WhatOthersPlacedIsNeverTrusted) {
    struct Planted {
        const char* what;
        std::function<void(const stdfs::path&)> plant;
    } cases[] = {
        {"a folder others can enter", [](const stdfs::path& p) { stdfs::create_directory(p); chmod(p.c_str(), 0755); }},
        {"a folder the group can write", [](const stdfs::path& p) { stdfs::create_directory(p); chmod(p.c_str(), 0770); }},
        {"a link to a private folder", [this](const stdfs::path& p) {
             stdfs::create_directory(base_ / "other");
             chmod((base_ / "other").c_str(), 0700);
             stdfs::create_directory_symlink(base_ / "other", p);
         }},
        {"a file", [](const stdfs::path& p) { std::FILE* f = std::fopen(p.c_str(), "w"); std::fclose(f); }},
    };
    for (const Planted& c : cases) {
        std::error_code ec;
        stdfs::remove_all(base_ / "other", ec);
        for (const auto& entry : stdfs::directory_iterator(base_)) stdfs::remove_all(entry.path(), ec);
        c.plant(fixed_);
        struct stat before;
        ASSERT_EQ(lstat(fixed_.c_str(), &before), 0) << c.what;
        const stdfs::path reported = Reported();
        ASSERT_FALSE(reported.empty()) << c.what;
        EXPECT_NE(reported, fixed_) << c.what;
        EXPECT_EQ(reported.parent_path(), base_) << c.what;
        EXPECT_EQ(reported.filename().string().rfind(fixed_.filename().string() + "-", 0), 0u) << c.what;
        ExpectPrivate(reported);
        struct stat after;
        ASSERT_EQ(lstat(fixed_.c_str(), &after), 0) << c.what;
        EXPECT_EQ(after.st_mode, before.st_mode) << c.what;
        EXPECT_EQ(after.st_ino, before.st_ino) << c.what;
    }
}

// Temporary names and the library's own files are made in the private folder, exclusively.
TEST_F(TempFolder, FilesAreMadeExclusivelyInThePrivateFolder) {
    const CString name = FileSystem::GetTempFileName();
    ASSERT_FALSE(name.IsEmpty());
    std::string native;
    ASSERT_TRUE(qm::platform::ToNativePath(name, native));
    EXPECT_EQ(stdfs::path(native).parent_path(), fixed_);

    char made[MAX_PATH + 1] = {};
    std::string folder;
    ASSERT_TRUE(qm::platform::ToWindowsPath(fixed_.c_str(), folder));
    std::FILE* file = qm::platform::CreateTempFileStream(folder.c_str(), "qtlx", made);
    ASSERT_NE(file, nullptr);
    std::fclose(file);
    ASSERT_TRUE(qm::platform::ToNativePath(made, native));
    EXPECT_EQ(stdfs::path(native).filename().string().rfind("qtl", 0), 0u);
    struct stat st;
    ASSERT_EQ(lstat(native.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0600u);

    // A folder that cannot be written (root writes anywhere): no file, no name.
    if (geteuid() != 0) {
        chmod(fixed_.c_str(), 0500);
        made[0] = 'x';
        EXPECT_EQ(qm::platform::CreateTempFileStream(folder.c_str(), "qtl", made), nullptr);
        EXPECT_EQ(made[0], '\0');
        chmod(fixed_.c_str(), 0700);
    }
}
#endif

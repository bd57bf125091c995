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

// A scratch $TMPDIR for each test, restored and removed afterwards.
class TempFolder : public testing::Test {
protected:
    void SetUp() override {
        if (const char* saved = std::getenv("TMPDIR")) saved_ = saved;
        base_ = stdfs::current_path() / ("qmtmp-" + std::to_string(std::random_device{}() % 1000000000u));
        stdfs::create_directories(base_);
        setenv("TMPDIR", base_.c_str(), 1);
        fixed_ = base_ / ("mfcqmutils-" + std::to_string((unsigned long)geteuid()));
    }
    void TearDown() override {
        if (saved_.empty()) unsetenv("TMPDIR");
        else setenv("TMPDIR", saved_.c_str(), 1);
        std::error_code ec;
        stdfs::remove_all(base_, ec);
    }
    // The native folder the library reports now, checked to be private.
    stdfs::path Reported() {
        char temp[MAX_PATH + 1] = {};
        std::string native;
        if (!qm::platform::GetTempPathA(MAX_PATH, temp) || !qm::platform::ToNativePath(temp, native)) return {};
        struct stat st;
        EXPECT_EQ(lstat(native.c_str(), &st), 0) << native;
        EXPECT_TRUE(S_ISDIR(st.st_mode)) << native;
        EXPECT_EQ(st.st_uid, geteuid()) << native;
        EXPECT_EQ(st.st_mode & 0777, 0700u) << native;
        return stdfs::path(native).parent_path();
    }
    stdfs::path base_, fixed_;
    std::string saved_;
};

}  // namespace

TEST_F(TempFolder, MadeForTheUserAndMadeAgainWhenRemoved) {
    EXPECT_EQ(Reported(), fixed_);
    stdfs::remove_all(fixed_);
    EXPECT_EQ(Reported(), fixed_);
    // Temporary names and the library's own files are made there, the latter only readable by
    // the user.
    std::string native;
    ASSERT_TRUE(qm::platform::ToNativePath(FileSystem::GetTempFileName(), native));
    EXPECT_EQ(stdfs::path(native).parent_path(), fixed_);
    std::string folder;
    ASSERT_TRUE(qm::platform::ToWindowsPath(fixed_.c_str(), folder));
    char made[MAX_PATH + 1] = {};
    std::FILE* file = qm::platform::CreateTempFileStream(folder.c_str(), "qtlx", made);
    ASSERT_NE(file, nullptr);
    std::fclose(file);
    ASSERT_TRUE(qm::platform::ToNativePath(made, native));
    EXPECT_EQ(stdfs::path(native).filename().string().substr(0, 3), "qtl");
    EXPECT_EQ(stdfs::status(native).permissions(), stdfs::perms::owner_read | stdfs::perms::owner_write);
}

// Each thing found under the folder's name is left as it is, and a fresh private folder with
// another name is used instead.
TEST_F(TempFolder, WhatOthersPlacedIsNeverTrusted) {
    const std::function<void(const stdfs::path&)> plants[] = {
        [](const stdfs::path& p) { stdfs::create_directory(p), chmod(p.c_str(), 0755); },
        [](const stdfs::path& p) { stdfs::create_directory(p), chmod(p.c_str(), 0770); },
        [this](const stdfs::path& p) {
            stdfs::create_directory(base_ / "other"), chmod((base_ / "other").c_str(), 0700);
            stdfs::create_directory_symlink(base_ / "other", p);
        },
        [](const stdfs::path& p) { std::fclose(std::fopen(p.c_str(), "w")); },
    };
    int planted = 0;
    for (const auto& plant : plants) {
        SCOPED_TRACE(++planted);
        for (const auto& entry : stdfs::directory_iterator(base_)) stdfs::remove_all(entry.path());
        plant(fixed_);
        struct stat before, after;
        ASSERT_EQ(lstat(fixed_.c_str(), &before), 0);
        const stdfs::path reported = Reported();
        EXPECT_EQ(reported.parent_path(), base_);
        EXPECT_EQ(reported.filename().string().rfind(fixed_.filename().string() + "-", 0), 0u) << reported;
        ASSERT_EQ(lstat(fixed_.c_str(), &after), 0);
        EXPECT_EQ(after.st_mode, before.st_mode);
        EXPECT_EQ(after.st_ino, before.st_ino);
    }
}
#endif

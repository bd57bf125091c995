// qmutil clip on the Linux desktop clipboard: what qmutil copies outlives it (a background
// qmutil serves it) and is pasted by xclip; what xclip copies is pasted by qmutil. Runs its own
// X server; POSIX only, skipped without Xvfb or xclip.
#if !defined(_WIN32)
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/child_process.h"

namespace {

namespace stdfs = std::filesystem;
using qmtest::Slurp;

class QmutilDesktopClipboard : public testing::Test {
protected:
    void SetUp() override {
        if (std::system("command -v Xvfb >/dev/null 2>&1 && command -v xclip >/dev/null 2>&1") != 0)
            GTEST_SKIP() << "Xvfb or xclip missing";
        dir_ = stdfs::temp_directory_path() / ("qmclip-" + std::to_string(getpid()));
        stdfs::create_directories(dir_);
        ASSERT_FALSE(server_.display.empty());
    }
    void TearDown() override {
        // Background servers and xclip end when the server goes.
        qmtest::Stop(server_.pid);
        std::error_code ec;
        stdfs::remove_all(dir_, ec);
    }

    // Runs a program with DISPLAY set; returns its exit code, stdout in *out.
    int Run(std::vector<std::string> args, std::string* out = nullptr, const std::string& in = "/dev/null",
            const std::string& locale = "C") {
        const stdfs::path o = dir_ / "stdout";
        args.insert(args.begin(), {"/usr/bin/timeout", "-s", "KILL", "30"});
        pid_t pid = qmtest::Spawn(
            args, in, o.string(),
            {"DISPLAY=" + server_.display, "PATH=/usr/bin:/bin", "HOME=" + dir_.string(), "LC_ALL=" + locale});
        int status = -1;
        if (pid > 0) waitpid(pid, &status, 0);
        if (out) *out = Slurp(o);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    qmtest::XServer server_;
    stdfs::path dir_;
};

TEST_F(QmutilDesktopClipboard, CopiedTextOutlivesQmutilAndXclipPastesIt) {
    ASSERT_EQ(Run({QM_QMUTIL_PATH, "clip", "copy", "one\ntwo \xE9"}), 0);
    std::string pasted;
    EXPECT_EQ(Run({"xclip", "-selection", "clipboard", "-o"}, &pasted), 0);
    EXPECT_EQ(pasted, "one\ntwo \xC3\xA9");
    // The other way: xclip copies (it forks and serves), qmutil pastes with CR LF.
    std::ofstream(dir_ / "in.txt", std::ios::binary) << "from xclip\n";
    ASSERT_EQ(Run({"xclip", "-selection", "clipboard", "-i"}, nullptr, (dir_ / "in.txt").string()), 0);
    std::string got;
    for (int i = 0; i < 50 && got.empty(); ++i) {
        Run({QM_QMUTIL_PATH, "clip", "paste"}, &got);
        if (got.empty()) std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    EXPECT_EQ(got, "from xclip\r\n");
}

TEST_F(QmutilDesktopClipboard, AUtf8TerminalTypesAndReadsTextAsItsOwnCharacters) {
    // Under C the argument's bytes are the ANSI code page's (above); under a UTF-8 locale they
    // are UTF-8 and reach other programs once encoded, not twice.
    ASSERT_EQ(Run({QM_QMUTIL_PATH, "clip", "copy", "caf\xC3\xA9 \xE2\x82\xAC"}, nullptr, "/dev/null", "C.UTF-8"), 0);
    std::string pasted;
    EXPECT_EQ(Run({"xclip", "-selection", "clipboard", "-o"}, &pasted), 0);
    EXPECT_EQ(pasted, "caf\xC3\xA9 \xE2\x82\xAC");
    std::string got;
    for (int i = 0; i < 50 && got.empty(); ++i) Run({QM_QMUTIL_PATH, "clip", "paste"}, &got, "/dev/null", "C.UTF-8");
    EXPECT_EQ(got, "caf\xC3\xA9 \xE2\x82\xAC");
    // The same text pasted under C comes out in the ANSI code page.
    Run({QM_QMUTIL_PATH, "clip", "paste"}, &got);
    EXPECT_EQ(got, "caf\xE9 \x80");
}

TEST_F(QmutilDesktopClipboard, CopiedPicturesTravelBothWays) {
    const std::string a = (dir_ / "a.bmp").string(), b = (dir_ / "b.bmp").string(), c = (dir_ / "c.bmp").string();
    ASSERT_EQ(Run({QM_QMUTIL_PATH, "draw", "arrow", "2,10", "30,10", "--head", "9,8", "--size", "33,21", a}), 0);
    ASSERT_EQ(Run({QM_QMUTIL_PATH, "clip", "copy-bmp", a}), 0);
    std::string pasted;
    EXPECT_EQ(Run({"xclip", "-selection", "clipboard", "-t", "image/bmp", "-o"}, &pasted), 0);
    const std::string original = Slurp(a);
    ASSERT_GT(pasted.size(), 54u);
    // The same pixels after the headers (file sizes may differ by the row padding Save adds).
    EXPECT_EQ(pasted.substr(54, 33 * 3), original.substr(54, 33 * 3));
    ASSERT_EQ(Run({"xclip", "-selection", "clipboard", "-t", "image/bmp", "-i", a}), 0);
    int rc = 2;
    for (int i = 0; i < 50 && rc != 0; ++i) {
        rc = Run({QM_QMUTIL_PATH, "clip", "paste-bmp", b});
        if (rc) std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    ASSERT_EQ(rc, 0);
    ASSERT_EQ(Run({QM_QMUTIL_PATH, "bmp", "to-wmf", b, c + ".wmf"}), 0);
    ASSERT_EQ(Run({QM_QMUTIL_PATH, "bmp", "from-wmf", c + ".wmf", c}), 0);
    EXPECT_EQ(Slurp(c), Slurp(b));
}

}  // namespace
#endif

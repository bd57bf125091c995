// The desktop clipboard on X11, against another program: each test starts its own X server
// (Xvfb on a free display) and exchanges text and pictures with xclip both ways. POSIX only;
// skipped when Xvfb or xclip is missing.
#if !defined(_WIN32)
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "utils/common/DIB.h"
#include "utils/common/WndUtils.h"
#include "utils/framework/CFile.h"
#include "utils/platform/clipboard.h"
#include "utils/platform/globalmem.h"
#include "utils/platform/host.h"

extern char** environ;

namespace {

namespace plat = qm::platform;

bool OnPath(const char* tool) {
    std::string cmd = std::string("command -v ") + tool + " >/dev/null 2>&1";
    return std::system(cmd.c_str()) == 0;
}

// Starts a program with stdin from `in` (a file path or /dev/null) and stdout to `out`.
pid_t Spawn(const std::vector<std::string>& args, const std::string& display, const std::string& in,
            const std::string& out) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, in.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    std::vector<std::string> env = {"DISPLAY=" + display, "PATH=/usr/bin:/bin"};
    std::vector<char*> argv, envp;
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    for (const std::string& e : env) envp.push_back(const_cast<char*>(e.c_str()));
    envp.push_back(nullptr);
    pid_t pid = -1;
    if (posix_spawnp(&pid, args[0].c_str(), &actions, nullptr, argv.data(), envp.data()) != 0) pid = -1;
    posix_spawn_file_actions_destroy(&actions);
    return pid;
}

// Waits for a child, killing it after timeoutMs; its exit status, or -1.
int Finish(pid_t pid, int timeoutMs) {
    for (int waited = 0; waited < timeoutMs; waited += 10) {
        int status = 0;
        if (waitpid(pid, &status, WNOHANG) == pid) return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
    return -1;
}

std::string ReadFile(const std::string& path) {
    std::string bytes;
    if (FILE* f = std::fopen(path.c_str(), "rb")) {
        char buf[65536];
        size_t n;
        while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) bytes.append(buf, n);
        std::fclose(f);
    }
    return bytes;
}

void WriteFile(const std::string& path, const std::string& bytes) {
    FILE* f = std::fopen(path.c_str(), "wb");
    ASSERT_NE(f, nullptr);
    std::fwrite(bytes.data(), 1, bytes.size(), f);
    std::fclose(f);
}

class DesktopClipboard : public ::testing::Test {
protected:
    void SetUp() override {
        if (!OnPath("Xvfb") || !OnPath("xclip")) GTEST_SKIP() << "Xvfb or xclip missing";
        char tmpl[] = "/tmp/qm-xclip-XXXXXX";
        ASSERT_NE(mkdtemp(tmpl), nullptr);
        folder_ = tmpl;
        int fds[2];
        ASSERT_EQ(pipe(fds), 0);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addclose(&actions, fds[0]);
        std::string fd = std::to_string(fds[1]);
        std::vector<std::string> args = {"Xvfb", "-displayfd", fd, "-nolisten", "tcp", "-screen", "0", "64x64x24"};
        std::vector<char*> argv;
        for (auto& a : args) argv.push_back(a.data());
        argv.push_back(nullptr);
        ASSERT_EQ(posix_spawnp(&server_, "Xvfb", &actions, nullptr, argv.data(), environ), 0);
        posix_spawn_file_actions_destroy(&actions);
        close(fds[1]);
        std::string number;
        pollfd p{fds[0], POLLIN, 0};
        while (poll(&p, 1, 10000) > 0) {
            char c;
            if (read(fds[0], &c, 1) != 1 || c == '\n') break;
            number += c;
        }
        close(fds[0]);
        ASSERT_FALSE(number.empty()) << "Xvfb did not start";
        display_ = ":" + number;
        plat::ClipboardUseDisplay(display_.c_str());
        ASSERT_TRUE(plat::ClipboardIsDesktop());
    }

    void TearDown() override {
        plat::ClipboardUseDisplay(nullptr);
        for (pid_t pid : owners_) {
            kill(pid, SIGCONT);
            kill(pid, SIGTERM);
            waitpid(pid, nullptr, 0);
        }
        if (server_ > 0) {
            kill(server_, SIGTERM);
            waitpid(server_, nullptr, 0);
        }
        if (!folder_.empty()) {
            EXPECT_EQ(std::system(("rm -rf '" + folder_ + "'").c_str()), 0);
        }
    }

    // xclip -o of a target; the output bytes (exit status checked).
    std::string Paste(const char* target = nullptr) {
        std::vector<std::string> args = {"xclip", "-selection", "clipboard", "-o"};
        if (target) args.insert(args.end(), {"-t", target});
        std::string out = folder_ + "/out";
        pid_t pid = Spawn(args, display_, "/dev/null", out);
        EXPECT_GT(pid, 0);
        EXPECT_EQ(Finish(pid, 20000), 0) << (target ? target : "text");
        return ReadFile(out);
    }

    // xclip -i of the bytes under a target; it keeps serving (in the foreground) until it
    // loses the selection or the test ends. Returns once xclip owns the selection.
    pid_t Copy(const std::string& bytes, const char* target = nullptr) {
        std::string in = folder_ + "/in";
        WriteFile(in, bytes);
        std::vector<std::string> args = {"xclip", "-quiet", "-selection", "clipboard", "-i"};
        if (target) args.insert(args.end(), {"-t", target});
        pid_t pid = Spawn(args, display_, in, "/dev/null");
        EXPECT_GT(pid, 0);
        owners_.push_back(pid);
        // Owned once the TARGETS answer lists the target.
        std::string want = target ? target : "UTF8_STRING";
        for (int i = 0; i < 200; ++i) {
            std::string out = folder_ + "/targets";
            pid_t q = Spawn({"xclip", "-selection", "clipboard", "-o", "-t", "TARGETS"}, display_, "/dev/null", out);
            if (Finish(q, 5000) == 0 && ReadFile(out).find(want) != std::string::npos) break;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return pid;
    }

    std::string folder_, display_;
    pid_t server_ = -1;
    std::vector<pid_t> owners_;
};

TEST_F(DesktopClipboard, OurTextIsPastedByAnotherProgramAsUtf8WithLineFeeds) {
    ASSERT_TRUE(WndUtils::SetClipboardText("caf\xE9 \x80\nline two"));
    EXPECT_EQ(Paste(), "caf\xC3\xA9 \xE2\x82\xAC\nline two");
    EXPECT_EQ(Paste("STRING"), "caf\xE9 ?\nline two");  // Latin-1 has no euro sign
    std::string targets = Paste("TARGETS");
    for (const char* t : {"TARGETS", "UTF8_STRING", "STRING", "TEXT", "text/plain;charset=utf-8"})
        EXPECT_NE(targets.find(t), std::string::npos) << t;
    EXPECT_EQ(targets.find("image/bmp"), std::string::npos);
}

TEST_F(DesktopClipboard, AnotherProgramsTextIsReadAsAnsiWithCrLf) {
    Copy("\xC3\xA9t\xC3\xA9\nsecond\n");
    CString text;
    ASSERT_TRUE(WndUtils::GetClipboardText(text));
    EXPECT_EQ(std::string((LPCTSTR)text), "\xE9t\xE9\r\nsecond\r\n");
    // Taking the selection back: ours again, and the other program let it go.
    ASSERT_TRUE(WndUtils::SetClipboardText("mine"));
    EXPECT_EQ(Paste(), "mine");
    EXPECT_EQ(Finish(owners_.back(), 10000), 0);
    owners_.pop_back();
}

TEST_F(DesktopClipboard, PicturesTravelAsBmpFilesBothWays) {
    CDIBitmap bmp;
    ASSERT_TRUE(bmp.Create(13, 5, 24));
    for (DWORD i = 0; i < bmp.GetBitsSize(); ++i) bmp.GetBits()[i] = (BYTE)(i * 5 + 1);
    ASSERT_TRUE(bmp.SetToClipboard(nullptr));
    std::string file = Paste("image/bmp");
    ASSERT_GT(file.size(), 14u);
    CMemFile pasted;
    pasted.Write(file.data(), (UINT)file.size());
    pasted.SeekToBegin();
    CDIBitmap loaded;
    ASSERT_TRUE(loaded.Load(pasted, true));
    EXPECT_EQ(loaded.GetWidth(), 13);
    ASSERT_EQ(loaded.GetBitsSize(), bmp.GetBitsSize());
    EXPECT_EQ(std::string((const char*)loaded.GetBits(), loaded.GetBitsSize()),
              std::string((const char*)bmp.GetBits(), bmp.GetBitsSize()));

    CDIBitmap other;
    ASSERT_TRUE(other.Create(7, 9, 8));
    for (DWORD i = 0; i < other.GetBitsSize(); ++i) other.GetBits()[i] = (BYTE)(i * 3);
    CMemFile otherFile;
    other.Save(otherFile, true);
    std::string bytes((size_t)otherFile.GetLength(), '\0');
    otherFile.SeekToBegin();
    otherFile.Read(bytes.data(), (UINT)bytes.size());
    Copy(bytes, "image/bmp");
    EXPECT_TRUE(CDIBitmap::IsGetFromClipboardAvailable());
    CDIBitmap back;
    ASSERT_TRUE(back.GetFromClipboard(nullptr));
    EXPECT_EQ(back.GetWidth(), 7);
    EXPECT_EQ(back.GetHeight(), 9);
    ASSERT_EQ(back.GetBitsSize(), other.GetBitsSize());
    EXPECT_EQ(std::string((const char*)back.GetBits(), back.GetBitsSize()),
              std::string((const char*)other.GetBits(), other.GetBitsSize()));
}

TEST_F(DesktopClipboard, LargeTextGoesInChunksBothWays) {
    std::string big;
    for (int i = 0; big.size() < 3u << 20; ++i) big += "line " + std::to_string(i) + "\n";
    std::string withCrLf;
    for (char c : big) withCrLf += c == '\n' ? std::string("\r\n") : std::string(1, c);
    ASSERT_TRUE(WndUtils::SetClipboardText(big.c_str()));
    EXPECT_EQ(Paste(), big);
    Copy(big);
    CString text;
    ASSERT_TRUE(WndUtils::GetClipboardText(text));
    EXPECT_EQ(text.GetLength(), (int)withCrLf.size());
    EXPECT_TRUE(std::string((LPCTSTR)text) == withCrLf);
}

TEST_F(DesktopClipboard, ASilentOwnerCostsAboutASecond) {
    pid_t owner = Copy("will not answer");
    kill(owner, SIGSTOP);
    auto start = std::chrono::steady_clock::now();
    CString text;
    EXPECT_FALSE(WndUtils::GetClipboardText(text));
    auto took = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
    EXPECT_LT(took.count(), 2500);
    EXPECT_EQ(text, "");
}

TEST_F(DesktopClipboard, ServingEndsWhenAnotherProgramTakesTheClipboard) {
    ASSERT_TRUE(WndUtils::SetClipboardText("served"));
    EXPECT_FALSE(plat::ServeClipboardUntilReplaced(50));  // still ours
    Copy("taken");
    EXPECT_TRUE(plat::ServeClipboardUntilReplaced(5000));
}

}  // namespace
#endif

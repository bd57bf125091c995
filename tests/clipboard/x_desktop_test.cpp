// The desktop clipboard on X11, against another program: each test starts its own X server
// (Xvfb on a free display) and exchanges text and pictures with xclip both ways. POSIX only;
// skipped when Xvfb or xclip is missing.
#if !defined(_WIN32)
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "tests/support/child_process.h"
#include "utils/common/DIB.h"
#include "utils/common/WndUtils.h"
#include "utils/framework/CFile.h"
#include "utils/platform/clipboard.h"
#include "utils/platform/globalmem.h"
#include "utils/platform/host.h"

namespace {

namespace plat = qm::platform;
using qmtest::Finish;
using qmtest::Slurp;

std::string BitsOf(const CDIBitmap& b) { return std::string((const char*)b.GetBits(), b.GetBitsSize()); }

class DesktopClipboard : public ::testing::Test {
protected:
    void SetUp() override {
        if (std::system("command -v Xvfb >/dev/null 2>&1 && command -v xclip >/dev/null 2>&1") != 0)
            GTEST_SKIP() << "Xvfb or xclip missing";
        char tmpl[] = "/tmp/qm-xclip-XXXXXX";
        ASSERT_NE(mkdtemp(tmpl), nullptr);
        folder_ = tmpl;
        ASSERT_FALSE(server_.display.empty()) << "Xvfb did not start";
        plat::ClipboardUseDisplay(server_.display.c_str());
        ASSERT_TRUE(plat::ClipboardIsDesktop());
    }

    void TearDown() override {
        plat::ClipboardUseDisplay(nullptr);
        for (pid_t pid : owners_) {
            kill(pid, SIGCONT);
            qmtest::Stop(pid);
        }
        if (!folder_.empty()) { EXPECT_EQ(std::system(("rm -rf '" + folder_ + "'").c_str()), 0); }
    }

    pid_t Spawn(const std::vector<std::string>& args, const std::string& in, const std::string& out) {
        return qmtest::Spawn(args, in, out, {"DISPLAY=" + server_.display, "PATH=/usr/bin:/bin"});
    }

    // xclip -o of a target; the output bytes (exit status checked).
    std::string Paste(const char* target = nullptr) {
        std::vector<std::string> args = {"xclip", "-selection", "clipboard", "-o"};
        if (target) args.insert(args.end(), {"-t", target});
        std::string out = folder_ + "/out";
        pid_t pid = Spawn(args, "/dev/null", out);
        EXPECT_GT(pid, 0);
        EXPECT_EQ(Finish(pid, 20000), 0) << (target ? target : "text");
        return Slurp(out);
    }

    // xclip -i of the bytes under a target; it keeps serving (in the foreground) until it
    // loses the selection or the test ends. Returns once xclip owns the selection.
    pid_t Copy(const std::string& bytes, const char* target = nullptr) {
        std::string in = folder_ + "/in";
        std::ofstream(in, std::ios::binary) << bytes;
        std::vector<std::string> args = {"xclip", "-quiet", "-selection", "clipboard", "-i"};
        if (target) args.insert(args.end(), {"-t", target});
        pid_t pid = Spawn(args, in, "/dev/null");
        EXPECT_GT(pid, 0);
        owners_.push_back(pid);
        // Owned once the TARGETS answer lists the target.
        std::string want = target ? target : "UTF8_STRING";
        for (int i = 0; i < 200; ++i) {
            std::string out = folder_ + "/targets";
            pid_t q = Spawn({"xclip", "-selection", "clipboard", "-o", "-t", "TARGETS"}, "/dev/null", out);
            if (Finish(q, 5000) == 0 && Slurp(out).find(want) != std::string::npos) break;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return pid;
    }

    qmtest::XServer server_;
    std::string folder_;
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
    EXPECT_EQ(BitsOf(loaded), BitsOf(bmp));

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
    EXPECT_EQ(BitsOf(back), BitsOf(other));
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

// Wait cursor nesting, delays on a controlled tick source, the progress helper's errors, the
// shared counter and the Escape key.
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "tests/support/recording_sink.h"
#include "utils/common/QMBase.h"
#include "utils/common/mfcutils.h"
#include "utils/framework/CWinApp.h"
#include "utils/platform/window.h"

namespace {

class Frame : public CQMWFrame {
public:
    std::vector<std::string> calls;
    void SetStatusText(const char* text, int r) override { calls.push_back("text " + std::string(text) + Tail(r)); }
    void BeginProgress(ULONG count, int r) override { calls.push_back("begin " + std::to_string(count) + Tail(r)); }
    void EndProgress(int r) override { calls.push_back("end" + Tail(r)); }
    void StepProgress(int r) override { calls.push_back("step" + Tail(r)); }
    std::vector<std::string> Take() { return std::exchange(calls, {}); }

private:
    static std::string Tail(int r) { return r ? " !" : ""; }
};

class Cursor : public CQMWaitCursor {
public:
    using CQMWaitCursor::CQMWaitCursor;
    static size_t Depth() { return s_messages.size(); }
    static void Clear() {
        while (!s_messages.empty()) s_messages.pop();
    }
    void OnCursorChange() override { ++changes; }
    int changes = 0;
};

DWORD g_tick = 0;
DWORD FakeTick() { return g_tick; }

class WaitCursor : public ::testing::Test {
protected:
    void SetUp() override {
        m_previous = qm::platform::SetTickSource(&FakeTick);
        ASSERT_EQ(Cursor::Depth(), 0u);
        ASSERT_NE(AfxGetApp(), nullptr);
        AfxGetApp()->m_nWaitCursorCount = 0;
    }
    void TearDown() override {
        qm::platform::SetTickSource(m_previous);
        EXPECT_EQ(Cursor::Depth(), 0u);
    }
    static int Waiting() { return AfxGetApp()->m_nWaitCursorCount; }
    qm::platform::TickSource m_previous = nullptr;
    Frame m_frame;
};

using Calls = std::vector<std::string>;

TEST_F(WaitCursor, NestedCursorsRestoreTheOuterTextAndEndWithReady) {
    Cursor outer(&m_frame, "A");
    EXPECT_EQ(Waiting(), 1);
    {
        Cursor inner(&m_frame, "B");
        EXPECT_EQ(Waiting(), 1);  // restored, not counted twice
        EXPECT_EQ(Cursor::Depth(), 2u);
        EXPECT_EQ(inner.changes, 0);
    }
    EXPECT_EQ(m_frame.Take(), (Calls{"text A", "text B", "text A"}));
    EXPECT_EQ(Waiting(), 1);
    outer.End();
    outer.End();
    EXPECT_EQ(m_frame.Take(), (Calls{"text Ready"}));
    EXPECT_EQ(Waiting(), 0);
    EXPECT_EQ(outer.changes, 1);  // once before ending (the constructor's call is the base's)
}

TEST_F(WaitCursor, DelayedCursorShowsTextOnceTheDelayPassedAcrossTheTickWrap) {
    for (DWORD start : {1000u, 0xFFFFFF00u}) {
        g_tick = start;
        Cursor c(&m_frame, "slow", 500);
        EXPECT_EQ(Cursor::Depth(), 0u);
        g_tick = start + 499;
        EXPECT_EQ(c.Check(), 0);
        g_tick = start + 500;
        EXPECT_EQ(c.Check(), 1);
        EXPECT_EQ(c.Check(), 0);
        g_tick = start + 5000;
        EXPECT_EQ(c.Check(), 0);
        EXPECT_EQ(Waiting(), 0);  // the text only: the wait cursor is not begun
        EXPECT_EQ(m_frame.Take(), (Calls{"text slow"}));
        c.End();
        EXPECT_EQ(m_frame.Take(), (Calls{"text Ready"}));
        EXPECT_EQ(Waiting(), 0);
    }
    Cursor never(&m_frame, "never shown", 500);  // ended before its delay: nothing at all
    never.End();
    EXPECT_TRUE(m_frame.Take().empty());
}

TEST_F(WaitCursor, WithoutFrameNothingHappens) {
    Cursor c(nullptr, "x", 0, 10);
    EXPECT_EQ(c.Check(), 0);
    c.SetMessage("y");
    c.End();
    Cursor later(nullptr);
    later.SetMessage("z");
    EXPECT_EQ(Cursor::Depth(), 0u);
    EXPECT_EQ(Waiting(), 0);
}

TEST_F(WaitCursor, SetMessageStartsAnUnstartedCursorAndReplacesTheTop) {
    qmtest::RecordingAssertSink sink;
    {
        Cursor c(&m_frame);
        EXPECT_EQ(Waiting(), 0);
        c.SetMessage("one");
        EXPECT_EQ(Waiting(), 1);
        EXPECT_EQ(c.changes, 1);
        c.SetMessage("two");
        EXPECT_EQ(Cursor::Depth(), 1u);
        g_tick = 0;
        Cursor delayed(&m_frame, "later", 100);
        delayed.SetMessage("changed");  // only the text; Check shows it
        g_tick = 100;
        EXPECT_EQ(delayed.Check(), 1);
        delayed.End();
    }
    EXPECT_EQ(m_frame.Take(), (Calls{"text one", "text two", "text changed", "text changed", "text two", "text Ready"}));
    EXPECT_TRUE(sink.Reports().empty());
    // An unstarted cursor given a text while another is active: reported.
    Cursor active(&m_frame, "busy");
    Cursor late(&m_frame);
    late.SetMessage("late");
    EXPECT_EQ(sink.Expressions(), std::vector<std::string>{"s_messages.empty()"});
    EXPECT_EQ(sink.Reports()[0].module, "Common\\mfcutils");
    active.End();  // pops the other cursor's message: out-of-order ends mix the stack up
    EXPECT_EQ(Cursor::Depth(), 1u);
    late.End();    // never became active: nothing
    Cursor::Clear();
    AfxGetApp()->m_nWaitCursorCount = 0;
}

TEST_F(WaitCursor, ProgressIsBegunAndEndedWithTheCursor) {
    { Cursor c(&m_frame, "copy", 0, 10); }
    EXPECT_EQ(m_frame.Take(), (Calls{"text copy", "begin 10", "end", "text Ready"}));
    { Cursor c(&m_frame, "wait", 300, 4); }  // a delayed cursor's progress starts at once
    EXPECT_EQ(m_frame.Take(), (Calls{"begin 4", "end"}));
}

TEST_F(WaitCursor, ProgressHelperStepsOnlyTheInnermostNumberOnTheMainThread) {
    CQMWProgressHelper helper;
    helper.Start("none", 0, 1, 1);  // started before a frame is set: shows nothing
    helper.End();
    helper.SetQMWFrame(&m_frame);
    helper.Start("outer", 0, 5, 7);
    helper.Start("inner", 0, 3, 8);
    helper.Update(7);
    helper.Update(8);
    std::thread([&] { helper.Update(8); }).join();
    helper.SetID(7);
    helper.Update(7);
    helper.End();
    helper.Update(7);
    helper.End();
    EXPECT_EQ(m_frame.Take(), (Calls{"text outer", "begin 5", "text inner", "begin 3", "step", "step", "end",
                                     "text outer", "step", "end", "text Ready"}));
}

TEST_F(WaitCursor, ProgressHelperMisuseIsReportedAndRaised) {
    qmtest::RecordingAssertSink sink;
    auto raised = [](auto&& f) -> std::string {
        try {
            f();
        } catch (CException* e) {
            auto* qe = dynamic_cast<CQMWException*>(e);
            std::string what = qe ? std::string(qe->GetExpression()) + "@" + std::string(qe->GetSourceModule()) : "?";
            e->Delete();
            return what;
        }
        return "nothing";
    };
    CQMWProgressHelper helper;
    helper.SetQMWFrame(&m_frame);
    EXPECT_EQ(raised([&] { helper.End(); }), "!m_waitCursors.empty()@Common\\mfcutils");
    EXPECT_EQ(raised([&] { helper.SetID(3); }), "!m_waitCursors.empty()@Common\\mfcutils");
    EXPECT_EQ(raised([&] {
                  CQMWProgressHelper open;
                  open.SetQMWFrame(&m_frame);
                  open.Start("left open", 0, 2, 1);
              }),
              "m_waitCursors.empty()@Common\\mfcutils");
    EXPECT_EQ(sink.Expressions(), (std::vector<std::string>{"_b", "_b", "_b"}));
    EXPECT_EQ(Waiting(), 0);  // the open cursor was ended before the error
}

TEST(Counter, CountsFromManyThreadsAndCopiesDoNotIncrement) {
    volatile LONG count = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t)
        threads.emplace_back([&count] {
            for (int i = 0; i < 20000; ++i) {
                CCounter a(count);
                CCounter b(count);
            }
        });
    for (auto& t : threads) t.join();
    EXPECT_EQ(count, 0);
    {
        CCounter a(count);
        EXPECT_EQ(count, 1);
        { CCounter copy(a); }
        EXPECT_EQ(count, 0);
    }
    EXPECT_EQ(count, -1);
    CLockInfo info;
    EXPECT_EQ(info.m_nLock, 0u);
    EXPECT_EQ(info.m_pClass, nullptr);
    EXPECT_EQ(info.m_pData, nullptr);
}

TEST(EscapeKey, TakesOneKeyboardMessageAndAnswersOnlyForEscape) {
    DWORD self = GetCurrentThreadId();
    EXPECT_FALSE(EscapeKeyWasPressed());
    PostThreadMessageA(self, WM_USER, 0, 0);  // not a keyboard message: left alone
    std::thread([self] {
        PostThreadMessageA(self, WM_KEYDOWN, 'Q', 0);
        PostThreadMessageA(self, WM_KEYDOWN, VK_ESCAPE, 0);
    }).join();
    EXPECT_FALSE(EscapeKeyWasPressed());  // 'Q', consumed
    EXPECT_TRUE(EscapeKeyWasPressed());
    EXPECT_FALSE(EscapeKeyWasPressed());
    MSG msg;
    ASSERT_TRUE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(msg.message, (UINT)WM_USER);
}

}  // namespace

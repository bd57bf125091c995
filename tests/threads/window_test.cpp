// The window, message and thread machinery the scheduler stands on, driven through the pump.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "utils/framework/CCriticalSection.h"
#include "utils/framework/CWinApp.h"
#include "utils/framework/CWnd.h"
#include "utils/platform/thread.h"
#include "utils/platform/window.h"

namespace {

UINT g_probeMessage = RegisterWindowMessageA("QM_TEST_PROBE");

class ProbeWnd : public CWnd {
public:
    std::vector<UINT_PTR> timers;
    std::vector<WPARAM> probes;
    int destroyed = 0;

protected:
    afx_msg void OnTimer(UINT_PTR id) { timers.push_back(id); }
    afx_msg LRESULT OnProbe(WPARAM w, LPARAM) {
        probes.push_back(w);
        return 7;
    }
    afx_msg LRESULT OnUser(WPARAM w, LPARAM l) { return (LRESULT)(w + l); }
    void PostNcDestroy() override { ++destroyed; }
    DECLARE_MESSAGE_MAP()
};

BEGIN_MESSAGE_MAP(ProbeWnd, CWnd)
ON_WM_TIMER()
ON_REGISTERED_MESSAGE(g_probeMessage, &ProbeWnd::OnProbe)
ON_MESSAGE(WM_USER + 5, &ProbeWnd::OnUser)
END_MESSAGE_MAP()

bool CreateProbe(ProbeWnd& w) { return w.CreateEx(0, AfxRegisterWndClass(0), "", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr); }

}  // namespace

TEST(Window, MessageMapRoutesTimersRegisteredAndFixedMessages) {
    ASSERT_GE(g_probeMessage, 0xC000u);
    EXPECT_EQ(RegisterWindowMessageA("qm_test_probe"), g_probeMessage);  // names ignore case
    EXPECT_NE(RegisterWindowMessageA("QM_TEST_OTHER"), g_probeMessage);
    EXPECT_STREQ(AfxRegisterWndClass(0), AfxRegisterWndClass(0));

    ProbeWnd w;
    ASSERT_TRUE(CreateProbe(w));
    ASSERT_NE(w.m_hWnd, nullptr);
    EXPECT_EQ(CWnd::FromHandlePermanent(w.m_hWnd), &w);
    EXPECT_EQ(w.SendMessage(WM_USER + 5, 2, 3), 5);
    EXPECT_EQ(w.SendMessage(g_probeMessage, 9, 0), 7);

    EXPECT_EQ(w.SetTimer(1, 20, nullptr), 1u);
    EXPECT_TRUE(qm::platform::PumpMessagesUntil([&] { return w.timers.size() >= 3; }, 5000));
    EXPECT_TRUE(w.KillTimer(1));
    EXPECT_FALSE(w.KillTimer(1));
    size_t ticks = w.timers.size();
    qm::platform::PumpMessagesFor(60);
    EXPECT_EQ(w.timers.size(), ticks);
    EXPECT_EQ(w.timers[0], 1u);

    // Posts from other threads wake this thread's pump and keep their order.
    std::vector<std::thread> posters;
    for (int t = 0; t < 4; ++t)
        posters.emplace_back([&w, t] {
            for (int i = 0; i < 50; ++i) w.PostMessage(g_probeMessage, (WPARAM)(t * 1000 + i));
        });
    for (auto& t : posters) t.join();
    EXPECT_TRUE(qm::platform::PumpMessagesUntil([&] { return w.probes.size() == 201; }, 5000));
    for (int t = 0; t < 4; ++t) {
        int last = -1;
        for (WPARAM p : w.probes)
            if ((int)p / 1000 == t && p != 9) {
                EXPECT_GT((int)p % 1000, last);
                last = (int)p % 1000;
            }
    }

    HWND old = w.m_hWnd;
    w.PostMessage(g_probeMessage, 1);  // dropped with the window
    EXPECT_TRUE(w.DestroyWindow());
    EXPECT_EQ(w.m_hWnd, nullptr);
    EXPECT_EQ(w.destroyed, 1);
    EXPECT_FALSE(IsWindow(old));
    EXPECT_FALSE(PostMessageA(old, g_probeMessage, 2, 0));
    EXPECT_EQ(CWnd::FromHandlePermanent(old), nullptr);
    qm::platform::PumpWaitingMessages();
    EXPECT_EQ(w.probes.size(), 201u);
    EXPECT_FALSE(w.DestroyWindow());
}

TEST(Window, UnknownClassFailsAndKeyboardMessagesArePeekedByRange) {
    CWnd w;
    EXPECT_FALSE(w.CreateEx(0, "QM no such class", "", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr));
    EXPECT_EQ(w.m_hWnd, nullptr);

    DWORD self = GetCurrentThreadId();
    ASSERT_TRUE(PostThreadMessageA(self, WM_USER, 1, 0));
    ASSERT_TRUE(PostThreadMessageA(self, WM_KEYDOWN, 'A', 0));
    MSG msg;
    ASSERT_TRUE(PeekMessageA(&msg, nullptr, WM_KEYFIRST, WM_KEYLAST, PM_REMOVE | PM_NOYIELD));
    EXPECT_EQ(msg.message, (UINT)WM_KEYDOWN);
    EXPECT_EQ(msg.wParam, (WPARAM)'A');
    EXPECT_FALSE(PeekMessageA(&msg, nullptr, WM_KEYFIRST, WM_KEYLAST, PM_REMOVE));
    ASSERT_TRUE(PeekMessageA(&msg, nullptr, 0, 0, PM_REMOVE));
    EXPECT_EQ(msg.message, (UINT)WM_USER);
}

namespace {

std::atomic<int> g_threadRuns{0};

class CountingThread : public CWinThread {
public:
    static std::atomic<int> alive;
    CountingThread() { ++alive; }
    ~CountingThread() override { --alive; }
    BOOL InitInstance() override { return TRUE; }
    int Run() override {
        ++g_threadRuns;
        return ExitInstance();
    }
};
std::atomic<int> CountingThread::alive{0};

UINT Increment(LPVOID p) {
    static_cast<std::atomic<int>*>(p)->fetch_add(1);
    return 0;
}

}  // namespace

TEST(Threads, AutoDeletingThreadsRunOnceAndDeleteThemselves) {
    std::atomic<int> runs{0};
    for (int i = 0; i < 20; ++i) ASSERT_NE(AfxBeginThread(&Increment, &runs), nullptr);
    for (int i = 0; i < 20; ++i) ASSERT_TRUE((new CountingThread)->CreateThread());
    for (int i = 0; i < 5000 && (runs < 20 || g_threadRuns < 20 || CountingThread::alive > 0); ++i) Sleep(1);
    EXPECT_EQ(runs, 20);
    EXPECT_EQ(g_threadRuns, 20);
    EXPECT_EQ(CountingThread::alive, 0);
    EXPECT_EQ(AfxBeginThread(nullptr, nullptr), nullptr);

    ASSERT_NE(AfxGetApp(), nullptr);
    EXPECT_EQ(AfxGetApp()->m_nThreadID, GetCurrentThreadId());
    EXPECT_EQ(AfxGetThread(), AfxGetApp());
}

TEST(Threads, SingleLockTakesTheSectionOnlyWhenAsked) {
    CCriticalSection cs;
    long shared = 0;
    {
        CSingleLock idle(&cs, FALSE);
        EXPECT_FALSE(idle.IsLocked());
        EXPECT_TRUE(idle.Unlock());
    }
    std::vector<std::thread> workers;
    for (int t = 0; t < 4; ++t)
        workers.emplace_back([&] {
            for (int i = 0; i < 2000; ++i) {
                CSingleLock lock(&cs, TRUE);
                CSingleLock again(&cs, TRUE);  // recursive
                ++shared;
            }
        });
    for (auto& t : workers) t.join();
    EXPECT_EQ(shared, 8000);
}

TEST(Threads, WaitCursorIsCountedOnTheApplication) {
    CWinApp* app = AfxGetApp();
    ASSERT_NE(app, nullptr);
    CCmdTarget target;
    int before = app->m_nWaitCursorCount;
    target.BeginWaitCursor();
    target.BeginWaitCursor();
    target.RestoreWaitCursor();
    EXPECT_EQ(app->m_nWaitCursorCount, before + 2);
    target.EndWaitCursor();
    target.EndWaitCursor();
    target.EndWaitCursor();  // never below zero
    EXPECT_EQ(app->m_nWaitCursorCount, 0);
}

namespace {

class PumpingThread : public CWinThread {
public:
    std::atomic<bool> ready{false};
    std::atomic<int>* exits;
    explicit PumpingThread(std::atomic<int>* e) : exits(e) {}
    BOOL InitInstance() override {
        MSG msg;
        PeekMessageA(&msg, nullptr, 0, 0, PM_NOREMOVE);  // makes the thread's queue
        ready = true;
        return TRUE;
    }
    int ExitInstance() override {
        ++*exits;
        return 5;
    }
};

}  // namespace

TEST(Threads, DefaultRunPumpsUntilQuitAndWindowsBelongToTheirThread) {
    std::atomic<int> exits{0};
    auto* t = new PumpingThread(&exits);
    t->m_bAutoDelete = FALSE;
    ASSERT_TRUE(t->CreateThread(CREATE_SUSPENDED));
    EXPECT_FALSE(t->ready);
    t->ResumeThread();
    for (int i = 0; i < 5000 && !t->ready; ++i) Sleep(1);
    ASSERT_TRUE(t->ready);
    EXPECT_TRUE(PostThreadMessageA(t->m_nThreadID, WM_USER, 0, 0));
    EXPECT_TRUE(PostThreadMessageA(t->m_nThreadID, WM_QUIT, 0, 0));
    EXPECT_TRUE(qm::platform::WaitForThreadEnd(t->m_hThread, 5000));
    EXPECT_EQ(exits, 1);
    delete t;

    // A window can only be destroyed by the thread that made it.
    ProbeWnd w;
    ASSERT_TRUE(CreateProbe(w));
    HWND h = w.m_hWnd;
    std::thread([h] { EXPECT_FALSE(qm::platform::DestroyWindowObject(h)); }).join();
    EXPECT_TRUE(IsWindow(h));
    EXPECT_TRUE(w.DestroyWindow());
}

TEST(Threads, CurrentApplicationIsTheLastOneAliveWhateverTheOrder) {
    CWinApp* module = AfxGetApp();
    auto* a = new CWinApp("a");
    auto* b = new CWinApp("b");
    EXPECT_EQ(AfxGetApp(), b);
    delete a;  // out of order
    EXPECT_EQ(AfxGetApp(), b);
    delete b;
    EXPECT_EQ(AfxGetApp(), module);
}

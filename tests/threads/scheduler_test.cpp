// The callback-thread scheduler's life cycle, driven by pumping the message window's timer
// and finish messages.
#include <gtest/gtest.h>

#include <atomic>
#include <list>
#include <memory>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

#include "tests/support/recording_sink.h"
#include "tests/threads/scheduler_support.h"

using qmtest::Probe;
using qmtest::PumpUntil;
using qmtest::TheJournal;

namespace qmtest {
Journal& TheJournal() {
    static Journal journal;
    return journal;
}
}  // namespace qmtest

namespace {

class Scheduler : public ::testing::Test {
protected:
    void SetUp() override { TheJournal().Clear(); }
    void TearDown() override {
        // Give up whatever a test left and let the timer reap it.
        for (auto& [id, p] : m_live)
            if (!Deleted(id)) p->Abandom();
        EXPECT_TRUE(PumpUntil([&] { return AllDeleted(); }, 10000));
        for (auto& [id, r] : TheJournal().All()) {
            EXPECT_EQ(r.deleted, 1) << "object " << id;
            EXPECT_LE(r.abandoned, 1) << "object " << id;
            EXPECT_EQ(r.finishAfterDelete, 0) << "object " << id;
        }
        CCallBackThread::Destroy();
    }
    Probe* Make(int id, int loop = -1) {
        auto* p = new Probe(id, loop);
        m_live.emplace_back(id, p);
        return p;
    }
    bool Deleted(int id) { return TheJournal().Get(id).deleted > 0; }
    bool AllDeleted() {
        for (auto& entry : m_live)
            if (!Deleted(entry.first)) return false;
        return true;
    }
    // Pumps until a probe has seen n more timer ticks.
    void Ticks(Probe* clock, int n) {
        int target = clock->ticks + n;
        ASSERT_TRUE(PumpUntil([&] { return clock->ticks >= target; }));
    }
    // Ids are kept beside the pointers: a deleted object must not be read.
    std::vector<std::pair<int, Probe*>> m_live;
};

TEST_F(Scheduler, FirstObjectMakesTheWindowAndTimerLaterOnesShareIt) {
    CCallBackThread::Destroy();
    EXPECT_EQ(CCallBackThread::s_pThreadMessageWnd, nullptr);
    Probe* a = Make(1);
    CThreadMessageWnd* wnd = CCallBackThread::s_pThreadMessageWnd;
    ASSERT_NE(wnd, nullptr);
    EXPECT_TRUE(IsWindow(wnd->m_hWnd));
    EXPECT_EQ(wnd->m_nTimerID, 1u);
    EXPECT_FALSE(CThreadMessageWnd::CLASS_NAME.IsEmpty());
    Make(2);
    EXPECT_EQ(CCallBackThread::s_pThreadMessageWnd, wnd);
    // About 100 ms per tick: three ticks take well under a second, and at least 200 ms.
    DWORD start = GetTickCount();
    Ticks(a, 3);
    EXPECT_GE(GetTickCount() - start, 180u);

    qmtest::RecordingAssertSink sink;
    wnd->Start(100);
    CCallBackThread::OnFinish(nullptr);
    EXPECT_EQ(sink.Expressions(), (std::vector<std::string>{"0 == m_nTimerID", "pThread"}));
    EXPECT_EQ(sink.Reports()[0].module, "Common\\CallBackThread");
}

TEST_F(Scheduler, LoopValuesDecideRelaunching) {
    Probe* never = Make(1, -1);
    Probe* always = Make(2, 0);
    Probe* spaced = Make(3, 250);
    // The tick count each run of the loop-0 object starts at.
    // Shared with the worker, which goes on running after this test body returns.
    struct RunTicks { std::mutex m; std::vector<int> ticks; };
    auto runs = std::make_shared<RunTicks>();
    always->body = [runs](Probe& self) {
        std::lock_guard<std::mutex> lock(runs->m);
        runs->ticks.push_back(self.ticks.load());
    };
    EXPECT_FALSE(never->WaitForThreadFinish());  // never launched
    EXPECT_EQ(never->Uptime(), -1);
    DWORD start = GetTickCount();
    ASSERT_TRUE(PumpUntil([&] { return TheJournal().Get(2).finished >= 5 && TheJournal().Get(3).finished >= 1; }))
        << "OnFinish calls: loop-0 object " << TheJournal().Get(2).finished << ", 250 ms object " << TheJournal().Get(3).finished;
    DWORD elapsed = GetTickCount() - start;
    EXPECT_EQ(TheJournal().Get(1).executed, 0);
    // One run per 250 ms at most (bounded by the time the pump really took, so that a loaded
    // machine does not make the test fail).
    EXPECT_GE(TheJournal().Get(3).executed, 1);
    EXPECT_LE(TheJournal().Get(3).executed, 2 + (int)(elapsed / 250));
    // Relaunched from OnFinish itself, without waiting for a tick: some run starts in the same
    // tick as the run before it.
    {
        std::lock_guard<std::mutex> lock(runs->m);
        int sameTick = 0;
        for (size_t i = 1; i < runs->ticks.size(); ++i) sameTick += runs->ticks[i] == runs->ticks[i - 1];
        EXPECT_GE(sameTick, 1);
    }
    EXPECT_EQ(TheJournal().Get(2).abandoned, 0);
    never->Abandom();
    Ticks(spaced, 1);
    EXPECT_TRUE(Deleted(1));
    EXPECT_EQ(TheJournal().Get(1).abandoned, 1);
}

TEST_F(Scheduler, RefusedLaunchesSynchronousOrNot) {
    qmtest::RecordingAssertSink sink;
    Probe* p = Make(1);
    p->refuse = true;
    EXPECT_FALSE(p->Launch());
    EXPECT_FALSE(p->IsRunning());
    EXPECT_FALSE(p->IsAbandom());
    EXPECT_GE(p->Uptime(), 0);  // the attempt counts as a start
    EXPECT_FALSE(p->LaunchInMainThread());
    EXPECT_TRUE(p->IsAbandom());
    p->Abandom();  // a second time: OnAbandom is not called again
    EXPECT_EQ(TheJournal().Get(1).abandoned, 1);
    EXPECT_EQ(TheJournal().Get(1).executed, 0);
    EXPECT_FALSE(Deleted(1));  // not deleted by the call, only by the next tick
    ASSERT_TRUE(PumpUntil([&] { return Deleted(1); }));

    Probe* sync = Make(2);
    EXPECT_TRUE(sync->LaunchInMainThread());
    EXPECT_TRUE(sync->IsFinished());
    EXPECT_FALSE(sync->IsRunning());
    EXPECT_FALSE(sync->IsAbandom());
    Probe* asks = Make(3);
    asks->finishResult = 1;  // OnFinish asks for deletion: abandoned, still not deleted here
    EXPECT_TRUE(asks->LaunchInMainThread());  // the result of OnLaunch
    EXPECT_EQ(TheJournal().Get(3).abandoned, 1);
    EXPECT_FALSE(Deleted(3));
    EXPECT_TRUE(sink.Reports().empty());
}

TEST_F(Scheduler, FinishedObjectWithNegativeLoopStaysUntilAbandoned) {
    Probe* p = Make(1, -1);
    Probe* clock = Make(2);
    ASSERT_TRUE(p->Launch());
    ASSERT_TRUE(PumpUntil([&] { return TheJournal().Get(1).finished == 1; }));
    EXPECT_FALSE(p->IsRunning());
    EXPECT_TRUE(p->IsFinished());
    Ticks(clock, 3);
    EXPECT_FALSE(Deleted(1));
    EXPECT_EQ(TheJournal().Get(1).executed, 1);
    // A finished object can be launched again by hand; while the second run executes it is
    // not finished, and waiting for it waits for that run.
    auto release = std::make_shared<std::atomic<bool>>(false), done = std::make_shared<std::atomic<bool>>(false);
    p->body = [release, done](Probe&) {
        while (!*release) Sleep(1);
        *done = true;
    };
    ASSERT_TRUE(p->Launch());
    EXPECT_FALSE(p->IsFinished());
    std::thread releaser([release] {
        Sleep(50);
        *release = true;
    });
    EXPECT_TRUE(p->WaitForThreadFinish());
    EXPECT_TRUE(*done);
    releaser.join();
    ASSERT_TRUE(PumpUntil([&] { return TheJournal().Get(1).finished == 2; }));
    p->Abandom();
    Ticks(clock, 1);
    EXPECT_TRUE(Deleted(1));
}

TEST_F(Scheduler, AbandonedRunningObjectGetsNoFinishMessageAndIsReaped) {
    std::atomic<bool> release{false};
    Probe* p = Make(1);
    p->body = [&](Probe&) {
        while (!release) Sleep(1);
    };
    ASSERT_TRUE(p->Launch());
    Probe* clock = Make(2);
    Ticks(clock, 1);
    EXPECT_FALSE(Deleted(1));  // running: kept
    p->Abandom();
    Ticks(clock, 1);
    EXPECT_FALSE(Deleted(1));  // abandoned but still running: kept
    release = true;
    ASSERT_TRUE(PumpUntil([&] { return Deleted(1); }));
    EXPECT_EQ(TheJournal().Get(1).finished, 0);
    EXPECT_EQ(TheJournal().Get(1).abandoned, 1);
}

TEST_F(Scheduler, LaunchWhileRunningIsReportedAndGoesOn) {
    std::atomic<bool> release{false};
    Probe* p = Make(1);
    p->body = [&](Probe&) {
        while (!release) Sleep(1);
    };
    ASSERT_TRUE(p->Launch());
    {
        qmtest::RecordingAssertSink sink;
        EXPECT_TRUE(p->Launch());
        EXPECT_EQ(sink.Expressions(), (std::vector<std::string>{"!m_bRunning", "m_pWinThread == NULL"}));
    }
    release = true;
    // Both workers finish and both finish messages are handled; the object stays.
    ASSERT_TRUE(PumpUntil([&] { return TheJournal().Get(1).finished == 2; }));
    EXPECT_EQ(TheJournal().Get(1).executed, 2);
    EXPECT_FALSE(Deleted(1));
}

TEST_F(Scheduler, TimeoutCancelsTheBodyAndReapsTheObject) {
    Probe* p = Make(1, -1);
    p->SetTimeout(150);
    p->body = [](Probe& self) {
        for (int i = 0; i < 5000 && !self.IsCancel(); ++i) Sleep(1);
    };
    ASSERT_TRUE(p->Launch());
    ASSERT_TRUE(PumpUntil([&] { return Deleted(1); }));
    qmtest::Record r = TheJournal().Get(1);
    EXPECT_EQ(r.finished, 1);
    EXPECT_EQ(r.abandoned, 1);  // the scheduler gives it up before deleting it
}

TEST_F(Scheduler, FinishWithoutAWindowIsReported) {
    Probe* p = Make(1);
    CCallBackThread::Destroy();
    qmtest::RecordingAssertSink sink;
    p->OnThreadFinish();
    {
        CCallBackThread_Support orphan(nullptr);
        CCallBackThread_Support idle(p);  // its master is not marked running
        EXPECT_TRUE(idle.InitInstance());
        EXPECT_TRUE(idle.m_bAutoDelete);
    }
    EXPECT_EQ(sink.Expressions(), (std::vector<std::string>{"s_pThreadMessageWnd", "m_pMaster", "m_pMaster->m_bRunning"}));
    EXPECT_TRUE(p->IsFinished());
    m_live.clear();
    delete p;  // never launched: safe to delete by hand
    EXPECT_TRUE(Deleted(1));
}

// 1,000 live objects in loop mode with random bodies, cancels, abandons and timeouts.
TEST_F(Scheduler, StressThousandObjects) {
    std::mt19937 rng(12345);
    const int kObjects = 1000;
    for (int i = 0; i < kObjects; ++i) {
        Probe* p = Make(i, (int)(rng() % 300));
        int work = (int)(rng() % 4);
        p->body = [work](Probe& self) {
            for (int k = 0; k < work && !self.IsCancel(); ++k) Sleep(1);
        };
        if (rng() % 5 == 0) p->SetTimeout(100 + (int)(rng() % 400));
        if (rng() % 7 == 0) p->finishResult = 1;  // asks for deletion after its first run
    }
    DWORD end = GetTickCount() + 2500;
    while ((LONG)(end - GetTickCount()) > 0) {
        qm::platform::PumpMessagesFor(20);
        for (int k = 0; k < 10; ++k) {
            auto [id, p] = m_live[rng() % m_live.size()];
            if (Deleted(id)) continue;
            if (rng() % 2) p->Cancel(); else p->Abandom();
        }
    }
    int runs = 0, finishes = 0;
    for (auto& [id, r] : TheJournal().All()) {
        runs += r.executed;
        finishes += r.finished;
    }
    EXPECT_GT(runs, kObjects);
    EXPECT_GT(finishes, kObjects / 2);
}

}  // namespace

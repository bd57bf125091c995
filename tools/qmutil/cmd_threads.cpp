// qmutil threads: runs callback objects and prints the timeline of their launches,
// finishes, timeouts, abandons and reaps. Escape or Ctrl-C gives them all up cleanly.
#include <algorithm>
#include <memory>
#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "command.h"
#include "terminal_frame.h"
#include "utils/common/CallBackThread.h"
#include "utils/platform/host.h"

namespace {

struct Options {
    int count = 3;
    int loop = 100;     // ms; negative: launched once by the demo itself
    int timeout = 0;    // ms; 0: none
    int body = 50;      // ms of work per run
    int runs = 3;       // runs before an object asks to be deleted; 0: no limit
    int seconds = 10;   // then whatever is left is given up
};

struct Totals {
    int launches = 0, finishes = 0, timeouts = 0, abandons = 0, reaps = 0;
};

DWORD g_start = 0;
Totals g_totals;
class DemoThread;
std::set<DemoThread*> g_live;

void Log(int id, const char* what) {
    DWORD ms = qm::platform::SystemTickCount() - g_start;
    std::printf("%4lu.%03lu  #%-3d %s\n", (unsigned long)(ms / 1000), (unsigned long)(ms % 1000), id, what);
    std::fflush(stdout);
}

class DemoThread : public CCallBackThread {
public:
    DemoThread(int id, const Options& o) : m_id(id), m_body(o.body), m_runLimit(o.runs) {
        SetLoop(o.loop);
        m_nTimeout = o.timeout;
        g_live.insert(this);
    }
    ~DemoThread() override {
        ++g_totals.reaps;
        Log(m_id, "reap");
        g_live.erase(this);
    }
    bool OnLaunch() const override {
        ++g_totals.launches;
        Log(m_id, "launch");
        return true;
    }
    void Execute() override {
        for (int t = 0; t < m_body && !IsCancel(); t += 5) qm::platform::SleepMilliseconds((DWORD)std::min(5, m_body - t));
    }
    int OnFinish() const override {
        CCallBackThread::OnFinish();
        ++g_totals.finishes;
        ++m_runs;
        Log(m_id, IsCancel() ? "finish (cancelled)" : "finish");
        return m_runLimit > 0 && m_runs >= m_runLimit ? 1 : 0;
    }
    int OnTimer() const override {
        bool wasCancelled = IsCancel();
        int r = CCallBackThread::OnTimer();
        if (r && !wasCancelled && IsCancel()) {
            ++g_totals.timeouts;
            Log(m_id, IsRunning() ? "timeout (cancel asked)" : "timeout");
        }
        return r;
    }
    void OnAbandom() override {
        ++g_totals.abandons;
        Log(m_id, "abandon");
    }

private:
    const int m_id;
    const int m_body;
    const int m_runLimit;
    mutable int m_runs = 0;
};

int Number(const std::vector<std::string>& args, size_t& i, const char* what, int lo, int hi) {
    if (i + 1 >= args.size()) throw qmutil::UsageError(std::string("missing value after ") + args[i]);
    long v = qmutil::ParseLong(args[++i], what);
    if (v < lo || v > hi)
        throw qmutil::UsageError(std::string(what) + " must be " + std::to_string(lo) + " to " + std::to_string(hi));
    return (int)v;
}

Options Parse(const std::vector<std::string>& args) {
    Options o;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (a == "--count") o.count = Number(args, i, "count", 1, 10000);
        else if (a == "--loop") o.loop = Number(args, i, "loop interval", -1, 3600000);
        else if (a == "--timeout") o.timeout = Number(args, i, "timeout", 0, 3600000);
        else if (a == "--body") o.body = Number(args, i, "body length", 0, 3600000);
        else if (a == "--runs") o.runs = Number(args, i, "runs", 0, 1000000);
        else if (a == "--seconds") o.seconds = Number(args, i, "seconds", 1, 3600);
        else throw qmutil::UsageError("unknown option '" + a + "' (see qmutil threads --help)");
    }
    return o;
}

int RunDemo(const Options& o, bool watchKeys) {
    g_start = qm::platform::SystemTickCount();
    g_totals = Totals{};
    std::printf("%d objects, loop %d ms, timeout %d ms, body %d ms, %d runs each%s\n", o.count, o.loop, o.timeout,
                o.body, o.runs, watchKeys ? " (Escape or Ctrl-C stops)" : "");
    std::unique_ptr<qm::platform::ConsoleCancelWatch> watch;
    if (watchKeys) watch = std::make_unique<qm::platform::ConsoleCancelWatch>();
    for (int i = 1; i <= o.count; ++i) {
        auto* t = new DemoThread(i, o);
        if (o.loop < 0) t->Launch();
    }
    bool cancelled = false;
    DWORD limit = (DWORD)o.seconds * 1000;
    while (!g_live.empty()) {
        qm::platform::PumpMessagesUntil([] { return g_live.empty(); }, 20);
        if (watch && (EscapeKeyWasPressed() || watch->Cancelled())) cancelled = true;
        if (cancelled || qm::platform::SystemTickCount() - g_start > limit) break;
    }
    if (!g_live.empty()) {
        std::printf("%s: giving up the %lu objects left\n", cancelled ? "cancelled" : "time is up",
                    (unsigned long)g_live.size());
        for (DemoThread* t : std::vector<DemoThread*>(g_live.begin(), g_live.end())) {
            t->Cancel();
            t->Abandom();
        }
        qm::platform::PumpMessagesUntil([] { return g_live.empty(); }, 60000);
    }
    CCallBackThread::Destroy();
    std::printf("launches %d, finishes %d, timeouts %d, abandons %d, reaps %d\n", g_totals.launches, g_totals.finishes,
                g_totals.timeouts, g_totals.abandons, g_totals.reaps);
    return cancelled ? 1 : 0;
}

int Run(const std::vector<std::string>& args) { return RunDemo(Parse(args), true); }

void Tour() {
    qmutil::TourStep("threads --count 2 --loop 0 --body 20 --runs 2");
    Options o;
    o.count = 2;
    o.loop = 0;
    o.body = 20;
    o.runs = 2;
    RunDemo(o, false);
}

const char kHelp[] =
    "usage: qmutil threads [--count N] [--loop MS] [--timeout MS] [--body MS] [--runs R] [--seconds S]\n"
    "Runs N callback objects (default 3) and prints a timeline: SECONDS  #OBJECT EVENT.\n"
    "  --loop MS     relaunch interval (default 100; 0 = at once; -1 = launched once, not relaunched)\n"
    "  --timeout MS  an object running longer is cancelled and reaped (default 0 = none)\n"
    "  --body MS     work per run, in 5 ms slices that watch for cancelling (default 50)\n"
    "  --runs R      runs before an object asks to be deleted (default 3; 0 = no limit)\n"
    "  --seconds S   then every object left is given up (default 10)\n"
    "Escape or Ctrl-C gives every object up and waits until all are reaped (exit code 1).\n"
    "Events: launch, finish, timeout, abandon, reap (deleted by the scheduler).\n";

qmutil::Registrar g_threads({"threads", nullptr, "run callback threads and print their timeline", kHelp, Run, Tour, 90});

}  // namespace

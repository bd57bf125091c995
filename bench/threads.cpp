// Callback threads: launch-to-reap of 10,000 short objects against creating and joining
// 10,000 std::threads (target: at least half their rate, i.e. a time ratio of at most 2);
// the latency from a body's return to OnFinish on the user-interface thread (median and 99th
// percentile, as counters); one timer tick over 100,000 idle objects (microseconds).
// Thread work is measured as process CPU time, so that the workers' time counts.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "ratio_reporter.h"
#include "utils/common/CallBackThread.h"
#include "utils/platform/window.h"

namespace {

std::atomic<int> g_alive{0};

class Short : public CCallBackThread {
public:
    Short() {
        SetLoop(-1);
        ++g_alive;
    }
    ~Short() override { --g_alive; }
    int OnFinish() const override {
        CCallBackThread::OnFinish();
        return 1;  // done: the finish message deletes it
    }
};

constexpr int kObjects = 10000;

void BM_CallBackLaunchToReap(benchmark::State& state) {
    for (auto _ : state) {
        for (int i = 0; i < kObjects; ++i) (new Short)->Launch();
        qm::platform::PumpMessagesUntil([] { return g_alive == 0; }, 60000);
    }
    state.SetItemsProcessed(state.iterations() * kObjects);
}
BENCHMARK(BM_CallBackLaunchToReap)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

void BM_StdThreadCreateJoin(benchmark::State& state) {
    std::atomic<int> sink{0};
    for (auto _ : state) {
        std::vector<std::thread> threads;
        threads.reserve(kObjects);
        for (int i = 0; i < kObjects; ++i) threads.emplace_back([&sink] { sink.fetch_add(1, std::memory_order_relaxed); });
        for (auto& t : threads) t.join();
    }
    state.SetItemsProcessed(state.iterations() * kObjects);
}
BENCHMARK(BM_StdThreadCreateJoin)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

// Body's return to OnFinish, one launch at a time.
std::chrono::steady_clock::time_point g_bodyEnd;
std::vector<double> g_latencies;

class Timed : public CCallBackThread {
public:
    Timed() { SetLoop(-1); }
    void Execute() override { g_bodyEnd = std::chrono::steady_clock::now(); }
    int OnFinish() const override {
        auto now = std::chrono::steady_clock::now();
        g_latencies.push_back(std::chrono::duration<double, std::micro>(now - g_bodyEnd).count());
        CCallBackThread::OnFinish();
        return 1;
    }
};

void BM_FinishLatency(benchmark::State& state) {
    g_latencies.clear();
    for (auto _ : state) {
        size_t before = g_latencies.size();
        (new Timed)->Launch();
        qm::platform::PumpMessagesUntil([before] { return g_latencies.size() > before; }, 10000);
    }
    std::vector<double> v = g_latencies;
    std::sort(v.begin(), v.end());
    if (!v.empty()) {
        state.counters["median_us"] = v[v.size() / 2];
        state.counters["p99_us"] = v[std::min(v.size() - 1, v.size() * 99 / 100)];
    }
}
BENCHMARK(BM_FinishLatency)->Iterations(2000)->Unit(benchmark::kMicrosecond);

// One timer tick over 100,000 idle objects, against a loop of virtual calls over as many.
constexpr int kIdle = 100000;

void BM_TimerTickIdle(benchmark::State& state) {
    std::vector<CCallBackThread*> objects;
    for (int i = 0; i < kIdle; ++i) objects.push_back(new Short);
    for (auto _ : state) CCallBackThread::OnTimerForAll();
    for (CCallBackThread* p : objects) p->Abandom();
    CCallBackThread::OnTimerForAll();  // reaps them all
    state.SetItemsProcessed(state.iterations() * kIdle);
}
BENCHMARK(BM_TimerTickIdle)->Unit(benchmark::kMicrosecond);

struct Plain {
    virtual ~Plain() = default;
    virtual int Tick() const { return flag.load(); }
    std::atomic<bool> flag{false};
};

void BM_VirtualCallsIdle(benchmark::State& state) {
    std::vector<Plain*> objects;
    for (int i = 0; i < kIdle; ++i) objects.push_back(new Plain);
    for (auto _ : state) {
        int sum = 0;
        for (Plain* p : objects) sum += p->Tick();
        benchmark::DoNotOptimize(sum);
    }
    for (Plain* p : objects) delete p;
    state.SetItemsProcessed(state.iterations() * kIdle);
}
BENCHMARK(BM_VirtualCallsIdle)->Unit(benchmark::kMicrosecond);

struct Ratios {
    Ratios() {
        qmbench::AddRatio("callback launch-to-reap vs std::thread create+join (10,000)", "BM_CallBackLaunchToReap/process_time/real_time",
                          "BM_StdThreadCreateJoin/process_time/real_time", "<= 2 (at least half the rate)");
        qmbench::AddRatio("timer tick over 100,000 idle objects vs plain virtual calls", "BM_TimerTickIdle",
                          "BM_VirtualCallsIdle", "report (tick time in microseconds above)");
    }
} g_ratios;

}  // namespace

QM_BENCH_MAIN()

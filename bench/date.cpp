// Day-number date throughput: scalar conversions and the day walk for short and long
// distances. The target: "+ 1,000,000" costs at most 20 times "+ 1".
#include <random>
#include <vector>

#include "ratio_reporter.h"
#include "utils/common/date.h"

namespace {

const std::vector<CDate>& StartDates() {
    static const std::vector<CDate> dates = [] {
        std::vector<CDate> v;
        std::mt19937 rng(1);
        std::uniform_int_distribution<int> years(1900, 2100), months(1, 12), days(1, 28);
        for (int i = 0; i < 1024; ++i) v.emplace_back(years(rng), months(rng), days(rng));
        return v;
    }();
    return dates;
}

void BM_DatePlus(benchmark::State& state) {
    const std::vector<CDate>& dates = StartDates();
    const int n = (int)state.range(0);
    size_t i = 0;
    for (auto _ : state) {
        CDate r = dates[i++ & 1023] + n;
        benchmark::DoNotOptimize(r);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_DatePlus)->Arg(1)->Arg(365)->Arg(1000000);

void BM_DateMinus(benchmark::State& state) {
    const std::vector<CDate>& dates = StartDates();
    const int n = (int)state.range(0);
    size_t i = 0;
    for (auto _ : state) {
        CDate r = dates[i++ & 1023] - n;
        benchmark::DoNotOptimize(r);
    }
}
BENCHMARK(BM_DateMinus)->Arg(1)->Arg(1000000);

void BM_Ymd2Scalar(benchmark::State& state) {
    const std::vector<CDate>& dates = StartDates();
    size_t i = 0;
    for (auto _ : state) {
        const CDate& d = dates[i++ & 1023];
        benchmark::DoNotOptimize(CDate::ymd2scalar(d.GetYear(), d.GetMonth(), d.GetDay()));
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Ymd2Scalar);

void BM_Scalar2Ymd(benchmark::State& state) {
    LONG s = 693596;
    for (auto _ : state) {
        int y, m, d;
        CDate::scalar2ymd(s, y, m, d);
        benchmark::DoNotOptimize(y + m + d);
        s = s < 766644 ? s + 37 : 693596;
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Scalar2Ymd);

const bool registered = [] {
    qmbench::AddRatio("date + 1,000,000 vs + 1", "BM_DatePlus/1000000", "BM_DatePlus/1", "<= 20");
    qmbench::AddRatio("date + 365 vs + 1", "BM_DatePlus/365", "BM_DatePlus/1", "report");
    qmbench::AddRatio("date - 1,000,000 vs - 1", "BM_DateMinus/1000000", "BM_DateMinus/1", "<= 20");
    qmbench::AddRatio("scalar2ymd vs ymd2scalar", "BM_Scalar2Ymd", "BM_Ymd2Scalar", "report");
    return true;
}();

}  // namespace

QM_BENCH_MAIN()

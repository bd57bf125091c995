// Number texts against the standard library in the same run: the fixed-width writer against
// std::to_chars (target: at most 2 times its time) and the locale-aware parser against strtod
// (reported).
#include <charconv>
#include <cstdlib>
#include <random>
#include <vector>

#include "ratio_reporter.h"
#include "utils/common/utils_numbers.h"

namespace {

// Full-width values (mostly ten digits) and four-digit values as dates and times use them.
const std::vector<LONG>& Values(int digits) {
    static std::vector<LONG> wide, small;
    std::vector<LONG>& v = digits == 4 ? small : wide;
    if (v.empty()) {
        std::mt19937 rng(7);
        std::uniform_int_distribution<LONG> any(0, 2147483647), four(0, 9999);
        for (int i = 0; i < 1024; ++i) v.push_back(digits == 4 ? four(rng) : any(rng));
    }
    return v;
}

void BM_Numstr(benchmark::State& state) {
    const int width = (int)state.range(0);
    const std::vector<LONG>& values = Values(width);
    char buf[16];
    size_t i = 0;
    for (auto _ : state) {
        char* end = numstr(values[i++ & 1023], buf, width);
        benchmark::DoNotOptimize(end);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Numstr)->Arg(4)->Arg(10);

void BM_ToChars(benchmark::State& state) {
    const std::vector<LONG>& values = Values((int)state.range(0));
    char buf[16];
    size_t i = 0;
    for (auto _ : state) {
        auto res = std::to_chars(buf, buf + sizeof buf, values[i++ & 1023]);
        benchmark::DoNotOptimize(res.ptr);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ToChars)->Arg(4)->Arg(10);

const char* const kDecimalTexts[] = {"12.50", "-3.25", "1234.5678", "0.001", "42", "99999.99", "7.5", "-0.125"};
constexpr size_t kTextCount = sizeof kDecimalTexts / sizeof kDecimalTexts[0];

void BM_StrToDouble(benchmark::State& state) {
    std::vector<CString> texts(kDecimalTexts, kDecimalTexts + kTextCount);
    size_t i = 0;
    for (auto _ : state) {
        int decimals = 0;
        double v = StrToDouble(texts[i++ % kTextCount], decimals);
        benchmark::DoNotOptimize(v);
        benchmark::DoNotOptimize(decimals);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_StrToDouble);

void BM_Strtod(benchmark::State& state) {
    size_t i = 0;
    for (auto _ : state) {
        char* end = nullptr;
        double v = std::strtod(kDecimalTexts[i++ % kTextCount], &end);
        benchmark::DoNotOptimize(v);
        benchmark::DoNotOptimize(end);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_Strtod);

const bool kRatios = [] {
    qmbench::AddRatio("numstr / to_chars, 4 digits", "BM_Numstr/4", "BM_ToChars/4", "<= 2");
    qmbench::AddRatio("numstr / to_chars, 10 digits", "BM_Numstr/10", "BM_ToChars/10", "<= 2");
    qmbench::AddRatio("StrToDouble / strtod", "BM_StrToDouble", "BM_Strtod", "reported");
    return true;
}();

}  // namespace

QM_BENCH_MAIN()

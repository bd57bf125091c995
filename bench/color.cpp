// Colour conversion over all 16,777,216 colours, each way, against a plain loop over the same
// arrays (one trivial operation per element). Target: at least 100 million colours per second
// each way; the ratios say how much slower than the plain loop each conversion is.
#include <cstdint>
#include <vector>

#include "ratio_reporter.h"
#include "utils/common/WndUtils.h"

namespace {

constexpr std::size_t kCount = 1u << 24;

struct Arrays {
    std::vector<COLORREF> colors = std::vector<COLORREF>(kCount);
    std::vector<WORD> h = std::vector<WORD>(kCount), l = std::vector<WORD>(kCount), s = std::vector<WORD>(kCount);
    std::vector<COLORREF> back = std::vector<COLORREF>(kCount);
    Arrays() {
        for (std::size_t i = 0; i < kCount; ++i) colors[i] = (COLORREF)i;
        WndUtils::ColorsRGBToHLS(colors.data(), h.data(), l.data(), s.data(), kCount);
    }
};

Arrays& Data() {
    static Arrays a;
    return a;
}

void Items(benchmark::State& state) { state.SetItemsProcessed((int64_t)state.iterations() * (int64_t)kCount); }

// The baseline: the same arrays, one load, a trivial operation and three stores per colour.
void BM_PlainLoop(benchmark::State& state) {
    Arrays& a = Data();
    for (auto _ : state) {
        for (std::size_t i = 0; i < kCount; ++i) {
            COLORREF c = a.colors[i];
            a.h[i] = (WORD)(c & 0xFF);
            a.l[i] = (WORD)((c >> 8) & 0xFF);
            a.s[i] = (WORD)(c >> 16);
        }
        benchmark::ClobberMemory();
    }
    Items(state);
}
BENCHMARK(BM_PlainLoop)->Unit(benchmark::kMillisecond);

void BM_RgbToHls(benchmark::State& state) {
    Arrays& a = Data();
    for (auto _ : state) {
        WndUtils::ColorsRGBToHLS(a.colors.data(), a.h.data(), a.l.data(), a.s.data(), kCount);
        benchmark::ClobberMemory();
    }
    Items(state);
}
BENCHMARK(BM_RgbToHls)->Unit(benchmark::kMillisecond);

void BM_HlsToRgb(benchmark::State& state) {
    Arrays& a = Data();
    WndUtils::ColorsRGBToHLS(a.colors.data(), a.h.data(), a.l.data(), a.s.data(), kCount);
    for (auto _ : state) {
        WndUtils::ColorsHLSToRGB(a.h.data(), a.l.data(), a.s.data(), a.back.data(), kCount);
        benchmark::ClobberMemory();
    }
    Items(state);
}
BENCHMARK(BM_HlsToRgb)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    qmbench::AddRatio("RGB to HLS / plain loop", "BM_RgbToHls", "BM_PlainLoop", "report (target: items_per_second >= 100 M)");
    qmbench::AddRatio("HLS to RGB / plain loop", "BM_HlsToRgb", "BM_PlainLoop", "report (target: items_per_second >= 100 M)");
    return qmbench::RunAndReport(argc, argv);
}

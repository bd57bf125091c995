// The colour-key draw of a 4096 x 4096 24-bit picture (48 MiB of rows) onto a memory device
// context, against a memcpy of the same rows. Target: at most 3 times the memcpy.
#include <cstring>
#include <random>
#include <vector>

#include "ratio_reporter.h"
#include "utils/common/DIB.h"
#include "utils/common/WndUtils.h"

namespace {

constexpr int kSide = 4096;

CDIBitmap& Picture() {
    static CDIBitmap b;
    if (!b.IsValid()) {
        b.Create(kSide, kSide, 24);
        std::mt19937 rng(3);
        // Runs of the key colour (pure green) among random pixels: about a quarter keyed.
        BYTE* p = b.GetBits();
        for (DWORD i = 0; i + 3 <= b.GetBitsSize(); i += 3) {
            bool key = (rng() & 3) == 0;
            p[i] = key ? 0 : (BYTE)rng();
            p[i + 1] = key ? 255 : (BYTE)rng();
            p[i + 2] = key ? 0 : (BYTE)rng();
        }
    }
    return b;
}

void Bytes(benchmark::State& state) {
    state.SetBytesProcessed((int64_t)state.iterations() * (int64_t)Picture().GetBitsSize());
}

void BM_Memcpy(benchmark::State& state) { qmbench::CopyBaseline(state, Picture().GetBits(), Picture().GetBitsSize()); }
BENCHMARK(BM_Memcpy)->Unit(benchmark::kMillisecond);

void BM_ColorKeyDraw(benchmark::State& state) {
    CDIBitmap& b = Picture();
    CDC screen, dc;
    screen.CreateDC("DISPLAY", nullptr, nullptr, nullptr);
    dc.CreateCompatibleDC(&screen);
    CBitmap target;
    target.CreateCompatibleBitmap(&screen, kSide, kSide);
    CBitmap* old = dc.SelectObject(&target);
    for (auto _ : state) {
        WndUtils::DrawTransparentBitmap(&dc, CPoint(0, 0), b, RGB(0, 255, 0));
        benchmark::ClobberMemory();
    }
    dc.SelectObject(old);
    Bytes(state);
}
BENCHMARK(BM_ColorKeyDraw)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
    qmbench::AddRatio("colour-key draw / memcpy", "BM_ColorKeyDraw", "BM_Memcpy", "<= 3");
    return qmbench::RunAndReport(argc, argv);
}

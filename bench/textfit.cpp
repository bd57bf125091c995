// Text fitting, word wrap and bitmap stretching against baselines measured in the same run:
// MapWidthToCharPos against a linear scan that measures every prefix (time and number of
// measurements), WordWrapString's throughput against memcpy, and StretchBlt of a 4096 x 4096
// 24-bit bitmap to half size against memcpy of the result's bytes.
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "ratio_reporter.h"
#include "utils/common/DIB.h"
#include "utils/common/mfcutils.h"
#include "utils/framework/CDC.h"

namespace {

struct Context {
    Context() {
        dc.CreateCompatibleDC(nullptr);
        font.CreateFont(-13, 0, 0, 0, FW_NORMAL, 0, 0, 0, DEFAULT_CHARSET, 0, 0, 0, 0, "DejaVu Sans");
        dc.SelectObject(&font);
    }
    CDC dc;
    CFont font;
};

Context& Ctx() {
    static Context c;
    return c;
}

std::string Words(std::mt19937& rng, size_t len) {
    static const char* const words[] = {"note", "Folder", "calendar", "tickler", "level", "link", "the", "of",
                                        "Meeting", "about", "with", "and", "text", "entry", "Reminder", "a"};
    std::string t;
    while (t.size() < len) {
        t += words[rng() % 16];
        t += ' ';
    }
    t.resize(len);
    return t;
}

// 64 lines of 1,000 characters and a width for each, from a tenth to nine tenths of the line.
struct Lines {
    std::vector<std::string> text;
    std::vector<long> width;
};

const Lines& FitLines() {
    static const Lines lines = [] {
        Lines l;
        std::mt19937 rng(17);
        for (int i = 0; i < 64; ++i) {
            l.text.push_back(Words(rng, 1000));
            long whole = Ctx().dc.GetTextExtent(l.text.back().c_str(), 1000).cx;
            l.width.push_back(whole / 10 + (long)(rng() % (unsigned long)(whole * 8 / 10)));
        }
        return l;
    }();
    return lines;
}

// The baseline: measure prefixes of growing length until one is too wide.
int LinearScan(CDC& dc, const std::string& t, long width, unsigned long& measures) {
    int n = 0;
    for (int len = 1; len <= (int)t.size(); ++len) {
        ++measures;
        if (dc.GetTabbedTextExtent(t.c_str(), len, 0, nullptr).cx > width) break;
        n = len;
    }
    return n;
}

void BM_MapWidthToCharPos(benchmark::State& state) {
    const Lines& l = FitLines();
    CDC& dc = Ctx().dc;
    size_t i = 0;
    unsigned long before = qm::TextFitMeasureCount();
    long calls = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(MapWidthToCharPos(&dc, l.width[i], l.text[i].c_str(), 1000));
        i = (i + 1) % l.text.size();
        ++calls;
    }
    double ours = (double)(qm::TextFitMeasureCount() - before) / (double)calls;
    unsigned long linear = 0;
    for (size_t k = 0; k < l.text.size(); ++k) LinearScan(dc, l.text[k], l.width[k], linear);
    double scan = (double)linear / (double)l.text.size();
    state.counters["measures/call"] = ours;
    state.counters["linear measures/call"] = scan;
    state.counters["measure ratio"] = ours / scan;
}

void BM_LinearScan(benchmark::State& state) {
    const Lines& l = FitLines();
    CDC& dc = Ctx().dc;
    size_t i = 0;
    unsigned long measures = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(LinearScan(dc, l.text[i], l.width[i], measures));
        i = (i + 1) % l.text.size();
    }
}

const std::string& WrapText() {
    static const std::string t = [] {
        std::mt19937 rng(5);
        std::string s = Words(rng, 15000);
        for (size_t k = 700; k < s.size(); k += 900) s[k] = '\r';
        return s;
    }();
    return t;
}

void BM_WordWrapString(benchmark::State& state) {
    const std::string& t = WrapText();
    for (auto _ : state) {
        CString s(t.c_str());
        benchmark::DoNotOptimize(WordWrapString(s, 400, &Ctx().dc));
    }
    state.SetBytesProcessed((int64_t)state.iterations() * (int64_t)t.size());
}

void BM_memcpy_WrapText(benchmark::State& state) {
    const std::string& t = WrapText();
    std::vector<char> out(t.size());
    for (auto _ : state) {
        std::memcpy(out.data(), t.data(), t.size());
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed((int64_t)state.iterations() * (int64_t)t.size());
}

struct Big {
    Big() {
        bmp.Create(4096, 4096, 24);
        for (DWORD i = 0; i < bmp.GetBitsSize(); ++i) bmp.GetBits()[i] = (BYTE)(i * 7);
        CDC screen;
        screen.CreateDC("DISPLAY", nullptr, nullptr, nullptr);
        dc.CreateCompatibleDC(&screen);
        target.CreateCompatibleBitmap(&screen, 2048, 2048);
        dc.SelectObject(&target);
        dc.SetStretchBltMode(COLORONCOLOR);
    }
    CDIBitmap bmp;
    CDC dc;
    CBitmap target;
};

Big& BigBitmap() {
    static Big b;
    return b;
}

void BM_StretchBlt_Half(benchmark::State& state) {
    Big& b = BigBitmap();
    for (auto _ : state) b.bmp.StretchBlt(b.dc.GetSafeHdc(), 0, 0, 2048, 2048, 0, 0, 4096, 4096);
    state.SetBytesProcessed((int64_t)state.iterations() * 2048 * 2048 * 4);
}

void BM_memcpy_HalfResult(benchmark::State& state) {
    std::vector<char> in((size_t)2048 * 2048 * 4, 1), out(in.size());
    for (auto _ : state) {
        std::memcpy(out.data(), in.data(), in.size());
        benchmark::DoNotOptimize(out.data());
    }
    state.SetBytesProcessed((int64_t)state.iterations() * (int64_t)in.size());
}

BENCHMARK(BM_MapWidthToCharPos)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_LinearScan)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_WordWrapString)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_memcpy_WrapText)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_StretchBlt_Half)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_memcpy_HalfResult)->Unit(benchmark::kMillisecond);

const bool registered = [] {
    qmbench::AddRatio("MapWidthToCharPos / linear prefix scan (1,000-character lines)", "BM_MapWidthToCharPos",
                      "BM_LinearScan", "report (measurements: see 'measure ratio', target <= 0.1)");
    qmbench::AddRatio("WordWrapString 15,000 characters / memcpy", "BM_WordWrapString", "BM_memcpy_WrapText",
                      "report (MiB/s in the table)");
    qmbench::AddRatio("StretchBlt 4096x4096 24-bit to half / memcpy of the result", "BM_StretchBlt_Half",
                      "BM_memcpy_HalfResult", "<= 4");
    return true;
}();

}  // namespace

QM_BENCH_MAIN()

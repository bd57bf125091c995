// CDate::Format("%A %d %B %Y") against the C runtime's strftime writing the same text from a
// broken-down time that is already filled in (weekday included). Both sides produce a
// framework string, so the ratio compares the formatting itself.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <vector>

#include "ratio_reporter.h"
#include "utils/common/date.h"

namespace {

struct Sample {
    CDate date;
    struct tm fields;
};

// 256 dates spread over 1950..2049, with their broken-down form for strftime.
const std::vector<Sample>& Samples() {
    static const std::vector<Sample> samples = [] {
        std::vector<Sample> out;
        for (int i = 0; i < 256; ++i) {
            int y = 1950 + (i * 37) % 100, m = 1 + (i * 7) % 12, d = 1 + (i * 11) % 28;
            Sample s{CDate(y, m, d), {}};
            s.fields.tm_year = y - 1900;
            s.fields.tm_mon = m - 1;
            s.fields.tm_mday = d;
            s.fields.tm_wday = (int)(CDate::ymd2scalar(y, m, d) % 7);
            out.push_back(s);
        }
        return out;
    }();
    return samples;
}

const char kFormat[] = "%A %d %B %Y";

void BM_CDateFormat(benchmark::State& state) {
    const std::vector<Sample>& samples = Samples();
    size_t i = 0;
    for (auto _ : state) {
        CString text = samples[i++ & 255].date.Format(kFormat);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(BM_CDateFormat);

void BM_Strftime(benchmark::State& state) {
    const std::vector<Sample>& samples = Samples();
    size_t i = 0;
    for (auto _ : state) {
        char buf[64];
        size_t n = std::strftime(buf, sizeof buf, kFormat, &samples[i++ & 255].fields);
        CString text(buf, (int)n);
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(BM_Strftime);

// Both sides must write the same text, or the ratio means nothing.
const bool g_checked = [] {
    for (const Sample& s : Samples()) {
        char buf[64];
        size_t n = std::strftime(buf, sizeof buf, kFormat, &s.fields);
        if (s.date.Format(kFormat) != CString(buf, (int)n)) {
            std::fprintf(stderr, "output differs for %s\n", buf);
            std::exit(1);
        }
    }
    qmbench::AddRatio("CDate::Format vs strftime", "BM_CDateFormat", "BM_Strftime", "<= 1.0");
    return true;
}();

}  // namespace

QM_BENCH_MAIN()

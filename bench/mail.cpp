// CollectEMails over 16 MiB of generated note text, against a case-insensitive search of the
// same text (strcasestr) as the baseline; both report bytes per second (MiB/s).
#include <cstring>
#include <random>
#include <string>

#include "ratio_reporter.h"
#include "utils/common/utils_mail.h"

namespace {

// Words, punctuation and line ends, with an address every 40 words or so and a link now and
// then: the mix of a mailbox of notes.
const std::string& SampleText() {
    static const std::string text = [] {
        const size_t size = 16u << 20;
        const char* words[] = {"the", "meeting", "is", "moved", "to", "Thursday,", "please", "see", "notes",
                               "(draft)", "and", "reply", "before", "noon.", "Thanks!", "--", "budget", "2026;"};
        std::mt19937 rng(7);
        std::string out;
        out.reserve(size + 64);
        while (out.size() < size) {
            unsigned r = rng() % 48;
            if (r == 0) out += "jane.doe" + std::to_string(rng() % 500) + "@example.test";
            else if (r == 1) out += "<bob_" + std::to_string(rng() % 90) + "@mail.example.test>";
            else if (r == 2) out += "http://www.example.test/a/b.html";
            else out += words[rng() % (sizeof(words) / sizeof(words[0]))];
            out += (rng() % 12 == 0) ? '\r' : ' ';
        }
        out.resize(size);
        return out;
    }();
    return text;
}

void BM_CollectEMails(benchmark::State& state) {
    const std::string& text = SampleText();
    CString input(text.data(), (int)text.size());
    size_t count = 0;
    for (auto _ : state) {
        CStringSet found;
        CollectEMails(input, found);
        count = (size_t)found.GetCount();
        benchmark::DoNotOptimize(count);
    }
    state.SetBytesProcessed((int64_t)state.iterations() * (int64_t)text.size());
    state.counters["addresses"] = (double)count;
}

void BM_StrCaseStrBaseline(benchmark::State& state) {
    const std::string& text = SampleText();
    for (auto _ : state) {
        const char* hit = strcasestr(text.c_str(), "@NOWHERE.TEST#");
        benchmark::DoNotOptimize(hit);
    }
    state.SetBytesProcessed((int64_t)state.iterations() * (int64_t)text.size());
}

BENCHMARK(BM_CollectEMails)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StrCaseStrBaseline)->Unit(benchmark::kMillisecond);

const bool g_ratios = [] {
    qmbench::AddRatio("CollectEMails / strcasestr over 16 MiB", "BM_CollectEMails", "BM_StrCaseStrBaseline",
                      "reported (throughput in MiB/s is the bytes_per_second column)");
    return true;
}();

}  // namespace

QM_BENCH_MAIN()

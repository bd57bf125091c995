// Text search, replacement and the list merge sort against the C library and the standard
// library on the same generated data.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "ratio_reporter.h"
#include "utils/common/utils_text.h"

namespace {

// 16 MiB of note-like text: words of mixed case, spaces and line ends; deterministic.
const std::string& Text() {
    static const std::string text = [] {
        static const char* const words[] = {"the", "note", "Folder", "calendar", "tickler", "level", "link",
                                            "Meeting", "about", "with", "and", "text", "entry", "Reminder",
                                            "e-mail", "address", "of", "to", "in", "done"};
        std::mt19937 rng(2024);
        std::string t;
        t.reserve(16u << 20);
        while (t.size() < (16u << 20) - 64) {
            t += words[rng() % 20];
            t += (rng() % 12 == 0) ? "\r\n" : " ";
        }
        return t;
    }();
    return text;
}

// Searches that scan the whole text: the patterns occur only once, at its very end.
const std::string& TextWithTail(const char* tail) {
    static std::string withRare, withCommon;
    std::string& t = tail[0] == 'Q' ? withRare : withCommon;
    if (t.empty()) t = Text() + tail;
    return t;
}

void BM_InString_RareFirst(benchmark::State& state) {
    const std::string& t = TextWithTail("Quillfeather");
    for (auto _ : state) benchmark::DoNotOptimize(InString("quILLfeather", t.c_str()));
    state.SetBytesProcessed((int64_t)state.iterations() * (int64_t)t.size());
}
void BM_strcasestr_RareFirst(benchmark::State& state) {
    const std::string& t = TextWithTail("Quillfeather");
    for (auto _ : state) benchmark::DoNotOptimize(strcasestr(t.c_str(), "quILLfeather"));
    state.SetBytesProcessed((int64_t)state.iterations() * (int64_t)t.size());
}
// 'e' starts or fills a large share of the words: many candidates that fail late.
void BM_InString_CommonFirst(benchmark::State& state) {
    const std::string& t = TextWithTail("entryx");
    for (auto _ : state) benchmark::DoNotOptimize(InString("ENTRYX", t.c_str()));
    state.SetBytesProcessed((int64_t)state.iterations() * (int64_t)t.size());
}
void BM_strcasestr_CommonFirst(benchmark::State& state) {
    const std::string& t = TextWithTail("entryx");
    for (auto _ : state) benchmark::DoNotOptimize(strcasestr(t.c_str(), "ENTRYX"));
    state.SetBytesProcessed((int64_t)state.iterations() * (int64_t)t.size());
}

void BM_ReplaceString_Longer(benchmark::State& state) {
    const CString source(Text().c_str());
    int hits = 0;
    for (auto _ : state) {
        state.PauseTiming();
        CString s = source;
        state.ResumeTiming();
        hits = ReplaceString(s, "note", "annotation", 0, 0);
        benchmark::DoNotOptimize(s.GetString());
    }
    state.counters["hits"] = hits;
    state.SetBytesProcessed((int64_t)state.iterations() * (int64_t)source.GetLength());
}
void BM_memcpy_Text(benchmark::State& state) {
    const std::string& t = Text();
    std::vector<char> out(t.size());
    for (auto _ : state) {
        std::memcpy(out.data(), t.data(), t.size());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed((int64_t)state.iterations() * (int64_t)t.size());
}

constexpr unsigned kRecords = 1000000;

const std::vector<int>& Unsorted() {
    static const std::vector<int> v = [] {
        std::mt19937 rng(77);
        std::vector<int> r(kRecords);
        for (int& x : r) x = (int)(rng() % 100000);  // plenty of duplicates
        return r;
    }();
    return v;
}

int CompareInt(const void* a, const void* b) {
    const int x = *static_cast<const int*>(a), y = *static_cast<const int*>(b);
    return (x > y) - (x < y);
}

template <typename Sort>
void RunSort(benchmark::State& state, Sort sort) {
    std::vector<int> v;
    for (auto _ : state) {
        state.PauseTiming();
        v = Unsorted();
        state.ResumeTiming();
        sort(v);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed((int64_t)state.iterations() * kRecords);
}

void BM_ListMergeSort_Ascending(benchmark::State& state) {
    RunSort(state, [](std::vector<int>& v) { ListMergeSort(v.data(), (unsigned)v.size(), sizeof(int), CompareInt, 1); });
}
void BM_ListMergeSort_Descending(benchmark::State& state) {
    RunSort(state, [](std::vector<int>& v) { ListMergeSort(v.data(), (unsigned)v.size(), sizeof(int), CompareInt, 0); });
}
void BM_qsort(benchmark::State& state) {
    RunSort(state, [](std::vector<int>& v) { std::qsort(v.data(), v.size(), sizeof(int), CompareInt); });
}
void BM_stable_sort(benchmark::State& state) {
    RunSort(state, [](std::vector<int>& v) { std::stable_sort(v.begin(), v.end()); });
}

BENCHMARK(BM_InString_RareFirst)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_strcasestr_RareFirst)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_InString_CommonFirst)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_strcasestr_CommonFirst)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReplaceString_Longer)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_memcpy_Text)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ListMergeSort_Ascending)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ListMergeSort_Descending)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_qsort)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_stable_sort)->Unit(benchmark::kMillisecond);

const bool registered = [] {
    qmbench::AddRatio("InString / strcasestr (rare first byte)", "BM_InString_RareFirst", "BM_strcasestr_RareFirst",
                      "<= 1.0");
    qmbench::AddRatio("InString / strcasestr (common first byte)", "BM_InString_CommonFirst",
                      "BM_strcasestr_CommonFirst", "<= 1.0");
    qmbench::AddRatio("ReplaceString longer, many hits / memcpy", "BM_ReplaceString_Longer", "BM_memcpy_Text",
                      "report");
    qmbench::AddRatio("ListMergeSort ascending / std::stable_sort", "BM_ListMergeSort_Ascending", "BM_stable_sort",
                      "<= 2.0");
    qmbench::AddRatio("ListMergeSort descending / std::stable_sort", "BM_ListMergeSort_Descending", "BM_stable_sort",
                      "<= 2.0");
    qmbench::AddRatio("ListMergeSort ascending / qsort", "BM_ListMergeSort_Ascending", "BM_qsort", "report");
    return true;
}();

}  // namespace

QM_BENCH_MAIN()

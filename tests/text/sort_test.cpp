#include <gtest/gtest.h>
#include <cstdlib>
#include <cstring>
#include <random>
#include <utility>
#include <vector>

#include "utils/common/utils_text.h"

namespace {

struct Record {
    int key, id;  // id: the original position, to see where equal keys end up
    bool operator==(const Record&) const = default;
};

// Every comparator call is logged as its pair of record ids, to check the model call for call.
std::vector<std::pair<int, int>> g_calls;
bool g_scramble = false;  // answer with a deterministic but inconsistent order instead

int CompareRecords(const void* a, const void* b) {
    const Record* x = static_cast<const Record*>(a);
    const Record* y = static_cast<const Record*>(b);
    g_calls.emplace_back(x->id, y->id);
    if (g_scramble) return (int)(((unsigned)x->id * 2654435761u ^ (unsigned)y->id * 40503u) % 3) - 1;
    return (x->key > y->key) - (x->key < y->key);
}

// The link-table merge sort step by step: 1-based links, L[0] and L[N+1] head the two lists,
// a negative link ends a run, 0 ends a list.
std::vector<Record> LinkTableModel(const std::vector<Record>& in, int flag) {
    const int n = (int)in.size();
    if (n < 2) return in;
    std::vector<int> L(n + 2);
    L[0] = 1;
    L[n + 1] = 2;
    for (int i = 1; i <= n - 2; ++i) L[i] = -(i + 2);
    L[n - 1] = L[n] = 0;
    auto setKeepingSign = [&](int at, int v) { L[at] = L[at] < 0 ? -v : v; };
    auto takeSecond = [&](int p, int q) {
        const int r = CompareRecords(&in[p - 1], &in[q - 1]);
        return flag ? r < 1 : r >= 0;
    };
    for (;;) {
        int s = 0, t = n + 1, p = L[s], q = L[t];
        if (q == 0) break;
        for (;;) {
            // Merge the run at p with the run at q.
            for (;;) {
                if (!takeSecond(p, q)) {
                    setKeepingSign(s, p);
                    s = p;
                    p = L[p];
                    if (p > 0) continue;
                    L[s] = q;
                    s = t;
                    do { t = q; q = L[q]; } while (q > 0);
                } else {
                    setKeepingSign(s, q);
                    s = q;
                    q = L[q];
                    if (q > 0) continue;
                    L[s] = p;
                    s = t;
                    do { t = p; p = L[p]; } while (p > 0);
                }
                break;
            }
            p = -p;
            q = -q;
            if (q == 0) {
                setKeepingSign(s, p);
                setKeepingSign(t, 0);
                break;
            }
        }
    }
    std::vector<Record> out(in.size());
    int k = 0;
    for (int p = L[0]; p != 0; p = std::abs(L[p])) out[(size_t)(n - 1 - k++)] = in[(size_t)p - 1];
    EXPECT_EQ(k, n);
    return out;
}

std::vector<Record> RandomRecords(std::mt19937& rng, int n, int distinctKeys) {
    std::vector<Record> v((size_t)n);
    for (int i = 0; i < n; ++i) v[(size_t)i] = {(int)(rng() % (unsigned)distinctKeys), i};
    return v;
}

TEST(ListMergeSort, MatchesTheLinkTableCallForCall) {
    std::mt19937 rng(5);
    for (bool scramble : {false, true})
        for (int flag : {0, 1, -7})
            for (int n : {0, 1, 2, 3, 4, 5, 7, 8, 9, 17, 33, 257, 1000}) {
                g_scramble = scramble;
                const std::vector<Record> input = RandomRecords(rng, n, 4);
                g_calls.clear();
                const std::vector<Record> expected = LinkTableModel(input, flag);
                const auto expectedCalls = g_calls;
                std::vector<Record> got = input;
                g_calls.clear();
                ListMergeSort(got.data(), (unsigned)n, sizeof(Record), CompareRecords, flag);
                EXPECT_TRUE(got == expected) << "n=" << n << " flag=" << flag << " scramble=" << scramble;
                EXPECT_EQ(g_calls, expectedCalls) << "n=" << n << " flag=" << flag << " scramble=" << scramble;
            }
    g_scramble = false;
}

TEST(ListMergeSort, DegenerateArgumentsDoNothing) {
    g_calls.clear();
    Record one[1] = {{4, 0}};
    ListMergeSort(nullptr, 5, sizeof(Record), CompareRecords, 0);
    ListMergeSort(one, 5, 0, CompareRecords, 0);
    ListMergeSort(one, 5, sizeof(Record), nullptr, 0);
    EXPECT_TRUE(g_calls.empty()) << g_calls.size() << " comparisons";
    EXPECT_EQ(one[0].key, 4);
}

int CompareChars3(const void* a, const void* b) { return std::memcmp(a, b, 3); }

TEST(ListMergeSort, OddRecordSizes) {
    char data[] = "cabaaaccbabc";  // four 3-byte records
    ListMergeSort(data, 4, 3, CompareChars3, 1);
    EXPECT_STREQ(data, "aaaabccabccb");
}

}  // namespace

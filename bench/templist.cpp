// Registering 10,000 files for deletion at exit. Every change rewrites the whole list file,
// so n registrations write about n*n/2 lines; the batched form (saving suspended while the
// files are added, one write at the end) is measured beside it. The registrations go to a
// list of the benchmark's own in the temporary folder (what DeleteFileOnExit does on the
// process-wide list), so that no list file is left in the folder the benchmark runs from.
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "ratio_reporter.h"
#include "utils/common/TempList.h"
#include "utils/platform/files.h"

namespace {

constexpr int kFiles = 10000;

std::string ListFile() {
    std::string windows;
    auto native = std::filesystem::temp_directory_path() / ("qmbench-list-" + std::to_string(::getpid()) + ".lst");
    qm::platform::ToWindowsPath(native.string().c_str(), windows);
    return windows;
}

const std::vector<std::string>& Paths() {
    static const std::vector<std::string> paths = [] {
        std::vector<std::string> v;
        char name[64];
        for (int i = 0; i < kFiles; ++i) {
            std::snprintf(name, sizeof name, "Z:\\qmbench-absent\\file%05d.tmp", i);
            v.push_back(name);
        }
        return v;
    }();
    return paths;
}

void Register(benchmark::State& state, bool batched) {
    const std::string file = ListFile();
    double bytes = 0;
    for (auto _ : state) {
        CTempList list(file.c_str());
        if (batched) list.SuspendSaving(true);
        size_t listBytes = 0;
        for (const std::string& path : Paths()) {
            new CTempFile(path.c_str(), &list);
            listBytes += path.size() + 2;
            if (!batched) bytes += (double)listBytes;
        }
        if (batched) {
            list.SuspendSaving(false);
            bytes += (double)listBytes;
        }
        state.PauseTiming();
        list.SuspendSaving(true);  // the clean-up is not measured
        list.RemoveAll();
        qm::platform::FileDelete(file.c_str());
        state.ResumeTiming();
    }
    state.counters["MB_written"] = bytes / 1e6 / (double)state.iterations();
    state.SetItemsProcessed(state.iterations() * kFiles);
}

void BM_DeleteFileOnExit10000(benchmark::State& state) { Register(state, false); }
BENCHMARK(BM_DeleteFileOnExit10000)->Iterations(1)->Unit(benchmark::kMillisecond);

void BM_BatchedRegistration10000(benchmark::State& state) { Register(state, true); }
BENCHMARK(BM_BatchedRegistration10000)->Iterations(3)->Unit(benchmark::kMillisecond);

const bool g_ratios = [] {
    qmbench::AddRatio("10,000 registrations, every change saved vs one batched save", "BM_DeleteFileOnExit10000/iterations:1",
                      "BM_BatchedRegistration10000/iterations:3", "report");
    return true;
}();

}  // namespace

QM_BENCH_MAIN()

// Writing and reading back 1,000 streams of 64 KiB in one compound file, against writing and
// reading the same bytes as 1,000 plain files in one folder. Both work in a folder of their own
// beside the benchmark (fresh names on every repetition); the compound file is read back
// through a fresh open, as a host reading its attachments would.
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "ratio_reporter.h"
#include "utils/common/OleStorage.h"
#include "utils/platform/host.h"

namespace {

constexpr int kStreams = 1000;
constexpr std::size_t kBytes = 64 * 1024;

const std::vector<BYTE>& Payload() {
    static const std::vector<BYTE> bytes = [] {
        std::vector<BYTE> b(kBytes);
        for (std::size_t i = 0; i < b.size(); ++i) b[i] = (BYTE)(i * 31 + (i >> 9));
        return b;
    }();
    return bytes;
}

std::filesystem::path Folder() {
    auto p = std::filesystem::current_path() / ("qmbench-storage-" + std::to_string(::getpid()));
    std::filesystem::create_directories(p);
    return p;
}

std::string StreamName(int i) {
    char name[32];
    std::snprintf(name, sizeof name, "attachment%04d", i);
    return name;
}

void BM_CompoundFile(benchmark::State& state) {
    int round = 0;
    for (auto _ : state) {
        std::string windows;
        auto file = Folder() / ("round" + std::to_string(round++) + ".cfb");
        qm::platform::ToWindowsPath(file.string().c_str(), windows);
        IStorage* root = nullptr;
        if (FAILED(OleStorage::CreateOnFile(windows.c_str(), &root))) state.SkipWithError("create");
        for (int i = 0; i < kStreams; ++i)
            OleStorage::WriteStream(root, StreamName(i).c_str(), Payload().data(), Payload().size());
        OleStorage::Commit(root);
        root->Release();
        if (FAILED(OleStorage::OpenOnFile(windows.c_str(), FALSE, &root))) state.SkipWithError("open");
        std::vector<BYTE> data;
        std::size_t total = 0;
        for (int i = 0; i < kStreams; ++i) {
            OleStorage::ReadStream(root, StreamName(i).c_str(), data);
            total += data.size();
        }
        root->Release();
        if (total != kStreams * kBytes) state.SkipWithError("short read");
        state.PauseTiming();
        std::filesystem::remove(file);
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * (int64_t)(kStreams * kBytes));
}
BENCHMARK(BM_CompoundFile)->Iterations(5)->Unit(benchmark::kMillisecond);

void BM_PlainFiles(benchmark::State& state) {
    int round = 0;
    std::vector<BYTE> data(kBytes);
    for (auto _ : state) {
        auto dir = Folder() / ("plain" + std::to_string(round++));
        std::filesystem::create_directories(dir);
        for (int i = 0; i < kStreams; ++i) {
            FILE* f = std::fopen((dir / StreamName(i)).string().c_str(), "wb");
            std::fwrite(Payload().data(), 1, Payload().size(), f);
            std::fclose(f);
        }
        std::size_t total = 0;
        for (int i = 0; i < kStreams; ++i) {
            FILE* f = std::fopen((dir / StreamName(i)).string().c_str(), "rb");
            total += std::fread(data.data(), 1, data.size(), f);
            std::fclose(f);
        }
        if (total != kStreams * kBytes) state.SkipWithError("short read");
        state.PauseTiming();
        std::filesystem::remove_all(dir);
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * (int64_t)(kStreams * kBytes));
}
BENCHMARK(BM_PlainFiles)->Iterations(5)->Unit(benchmark::kMillisecond);

const bool g_ratios = [] {
    qmbench::AddRatio("1,000 x 64 KiB written and read: compound file vs plain files", "BM_CompoundFile/iterations:5",
                      "BM_PlainFiles/iterations:5", "<= 2 (at least half the plain files' rate)");
    return true;
}();

struct CleanUp {
    ~CleanUp() {
        std::error_code ec;
        std::filesystem::remove_all(Folder(), ec);
    }
} g_cleanUp;

}  // namespace

QM_BENCH_MAIN()

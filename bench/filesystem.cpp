// Folder iteration and path algebra against the standard library: CFileItr over a folder of
// 100,000 files against std::filesystem::directory_iterator, and GetRelativePath, ExtractFile
// and ChangeExtension on a million paths against std::filesystem::path.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "ratio_reporter.h"
#include "utils/common/FileSystem.h"
#include "utils/framework/CFile.h"
#include "utils/platform/files.h"

namespace {

namespace stdfs = std::filesystem;

constexpr int kFiles = 100000;

// The folder of 100,000 empty files, made once under the temporary folder and removed when
// the program ends.
struct BigFolder {
    stdfs::path native;
    CString windows;
    BigFolder() {
        native = stdfs::temp_directory_path() / ("qm_bench_folder_" + std::to_string(std::random_device{}()));
        stdfs::create_directories(native);
        for (int i = 0; i < kFiles; ++i) std::ofstream(native / ("entry" + std::to_string(i) + ".dat"));
        std::string w;
        qm::platform::ToWindowsPath(native.c_str(), w);
        windows = w.c_str();
    }
    ~BigFolder() {
        std::error_code ignored;
        stdfs::remove_all(native, ignored);
    }
};

const BigFolder& Folder() {
    static BigFolder folder;
    return folder;
}

void BM_CFileItr_100k(benchmark::State& state) {
    const CString& folder = Folder().windows;
    int count = 0;
    for (auto _ : state) {
        count = 0;
        for (FileSystem::CFileItr it(folder, "*.*"); it.IsValid(); it.Next()) ++count;
        benchmark::DoNotOptimize(count);
    }
    state.counters["entries"] = count;
    state.SetItemsProcessed((int64_t)state.iterations() * count);
}

void BM_directory_iterator_100k(benchmark::State& state) {
    const stdfs::path& folder = Folder().native;
    int count = 0;
    for (auto _ : state) {
        count = 0;
        for (const auto& entry : stdfs::directory_iterator(folder)) {
            benchmark::DoNotOptimize(entry.path().c_str());
            ++count;
        }
    }
    state.counters["entries"] = count;
    state.SetItemsProcessed((int64_t)state.iterations() * count);
}

// A thousand distinct paths, each used a thousand times: a million operations per iteration.
constexpr int kDistinct = 1000, kRounds = 1000;

struct PathSet {
    std::vector<CString> windows, windowsBase;
    std::vector<stdfs::path> posix, posixBase;
    PathSet() {
        std::mt19937 rng(7);
        for (int i = 0; i < kDistinct; ++i) {
            std::string dir = "\\docs\\project" + std::to_string(rng() % 40) + "\\notes" + std::to_string(rng() % 9);
            std::string name = "\\entry" + std::to_string(rng() % 100000) + ".txt";
            std::string base = "\\docs\\project" + std::to_string(rng() % 40) + "\\base.doc";
            windows.push_back(CString(("C:" + dir + name).c_str()));
            windowsBase.push_back(CString(("C:" + base).c_str()));
            for (std::string* s : {&dir, &name, &base})
                for (char& c : *s)
                    if (c == '\\') c = '/';
            posix.emplace_back(dir + name);
            posixBase.emplace_back(base);
        }
    }
};

const PathSet& Paths() {
    static PathSet paths;
    return paths;
}

template <typename Op>
void MillionTimes(benchmark::State& state, Op op) {
    for (auto _ : state)
        for (int r = 0; r < kRounds; ++r)
            for (int i = 0; i < kDistinct; ++i) op(i);
    state.SetItemsProcessed((int64_t)state.iterations() * kRounds * kDistinct);
}

void BM_GetRelativePath(benchmark::State& state) {
    const PathSet& p = Paths();
    MillionTimes(state, [&](int i) {
        CString r = FileSystem::GetRelativePath(p.windows[i], p.windowsBase[i]);
        benchmark::DoNotOptimize(r.GetString());
    });
}
void BM_lexically_relative(benchmark::State& state) {
    const PathSet& p = Paths();
    MillionTimes(state, [&](int i) {
        stdfs::path r = p.posix[i].lexically_relative(p.posixBase[i].parent_path());
        benchmark::DoNotOptimize(r.c_str());
    });
}

void BM_ExtractFile(benchmark::State& state) {
    const PathSet& p = Paths();
    MillionTimes(state, [&](int i) {
        CString r = FileSystem::ExtractFile(p.windows[i]);
        benchmark::DoNotOptimize(r.GetString());
    });
}
void BM_path_filename(benchmark::State& state) {
    const PathSet& p = Paths();
    MillionTimes(state, [&](int i) {
        stdfs::path r = p.posix[i].filename();
        benchmark::DoNotOptimize(r.c_str());
    });
}

void BM_ChangeExtension(benchmark::State& state) {
    const PathSet& p = Paths();
    MillionTimes(state, [&](int i) {
        CString r = FileSystem::ChangeExtension(p.windows[i], "bak");
        benchmark::DoNotOptimize(r.GetString());
    });
}
void BM_path_replace_extension(benchmark::State& state) {
    const PathSet& p = Paths();
    MillionTimes(state, [&](int i) {
        stdfs::path r = p.posix[i];
        r.replace_extension("bak");
        benchmark::DoNotOptimize(r.c_str());
    });
}

// 100,000 new files made one at a time in a new folder: through the library (CFile, which
// looks for another spelling of each name first) against plain open(O_CREAT | O_EXCL) of the
// same names. The folder is made and removed outside the timing.
template <class Make>
void FillNewFolder(benchmark::State& state, Make make) {
    for (auto _ : state) {
        state.PauseTiming();
        stdfs::path native = stdfs::temp_directory_path() / ("qm_bench_fill_" + std::to_string(std::random_device{}()));
        stdfs::create_directories(native);
        std::string windows;
        qm::platform::ToWindowsPath(native.c_str(), windows);
        state.ResumeTiming();
        for (int i = 0; i < kFiles; ++i) make(native, windows, "made" + std::to_string(i) + ".dat");
        state.PauseTiming();
        std::error_code ignored;
        stdfs::remove_all(native, ignored);
        // Removing 100,000 files leaves the file system work to finish in the background, which
        // would land on whichever benchmark runs next (ten to twenty times slower): flush it here.
        ::sync();
        state.ResumeTiming();
    }
    state.SetItemsProcessed((int64_t)state.iterations() * kFiles);
}

void BM_CreateFiles_100k(benchmark::State& state) {
    FillNewFolder(state, [](const stdfs::path&, const std::string& windows, const std::string& name) {
        CFile f((windows + "\\" + name).c_str(), CFile::modeCreate | CFile::modeWrite);
    });
}

void BM_open_excl_100k(benchmark::State& state) {
    FillNewFolder(state, [](const stdfs::path& native, const std::string&, const std::string& name) {
        int fd = ::open((native / name).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd >= 0) ::close(fd);
    });
}

BENCHMARK(BM_CreateFiles_100k)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_open_excl_100k)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_CFileItr_100k)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_directory_iterator_100k)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GetRelativePath)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_lexically_relative)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ExtractFile)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_path_filename)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ChangeExtension)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_path_replace_extension)->Unit(benchmark::kMillisecond);

const bool kRatios = [] {
    qmbench::AddRatio("CFileItr / directory_iterator, 100,000 files (time per pass)", "BM_CFileItr_100k",
                      "BM_directory_iterator_100k", "at most 2.0, i.e. at least half the rate");
    qmbench::AddRatio("creating 100,000 files in one folder: CFile / open(O_CREAT | O_EXCL)", "BM_CreateFiles_100k/iterations:1",
                      "BM_open_excl_100k/iterations:1", "<= 2, i.e. at least half the rate");
    qmbench::AddRatio("GetRelativePath / lexically_relative, 1e6 paths", "BM_GetRelativePath", "BM_lexically_relative",
                      "report");
    qmbench::AddRatio("ExtractFile / path::filename, 1e6 paths", "BM_ExtractFile", "BM_path_filename", "report");
    qmbench::AddRatio("ChangeExtension / path::replace_extension, 1e6 paths", "BM_ChangeExtension",
                      "BM_path_replace_extension", "report");
    return true;
}();

}  // namespace

QM_BENCH_MAIN()

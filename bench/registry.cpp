// Registry store throughput on a private store: WriteDWToRegistry and ReadFromRegistry
// against raw SQLite statements doing the same work (one upsert or one select of a value by
// key and name, on a database with the same settings). Target: at least half their rate.
#include <sqlite3.h>

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "ratio_reporter.h"
#include "utils/common/mfcutils_settings.h"
#include "utils/platform/host.h"

namespace {

std::string Scratch(const char* name) {
    return (std::filesystem::temp_directory_path() / ("qmbench-" + std::to_string(::getpid()) + "-" + name)).string();
}

struct RawStore {
    sqlite3* db = nullptr;
    sqlite3_stmt* put = nullptr;
    sqlite3_stmt* get = nullptr;
    std::string path = Scratch("raw.db");
    RawStore() {
        sqlite3_open(path.c_str(), &db);
        sqlite3_busy_timeout(db, 10000);
        sqlite3_exec(db,
                     "PRAGMA journal_mode=WAL; PRAGMA synchronous=NORMAL;"
                     "CREATE TABLE vals(key TEXT, name TEXT, type INTEGER, data BLOB, PRIMARY KEY(key, name))",
                     nullptr, nullptr, nullptr);
        sqlite3_prepare_v2(db, "INSERT OR REPLACE INTO vals VALUES(?1, ?2, ?3, ?4)", -1, &put, nullptr);
        sqlite3_prepare_v2(db, "SELECT type, data FROM vals WHERE key = ?1 AND name = ?2", -1, &get, nullptr);
    }
    ~RawStore() {
        sqlite3_finalize(put);
        sqlite3_finalize(get);
        sqlite3_close(db);
        for (const char* suffix : {"", "-wal", "-shm"}) std::remove((path + suffix).c_str());
    }
};

const char kKey[] = "Software\\Corvane\\Quillmark 11";

struct PrivateRegistry {
    std::string path = Scratch("registry.db");
    PrivateRegistry() { qm::platform::SetRegistryStoreLocation(path.c_str()); }
    ~PrivateRegistry() {
        qm::platform::SetRegistryStoreLocation(nullptr);
        for (const char* suffix : {"", "-wal", "-shm"}) std::remove((path + suffix).c_str());
    }
};

void BM_WriteDWToRegistry(benchmark::State& state) {
    PrivateRegistry registry;
    DWORD n = 0;
    for (auto _ : state) benchmark::DoNotOptimize(WriteDWToRegistry(kKey, "Counter", ++n));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_WriteDWToRegistry);

void BM_RawSqliteWrite(benchmark::State& state) {
    RawStore raw;
    DWORD n = 0;
    for (auto _ : state) {
        ++n;
        sqlite3_bind_text(raw.put, 1, kKey, -1, SQLITE_STATIC);
        sqlite3_bind_text(raw.put, 2, "Counter", -1, SQLITE_STATIC);
        sqlite3_bind_int(raw.put, 3, 4);
        sqlite3_bind_blob(raw.put, 4, &n, sizeof n, SQLITE_TRANSIENT);
        benchmark::DoNotOptimize(sqlite3_step(raw.put));
        sqlite3_reset(raw.put);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_RawSqliteWrite);

void BM_ReadFromRegistry(benchmark::State& state) {
    PrivateRegistry registry;
    WriteToRegistry(kKey, "DataPath", "Z:\\home\\user\\Quillmark Desk\\");
    for (auto _ : state) benchmark::DoNotOptimize(ReadFromRegistry(kKey, "DataPath", ""));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_ReadFromRegistry);

void BM_RawSqliteRead(benchmark::State& state) {
    RawStore raw;
    const char text[] = "Z:\\home\\user\\Quillmark Desk\\";
    sqlite3_bind_text(raw.put, 1, kKey, -1, SQLITE_STATIC);
    sqlite3_bind_text(raw.put, 2, "DataPath", -1, SQLITE_STATIC);
    sqlite3_bind_int(raw.put, 3, 1);
    sqlite3_bind_blob(raw.put, 4, text, sizeof text, SQLITE_STATIC);
    sqlite3_step(raw.put);
    sqlite3_reset(raw.put);
    for (auto _ : state) {
        sqlite3_bind_text(raw.get, 1, kKey, -1, SQLITE_STATIC);
        sqlite3_bind_text(raw.get, 2, "DataPath", -1, SQLITE_STATIC);
        if (sqlite3_step(raw.get) == SQLITE_ROW) {
            std::string value(static_cast<const char*>(sqlite3_column_blob(raw.get, 1)),
                              (size_t)sqlite3_column_bytes(raw.get, 1));
            benchmark::DoNotOptimize(value);
        }
        sqlite3_reset(raw.get);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_RawSqliteRead);

const bool g_ratios = [] {
    qmbench::AddRatio("registry WriteDWToRegistry rate vs raw SQLite", "BM_RawSqliteWrite", "BM_WriteDWToRegistry",
                      ">= 0.5");
    qmbench::AddRatio("registry ReadFromRegistry rate vs raw SQLite", "BM_RawSqliteRead", "BM_ReadFromRegistry",
                      ">= 0.5");
    return true;
}();

}  // namespace

QM_BENCH_MAIN()

// The store of the POSIX registry: one SQLite connection per process, opened at first use in
// WAL mode with a busy timeout, the schema made when missing, and the statements of every call
// prepared once.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "utils/platform/posix/registry_internal.h"

namespace qm::platform::posixreg {

namespace {

constexpr int kBusyTimeoutMs = 10000;

std::string DefaultStorePath() {
    std::string base;
    if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg == '/') {
        base = xdg;
    } else if (const char* home = std::getenv("HOME"); home && *home) {
        base = std::string(home) + "/.config";
    } else {
        base = "/tmp";
    }
    return base + "/MFCQMUtils/registry.db";
}

void MakeParentFolders(const std::string& file) {
    for (size_t pos = file.find('/', 1); pos != std::string::npos; pos = file.find('/', pos + 1))
        ::mkdir(file.substr(0, pos).c_str(), 0700);
}

}  // namespace

bool Store::Open() {
    if (m_db) return true;
    std::string path = m_location;
    if (path.empty()) {
        const char* env = std::getenv("MFCQMUTILS_REGISTRY");
        path = env && *env ? env : DefaultStorePath();
    }
    MakeParentFolders(path);
    if (sqlite3_open_v2(path.c_str(), &m_db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX,
                        nullptr) != SQLITE_OK) {
        Close();
        return false;
    }
    sqlite3_busy_timeout(m_db, kBusyTimeoutMs);
    // WAL lets readers run beside one writer; with synchronous NORMAL a commit survives the
    // process being killed at any moment (only a power loss may drop the last commits).
    if (!Exec("PRAGMA journal_mode=WAL") || !Exec("PRAGMA synchronous=NORMAL") ||
        !Exec("BEGIN IMMEDIATE;"
              "CREATE TABLE IF NOT EXISTS keys(id INTEGER PRIMARY KEY, parent INTEGER NOT NULL,"
              " name TEXT NOT NULL, path TEXT NOT NULL UNIQUE);"
              "CREATE INDEX IF NOT EXISTS keys_parent ON keys(parent);"
              "CREATE TABLE IF NOT EXISTS vals(id INTEGER PRIMARY KEY, key INTEGER NOT NULL,"
              " name TEXT NOT NULL COLLATE NOCASE, type INTEGER NOT NULL, data BLOB NOT NULL,"
              " UNIQUE(key, name));"
              "INSERT OR IGNORE INTO keys(id, parent, name, path) VALUES(1, 0, '', '');"
              "COMMIT;")) {
        Close();
        return false;
    }
    auto prepare = [this](const char* sql) { return std::make_unique<Statement>(m_db, sql); };
    findKey = prepare("SELECT id FROM keys WHERE path = ?1");
    insertKey = prepare("INSERT INTO keys(parent, name, path) VALUES(?1, ?2, ?3)");
    queryValue = prepare(
        "SELECT v.type, v.data FROM keys k LEFT JOIN vals v ON v.key = k.id AND v.name = ?2 WHERE k.id = ?1");
    setValue = prepare(
        "INSERT INTO vals(key, name, type, data) SELECT ?1, ?2, ?3, ?4 WHERE EXISTS"
        " (SELECT 1 FROM keys WHERE id = ?1) ON CONFLICT(key, name) DO UPDATE SET type = excluded.type,"
        " data = excluded.data");
    deleteValue = prepare("DELETE FROM vals WHERE key = ?1 AND name = ?2");
    keyExists = prepare("SELECT 1 FROM keys WHERE id = ?1");
    enumValue = prepare("SELECT name, type, data FROM vals WHERE key = ?1 ORDER BY id LIMIT 1 OFFSET ?2");
    enumKey = prepare("SELECT name FROM keys WHERE parent = ?1 ORDER BY path LIMIT 1 OFFSET ?2");
    deleteTreeValues = prepare(
        "WITH RECURSIVE t(id) AS (SELECT ?1 UNION ALL SELECT k.id FROM keys k JOIN t ON k.parent = t.id)"
        " DELETE FROM vals WHERE key IN t");
    deleteTreeKeys = prepare(
        "WITH RECURSIVE t(id) AS (SELECT ?1 UNION ALL SELECT k.id FROM keys k JOIN t ON k.parent = t.id)"
        " DELETE FROM keys WHERE id IN t");
    for (auto* s : {&findKey, &insertKey, &queryValue, &setValue, &deleteValue, &keyExists, &enumValue,
                    &enumKey, &deleteTreeValues, &deleteTreeKeys})
        if (!(*s)->Get()) {
            Close();
            return false;
        }
    return true;
}

void Store::Close() {
    for (auto* s : {&findKey, &insertKey, &queryValue, &setValue, &deleteValue, &keyExists, &enumValue,
                    &enumKey, &deleteTreeValues, &deleteTreeKeys})
        s->reset();
    if (m_db) sqlite3_close_v2(m_db);
    m_db = nullptr;
}

}  // namespace qm::platform::posixreg

// The SQLite connection behind the POSIX registry (registry.cpp): prepared statements, their
// use by one call, and the store that opens the database where it is kept.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>

namespace qm::platform::posixreg {

class Statement {
public:
    Statement(sqlite3* db, const char* sql) {
        if (sqlite3_prepare_v3(db, sql, -1, SQLITE_PREPARE_PERSISTENT, &m_stmt, nullptr) != SQLITE_OK)
            m_stmt = nullptr;
    }
    ~Statement() { sqlite3_finalize(m_stmt); }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    sqlite3_stmt* Get() const { return m_stmt; }

private:
    sqlite3_stmt* m_stmt = nullptr;
};

// Resets a statement when the call that used it is done.
class Use {
public:
    explicit Use(const Statement& s) : m_stmt(s.Get()) {}
    ~Use() {
        if (m_stmt) {
            sqlite3_reset(m_stmt);
            sqlite3_clear_bindings(m_stmt);
        }
    }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    explicit operator bool() const { return m_stmt != nullptr; }
    sqlite3_stmt* operator->() const { return m_stmt; }
    operator sqlite3_stmt*() const { return m_stmt; }

private:
    sqlite3_stmt* m_stmt;
};

// Binds text that outlives the statement's use.
inline void BindText(sqlite3_stmt* s, int i, const std::string& text) {
    sqlite3_bind_text(s, i, text.data(), (int)text.size(), SQLITE_STATIC);
}

class Store {
public:
    ~Store() { Close(); }

    bool Open();
    void Close();
    void SetLocation(const char* location) {
        Close();
        m_location = location ? location : "";
    }

    bool Exec(const char* sql) { return sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr) == SQLITE_OK; }
    sqlite3* Db() const { return m_db; }

    std::unique_ptr<Statement> findKey, insertKey, queryValue, setValue, deleteValue, keyExists,
        enumValue, enumKey, deleteTreeValues, deleteTreeKeys;

private:
    sqlite3* m_db = nullptr;
    std::string m_location;  // empty: the environment or the default location
};

}  // namespace qm::platform::posixreg

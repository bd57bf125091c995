// The registry on POSIX: the current user's hive is a SQLite database, the local machine's
// hive a small read-only tree answered from os-release.
//
// Schema: keys(id, parent, name, path) with path the key's full name folded to lower case
// (ASCII) and unique, so that opening a key of any depth is one indexed look-up; vals(key,
// name, type, data) with the value name compared without regard to ASCII case. The hive's
// root is key 1 (the connection and its statements: registry_store.cpp). A key handle is a heap object registered in a set, so that a stale or
// invented handle is answered with ERROR_INVALID_HANDLE instead of being used.
#include "utils/platform/host.h"
#include "utils/platform/posix/registry_internal.h"

#include <sqlite3.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <mutex>
#include <set>
#include <unordered_map>
#include <string>
#include <vector>

namespace qm::platform {
namespace {

using namespace posixreg;

constexpr std::int64_t kRootKey = 1;
constexpr size_t kMaxKeyNameLength = 255;
constexpr size_t kMaxValueNameLength = 16383;

enum class Hive { CurrentUser, LocalMachine };

struct KeyHandle {
    Hive hive;
    std::int64_t id;  // key id (current user) or node index (local machine)
    REGSAM access;
    std::string path;     // folded full path (current user)
    bool created = false;  // opened by RegCreateKeyEx: the key is made again if it vanishes
};

// ---------------------------------------------------------------------------------------
// The local machine's hive: a fixed tree; both CurrentVersion keys hold "ProductName".

struct MachineNode {
    const char* path;  // folded
    const char* name;
    int parent;
};

const MachineNode kMachineNodes[] = {
    {"", "", -1},
    {"software", "SOFTWARE", 0},
    {"software\\microsoft", "Microsoft", 1},
    {"software\\microsoft\\windows nt", "Windows NT", 2},
    {"software\\microsoft\\windows nt\\currentversion", "CurrentVersion", 3},
    {"software\\microsoft\\windows", "Windows", 2},
    {"software\\microsoft\\windows\\currentversion", "CurrentVersion", 5},
};
constexpr int kMachineNodeCount = sizeof kMachineNodes / sizeof kMachineNodes[0];

bool MachineNodeHasProductName(std::int64_t node) { return node == 4 || node == 6; }

// The value of one os-release variable: quotes removed, backslash escapes resolved.
std::string OsReleaseValue(const std::string& line) {
    std::string raw = line.substr(line.find('=') + 1), out;
    char quote = 0;
    for (size_t i = 0; i < raw.size(); ++i) {
        char c = raw[i];
        if (!quote && (c == '"' || c == '\'')) {
            quote = c;
        } else if (quote && c == quote) {
            quote = 0;
        } else if (c == '\\' && quote != '\'' && i + 1 < raw.size()) {
            out += raw[++i];
        } else {
            out += c;
        }
    }
    return out;
}

std::string ProductName() {
    for (const char* file : {"/etc/os-release", "/usr/lib/os-release"}) {
        std::ifstream in(file);
        if (!in) continue;
        std::string line, pretty, name;
        while (std::getline(in, line)) {
            if (line.rfind("PRETTY_NAME=", 0) == 0) pretty = OsReleaseValue(line);
            else if (line.rfind("NAME=", 0) == 0) name = OsReleaseValue(line);
        }
        if (!pretty.empty()) return pretty;
        if (!name.empty()) return name;
    }
    return "Linux";
}

// ---------------------------------------------------------------------------------------
// Names

std::string Fold(const std::string& text) {
    std::string out = text;
    for (char& c : out)
        if (c >= 'A' && c <= 'Z') c = (char)(c - 'A' + 'a');
    return out;
}

// Splits a subkey text into its names. A leading backslash is a bad path; doubled and
// trailing backslashes are passed over, as the Windows target does.
LONG SplitKeyPath(const char* subKey, std::vector<std::string>* names) {
    names->clear();
    if (!subKey || !*subKey) return ERROR_SUCCESS;
    std::string text = subKey;
    if (text.back() == '\\') text.pop_back();
    size_t start = 0;
    for (;;) {
        size_t end = text.find('\\', start);
        std::string name = text.substr(start, end == std::string::npos ? std::string::npos : end - start);
        if (name.empty() && start == 0) return ERROR_BAD_PATHNAME;
        if (name.size() > kMaxKeyNameLength) return ERROR_INVALID_PARAMETER;
        if (!name.empty()) names->push_back(name);
        if (end == std::string::npos) break;
        start = end + 1;
    }
    return ERROR_SUCCESS;
}

std::string JoinFolded(const std::string& base, const std::string& name) {
    return base.empty() ? Fold(name) : base + "\\" + Fold(name);
}

// The process's connection and handles, made at first use (also when a static initializer
// of the host reaches the registry before this file's own statics would be constructed).
struct Globals {
    std::mutex mutex;
    Store store;
    std::set<KeyHandle*> handles;
    // Key ids by folded path, as this process last saw them. Opening a key that is here costs
    // no statement; every later statement on the key checks that it still exists, and a key
    // that another process deleted meanwhile is looked up (or, for a created key, made) again.
    std::unordered_map<std::string, std::int64_t> keyIds;
};

Globals& G() {
    static Globals globals;
    return globals;
}

// Resolves a handle (predefined or opened) under the lock; nullptr when it is not valid.
KeyHandle* Resolve(HKEY key) {
    static KeyHandle currentUser{Hive::CurrentUser, kRootKey, KEY_ALL_ACCESS, "", false};
    static KeyHandle localMachine{Hive::LocalMachine, 0, KEY_READ, "", false};
    if (key == HKEY_CURRENT_USER) return &currentUser;
    if (key == HKEY_LOCAL_MACHINE) return &localMachine;
    auto it = G().handles.find(reinterpret_cast<KeyHandle*>(key));
    return it == G().handles.end() ? nullptr : *it;
}

HKEY NewHandle(KeyHandle handle) {
    auto* h = new KeyHandle(std::move(handle));
    G().handles.insert(h);
    return reinterpret_cast<HKEY>(h);
}

LONG StoreError() { return ERROR_BADDB; }

// The id of the key at a folded path, or 0 when there is none (-1 on a store error).
std::int64_t FindKey(const std::string& path) {
    if (path.empty()) return kRootKey;
    Use s(*G().store.findKey);
    BindText(s, 1, path);
    int rc = sqlite3_step(s);
    if (rc == SQLITE_ROW) return sqlite3_column_int64(s, 0);
    return rc == SQLITE_DONE ? 0 : -1;
}

// Finds, or with create makes, the current-user key at a folded path whose names (in their
// given spelling) are listed; every missing key is made in one transaction.
LONG FindOrMakeKey(const std::string& full, const std::vector<std::string>& names, bool create, std::int64_t* id,
                   bool* made) {
    *made = false;
    std::int64_t found = FindKey(full);
    if (found < 0) return StoreError();
    if (found > 0) {
        *id = G().keyIds[full] = found;
        return ERROR_SUCCESS;
    }
    if (!create) return ERROR_FILE_NOT_FOUND;
    if (!G().store.Exec("BEGIN IMMEDIATE")) return StoreError();
    // The names below the hive's root, outermost first, and their folded paths.
    std::vector<std::string> parts;
    size_t start = 0;
    for (;;) {
        size_t end = full.find('\\', start);
        parts.push_back(full.substr(0, end));
        if (end == std::string::npos) break;
        start = end + 1;
    }
    std::int64_t current = kRootKey;
    LONG result = ERROR_SUCCESS;
    for (size_t i = 0; result == ERROR_SUCCESS && i < parts.size(); ++i) {
        std::int64_t next = FindKey(parts[i]);
        if (next < 0) {
            result = StoreError();
        } else if (next == 0) {
            // Keys above the given names keep their folded spelling; the given ones their own.
            size_t fromEnd = parts.size() - i;
            std::string name = fromEnd <= names.size() ? names[names.size() - fromEnd]
                                                       : parts[i].substr(parts[i].rfind('\\') + 1);
            Use s(*G().store.insertKey);
            sqlite3_bind_int64(s, 1, current);
            BindText(s, 2, name);
            BindText(s, 3, parts[i]);
            if (sqlite3_step(s) != SQLITE_DONE) result = StoreError();
            next = sqlite3_last_insert_rowid(G().store.Db());
            *made = true;
        }
        current = next;
    }
    if (result == ERROR_SUCCESS && !G().store.Exec("COMMIT")) result = StoreError();
    if (result != ERROR_SUCCESS) {
        G().store.Exec("ROLLBACK");
        *made = false;
        return result;
    }
    *id = G().keyIds[full] = current;
    return ERROR_SUCCESS;
}

// After a statement found a handle's key gone: looks it up again (made again for a created
// key). ERROR_KEY_DELETED when it is gone for good.
LONG Refresh(KeyHandle* h) {
    if (h->id == kRootKey) return StoreError();
    G().keyIds.erase(h->path);
    std::int64_t id = 0;
    bool made = false;
    LONG rc = FindOrMakeKey(h->path, {}, h->created, &id, &made);
    if (rc == ERROR_FILE_NOT_FOUND) return ERROR_KEY_DELETED;
    if (rc == ERROR_SUCCESS) h->id = id;
    return rc;
}

LONG OpenMachineKey(std::int64_t parent, const std::vector<std::string>& names, std::int64_t* node) {
    std::string path = kMachineNodes[parent].path;
    for (const auto& n : names) path = JoinFolded(path, n);
    for (int i = 0; i < kMachineNodeCount; ++i)
        if (path == kMachineNodes[i].path) {
            *node = i;
            return ERROR_SUCCESS;
        }
    return ERROR_FILE_NOT_FOUND;
}

bool WantsWrite(REGSAM access) { return (access & (KEY_SET_VALUE | KEY_CREATE_SUB_KEY | KEY_CREATE_LINK)) != 0; }

LONG OpenOrCreate(HKEY root, const char* subKey, REGSAM access, HKEY* result, DWORD* disposition, bool create) {
    if (!result) return ERROR_INVALID_PARAMETER;
    *result = nullptr;
    std::vector<std::string> names;
    if (LONG rc = SplitKeyPath(subKey, &names); rc != ERROR_SUCCESS) return rc;
    std::lock_guard<std::mutex> lock(G().mutex);
    KeyHandle* parent = Resolve(root);
    if (!parent) return ERROR_INVALID_HANDLE;
    if (parent->hive == Hive::LocalMachine) {
        if (create || WantsWrite(access)) return ERROR_ACCESS_DENIED;
        std::int64_t node = 0;
        if (LONG rc = OpenMachineKey(parent->id, names, &node); rc != ERROR_SUCCESS) return rc;
        *result = NewHandle({Hive::LocalMachine, node, access, "", false});
        if (disposition) *disposition = REG_OPENED_EXISTING_KEY;
        return ERROR_SUCCESS;
    }
    if (!G().store.Open()) return StoreError();
    std::string full = parent->path;
    for (const auto& n : names) full = JoinFolded(full, n);
    std::int64_t id = 0;
    bool made = false;
    if (auto it = G().keyIds.find(full); it != G().keyIds.end()) {
        id = it->second;
    } else if (LONG rc = FindOrMakeKey(full, names, create, &id, &made); rc != ERROR_SUCCESS) {
        return rc;
    }
    *result = NewHandle({Hive::CurrentUser, id, access, full, create});
    if (disposition) *disposition = made ? REG_CREATED_NEW_KEY : REG_OPENED_EXISTING_KEY;
    return ERROR_SUCCESS;
}

// Copies a value into the caller's buffer by RegQueryValueExA's rules.
LONG CopyOut(DWORD type, const void* bytes, size_t count, DWORD* typeOut, BYTE* data, DWORD* size) {
    if (typeOut) *typeOut = type;
    if (!data) {
        if (size) *size = (DWORD)count;
        return ERROR_SUCCESS;
    }
    if (!size) return ERROR_INVALID_PARAMETER;
    DWORD room = *size;
    *size = (DWORD)count;
    if (count > room) return ERROR_MORE_DATA;
    if (count) std::memcpy(data, bytes, count);
    return ERROR_SUCCESS;
}

bool UserKeyExists(std::int64_t id) {
    Use s(*G().store.keyExists);
    sqlite3_bind_int64(s, 1, id);
    return sqlite3_step(s) == SQLITE_ROW;
}

}  // namespace

LONG RegistryCreateKey(HKEY root, const char* subKey, REGSAM access, HKEY* result, DWORD* disposition) {
    return OpenOrCreate(root, subKey, access, result, disposition, true);
}

LONG RegistryOpenKey(HKEY root, const char* subKey, REGSAM access, HKEY* result) {
    return OpenOrCreate(root, subKey, access, result, nullptr, false);
}

LONG RegistryCloseKey(HKEY key) {
    std::lock_guard<std::mutex> lock(G().mutex);
    if (key == HKEY_CURRENT_USER || key == HKEY_LOCAL_MACHINE) return ERROR_SUCCESS;
    auto it = G().handles.find(reinterpret_cast<KeyHandle*>(key));
    if (it == G().handles.end()) return ERROR_INVALID_HANDLE;
    delete *it;
    G().handles.erase(it);
    return ERROR_SUCCESS;
}

LONG RegistryQueryValue(HKEY key, const char* name, DWORD* type, BYTE* data, DWORD* size) {
    std::string valueName = name ? name : "";
    std::lock_guard<std::mutex> lock(G().mutex);
    KeyHandle* h = Resolve(key);
    if (!h) return ERROR_INVALID_HANDLE;
    if (!(h->access & KEY_QUERY_VALUE)) return ERROR_ACCESS_DENIED;
    if (h->hive == Hive::LocalMachine) {
        if (!MachineNodeHasProductName(h->id) || Fold(valueName) != "productname") return ERROR_FILE_NOT_FOUND;
        std::string product = ProductName();
        return CopyOut(REG_SZ, product.c_str(), product.size() + 1, type, data, size);
    }
    if (!G().store.Open()) return StoreError();
    for (int attempt = 0;; ++attempt) {
        Use s(*G().store.queryValue);
        sqlite3_bind_int64(s, 1, h->id);
        BindText(s, 2, valueName);
        int rc = sqlite3_step(s);
        if (rc == SQLITE_ROW) {
            if (sqlite3_column_type(s, 0) == SQLITE_NULL) return ERROR_FILE_NOT_FOUND;
            return CopyOut((DWORD)sqlite3_column_int64(s, 0), sqlite3_column_blob(s, 1),
                           (size_t)sqlite3_column_bytes(s, 1), type, data, size);
        }
        if (rc != SQLITE_DONE) return StoreError();
        if (attempt) return ERROR_KEY_DELETED;
        if (LONG r = Refresh(h); r != ERROR_SUCCESS) return r;
    }
}

LONG RegistrySetValue(HKEY key, const char* name, DWORD type, const BYTE* data, DWORD size) {
    std::string valueName = name ? name : "";
    if (valueName.size() > kMaxValueNameLength) return ERROR_INVALID_PARAMETER;
    if (!data && size) return ERROR_INVALID_PARAMETER;
    std::string bytes(reinterpret_cast<const char*>(data ? data : reinterpret_cast<const BYTE*>("")), size);
    // A string stored without its terminating zero gets one, so that a reader sees the same
    // value (and needs the same buffer) as when the zero was counted. The zero is appended
    // rather than read past the caller's size.
    if ((type == REG_SZ || type == REG_EXPAND_SZ) && !bytes.empty() && bytes.back() != '\0') bytes += '\0';
    std::lock_guard<std::mutex> lock(G().mutex);
    KeyHandle* h = Resolve(key);
    if (!h) return ERROR_INVALID_HANDLE;
    if (h->hive == Hive::LocalMachine || !(h->access & KEY_SET_VALUE)) return ERROR_ACCESS_DENIED;
    if (!G().store.Open()) return StoreError();
    for (int attempt = 0;; ++attempt) {
        {
            Use s(*G().store.setValue);
            sqlite3_bind_int64(s, 1, h->id);
            BindText(s, 2, valueName);
            sqlite3_bind_int64(s, 3, type);
            sqlite3_bind_blob(s, 4, bytes.data(), (int)bytes.size(), SQLITE_STATIC);
            if (sqlite3_step(s) != SQLITE_DONE) return StoreError();
        }
        if (sqlite3_changes(G().store.Db())) return ERROR_SUCCESS;
        if (attempt) return ERROR_KEY_DELETED;
        if (LONG r = Refresh(h); r != ERROR_SUCCESS) return r;
    }
}

LONG RegistryDeleteValue(HKEY key, const char* name) {
    std::string valueName = name ? name : "";
    std::lock_guard<std::mutex> lock(G().mutex);
    KeyHandle* h = Resolve(key);
    if (!h) return ERROR_INVALID_HANDLE;
    if (h->hive == Hive::LocalMachine || !(h->access & KEY_SET_VALUE)) return ERROR_ACCESS_DENIED;
    if (!G().store.Open()) return StoreError();
    {
        Use s(*G().store.deleteValue);
        sqlite3_bind_int64(s, 1, h->id);
        BindText(s, 2, valueName);
        if (sqlite3_step(s) != SQLITE_DONE) return StoreError();
    }
    if (sqlite3_changes(G().store.Db())) return ERROR_SUCCESS;
    if (UserKeyExists(h->id)) return ERROR_FILE_NOT_FOUND;
    // The key went away under the handle; a key made again has no values either.
    LONG r = Refresh(h);
    return r == ERROR_SUCCESS ? ERROR_FILE_NOT_FOUND : r;
}

LONG RegistryDeleteTree(HKEY root, const char* subKey) {
    std::vector<std::string> names;
    if (LONG rc = SplitKeyPath(subKey, &names); rc != ERROR_SUCCESS) return rc;
    std::lock_guard<std::mutex> lock(G().mutex);
    KeyHandle* h = Resolve(root);
    if (!h) return ERROR_INVALID_HANDLE;
    if (h->hive == Hive::LocalMachine) return ERROR_ACCESS_DENIED;
    if (!G().store.Open()) return StoreError();
    std::string full = h->path;
    for (const auto& n : names) full = JoinFolded(full, n);
    G().keyIds.clear();  // ids below the key are not known by path here
    std::int64_t id = 0;
    bool made = false;
    if (LONG rc = FindOrMakeKey(full, names, false, &id, &made); rc != ERROR_SUCCESS) return rc;
    G().keyIds.clear();
    if (!G().store.Exec("BEGIN IMMEDIATE")) return StoreError();
    bool ok = true;
    {
        Use s(*G().store.deleteTreeValues);
        sqlite3_bind_int64(s, 1, id);
        ok = sqlite3_step(s) == SQLITE_DONE;
    }
    // The hive's root keeps itself (as a predefined key does) and loses only what is below.
    if (ok) {
        Use s(*G().store.deleteTreeKeys);
        sqlite3_bind_int64(s, 1, id);
        ok = sqlite3_step(s) == SQLITE_DONE;
        if (ok && id == kRootKey) ok = G().store.Exec("INSERT OR IGNORE INTO keys(id, parent, name, path) VALUES(1, 0, '', '')");
    }
    if (ok && G().store.Exec("COMMIT")) return ERROR_SUCCESS;
    G().store.Exec("ROLLBACK");
    return StoreError();
}

LONG RegistryEnumValue(HKEY key, DWORD index, char* name, DWORD* nameSize, DWORD* type, BYTE* data, DWORD* size) {
    if (!name || !nameSize) return ERROR_INVALID_PARAMETER;
    std::lock_guard<std::mutex> lock(G().mutex);
    KeyHandle* h = Resolve(key);
    if (!h) return ERROR_INVALID_HANDLE;
    if (!(h->access & KEY_QUERY_VALUE)) return ERROR_ACCESS_DENIED;
    std::string valueName, bytes;
    DWORD valueType = REG_NONE;
    if (h->hive == Hive::LocalMachine) {
        if (!MachineNodeHasProductName(h->id) || index > 0) return ERROR_NO_MORE_ITEMS;
        valueName = "ProductName";
        bytes = ProductName();
        bytes += '\0';
        valueType = REG_SZ;
    } else {
        if (!G().store.Open()) return StoreError();
        Use s(*G().store.enumValue);
        sqlite3_bind_int64(s, 1, h->id);
        sqlite3_bind_int64(s, 2, index);
        int rc = sqlite3_step(s);
        if (rc == SQLITE_DONE) return ERROR_NO_MORE_ITEMS;
        if (rc != SQLITE_ROW) return StoreError();
        valueName = reinterpret_cast<const char*>(sqlite3_column_text(s, 0));
        valueType = (DWORD)sqlite3_column_int64(s, 1);
        if (const void* blob = sqlite3_column_blob(s, 2))
            bytes.assign(static_cast<const char*>(blob), (size_t)sqlite3_column_bytes(s, 2));
    }
    if (valueName.size() + 1 > *nameSize) return ERROR_MORE_DATA;
    std::memcpy(name, valueName.c_str(), valueName.size() + 1);
    *nameSize = (DWORD)valueName.size();
    return CopyOut(valueType, bytes.data(), bytes.size(), type, data, size);
}

LONG RegistryEnumKey(HKEY key, DWORD index, char* name, DWORD* nameSize) {
    if (!name || !nameSize) return ERROR_INVALID_PARAMETER;
    std::lock_guard<std::mutex> lock(G().mutex);
    KeyHandle* h = Resolve(key);
    if (!h) return ERROR_INVALID_HANDLE;
    std::string keyName;
    if (h->hive == Hive::LocalMachine) {
        DWORD seen = 0;
        for (int i = 0; i < kMachineNodeCount && keyName.empty(); ++i)
            if (kMachineNodes[i].parent == h->id && seen++ == index) keyName = kMachineNodes[i].name;
        if (keyName.empty()) return ERROR_NO_MORE_ITEMS;
    } else {
        if (!G().store.Open()) return StoreError();
        Use s(*G().store.enumKey);
        sqlite3_bind_int64(s, 1, h->id);
        sqlite3_bind_int64(s, 2, index);
        int rc = sqlite3_step(s);
        if (rc == SQLITE_DONE) return ERROR_NO_MORE_ITEMS;
        if (rc != SQLITE_ROW) return StoreError();
        keyName = reinterpret_cast<const char*>(sqlite3_column_text(s, 0));
    }
    if (keyName.size() + 1 > *nameSize) return ERROR_MORE_DATA;
    std::memcpy(name, keyName.c_str(), keyName.size() + 1);
    *nameSize = (DWORD)keyName.size();
    return ERROR_SUCCESS;
}

void SetRegistryStoreLocation(const char* location) {
    std::lock_guard<std::mutex> lock(G().mutex);
    G().store.SetLocation(location);
    G().keyIds.clear();
}

}  // namespace qm::platform

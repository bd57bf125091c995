// qmutil reg query | add | delete: the registry, in the style of the Windows reg command.
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "command.h"
#include "utils/platform/host.h"

namespace {

using namespace qm::platform;

struct Target {
    HKEY root = nullptr;
    std::string rootName, path;
    bool hasValue = false;
    std::string value;
    std::string type = "REG_SZ";
    bool hasData = false;
    std::string data;
};

Target Parse(const std::vector<std::string>& args, bool allowData, const char* usage) {
    if (args.empty()) throw qmutil::UsageError(std::string("usage: qmutil ") + usage);
    Target t;
    std::string key = args[0];
    size_t slash = key.find('\\');
    std::string root = key.substr(0, slash);
    for (char& c : root) c = (char)std::toupper((unsigned char)c);
    if (root == "HKCU" || root == "HKEY_CURRENT_USER") {
        t.root = HKEY_CURRENT_USER;
        t.rootName = "HKEY_CURRENT_USER";
    } else if (root == "HKLM" || root == "HKEY_LOCAL_MACHINE") {
        t.root = HKEY_LOCAL_MACHINE;
        t.rootName = "HKEY_LOCAL_MACHINE";
    } else {
        throw qmutil::UsageError("invalid key '" + key + "' (expected HKCU\\... or HKLM\\...)");
    }
    t.path = slash == std::string::npos ? "" : key.substr(slash + 1);
    for (size_t i = 1; i < args.size(); ++i) {
        std::string opt = args[i];
        for (char& c : opt) c = (char)std::tolower((unsigned char)c);
        auto next = [&]() -> std::string {
            if (i + 1 >= args.size()) throw qmutil::UsageError("option " + args[i] + " needs a value");
            return args[++i];
        };
        if (opt == "/v") {
            t.hasValue = true;
            t.value = next();
        } else if (opt == "/ve") {
            t.hasValue = true;
            t.value.clear();
        } else if (opt == "/f") {
        } else if (allowData && opt == "/t") {
            t.type = next();
            for (char& c : t.type) c = (char)std::toupper((unsigned char)c);
            if (t.type != "REG_SZ" && t.type != "REG_DWORD" && t.type != "REG_BINARY")
                throw qmutil::UsageError("invalid type '" + args[i] + "' (REG_SZ, REG_DWORD or REG_BINARY)");
        } else if (allowData && opt == "/d") {
            t.hasData = true;
            t.data = next();
        } else {
            throw qmutil::UsageError("unknown option '" + args[i] + "' (usage: qmutil " + usage + ")");
        }
    }
    return t;
}

const char* TypeName(DWORD type) {
    switch (type) {
    case REG_SZ: return "REG_SZ";
    case REG_EXPAND_SZ: return "REG_EXPAND_SZ";
    case REG_BINARY: return "REG_BINARY";
    case REG_DWORD: return "REG_DWORD";
    case REG_MULTI_SZ: return "REG_MULTI_SZ";
    case REG_QWORD: return "REG_QWORD";
    default: return "REG_NONE";
    }
}

std::string Show(DWORD type, const std::vector<BYTE>& data) {
    char buf[16];
    std::string out;
    if ((type == REG_SZ || type == REG_EXPAND_SZ) && !data.empty()) {
        out.assign(reinterpret_cast<const char*>(data.data()), data.size());
        if (size_t nul = out.find('\0'); nul != std::string::npos) out.resize(nul);
    } else if (type == REG_DWORD && data.size() == 4) {
        DWORD v;
        std::memcpy(&v, data.data(), 4);
        std::snprintf(buf, sizeof buf, "0x%x", (unsigned)v);
        out = buf;
    } else {
        for (BYTE b : data) {
            std::snprintf(buf, sizeof buf, "%02X", b);
            out += buf;
        }
    }
    return out;
}

void PrintValue(const std::string& name, DWORD type, const std::vector<BYTE>& data) {
    std::printf("    %s    %s    %s\n", name.empty() ? "(Default)" : name.c_str(), TypeName(type), Show(type, data).c_str());
}

int Fail(LONG rc) {
    if (rc == ERROR_FILE_NOT_FOUND)
        std::fprintf(stderr, "ERROR: The system was unable to find the specified registry key or value.\n");
    else if (rc == ERROR_ACCESS_DENIED)
        std::fprintf(stderr, "ERROR: Access is denied.\n");
    else
        std::fprintf(stderr, "ERROR: registry error %ld.\n", (long)rc);
    return 1;
}

const char kQueryUsage[] = "reg query KEY [/v NAME | /ve]";

int RunQuery(const std::vector<std::string>& args) {
    Target t = Parse(args, false, kQueryUsage);
    HKEY key = nullptr;
    if (LONG rc = RegistryOpenKey(t.root, t.path.c_str(), KEY_READ, &key); rc != ERROR_SUCCESS) return Fail(rc);
    std::string full = t.rootName + (t.path.empty() ? "" : "\\" + t.path);
    std::printf("\n%s\n", full.c_str());
    LONG rc = ERROR_SUCCESS;
    if (t.hasValue) {
        DWORD type = 0, size = 0;
        rc = RegistryQueryValue(key, t.value.c_str(), &type, nullptr, &size);
        std::vector<BYTE> data(size);
        if (rc == ERROR_SUCCESS) rc = RegistryQueryValue(key, t.value.c_str(), &type, data.data(), &size);
        if (rc == ERROR_SUCCESS) PrintValue(t.value, type, std::vector<BYTE>(data.begin(), data.begin() + size));
    } else {
        for (DWORD i = 0;; ++i) {
            char name[16384];
            DWORD nameSize = sizeof name, type = 0, size = 0;
            if (RegistryEnumValue(key, i, name, &nameSize, &type, nullptr, &size) != ERROR_SUCCESS) break;
            std::vector<BYTE> data(size);
            nameSize = sizeof name;
            if (RegistryEnumValue(key, i, name, &nameSize, &type, data.data(), &size) != ERROR_SUCCESS) break;
            PrintValue(name, type, data);
        }
        std::printf("\n");
        for (DWORD i = 0;; ++i) {
            char name[256];
            DWORD nameSize = sizeof name;
            if (RegistryEnumKey(key, i, name, &nameSize) != ERROR_SUCCESS) break;
            std::printf("%s\\%s\n", full.c_str(), name);
        }
    }
    RegistryCloseKey(key);
    return rc == ERROR_SUCCESS ? 0 : Fail(rc);
}

std::vector<BYTE> Encode(const Target& t) {
    std::vector<BYTE> out;
    if (t.type == "REG_SZ") {
        out.assign(t.data.begin(), t.data.end());
        out.push_back(0);
    } else if (t.type == "REG_DWORD") {
        char* end = nullptr;
        errno = 0;
        unsigned long long v = std::strtoull(t.data.c_str(), &end, 0);
        if (t.data.empty() || *end || errno || v > 0xFFFFFFFFull || t.data[0] == '-')
            throw qmutil::UsageError("invalid REG_DWORD data '" + t.data + "' (0 to 4294967295, or 0x...)");
        DWORD d = (DWORD)v;
        out.resize(4);
        std::memcpy(out.data(), &d, 4);
    } else {
        if (t.data.size() % 2) throw qmutil::UsageError("invalid REG_BINARY data '" + t.data + "' (pairs of hex digits)");
        for (size_t i = 0; i < t.data.size(); i += 2) {
            std::string pair = t.data.substr(i, 2);
            if (!std::isxdigit((unsigned char)pair[0]) || !std::isxdigit((unsigned char)pair[1]))
                throw qmutil::UsageError("invalid REG_BINARY data '" + t.data + "' (pairs of hex digits)");
            out.push_back((BYTE)std::strtoul(pair.c_str(), nullptr, 16));
        }
    }
    return out;
}

const char kAddUsage[] = "reg add KEY [/v NAME | /ve] [/t REG_SZ|REG_DWORD|REG_BINARY] [/d DATA] [/f]";

int RunAdd(const std::vector<std::string>& args) {
    Target t = Parse(args, true, kAddUsage);
    if (t.hasData && !t.hasValue) t.hasValue = true;  // /d alone sets the default value
    std::vector<BYTE> data = t.hasValue ? Encode(t) : std::vector<BYTE>();
    HKEY key = nullptr;
    if (LONG rc = RegistryCreateKey(t.root, t.path.c_str(), KEY_ALL_ACCESS, &key, nullptr); rc != ERROR_SUCCESS)
        return Fail(rc);
    LONG rc = ERROR_SUCCESS;
    if (t.hasValue) {
        DWORD type = t.type == "REG_SZ" ? REG_SZ : t.type == "REG_DWORD" ? REG_DWORD : REG_BINARY;
        rc = RegistrySetValue(key, t.value.c_str(), type, data.data(), (DWORD)data.size());
    }
    RegistryCloseKey(key);
    if (rc != ERROR_SUCCESS) return Fail(rc);
    std::printf("The operation completed successfully.\n");
    return 0;
}

const char kDeleteUsage[] = "reg delete KEY [/v NAME | /ve] [/f]";

int RunDelete(const std::vector<std::string>& args) {
    Target t = Parse(args, false, kDeleteUsage);
    LONG rc;
    if (t.hasValue) {
        HKEY key = nullptr;
        rc = RegistryOpenKey(t.root, t.path.c_str(), KEY_ALL_ACCESS, &key);
        if (rc == ERROR_SUCCESS) {
            rc = RegistryDeleteValue(key, t.value.c_str());
            RegistryCloseKey(key);
        }
    } else {
        if (t.path.empty()) throw qmutil::UsageError("refusing to delete a whole hive");
        rc = RegistryDeleteTree(t.root, t.path.c_str());
    }
    if (rc != ERROR_SUCCESS) return Fail(rc);
    std::printf("The operation completed successfully.\n");
    return 0;
}

void TourReg() {
    qmutil::TourStep("reg query \"HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\" /v ProductName");
    RunQuery({"HKLM\\SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", "/v", "ProductName"});
}

qmutil::Registrar query({"reg", "query", "show a registry key's values and subkeys, or one value",
                         "usage: qmutil reg query KEY [/v NAME | /ve]\n"
                         "  Prints the values (name, type, data) and the subkeys of KEY, or only the value named.\n"
                         "  KEY is HKCU\\path or HKLM\\path. On POSIX the store is\n"
                         "  $XDG_CONFIG_HOME/MFCQMUtils/registry.db, or the file named by MFCQMUTILS_REGISTRY.\n",
                         RunQuery, TourReg, 60});
qmutil::Registrar add({"reg", "add", "create a key, or store a value",
                       "usage: qmutil reg add KEY [/v NAME | /ve] [/t REG_SZ|REG_DWORD|REG_BINARY] [/d DATA] [/f]\n"
                       "  Creates KEY (and the keys above it) and stores the value: REG_DWORD data is decimal\n"
                       "  or 0x hexadecimal, REG_BINARY data pairs of hex digits. /f is accepted and ignored.\n",
                       RunAdd, nullptr, 61});
qmutil::Registrar del({"reg", "delete", "delete a value, or a key with everything below it",
                       "usage: qmutil reg delete KEY [/v NAME | /ve] [/f]\n"
                       "  Without /v or /ve the key is deleted with its values and subkeys.\n",
                       RunDelete, nullptr, 62});

}  // namespace

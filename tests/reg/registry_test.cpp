#include <gtest/gtest.h>

#include <cctype>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "utils/common/mfcutils_settings.h"
#include "utils/platform/host.h"

using namespace qm::platform;

namespace {

std::string Lower(std::string s) {
    for (char& c : s) c = (char)std::tolower((unsigned char)c);
    return s;
}

// Random letter case, so that every access spells the names differently.
std::string Shuffle(const std::string& s, std::mt19937& rng) {
    std::string out = s;
    for (char& c : out)
        if (rng() & 1) c = (char)std::toupper((unsigned char)c);
    return out;
}

}  // namespace

// Random writes, deletes and reads against a model: a map from (folded key, folded name) to
// (type, bytes). Keys are nested and spelled in random case; every read must agree with
// the model, including the size and ERROR_MORE_DATA rules of a short buffer.
TEST(RegistryService, AgreesWithAModelOfCaseInsensitiveNestedKeys) {
    std::mt19937 rng(7);
    const char* keys[] = {"Software\\QMT\\Model", "Software\\QMT\\Model\\Sub", "Software\\QMT\\Other"};
    const char* names[] = {"", "Alpha", "beta", "Gamma Delta"};
    std::map<std::pair<std::string, std::string>, std::pair<DWORD, std::string>> model;
    RegistryDeleteTree(HKEY_CURRENT_USER, "Software\\QMT");
    for (int step = 0; step < 400; ++step) {
        std::string key = Shuffle(keys[rng() % 3], rng), name = Shuffle(names[rng() % 4], rng);
        auto id = std::make_pair(Lower(key), Lower(name));
        HKEY h = nullptr;
        int op = (int)(rng() % 4);
        if (op == 0) {  // set
            DWORD type = (DWORD[]){REG_SZ, REG_DWORD, REG_BINARY}[rng() % 3];
            std::string bytes;
            size_t n = type == REG_DWORD ? 4 : rng() % 12;
            for (size_t i = 0; i < n; ++i) bytes += (char)('a' + rng() % 26);
            ASSERT_EQ(RegistryCreateKey(HKEY_CURRENT_USER, key.c_str(), KEY_ALL_ACCESS, &h, nullptr), ERROR_SUCCESS);
            // A string written without its zero is stored with it.
            ASSERT_EQ(RegistrySetValue(h, name.c_str(), type, (const BYTE*)bytes.data(), (DWORD)bytes.size()),
                      ERROR_SUCCESS);
            model[id] = {type, type == REG_SZ && !bytes.empty() ? bytes + '\0' : bytes};
        } else if (op == 1) {  // delete
            LONG rc = RegistryOpenKey(HKEY_CURRENT_USER, key.c_str(), KEY_ALL_ACCESS, &h);
            if (rc != ERROR_SUCCESS) continue;
            EXPECT_EQ(RegistryDeleteValue(h, name.c_str()), model.erase(id) ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND);
        } else {  // read, into a buffer that may be too small
            LONG rc = RegistryOpenKey(HKEY_CURRENT_USER, key.c_str(), KEY_READ, &h);
            if (rc != ERROR_SUCCESS) {
                EXPECT_EQ(rc, ERROR_FILE_NOT_FOUND);
                continue;
            }
            BYTE buf[16] = {};
            DWORD type = 99, size = (DWORD)(rng() % 14);
            rc = RegistryQueryValue(h, name.c_str(), &type, buf, &size);
            auto it = model.find(id);
            if (it == model.end()) {
                EXPECT_EQ(rc, ERROR_FILE_NOT_FOUND) << key << "/" << name;
            } else {
                const std::string& want = it->second.second;
                EXPECT_EQ(type, it->second.first);
                EXPECT_EQ(size, want.size());
                if (rc == ERROR_SUCCESS) EXPECT_EQ(std::string((char*)buf, size), want);
                else EXPECT_EQ(rc, ERROR_MORE_DATA);
            }
        }
        RegistryCloseKey(h);
    }
    HKEY h = nullptr;
    EXPECT_EQ(RegistryDeleteTree(HKEY_CURRENT_USER, "SOFTWARE\\QMT"), ERROR_SUCCESS);
    EXPECT_EQ(RegistryOpenKey(HKEY_CURRENT_USER, "Software\\QMT\\Model\\Sub", KEY_READ, &h), ERROR_FILE_NOT_FOUND);
}

// Doubled backslashes are passed over; an invented handle is refused, not used.
TEST(RegistryService, LocalMachineNamesTheSystemAndBadHandlesAreRefused) {
    HKEY h = nullptr;
    ASSERT_EQ(RegistryCreateKey(HKEY_CURRENT_USER, "Software\\QMT\\\\Double", KEY_ALL_ACCESS, &h, nullptr), 0);
    RegistryCloseKey(h);
    EXPECT_EQ(RegistryOpenKey(HKEY_CURRENT_USER, "Software\\QMT\\Double", KEY_READ, &h), ERROR_SUCCESS);
    RegistryCloseKey(h);
    DWORD size = 0, type = 0;
    EXPECT_EQ(RegistryQueryValue((HKEY)(ULONG_PTR)0x1234, "x", nullptr, nullptr, &size), ERROR_INVALID_HANDLE);
    ASSERT_EQ(RegistryOpenKey(HKEY_LOCAL_MACHINE, "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", KEY_QUERY_VALUE, &h),
              ERROR_SUCCESS);
    char name[256] = {};
    size = sizeof name;
    ASSERT_EQ(RegistryQueryValue(h, "ProductName", &type, (BYTE*)name, &size), ERROR_SUCCESS);
    EXPECT_EQ(type, (DWORD)REG_SZ);
    EXPECT_EQ(size, std::string(name).size() + 1);
    EXPECT_GT(size, 1u);
#if !defined(_WIN32)  // Wine lets a process change the local machine's hive
    EXPECT_EQ(RegistrySetValue(h, "x", REG_DWORD, (const BYTE*)&size, 4), ERROR_ACCESS_DENIED);
    HKEY refused = nullptr;
    EXPECT_EQ(RegistryOpenKey(HKEY_LOCAL_MACHINE, "SOFTWARE", KEY_ALL_ACCESS, &refused), ERROR_ACCESS_DENIED);
    EXPECT_EQ(RegistryCreateKey(HKEY_LOCAL_MACHINE, "SOFTWARE\\New", KEY_READ, &refused, nullptr), ERROR_ACCESS_DENIED);
#endif
    RegistryCloseKey(h);
    RegistryDeleteTree(HKEY_CURRENT_USER, "Software\\QMT");
}

// ---------------------------------------------------------------------------------------
// The library's helpers

TEST(RegistryHelpers, KeepTheirTypesAndTheirQuirks) {
    const CString key = "Software\\QMT\\Helpers";
    EXPECT_TRUE(WriteToRegistry(key, "Text", "hello"));
    EXPECT_TRUE(WriteDWToRegistry(key, "Number", 0xDEADBEEF));
    const unsigned char blob[] = {0, 1, 2, 255};
    EXPECT_TRUE(WriteBinaryToRegistry(key, "Blob", blob, sizeof blob));
    struct { const char* name; DWORD type; } types[] = {{"Text", REG_SZ}, {"NUMBER", REG_DWORD}, {"blob", REG_BINARY}};
    for (auto& t : types) {
        DWORD type = 0;
        EXPECT_TRUE(IsInRegistry(key, t.name, &type)) << t.name;
        EXPECT_EQ(type, t.type) << t.name;
    }
    EXPECT_TRUE(IsInRegistry(key, "Text", nullptr));
    EXPECT_EQ(ReadFromRegistry(key, "text", "dflt"), "hello");
    EXPECT_EQ(ReadDWFromRegistry(key, "Number", 7), 0xDEADBEEFu);
    // The type is not checked: "abc" and its zero are read as a little-endian number.
    EXPECT_EQ(ReadDWFromRegistry(key, "Text2", 7), 7u);
    WriteToRegistry(key, "Text2", "abc");
    EXPECT_EQ(ReadDWFromRegistry(key, "Text2", 7), 0x00636261u);
    EXPECT_EQ(ReadDWFromRegistry(key, "Text", 7), 7u);  // 6 bytes do not fit 4
    // Up to 199 characters read back; from 200 on the value needs more than 200 bytes.
    for (int length : {1, 199, 200, 500}) {
        WriteToRegistry(key, "Long", CString('x', length));
        EXPECT_EQ(ReadFromRegistry(key, "Long", "dflt"), length < 200 ? CString('x', length) : CString("dflt"));
    }

    unsigned char* data = (unsigned char*)1;
    DWORD size = 0;
    ASSERT_TRUE(ReadBinaryFromRegistry(key, "Blob", &data, &size));
    EXPECT_EQ(std::string((char*)data, size), std::string((const char*)blob, sizeof blob));
    delete[] data;
    EXPECT_FALSE(ReadBinaryFromRegistry(key, "Number", &data, &size));
    EXPECT_EQ(data, nullptr);
    EXPECT_FALSE(ReadBinaryFromRegistry("Software\\QMT\\Missing", "Blob", &data, &size));

    DeleteFromRegistry(key, "BLOB");
    EXPECT_FALSE(IsInRegistry(key, "Blob", nullptr));
    DeleteFromRegistry("Software\\QMT\\NotMade", "x");  // does not create the key
    EXPECT_FALSE(IsInRegistry("Software\\QMT\\NotMade", "", nullptr));
    HKEY h = nullptr;
    EXPECT_EQ(RegistryOpenKey(HKEY_CURRENT_USER, "Software\\QMT\\NotMade", KEY_READ, &h), ERROR_FILE_NOT_FOUND);
    // Reading a missing value gives the default and makes the key.
    EXPECT_EQ(ReadFromRegistry("Software\\QMT\\Made", "x", "dflt"), "dflt");
    ASSERT_EQ(RegistryOpenKey(HKEY_CURRENT_USER, "Software\\QMT\\Made", KEY_READ, &h), ERROR_SUCCESS);
    RegistryCloseKey(h);
    RegistryDeleteTree(HKEY_CURRENT_USER, "Software\\QMT");
}

// Threads of one process writing at once lose nothing.
TEST(RegistryHelpers, ConcurrentWritersLoseNothing) {
    auto name = [](int t, int i) {
        CString n;
        n.Format("t%d_%d", t, i);
        return n;
    };
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t, &name] {
            for (int i = 0; i < 50; ++i) EXPECT_TRUE(WriteDWToRegistry("Software\\QMT\\T", name(t, i), (DWORD)(t * 1000 + i)));
        });
    for (auto& th : threads) th.join();
    for (int t = 0; t < 4; ++t)
        for (int i = 0; i < 50; ++i) EXPECT_EQ(ReadDWFromRegistry("Software\\QMT\\T", name(t, i), 0), (DWORD)(t * 1000 + i));
    RegistryDeleteTree(HKEY_CURRENT_USER, "Software\\QMT");
}

// The sample tree that storage tests write and check: a class id on the root and on a
// substorage, streams around the format's 4,096-byte boundary between small and regular
// streams, a non-ASCII name and an empty storage. The files in tests/ole/data hold this tree as
// written by each target (the POSIX build and the Windows build under Wine) through
// DISABLED_WriteSampleFile below, with QM_OLE_SAMPLE_OUT naming the file to write.
#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "utils/common/OleStorage.h"
#include "utils/framework/CFile.h"

namespace qmtest {

const CLSID kRootClass = {0x0A1B2C3D, 0x4E5F, 0x6071, {0x82, 0x93, 0xA4, 0xB5, 0xC6, 0xD7, 0xE8, 0xF9}};
const CLSID kSubClass = {0x11223344, 0x5566, 0x7788, {0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF, 0x01}};

struct SampleStream { const char* name; std::size_t size; };
const SampleStream kSampleStreams[] = {{"empty", 0}, {"small", 4095}, {"regular", 4096}, {"larger", 5000}};

inline std::vector<BYTE> Pattern(std::size_t size, unsigned seed) {
    std::vector<BYTE> b(size);
    for (std::size_t i = 0; i < size; ++i) b[i] = (BYTE)(i * 7 + seed + (i >> 8));
    return b;
}

class StorageReleaser {
public:
    explicit StorageReleaser(IUnknown* p) : m_p(p) {}
    ~StorageReleaser() {
        if (m_p) m_p->Release();
    }
    StorageReleaser(const StorageReleaser&) = delete;
    StorageReleaser& operator=(const StorageReleaser&) = delete;

private:
    IUnknown* m_p;
};

inline void FillSample(IStorage* root) {
    ASSERT_EQ(OleStorage::SetClass(root, kRootClass), S_OK);
    for (const auto& s : kSampleStreams) {
        auto bytes = Pattern(s.size, (unsigned)s.size);
        ASSERT_EQ(OleStorage::WriteStream(root, s.name, bytes.data(), bytes.size()), S_OK) << s.name;
    }
    IStorage* sub = nullptr;
    ASSERT_EQ(OleStorage::CreateSubStorage(root, "\xE9t\xE9", &sub), S_OK);
    ASSERT_EQ(OleStorage::SetClass(sub, kSubClass), S_OK);
    ASSERT_EQ(OleStorage::WriteStream(sub, "inside", "contents", 8), S_OK);
    IStorage* empty = nullptr;
    ASSERT_EQ(OleStorage::CreateSubStorage(sub, "void", &empty), S_OK);
    empty->Release();
    sub->Release();
}

inline void WriteSample(const CString& path) {
    IStorage* root = nullptr;
    ASSERT_EQ(OleStorage::CreateOnFile(path, &root), S_OK);
    FillSample(root);
    EXPECT_EQ(OleStorage::Commit(root), S_OK);
    root->Release();
}

inline void ExpectSample(IStorage* root) {
    CLSID clsid;
    ASSERT_EQ(OleStorage::GetClass(root, clsid), S_OK);
    EXPECT_EQ(std::memcmp(&clsid, &kRootClass, sizeof clsid), 0);
    std::vector<OleStorageElement> items;
    ASSERT_EQ(OleStorage::ListElements(root, items), S_OK);
    std::vector<std::string> names;
    for (auto& e : items) names.push_back((LPCTSTR)e.strName);
    EXPECT_EQ(names, (std::vector<std::string>{"\xE9t\xE9", "empty", "small", "larger", "regular"}));
    for (const auto& s : kSampleStreams) {
        SCOPED_TRACE(s.name);
        std::vector<BYTE> data;
        ASSERT_EQ(OleStorage::ReadStream(root, s.name, data), S_OK);
        EXPECT_EQ(data, Pattern(s.size, (unsigned)s.size));
        for (auto& e : items)
            if (e.strName == s.name) {
                EXPECT_EQ(e.type, (DWORD)STGTY_STREAM);
                EXPECT_EQ(e.size, s.size);
            }
    }
    IStorage* sub = nullptr;
    ASSERT_EQ(OleStorage::OpenSubStorage(root, "\xE9t\xE9", FALSE, &sub), S_OK);
    StorageReleaser keep(sub);
    ASSERT_EQ(OleStorage::GetClass(sub, clsid), S_OK);
    EXPECT_EQ(std::memcmp(&clsid, &kSubClass, sizeof clsid), 0);
    EXPECT_EQ(std::memcmp(&items[0].clsid, &kSubClass, sizeof clsid), 0);
    std::vector<OleStorageElement> inner;
    ASSERT_EQ(OleStorage::ListElements(sub, inner), S_OK);
    ASSERT_EQ(inner.size(), 2u);
    EXPECT_STREQ(inner[0].strName, "void");
    EXPECT_EQ(inner[0].type, (DWORD)STGTY_STORAGE);
    EXPECT_STREQ(inner[1].strName, "inside");
    std::vector<BYTE> data;
    ASSERT_EQ(OleStorage::ReadStream(sub, "inside", data), S_OK);
    EXPECT_EQ(std::string(data.begin(), data.end()), "contents");
    IStorage* empty = nullptr;
    ASSERT_EQ(OleStorage::OpenSubStorage(sub, "void", FALSE, &empty), S_OK);
    StorageReleaser keepEmpty(empty);
    std::vector<OleStorageElement> none;
    ASSERT_EQ(OleStorage::ListElements(empty, none), S_OK);
    EXPECT_TRUE(none.empty());
}

inline std::vector<BYTE> ReadAll(const CString& path) {
    CFile f(path, CFile::modeRead);
    std::vector<BYTE> bytes((std::size_t)f.GetLength());
    if (!bytes.empty()) f.Read(bytes.data(), (UINT)bytes.size());
    return bytes;
}

// A file by its native path (the checked-in samples), whole.
inline std::vector<BYTE> ReadNative(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<BYTE>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace qmtest

// OLE data objects: a source's cached blocks read back through COleDataObject, directly and
// through the clipboard, in the standard formats, the descriptor format and a registered one.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "tests/filesystem/fs_fixture.h"
#include "utils/common/FileSystem.h"
#include "utils/common/OleUtils.h"
#include "utils/framework/COleDataObject.h"
#include "utils/platform/clipboard.h"
#include "utils/platform/globalmem.h"
#include "utils/platform/metafile.h"
#include "utils/platform/storage.h"

namespace {

namespace plat = qm::platform;

HGLOBAL BlockOf(const std::string& bytes) {
    HGLOBAL h = plat::GlobalMemAlloc(GMEM_MOVEABLE, bytes.size());
    std::memcpy(plat::GlobalMemLock(h), bytes.data(), bytes.size());
    plat::GlobalMemUnlock(h);
    return h;
}

std::string BytesOf(HGLOBAL h) {
    std::string s(plat::GlobalMemSize(h), '\0');
    const void* p = plat::GlobalMemLock(h);
    if (p && !s.empty()) std::memcpy(s.data(), p, s.size());
    plat::GlobalMemUnlock(h);
    return s;
}

struct FormatCase { const char* what; CLIPFORMAT format; std::string bytes; };

std::vector<FormatCase> Formats() {
    std::string dib(40, '\0');
    dib[0] = 40;  // a header-only stand-in: the data object does not read it
    HGLOBAL od = OleCreateObjectDescriptor(CLSID{}, DVASPECT_CONTENT, SIZEL{1, 2}, POINTL{3, 4}, 0, "Note", "Desk");
    std::string descriptor = BytesOf(od);
    plat::GlobalMemFree(od);
    return {
        {"CF_TEXT", CF_TEXT, std::string("plain text\0", 11)},
        {"CF_DIB", CF_DIB, dib},
        {"descriptor", OleObjectDescriptorFormat(), descriptor},
        {"registered", OleRegisterClipboardFormat("Test Note Format"), std::string("\x01\x02\x00\xFF", 4)},
    };
}

void Fill(COleDataSource* source, const std::vector<FormatCase>& cases) {
    for (const auto& c : cases) source->CacheGlobalData(c.format, BlockOf(c.bytes));
}

void ExpectFormats(COleDataObject& data, const std::vector<FormatCase>& cases) {
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        EXPECT_TRUE(data.IsDataAvailable(c.format));
        HGLOBAL h = data.GetGlobalData(c.format);
        ASSERT_NE(h, nullptr);
        EXPECT_EQ(BytesOf(h), c.bytes);
        plat::GlobalMemFree(h);
        std::unique_ptr<CFile> file(data.GetFileData(c.format));
        ASSERT_NE(file, nullptr);
        std::string read(c.bytes.size(), '\0');
        EXPECT_EQ(file->Read(read.data(), (UINT)read.size()), c.bytes.size());
        EXPECT_EQ(read, c.bytes);
    }
    CLIPFORMAT unknown = OleRegisterClipboardFormat("Format Nobody Offers");
    EXPECT_FALSE(data.IsDataAvailable(unknown));
    EXPECT_EQ(data.GetGlobalData(unknown), nullptr);
    EXPECT_EQ(data.GetFileData(unknown), nullptr);
}

TEST(DataObject, RegisteredFormatsIgnoreCase) {
    CLIPFORMAT a = OleRegisterClipboardFormat("Object Descriptor");
    EXPECT_GE(a, 0xC000);
    EXPECT_EQ(OleRegisterClipboardFormat("object descriptor"), a);
    EXPECT_EQ(OleObjectDescriptorFormat(), a);
    EXPECT_NE(OleRegisterClipboardFormat("Another Format"), a);
    EXPECT_EQ(OleRegisterClipboardFormat(""), 0);
}

TEST(DataObject, SourceReadDirectly) {
    auto cases = Formats();
    auto* source = new COleDataSource;
    Fill(source, cases);
    {
        COleDataObject data;
        data.Attach(source->GetDataObject(), FALSE);
        ExpectFormats(data, cases);

        std::vector<CLIPFORMAT> listed;
        FORMATETC fe;
        data.BeginEnumFormats();
        while (data.GetNextFormat(&fe)) listed.push_back(fe.cfFormat);
        ASSERT_EQ(listed.size(), cases.size());
        for (std::size_t i = 0; i < cases.size(); ++i) EXPECT_EQ(listed[i], cases[i].format);
    }
    source->ExternalRelease();
}

class DataObjectFile : public qmtest::TempFolderTest {};

// A file handed to a source belongs to it: readers open it by name as often as they like, and
// it is deleted when the source lets go of it.
TEST_F(DataObjectFile, ACachedFileIsReadByNameAndDeletedWithTheSource) {
    Touch("cached.txt", "from a file");
    const CString path = At("cached.txt");
    const std::wstring wide(path.GetString(), path.GetString() + path.GetLength());  // an ASCII path
    STGMEDIUM medium{};
    medium.tymed = TYMED_FILE;
    medium.lpszFileName = static_cast<LPOLESTR>(plat::TaskMemAlloc((wide.size() + 1) * sizeof(OLECHAR)));
    std::memcpy(medium.lpszFileName, wide.c_str(), (wide.size() + 1) * sizeof(OLECHAR));
    const CLIPFORMAT format = OleRegisterClipboardFormat("Test File Format");
    FORMATETC fe{format, nullptr, DVASPECT_CONTENT, -1, TYMED_FILE};
    auto* source = new COleDataSource;
    source->CacheData(format, &medium, &fe);
    {
        COleDataObject data;
        data.Attach(source->GetDataObject(), FALSE);
        EXPECT_TRUE(data.IsDataAvailable(format));
        for (int round = 0; round < 2; ++round) {
            std::unique_ptr<CFile> file(data.GetFileData(format));
            ASSERT_NE(file, nullptr);
            char got[32] = {};
            UINT n = file->Read(got, sizeof got);
            EXPECT_EQ(std::string(got, n), "from a file");
        }
        HGLOBAL none = data.GetGlobalData(format);  // a file is not a block
        EXPECT_EQ(none, nullptr);
    }
    EXPECT_TRUE(FileSystem::FileExists(path));
    source->Empty();
    EXPECT_FALSE(FileSystem::FileExists(path));
    source->ExternalRelease();
}

TEST(DataObject, SourceAnswersLikeADataObjectWithTheLastBlockCached) {
    auto* source = new COleDataSource;
    source->CacheGlobalData(CF_TEXT, BlockOf(std::string("old\0", 4)));
    source->CacheGlobalData(CF_TEXT, BlockOf("abcdef"));  // replaces the block
    IDataObject* object = source->GetDataObject();
    FORMATETC fe{CF_TEXT, nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL};
    EXPECT_EQ(object->QueryGetData(&fe), S_OK);
    FORMATETC wrongTymed = fe;
    wrongTymed.tymed = TYMED_ISTORAGE;
    EXPECT_EQ(object->QueryGetData(&wrongTymed), DV_E_TYMED);
    FORMATETC wrongFormat = fe;
    wrongFormat.cfFormat = CF_DIB;
    EXPECT_EQ(object->QueryGetData(&wrongFormat), DV_E_FORMATETC);
    FORMATETC out;
    EXPECT_EQ(object->GetCanonicalFormatEtc(&fe, &out), DATA_S_SAMEFORMATETC);
    EXPECT_EQ(object->DAdvise(&fe, 0, nullptr, nullptr), OLE_E_ADVISENOTSUPPORTED);

    // GetDataHere fills the caller's block when it is large enough.
    STGMEDIUM small{}, large{};
    small.tymed = large.tymed = TYMED_HGLOBAL;
    small.hGlobal = plat::GlobalMemAlloc(GMEM_MOVEABLE, 3);
    large.hGlobal = plat::GlobalMemAlloc(GMEM_MOVEABLE, 16);
    EXPECT_EQ(object->GetDataHere(&fe, &small), STG_E_MEDIUMFULL);
    EXPECT_EQ(object->GetDataHere(&fe, &large), S_OK);
    EXPECT_EQ(BytesOf(large.hGlobal).substr(0, 6), "abcdef");
    plat::GlobalMemFree(small.hGlobal);
    plat::GlobalMemFree(large.hGlobal);

    COleDataObject data;
    data.Attach(object, FALSE);
    int count = 0;
    data.BeginEnumFormats();
    while (data.GetNextFormat(&fe)) ++count;
    EXPECT_EQ(count, 1);
    source->Empty();
    EXPECT_FALSE(data.IsDataAvailable(CF_TEXT));
    data.Release();
    source->ExternalRelease();
}

// Leaves the clipboard empty, so that nothing it holds outlives the test.
class ClipboardDataObject : public ::testing::Test {
protected:
    void TearDown() override {
        ASSERT_TRUE(plat::ClipboardOpen(nullptr));
        plat::ClipboardEmpty();
        plat::ClipboardClose();
    }
};

TEST_F(ClipboardDataObject, ThroughTheClipboard) {
    auto cases = Formats();
    auto* source = new COleDataSource;
    Fill(source, cases);
    source->SetClipboard();
    EXPECT_EQ(COleDataSource::GetClipboardOwner(), source);
    for (bool flushed : {false, true}) {
        // Flushed, the data stays on the clipboard without the source.
        if (flushed) COleDataSource::FlushClipboard();
        COleDataObject data;
        ASSERT_TRUE(data.AttachClipboard());
        ExpectFormats(data, cases);
    }
    EXPECT_EQ(COleDataSource::GetClipboardOwner(), nullptr);
}

// The smallest metafile: its header and the end record.
const BYTE kMetafile[] = {1, 0, 9, 0, 0, 3, 12, 0, 0, 0, 0, 0, 3, 0, 0, 0, 0, 0, 3, 0, 0, 0, 0, 0};

HGLOBAL MetafilePict() {
    HGLOBAL h = plat::GlobalMemAlloc(GMEM_MOVEABLE, sizeof(METAFILEPICT));
    auto* mfp = (METAFILEPICT*)plat::GlobalMemLock(h);
    mfp->mm = MM_ANISOTROPIC;
    mfp->xExt = 2540;
    mfp->yExt = 1270;
    mfp->hMF = plat::MetafileFromBits(sizeof kMetafile, kMetafile);
    plat::GlobalMemUnlock(h);
    return h;
}

// A metafile picture travels with a metafile of its own: the reader's block names a metafile
// with the same records, which it then owns (released with the block as TYMED_MFPICT).
void ExpectMetafilePict(COleDataObject& data) {
    EXPECT_TRUE(data.IsDataAvailable(CF_METAFILEPICT));
    HGLOBAL h = data.GetGlobalData(CF_METAFILEPICT);
    ASSERT_NE(h, nullptr);
    auto* mfp = (METAFILEPICT*)plat::GlobalMemLock(h);
    ASSERT_NE(mfp, nullptr);
    EXPECT_EQ(mfp->mm, MM_ANISOTROPIC);
    EXPECT_EQ(mfp->xExt, 2540);
    std::vector<BYTE> bits;
    ASSERT_TRUE(plat::MetafileBits(mfp->hMF, bits));
    EXPECT_EQ(bits, std::vector<BYTE>(kMetafile, kMetafile + sizeof kMetafile));
    plat::GlobalMemUnlock(h);
    STGMEDIUM m{};
    m.tymed = TYMED_MFPICT;
    m.hMetaFilePict = h;
    OleReleaseStgMedium(&m);
}

TEST_F(ClipboardDataObject, MetafilePictureDirectlyAndThroughTheClipboard) {
    auto* source = new COleDataSource;
    source->CacheGlobalData(CF_METAFILEPICT, MetafilePict());
    {
        COleDataObject data;
        data.Attach(source->GetDataObject(), FALSE);
        ExpectMetafilePict(data);
    }
    source->SetClipboard();
    COleDataObject data;
    ASSERT_TRUE(data.AttachClipboard());
    ExpectMetafilePict(data);
    COleDataSource::FlushClipboard();
}

}  // namespace

// FORMATETC and STGMEDIUM: what the fill helpers set, and what releasing a medium frees or
// leaves to its pUnkForRelease.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/support/recording_sink.h"
#include "utils/common/OleStorage.h"
#include "utils/common/OleUtils.h"
#include "utils/platform/globalmem.h"
#include "utils/platform/host.h"

namespace {

// An IUnknown that counts its references (it is never deleted: it lives on the stack).
struct CountingUnknown : IUnknown {
    ULONG refs = 1;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** ppv) override {
        *ppv = this;
        ++refs;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++refs; }
    ULONG STDMETHODCALLTYPE Release() override { return --refs; }
};

// The reference count of an interface, read by a balanced AddRef/Release.
ULONG RefsOf(IUnknown* p) {
    p->AddRef();
    return p->Release();
}

TEST(FormatEtc, FillsEveryField) {
    FORMATETC fe;
    std::memset(&fe, 0xCC, sizeof fe);
    OleFillFormatEtc(fe, CF_DIB);
    EXPECT_EQ(fe.cfFormat, CF_DIB);
    EXPECT_EQ(fe.ptd, nullptr);
    EXPECT_EQ(fe.dwAspect, (DWORD)DVASPECT_CONTENT);
    EXPECT_EQ(fe.lindex, -1);
    EXPECT_EQ(fe.tymed, (DWORD)TYMED_HGLOBAL);
    OleFillFormatEtc(fe, 0xC123, TYMED_ISTORAGE, DVASPECT_ICON);
    EXPECT_EQ(fe.cfFormat, 0xC123);
    EXPECT_EQ(fe.dwAspect, (DWORD)DVASPECT_ICON);
    EXPECT_EQ(fe.tymed, (DWORD)TYMED_ISTORAGE);
}

TEST(StgMedium, GlobalBlockIsFreedOnRelease) {
    HGLOBAL h = qm::platform::GlobalMemAlloc(GMEM_MOVEABLE, 16);
    STGMEDIUM m;
    OleFillStgMedium(m, h);
    EXPECT_EQ(m.tymed, (DWORD)TYMED_HGLOBAL);
    EXPECT_EQ(m.hGlobal, h);
    EXPECT_EQ(m.pUnkForRelease, nullptr);
    OleReleaseStgMedium(&m);
    EXPECT_EQ(m.tymed, (DWORD)TYMED_NULL);
    EXPECT_EQ(m.hGlobal, nullptr);
    // A second release of the emptied medium does nothing.
    OleReleaseStgMedium(&m);
    EXPECT_EQ(m.tymed, (DWORD)TYMED_NULL);
}

TEST(StgMedium, StreamAndStorageAreReferencedAndReleased) {
    IStream* stream = qm::platform::CreateMemoryStream("abc", 3);
    ASSERT_NE(stream, nullptr);
    IStorage* storage = nullptr;
    ASSERT_EQ(OleStorage::CreateInMemory(&storage), S_OK);
    ULONG streamRefs = RefsOf(stream), storageRefs = RefsOf(storage);

    STGMEDIUM ms, mg;
    OleFillStgMedium(ms, stream);
    OleFillStgMedium(mg, storage);
    EXPECT_EQ(ms.tymed, (DWORD)TYMED_ISTREAM);
    EXPECT_EQ(ms.pstm, stream);
    EXPECT_EQ(mg.tymed, (DWORD)TYMED_ISTORAGE);
    EXPECT_EQ(mg.pstg, storage);
    EXPECT_EQ(RefsOf(stream), streamRefs + 1);
    EXPECT_EQ(RefsOf(storage), storageRefs + 1);
    OleReleaseStgMedium(&ms);
    OleReleaseStgMedium(&mg);
    EXPECT_EQ(RefsOf(stream), streamRefs);
    EXPECT_EQ(RefsOf(storage), storageRefs);
    EXPECT_EQ(ms.pstm, nullptr);
    EXPECT_EQ(mg.pstg, nullptr);
    stream->Release();
    storage->Release();
}

TEST(StgMedium, OwnerReleasesInsteadOfTheBlock) {
    CountingUnknown owner;
    HGLOBAL h = qm::platform::GlobalMemAlloc(GMEM_MOVEABLE, 16);
    STGMEDIUM m;
    OleFillStgMedium(m, h);
    m.pUnkForRelease = &owner;
    OleReleaseStgMedium(&m);
    EXPECT_EQ(owner.refs, 0u);
    // The block is still the owner's.
    EXPECT_EQ(qm::platform::GlobalMemSize(h), 16u);
    EXPECT_EQ(qm::platform::GlobalMemFree(h), nullptr);

    // A stream is released even with an owner; then the owner.
    CountingUnknown owner2;
    IStream* stream = qm::platform::CreateMemoryStream("abc", 3);
    ULONG refs = RefsOf(stream);
    OleFillStgMedium(m, stream);
    m.pUnkForRelease = &owner2;
    OleReleaseStgMedium(&m);
    EXPECT_EQ(RefsOf(stream), refs);
    EXPECT_EQ(owner2.refs, 0u);
    stream->Release();
}

TEST(StgMedium, NullContentsAreReported) {
    qmtest::RecordingAssertSink sink;
    STGMEDIUM m;
    OleFillStgMedium(m, (HGLOBAL) nullptr);
    EXPECT_EQ(m.tymed, (DWORD)TYMED_NULL);
    OleFillStgMedium(m, (IStream*)nullptr);
    EXPECT_EQ(m.tymed, (DWORD)TYMED_NULL);
    OleReleaseStgMedium(nullptr);
    std::vector<std::string> expected = {"hGlobal != nullptr", "pStream != nullptr", "pMedium != nullptr"};
    EXPECT_EQ(sink.Expressions(), expected);
    for (const auto& r : sink.Reports()) EXPECT_EQ(r.module, "Common\\OleUtils");
}

}  // namespace

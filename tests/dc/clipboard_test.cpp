#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "dc_fixture.h"
#include "utils/common/DIB.h"
#include "utils/framework/CSharedFile.h"
#include "utils/framework/CWnd.h"
#include "utils/framework/winmsg.h"
#include "utils/platform/clipboard.h"
#include "utils/platform/globalmem.h"

namespace {

namespace plat = qm::platform;

struct Owner {
    Owner() { EXPECT_TRUE(wnd.CreateEx(0, AfxRegisterWndClass(0), "", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr)); }
    CWnd wnd;
};

using dctest::Saved;

std::string ClipboardDib() {
    std::string bytes;
    if (!plat::ClipboardOpen(nullptr)) return bytes;
    HGLOBAL h = plat::ClipboardGetData(CF_DIB);
    if (const char* p = (const char*)plat::GlobalMemLock(h)) {
        bytes.assign(p, plat::GlobalMemSize(h));
        plat::GlobalMemUnlock(h);
    }
    plat::ClipboardClose();
    return bytes;
}

void Paint(CDIBitmap& bmp, int w, int h, WORD bits) {
    ASSERT_TRUE(bmp.Create(w, h, bits));
    for (DWORD i = 0; i < bmp.GetBitsSize(); ++i) bmp.GetBits()[i] = (BYTE)(i * 7 + 3);
}

TEST(DIBClipboard, RoundTripsThePackedDibThatSaveWrites) {
    Owner owner;
    for (WORD bits : {1, 8, 24, 32}) {
        CDIBitmap bmp;
        Paint(bmp, 7, 5, bits);
        ASSERT_TRUE(bmp.SetToClipboard(&owner.wnd)) << bits;
        EXPECT_TRUE(CDIBitmap::IsGetFromClipboardAvailable());
        std::string want = Saved(bmp), got = ClipboardDib();
        ASSERT_GE(got.size(), want.size());
        EXPECT_EQ(got.substr(0, want.size()), want) << bits;

        CDIBitmap back;
        ASSERT_TRUE(back.GetFromClipboard(&owner.wnd)) << bits;
        EXPECT_EQ(Saved(back), want) << bits;
        // The clipboard keeps its block: it can be read again.
        CDIBitmap again;
        EXPECT_TRUE(again.GetFromClipboard(nullptr));
    }
}

TEST(DIBClipboard, RectanglePutsAPartOrTheWholeBitmap) {
    Owner owner;
    CDIBitmap bmp;
    Paint(bmp, 6, 4, 24);
    ASSERT_TRUE(bmp.SetToClipboard(CRect(5, 5, 11, 9), &owner.wnd));  // the size alone decides
    EXPECT_EQ(ClipboardDib().substr(0, Saved(bmp).size()), Saved(bmp));
    ASSERT_TRUE(bmp.SetToClipboard(CRect(1, 1, 4, 3), &owner.wnd));
    CDIBitmap part;
    ASSERT_TRUE(part.GetFromClipboard(&owner.wnd));
    EXPECT_EQ(part.GetSize(), CSize(3, 2));
    CDIBitmap expected(bmp, CRect(1, 1, 4, 3));
    EXPECT_EQ(Saved(part), Saved(expected));
}

TEST(DIBClipboard, BrokenBlocksAreRefused) {
    Owner owner;
    BITMAPINFOHEADER bi{40, 100, 100, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
    struct Case { const char* what; size_t size; LONG height; };
    const Case cases[] = {{"truncated rows", 60, 100}, {"header cut", 20, 100}, {"top-down", 40 + 30000 * 4, -100}};
    for (const Case& c : cases) {
        bi.biHeight = c.height;
        HGLOBAL h = plat::GlobalMemAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, c.size);
        std::memcpy(plat::GlobalMemLock(h), &bi, std::min<size_t>(c.size, 40));
        plat::GlobalMemUnlock(h);
        ASSERT_TRUE(plat::ClipboardOpen(owner.wnd.GetSafeHwnd()));
        ASSERT_TRUE(plat::ClipboardEmpty());
        ASSERT_EQ(plat::ClipboardSetData(CF_DIB, h), h);
        ASSERT_TRUE(plat::ClipboardClose());
        CDIBitmap bmp;
        EXPECT_FALSE(bmp.GetFromClipboard(&owner.wnd)) << c.what;
        EXPECT_FALSE(bmp.IsValid()) << c.what;
    }
    ASSERT_TRUE(plat::ClipboardOpen(owner.wnd.GetSafeHwnd()));
    ASSERT_TRUE(plat::ClipboardEmpty());
    ASSERT_TRUE(plat::ClipboardClose());
    EXPECT_FALSE(CDIBitmap::IsGetFromClipboardAvailable());
    CDIBitmap bmp;
    EXPECT_FALSE(bmp.GetFromClipboard(&owner.wnd));
}

TEST(CSharedFile, BlocksInAndOut) {
    CSharedFile file(GMEM_MOVEABLE, 16);
    file.Write("hello, shared world", 19);
    HGLOBAL h = file.Detach();
    EXPECT_EQ(file.GetLength(), 0u);
    ASSERT_EQ(plat::GlobalMemSize(h), 19u);
    CSharedFile view;
    view.SetHandle(h, FALSE);
    char buf[32] = {};
    EXPECT_EQ(view.Read(buf, sizeof buf), 19u);
    EXPECT_STREQ(buf, "hello, shared world");
    view.SeekToBegin();
    view.Write("HELLO", 5);
    bool threw = false;
    try {
        view.Write("more than fits!", 15);
    } catch (CMemoryException* e) {
        threw = true;
        e->Delete();
    }
    EXPECT_TRUE(threw);
    EXPECT_EQ(view.Detach(), h);
    EXPECT_EQ(std::string((const char*)plat::GlobalMemLock(h), 19), "HELLO, shared world");
    plat::GlobalMemUnlock(h);
    EXPECT_EQ(plat::GlobalMemFree(h), nullptr);
}

}  // namespace

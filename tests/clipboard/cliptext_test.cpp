// Text on the clipboard: CR LF line ends on the way in, the text formats converted into each
// other as Windows synthesises them, and blocks read no further than they reach.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "tests/support/recording_sink.h"
#include "utils/common/WndUtils.h"
#include "utils/platform/clipboard.h"
#include "utils/platform/globalmem.h"
#include "utils/platform/metafile.h"

namespace {

namespace plat = qm::platform;

// A literal with its embedded NULs (not the terminator the compiler adds).
template <size_t N>
std::string Lit(const char (&text)[N]) {
    return std::string(text, N - 1);
}

std::string Bytes(UINT format) {
    std::string bytes;
    if (!plat::ClipboardOpen(nullptr)) return "<not open>";
    HGLOBAL h = plat::ClipboardGetData(format);
    if (const char* p = h ? (const char*)plat::GlobalMemLock(h) : nullptr) {
        bytes.assign(p, plat::GlobalMemSize(h));
        plat::GlobalMemUnlock(h);
    } else {
        bytes = "<none>";
    }
    plat::ClipboardClose();
    return bytes;
}

// The block's bytes up to and including the first NUL (sizes of global blocks may be rounded up).
std::string Terminated(const std::string& bytes, size_t unit = 1) {
    for (size_t i = 0; i + unit <= bytes.size(); i += unit)
        if (bytes.compare(i, unit, std::string(unit, '\0')) == 0) return bytes.substr(0, i + unit);
    return bytes;
}

bool Put(UINT format, const std::string& bytes) {
    HGLOBAL h = plat::GlobalMemAlloc(GMEM_MOVEABLE, bytes.size());
    if (!h) return false;
    std::memcpy(plat::GlobalMemLock(h), bytes.data(), bytes.size());
    plat::GlobalMemUnlock(h);
    if (!plat::ClipboardOpen(nullptr)) {
        plat::GlobalMemFree(h);
        return false;
    }
    plat::ClipboardEmpty();
    bool ok = plat::ClipboardSetData(format, h) != nullptr;
    if (!ok) plat::GlobalMemFree(h);
    plat::ClipboardClose();
    return ok;
}

bool Available(UINT format) {
    if (!plat::ClipboardOpen(nullptr)) return false;
    bool yes = plat::ClipboardIsFormatAvailable(format) != FALSE;
    plat::ClipboardClose();
    return yes;
}

std::string Utf16(const std::u16string& s) {
    std::string bytes;
    for (char16_t u : s) {
        bytes += (char)(u & 0xFF);
        bytes += (char)(u >> 8);
    }
    return bytes + std::string(2, '\0');
}

TEST(ClipboardText, LoneLineFeedsBecomeCrLfOnTheWayIn) {
    struct Case { const char* in; std::string block; } cases[] = {
        {"one", Lit("one\0")}, {"a\nb", Lit("a\r\nb\0")}, {"a\r\nb\n", Lit("a\r\nb\r\n\0")},
        {"\n\n", Lit("\r\n\r\n\0")}, {"cr\ronly", Lit("cr\ronly\0")}, {"\xE9t\xE9", Lit("\xE9t\xE9\0")},
    };
    for (const Case& c : cases) {
        ASSERT_TRUE(WndUtils::SetClipboardText(c.in)) << c.in;
        EXPECT_EQ(Terminated(Bytes(CF_TEXT)), c.block) << c.in;
        CString back;
        EXPECT_TRUE(WndUtils::GetClipboardText(back));
        EXPECT_EQ(std::string((LPCTSTR)back), c.block.substr(0, c.block.size() - 1));
    }
}

TEST(ClipboardText, EmptyTextLeavesNoTextFormatAndNullTextIsReported) {
    ASSERT_TRUE(WndUtils::SetClipboardText("something"));
    ASSERT_TRUE(WndUtils::SetClipboardText(""));
    EXPECT_FALSE(Available(CF_TEXT));
    EXPECT_FALSE(Available(CF_UNICODETEXT));
    CString back = "stale";
    EXPECT_FALSE(WndUtils::GetClipboardText(back));
    EXPECT_EQ(back, "");
    qmtest::RecordingAssertSink sink;
    EXPECT_FALSE(WndUtils::SetClipboardText(nullptr));
    EXPECT_EQ(sink.Expressions(), std::vector<std::string>{"lpszText"});
}

TEST(ClipboardText, ReadingStopsAtTheFirstNulAndNonTextFormatsAreNotSynthesised) {
    ASSERT_TRUE(Put(CF_TEXT, Lit("ab\0cd\0")));
    CString back;
    EXPECT_TRUE(WndUtils::GetClipboardText(back));
    EXPECT_EQ(back, "ab");
    EXPECT_FALSE(Available(CF_DIB));
    EXPECT_EQ(Bytes(CF_DIB), "<none>");
}

TEST(ClipboardText, UnicodeTextIsReadAsAnsiAndOem) {
    // e acute, the euro sign (1252 has it, 437 not), a CJK character (neither has it).
    ASSERT_TRUE(Put(CF_UNICODETEXT, Utf16(u"\u00e9\u20ac\u4e2d!")));
    EXPECT_TRUE(Available(CF_TEXT));
    EXPECT_TRUE(Available(CF_OEMTEXT));
    EXPECT_EQ(Terminated(Bytes(CF_TEXT)), Lit("\xE9\x80?!\0"));
    EXPECT_EQ(Terminated(Bytes(CF_OEMTEXT)), Lit("\x82?" "?!\0"));
    CString back;
    EXPECT_TRUE(WndUtils::GetClipboardText(back));
    EXPECT_EQ(back, "\xE9\x80?!");
}

TEST(ClipboardText, AnsiAndOemTextAreReadAsEachOther) {
    ASSERT_TRUE(WndUtils::SetClipboardText("\xE9\xA2 x"));
    EXPECT_EQ(Terminated(Bytes(CF_UNICODETEXT), 2), Utf16(u"\u00e9\u00a2 x"));
    EXPECT_EQ(Terminated(Bytes(CF_OEMTEXT)), Lit("\x82\x9B x\0"));
    ASSERT_TRUE(Put(CF_OEMTEXT, Lit("\x9B\x82\0")));
    EXPECT_EQ(Terminated(Bytes(CF_TEXT)), Lit("\xA2\xE9\0"));
    EXPECT_EQ(Terminated(Bytes(CF_UNICODETEXT), 2), Utf16(u"\u00a2\u00e9"));
}

// Windows deletes the metafile of a metafile picture when the clipboard lets it go; the
// in-process clipboard must do the same, or each picture put there leaks its metafile.
TEST(ClipboardText, EmptyingFreesTheMetafileOfAPicture) {
    static const BYTE kEmpty[] = {1, 0, 9, 0, 0, 3, 12, 0, 0, 0, 0, 0, 3, 0, 0, 0, 0, 0,
                                  3, 0, 0, 0, 0, 0};
    HMETAFILE hmf = plat::MetafileFromBits(sizeof kEmpty, kEmpty);
    ASSERT_NE(hmf, nullptr);
    HGLOBAL h = plat::GlobalMemAlloc(GMEM_MOVEABLE, sizeof(METAFILEPICT));
    auto* mfp = (METAFILEPICT*)plat::GlobalMemLock(h);
    *mfp = METAFILEPICT{MM_ANISOTROPIC, 100, 100, hmf};
    plat::GlobalMemUnlock(h);
    ASSERT_TRUE(plat::ClipboardOpen(nullptr));
    plat::ClipboardEmpty();
    ASSERT_NE(plat::ClipboardSetData(CF_METAFILEPICT, h), nullptr);
    plat::ClipboardClose();
    ASSERT_TRUE(WndUtils::SetClipboardText("replaces it"));
    EXPECT_FALSE(plat::MetafileDelete(hmf));  // already gone with the picture
}

}  // namespace

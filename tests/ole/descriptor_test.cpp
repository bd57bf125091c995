// Object descriptor blocks: layout of what is built, and the reader's refusal of blocks whose
// sizes or offsets point outside them.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/support/recording_sink.h"
#include "utils/common/OleUtils.h"
#include "utils/platform/globalmem.h"

namespace {

using qm::platform::GlobalMemFree;
using qm::platform::GlobalMemLock;
using qm::platform::GlobalMemSize;
using qm::platform::GlobalMemUnlock;

const CLSID kClsid = {0x12345678, 0x9ABC, 0xDEF0, {1, 2, 3, 4, 5, 6, 7, 8}};

std::vector<BYTE> BytesOf(HGLOBAL h) {
    std::vector<BYTE> bytes(GlobalMemSize(h));
    const void* p = GlobalMemLock(h);
    if (p) std::memcpy(bytes.data(), p, bytes.size());
    GlobalMemUnlock(h);
    return bytes;
}

DWORD DwordAt(const std::vector<BYTE>& b, std::size_t at) {
    DWORD v;
    std::memcpy(&v, b.data() + at, 4);
    return v;
}

std::u16string Utf16At(const std::vector<BYTE>& b, std::size_t at) {
    std::u16string s;
    for (; at + 2 <= b.size(); at += 2) {
        char16_t c;
        std::memcpy(&c, b.data() + at, 2);
        if (!c) break;
        s.push_back(c);
    }
    return s;
}

struct LayoutCase {
    const char* type;
    const char* source;
    DWORD cbSize, typeOffset, sourceOffset;
    const char16_t* sourceText;
};

TEST(ObjectDescriptor, LayoutOfTypeAndSource) {
    const LayoutCase cases[] = {
        {"Note", nullptr, 72, 52, 62, u"Note"}, {"Note", "", 72, 52, 62, u"Note"},
        {"Note", "Desk", 72, 52, 62, u"Desk"}, {"Note", "Notebook 1", 84, 52, 62, u"Notebook 1"},
        {nullptr, "Desk", 62, 0, 52, u"Desk"},
        {"", "Desk", 62, 0, 52, u"Desk"}, {nullptr, nullptr, 52, 0, 0, u""}, {"", "", 52, 0, 0, u""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.type ? c.type : "(null)") + " / " + (c.source ? c.source : "(null)"));
        HGLOBAL h = OleCreateObjectDescriptor(kClsid, DVASPECT_CONTENT, SIZEL{2540, 1270}, POINTL{-3, 7}, 0x11,
                                              c.type, c.source);
        ASSERT_NE(h, nullptr);
        std::vector<BYTE> b = BytesOf(h);
        EXPECT_EQ(b.size(), c.cbSize);
        EXPECT_EQ(DwordAt(b, 0), c.cbSize);
        EXPECT_EQ(DwordAt(b, 44), c.typeOffset);
        EXPECT_EQ(DwordAt(b, 48), c.sourceOffset);
        if (c.typeOffset) { EXPECT_EQ(Utf16At(b, c.typeOffset), u"Note"); }
        if (c.sourceOffset) { EXPECT_EQ(Utf16At(b, c.sourceOffset), c.sourceText); }
        EXPECT_EQ(GlobalMemFree(h), nullptr);
    }
}

TEST(ObjectDescriptor, FixedFieldsAtTheirOffsetsAndReadBackIncludingAnsiText) {
    HGLOBAL h = OleCreateObjectDescriptor(kClsid, DVASPECT_ICON, SIZEL{10, 20}, POINTL{-3, 40}, 5,
                                          "Caf\xE9 note \x80", "R\xE9sum\xE9s");
    std::vector<BYTE> b = BytesOf(h);
    ASSERT_GE(b.size(), 52u);
    EXPECT_EQ(std::memcmp(b.data() + 4, &kClsid, 16), 0);
    const DWORD fixed[] = {DVASPECT_ICON, 10, 20, (DWORD)-3, 40, 5};  // aspect, size, point, status
    for (int k = 0; k < 6; ++k) EXPECT_EQ(DwordAt(b, 20 + 4 * k), fixed[k]) << "at " << 20 + 4 * k;
    // The ANSI characters became their UTF-16 units in the block.
    EXPECT_EQ(Utf16At(b, 52), u"Caf\u00E9 note \u20AC");
    OBJECTDESCRIPTOR od;
    CString type, source;
    ASSERT_TRUE(OleReadObjectDescriptor(h, od, type, source));
    EXPECT_EQ(od.cbSize, b.size());
    EXPECT_EQ(std::memcmp(&od.clsid, &kClsid, 16), 0);
    EXPECT_EQ(od.sizel.cx, 10);
    EXPECT_EQ(od.pointl.x, -3);
    EXPECT_EQ(od.pointl.y, 40);
    EXPECT_EQ(od.dwStatus, 5u);
    EXPECT_STREQ(type, "Caf\xE9 note \x80");
    EXPECT_STREQ(source, "R\xE9sum\xE9s");
    GlobalMemFree(h);
}

// A block built by hand: the fixed part, then bytes.
std::vector<BYTE> Block(ULONG cbSize, DWORD typeOffset, DWORD sourceOffset, std::vector<BYTE> tail) {
    OBJECTDESCRIPTOR od{};
    od.cbSize = cbSize;
    od.dwFullUserTypeName = typeOffset;
    od.dwSrcOfCopy = sourceOffset;
    std::vector<BYTE> b(52 + tail.size());
    std::memcpy(b.data(), &od, 52);
    if (!tail.empty()) std::memcpy(b.data() + 52, tail.data(), tail.size());
    return b;
}

TEST(ObjectDescriptor, RefusesBlocksThatPointOutsideThemselves) {
    const std::vector<BYTE> ab = {'A', 0, 'B', 0, 0, 0};  // "AB"
    struct Case { const char* what; std::vector<BYTE> block; } cases[] = {
        {"shorter than the fixed part", std::vector<BYTE>(51, 0)},
        {"cbSize below 52", Block(51, 0, 0, {})},
        {"cbSize beyond the block", Block(59, 52, 0, ab)},
        {"type offset inside the fixed part", Block(58, 50, 0, ab)},
        {"type offset at cbSize", Block(58, 58, 0, ab)},
        {"source offset beyond cbSize", Block(58, 52, 4000, ab)},
        {"no terminator before cbSize", Block(56, 52, 0, ab)},
        {"terminator only after cbSize", Block(57, 52, 0, ab)},
        {"huge offset", Block(58, 0xFFFFFFFF, 0, ab)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        OBJECTDESCRIPTOR od;
        CString type = "old", source = "old";
        EXPECT_FALSE(OleParseObjectDescriptor(c.block.data(), c.block.size(), od, type, source));
        EXPECT_EQ(od.cbSize, 0u);
        EXPECT_TRUE(type.IsEmpty());
        EXPECT_TRUE(source.IsEmpty());
    }
    qmtest::RecordingAssertSink sink;
    OBJECTDESCRIPTOR od;
    CString type, source;
    EXPECT_FALSE(OleReadObjectDescriptor(nullptr, od, type, source));
    EXPECT_EQ(sink.Expressions(), std::vector<std::string>{"hObjDesc != nullptr"});
    EXPECT_EQ(sink.Reports().at(0).module, "Common\\OleUtils");
}

TEST(ObjectDescriptor, AcceptsOddOffsetsAndTrailingBytes) {
    // An odd offset still names a whole string (read unit by unit); bytes after cbSize are
    // not the descriptor's.
    std::vector<BYTE> b = Block(59, 53, 0, {0xEE, 'A', 0, 'B', 0, 0, 0, 0xFF, 0xFF});
    OBJECTDESCRIPTOR od;
    CString type, source;
    ASSERT_TRUE(OleParseObjectDescriptor(b.data(), b.size(), od, type, source));
    EXPECT_STREQ(type, "AB");
    EXPECT_TRUE(source.IsEmpty());
    EXPECT_EQ(od.cbSize, 59u);
}

}  // namespace

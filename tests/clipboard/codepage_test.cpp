// Code page conversions shared by the clipboard and the OLE code.
#include <gtest/gtest.h>

#include <string>

#include "utils/platform/codepage.h"

namespace {

namespace plat = qm::platform;

TEST(CodePage, EveryByteOfEachCodePageRoundTrips) {
    for (UINT cp : {plat::kCodePageAnsi, plat::kCodePageOem, plat::kCodePageLatin1}) {
        std::string all;
        for (int b = 0; b < 256; ++b) all += (char)b;
        std::u16string wide = plat::AnsiToUtf16(all.data(), all.size(), cp);
        ASSERT_EQ(wide.size(), 256u);
        bool lossy = true;
        EXPECT_EQ(plat::Utf16ToAnsi(wide.data(), wide.size(), cp, &lossy), all) << cp;
        EXPECT_FALSE(lossy);
        std::string utf8 = plat::AnsiToUtf8(all.data(), all.size(), cp);
        EXPECT_EQ(plat::Utf8ToAnsi(utf8.data(), utf8.size(), cp), all) << cp;
    }
}

TEST(CodePage, KnownCharacters) {
    struct Case { UINT cp; unsigned char byte; char16_t unit; } cases[] = {
        {1252, 0x80, 0x20AC}, {1252, 0x9F, 0x0178}, {1252, 0x81, 0x0081}, {1252, 0xE9, 0x00E9},
        {437, 0x82, 0x00E9},  {437, 0x9B, 0x00A2},  {437, 0xB0, 0x2591},  {437, 0xFF, 0x00A0},
        {437, 0x01, 0x0001},  {28591, 0x80, 0x0080},
    };
    for (const Case& c : cases) {
        char b = (char)c.byte;
        EXPECT_EQ(plat::AnsiToUtf16(&b, 1, c.cp), std::u16string(1, c.unit)) << c.cp << " " << (int)c.byte;
    }
}

TEST(CodePage, UnmappableCharactersBecomeQuestionMarks) {
    std::u16string text = u"a\u4e2d\U0001F600\u20acb";  // CJK, a surrogate pair, the euro sign
    bool lossy = false;
    EXPECT_EQ(plat::Utf16ToAnsi(text.data(), text.size(), 1252, &lossy), "a??\x80" "b");
    EXPECT_TRUE(lossy);
    EXPECT_EQ(plat::Utf16ToAnsi(text.data(), text.size(), 437), "a???b");
}

TEST(CodePage, Utf8BothWays) {
    std::u16string text = u"\u00e9\u20ac\U0001F600z";
    std::string utf8 = plat::Utf16ToUtf8(text.data(), text.size());
    EXPECT_EQ(utf8, "\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z");
    EXPECT_EQ(plat::Utf8ToUtf16(utf8.data(), utf8.size()), text);
}

TEST(CodePage, InvalidUtf8AndLoneSurrogatesBecomeReplacementCharacters) {
    struct Case { std::string utf8; std::u16string wide; } cases[] = {
        {"\xC3", u"\uFFFD"},                       // truncated at the end
        {"\xC3z", u"\uFFFDz"},                     // continuation missing
        {"\xC0\xAF", u"\uFFFD\uFFFD"},             // overlong
        {"\xE0\x80\xAF", u"\uFFFD\uFFFD\uFFFD"},   // overlong, three bytes
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},   // an encoded surrogate
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // past U+10FFFF
        {"\x80x", u"\uFFFDx"},
    };
    for (const Case& c : cases) EXPECT_EQ(plat::Utf8ToUtf16(c.utf8.data(), c.utf8.size()), c.wide);
    std::u16string lone = u"a";
    lone += (char16_t)0xD800;
    lone += u"b";
    EXPECT_EQ(plat::Utf16ToUtf8(lone.data(), lone.size()), "a\xEF\xBF\xBD" "b");
}

}  // namespace

#include <gtest/gtest.h>
#include <cstring>

#include "utils/framework/CString.h"

TEST(CStringTest, ConstructionAndLength) {
    EXPECT_EQ(CString().GetLength() + CString((const char*)nullptr).GetLength() + CString("abc").GetLength(), 3);
    EXPECT_EQ(CString('x', 3), "xxx");
    CString withNul("a\0b", 3);  // counted: embedded NUL bytes are kept
    EXPECT_TRUE(withNul.GetLength() == 3 && withNul[2] == 'b');
    EXPECT_EQ(withNul.GetAt(3), 0);  // the terminator
    EXPECT_EQ(CString("abc").GetAt(-1), 0);
}

TEST(CStringTest, ComparisonIsBytewiseAndCaseFoldingIsAscii) {
    EXPECT_TRUE(CString("abc").Compare("abd") < 0 && CString("abc").Compare("ab") > 0 && CString("abc").Compare("abc") == 0);
    EXPECT_EQ(CString("ABC").CompareNoCase("abc"), 0);
    EXPECT_GT(CString("\xE9").Compare("z"), 0);  // bytes compare unsigned
    EXPECT_TRUE(CString("a") == "a" && "b" != CString("a") && CString("a") < CString("b"));
}

TEST(CStringTest, ExtractionAndSearchingClampTheirArguments) {
    CString s("hello");
    const CString got[] = {s.Left(2), s.Left(99), s.Left(-1), s.Right(3), s.Mid(1, 3), s.Mid(3), s.Mid(9), s.Mid(-2, 2),
                           s.SpanIncluding("leh"), s.SpanExcluding("l")};
    const char* want[] = {"he", "hello", "", "llo", "ell", "lo", "", "he", "hell", "he"};
    for (int i = 0; i < 10; ++i) EXPECT_EQ(got[i], want[i]) << i;
    CString t("a.b.c");
    const int found[] = {t.Find('.'), t.Find('.', 2), t.Find('.', 99), t.Find("b.c"), t.Find(""), t.ReverseFind('.'),
                         t.FindOneOf("cb"), t.Find("zz")};
    const int wantFound[] = {1, 3, -1, 2, 0, 3, 2, -1};
    for (int i = 0; i < 8; ++i) EXPECT_EQ(found[i], wantFound[i]) << i;
}

TEST(CStringTest, Modification) {
    CString s("  Mixed Case\t\r\n");
    s.Trim();
    EXPECT_EQ(s, "Mixed Case");
    EXPECT_EQ(CString(s).MakeUpper() + CString(s).MakeLower(), "MIXED CASEmixed case");
    EXPECT_EQ(CString("xxaxx").Trim('x') + CString("abc").MakeReverse(), "acba");
    CString r("a-b-c");
    EXPECT_EQ(r.Replace("-", "--"), 2);
    EXPECT_EQ(r, "a--b--c");
    EXPECT_EQ(r.Remove('-'), 4);
    EXPECT_EQ(r, "abc");
    r.Insert(1, "XY");
    EXPECT_EQ(r, "aXYbc");
    r.Delete(1, 2);
    r.Delete(2, 99);
    EXPECT_EQ(r, "ab");
    CString t("a,b;;c");
    int pos = 0;
    CString tokens;
    for (int i = 0; i < 4; ++i) tokens += t.Tokenize(",;", pos) + "|";
    EXPECT_EQ(tokens, "a|b|c||");
    EXPECT_EQ(pos, -1);
}

TEST(CStringTest, FormatAndBuffers) {
    CString s;
    s.Format("%s-%05d-%.2f", "x", 42, 1.5);
    s.AppendFormat("[%c]", 'q');
    EXPECT_EQ(s, "x-00042-1.50[q]");
    CString b;
    std::strcpy(b.GetBuffer(10), "hi");
    b.ReleaseBuffer();
    EXPECT_EQ(b, "hi");
    std::memcpy(b.GetBuffer(10), "abcdef", 6);
    b.ReleaseBuffer(4);
    EXPECT_EQ(b, "abcd");
    CString big;
    big.Format("%s", std::string(5000, 'z').c_str());  // longer than any fixed buffer
    EXPECT_EQ(big.GetLength(), 5000);
}

#include <gtest/gtest.h>

#include <cstring>

#include "utils/framework/CString.h"

TEST(CStringTest, ConstructionAndLength) {
    EXPECT_EQ(CString().GetLength(), 0);
    EXPECT_EQ(CString((const char*)nullptr).GetLength(), 0);
    EXPECT_EQ(CString("abc").GetLength(), 3);
    EXPECT_EQ(CString('x', 3), "xxx");
    CString withNul("a\0b", 3);  // counted: embedded NUL bytes are kept
    EXPECT_EQ(withNul.GetLength(), 3);
    EXPECT_EQ(withNul[2], 'b');
    EXPECT_EQ(withNul.GetAt(3), 0);  // the terminator
    EXPECT_EQ(CString("abc").GetAt(-1), 0);
}

TEST(CStringTest, ComparisonIsBytewiseAndCaseFoldingIsAscii) {
    EXPECT_LT(CString("abc").Compare("abd"), 0);
    EXPECT_GT(CString("abc").Compare("ab"), 0);
    EXPECT_EQ(CString("abc").Compare("abc"), 0);
    EXPECT_EQ(CString("ABC").CompareNoCase("abc"), 0);
    EXPECT_GT(CString("\xE9").Compare("z"), 0);  // bytes compare unsigned
    EXPECT_TRUE(CString("a") == "a");
    EXPECT_TRUE("b" != CString("a"));
    EXPECT_TRUE(CString("a") < CString("b"));
}

TEST(CStringTest, ExtractionClampsItsArguments) {
    CString s("hello");
    EXPECT_EQ(s.Left(2), "he");
    EXPECT_EQ(s.Left(99), "hello");
    EXPECT_EQ(s.Left(-1), "");
    EXPECT_EQ(s.Right(3), "llo");
    EXPECT_EQ(s.Mid(1, 3), "ell");
    EXPECT_EQ(s.Mid(3), "lo");
    EXPECT_EQ(s.Mid(9), "");
    EXPECT_EQ(s.Mid(-2, 2), "he");
    EXPECT_EQ(s.SpanIncluding("leh"), "hell");
    EXPECT_EQ(s.SpanExcluding("l"), "he");
}

TEST(CStringTest, Searching) {
    CString s("a.b.c");
    EXPECT_EQ(s.Find('.'), 1);
    EXPECT_EQ(s.Find('.', 2), 3);
    EXPECT_EQ(s.Find('.', 99), -1);
    EXPECT_EQ(s.Find("b.c"), 2);
    EXPECT_EQ(s.Find(""), 0);
    EXPECT_EQ(s.ReverseFind('.'), 3);
    EXPECT_EQ(s.FindOneOf("cb"), 2);
    EXPECT_EQ(s.Find("zz"), -1);
}

TEST(CStringTest, Modification) {
    CString s("  Mixed Case\t\r\n");
    s.Trim();
    EXPECT_EQ(s, "Mixed Case");
    EXPECT_EQ(CString(s).MakeUpper(), "MIXED CASE");
    EXPECT_EQ(CString(s).MakeLower(), "mixed case");
    EXPECT_EQ(CString("xxaxx").Trim('x'), "a");
    EXPECT_EQ(CString("abc").MakeReverse(), "cba");
    CString r("a-b-c");
    EXPECT_EQ(r.Replace("-", "--"), 2);
    EXPECT_EQ(r, "a--b--c");
    EXPECT_EQ(r.Remove('-'), 4);
    EXPECT_EQ(r, "abc");
    r.Insert(1, "XY");
    EXPECT_EQ(r, "aXYbc");
    r.Delete(1, 2);
    EXPECT_EQ(r, "abc");
    r.Delete(2, 99);
    EXPECT_EQ(r, "ab");
    CString t("a,b;;c");
    int pos = 0;
    EXPECT_EQ(t.Tokenize(",;", pos), "a");
    EXPECT_EQ(t.Tokenize(",;", pos), "b");
    EXPECT_EQ(t.Tokenize(",;", pos), "c");
    EXPECT_EQ(t.Tokenize(",;", pos), "");
    EXPECT_EQ(pos, -1);
}

TEST(CStringTest, FormatAndBuffers) {
    CString s;
    s.Format("%s-%05d-%.2f", "x", 42, 1.5);
    EXPECT_EQ(s, "x-00042-1.50");
    s.AppendFormat("[%c]", 'q');
    EXPECT_EQ(s, "x-00042-1.50[q]");
    CString b;
    char* p = b.GetBuffer(10);
    std::strcpy(p, "hi");
    b.ReleaseBuffer();
    EXPECT_EQ(b, "hi");
    p = b.GetBuffer(10);
    std::memcpy(p, "abcdef", 6);
    b.ReleaseBuffer(4);
    EXPECT_EQ(b, "abcd");
    CString big;
    big.Format("%s", std::string(5000, 'z').c_str());  // longer than any fixed buffer
    EXPECT_EQ(big.GetLength(), 5000);
}

TEST(CStringTest, StringResources) {
    CString s;
    EXPECT_FALSE(s.LoadString(64000));
    qm::SetStringResource(64000, "Hello");
    EXPECT_TRUE(s.LoadString(64000));
    EXPECT_EQ(s, "Hello");
    qm::ClearStringResource(64000);
    EXPECT_FALSE(s.LoadString(64000));
    EXPECT_EQ(s, "Hello");  // a failed load leaves the string as it was
}

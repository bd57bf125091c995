#include <gtest/gtest.h>

#include "utils/framework/CString.h"

// The rest of the string class is exercised by every family's tests.
TEST(CStringTest, ComparisonIsBytewiseAndCaseFoldingIsAscii) {
    EXPECT_LT(CString("abc").Compare("abd"), 0);
    EXPECT_GT(CString("abc").Compare("ab"), 0);
    EXPECT_EQ(CString("abc").Compare("abc"), 0);
    EXPECT_EQ(CString("ABC").CompareNoCase("abc"), 0);
    EXPECT_GT(CString("\xE9").Compare("z"), 0);  // bytes compare unsigned
    EXPECT_EQ(CString("a"), "a");
    EXPECT_NE("b", CString("a"));
    EXPECT_LT(CString("a"), CString("b"));
    // Positions outside the text are clamped rather than read.
    CString s("hello");
    EXPECT_EQ(s.GetAt(-1), 0);
    EXPECT_EQ(s.GetAt(5), 0);
    EXPECT_EQ(s.Mid(9), "");
    EXPECT_EQ(s.Mid(-2, 2), "he");
    EXPECT_EQ(s.Left(-1), "");
}

#include <gtest/gtest.h>

#include "utils/framework/CString.h"

// The rest of the string class is exercised by every family's tests.
TEST(CStringTest, ComparisonIsBytewiseAndCaseFoldingIsAscii) {
    EXPECT_TRUE(CString("abc").Compare("abd") < 0 && CString("abc").Compare("ab") > 0 && CString("abc").Compare("abc") == 0);
    EXPECT_EQ(CString("ABC").CompareNoCase("abc"), 0);
    EXPECT_GT(CString("\xE9").Compare("z"), 0);  // bytes compare unsigned
    EXPECT_TRUE(CString("a") == "a" && "b" != CString("a") && CString("a") < CString("b"));
    // Positions outside the text are clamped rather than read.
    CString s("hello");
    EXPECT_TRUE(s.GetAt(-1) == 0 && s.GetAt(5) == 0 && s.Mid(9) == "" && s.Mid(-2, 2) == "he" && s.Left(-1) == "");
}

// Cursor-advancing integer and pointer scanners and the unchecked digit accumulator.
#include <gtest/gtest.h>
#include <cstdint>
#include <cstring>

#include "utils/common/utils_numbers.h"

namespace {

struct ScanCase { const char* text; LONG value; int cursor; };  // offset of the cursor afterwards

constexpr LONG kFail = INT32_MIN;

TEST(ScanIntLong, ValuesAndCursor) {
    const ScanCase cases[] = {
        {"42", 42, 2},        {"  -1,000x", -1000, 8}, {"+7;", 7, 2},   {"\r\n\t 5", 5, 5},
        {"12,,3", 12, 2}, {"12,x", 12, 2},  // a double or trailing comma is not part of the number
        {"1,2,3,4", 1234, 7}, {"0000000001", 1, 10},
        {"9999999999", (LONG)1410065407, 10},  // ten digits are not checked for overflow
        {"-2147483648", INT32_MIN, 11}, {"12345678901", kFail, 11}, {"1,234,567,890,1", kFail, 15},  // 11th digit fails
        {"-x", kFail, 1}, {"", kFail, 0}, {"- 5", kFail, 1}, {",5", kFail, 0},  // the cursor stays after a sign
    };
    for (const ScanCase& c : cases) {
        const char* p = c.text;
        EXPECT_EQ(ScanIntLong(p), c.value) << c.text;
        EXPECT_EQ(p - c.text, c.cursor) << c.text;
    }
    const char* none = nullptr;
    EXPECT_EQ(ScanIntLong(none), kFail);
    EXPECT_EQ(none, nullptr);
}

TEST(ScanInt, StartsAtADigitAndStaysBelow65535) {
    const struct { const char* text; unsigned int value; int cursor; } cases[] = {
        {"65534", 65534, 5}, {"65535", 0xFFFFFFFFu, 5}, {"1,000 items", 1000, 5}, {" 5", 0xFFFFFFFFu, 0},
        {"-5", 0xFFFFFFFFu, 0}, {"3000000000", 0xFFFFFFFFu, 10},  // no blanks or sign; wraps negative: still a failure
    };
    for (const auto& c : cases) {
        const char* p = c.text;
        EXPECT_EQ(ScanInt(p), c.value) << c.text;
        EXPECT_EQ(p - c.text, c.cursor) << c.text;
    }
}

TEST(ScanPtr, SegmentAndOffsetDigitsFormOneNumber) {
    const struct { const char* text; std::uintptr_t value; int cursor; } cases[] = {
        {"0012:ABCD", 0x12ABCD, 9}, {"FFFF:FFFF rest", 0xFFFFFFFFu, 9}, {"1:", 0x1, 2},
        {"123456789:0", 0x34567890u, 11}, {"a:0", 42 * 16, 3},  // the low 32 bits; lower case taken as c - 55
        {"12AB;", 0, 0}, {":12", 0, 0}, {"G:1", 0, 0}, {"", 0, 0},  // no colon: cursor restored
    };
    for (const auto& c : cases) {
        char buf[32];
        std::strcpy(buf, c.text);
        char* p = buf;
        EXPECT_EQ((std::uintptr_t)ScanPtr(p), c.value) << c.text;
        EXPECT_EQ(p - buf, c.cursor) << c.text;
    }
}

TEST(Str2DWORD, EveryCharacterCountsAsADigit) {
    const struct { CString text; DWORD value; } cases[] = {
        {"", 0}, {"4294967295", 4294967295u}, {"4294967296", 0}, {"1a", 10 + ('a' - '0')},  // wraps; code minus 48
        {CString("1\0" "2", 3), (DWORD)(100 + (0 - 48) * 10 + 2)}, {"\xFF", (DWORD)(-1 - 48)},  // characters are signed
    };
    for (const auto& c : cases) EXPECT_EQ(Str2DWORD(c.text), c.value) << (const char*)c.text;
}

}  // namespace

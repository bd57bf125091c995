// Helpers shared by the number files of the utils module (utils_numbers*.cpp).
#pragma once

#include "utils/framework/wintypes.h"

namespace qm::numbers {

inline constexpr char kHexDigits[] = "0123456789ABCDEF";

// x86's conversion of a double to a 32-bit integer: out-of-range and NaN values give the
// "integer indefinite" 0x80000000 instead of undefined behaviour.
inline LONG TruncToLong32(double x) {
    if (!(x > -2147483649.0 && x < 2147483648.0)) return (LONG)0x80000000u;
    return (LONG)x;
}

}  // namespace qm::numbers

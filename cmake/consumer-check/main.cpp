// Uses the installed headers and library: prints 2001-03-02 (31 January 2001 + 30 days).
#include <cstdio>

#include "utils/common/date.h"

int main() {
    CDate d = CDate(2001, 1, 31) + 30;
    std::printf("%04d-%02d-%02d\n", d.GetYear(), d.GetMonth(), d.GetDay());
    return d == CDate(2001, 3, 2) ? 0 : 1;
}

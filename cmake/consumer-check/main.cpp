// Uses the installed public headers and library only: the framework subset, a module and the
// host header. Prints 2001-03-02 (31 January 2001 + 30 days) and a pinned decimal separator.
#include <cstdio>

#include "utils/common/date.h"
#include "utils/framework/CString.h"
#include "utils/platform/host.h"

int main() {
    CDate d = CDate(2001, 1, 31) + 30;
    qm::platform::PinLocaleInfo(LOCALE_SDECIMAL, ",");
    char decimal[4] = {};
    int copied = qm::platform::GetUserLocaleInfo(LOCALE_SDECIMAL, decimal, sizeof decimal);
    CString text;
    text.Format("%04d-%02d-%02d %s", d.GetYear(), d.GetMonth(), d.GetDay(), decimal);
    std::printf("%s\n", text.GetString());
    return d == CDate(2001, 3, 2) && copied == 2 && text == "2001-03-02 ," ? 0 : 1;
}

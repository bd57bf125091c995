// Arbitrary text through the short-date scanner and the date finder, under several short-date
// pictures (the first input byte picks one), as a CDate::Format format string, and as the long
// picture that Initialize takes apart into the long form (quotes, "%" and 0x02 bytes included).
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "utils/common/CVLogger.h"
#include "utils/common/date.h"
#include "utils/platform/locale.h"

namespace {

void QuietAssert(const char*, const char*, int) {}

struct Picture {
    const char* order;
    const char* separator;
    const char* picture;
};
const Picture kPictures[] = {
    {"0", "/", "M/d/yyyy"},  {"1", ".", "dd.MM.yyyy"}, {"2", "-", "yyyy-MM-dd"},
    {"1", "-", "dd-MMM-yy"}, {"0", "/", "M/d"},        {"1", " ", "d. M. yyyy"},
    {"0", "/", ""},
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static bool ready = [] {
        SetCvAssertSink(&QuietAssert);
        qm::platform::PinLocaleToEnglishUS();
        return true;
    }();
    (void)ready;
    if (size == 0) return 0;
    const Picture& pic = kPictures[data[0] % (sizeof kPictures / sizeof kPictures[0])];
    qm::platform::PinLocaleInfo(LOCALE_IDATE, pic.order);
    qm::platform::PinLocaleInfo(LOCALE_SDATE, pic.separator);
    qm::platform::PinLocaleInfo(LOCALE_SSHORTDATE, pic.picture);
    WinDateTime::Initialize();

    // An exactly sized copy, so that any read past the terminator is caught.
    std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    char* copy = new char[text.size() + 1];
    std::memcpy(copy, text.c_str(), text.size() + 1);

    const char* p = copy;
    CDate d = WinDateTime::ScanDate(p);
    if (!d.IsNull() && !d.IsValid()) __builtin_trap();
    if (p < copy || p > copy + std::strlen(copy)) __builtin_trap();

    p = copy;
    long at = CDate::FindDate(p, CDate(1, 1, 1), CDate(9999, 12, 31));
    if (at < -1 || (at >= 0 && (size_t)at >= std::strlen(copy))) __builtin_trap();

    CString out = CDate(2012, 7, 4).Format(copy);
    if (out.GetLength() > 31744) __builtin_trap();

    qm::platform::PinLocaleInfo(LOCALE_SLONGDATE, copy);
    WinDateTime::Initialize();
    CString longForm = CDate(2012, 7, 4).AsString(1);
    if (longForm.GetLength() > 31744) __builtin_trap();
    qm::platform::PinLocaleInfo(LOCALE_SLONGDATE, "dddd, MMMM d, yyyy");
    delete[] copy;
    return 0;
}

// A decimal-separator override and pinned locale items, put back when the scope ends.
#pragma once

#include "utils/common/utils_numbers.h"
#include "utils/platform/locale.h"

namespace numtest {

class ScopedNumberSettings {
public:
    ScopedNumberSettings() : m_previous(SetDecimalSeparator(0)) {}
    ~ScopedNumberSettings() {
        SetDecimalSeparator(m_previous);
        qm::platform::PinLocaleToEnglishUS();
    }
    ScopedNumberSettings(const ScopedNumberSettings&) = delete;
    ScopedNumberSettings& operator=(const ScopedNumberSettings&) = delete;

    void Override(char c) { SetDecimalSeparator(c); }
    void Pin(LCTYPE item, const char* text) { qm::platform::PinLocaleInfo(item, text); }

private:
    char m_previous;
};

}  // namespace numtest

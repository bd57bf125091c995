// Shared set-up of the date-text tests: locale items pinned per test, en-US restored after.
#pragma once

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/recording_sink.h"
#include "utils/common/date.h"
#include "utils/platform/locale.h"

namespace datetext_test {

using Pins = std::vector<std::pair<LCTYPE, const char*>>;

// Pins the given items on top of en-US and re-reads the locale.
inline void UseLocale(const Pins& pins) {
    qm::platform::PinLocaleToEnglishUS();
    for (const auto& pin : pins) qm::platform::PinLocaleInfo(pin.first, pin.second);
    WinDateTime::Initialize();
}

class LocaleTest : public testing::Test {
protected:
    void SetUp() override { UseLocale({}); }
    void TearDown() override { UseLocale({}); }
};

inline std::string Ymd(const CDate& d) {
    return std::to_string(d.GetYear()) + "-" + std::to_string(d.GetMonth()) + "-" + std::to_string(d.GetDay());
}

// Exposes the protected month-name matcher.
struct MonthMatcher : WinDateTime {
    static int Match(const char* s) { return GetMonthFromString(s); }
};

}  // namespace datetext_test

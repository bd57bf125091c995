// Desktop alerts on Windows: the tool window's title, text and place, that it leaves the focus
// where it was, stacks above the alerts still showing and closes after its delay or a click.
#if defined(_WIN32)
#include <windows.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "utils/common/WndUtils.h"
#include "utils/platform/alert.h"
#include "utils/platform/host.h"

namespace {

using qm::platform::kAlertTextId;
using qm::platform::kAlertWindowClass;

std::vector<HWND> Alerts() {
    std::vector<HWND> found;
    HWND w = nullptr;
    while ((w = FindWindowExA(nullptr, w, kAlertWindowClass, nullptr)) != nullptr) found.push_back(w);
    return found;
}

std::string TextOf(HWND w) {
    char buffer[512] = {0};
    GetWindowTextA(w, buffer, sizeof buffer);
    return buffer;
}

class AlertWindow : public ::testing::Test {
protected:
    void TearDown() override {
        for (HWND w : Alerts()) DestroyWindow(w);
        qm::platform::PumpMessagesFor(50);
    }
};

TEST_F(AlertWindow, ShowsTitleAndTextAtTheBottomRight) {
    HWND foreground = GetForegroundWindow();
    HWND focus = GetFocus();
    ASSERT_TRUE(WndUtils::ShowAlert("The disk is full", WndUtils::ALERT_ERROR, 60000));
    auto alerts = Alerts();
    ASSERT_EQ(alerts.size(), 1u);
    EXPECT_EQ(TextOf(alerts[0]), "Error");
    EXPECT_EQ(TextOf(GetDlgItem(alerts[0], kAlertTextId)), "The disk is full");
    EXPECT_TRUE(IsWindowVisible(alerts[0]));
    EXPECT_TRUE(GetWindowLongA(alerts[0], GWL_EXSTYLE) & WS_EX_TOPMOST);
    EXPECT_TRUE(GetWindowLongA(alerts[0], GWL_EXSTYLE) & WS_EX_TOOLWINDOW);
    RECT work, r;
    ASSERT_TRUE(SystemParametersInfoA(SPI_GETWORKAREA, 0, &work, 0));
    ASSERT_TRUE(GetWindowRect(alerts[0], &r));
    EXPECT_EQ(r.right, work.right - 8);
    EXPECT_EQ(r.bottom, work.bottom - 8);
    qm::platform::PumpMessagesFor(50);
    EXPECT_EQ(GetForegroundWindow(), foreground);
    EXPECT_EQ(GetFocus(), focus);
}

TEST_F(AlertWindow, AlertsStackUpward) {
    ASSERT_TRUE(WndUtils::ShowAlert("first", WndUtils::ALERT_MESSAGE, 60000));
    ASSERT_TRUE(WndUtils::ShowAlert("second", WndUtils::ALERT_WARNING, 60000));
    auto alerts = Alerts();
    ASSERT_EQ(alerts.size(), 2u);
    HWND first = FindWindowA(kAlertWindowClass, "Message");
    HWND second = FindWindowA(kAlertWindowClass, "Warning");
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    RECT a, b, overlap;
    GetWindowRect(first, &a);
    GetWindowRect(second, &b);
    EXPECT_FALSE(IntersectRect(&overlap, &a, &b));
    EXPECT_LT(b.bottom, a.top);
}

TEST_F(AlertWindow, ClosesAfterItsDelayOrWhenClicked) {
    ASSERT_TRUE(WndUtils::ShowAlert("soon gone", WndUtils::ALERT_MESSAGE, 200));
    HWND timed = FindWindowA(kAlertWindowClass, "Message");
    ASSERT_NE(timed, nullptr);
    qm::platform::PumpMessagesUntil([&] { return !IsWindow(timed); }, 5000);
    EXPECT_FALSE(IsWindow(timed));

    ASSERT_TRUE(WndUtils::ShowAlert("click me", WndUtils::ALERT_WARNING, 60000));
    HWND clicked = FindWindowA(kAlertWindowClass, "Warning");
    ASSERT_NE(clicked, nullptr);
    SendMessageA(clicked, WM_LBUTTONUP, 0, MAKELPARAM(5, 5));
    EXPECT_FALSE(IsWindow(clicked));
}

}  // namespace
#endif

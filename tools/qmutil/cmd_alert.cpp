// qmutil alert ...: a desktop alert (a notification on the session bus, a small window on
// Windows, or one line on standard error when there is no desktop).
#include <cstdio>
#include <string>
#include <vector>

#include "command.h"
#include "utils/common/WndUtils.h"
#include "utils/platform/host.h"

namespace {

using Args = std::vector<std::string>;

const char kUsage[] = "alert error|warning|message TEXT [--delay MS]";

int RunAlert(const Args& a) {
    if (a.size() != 2 && a.size() != 4) throw qmutil::UsageError(std::string("usage: qmutil ") + kUsage);
    WndUtils::AlertKind kind;
    if (a[0] == "error")
        kind = WndUtils::ALERT_ERROR;
    else if (a[0] == "warning")
        kind = WndUtils::ALERT_WARNING;
    else if (a[0] == "message")
        kind = WndUtils::ALERT_MESSAGE;
    else
        throw qmutil::UsageError("invalid kind '" + a[0] + "' (error, warning or message)");
    UINT delay = 0;
    if (a.size() == 4) {
        if (a[2] != "--delay") throw qmutil::UsageError(std::string("usage: qmutil ") + kUsage);
        long ms = qmutil::ParseLong(a[3], "delay");
        if (ms < 1 || ms > 3600000) throw qmutil::UsageError("invalid delay '" + a[3] + "' (1 to 3600000 ms)");
        delay = (UINT)ms;
    }
    if (a[1].empty()) throw qmutil::UsageError("no text to show");
    const std::string text = qm::platform::TerminalTextToAnsi(a[1]);
    BOOL shown = WndUtils::ShowAlert(text.c_str(), kind, delay);
    // A window lives as long as this program pumps its messages: stay for the delay.
    if (shown) qm::platform::PumpMessagesFor(delay ? delay : kind == WndUtils::ALERT_ERROR ? 10000 : kind == WndUtils::ALERT_WARNING ? 6000 : 4000);
    std::printf("%s\n", shown ? "shown" : "no desktop to show it on: written to standard error");
    return 0;
}

qmutil::Registrar g_alert({"alert", nullptr, "a desktop alert (notification, window, or a line on stderr)",
                           "usage: qmutil alert error|warning|message TEXT [--delay MS]\n"
                           "  Shows TEXT titled Error, Warning or Message for MS milliseconds (default\n"
                           "  10000, 6000 and 4000): a notification on the session bus (POSIX), a small\n"
                           "  top-most window (Windows); without either, one line on standard error.\n"
                           "  The command returns when the alert's time is over.\n",
                           RunAlert, nullptr, 0});

}  // namespace

// The desktop alert: a title and a text shown to the user for a while without taking the
// focus from the host.
//
// Windows shows a small top-most tool window at the bottom right of the work area (stacked
// above the alerts still showing), closed after the delay or by a click; the calling thread
// must pump messages for it. POSIX sends a desktop notification over the session D-Bus
// (org.freedesktop.Notifications.Notify) from one worker thread; the caller waits for the
// outcome at most kAlertWaitMs. Without a session bus, without a notification service or when
// the answer does not come in time, AlertShow returns false and the caller reports the alert
// another way (in the rare case of an answer arriving late, the user sees both).
#pragma once

#include "utils/framework/wintypes.h"

namespace qm::platform {

constexpr UINT kAlertWaitMs = 1500;

// Class name and child id of the Windows alert window (for tests that look for it).
constexpr const char* kAlertWindowClass = "QMDesktopAlert";
constexpr int kAlertTextId = 100;

// app: the program's name (the notification's sender); title and text in the ANSI code page;
// critical: the alert reports an error.
bool AlertShow(const char* app, const char* title, const char* text, bool critical, UINT delayMs);

}  // namespace qm::platform

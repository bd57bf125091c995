#include <cstdio>
#include <string>

#include "utils/common/CVLogger.h"
#include "utils/common/DefaultStrings.h"
#include "utils/common/WndUtils.h"
#include "utils/platform/alert.h"
#include "utils/platform/host.h"
#include "utils/platform/userfiles.h"

#define QM_SOURCE_MODULE "Common\\OleUtils"

namespace {

struct AlertStyle {
    UINT titleId;
    const char* fallbackTitle;
    UINT delayMs;
};

AlertStyle StyleOf(WndUtils::AlertKind kind) {
    switch (kind) {
    case WndUtils::ALERT_ERROR: return {qm::IDS_ALERT_ERROR, "Error", 10000};
    case WndUtils::ALERT_WARNING: return {qm::IDS_ALERT_WARNING, "Warning", 6000};
    default: return {qm::IDS_ALERT_MESSAGE, "Message", 4000};
    }
}

// The program's own name, for the line that stands in for an alert.
std::string ProgramName() {
    char path[MAX_PATH] = {0};
    std::string name = qm::platform::GetExecutableFileName(path, sizeof path) ? path : "";
    std::size_t slash = name.find_last_of("\\/");
    if (slash != std::string::npos) name.erase(0, slash + 1);
    return name.empty() ? "alert" : name;
}

}  // namespace

BOOL WndUtils::ShowAlert(LPCTSTR lpszText, AlertKind kind, UINT nDelayMs) {
    if (!CVASSERT(lpszText != nullptr)) lpszText = "";
    if (!CVASSERT(kind == ALERT_ERROR || kind == ALERT_WARNING || kind == ALERT_MESSAGE)) kind = ALERT_MESSAGE;
    qm::EnsureDefaultStrings();
    AlertStyle style = StyleOf(kind);
    CString title;
    if (!title.LoadString(style.titleId) || title.IsEmpty()) title = style.fallbackTitle;
    UINT delay = nDelayMs ? nDelayMs : style.delayMs;
    std::string program = ProgramName();
    if (qm::platform::AlertShow(program.c_str(), title, lpszText, kind == ALERT_ERROR, delay)) return TRUE;
    // No desktop to show it on: one line on standard error, line breaks as spaces.
    std::string line = program + ": " + (LPCTSTR)title + ": ";
    for (const char* p = lpszText; *p; ++p) line.push_back(*p == '\r' || *p == '\n' ? ' ' : *p);
    line.push_back('\n');
    // In the terminal's character set where the program chose a UTF-8 locale.
    std::fputs(qm::platform::AnsiToTerminalText(line).c_str(), stderr);
    std::fflush(stderr);
    return FALSE;
}

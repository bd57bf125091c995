#include "utils/framework/CWinApp.h"

#include <atomic>

#include "utils/platform/thread.h"
#include "utils/platform/window.h"

namespace {
std::atomic<CWinApp*> g_currentApp{nullptr};
}

CWinApp::CWinApp(const char* lpszAppName)
    : m_pszAppName(lpszAppName), m_nWaitCursorCount(0), m_pPreviousApp(g_currentApp.load()) {
    m_nThreadID = qm::platform::CurrentThreadId();
    g_currentApp = this;
}

CWinApp::~CWinApp() {
    CWinApp* self = this;
    g_currentApp.compare_exchange_strong(self, m_pPreviousApp);
}

BOOL CWinApp::InitInstance() { return TRUE; }

void CWinApp::DoWaitCursor(int nCode) {
    m_nWaitCursorCount += nCode;
    if (m_nWaitCursorCount > 0) {
        qm::platform::ShowWaitCursor(true);
    } else {
        m_nWaitCursorCount = 0;
        qm::platform::ShowWaitCursor(false);
    }
}

CWinApp* AfxGetApp() { return g_currentApp.load(); }

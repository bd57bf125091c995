#include "utils/framework/CWinApp.h"

namespace {
CWinApp* g_currentApp = nullptr;
}

CCmdTarget::~CCmdTarget() = default;
CWinThread::~CWinThread() = default;
BOOL CWinThread::InitInstance() { return FALSE; }
int CWinThread::ExitInstance() { return 0; }

CWinApp::CWinApp(const char* lpszAppName) : m_pszAppName(lpszAppName) { g_currentApp = this; }

CWinApp::~CWinApp() {
    if (g_currentApp == this) g_currentApp = nullptr;
}

BOOL CWinApp::InitInstance() { return TRUE; }

CWinApp* AfxGetApp() { return g_currentApp; }

#include "utils/framework/CWinApp.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include "utils/platform/thread.h"
#include "utils/platform/window.h"

namespace {

// Every application object alive, in construction order; the last is the current one. Kept
// for the whole process, so that objects destroyed in any order leave no dangling current.
struct Apps {
    std::mutex m;
    std::vector<CWinApp*> alive;
};

Apps& TheApps() {
    static Apps* apps = new Apps;
    return *apps;
}

}  // namespace

CWinApp::CWinApp(const char* lpszAppName) : m_pszAppName(lpszAppName), m_nWaitCursorCount(0) {
    m_nThreadID = qm::platform::CurrentThreadId();
    Apps& apps = TheApps();
    std::lock_guard<std::mutex> lock(apps.m);
    apps.alive.push_back(this);
}

CWinApp::~CWinApp() {
    Apps& apps = TheApps();
    std::lock_guard<std::mutex> lock(apps.m);
    apps.alive.erase(std::remove(apps.alive.begin(), apps.alive.end(), this), apps.alive.end());
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

CWinApp* AfxGetApp() {
    Apps& apps = TheApps();
    std::lock_guard<std::mutex> lock(apps.m);
    return apps.alive.empty() ? nullptr : apps.alive.back();
}

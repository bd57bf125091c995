#include "utils/module/MFCQMUtils.h"

#include <cstring>

#include "utils/platform/osversion.h"

namespace {

OSVERSIONINFOA g_osVersion;

}  // namespace

CMFCQMUtilsApp::CMFCQMUtilsApp() = default;
CMFCQMUtilsApp::~CMFCQMUtilsApp() = default;

BOOL CMFCQMUtilsApp::InitInstance() {
    CWinApp::InitInstance();
    std::memset(&g_osVersion, 0, sizeof g_osVersion);
    g_osVersion.dwOSVersionInfoSize = 148;
    // A failed query leaves the record zeroed but for its size; the load never fails.
    qm::platform::QueryOSVersion(&g_osVersion);
    return TRUE;
}

namespace {

// The one application object, and the load hook that runs InitInstance once, on the loading
// thread: both are static objects of this module, constructed in this order when the DLL or
// shared object is loaded.
CMFCQMUtilsApp theApp;

struct ModuleLoad {
    ModuleLoad() { theApp.InitInstance(); }
} g_moduleLoad;

}  // namespace

CMFCQMUtilsApp& GetMFCQMUtilsApp() { return theApp; }

const OSVERSIONINFOA& GetModuleOSVersion() { return g_osVersion; }

#include "utils/module/MFCQMUtils.h"

#include <cstring>

#include "utils/platform/osversion.h"

CMFCQMUtilsApp::CMFCQMUtilsApp() = default;
CMFCQMUtilsApp::~CMFCQMUtilsApp() = default;

BOOL CMFCQMUtilsApp::InitInstance() {
    CWinApp::InitInstance();
    OSVERSIONINFOA& version = qm::ModuleOSVersionRecord();
    std::memset(&version, 0, sizeof version);
    version.dwOSVersionInfoSize = 148;
    // A failed query leaves the record zeroed but for its size; the load never fails.
    qm::platform::QueryOSVersion(&version);
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

// The module's application object and its operating-system version record.
#pragma once

#include "utils/common/mfcutils_diag.h"  // GetModuleOSVersion
#include "utils/framework/CWinApp.h"
#include "utils/framework/wintypes.h"

class MFCQMUTILS_API CMFCQMUtilsApp : public CWinApp {
public:
    CMFCQMUtilsApp();
    ~CMFCQMUtilsApp() override;
    // Fills the version record: cleared, size 148, then GetVersionExA; always TRUE.
    BOOL InitInstance() override;
};

// The application object, constructed when the module is loaded.
MFCQMUTILS_API CMFCQMUtilsApp& GetMFCQMUtilsApp();

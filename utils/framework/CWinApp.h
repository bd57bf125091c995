// The framework's application class, as far as a library's application object and its host
// need it: the main thread's identity and the wait cursor.
#pragma once

#include "utils/framework/CWinThread.h"
#include "utils/framework/wintypes.h"

class MFCQMUTILS_API CWinApp : public CWinThread {
public:
    explicit CWinApp(const char* lpszAppName = nullptr);
    ~CWinApp() override;
    BOOL InitInstance() override;

    // 1 begins the wait cursor, -1 ends it, 0 shows it again if it is counted (after something
    // else changed the cursor). The count never goes below 0. A host may override this to
    // draw the cursor its own way (and call the base to keep the count).
    virtual void DoWaitCursor(int nCode);

    const char* m_pszAppName;
    int m_nWaitCursorCount;
};

// The current application object: the last one constructed that still exists (the module's
// own, or a host's constructed after it). m_nThreadID is the thread that constructed it.
MFCQMUTILS_API CWinApp* AfxGetApp();

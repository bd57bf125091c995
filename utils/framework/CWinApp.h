// The framework's command target, thread and application classes, as far as a library's
// application object needs them.
#pragma once

#include "utils/framework/CObject.h"
#include "utils/framework/wintypes.h"

class MFCQMUTILS_API CCmdTarget : public CObject {
public:
    ~CCmdTarget() override;
};

class MFCQMUTILS_API CWinThread : public CCmdTarget {
public:
    ~CWinThread() override;
    virtual BOOL InitInstance();
    virtual int ExitInstance();
};

class MFCQMUTILS_API CWinApp : public CWinThread {
public:
    explicit CWinApp(const char* lpszAppName = nullptr);
    ~CWinApp() override;
    BOOL InitInstance() override;

    const char* m_pszAppName;
};

// The running module's application object (the last one constructed).
MFCQMUTILS_API CWinApp* AfxGetApp();

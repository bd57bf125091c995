// The framework's thread: CWinThread runs InitInstance and Run (or a plain thread function)
// on a new thread and, with m_bAutoDelete, deletes itself when the thread ends.
#pragma once

#include "utils/framework/CCmdTarget.h"

class CWnd;

typedef UINT (*AFX_THREADPROC)(LPVOID);

class MFCQMUTILS_API CWinThread : public CCmdTarget {
public:
    CWinThread();
    CWinThread(AFX_THREADPROC pfnThreadProc, LPVOID pParam);
    ~CWinThread() override;

    // Starts the thread (held back with CREATE_SUSPENDED until ResumeThread). Once it runs,
    // an auto-deleting object may be gone at any moment: the caller must not touch it.
    BOOL CreateThread(DWORD dwCreateFlags = 0, UINT nStackSize = 0, LPSECURITY_ATTRIBUTES lpSecurityAttrs = nullptr);
    // The previous suspend count, or (DWORD)-1 on failure.
    DWORD ResumeThread();
    BOOL SetThreadPriority(int nPriority);
    operator HANDLE() const { return m_hThread; }

    // On the new thread: InitInstance; if it succeeds Run, else ExitInstance.
    virtual BOOL InitInstance();
    // Pumps the thread's messages until WM_QUIT, then returns ExitInstance().
    virtual int Run();
    // Takes and dispatches one message; FALSE on WM_QUIT.
    virtual BOOL PumpMessage();
    virtual int ExitInstance();
    // Deletes the object if m_bAutoDelete is set; called when its thread ends.
    virtual void Delete();

    BOOL m_bAutoDelete;
    HANDLE m_hThread;
    DWORD m_nThreadID;
    CWnd* m_pMainWnd;
    AFX_THREADPROC m_pfnThreadProc;
    LPVOID m_pThreadParams;
};

// Starts pfnThreadProc(pParam) on a new auto-deleting thread; null on failure.
MFCQMUTILS_API CWinThread* AfxBeginThread(AFX_THREADPROC pfnThreadProc, LPVOID pParam,
                                          int nPriority = THREAD_PRIORITY_NORMAL, UINT nStackSize = 0,
                                          DWORD dwCreateFlags = 0, LPSECURITY_ATTRIBUTES lpSecurityAttrs = nullptr);
// The CWinThread running the calling thread; the application object on its main thread;
// null on a thread that the framework did not start.
MFCQMUTILS_API CWinThread* AfxGetThread();

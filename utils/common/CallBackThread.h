// Callback threads: objects that run a body on a worker thread (or synchronously) and whose
// completion comes back on the user-interface thread through a hidden message window. A
// 100 ms timer on that window walks every live object to launch it when due (loop mode),
// time it out and delete it once given up. The objects are owned by the scheduler: create
// them with new, call SetLoop, and either launch them or leave them to the timer.
//
// Threads: everything but the body (Execute), InitInstance, ExitInstance and OnThreadFinish
// runs on the thread that created the first object (it owns the message window and must
// pump messages). Cancel, Abandom and the Is... queries may be called from any thread.
#pragma once

#include <atomic>

#include "utils/common/IntrusiveList.h"
#include "utils/common/date_time.h"
#include "utils/framework/CCriticalSection.h"
#include "utils/framework/CWinThread.h"
#include "utils/framework/CWnd.h"

class CCallBackThread;

// The worker thread of one launch; deletes itself when its thread ends.
class MFCQMUTILS_API CCallBackThread_Support : public CWinThread {
public:
    explicit CCallBackThread_Support(CCallBackThread* pMaster);

    BOOL InitInstance() override;
    int Run() override;
    int ExitInstance() override;

    CCallBackThread* m_pMaster;
};

// The hidden window that receives the timer and the finish message.
class MFCQMUTILS_API CThreadMessageWnd : public CWnd {
public:
    CThreadMessageWnd();
    ~CThreadMessageWnd() override;

    // The window class, registered with default attributes on first use.
    static LPCTSTR ClassName();
    static CString CLASS_NAME;

    // Sets timer id 1 with period ms ("0 == m_nTimerID" is reported if one is set).
    void Start(int ms);
    // Kills the timer if one is set.
    void Stop();

    UINT_PTR m_nTimerID;

protected:
    afx_msg void OnTimer(UINT_PTR nIDEvent);
    afx_msg LRESULT OnThreadFinish(WPARAM wParam, LPARAM lParam);
    DECLARE_MESSAGE_MAP()
};

class MFCQMUTILS_API CCallBackThread {
public:
    CCallBackThread();
    virtual ~CCallBackThread();
    CCallBackThread(const CCallBackThread&) = delete;
    CCallBackThread& operator=(const CCallBackThread&) = delete;

    // Starts the body on a new worker thread; false if OnLaunch refused or no thread.
    virtual bool Launch() const;
    // Launches if the loop interval is not negative, the object is idle and not abandoned,
    // and m_nLoop ms have passed since the last start.
    virtual bool CheckForLaunch() const;
    // The timer's check: nonzero when the object may be reaped (abandoned or timed out).
    virtual int OnTimer() const;
    // Return false to refuse a launch.
    virtual bool OnLaunch() const;
    // The body. Long bodies poll IsCancel().
    virtual void Execute();
    // After the body, on the user-interface thread; nonzero asks for deletion.
    virtual int OnFinish() const;
    // Called once, when the object is first given up.
    virtual void OnAbandom();

    // Runs the body on the calling thread. A refusal or a nonzero OnFinish abandons the
    // object (it is not deleted here; the next timer tick reaps it).
    bool LaunchInMainThread();

    void SetLoop(int ms);
    int GetLoop() const;
    void Cancel();
    void Abandom();
    bool IsCancel() const;
    bool IsAbandom() const;
    bool IsRunning() const;
    bool IsFinished() const;
    // False at once when not running; otherwise waits (1 ms sleeps) for the body to return.
    // Never call it on the object's own worker thread.
    bool WaitForThreadFinish() const;

    // Creates the message window and its timer (once); Destroy removes them. Objects still
    // alive after Destroy are no longer visited.
    static void Init(int ms);
    static void Destroy();
    // The finish message's handling on the user-interface thread.
    static void OnFinish(CCallBackThread* pThread);
    // One timer tick over every live object.
    static void OnTimerForAll();

    // On the worker thread, after the body: marks the launch finished and posts the finish
    // message (nothing is posted for an abandoned object).
    void OnThreadFinish();

    static CThreadMessageWnd* s_pThreadMessageWnd;

protected:
    // Milliseconds since the last start, -1 if never launched.
    int GetUptime() const;
    void ResetLastStart() const;

private:
    friend class CCallBackThread_Support;

    mutable CCallBackThread_Support* m_pWinThread;
    CIntrusiveLink m_allThreadsLink;
    CIntrusiveLink m_secondLink;
    mutable CCriticalSection m_cs;
    // Single-byte atomics: set on one thread, polled on another, without a lock.
    mutable std::atomic<bool> m_bCancel;
    mutable std::atomic<bool> m_bAbandom;
    mutable std::atomic<bool> m_bRunning;
    mutable std::atomic<bool> m_bFinished;
    mutable TimeUTC m_tLastStart;

protected:
    int m_nTimeout;

private:
    std::atomic<int> m_nLoop;
};

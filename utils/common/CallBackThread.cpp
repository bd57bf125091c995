#include "utils/common/CallBackThread.h"

#include <climits>
#include <cstddef>

#include "utils/platform/thread.h"
#include "utils/platform/window.h"

#define QM_SOURCE_MODULE "Common\\CallBackThread"

namespace {

// Every live object, in creation order.
CIntrusiveList<CCallBackThread> g_allThreads;

// Bodies run only while this is 1.
int g_runSwitch = 1;

UINT g_finishMessage = qm::platform::RegisterMessageName("WM_QMW_THREAD_FINISH");

// The message window's handle, read by worker threads when they post the finish message:
// workers never touch the window object, which the user-interface thread may destroy.
std::atomic<HWND> g_messageWindow{nullptr};

}  // namespace

CThreadMessageWnd* CCallBackThread::s_pThreadMessageWnd = nullptr;
CString CThreadMessageWnd::CLASS_NAME;

// ---------------------------------------------------------------------------------------
// CCallBackThread_Support

CCallBackThread_Support::CCallBackThread_Support(CCallBackThread* pMaster) : m_pMaster(pMaster) {
    CVASSERT(m_pMaster);
    m_bAutoDelete = TRUE;
}

BOOL CCallBackThread_Support::InitInstance() {
    if (m_pMaster) CVASSERT(m_pMaster->m_bRunning);
    return TRUE;
}

int CCallBackThread_Support::Run() {
    if (g_runSwitch == 1 && m_pMaster) m_pMaster->Execute();
    ExitInstance();
    return 1;
}

int CCallBackThread_Support::ExitInstance() {
    CWinThread::ExitInstance();
    // The master may be deleted by the user-interface thread as soon as this returns.
    if (m_pMaster) m_pMaster->OnThreadFinish();
    return 1;
}

// ---------------------------------------------------------------------------------------
// CThreadMessageWnd

BEGIN_MESSAGE_MAP(CThreadMessageWnd, CWnd)
ON_WM_TIMER()
ON_REGISTERED_MESSAGE(g_finishMessage, &CThreadMessageWnd::OnThreadFinish)
END_MESSAGE_MAP()

CThreadMessageWnd::CThreadMessageWnd() : m_nTimerID(0) {}
CThreadMessageWnd::~CThreadMessageWnd() = default;

LPCTSTR CThreadMessageWnd::ClassName() {
    if (CLASS_NAME.IsEmpty()) CLASS_NAME = AfxRegisterWndClass(0);
    return CLASS_NAME;
}

void CThreadMessageWnd::Start(int ms) {
    CVASSERT(0 == m_nTimerID);
    m_nTimerID = SetTimer(1, (UINT)ms, nullptr);
}

void CThreadMessageWnd::Stop() {
    if (!m_nTimerID) return;
    KillTimer(m_nTimerID);
    m_nTimerID = 0;
}

void CThreadMessageWnd::OnTimer(UINT_PTR nIDEvent) {
    if (nIDEvent == 1 && m_nTimerID) CCallBackThread::OnTimerForAll();
}

LRESULT CThreadMessageWnd::OnThreadFinish(WPARAM wParam, LPARAM) {
    CCallBackThread::OnFinish(reinterpret_cast<CCallBackThread*>(wParam));
    return 1;
}

// ---------------------------------------------------------------------------------------
// CCallBackThread

CCallBackThread::CCallBackThread()
    : m_pWinThread(nullptr), m_bCancel(false), m_bAbandom(false), m_bRunning(false), m_bFinished(false),
      m_tLastStart(0), m_nTimeout(0), m_nLoop(-1) {
    static_assert(sizeof(m_bCancel) == 1 && std::atomic<bool>::is_always_lock_free, "single-byte flags");
    Init(100);
    if (g_allThreads.GetOffset() == (std::size_t)-1)
        g_allThreads.SetOffset((std::size_t)(reinterpret_cast<char*>(&m_allThreadsLink) - reinterpret_cast<char*>(this)));
    g_allThreads.PushBack(this);
}

CCallBackThread::~CCallBackThread() {
    WaitForThreadFinish();
    g_allThreads.Remove(this);
    m_secondLink.Unlink(0);
}

void CCallBackThread::Init(int ms) {
    if (s_pThreadMessageWnd) return;
    auto* wnd = new CThreadMessageWnd;
    // A window that cannot be made is not kept: the next object tries again, and until then
    // finishing workers report "s_pThreadMessageWnd" and post nothing.
    if (!wnd->CreateEx(0, CThreadMessageWnd::ClassName(), "", WS_POPUP, 0, 0, 0, 0, nullptr, nullptr)) {
        delete wnd;
        return;
    }
    s_pThreadMessageWnd = wnd;
    g_messageWindow = wnd->m_hWnd;
    wnd->Start(ms);
}

void CCallBackThread::Destroy() {
    if (!s_pThreadMessageWnd) return;
    g_messageWindow = nullptr;
    s_pThreadMessageWnd->DestroyWindow();
    s_pThreadMessageWnd->m_nTimerID = 0;
    delete s_pThreadMessageWnd;
    s_pThreadMessageWnd = nullptr;
}

int CCallBackThread::GetUptime() const {
    CSingleLock lock(&m_cs, FALSE);
    if (m_tLastStart == 0) return -1;
    TimeUTC now = GetCurrentTimeUTC();
    if (now < m_tLastStart) {
        // The clock went back: count from now.
        m_tLastStart = now;
        return 0;
    }
    double ms = TimeUTC2Seconds(now - m_tLastStart) * 1000;
    // An uptime beyond the int range (weeks) saturates instead of overflowing.
    return ms >= (double)INT_MAX ? INT_MAX : (int)ms;
}

void CCallBackThread::ResetLastStart() const {
    CSingleLock lock(&m_cs, FALSE);
    m_tLastStart = GetCurrentTimeUTC();
}

bool CCallBackThread::Launch() const {
    CSingleLock lock(&m_cs, FALSE);
    CVASSERT(!m_bRunning);
    m_tLastStart = GetCurrentTimeUTC();
    if (!OnLaunch()) return false;
    m_bRunning = true;
    m_bFinished = false;
    CVASSERT(m_pWinThread == NULL);
    auto* support = new CCallBackThread_Support(const_cast<CCallBackThread*>(this));
    m_pWinThread = support;
    if (support->CreateThread(0, 0, nullptr)) return true;
    // The thread never ran, so nothing else will delete its object; the launch stays marked
    // running.
    m_pWinThread = nullptr;
    delete support;
    return false;
}

bool CCallBackThread::LaunchInMainThread() {
    CSingleLock lock(&m_cs, FALSE);
    CVASSERT(!m_bRunning);
    m_tLastStart = GetCurrentTimeUTC();
    bool launched = OnLaunch();
    if (launched) {
        m_bRunning = true;
        m_bFinished = false;
        Execute();
        m_bFinished = true;
        int r = OnFinish();
        m_bRunning = false;
        if (r == 0) return true;
    }
    if (!m_bAbandom.exchange(true)) OnAbandom();
    return launched;
}

bool CCallBackThread::CheckForLaunch() const {
    CSingleLock lock(&m_cs, FALSE);
    if (m_nLoop < 0) return false;
    if (m_bRunning || m_bAbandom) return false;
    int uptime = GetUptime();
    if (uptime != -1 && uptime < m_nLoop) return false;
    return Launch();
}

int CCallBackThread::OnTimer() const {
    CSingleLock lock(&m_cs, FALSE);
    if (m_bAbandom) return 1;
    if (m_nTimeout > 0 && GetUptime() > m_nTimeout) {
        m_bCancel = true;
        return 1;
    }
    CheckForLaunch();
    return 0;
}

bool CCallBackThread::OnLaunch() const { return true; }

void CCallBackThread::Execute() {}

int CCallBackThread::OnFinish() const {
    CSingleLock lock(&m_cs, FALSE);
    m_pWinThread = nullptr;
    m_bRunning = false;
    return m_bAbandom;
}

void CCallBackThread::OnAbandom() {}

void CCallBackThread::SetLoop(int ms) { m_nLoop = ms; }
int CCallBackThread::GetLoop() const { return m_nLoop; }

void CCallBackThread::Cancel() {
    CSingleLock lock(&m_cs, FALSE);
    m_bCancel = true;
}

void CCallBackThread::Abandom() {
    CSingleLock lock(&m_cs, FALSE);
    // exchange: a second call, from whatever thread, finds the flag set and does nothing.
    if (!m_bAbandom.exchange(true)) OnAbandom();
}

bool CCallBackThread::IsCancel() const {
    CSingleLock lock(&m_cs, FALSE);
    return m_bCancel;
}

bool CCallBackThread::IsAbandom() const {
    CSingleLock lock(&m_cs, FALSE);
    return m_bAbandom;
}

bool CCallBackThread::IsRunning() const {
    CSingleLock lock(&m_cs, FALSE);
    return m_bRunning;
}

bool CCallBackThread::IsFinished() const {
    CSingleLock lock(&m_cs, FALSE);
    return m_bFinished;
}

bool CCallBackThread::WaitForThreadFinish() const {
    CSingleLock lock(&m_cs, FALSE);
    if (!m_bRunning) return false;
    while (!m_bFinished) qm::platform::SleepMilliseconds(1);
    return true;
}

void CCallBackThread::OnThreadFinish() {
    {
        CSingleLock lock(&m_cs, FALSE);
        m_bFinished = true;
        if (!m_bAbandom) {
            HWND wnd = g_messageWindow.load();
            if (!wnd) {
                CVASSERT_TEXT("s_pThreadMessageWnd");
                return;
            }
            qm::platform::PostWindowMessage(wnd, g_finishMessage, (WPARAM)this, 0);
            return;
        }
    }
    // No finish message comes for an abandoned object, so nothing on the user-interface
    // thread would clear its running flag and the timer could never reap it. The worker
    // clears it as its very last touch of the object; from then on the object may be deleted.
    m_bRunning = false;
}

void CCallBackThread::OnFinish(CCallBackThread* pThread) {
    if (!pThread) {
        CVASSERT_TEXT("pThread");
        return;
    }
    int r = pThread->OnFinish();
    bool abandoned = pThread->m_bAbandom;
    if (r == 0 && !abandoned) {
        pThread->CheckForLaunch();
        return;
    }
    if (!pThread->m_bAbandom.exchange(true)) pThread->OnAbandom();
    delete pThread;
}

void CCallBackThread::OnTimerForAll() {
    CCallBackThread* p = g_allThreads.First();
    while (p) {
        int r = p->OnTimer();
        bool abandoned = p->m_bAbandom;
        bool running = p->m_bRunning;
        if ((r || abandoned) && !running) {
            CCallBackThread* next = g_allThreads.Next(p);
            if (!p->m_bAbandom.exchange(true)) p->OnAbandom();
            delete p;
            p = next;
        } else {
            p = g_allThreads.Next(p);
        }
    }
}

#include "utils/framework/CWinThread.h"

#include "utils/framework/CWinApp.h"
#include "utils/platform/thread.h"
#include "utils/platform/window.h"

// ---------------------------------------------------------------------------------------
// CCmdTarget

CCmdTarget::CCmdTarget() = default;
CCmdTarget::~CCmdTarget() = default;

const AFX_MSGMAP* CCmdTarget::GetThisMessageMap() {
    static const AFX_MSGMAP_ENTRY entries[] = {{0, 0, 0, 0, AfxSig_end, (AFX_PMSG)0}};
    static const AFX_MSGMAP map = {nullptr, &entries[0]};
    return &map;
}

const AFX_MSGMAP* CCmdTarget::GetMessageMap() const { return GetThisMessageMap(); }

void CCmdTarget::BeginWaitCursor() {
    if (CWinApp* app = AfxGetApp()) app->DoWaitCursor(1);
}

void CCmdTarget::EndWaitCursor() {
    if (CWinApp* app = AfxGetApp()) app->DoWaitCursor(-1);
}

void CCmdTarget::RestoreWaitCursor() {
    if (CWinApp* app = AfxGetApp()) app->DoWaitCursor(0);
}

// ---------------------------------------------------------------------------------------
// CWinThread

namespace {

thread_local CWinThread* t_currentThread = nullptr;

unsigned ThreadEntry(void* arg) {
    auto* thread = static_cast<CWinThread*>(arg);
    t_currentThread = thread;
    int code;
    if (thread->m_pfnThreadProc)
        code = (int)thread->m_pfnThreadProc(thread->m_pThreadParams);
    else if (!thread->InitInstance())
        code = thread->ExitInstance();
    else
        code = thread->Run();
    t_currentThread = nullptr;
    thread->Delete();
    return (unsigned)code;
}

}  // namespace

CWinThread::CWinThread()
    : m_bAutoDelete(TRUE), m_hThread(nullptr), m_nThreadID(0), m_pMainWnd(nullptr), m_pfnThreadProc(nullptr),
      m_pThreadParams(nullptr) {}

CWinThread::CWinThread(AFX_THREADPROC pfnThreadProc, LPVOID pParam) : CWinThread() {
    m_pfnThreadProc = pfnThreadProc;
    m_pThreadParams = pParam;
}

CWinThread::~CWinThread() {
    if (m_hThread) qm::platform::CloseThread(m_hThread);
}

BOOL CWinThread::CreateThread(DWORD dwCreateFlags, UINT nStackSize, LPSECURITY_ATTRIBUTES) {
    if (m_hThread) return FALSE;
    DWORD id = 0;
    HANDLE h = qm::platform::CreateSuspendedThread(&ThreadEntry, this, nStackSize, &id);
    if (!h) return FALSE;
    m_hThread = h;
    m_nThreadID = id;
    // From here on the thread may run, end and delete this object.
    if (!(dwCreateFlags & CREATE_SUSPENDED)) qm::platform::ResumeNewThread(h);
    return TRUE;
}

DWORD CWinThread::ResumeThread() { return qm::platform::ResumeNewThread(m_hThread) ? 1 : (DWORD)-1; }

BOOL CWinThread::SetThreadPriority(int nPriority) { return qm::platform::SetPriorityOfThread(m_hThread, nPriority); }

BOOL CWinThread::InitInstance() { return FALSE; }

BOOL CWinThread::PumpMessage() {
    MSG msg;
    if (!qm::platform::GetQueueMessage(&msg, nullptr, 0, 0)) return FALSE;
    qm::platform::TranslateQueueMessage(&msg);
    qm::platform::DispatchQueueMessage(&msg);
    return TRUE;
}

int CWinThread::Run() {
    while (PumpMessage()) {
    }
    return ExitInstance();
}

int CWinThread::ExitInstance() { return 0; }

void CWinThread::Delete() {
    if (m_bAutoDelete) delete this;
}

CWinThread* AfxBeginThread(AFX_THREADPROC pfnThreadProc, LPVOID pParam, int nPriority, UINT nStackSize,
                           DWORD dwCreateFlags, LPSECURITY_ATTRIBUTES lpSecurityAttrs) {
    if (!pfnThreadProc) return nullptr;
    auto* thread = new CWinThread(pfnThreadProc, pParam);
    if (!thread->CreateThread(dwCreateFlags | CREATE_SUSPENDED, nStackSize, lpSecurityAttrs)) {
        thread->Delete();
        return nullptr;
    }
    thread->SetThreadPriority(nPriority);
    if (!(dwCreateFlags & CREATE_SUSPENDED)) thread->ResumeThread();
    return thread;
}

CWinThread* AfxGetThread() {
    if (t_currentThread) return t_currentThread;
    CWinApp* app = AfxGetApp();
    if (app && app->m_nThreadID == qm::platform::CurrentThreadId()) return app;
    return nullptr;
}

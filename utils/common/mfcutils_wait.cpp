#include "utils/common/mfcutils_wait.h"

#include <exception>
#include <new>

#include "utils/common/CVLogger.h"
#include "utils/common/QMBase.h"
#include "utils/framework/CWinApp.h"
#include "utils/platform/thread.h"
#include "utils/platform/window.h"

#define QM_SOURCE_MODULE "Common\\mfcutils"

std::stack<CString, std::deque<CString>> CQMWaitCursor::s_messages;

namespace {

void BeginAppWaitCursor() {
    if (CWinApp* app = AfxGetApp()) app->BeginWaitCursor();
}
void EndAppWaitCursor() {
    if (CWinApp* app = AfxGetApp()) app->EndWaitCursor();
}
void RestoreAppWaitCursor() {
    if (CWinApp* app = AfxGetApp()) app->RestoreWaitCursor();
}

}  // namespace

// ---------------------------------------------------------------------------------------
// CQMWaitCursor

CQMWaitCursor::CQMWaitCursor(CQMWFrame* pFrame)
    : m_bActive(0), m_dwStartTick(0), m_dwDelay(0), m_pFrame(pFrame), m_bProgress(0) {}

CQMWaitCursor::CQMWaitCursor(CQMWFrame* pFrame, const char* message, ULONG delay, ULONG progressCount)
    : m_bActive(0), m_dwStartTick(0), m_dwDelay(0), m_pFrame(pFrame), m_bProgress(0) {
    Initialize(message, delay, progressCount);
}

CQMWaitCursor::~CQMWaitCursor() {
    if (m_bProgress && m_pFrame) {
        m_pFrame->EndProgress(0);
        m_bProgress = 0;
    }
    if (m_bActive) End();
}

void CQMWaitCursor::OnCursorChange() {}

void CQMWaitCursor::Initialize(const char* message, DWORD delay, DWORD progressCount) {
    m_strMessage = message ? message : "";
    m_bProgress = 0;
    if (!m_pFrame) {
        m_bActive = 0;
        m_dwDelay = 0;
        return;
    }
    m_dwDelay = delay;
    if (delay) {
        m_dwStartTick = qm::platform::TickCount();
        m_bActive = 0;
    } else {
        m_bActive = 1;
        if (s_messages.empty()) {
            OnCursorChange();
            BeginAppWaitCursor();
        } else {
            RestoreAppWaitCursor();
        }
        m_pFrame->SetStatusText(m_strMessage, 0);
        s_messages.push(m_strMessage);
    }
    if (progressCount) {
        m_bProgress = 1;
        m_pFrame->BeginProgress(progressCount, 0);
    }
}

int CQMWaitCursor::Check() {
    if (m_bActive || m_dwDelay == 0) return 0;
    if ((DWORD)(qm::platform::TickCount() - m_dwStartTick) < m_dwDelay) return 0;
    s_messages.push(m_strMessage);
    m_bActive = 1;
    // The push above comes first, so this never begins the wait cursor: a delayed cursor
    // shows its text only. The order is deliberate and kept.
    if (s_messages.empty()) {
        OnCursorChange();
        BeginAppWaitCursor();
    }
    if (m_pFrame) m_pFrame->SetStatusText(m_strMessage, 0);
    return 1;
}

void CQMWaitCursor::SetMessage(const char* text) {
    if (!m_pFrame) return;
    CString message = text ? text : "";
    m_pFrame->SetStatusText(message, 0);
    m_strMessage = message;
    if (m_bActive) {
        // An empty stack here is a mismatch: it is reported and the text pushed, so that the
        // cursor's End still finds its own message to pop.
        if (CVASSERT(!s_messages.empty())) s_messages.pop();
        s_messages.push(message);
        return;
    }
    if (m_dwDelay == 0) {
        CVASSERT(s_messages.empty());
        s_messages.push(message);
        if (s_messages.size() == 1) {
            m_bActive = 1;
            OnCursorChange();
            BeginAppWaitCursor();
        }
    }
}

void CQMWaitCursor::End() {
    if (!m_bActive) return;
    m_bActive = 0;
    if (!s_messages.empty()) {
        s_messages.pop();
        if (!s_messages.empty()) {
            if (m_pFrame) m_pFrame->SetStatusText(s_messages.top(), 0);
            return;
        }
    }
    OnCursorChange();
    EndAppWaitCursor();
    if (m_pFrame) m_pFrame->SetStatusText("Ready", 0);
}

// ---------------------------------------------------------------------------------------
// CQMWProgressHelper

CQMWProgressHelper::CQMWProgressHelper() : m_pFrame(nullptr), m_nUncaughtAtStart(std::uncaught_exceptions()) {}

CQMWProgressHelper::~CQMWProgressHelper() noexcept(false) {
    if (m_waitCursors.empty()) return;
    CVASSERT_TEXT("_b");
    while (!m_waitCursors.empty()) {
        delete m_waitCursors.top().second;
        m_waitCursors.pop();
    }
    // Compared with the count at construction rather than with 0: a runtime linked into each
    // module may keep counting an exception that another module caught.
    if (std::uncaught_exceptions() <= m_nUncaughtAtStart)
        CQMWException::RaiseError(nullptr, "m_waitCursors.empty()", QM_SOURCE_MODULE, __LINE__);
}

void CQMWProgressHelper::SetQMWFrame(CQMWFrame* pFrame) { m_pFrame = pFrame; }

void CQMWProgressHelper::Start(const char* message, ULONG delay, ULONG progressCount, int number) {
    CQMWaitCursor* pCursor = new (std::nothrow) CQMWaitCursor(m_pFrame, message, delay, progressCount);
    if (!pCursor) {
        CVASSERT_TEXT("_b");
        CQMWException::RaiseError(nullptr, "pCursor != NULL", QM_SOURCE_MODULE, __LINE__);
    }
    m_waitCursors.push(std::make_pair(number, pCursor));
}

void CQMWProgressHelper::SetID(int number) {
    if (m_waitCursors.empty()) {
        CVASSERT_TEXT("_b");
        CQMWException::RaiseError(nullptr, "!m_waitCursors.empty()", QM_SOURCE_MODULE, __LINE__);
    }
    m_waitCursors.top().first = number;
}

void CQMWProgressHelper::Update(int number) {
    if (!m_pFrame || m_waitCursors.empty() || m_waitCursors.top().first != number) return;
    CWinApp* app = AfxGetApp();
    if (!app || app->m_nThreadID != qm::platform::CurrentThreadId()) return;
    m_pFrame->StepProgress(0);
}

void CQMWProgressHelper::End() {
    if (m_waitCursors.empty()) {
        CVASSERT_TEXT("_b");
        CQMWException::RaiseError(nullptr, "!m_waitCursors.empty()", QM_SOURCE_MODULE, __LINE__);
    }
    CQMWaitCursor* cursor = m_waitCursors.top().second;
    m_waitCursors.pop();
    delete cursor;
}

// ---------------------------------------------------------------------------------------
// CCounter and the Escape key

CCounter::CCounter(volatile LONG& counter) : m_pCounter(&counter) { qm::platform::AtomicIncrement(m_pCounter); }

CCounter::CCounter(const CCounter& other) : m_pCounter(other.m_pCounter) {}

CCounter::~CCounter() { qm::platform::AtomicDecrement(m_pCounter); }

bool EscapeKeyWasPressed() {
    MSG msg;
    if (!qm::platform::PeekQueueMessage(&msg, nullptr, WM_KEYFIRST, WM_KEYLAST, PM_REMOVE | PM_NOYIELD)) return false;
    return msg.wParam == VK_ESCAPE;
}

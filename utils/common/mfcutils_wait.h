// Wait cursor and progress (mfcutils module): while the host does long work on its
// user-interface thread it shows the wait cursor, a status-bar message and optionally a
// progress indicator on its main frame. Cursors nest: their messages share one stack, the
// outer message comes back when an inner piece ends, and "Ready" when the last one ends.
#pragma once

#include <deque>
#include <stack>
#include <utility>

#include "utils/framework/CString.h"
#include "utils/framework/wintypes.h"
#include "utils/framework/export.h"

struct CRuntimeClass;

// The host's main frame, as this library uses it: four operations, in this order.
class MFCQMUTILS_API CQMWFrame {
public:
    virtual void SetStatusText(const char* text, int reserved) = 0;
    virtual void BeginProgress(ULONG count, int reserved) = 0;
    virtual void EndProgress(int reserved) = 0;
    virtual void StepProgress(int reserved) = 0;

protected:
    virtual ~CQMWFrame() = default;
};

// One piece of work. Without a frame it does nothing at all. With a delay it shows nothing
// until Check finds that much time passed; it then shows its text (but, as it always has,
// does not begin the wait cursor).
class MFCQMUTILS_API CQMWaitCursor {
public:
    // Shows nothing yet; SetMessage starts it.
    explicit CQMWaitCursor(CQMWFrame* pFrame);
    CQMWaitCursor(CQMWFrame* pFrame, const char* message, ULONG delay = 0, ULONG progressCount = 0);
    CQMWaitCursor(const CQMWaitCursor&) = default;
    CQMWaitCursor& operator=(const CQMWaitCursor&) = default;
    // Ends the progress indicator it started, then ends the cursor if active.
    virtual ~CQMWaitCursor();
    // Called right before the wait cursor is begun and right before it is ended.
    virtual void OnCursorChange();

    // For delayed cursors: 1 the one time the delay is found to have passed (the text is
    // shown then), else 0.
    int Check();
    void SetMessage(const char* text);
    // Ends the piece of work; a second call does nothing.
    void End();

protected:
    // The messages of all active cursors, innermost on top (user-interface thread only).
    static std::stack<CString, std::deque<CString>> s_messages;

    int m_bActive;
    DWORD m_dwStartTick;
    DWORD m_dwDelay;
    CString m_strMessage;
    CQMWFrame* m_pFrame;
    int m_bProgress;

private:
    void Initialize(const char* message, DWORD delay, DWORD progressCount);
};

// A stack of numbered cursors, so that code far from the start of a piece of work can step
// or end it. Misuse (ending or renumbering with nothing started, destruction with work still
// open) is reported as "_b" and raised as CQMWException.
class MFCQMUTILS_API CQMWProgressHelper {
public:
    CQMWProgressHelper();
    // Raises if cursors are still open (after ending them, so that the message stack and the
    // wait cursor stay balanced); while an exception is already unwinding it only reports.
    virtual ~CQMWProgressHelper() noexcept(false);
    CQMWProgressHelper(const CQMWProgressHelper&) = delete;
    CQMWProgressHelper& operator=(const CQMWProgressHelper&) = delete;

    void SetQMWFrame(CQMWFrame* pFrame);
    void Start(const char* message, ULONG delay, ULONG progressCount, int number);
    void SetID(int number);
    // Steps the progress if the innermost cursor carries this number and the caller is the
    // application's main thread; anything else is dropped.
    void Update(int number);
    void End();

protected:
    std::stack<std::pair<int, CQMWaitCursor*>, std::deque<std::pair<int, CQMWaitCursor*>>> m_waitCursors;
    CQMWFrame* m_pFrame;

private:
    // Exceptions in flight when the helper was made: more at destruction means unwinding.
    int m_nUncaughtAtStart;
};

// Counts live objects in a shared variable with interlocked increments; safe on any thread.
class MFCQMUTILS_API CCounter {
public:
    explicit CCounter(volatile LONG& counter);
    // Copies the address without incrementing: a copy's destruction leaves the count one
    // lower (kept as it has always been).
    CCounter(const CCounter& other);
    CCounter& operator=(const CCounter&) = default;
    virtual ~CCounter();

protected:
    volatile LONG* m_pCounter;
};

// A plain record for the host's locking bookkeeping.
class MFCQMUTILS_API CLockInfo {
public:
    CLockInfo(ULONG nLock = 0, CRuntimeClass* pClass = nullptr, void* pData = nullptr)
        : m_nLock(nLock), m_pClass(pClass), m_pData(pData) {}

    ULONG m_nLock;
    CRuntimeClass* m_pClass;
    void* m_pData;
};

// Takes the next keyboard message (WM_KEYFIRST..WM_KEYLAST) off the calling thread's queue
// without yielding: true when its key code is Escape. Any other key is consumed and lost.
MFCQMUTILS_API bool EscapeKeyWasPressed();

// The framework's window: a CWnd owns one window of a registered class and routes its
// messages through the class's message map (ON_WM_TIMER, ON_REGISTERED_MESSAGE, ON_MESSAGE)
// to member functions, falling back to the default window procedure.
#pragma once

#include "utils/framework/CCmdTarget.h"
#include "utils/framework/CString.h"

#include <cstring>

// void OnTimer(UINT_PTR nIDEvent)
#define ON_WM_TIMER()                                                                            \
    {WM_TIMER, 0, 0, 0, AfxSig_vw,                                                               \
     AfxWndMsgFunc(static_cast<void (CWnd::*)(UINT_PTR)>(&ThisClass::OnTimer))},

// LRESULT memberFxn(WPARAM, LPARAM) for the message number held in a UINT variable.
#define ON_REGISTERED_MESSAGE(nMessageVariable, memberFxn)                                       \
    {0xC000, 0, 0, 0, (UINT_PTR)(UINT*)(&nMessageVariable),                                      \
     AfxWndMsgFunc(static_cast<LRESULT (CWnd::*)(WPARAM, LPARAM)>(memberFxn))},

// LRESULT memberFxn(WPARAM, LPARAM) for a fixed message number.
#define ON_MESSAGE(message, memberFxn)                                                            \
    {message, 0, 0, 0, AfxSig_lwl,                                                               \
     AfxWndMsgFunc(static_cast<LRESULT (CWnd::*)(WPARAM, LPARAM)>(memberFxn))},

class CWnd;
typedef void (CWnd::*AFX_PMSGW)(void);

class MFCQMUTILS_API CWnd : public CCmdTarget {
public:
    CWnd();
    // Destroys the window if it still exists.
    ~CWnd() override;

    HWND m_hWnd;
    HWND GetSafeHwnd() const { return m_hWnd; }
    operator HWND() const { return m_hWnd; }
    // The CWnd that owns the window, or null for a window not made by a CWnd.
    static CWnd* FromHandlePermanent(HWND hWnd);

    // Creates the window on the calling thread, which then owns it (its messages are
    // dispatched by that thread's pump). FALSE when the class is unknown or creation refused.
    virtual BOOL CreateEx(DWORD dwExStyle, LPCTSTR lpszClassName, LPCTSTR lpszWindowName, DWORD dwStyle, int x, int y,
                          int nWidth, int nHeight, HWND hWndParent, HMENU nIDorHMenu, LPVOID lpParam = nullptr);
    // Sends WM_DESTROY and WM_NCDESTROY; afterwards m_hWnd is null and PostNcDestroy has run.
    virtual BOOL DestroyWindow();

    // Timer nIDEvent with period nElapse ms: WM_TIMER through the owner's pump, or a call of
    // lpfnTimer when given. Returns the id, 0 on failure.
    UINT_PTR SetTimer(UINT_PTR nIDEvent, UINT nElapse, void (CALLBACK* lpfnTimer)(HWND, UINT, UINT_PTR, DWORD));
    BOOL KillTimer(UINT_PTR nIDEvent);
    // Puts a message on the owner thread's queue; from any thread.
    BOOL PostMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
    // Handles a message at once (only on the owning thread on POSIX).
    LRESULT SendMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0);

protected:
    virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    // Looks the message up in the message maps; TRUE when a handler took it.
    virtual BOOL OnWndMsg(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* pResult);
    virtual LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    // Called after the window's last message; a class that owns itself deletes itself here.
    virtual void PostNcDestroy();
    // The default handling of the message being handled.
    LRESULT Default();

    afx_msg void OnTimer(UINT_PTR nIDEvent);

    DECLARE_MESSAGE_MAP()

private:
    static LRESULT Route(void* owner, HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam);
    UINT m_nLastMessage = 0;
    WPARAM m_lastWParam = 0;
    LPARAM m_lastLParam = 0;
};

// Stores a CWnd handler in a message-map row; OnWndMsg copies it back to the same type before
// the call. The bits are copied rather than cast so that no handler type is reinterpreted.
template <class F>
inline AFX_PMSG AfxWndMsgFunc(F f) {
    static_assert(sizeof(F) == sizeof(AFX_PMSGW), "member function pointers of one size");
    AFX_PMSGW w;
    std::memcpy(&w, &f, sizeof w);
    return static_cast<AFX_PMSG>(w);
}

template <class F>
inline F AfxWndMsgCall(AFX_PMSG pfn) {
    AFX_PMSGW w = static_cast<AFX_PMSGW>(pfn);
    F f;
    std::memcpy(&f, &w, sizeof f);
    return f;
}

// Registers (once) a window class with these attributes and returns its generated name.
// Throws CResourceException if the class cannot be registered.
MFCQMUTILS_API LPCTSTR AfxRegisterWndClass(UINT nClassStyle, HCURSOR hCursor = 0, HBRUSH hbrBackground = 0,
                                           HICON hIcon = 0);

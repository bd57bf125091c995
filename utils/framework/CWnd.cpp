#include "utils/framework/CWnd.h"

#include <cstdio>
#include <mutex>
#include <set>
#include <string>
#include <unordered_map>

#include "utils/framework/exceptions.h"
#include "utils/platform/window.h"

namespace {

struct HandleMap {
    std::mutex m;
    std::unordered_map<HWND, CWnd*> windows;
    std::set<std::string> classNames;
};

HandleMap& Handles() {
    static HandleMap* map = new HandleMap;
    return *map;
}

}  // namespace

CWnd::CWnd() : m_hWnd(nullptr) {}

CWnd::~CWnd() {
    if (m_hWnd) DestroyWindow();
}

BEGIN_MESSAGE_MAP(CWnd, CCmdTarget)
END_MESSAGE_MAP()

CWnd* CWnd::FromHandlePermanent(HWND hWnd) {
    HandleMap& h = Handles();
    std::lock_guard<std::mutex> lock(h.m);
    auto it = h.windows.find(hWnd);
    return it == h.windows.end() ? nullptr : it->second;
}

LRESULT CWnd::Route(void* owner, HWND hwnd, UINT message, WPARAM wParam, LPARAM lParam) {
    auto* wnd = static_cast<CWnd*>(owner);
    if (!wnd->m_hWnd) {
        wnd->m_hWnd = hwnd;
        HandleMap& h = Handles();
        std::lock_guard<std::mutex> lock(h.m);
        h.windows[hwnd] = wnd;
    }
    UINT savedMessage = wnd->m_nLastMessage;
    WPARAM savedW = wnd->m_lastWParam;
    LPARAM savedL = wnd->m_lastLParam;
    wnd->m_nLastMessage = message;
    wnd->m_lastWParam = wParam;
    wnd->m_lastLParam = lParam;
    LRESULT result = wnd->WindowProc(message, wParam, lParam);
    wnd->m_nLastMessage = savedMessage;
    wnd->m_lastWParam = savedW;
    wnd->m_lastLParam = savedL;
    if (message == WM_NCDESTROY) {
        {
            HandleMap& h = Handles();
            std::lock_guard<std::mutex> lock(h.m);
            h.windows.erase(hwnd);
        }
        wnd->m_hWnd = nullptr;
        wnd->PostNcDestroy();  // may delete wnd
    }
    return result;
}

BOOL CWnd::CreateEx(DWORD dwExStyle, LPCTSTR lpszClassName, LPCTSTR lpszWindowName, DWORD dwStyle, int x, int y,
                    int nWidth, int nHeight, HWND hWndParent, HMENU nIDorHMenu, LPVOID lpParam) {
    if (m_hWnd) return FALSE;
    HWND hwnd = qm::platform::CreateWindowObject(dwExStyle, lpszClassName, lpszWindowName, dwStyle, x, y, nWidth,
                                                 nHeight, hWndParent, nIDorHMenu, lpParam, &CWnd::Route, this);
    return hwnd != nullptr && m_hWnd == hwnd;
}

BOOL CWnd::DestroyWindow() {
    if (!m_hWnd) return FALSE;
    return qm::platform::DestroyWindowObject(m_hWnd);
}

UINT_PTR CWnd::SetTimer(UINT_PTR nIDEvent, UINT nElapse, void (CALLBACK* lpfnTimer)(HWND, UINT, UINT_PTR, DWORD)) {
    if (!m_hWnd) return 0;
    return qm::platform::SetWindowTimer(m_hWnd, nIDEvent, nElapse, lpfnTimer);
}

BOOL CWnd::KillTimer(UINT_PTR nIDEvent) { return m_hWnd && qm::platform::KillWindowTimer(m_hWnd, nIDEvent); }

BOOL CWnd::PostMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    return m_hWnd && qm::platform::PostWindowMessage(m_hWnd, message, wParam, lParam);
}

LRESULT CWnd::SendMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    return m_hWnd ? qm::platform::SendWindowMessage(m_hWnd, message, wParam, lParam) : 0;
}

LRESULT CWnd::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    LRESULT result = 0;
    if (!OnWndMsg(message, wParam, lParam, &result)) result = DefWindowProc(message, wParam, lParam);
    return result;
}

BOOL CWnd::OnWndMsg(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* pResult) {
    for (const AFX_MSGMAP* map = GetMessageMap(); map; map = map->pfnGetBaseMap ? map->pfnGetBaseMap() : nullptr) {
        for (const AFX_MSGMAP_ENTRY* e = map->lpEntries; e->nSig != AfxSig_end; ++e) {
            if (e->nMessage == 0xC000) {
                if (message < 0xC000 || *reinterpret_cast<const UINT*>(e->nSig) != message) continue;
                *pResult = (this->*AfxWndMsgCall<LRESULT (CWnd::*)(WPARAM, LPARAM)>(e->pfn))(wParam, lParam);
                return TRUE;
            }
            if (e->nMessage != message || e->nCode != 0 || e->nID != 0) continue;
            switch (e->nSig) {
                case AfxSig_lwl:
                    *pResult = (this->*AfxWndMsgCall<LRESULT (CWnd::*)(WPARAM, LPARAM)>(e->pfn))(wParam, lParam);
                    return TRUE;
                case AfxSig_vw:
                    (this->*AfxWndMsgCall<void (CWnd::*)(UINT_PTR)>(e->pfn))((UINT_PTR)wParam);
                    *pResult = 0;
                    return TRUE;
                case AfxSig_vv:
                    (this->*static_cast<AFX_PMSGW>(e->pfn))();
                    *pResult = 0;
                    return TRUE;
                default:
                    break;
            }
        }
    }
    return FALSE;
}

LRESULT CWnd::DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    return m_hWnd ? qm::platform::DefaultWindowProc(m_hWnd, message, wParam, lParam) : 0;
}

void CWnd::PostNcDestroy() {}

LRESULT CWnd::Default() { return DefWindowProc(m_nLastMessage, m_lastWParam, m_lastLParam); }

void CWnd::OnTimer(UINT_PTR) { Default(); }

LPCTSTR AfxRegisterWndClass(UINT nClassStyle, HCURSOR hCursor, HBRUSH hbrBackground, HICON hIcon) {
    static int moduleMark;
    char name[128];
    if (!hCursor && !hbrBackground && !hIcon)
        std::snprintf(name, sizeof name, "Afx:%p:%x", (void*)&moduleMark, nClassStyle);
    else
        std::snprintf(name, sizeof name, "Afx:%p:%x:%p:%p:%p", (void*)&moduleMark, nClassStyle, (void*)hCursor,
                      (void*)hbrBackground, (void*)hIcon);
    HandleMap& h = Handles();
    std::lock_guard<std::mutex> lock(h.m);
    auto it = h.classNames.find(name);
    if (it != h.classNames.end()) return it->c_str();
    if (!qm::platform::RegisterWindowClass(name, nClassStyle, hCursor, hbrBackground, hIcon))
        throw new CResourceException;
    return h.classNames.insert(name).first->c_str();
}

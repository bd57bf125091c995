#include "utils/framework/CMenu.h"

#include <map>
#include <memory>

#include "utils/platform/menu.h"

namespace plat = qm::platform;

CMenu::~CMenu() { DestroyMenu(); }

BOOL CMenu::CreateMenu() { return Attach(plat::MenuCreate(false)); }
BOOL CMenu::CreatePopupMenu() { return Attach(plat::MenuCreate(true)); }

BOOL CMenu::DestroyMenu() {
    if (!m_hMenu) return FALSE;
    return plat::MenuDestroy(Detach()) ? TRUE : FALSE;
}

BOOL CMenu::Attach(HMENU hMenu) {
    // A CMenu holds one menu; attaching over another is a caller error, refused rather than
    // leaking or destroying the first.
    if (m_hMenu || !hMenu) return FALSE;
    m_hMenu = hMenu;
    return TRUE;
}

HMENU CMenu::Detach() {
    HMENU h = m_hMenu;
    m_hMenu = nullptr;
    return h;
}

BOOL CMenu::InsertMenu(UINT nPosition, UINT nFlags, UINT_PTR nIDNewItem, LPCTSTR lpszNewItem) {
    return plat::MenuInsert(m_hMenu, nPosition, nFlags, nIDNewItem, lpszNewItem) ? TRUE : FALSE;
}

BOOL CMenu::AppendMenu(UINT nFlags, UINT_PTR nIDNewItem, LPCTSTR lpszNewItem) {
    return InsertMenu((UINT)-1, (nFlags & ~(UINT)MF_BYCOMMAND) | MF_BYPOSITION, nIDNewItem, lpszNewItem);
}

BOOL CMenu::DeleteMenu(UINT nPosition, UINT nFlags) {
    return plat::MenuDelete(m_hMenu, nPosition, nFlags) ? TRUE : FALSE;
}

BOOL CMenu::RemoveMenu(UINT nPosition, UINT nFlags) {
    return plat::MenuRemove(m_hMenu, nPosition, nFlags) ? TRUE : FALSE;
}

UINT CMenu::GetMenuItemCount() const { return (UINT)plat::MenuItemCount(m_hMenu); }
UINT CMenu::GetMenuItemID(int nPos) const { return plat::MenuItemID(m_hMenu, nPos); }
UINT CMenu::GetMenuState(UINT nID, UINT nFlags) const { return plat::MenuState(m_hMenu, nID, nFlags); }

int CMenu::GetMenuString(UINT nIDItem, LPTSTR lpString, int nMaxCount, UINT nFlags) const {
    return plat::MenuString(m_hMenu, nIDItem, lpString, nMaxCount, nFlags);
}

int CMenu::GetMenuString(UINT nIDItem, CString& rString, UINT nFlags) const {
    rString.Empty();
    int n = plat::MenuString(m_hMenu, nIDItem, nullptr, 0, nFlags);
    if (n <= 0) return 0;
    char* buf = rString.GetBuffer(n);
    n = plat::MenuString(m_hMenu, nIDItem, buf, n + 1, nFlags);
    rString.ReleaseBuffer(n > 0 ? n : 0);
    return rString.GetLength();
}

CMenu* CMenu::GetSubMenu(int nPos) const { return FromHandle(plat::MenuSubMenu(m_hMenu, nPos)); }

namespace {

// The per-thread temporary wrappers handed out by FromHandle; they are detached before they
// are freed so the menus outlive them.
struct TempMenuMap {
    std::map<HMENU, std::unique_ptr<CMenu>> menus;
    void Clear() {
        for (auto& entry : menus) entry.second->Detach();
        menus.clear();
    }
    ~TempMenuMap() { Clear(); }
};

TempMenuMap& TempMenus() {
    thread_local TempMenuMap map;
    return map;
}

}  // namespace

CMenu* CMenu::FromHandle(HMENU hMenu) {
    if (!hMenu) return nullptr;
    std::unique_ptr<CMenu>& slot = TempMenus().menus[hMenu];
    if (!slot) {
        slot = std::make_unique<CMenu>();
        slot->m_hMenu = hMenu;
    }
    return slot.get();
}

void CMenu::DeleteTempMap() { TempMenus().Clear(); }

// The framework's menu: a CMenu owns the menu behind m_hMenu (CreateMenu/CreatePopupMenu,
// Attach) and destroys it with itself unless it was detached. Items are addressed by command
// (MF_BYCOMMAND, the default, searched through the popups too) or by position
// (MF_BYPOSITION).
#pragma once

#include "utils/framework/CObject.h"
#include "utils/framework/CString.h"
#include "utils/framework/wintypes.h"

class MFCQMUTILS_API CMenu : public CObject {
public:
    CMenu() = default;
    ~CMenu() override;
    CMenu(const CMenu&) = delete;
    CMenu& operator=(const CMenu&) = delete;

    BOOL CreateMenu();
    BOOL CreatePopupMenu();
    BOOL DestroyMenu();
    BOOL Attach(HMENU hMenu);
    HMENU Detach();
    HMENU GetSafeHmenu() const { return m_hMenu; }
    // A CMenu for a menu handle, kept by the calling thread until DeleteTempMap: it does not
    // own the menu and never destroys it.
    static CMenu* FromHandle(HMENU hMenu);
    static void DeleteTempMap();
    operator HMENU() const { return GetSafeHmenu(); }

    // Inserts before the item named by nPosition; a position past the end (or -1) and an
    // unknown command append. With MF_POPUP, nIDNewItem is the popup's HMENU, which the menu
    // then owns.
    BOOL InsertMenu(UINT nPosition, UINT nFlags, UINT_PTR nIDNewItem = 0, LPCTSTR lpszNewItem = nullptr);
    BOOL AppendMenu(UINT nFlags, UINT_PTR nIDNewItem = 0, LPCTSTR lpszNewItem = nullptr);
    // Deletes the item (destroying a popup's menu); RemoveMenu keeps the popup's menu alive.
    BOOL DeleteMenu(UINT nPosition, UINT nFlags);
    BOOL RemoveMenu(UINT nPosition, UINT nFlags);

    // -1 (as UINT) for a menu that does not exist.
    UINT GetMenuItemCount() const;
    // The command id at a position; 0 for a separator, -1 for a popup or no such item.
    UINT GetMenuItemID(int nPos) const;
    // 0xFFFFFFFF for no such item; a popup gives its item count in the high byte.
    UINT GetMenuState(UINT nID, UINT nFlags) const;
    int GetMenuString(UINT nIDItem, LPTSTR lpString, int nMaxCount, UINT nFlags) const;
    int GetMenuString(UINT nIDItem, CString& rString, UINT nFlags) const;
    // The popup at a position (a temporary CMenu from FromHandle), or null.
    CMenu* GetSubMenu(int nPos) const;

    HMENU m_hMenu = nullptr;
};

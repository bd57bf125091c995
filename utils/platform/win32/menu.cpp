#include "utils/platform/menu.h"

namespace qm::platform {

HMENU MenuCreate(bool popup) { return popup ? CreatePopupMenu() : CreateMenu(); }
bool MenuDestroy(HMENU menu) { return DestroyMenu(menu) != FALSE; }
bool MenuIsMenu(HMENU menu) { return IsMenu(menu) != FALSE; }

bool MenuInsert(HMENU menu, UINT position, UINT flags, UINT_PTR idNewItem, const char* text) {
    return InsertMenuA(menu, position, flags, idNewItem, text) != FALSE;
}

bool MenuDelete(HMENU menu, UINT position, UINT flags) { return DeleteMenu(menu, position, flags) != FALSE; }
bool MenuRemove(HMENU menu, UINT position, UINT flags) { return RemoveMenu(menu, position, flags) != FALSE; }
int MenuItemCount(HMENU menu) { return GetMenuItemCount(menu); }
UINT MenuItemID(HMENU menu, int pos) { return GetMenuItemID(menu, pos); }

int MenuString(HMENU menu, UINT item, char* buf, int maxCount, UINT flags) {
    return GetMenuStringA(menu, item, buf, maxCount, flags);
}

UINT MenuState(HMENU menu, UINT item, UINT flags) { return GetMenuState(menu, item, flags); }
HMENU MenuSubMenu(HMENU menu, int pos) { return GetSubMenu(menu, pos); }

}  // namespace qm::platform

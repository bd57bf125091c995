// Menus: the operating system's menu objects behind the framework's CMenu. The calls and
// results are user32's (InsertMenuA, DeleteMenu, RemoveMenu, GetMenuItemCount,
// GetMenuItemID, GetMenuStringA, GetMenuState, GetSubMenu, IsMenu, DestroyMenu); where the
// system has no menus the backend keeps them in memory with the same results.
#pragma once

#include "utils/framework/wintypes.h"

namespace qm::platform {

HMENU MenuCreate(bool popup);
bool MenuDestroy(HMENU menu);
bool MenuIsMenu(HMENU menu);
bool MenuInsert(HMENU menu, UINT position, UINT flags, UINT_PTR idNewItem, const char* text);
bool MenuDelete(HMENU menu, UINT position, UINT flags);
bool MenuRemove(HMENU menu, UINT position, UINT flags);
int MenuItemCount(HMENU menu);
UINT MenuItemID(HMENU menu, int pos);
int MenuString(HMENU menu, UINT item, char* buf, int maxCount, UINT flags);
UINT MenuState(HMENU menu, UINT item, UINT flags);
HMENU MenuSubMenu(HMENU menu, int pos);

}  // namespace qm::platform

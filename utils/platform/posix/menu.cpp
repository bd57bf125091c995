// Menus kept in memory, with user32's results: handles are opaque numbers looked up in a
// process-wide table, so a stale or made-up handle is refused instead of dereferenced.
#include "utils/platform/menu.h"

#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace qm::platform {

namespace {

struct Item {
    UINT flags = 0;  // MF_SEPARATOR, MF_POPUP and the state bits
    UINT id = 0;
    HMENU popup = nullptr;
    std::string text;
};

struct Menu {
    std::vector<Item> items;
};

const UINT kStateBits = MF_GRAYED | MF_DISABLED | MF_CHECKED | MF_HILITE | MF_DEFAULT | MF_MENUBARBREAK | MF_MENUBREAK;

std::mutex g_lock;
std::map<UINT_PTR, std::unique_ptr<Menu>> g_menus;
UINT_PTR g_nextHandle = 0x10000;

Menu* Lookup(HMENU h) {
    auto it = g_menus.find((UINT_PTR)h);
    return it == g_menus.end() ? nullptr : it->second.get();
}

// Does `inner` lie in the tree below `outer` (or is it `outer`)? Used to refuse a popup that
// would make a menu its own descendant, which would make every search by command endless.
bool Contains(HMENU outer, HMENU inner) {
    if (outer == inner) return true;
    Menu* m = Lookup(outer);
    if (!m) return false;
    for (const Item& item : m->items)
        if ((item.flags & MF_POPUP) && Contains(item.popup, inner)) return true;
    return false;
}

struct Found {
    HMENU handle = nullptr;
    Menu* menu = nullptr;
    size_t index = 0;
};

// An item by command searches the whole tree depth first, the popups' own items before the
// popup itself; by position it looks only at the menu's own items.
Found FindByCommand(HMENU h, Menu* m, UINT id) {
    Found fallback;
    for (size_t i = 0; i < m->items.size(); ++i) {
        Item& item = m->items[i];
        if (item.flags & MF_POPUP) {
            if (Menu* sub = Lookup(item.popup)) {
                Found f = FindByCommand(item.popup, sub, id);
                if (f.menu) return f;
            }
            if (item.id == id && !fallback.menu) fallback = {h, m, i};
        } else if (item.id == id) {
            return {h, m, i};
        }
    }
    return fallback;
}

Found Find(HMENU h, UINT position, UINT flags) {
    Menu* m = Lookup(h);
    if (!m) return {};
    if (flags & MF_BYPOSITION) {
        if (position >= m->items.size()) return {};
        return {h, m, position};
    }
    return FindByCommand(h, m, position);
}

void DestroyTree(HMENU h) {
    auto it = g_menus.find((UINT_PTR)h);
    if (it == g_menus.end()) return;
    std::unique_ptr<Menu> menu = std::move(it->second);
    g_menus.erase(it);
    for (const Item& item : menu->items)
        if (item.flags & MF_POPUP) DestroyTree(item.popup);
}

}  // namespace

HMENU MenuCreate(bool) {
    std::lock_guard<std::mutex> lock(g_lock);
    HMENU h = (HMENU)g_nextHandle;
    g_nextHandle += 4;
    g_menus[(UINT_PTR)h] = std::make_unique<Menu>();
    return h;
}

bool MenuDestroy(HMENU menu) {
    std::lock_guard<std::mutex> lock(g_lock);
    if (!Lookup(menu)) return false;
    DestroyTree(menu);
    return true;
}

bool MenuIsMenu(HMENU menu) {
    std::lock_guard<std::mutex> lock(g_lock);
    return Lookup(menu) != nullptr;
}

bool MenuInsert(HMENU menu, UINT position, UINT flags, UINT_PTR idNewItem, const char* text) {
    std::lock_guard<std::mutex> lock(g_lock);
    Menu* top = Lookup(menu);
    if (!top) return false;
    // Before the item named; an unknown command or a position past the end appends.
    Found at = Find(menu, position, flags);
    if (!at.menu) at = {menu, top, top->items.size()};
    Item item;
    item.flags = flags & kStateBits;
    item.id = (UINT)idNewItem;
    if (flags & MF_POPUP) {
        HMENU sub = (HMENU)idNewItem;
        if (!Lookup(sub) || Contains(sub, at.handle)) return false;
        item.flags |= MF_POPUP;
        item.popup = sub;
    }
    // A string item without text is a separator, as user32 makes it.
    if ((flags & MF_SEPARATOR) || (!(flags & MF_POPUP) && !text)) {
        item.flags |= MF_SEPARATOR | MF_GRAYED | MF_DISABLED;
    } else if (text) {
        item.text = text;
    }
    at.menu->items.insert(at.menu->items.begin() + (std::ptrdiff_t)at.index, std::move(item));
    return true;
}

bool MenuDelete(HMENU menu, UINT position, UINT flags) {
    std::lock_guard<std::mutex> lock(g_lock);
    Found at = Find(menu, position, flags);
    if (!at.menu) return false;
    Item item = at.menu->items[at.index];
    at.menu->items.erase(at.menu->items.begin() + (std::ptrdiff_t)at.index);
    if (item.flags & MF_POPUP) DestroyTree(item.popup);
    return true;
}

bool MenuRemove(HMENU menu, UINT position, UINT flags) {
    std::lock_guard<std::mutex> lock(g_lock);
    Found at = Find(menu, position, flags);
    if (!at.menu) return false;
    at.menu->items.erase(at.menu->items.begin() + (std::ptrdiff_t)at.index);
    return true;
}

int MenuItemCount(HMENU menu) {
    std::lock_guard<std::mutex> lock(g_lock);
    Menu* m = Lookup(menu);
    return m ? (int)m->items.size() : -1;
}

UINT MenuItemID(HMENU menu, int pos) {
    std::lock_guard<std::mutex> lock(g_lock);
    Menu* m = Lookup(menu);
    if (!m || pos < 0 || (size_t)pos >= m->items.size()) return (UINT)-1;
    const Item& item = m->items[(size_t)pos];
    return (item.flags & MF_POPUP) ? (UINT)-1 : item.id;
}

int MenuString(HMENU menu, UINT itemRef, char* buf, int maxCount, UINT flags) {
    std::lock_guard<std::mutex> lock(g_lock);
    Found at = Find(menu, itemRef, flags);
    if (!at.menu) return 0;
    const std::string& text = at.menu->items[at.index].text;
    if (!buf || maxCount <= 0) return (int)text.size();
    size_t n = text.size() < (size_t)maxCount - 1 ? text.size() : (size_t)maxCount - 1;
    std::memcpy(buf, text.data(), n);
    buf[n] = 0;
    return (int)n;
}

UINT MenuState(HMENU menu, UINT itemRef, UINT flags) {
    std::lock_guard<std::mutex> lock(g_lock);
    Found at = Find(menu, itemRef, flags);
    if (!at.menu) return (UINT)-1;
    const Item& item = at.menu->items[at.index];
    if (item.flags & MF_POPUP) {
        // A popup reports its item count in the high byte and its flags in the low byte.
        Menu* sub = Lookup(item.popup);
        UINT count = sub ? (UINT)sub->items.size() : 0;
        return (count << 8) | (item.flags & 0xFF);
    }
    return item.flags;
}

HMENU MenuSubMenu(HMENU menu, int pos) {
    std::lock_guard<std::mutex> lock(g_lock);
    Menu* m = Lookup(menu);
    if (!m || pos < 0 || (size_t)pos >= m->items.size()) return nullptr;
    const Item& item = m->items[(size_t)pos];
    return (item.flags & MF_POPUP) ? item.popup : nullptr;
}

}  // namespace qm::platform

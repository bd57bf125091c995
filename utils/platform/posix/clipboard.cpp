#include "utils/platform/clipboard.h"

#include <map>
#include <mutex>
#include <thread>

#include "utils/platform/globalmem.h"
#include "utils/platform/window.h"

namespace qm::platform {

namespace {

struct Clipboard {
    std::mutex lock;
    bool open = false;
    std::thread::id openedBy;
    HWND openOwner = nullptr;
    HWND owner = nullptr;
    std::map<UINT, HGLOBAL> blocks;
};

Clipboard& Board() {
    static Clipboard c;
    return c;
}

bool OpenHere(Clipboard& c) { return c.open && c.openedBy == std::this_thread::get_id(); }

}  // namespace

BOOL ClipboardOpen(HWND owner) {
    Clipboard& c = Board();
    std::lock_guard<std::mutex> guard(c.lock);
    if (owner && !IsWindowObject(owner)) return FALSE;
    // Open on another thread: refused. Opening again on the same thread is allowed.
    if (c.open && c.openedBy != std::this_thread::get_id()) return FALSE;
    c.open = true;
    c.openedBy = std::this_thread::get_id();
    c.openOwner = owner;
    return TRUE;
}

BOOL ClipboardClose() {
    Clipboard& c = Board();
    std::lock_guard<std::mutex> guard(c.lock);
    if (!OpenHere(c)) return FALSE;
    c.open = false;
    return TRUE;
}

BOOL ClipboardEmpty() {
    Clipboard& c = Board();
    std::lock_guard<std::mutex> guard(c.lock);
    if (!OpenHere(c)) return FALSE;
    for (auto& [format, block] : c.blocks) GlobalMemFree(block);
    c.blocks.clear();
    c.owner = c.openOwner;
    return TRUE;
}

HGLOBAL ClipboardGetData(UINT format) {
    Clipboard& c = Board();
    std::lock_guard<std::mutex> guard(c.lock);
    if (!OpenHere(c)) return nullptr;
    auto it = c.blocks.find(format);
    return it == c.blocks.end() ? nullptr : it->second;
}

HGLOBAL ClipboardSetData(UINT format, HGLOBAL block) {
    Clipboard& c = Board();
    std::lock_guard<std::mutex> guard(c.lock);
    if (!OpenHere(c) || !block || GlobalMemSize(block) == 0) return nullptr;
    auto it = c.blocks.find(format);
    if (it != c.blocks.end() && it->second != block) GlobalMemFree(it->second);
    c.blocks[format] = block;
    return block;
}

BOOL ClipboardIsFormatAvailable(UINT format) {
    Clipboard& c = Board();
    std::lock_guard<std::mutex> guard(c.lock);
    return c.blocks.count(format) ? TRUE : FALSE;
}

}  // namespace qm::platform

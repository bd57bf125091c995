#include "utils/platform/clipboard.h"

#include <map>
#include <mutex>
#include <thread>

#include "utils/platform/clipboard_text.h"
#include "utils/platform/globalmem.h"
#include "utils/platform/metafile.h"
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
    // Text formats converted on request from the text that was put, kept until the clipboard
    // changes (as user32 keeps what it synthesises).
    std::map<UINT, HGLOBAL> synthesized;
};

Clipboard& Board() {
    static Clipboard c;
    return c;
}

bool OpenHere(Clipboard& c) { return c.open && c.openedBy == std::this_thread::get_id(); }

// Frees a block the clipboard holds; a metafile picture takes its metafile with it, as
// Windows deletes it when the clipboard lets the picture go.
void FreeBlock(UINT format, HGLOBAL block) {
    if (format == CF_METAFILEPICT && GlobalMemSize(block) >= sizeof(METAFILEPICT)) {
        if (auto* mfp = (METAFILEPICT*)GlobalMemLock(block)) {
            if (mfp->hMF) MetafileDelete(mfp->hMF);
            GlobalMemUnlock(block);
        }
    }
    GlobalMemFree(block);
}

void DropSynthesized(Clipboard& c) {
    for (auto& [format, block] : c.synthesized) GlobalMemFree(block);
    c.synthesized.clear();
}

UINT TextSource(Clipboard& c, UINT format) {
    return ClipboardTextSource(format, c.blocks.count(CF_TEXT) != 0, c.blocks.count(CF_OEMTEXT) != 0,
                               c.blocks.count(CF_UNICODETEXT) != 0);
}

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
    for (auto& [format, block] : c.blocks) FreeBlock(format, block);
    c.blocks.clear();
    DropSynthesized(c);
    c.owner = c.openOwner;
    return TRUE;
}

HGLOBAL ClipboardGetData(UINT format) {
    Clipboard& c = Board();
    std::lock_guard<std::mutex> guard(c.lock);
    if (!OpenHere(c)) return nullptr;
    auto it = c.blocks.find(format);
    if (it != c.blocks.end()) return it->second;
    auto synth = c.synthesized.find(format);
    if (synth != c.synthesized.end()) return synth->second;
    UINT source = TextSource(c, format);
    if (!source) return nullptr;
    HGLOBAL block = ClipboardConvertText(source, c.blocks[source], format);
    if (block) c.synthesized[format] = block;
    return block;
}

HGLOBAL ClipboardSetData(UINT format, HGLOBAL block) {
    Clipboard& c = Board();
    std::lock_guard<std::mutex> guard(c.lock);
    if (!OpenHere(c) || !block || GlobalMemSize(block) == 0) return nullptr;
    auto it = c.blocks.find(format);
    if (it != c.blocks.end() && it->second != block) FreeBlock(format, it->second);
    c.blocks[format] = block;
    if (ClipboardIsTextFormat(format)) DropSynthesized(c);
    return block;
}

BOOL ClipboardIsFormatAvailable(UINT format) {
    Clipboard& c = Board();
    std::lock_guard<std::mutex> guard(c.lock);
    return c.blocks.count(format) || TextSource(c, format) ? TRUE : FALSE;
}

}  // namespace qm::platform

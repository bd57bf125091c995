#include "utils/platform/clipboard.h"

#include <cstring>
#include <map>
#include <mutex>
#include <set>
#include <thread>

#include "utils/platform/clipboard_text.h"
#include "utils/platform/codepage.h"
#include "utils/platform/globalmem.h"
#include "utils/platform/host.h"
#include "utils/platform/metafile.h"
#include "utils/platform/posix/clipboard_internal.h"
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
    // The desktop clipboard: changed while open (put on the selection at close); the blocks
    // mirror another program's selection, fetched on demand (and which formats were asked for
    // already, and the owner's targets, during this opening).
    bool dirty = false;
    bool foreign = false;
    std::set<UINT> fetched;
    bool targetsKnown = false;
    std::vector<std::string> targets;
    // What is left on the clipboard when the process ends is freed with it.
    ~Clipboard();
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

void FreeAll(Clipboard& c) {
    for (auto& [format, block] : c.blocks) FreeBlock(format, block);
    c.blocks.clear();
    DropSynthesized(c);
}

HGLOBAL BlockOf(const std::string& bytes) {
    HGLOBAL h = GlobalMemAlloc(GMEM_MOVEABLE, bytes.size());
    void* p = h ? GlobalMemLock(h) : nullptr;
    if (!p) {
        if (h) GlobalMemFree(h);
        return nullptr;
    }
    std::memcpy(p, bytes.data(), bytes.size());
    GlobalMemUnlock(h);
    return h;
}

std::string BytesOf(HGLOBAL h) {
    std::string bytes;
    if (const char* p = (const char*)GlobalMemLock(h)) {
        bytes.assign(p, GlobalMemSize(h));
        GlobalMemUnlock(h);
    }
    return bytes;
}

// A packed DIB with the 14-byte file header other programs expect of image/bmp; "" when the
// block is not a DIB that a file header can describe.
std::string BmpFileOf(const std::string& dib) {
    if (dib.size() < 40) return {};
    BITMAPINFOHEADER bi;
    std::memcpy(&bi, dib.data(), sizeof bi);
    if (bi.biSize < 40 || bi.biSize > dib.size()) return {};
    std::uint64_t colours = bi.biClrUsed ? bi.biClrUsed : (bi.biBitCount <= 8 ? (1u << bi.biBitCount) : 0);
    std::uint64_t offBits = 14 + (std::uint64_t)bi.biSize + (bi.biCompression == BI_BITFIELDS && bi.biSize == 40 ? 12 : 0) +
                            4 * colours;
    if (offBits > 14 + dib.size() || 14 + dib.size() > 0xFFFFFFFFu) return {};
    std::string file(14, '\0');
    const std::uint32_t size = (std::uint32_t)(14 + dib.size()), off = (std::uint32_t)offBits;
    file[0] = 'B';
    file[1] = 'M';
    std::memcpy(&file[2], &size, 4);
    std::memcpy(&file[10], &off, 4);
    return file + dib;
}

// The packed DIB of an image/bmp file; "" when it is not one.
std::string DibOfBmpFile(const std::string& file) {
    if (file.size() < 14 + 40 || file[0] != 'B' || file[1] != 'M') return {};
    BITMAPINFOHEADER bi;
    std::memcpy(&bi, file.data() + 14, sizeof bi);
    if (bi.biSize < 40 || bi.biWidth < 1 || bi.biHeight == 0 || bi.biPlanes != 1) return {};
    return file.substr(14);
}

// Text for other programs: UTF-8 or Latin-1 with LF line ends.
std::string WithLf(std::string text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (!(text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n')) out += text[i];
    return out;
}

// Text from other programs: a lone LF becomes CR LF, as CF_TEXT holds it.
std::u16string WithCrLf(const std::u16string& text) {
    std::u16string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == u'\n' && (i == 0 || text[i - 1] != u'\r')) out += u'\r';
        out += text[i];
    }
    return out;
}

// What the blocks offer on the selection, by target.
std::map<std::string, xclip::Offer> OffersOf(Clipboard& c) {
    std::map<std::string, xclip::Offer> offers;
    UINT source = c.blocks.count(CF_UNICODETEXT) ? CF_UNICODETEXT
                  : c.blocks.count(CF_TEXT)      ? CF_TEXT
                  : c.blocks.count(CF_OEMTEXT)   ? CF_OEMTEXT
                                                 : 0;
    if (source) {
        std::string bytes = BytesOf(c.blocks[source]);
        std::u16string text = ClipboardTextOfBlock(source, bytes.data(), bytes.size());
        std::string utf8 = WithLf(Utf16ToUtf8(text.data(), text.size()));
        offers["UTF8_STRING"] = {"UTF8_STRING", utf8};
        offers["text/plain;charset=utf-8"] = {"text/plain;charset=utf-8", utf8};
        offers["TEXT"] = {"UTF8_STRING", utf8};
        offers["STRING"] = {"STRING", WithLf(Utf16ToAnsi(text.data(), text.size(), kCodePageLatin1))};
    }
    if (c.blocks.count(CF_DIB)) {
        std::string file = BmpFileOf(BytesOf(c.blocks[CF_DIB]));
        if (!file.empty()) offers["image/bmp"] = {"image/bmp", file};
    }
    return offers;
}

// Fetches a format from the selection's owner into the blocks.
void FetchForeign(Clipboard& c, UINT format) {
    if (c.fetched.count(format)) return;
    if (ClipboardIsTextFormat(format)) {
        c.fetched.insert({CF_TEXT, CF_OEMTEXT, CF_UNICODETEXT});
        for (const char* target : {"UTF8_STRING", "text/plain;charset=utf-8", "STRING", "TEXT"}) {
            std::string data, type;
            xclip::FetchResult got = xclip::Fetch(target, &data, &type);
            if (got == xclip::FetchResult::NoAnswer) return;  // a silent owner: no point asking again
            if (got != xclip::FetchResult::Ok) continue;
            std::u16string text;
            if (type == "UTF8_STRING" || type == "text/plain;charset=utf-8")
                text = Utf8ToUtf16(data.data(), data.size());
            else if (type == "STRING" || type == "TEXT" || type == "COMPOUND_TEXT")
                text = AnsiToUtf16(data.data(), data.size(), kCodePageLatin1);
            else
                continue;  // an owner that answers anything with its one kind of data
            std::u16string::size_type nul = text.find(u'\0');
            if (nul != std::u16string::npos) text.resize(nul);
            if (HGLOBAL h = ClipboardTextBlock(CF_UNICODETEXT, WithCrLf(text))) c.blocks[CF_UNICODETEXT] = h;
            return;
        }
        return;
    }
    c.fetched.insert(format);
    if (format == CF_DIB) {
        std::string data, type;
        if (xclip::Fetch("image/bmp", &data, &type) != xclip::FetchResult::Ok) return;
        std::string dib = DibOfBmpFile(data);
        if (!dib.empty())
            if (HGLOBAL h = BlockOf(dib)) c.blocks[CF_DIB] = h;
    }
}

bool ForeignOffers(Clipboard& c, UINT format) {
    if (!c.targetsKnown) {
        c.targetsKnown = true;
        c.targets = xclip::Targets();
    }
    for (const std::string& t : c.targets) {
        if (ClipboardIsTextFormat(format) &&
            (t == "UTF8_STRING" || t == "STRING" || t == "TEXT" || t == "text/plain;charset=utf-8"))
            return true;
        if (format == CF_DIB && t == "image/bmp") return true;
    }
    return false;
}

Clipboard::~Clipboard() { FreeAll(*this); }

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
    if (!c.open && xclip::Active() && !xclip::Owned()) {
        // Another program holds the desktop's clipboard (or nobody does): what is here is
        // stale, and what it offers is fetched when asked for.
        FreeAll(c);
        c.foreign = true;
        c.fetched.clear();
        c.targetsKnown = false;
    }
    if (!c.open) c.dirty = false;
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
    // Changed while open: the new contents go on the desktop's clipboard.
    if (c.dirty && !c.foreign && xclip::Active()) xclip::Own(OffersOf(c));
    c.dirty = false;
    return TRUE;
}

BOOL ClipboardEmpty() {
    Clipboard& c = Board();
    std::lock_guard<std::mutex> guard(c.lock);
    if (!OpenHere(c)) return FALSE;
    FreeAll(c);
    c.owner = c.openOwner;
    c.foreign = false;
    c.dirty = true;
    return TRUE;
}

HGLOBAL ClipboardGetData(UINT format) {
    Clipboard& c = Board();
    std::lock_guard<std::mutex> guard(c.lock);
    if (!OpenHere(c)) return nullptr;
    auto it = c.blocks.find(format);
    if (it != c.blocks.end()) return it->second;
    if (c.foreign) {
        FetchForeign(c, format);
        it = c.blocks.find(format);
        if (it != c.blocks.end()) return it->second;
    }
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
    c.dirty = true;
    return block;
}

BOOL ClipboardIsFormatAvailable(UINT format) {
    Clipboard& c = Board();
    std::lock_guard<std::mutex> guard(c.lock);
    // Closed, with another program holding the desktop's clipboard: ask it afresh.
    if (!c.open && xclip::Active() && !xclip::Owned()) {
        c.targetsKnown = false;
        return ForeignOffers(c, format) ? TRUE : FALSE;
    }
    if (c.blocks.count(format) || TextSource(c, format)) return TRUE;
    return c.foreign && xclip::Active() && ForeignOffers(c, format) ? TRUE : FALSE;
}

void ClipboardUseDisplay(const char* display) {
    Clipboard& c = Board();
    std::lock_guard<std::mutex> guard(c.lock);
    xclip::UseDisplay(display);
    // Another clipboard from now on: what this one held is let go.
    FreeAll(c);
    c.foreign = false;
}

bool ClipboardIsDesktop() { return xclip::Active(); }

bool ServeClipboardUntilReplaced(DWORD timeoutMs) { return xclip::ServeUntilReplaced(timeoutMs); }

}  // namespace qm::platform

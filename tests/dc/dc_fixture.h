// Helpers of the device-context tests: a memory device context with a font selected, and
// the bytes a bitmap saves.
#pragma once

#include <string>

#include "utils/common/DIB.h"
#include "utils/framework/CDC.h"

namespace dctest {

struct FontChoice {
    const char* face;
    int height;  // as lfHeight: negative = em size, positive = cell height
    int weight;
};

class MemoryDC {
public:
    explicit MemoryDC(const FontChoice& choice, int cx = 64, int cy = 64) {
        dc.CreateCompatibleDC(nullptr);
        font.CreateFont(choice.height, 0, 0, 0, choice.weight, 0, 0, 0, DEFAULT_CHARSET, OUT_DEFAULT_PRECIS,
                        CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY, DEFAULT_PITCH, choice.face);
        oldFont = dc.SelectObject(&font);
        CDC screen;
        screen.CreateDC("DISPLAY", nullptr, nullptr, nullptr);
        bitmap.CreateCompatibleBitmap(&screen, cx, cy);
        oldBitmap = dc.SelectObject(&bitmap);
    }
    ~MemoryDC() {
        dc.SelectObject(oldFont);
        dc.SelectObject(oldBitmap);
    }
    CDC dc;
    CFont font;
    CBitmap bitmap;
    CFont* oldFont = nullptr;
    CBitmap* oldBitmap = nullptr;
};

inline const FontChoice kFonts[] = {
    {"DejaVu Sans", -12, FW_NORMAL}, {"Times New Roman", 20, FW_NORMAL}, {"DejaVu Sans Mono", -15, FW_NORMAL},
    {"Arial", -17, FW_BOLD},         {"Tahoma", 11, FW_NORMAL},
};

// The packed DIB (with the file header when asked) that Save writes.
inline std::string Saved(CDIBitmap& bmp, bool fileHeader = false) {
    CMemFile file;
    bmp.Save(file, fileHeader);
    std::string bytes((size_t)file.GetLength(), '\0');
    file.SeekToBegin();
    file.Read(bytes.data(), (UINT)bytes.size());
    return bytes;
}

}  // namespace dctest

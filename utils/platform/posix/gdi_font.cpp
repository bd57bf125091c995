// Fonts of the POSIX graphics backend: a logical font is matched to a DejaVu font file and
// sized the way GDI sizes TrueType fonts; FreeType supplies the hinted integer advance widths
// and the font's vertical metrics.
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_TRUETYPE_TABLES_H

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <map>
#include <string>

#include "utils/platform/posix/gdi_objects.h"

namespace qm::platform::gdi {

namespace {

const char* const kFontDir = "/usr/share/fonts/truetype/dejavu/";

// Code page 1252 for bytes 0x80-0x9F; 0 marks the five bytes it leaves undefined. Other bytes
// are their own code points.
const unsigned short kCp1252High[32] = {
    0x20AC, 0, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0, 0x017D, 0,
    0, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0, 0x017E,
    0x0178};

enum class Style { Sans, Mono, Serif };

std::string Lower(const char* s) {
    std::string r;
    for (; *s; ++s) r += (char)std::tolower((unsigned char)*s);
    return r;
}

Style StyleFor(const LOGFONTA& lf) {
    std::string face = Lower(lf.lfFaceName);
    auto has = [&](const char* w) { return face.find(w) != std::string::npos; };
    int family = lf.lfPitchAndFamily & 0xF0;
    if (has("mono") || has("courier") || has("consol") || has("fixedsys") || has("terminal") ||
        has("lucida console") || (lf.lfPitchAndFamily & 3) == FIXED_PITCH || (face.empty() && family == FF_MODERN))
        return Style::Mono;
    if ((has("serif") && !has("sans")) || has("times") || has("georgia") || has("roman") || has("garamond") ||
        has("cambria") || (face.empty() && family == FF_ROMAN))
        return Style::Serif;
    return Style::Sans;
}

std::string FileFor(Style style, bool bold, bool italic) {
    std::string name = style == Style::Mono ? "DejaVuSansMono" : style == Style::Serif ? "DejaVuSerif" : "DejaVuSans";
    const char* slant = style == Style::Serif ? "Italic" : "Oblique";
    if (bold && italic) name += std::string("-Bold") + slant;
    else if (bold) name += "-Bold";
    else if (italic) name += std::string("-") + slant;
    return kFontDir + name + ".ttf";
}

FT_Library Library() {
    static FT_Library lib = [] {
        FT_Library l = nullptr;
        if (FT_Init_FreeType(&l) != 0) l = nullptr;
        return l;
    }();
    return lib;
}

int Round(double v) { return (int)std::lround(v); }

// Metrics of a font that cannot be read: half-em advances and a 4:1 ascent to descent split,
// so that measuring still works (and stays monotonic) without the font file.
void Synthesize(FontFace& f, int em) {
    f.metrics.tmAscent = (em * 4 + 2) / 5 + 1;
    f.metrics.tmDescent = std::max(1, em / 5);
    for (int& a : f.advance) a = std::max(1, em / 2);
    f.metrics.tmAveCharWidth = std::max(1, em / 2);
    f.metrics.tmMaxCharWidth = em;
    f.metrics.tmHeight = f.metrics.tmAscent + f.metrics.tmDescent;
    f.metrics.tmInternalLeading = std::max<LONG>(0, f.metrics.tmHeight - em);
}

bool Measure(FontFace& f, const std::string& path, long long lfHeight) {
    FT_Library lib = Library();
    FT_Face face = nullptr;
    if (!lib || FT_New_Face(lib, path.c_str(), 0, &face) != 0) return false;
    auto* os2 = (TT_OS2*)FT_Get_Sfnt_Table(face, FT_SFNT_OS2);
    auto* hhea = (TT_HoriHeader*)FT_Get_Sfnt_Table(face, FT_SFNT_HHEA);
    double upem = face->units_per_EM ? face->units_per_EM : 2048;
    double winA = os2 ? os2->usWinAscent : face->ascender;
    double winD = os2 ? os2->usWinDescent : -face->descender;
    if (winA + winD <= 0) winA = upem, winD = 0;
    // A negative height is the em size; a positive one is the cell height (ascent plus
    // descent); GDI rasterizes TrueType at a whole number of pixels per em.
    long long em = lfHeight < 0 ? -lfHeight : std::llround((double)lfHeight * upem / (winA + winD));
    em = std::clamp<long long>(em, 1, 2048);
    double scale = (double)em / upem;
    if (FT_Set_Pixel_Sizes(face, 0, (FT_UInt)em) != 0) {
        FT_Done_Face(face);
        return false;
    }
    TEXTMETRICA& tm = f.metrics;
    tm.tmAscent = Round(winA * scale);
    tm.tmDescent = Round(winD * scale);
    tm.tmHeight = tm.tmAscent + tm.tmDescent;
    tm.tmInternalLeading = std::max<LONG>(0, tm.tmHeight - (LONG)em);
    if (hhea) {
        double gap = hhea->Line_Gap - ((winA + winD) - (hhea->Ascender - hhea->Descender));
        tm.tmExternalLeading = std::max(0, Round(gap * scale));
    }
    for (int c = 0; c < 256; ++c) {
        unsigned code = (c >= 0x80 && c < 0xA0) ? kCp1252High[c - 0x80] : (unsigned)c;
        FT_UInt gi = code ? FT_Get_Char_Index(face, code) : 0;
        f.advance[c] = FT_Load_Glyph(face, gi, FT_LOAD_DEFAULT) == 0 ? (int)((face->glyph->advance.x + 32) >> 6) : 0;
    }
    tm.tmAveCharWidth = os2 && os2->xAvgCharWidth > 0 ? Round(os2->xAvgCharWidth * scale) : f.advance[(unsigned char)'x'];
    tm.tmMaxCharWidth = Round((face->bbox.xMax - face->bbox.xMin) * scale);
    FT_Done_Face(face);
    return true;
}

}  // namespace

std::shared_ptr<const FontFace> LoadFace(const LOGFONTA& lfIn) {
    LOGFONTA lf = lfIn;
    // GDI's default size: a cell 16 pixels high.
    long long height = lf.lfHeight == 0 ? 16 : (long long)lf.lfHeight;
    Style style = StyleFor(lf);
    bool bold = lf.lfWeight >= FW_SEMIBOLD;
    bool italic = lf.lfItalic != 0;
    std::string path = FileFor(style, bold, italic);
    std::string key = path + "|" + std::to_string(height) + "|" + std::to_string(lf.lfWeight) + "|" +
                      std::to_string(lf.lfUnderline != 0) + std::to_string(lf.lfStrikeOut != 0);
    static std::map<std::string, std::shared_ptr<const FontFace>> cache;
    std::lock_guard<std::recursive_mutex> lock(Lock());
    auto it = cache.find(key);
    if (it != cache.end()) return it->second;

    auto f = std::make_shared<FontFace>();
    if (!Measure(*f, path, height)) {
        long long em = height < 0 ? -height : height * 4 / 5;
        Synthesize(*f, (int)std::clamp<long long>(em, 1, 2048));
    }
    TEXTMETRICA& tm = f->metrics;
    tm.tmAveCharWidth = std::max<LONG>(1, tm.tmAveCharWidth);
    tm.tmWeight = lf.lfWeight > 0 ? lf.lfWeight : FW_NORMAL;
    tm.tmOverhang = 0;
    tm.tmDigitizedAspectX = kLogPixels;
    tm.tmDigitizedAspectY = kLogPixels;
    tm.tmFirstChar = 0x20;
    tm.tmLastChar = 0xFF;
    tm.tmDefaultChar = 0x1F;
    tm.tmBreakChar = 0x20;
    tm.tmItalic = italic ? 1 : 0;
    tm.tmUnderlined = lf.lfUnderline ? 1 : 0;
    tm.tmStruckOut = lf.lfStrikeOut ? 1 : 0;
    int family = style == Style::Mono ? FF_MODERN : style == Style::Serif ? FF_ROMAN : FF_SWISS;
    tm.tmPitchAndFamily = (BYTE)((style == Style::Mono ? 0 : TMPF_FIXED_PITCH) | TMPF_VECTOR | TMPF_TRUETYPE | family);
    tm.tmCharSet = ANSI_CHARSET;
    cache[key] = f;
    return f;
}

Font* MakeStockFont(const char* face, BYTE pitchAndFamily) {
    LOGFONTA lf{};
    lf.lfHeight = 16;
    lf.lfWeight = FW_NORMAL;
    lf.lfPitchAndFamily = pitchAndFamily;
    std::snprintf(lf.lfFaceName, sizeof lf.lfFaceName, "%s", face);
    auto* f = new Font;
    f->logFont = lf;
    f->face = LoadFace(lf);
    f->stock = true;
    Register(f);
    return f;
}

Font* StockFont() {
    static Font* font = MakeStockFont("DejaVu Sans", VARIABLE_PITCH | FF_SWISS);
    return font;
}

}  // namespace qm::platform::gdi

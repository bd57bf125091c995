// qmutil bmp info | sample | rotate | mirror | crop | resize | borders | canvas | fill |
// brightness | contrast | rgb | gray | to24 | paste: BMP files through CDIBitmap. Each editing
// action reads a BMP, applies one operation and writes a BMP.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "command.h"
#include "input_file.h"
#include "terminal_frame.h"
#include "utils/common/CVLogger.h"
#include "utils/common/DIB.h"

namespace {

using qmutil::UsageError;

std::string ErrorText(CException* e) {
    char text[512] = "";
    e->GetErrorMessage(text, sizeof text);
    e->Delete();
    return text[0] ? text : "file error";
}

DWORD Le32(const BYTE* p) { return p[0] | p[1] << 8 | p[2] << 16 | (DWORD)p[3] << 24; }

// Which rule of the BMP reader a file breaks, for the message when it is refused.
std::string WhyRefused(const std::string& path) {
    FILE* f = std::fopen(path.c_str(), "rb");
    if (!f) return "cannot be opened";
    BYTE h[54] = {};
    size_t n = std::fread(h, 1, sizeof h, f);
    std::fseek(f, 0, SEEK_END);
    long long length = std::ftell(f);
    std::fclose(f);
    if (n < 2 || h[0] != 'B' || h[1] != 'M') return "not a BMP file (no \"BM\" signature)";
    if (n < 14) return "truncated file header";
    if (Le32(h + 2) != (unsigned long long)length)
        return "size mismatch: the header says " + std::to_string(Le32(h + 2)) + " bytes, the file has " + std::to_string(length);
    if (n < 54) return "truncated bitmap header";
    if (Le32(h + 14) < 40) return "old-style bitmap header (" + std::to_string(Le32(h + 14)) + " bytes, 40 or more needed)";
    if ((int32_t)Le32(h + 22) < 0) return "top-down bitmap (negative height)";
    if (Le32(h + 22) == 0) return "no rows (height 0)";
    if ((h[26] | h[27] << 8) != 1) return "more than one plane";
    if ((h[28] | h[29] << 8) == 0) return "no bit count";
    DWORD compression = Le32(h + 30);
    if (compression != 0 && compression != 3) return "compressed bitmap (compression " + std::to_string(compression) + ")";
    if ((int32_t)Le32(h + 18) < 1) return "no columns (width below 1)";
    return "size mismatch: the colour table or the rows reach past the end of the file";
}

void Load(CDIBitmap& b, const std::string& path) {
    qmutil::CheckInputFile(path, qmutil::kMaxPictureBytes);
    qmutil::QuietLibraryReports quiet;
    CFile file;
    CFileException error;
    if (!file.Open(path.c_str(), CFile::modeRead | CFile::shareDenyWrite, &error))
        throw UsageError("cannot open '" + path + "'");
    bool ok;
    try {
        ok = b.Load(file, true);
    } catch (CException* e) {
        throw UsageError("cannot read '" + path + "': " + ErrorText(e));
    }
    if (!ok) throw UsageError("'" + path + "' refused: " + WhyRefused(path));
}

void Save(CDIBitmap& b, const std::string& path) {
    qmutil::CheckOutputFile(path);
    try {
        CFile file(path.c_str(), CFile::modeCreate | CFile::modeWrite);
        b.Save(file, true);
        file.Close();
    } catch (CException* e) {
        throw UsageError("cannot write '" + path + "': " + ErrorText(e));
    }
}

int Int(const std::string& text, const char* what) { return (int)qmutil::ParseLong(text, what); }

// "#RRGGBB" or "R,G,B" (0..255 each).
COLORREF Colour(const std::string& text) {
    unsigned r, g, b;
    char tail;
    if (text.size() == 7 && text[0] == '#' && std::sscanf(text.c_str() + 1, "%2x%2x%2x%c", &r, &g, &b, &tail) == 3)
        return RGB(r, g, b);
    int ri, gi, bi;
    if (std::sscanf(text.c_str(), "%d,%d,%d%c", &ri, &gi, &bi, &tail) == 3 && ri >= 0 && ri < 256 && gi >= 0 && gi < 256 &&
        bi >= 0 && bi < 256)
        return RGB(ri, gi, bi);
    throw UsageError("invalid colour '" + text + "' (expected #RRGGBB or R,G,B)");
}

CRect Rect(const std::vector<std::string>& a, size_t at) {
    return CRect(Int(a[at], "left"), Int(a[at + 1], "top"), Int(a[at + 2], "right"), Int(a[at + 3], "bottom"));
}

void CheckInside(const CDIBitmap& b, const CRect& r) {
    if (r.IsRectEmpty() || r.left < 0 || r.top < 0 || r.right > b.GetWidth() || r.bottom > b.GetHeight())
        throw UsageError("rectangle " + std::to_string(r.left) + "," + std::to_string(r.top) + "," + std::to_string(r.right) +
                         "," + std::to_string(r.bottom) + " is empty or not inside the " + std::to_string(b.GetWidth()) +
                         "x" + std::to_string(b.GetHeight()) + " picture");
}

void PrintInfo(const CDIBitmap& b) {
    const BITMAPINFOHEADER* h = b.GetInfoHeader();
    std::printf("size        %d x %d pixels\n", b.GetWidth(), b.GetHeight());
    std::printf("depth       %d bits per pixel\n", b.GetBitCount());
    std::printf("compression %s\n", h->biCompression == BI_BITFIELDS ? "bit fields (colour masks)" : "none (RGB)");
    DWORD colours = h->biClrUsed ? h->biClrUsed : h->biBitCount <= 8 ? 1u << h->biBitCount : 0;
    std::printf("colours     %lu in the table\n", (unsigned long)colours);
    if (h->biCompression == BI_BITFIELDS && (h->biBitCount == 16 || h->biBitCount == 32)) {
        DWORD m[3];
        std::memcpy(m, reinterpret_cast<const BYTE*>(h) + h->biSize, 12);
        std::printf("masks       red %08lX green %08lX blue %08lX\n", (unsigned long)m[0], (unsigned long)m[1], (unsigned long)m[2]);
    }
    LONG x, y;
    b.GetPelsPerMeter(&x, &y);
    std::printf("resolution  %ld x %ld pixels per metre (%.0f x %.0f dpi)\n", (long)x, (long)y, x * 0.0254, y * 0.0254);
    std::printf("stride      %lu bytes per row (%lu used)\n", (unsigned long)b.DWAlignedBytesPerLine(),
                (unsigned long)b.ActualBytesPerLine());
    std::printf("header      %lu bytes, rows %lu bytes\n", (unsigned long)b.GetInfoLength(), (unsigned long)b.GetBitsSize());
}

// A picture to play with: a colour gradient, with a grey-ramp palette below 16 bits.
bool MakeSample(CDIBitmap& b, int w, int h, int bpp) {
    if (!b.Create(w, h, (WORD)bpp)) return false;
    std::memset(b.GetBits(), 0, b.GetBitsSize());
    DWORD entries = b.GetColorTableSize() / 4;
    for (DWORD i = 0; i < entries; ++i) {
        BYTE v = (BYTE)(entries > 1 ? i * 255 / (entries - 1) : 0);
        b.GetColorTable()[i] = RGBQUAD{v, (BYTE)(255 - v), (BYTE)(i * 37), 0};
    }
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            int r = w > 1 ? x * 255 / (w - 1) : 0, g = h > 1 ? y * 255 / (h - 1) : 0, bl = (x + y) * 8 & 255;
            DWORD v = bpp <= 8 ? (DWORD)((x + y) % (int)entries)
                      : bpp == 16 ? (DWORD)((r >> 3) << 10 | (g >> 3) << 5 | bl >> 3)
                                  : (DWORD)(r << 16 | g << 8 | bl);
            b.SetPixelValue(CPoint(x, y), v);
        }
    return true;
}

int RunInfo(const std::vector<std::string>& a) {
    qmutil::RequireArgs(a, 1, "bmp info FILE");
    CDIBitmap b;
    Load(b, a[0]);
    PrintInfo(b);
    return 0;
}

int RunSample(const std::vector<std::string>& a) {
    qmutil::RequireArgs(a, 4, "bmp sample WIDTH HEIGHT DEPTH OUT");
    int w = Int(a[0], "width"), h = Int(a[1], "height"), d = Int(a[2], "depth");
    if (w < 1 || h < 1 || w > 16384 || h > 16384) throw UsageError("width and height must be 1 to 16384");
    if (d != 1 && d != 4 && d != 8 && d != 16 && d != 24 && d != 32) throw UsageError("depth must be 1, 4, 8, 16, 24 or 32");
    CDIBitmap b;
    if (!MakeSample(b, w, h, d)) throw UsageError("not enough memory for the picture");
    Save(b, a[3]);
    return 0;
}

// Editing actions: IN, the operation's arguments, OUT.
struct Edit {
    const char* usage;
    size_t args;  // between IN and OUT
    void (*apply)(CDIBitmap& b, const std::vector<std::string>& a);
};

// Files above this size show their three steps (read, edit, write) on the terminal frame,
// and Escape or Ctrl-C stops before the result is written.
constexpr std::uintmax_t kLargeFile = 4u << 20;

int RunEdit(const Edit& e, const std::vector<std::string>& a) {
    qmutil::RequireArgs(a, e.args + 2, e.usage);
    std::error_code size_error;
    std::unique_ptr<qmutil::LongWork> work;
    if (std::filesystem::file_size(a[0], size_error) > kLargeFile && !size_error)
        work = std::make_unique<qmutil::LongWork>(("Editing " + a[0]).c_str(), 3);
    CDIBitmap b;
    Load(b, a[0]);
    std::vector<std::string> mid(a.begin() + 1, a.end() - 1);
    if (work && !work->Step()) throw UsageError("cancelled");
    {
        qmutil::QuietLibraryReports quiet;
        e.apply(b, mid);
    }
    if (work && !work->Step()) throw UsageError("cancelled");
    Save(b, a.back());
    if (work) work->Step();
    work.reset();
    std::printf("%s: %d x %d, %d bits\n", a.back().c_str(), b.GetWidth(), b.GetHeight(), b.GetBitCount());
    return 0;
}

int Ranged(const std::string& text, const char* what, int lo, int hi) {
    int v = Int(text, what);
    if (v < lo || v > hi) throw UsageError(std::string(what) + " must be " + std::to_string(lo) + " to " + std::to_string(hi));
    return v;
}

int Edge(const std::string& text, const char* what) { return Ranged(text, what, -100000, 100000); }

const Edit kRotate{"bmp rotate IN 90|180|270 OUT", 1, [](CDIBitmap& b, const std::vector<std::string>& a) {
                       int angle = Int(a[0], "angle");
                       if (angle != 90 && angle != 180 && angle != 270) throw UsageError("angle must be 90, 180 or 270");
                       if (angle == 180 && b.GetBitCount() < 8) throw UsageError("a 1- or 4-bit picture turns only by 90 or 270");
                       b.Rotate((CDIBitmap::eRotate)angle);
                   }};
const Edit kMirror{"bmp mirror IN OUT", 0, [](CDIBitmap& b, const std::vector<std::string>&) { b.Mirror(); }};
const Edit kCrop{"bmp crop IN LEFT TOP RIGHT BOTTOM OUT", 4, [](CDIBitmap& b, const std::vector<std::string>& a) {
                     CRect r = Rect(a, 0);
                     CheckInside(b, r);
                     b.Crop(r);
                 }};
const Edit kResize{"bmp resize IN WIDTH HEIGHT OUT", 2, [](CDIBitmap& b, const std::vector<std::string>& a) {
                       int w = Ranged(a[0], "width", 1, 16384), h = Ranged(a[1], "height", 1, 16384);
                       if (!b.Resize(CSize(w, h))) throw UsageError("not enough memory to resize");
                   }};
const Edit kBorders{"bmp borders IN TOP BOTTOM LEFT RIGHT COLOUR OUT", 5, [](CDIBitmap& b, const std::vector<std::string>& a) {
                        int e[4];
                        for (int i = 0; i < 4; ++i) e[i] = Ranged(a[i], "border", 1, 100000);
                        if (!b.AddBorders(e[0], e[1], e[2], e[3], Colour(a[4]))) throw UsageError("the picture would be too large");
                    }};
const Edit kCanvas{"bmp canvas IN TOP BOTTOM LEFT RIGHT COLOUR OUT", 5, [](CDIBitmap& b, const std::vector<std::string>& a) {
                       int e[4];
                       for (int i = 0; i < 4; ++i) e[i] = Edge(a[i], "edge");
                       if (!b.CanvasSize(e[0], e[1], e[2], e[3], Colour(a[4])))
                           throw UsageError("the new canvas would be empty or too large");
                   }};
const Edit kFill{"bmp fill IN LEFT TOP RIGHT BOTTOM COLOUR OUT", 5, [](CDIBitmap& b, const std::vector<std::string>& a) {
                     CRect r = Rect(a, 0);
                     CheckInside(b, r);
                     if (b.GetBitCount() != 24) throw UsageError("fill works on 24-bit pictures (convert with 'bmp to24')");
                     b.Fill(r, Colour(a[4]));
                 }};
const Edit kBrightness{"bmp brightness IN -255..255 OUT", 1, [](CDIBitmap& b, const std::vector<std::string>& a) {
                           b.AdjustBrightness(Ranged(a[0], "brightness", -255, 255));
                       }};
const Edit kContrast{"bmp contrast IN -100..100 OUT", 1, [](CDIBitmap& b, const std::vector<std::string>& a) {
                         b.AdjustContrast(Ranged(a[0], "contrast", -100, 100));
                     }};
const Edit kRgb{"bmp rgb IN RED GREEN BLUE OUT", 3, [](CDIBitmap& b, const std::vector<std::string>& a) {
                    b.AdjustRGB(Ranged(a[0], "red", -255, 255), Ranged(a[1], "green", -255, 255), Ranged(a[2], "blue", -255, 255));
                }};
const Edit kGray{"bmp gray IN OUT", 0, [](CDIBitmap& b, const std::vector<std::string>&) {
                     if (b.GetBitCount() != 24 && b.GetBitCount() != 32)
                         throw UsageError("gray works on 24- and 32-bit pictures (convert with 'bmp to24')");
                     b.BlackAndWhite();
                 }};
const Edit kTo24{"bmp to24 IN OUT", 0, [](CDIBitmap& b, const std::vector<std::string>&) {
                     if (b.Ensure_24Bits() != 0 || b.GetBitCount() != 24) throw UsageError("not enough memory to convert");
                 }};
const Edit kPaste{"bmp paste IN SOURCE X Y OUT", 3, [](CDIBitmap& b, const std::vector<std::string>& a) {
                      CDIBitmap src;
                      Load(src, a[0]);
                      int x = Int(a[1], "x"), y = Int(a[2], "y");
                      if (x < 0 || y < 0 || (long long)x + src.GetWidth() > b.GetWidth() || (long long)y + src.GetHeight() > b.GetHeight())
                          throw UsageError("the source does not fit inside the picture at " + a[1] + "," + a[2]);
                      if (!b.IsFitForPaste(src))
                          throw UsageError("the source cannot be pasted: the target is not 24 bits and the layouts differ");
                      b.Paste(src, CPoint(x, y));
                  }};

void Tour() {
    // The pictures go to the temporary folder, which is writable when the current one is not.
    std::error_code error;
    std::filesystem::path dir = std::filesystem::temp_directory_path(error);
    const std::string in = (dir / "qmutil_tour.bmp").string();
    const std::string out = (dir / "qmutil_tour_out.bmp").string();
    qmutil::TourStep("bmp sample 40 30 8 qmutil_tour.bmp");
    RunSample({"40", "30", "8", in});
    qmutil::TourStep("bmp info qmutil_tour.bmp");
    RunInfo({in});
    qmutil::TourStep("bmp rotate qmutil_tour.bmp 90 qmutil_tour_out.bmp");
    RunEdit(kRotate, {in, "90", out});
    qmutil::TourStep("bmp borders qmutil_tour.bmp 1 2 3 4 #FF0000 qmutil_tour_out.bmp");
    RunEdit(kBorders, {in, "1", "2", "3", "4", "#FF0000", out});
    qmutil::TourStep("bmp resize qmutil_tour.bmp 20 15 qmutil_tour_out.bmp");
    RunEdit(kResize, {in, "20", "15", out});
    qmutil::TourStep("bmp brightness qmutil_tour_out.bmp 40 qmutil_tour_out.bmp");
    RunEdit(kBrightness, {out, "40", out});
    std::remove(in.c_str());
    std::remove(out.c_str());
}

int Rotate(const std::vector<std::string>& a) { return RunEdit(kRotate, a); }
int MirrorRun(const std::vector<std::string>& a) { return RunEdit(kMirror, a); }
int CropRun(const std::vector<std::string>& a) { return RunEdit(kCrop, a); }
int ResizeRun(const std::vector<std::string>& a) { return RunEdit(kResize, a); }
int BordersRun(const std::vector<std::string>& a) { return RunEdit(kBorders, a); }
int CanvasRun(const std::vector<std::string>& a) { return RunEdit(kCanvas, a); }
int FillRun(const std::vector<std::string>& a) { return RunEdit(kFill, a); }
int BrightnessRun(const std::vector<std::string>& a) { return RunEdit(kBrightness, a); }
int ContrastRun(const std::vector<std::string>& a) { return RunEdit(kContrast, a); }
int RgbRun(const std::vector<std::string>& a) { return RunEdit(kRgb, a); }
int GrayRun(const std::vector<std::string>& a) { return RunEdit(kGray, a); }
int To24Run(const std::vector<std::string>& a) { return RunEdit(kTo24, a); }
int PasteRun(const std::vector<std::string>& a) { return RunEdit(kPaste, a); }

qmutil::Registrar info({"bmp", "info", "size, depth, compression, colours, masks, resolution and stride of a BMP",
                        "usage: qmutil bmp info FILE\n"
                        "  A file the reader refuses is named with the rule it breaks (not a BMP, size mismatch,\n"
                        "  top-down, compressed, ...).\n",
                        RunInfo, Tour, 40});
qmutil::Registrar sample({"bmp", "sample", "write a gradient test picture",
                          "usage: qmutil bmp sample WIDTH HEIGHT DEPTH OUT\n  DEPTH is 1, 4, 8, 16, 24 or 32.\n",
                          RunSample, nullptr, 41});
qmutil::Registrar rotate({"bmp", "rotate", "turn clockwise by 90, 180 or 270 degrees",
                          "usage: qmutil bmp rotate IN 90|180|270 OUT\n  1- and 4-bit pictures turn only by 90 and 270.\n",
                          Rotate, nullptr, 42});
qmutil::Registrar mirror({"bmp", "mirror", "mirror left to right", "usage: qmutil bmp mirror IN OUT\n", MirrorRun, nullptr, 43});
qmutil::Registrar crop({"bmp", "crop", "keep a rectangle",
                        "usage: qmutil bmp crop IN LEFT TOP RIGHT BOTTOM OUT\n  Picture coordinates, row 0 at the top; right and bottom exclusive.\n",
                        CropRun, nullptr, 44});
qmutil::Registrar resize({"bmp", "resize", "scale to a new size (the result has 24 bits)",
                          "usage: qmutil bmp resize IN WIDTH HEIGHT OUT\n", ResizeRun, nullptr, 45});
qmutil::Registrar borders({"bmp", "borders", "add borders of a colour (the result has 24 bits)",
                           "usage: qmutil bmp borders IN TOP BOTTOM LEFT RIGHT COLOUR OUT\n"
                           "  Each border at least 1; COLOUR is #RRGGBB or R,G,B.\n",
                           BordersRun, nullptr, 46});
qmutil::Registrar canvas({"bmp", "canvas", "grow or cut each edge (the result has 24 bits)",
                          "usage: qmutil bmp canvas IN TOP BOTTOM LEFT RIGHT COLOUR OUT\n"
                          "  A positive edge adds rows or columns of COLOUR, a negative one cuts them.\n",
                          CanvasRun, nullptr, 47});
qmutil::Registrar fill({"bmp", "fill", "fill a rectangle of a 24-bit picture",
                        "usage: qmutil bmp fill IN LEFT TOP RIGHT BOTTOM COLOUR OUT\n", FillRun, nullptr, 48});
qmutil::Registrar brightness({"bmp", "brightness", "add -255..255 to every channel",
                              "usage: qmutil bmp brightness IN -255..255 OUT\n"
                              "  Palette pictures change their colour table; 16-bit pictures move by the amount / 8.\n",
                              BrightnessRun, nullptr, 49});
qmutil::Registrar contrast({"bmp", "contrast", "stretch channels around the middle by -100..100 percent",
                            "usage: qmutil bmp contrast IN -100..100 OUT\n", ContrastRun, nullptr, 50});
qmutil::Registrar rgb({"bmp", "rgb", "add a separate amount to red, green and blue",
                       "usage: qmutil bmp rgb IN RED GREEN BLUE OUT\n  Each amount -255..255.\n", RgbRun, nullptr, 51});
qmutil::Registrar gray({"bmp", "gray", "turn a 24- or 32-bit picture grey",
                        "usage: qmutil bmp gray IN OUT\n", GrayRun, nullptr, 52});
qmutil::Registrar to24({"bmp", "to24", "convert to 24 bits per pixel", "usage: qmutil bmp to24 IN OUT\n", To24Run, nullptr, 53});
qmutil::Registrar paste({"bmp", "paste", "paste another BMP at a point",
                         "usage: qmutil bmp paste IN SOURCE X Y OUT\n"
                         "  The source must fit inside; the target must be 24 bits or have the source's layout.\n",
                         PasteRun, nullptr, 54});

}  // namespace

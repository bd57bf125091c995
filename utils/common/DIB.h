// CDIBitmap: one device-independent bitmap in memory, in the standard bottom-up DIB layout (a
// BITMAPINFOHEADER, its three colour masks or colour table, then the pixel rows, each row
// padded to a multiple of 4 bytes). A bitmap is empty, owns its two blocks, or is attached to
// a caller's packed DIB that it never frees.
//
// Pixel primitives take storage coordinates (row 0 is the first row in memory, the bottom row
// of the picture); rectangle and point operations (copy, paste, fill, crop) take picture
// coordinates (row 0 at the top). Broken preconditions are reported through _cvassert_ and the
// operation carries on with its fallback; nothing ever reads or writes outside the blocks.
#pragma once

#include <cstdint>

#include "utils/framework/CFile.h"
#include "utils/framework/geometry.h"
#include "utils/framework/objidl.h"
#include "utils/framework/wingdi.h"
#include "utils/framework/wintypes.h"
#include "utils/framework/export.h"

class CWnd;
class CDC;

class MFCQMUTILS_API CDIBitmap {
public:
    // Clockwise quarter turns, in degrees.
    enum eRotate { eRotate90 = 90, eRotate180 = 180, eRotate270 = 270 };

    // Limits of the colour adjustments.
    enum { MIN_BRIGHTNESS = -255, MAX_BRIGHTNESS = 255, MIN_CONTRAST = -100, MAX_CONTRAST = 100 };

    // The header block: BITMAPINFOHEADER, masks or colour table.
    class MFCQMUTILS_API CBmpInfo {
    public:
        CBmpInfo() : m_pBmpInfo(nullptr), m_nSize(0) {}

        bool IsValid() const { return m_pBmpInfo != nullptr; }
        int GetBmpWidth() const { return m_pBmpInfo ? m_pBmpInfo->biWidth : 0; }
        int GetBmpHeight() const { return m_pBmpInfo ? m_pBmpInfo->biHeight : 0; }
        WORD GetBitCount() const { return m_pBmpInfo ? m_pBmpInfo->biBitCount : 0; }
        // biClrUsed, else 2^bits up to 8 bits, else 0.
        DWORD GetColorCount() const;
        // BI_BITFIELDS at 16 or 32 bits.
        bool HasMasks() const;
        // Red, green, blue masks (zeros when the header has none or they lie outside the block).
        void GetMasks(DWORD& red, DWORD& green, DWORD& blue) const;
        // No masks, or 5-5-5 at 16 bits, or 8-8-8 at 32 bits.
        bool HasStandardMasks() const;
        // After the header (and masks); null when there is no table or it would start past
        // the header block. GetColorEntry also checks each entry against the block.
        RGBQUAD* GetColorTable() const;
        DWORD GetColorTableSize() const;
        // Owned: the block's length; attached: biSize + masks + colour table.
        DWORD GetInfoLength() const;
        // The same layout: sizes, depth, compression, colour counts and tables, masks.
        bool IsBmpCompatible(const CBmpInfo& other) const;
        // Sets width and height; nothing else changes.
        void SetSize(const CSize& size);

        // Bytes of the block that can be read safely (the owned length, or the computed
        // length when attached).
        std::uint64_t SafeLength() const;
        // The colour-table entry `index`, or null when it is not in the table or the block.
        const RGBQUAD* GetColorEntry(DWORD index) const;

        BITMAPINFOHEADER* m_pBmpInfo;
        DWORD m_nSize;
    };

    // The pixel block.
    class MFCQMUTILS_API CBmpBits {
    public:
        CBmpBits() : m_pPtr(nullptr), m_nSize(0) {}
        bool IsValid() const { return m_pPtr != nullptr; }

        BYTE* m_pPtr;
        DWORD m_nSize;
    };

    CDIBitmap();
    // Empty, then Copy(src, rect).
    CDIBitmap(const CDIBitmap& src, const CRect& rect);
    CDIBitmap(const CDIBitmap* pSrc, const CRect& rect);
    virtual ~CDIBitmap();

    // --- storage --------------------------------------------------------------------------
    bool Create(int width, int height, WORD bitCount);
    bool Create(BITMAPINFOHEADER* const pBI);
    bool Attach(BITMAPINFOHEADER* pBI);
    BITMAPINFOHEADER* Detach();
    void Destroy();
    // 0, or 0x8007000E when the pixel block cannot be allocated.
    LONG CopyFrom(const CDIBitmap& src);

    // --- accessors ------------------------------------------------------------------------
    int GetWidth() const { return m_BmpInfo.GetBmpWidth(); }
    int GetHeight() const { return m_BmpInfo.GetBmpHeight(); }
    CSize GetSize() const { return CSize(GetWidth(), GetHeight()); }
    void GetSize(SIZE& size) const;
    WORD GetBitCount() const { return m_BmpInfo.GetBitCount(); }
    DWORD GetBitsSize() const { return m_BmpBits.m_nSize; }
    RGBQUAD* GetColorTable() const { return m_BmpInfo.GetColorTable(); }
    DWORD GetColorTableSize() const { return m_BmpInfo.GetColorTableSize(); }
    DWORD GetInfoLength() const { return m_BmpInfo.GetInfoLength(); }
    void GetPelsPerMeter(LONG* pX, LONG* pY) const;
    void SetPelsPerMeter(LONG x, LONG y);
    bool IsValid() const { return m_BmpInfo.IsValid() && m_BmpBits.IsValid(); }
    bool IsAttached() const { return m_BmpInfo.IsValid() && m_BmpInfo.m_nSize == 0; }
    // The header (null when empty) and the pixel rows.
    const BITMAPINFOHEADER* GetInfoHeader() const { return m_BmpInfo.m_pBmpInfo; }
    BYTE* GetBits() { return m_BmpBits.m_pPtr; }
    const BYTE* GetBits() const { return m_BmpBits.m_pPtr; }

    // --- rows and addressing --------------------------------------------------------------
    DWORD ActualBitsPerLine() const { return ActualBitsPerLine(GetWidth(), GetBitCount()); }
    DWORD ActualBytesPerLine() const { return ActualBytesPerLine(GetWidth(), GetBitCount()); }
    DWORD DWAlignedBytesPerLine() const { return DWAlignedBytesPerLine(GetWidth(), GetBitCount()); }
    static DWORD ActualBitsPerLine(int width, int bitCount);
    static DWORD ActualBytesPerLine(int width, int bitCount);
    static DWORD DWAlignedBytesPerLine(int width, int bitCount);
    static DWORD AlignWidth(DWORD bits) { return BitsAlignToDWord(bits) / 8; }
    static DWORD BitsAlignToByte(DWORD n) { return AlignValue(n, 8); }
    static DWORD BitsAlignToDWord(DWORD n) { return AlignValue(n, 32); }
    static DWORD BytesAlignToDWord(DWORD n) { return AlignValue(n, 4); }
    static DWORD AlignValue(DWORD n, DWORD a) { return a ? (n + a - 1) / a * a : n; }
    // Stride x height; 0 when the header describes no pixels or more than 32 bits can count.
    DWORD CalcBmpBitsSize() const;
    // The row stride in 64 bits (0 for a width or depth below 1), free of overflow.
    static std::uint64_t Stride64(std::int64_t width, std::int64_t bitCount);
    LONG CalcByteIndex(const CPoint& point) const;
    CPoint BottomUpToTopDown(const CPoint& point) const;
    static CPoint BottomUpToTopDown(const CPoint& point, int height);
    CRect BottomUpToTopDown(const CRect& rect) const;

    // --- pixels (storage coordinates) -----------------------------------------------------
    DWORD GetPixelValue(const CPoint& point) const;
    void SetPixelValue(const CPoint& point, DWORD value);
    COLORREF GetPixelColor(const CPoint& point) const;
    COLORREF GetPixelColor16(const CPoint& point) const;
    // 24 and 32 bits only; other depths report "0" and write nothing.
    void SetPixelColor(const CPoint& point, COLORREF color);

    // --- colour adjustments ---------------------------------------------------------------
    void AdjustBrightness(int iBrightness);
    void AdjustContrast(int iContrast);
    void AdjustContrastBrightness(int iContrast, int iBrightness);
    void AdjustRGB(int iRed, int iGreen, int iBlue);
    void BlackAndWhite();

    // --- geometry and compositing (picture coordinates) -----------------------------------
    int Resize(const CSize& size);
    void Rotate(eRotate angle);
    void Mirror();
    void Crop(const CRect& rect);
    int CanvasSize(int top, int bottom, int left, int right, DWORD colour);
    int AddBorders(int top, int bottom, int left, int right, DWORD colour);
    void Fill(const CRect& rect, DWORD colour);
    void Copy(const CDIBitmap& src, CRect rect);
    bool CopyAs24Bits(const CDIBitmap& src);
    LONG Ensure_24Bits();
    bool Paste(const CDIBitmap& src, CPoint at);
    bool IsFitForPaste(const CDIBitmap& src) const;

    // --- files, streams, clipboard and drawing --------------------------------------------
    bool Load(CFile& file, bool bFileHeader);
    bool Save(CFile& file, bool bFileHeader);
    int CreateFromBMPFile(IStream* pStream);
    int CreateFromAnyFile(IStream* pStream);
    bool GetFromClipboard(CWnd* pWnd);
    bool SetToClipboard(CWnd* pWnd);
    bool SetToClipboard(const CRect& rect, CWnd* pWnd);
    static bool IsGetFromClipboardAvailable();
    bool Draw(void* hDrawDib, CDC* pDC, RECT& destRect, RECT& srcRect) const;
    void BitBlt(HDC hDC, int x, int y, int cx, int cy, int xSrc, int ySrc) const;
    void StretchBlt(HDC hDC, int x, int y, int cx, int cy, int xSrc, int ySrc, int cxSrc, int cySrc) const;
    bool IsReadyToJpegCompression() const;

protected:
    // Takes over src's pixel block and a copy of its header; src ends empty. The target's
    // pixel holder must be empty.
    void MoveFrom(CDIBitmap& src);
    // Paste of a bitmap with the same layout: raw rows into the storage rectangle.
    bool PasteCompatible(const CDIBitmap& src, const CRect& storageRect);
    // Paste into a 24-bit bitmap through the source's colours.
    bool PasteIncompatible(const CDIBitmap& src, const CRect& storageRect);
    // Create(BITMAPINFOHEADER*) from a packed DIB of which `available` bytes may be read.
    bool CreateFromPacked(const BITMAPINFOHEADER* pBI, std::uint64_t available);
    // Makes `result` a bitmap of the given size with a copy of `model`'s header block (its
    // depth, table or masks, resolution); the pixels are not initialised.
    static bool CreateLike(CDIBitmap& result, const CDIBitmap& model, std::int64_t width, std::int64_t height);

    CBmpInfo m_BmpInfo;
    CBmpBits m_BmpBits;

private:
    // Copying from a non-const bitmap is forbidden: reported ("FALSE"), nothing copied.
    CDIBitmap(CDIBitmap& src);
    CDIBitmap& operator=(CDIBitmap& src);
};

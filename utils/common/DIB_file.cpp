// CDIBitmap and the BMP file: a packed DIB (header, masks or colour table, rows), with the
// 14-byte file header in front when asked, through a framework file or a COM stream.
//
// Every length a file claims is checked against what the file holds before anything is
// allocated, so a short or lying file is refused instead of making the reader allocate or
// read past its end.
#include <cstdlib>
#include <cstring>
#include <memory>

#include "utils/common/CVLogger.h"
#include "utils/common/DIB.h"
#include "utils/common/DIB_internal.h"

#define QM_SOURCE_MODULE "Common\\DIB"

namespace {

struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};
template <class T>
using Block = std::unique_ptr<T, FreeDeleter>;

constexpr WORD kBM = 0x4D42;

}  // namespace

bool CDIBitmap::Load(CFile& file, bool bFileHeader) {
    bool empty = CVASSERT(!m_BmpBits.IsValid());
    empty = CVASSERT(!m_BmpInfo.IsValid()) && empty;
    CVASSERT(file.m_hFile);
    // Whatever the bitmap held is let go first, so that nothing leaks.
    if (!empty) {
        if (IsAttached())
            Detach();
        else
            Destroy();
    }
    ULONGLONG length = file.GetLength();
    file.SeekToBegin();
    std::uint64_t start = 0;
    if (bFileHeader) {
        BITMAPFILEHEADER fh;
        if (file.Read(&fh, 14) != 14 || fh.bfType != kBM || fh.bfSize != length) return false;
        start = 14;
    }
    Block<BITMAPINFOHEADER> info(static_cast<BITMAPINFOHEADER*>(std::malloc(40)));
    if (!info || file.Read(info.get(), 40) != 40 || !qm::dib::AcceptableHeader(info.get())) return false;
    CBmpInfo probe;
    probe.m_pBmpInfo = info.get();
    std::uint64_t infoLen = probe.SafeLength();
    if (infoLen > length - start) return false;
    if (infoLen > 40) {
        auto* grown = static_cast<BITMAPINFOHEADER*>(std::realloc(info.get(), (size_t)infoLen));
        if (!grown) return false;
        info.release();
        info.reset(grown);
        UINT rest = (UINT)(infoLen - 40);
        if (file.Read(reinterpret_cast<BYTE*>(grown) + 40, rest) != rest) return false;
    }
    std::uint64_t bits = qm::dib::BitsSize(info->biWidth, info->biHeight, info->biBitCount);
    if (bits == 0 || bits > length - start - infoLen) return false;
    Block<BYTE> pixels(qm::dib::NewPixelBlock((size_t)bits));
    if (!pixels || file.Read(pixels.get(), (UINT)bits) != bits) return false;
    m_BmpInfo.m_pBmpInfo = info.release();
    m_BmpInfo.m_nSize = (DWORD)infoLen;
    m_BmpBits.m_pPtr = pixels.release();
    m_BmpBits.m_nSize = (DWORD)bits;
    return true;
}

bool CDIBitmap::Save(CFile& file, bool bFileHeader) {
    if (!CVASSERT(IsValid())) return false;
    std::uint64_t infoLen = GetInfoLength();
    std::uint64_t bits = m_BmpBits.m_nSize;
    std::uint64_t total = infoLen + bits + (bFileHeader ? 14 : 0);
    std::uint64_t padded = (total + 3) / 4 * 4;
    DWORD pad = (DWORD)(padded - total);
    // A file header counts its size in 32 bits.
    if (padded > 0xFFFFFFFFull) return false;
    m_BmpInfo.m_pBmpInfo->biSizeImage = (DWORD)(bits + pad);
    file.SetLength(padded);
    file.SeekToBegin();
    if (bFileHeader) {
        BITMAPFILEHEADER fh;
        fh.bfType = kBM;
        fh.bfSize = (DWORD)padded;
        fh.bfReserved1 = 0;
        fh.bfReserved2 = 0;
        fh.bfOffBits = (DWORD)(infoLen + 14);
        file.Write(&fh, 14);
    }
    file.Write(m_BmpInfo.m_pBmpInfo, (UINT)infoLen);
    file.Write(m_BmpBits.m_pPtr, (UINT)bits);
    static const BYTE zeros[4] = {0, 0, 0, 0};
    if (pad) file.Write(zeros, pad);
    return true;
}

int CDIBitmap::CreateFromBMPFile(IStream* pStream) {
    if (!pStream) return 0;
    STATSTG st;
    if (FAILED(pStream->Stat(&st, STATFLAG_NONAME)) || st.cbSize.QuadPart > 0xFFFFFFFFull) return 0;
    ULONG size = (ULONG)st.cbSize.QuadPart;
    // Read two bytes in, so that the info header after the 14-byte file header is aligned.
    Block<BYTE> block(static_cast<BYTE*>(std::malloc((size_t)size + 2)));
    if (!block) return 0;
    BYTE* data = block.get() + 2;
    LARGE_INTEGER zero;
    zero.QuadPart = 0;
    ULONG read = 0;
    if (FAILED(pStream->Seek(zero, STREAM_SEEK_SET, nullptr))) return 0;
    HRESULT hr = pStream->Read(data, size, &read);
    if (hr != S_OK || read != size || size < 2 || data[0] != 'B' || data[1] != 'M') return 0;
    // The packed DIB after the file header may not reach past the bytes read.
    if (size < 14) return 0;
    return CreateFromPacked(reinterpret_cast<const BITMAPINFOHEADER*>(data + 14), size - 14) ? 1 : 0;
}

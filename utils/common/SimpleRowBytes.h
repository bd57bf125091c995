// CSimpleRowBytes: a byte buffer on the library's private heap. Its length is not stored but
// asked of the heap. The heap is created once when the library loads and is not serialized,
// so a buffer must be used from one thread at a time.
#pragma once

#include "utils/framework/wintypes.h"
#include "utils/framework/export.h"

class MFCQMUTILS_API CSimpleRowBytes {
public:
    CSimpleRowBytes();
    ~CSimpleRowBytes();
    CSimpleRowBytes(const CSimpleRowBytes& src);

    // Frees the old block; for size > 0 allocates a new one (not zero-filled). Null for size 0
    // or when the heap fails (traced and reported).
    unsigned char* AllocBuffer(ULONG size);
    // With bGrowOnly and size <= the current size the block is returned unchanged; otherwise
    // the block is resized keeping its contents (a failed resize leaves no block), or
    // allocated when there is none.
    unsigned char* ReAllocBuffer(ULONG size, bool bGrowOnly);

    unsigned char* GetBuffer() { return m_pBytes; }
    const unsigned char* GetBuffer() const { return m_pBytes; }
    ULONG GetBufferSize() const;
    bool IsValid() const;

    // Takes a copy of a valid source block, or frees the own block when the source has none.
    // Raises CQMWException ("m_pBytes != NULL") when the copy cannot be allocated.
    void Copy(const CSimpleRowBytes& src);
    CSimpleRowBytes& operator=(const CSimpleRowBytes& src);
    bool operator==(const CSimpleRowBytes& other) const;
    bool operator!=(const CSimpleRowBytes& other) const { return !(*this == other); }

    // Room for the bytes and a 4-byte length prefix.
    ULONG GetDiskSizeEstimate() const;
    ULONG GetMemSizeEstimate(bool bWithThis) const;

    static HANDLE m_hHeap;

private:
    void FreeBuffer();

    unsigned char* m_pBytes;
};

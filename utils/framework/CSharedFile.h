// The framework's shared memory file: a CMemFile whose memory is one global memory block, so
// that the block can be handed to the clipboard (Detach) or a block from it read and written
// as a file (SetHandle).
#pragma once

#include "utils/framework/CFile.h"
#include "utils/framework/winclipboard.h"

class MFCQMUTILS_API CSharedFile : public CMemFile {
public:
    explicit CSharedFile(UINT nAllocFlags = GMEM_DDESHARE | GMEM_MOVEABLE, UINT nGrowBytes = 4096);
    ~CSharedFile() override;

    // Hands the block to the caller (cut to the file's length) and leaves the file empty.
    HGLOBAL Detach();
    // Uses the caller's block: the file is its whole contents; with bAllowGrow false writing
    // past its end throws CMemoryException. A handle that is not a block gives an empty file.
    void SetHandle(HGLOBAL hGlobalMemory, BOOL bAllowGrow = TRUE);

protected:
    BYTE* Alloc(size_t nBytes) override;
    BYTE* Realloc(BYTE* lpMem, size_t nBytes) override;
    void Free(BYTE* lpMem) override;
    void GrowFile(size_t dwNewLen) override;

    UINT m_nAllocFlags;
    HGLOBAL m_hGlobalMemory = nullptr;
    BOOL m_bAllowGrow = TRUE;
};

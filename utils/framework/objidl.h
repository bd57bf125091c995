// The COM stream interface IStream, as the bitmap loaders read it. On Windows it is the
// system's own (<objidl.h>); elsewhere the same interface shape (IUnknown, ISequentialStream,
// IStream with their methods in the system's order) with the types its methods take.
#pragma once

#include "utils/framework/wintypes.h"

#if defined(_WIN32)
#include <objidl.h>
#else

struct GUID {
    DWORD Data1;
    WORD Data2;
    WORD Data3;
    BYTE Data4[8];
};
typedef GUID IID;
typedef const IID& REFIID;
typedef wchar_t OLECHAR;
typedef OLECHAR* LPOLESTR;

union LARGE_INTEGER {
    struct {
        DWORD LowPart;
        LONG HighPart;
    } u;
    LONGLONG QuadPart;
};
union ULARGE_INTEGER {
    struct {
        DWORD LowPart;
        DWORD HighPart;
    } u;
    ULONGLONG QuadPart;
};

struct STATSTG {
    LPOLESTR pwcsName;
    DWORD type;
    ULARGE_INTEGER cbSize;
    FILETIME mtime;
    FILETIME ctime;
    FILETIME atime;
    DWORD grfMode;
    DWORD grfLocksSupported;
    GUID clsid;
    DWORD grfStateBits;
    DWORD reserved;
};

#define STGTY_STREAM 2
#define STATFLAG_DEFAULT 0
#define STATFLAG_NONAME 1
#define STREAM_SEEK_SET 0
#define STREAM_SEEK_CUR 1
#define STREAM_SEEK_END 2
#define STG_E_INVALIDFUNCTION ((HRESULT)0x80030001L)
#define STG_E_READFAULT ((HRESULT)0x8003001EL)
#define STG_E_WRITEFAULT ((HRESULT)0x8003001DL)
#define STG_E_MEDIUMFULL ((HRESULT)0x80030070L)
#define STG_E_INVALIDPOINTER ((HRESULT)0x80030009L)
#define E_NOINTERFACE ((HRESULT)0x80004002L)
#define E_POINTER ((HRESULT)0x80004003L)

struct IUnknown {
    virtual HRESULT QueryInterface(REFIID riid, void** ppvObject) = 0;
    virtual ULONG AddRef() = 0;
    virtual ULONG Release() = 0;
};

struct ISequentialStream : IUnknown {
    virtual HRESULT Read(void* pv, ULONG cb, ULONG* pcbRead) = 0;
    virtual HRESULT Write(const void* pv, ULONG cb, ULONG* pcbWritten) = 0;
};

struct IStream : ISequentialStream {
    virtual HRESULT Seek(LARGE_INTEGER dlibMove, DWORD dwOrigin, ULARGE_INTEGER* plibNewPosition) = 0;
    virtual HRESULT SetSize(ULARGE_INTEGER libNewSize) = 0;
    virtual HRESULT CopyTo(IStream* pstm, ULARGE_INTEGER cb, ULARGE_INTEGER* pcbRead, ULARGE_INTEGER* pcbWritten) = 0;
    virtual HRESULT Commit(DWORD grfCommitFlags) = 0;
    virtual HRESULT Revert() = 0;
    virtual HRESULT LockRegion(ULARGE_INTEGER libOffset, ULARGE_INTEGER cb, DWORD dwLockType) = 0;
    virtual HRESULT UnlockRegion(ULARGE_INTEGER libOffset, ULARGE_INTEGER cb, DWORD dwLockType) = 0;
    virtual HRESULT Stat(STATSTG* pstatstg, DWORD grfStatFlag) = 0;
    virtual HRESULT Clone(IStream** ppstm) = 0;
};

#endif  // !_WIN32

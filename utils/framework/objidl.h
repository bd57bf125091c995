// The COM interfaces and structures the library speaks: IStream (the bitmap loaders),
// IStorage and IEnumSTATSTG (compound files), IDataObject and IEnumFORMATETC (OLE data
// transfer), FORMATETC, STGMEDIUM and OBJECTDESCRIPTOR. On Windows they are the system's own
// (<objidl.h>, <oleidl.h>); elsewhere the same interface shapes (methods in the system's
// order) with the types their methods take. OLECHAR is wchar_t there, 4 bytes on POSIX: byte
// layouts that hold UTF-16 use char16_t instead.
#pragma once

#include "utils/framework/winclipboard.h"
#include "utils/framework/wingdc.h"
#include "utils/framework/wintypes.h"

#if defined(_WIN32)
#include <objidl.h>
#include <ole2.h>
#else

struct GUID {
    DWORD Data1;
    WORD Data2;
    WORD Data3;
    BYTE Data4[8];
};
typedef GUID IID;
typedef GUID CLSID;
typedef const IID& REFIID;
typedef const CLSID& REFCLSID;
typedef CLSID* LPCLSID;
typedef wchar_t OLECHAR;
typedef OLECHAR* LPOLESTR;
typedef const OLECHAR* LPCOLESTR;
typedef LPOLESTR* SNB;

// COM methods use the system's calling convention on Windows; there is one here.
#define STDMETHODCALLTYPE

inline bool IsEqualGUID(const GUID& a, const GUID& b) {
    return a.Data1 == b.Data1 && a.Data2 == b.Data2 && a.Data3 == b.Data3 &&
           __builtin_memcmp(a.Data4, b.Data4, 8) == 0;
}
#define IsEqualIID(a, b) IsEqualGUID(a, b)
inline constexpr IID IID_IUnknown = {0x00000000, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IDataObject = {0x0000010E, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
inline constexpr IID IID_IEnumFORMATETC = {0x00000103, 0x0000, 0x0000, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

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

#define STGTY_STORAGE 1
#define STGTY_STREAM 2
#define STGTY_LOCKBYTES 3
#define STGTY_PROPERTY 4
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
#define STG_E_FILENOTFOUND ((HRESULT)0x80030002L)
#define STG_E_PATHNOTFOUND ((HRESULT)0x80030003L)
#define STG_E_ACCESSDENIED ((HRESULT)0x80030005L)
#define STG_E_INVALIDHANDLE ((HRESULT)0x80030006L)
#define STG_E_INSUFFICIENTMEMORY ((HRESULT)0x80030008L)
#define STG_E_INVALIDPARAMETER ((HRESULT)0x80030057L)
#define STG_E_FILEALREADYEXISTS ((HRESULT)0x80030050L)
#define STG_E_INVALIDNAME ((HRESULT)0x800300FCL)
#define STG_E_INVALIDFLAG ((HRESULT)0x800300FFL)
#define STG_E_REVERTED ((HRESULT)0x80030102L)
#define STG_E_DOCFILECORRUPT ((HRESULT)0x80030109L)
#define STG_E_UNIMPLEMENTEDFUNCTION ((HRESULT)0x800300FEL)
#define DV_E_FORMATETC ((HRESULT)0x80040064L)
#define DV_E_LINDEX ((HRESULT)0x80040068L)
#define DV_E_TYMED ((HRESULT)0x80040069L)
#define DV_E_DVASPECT ((HRESULT)0x8004006BL)
#define OLE_E_ADVISENOTSUPPORTED ((HRESULT)0x80040003L)
#define DATA_S_SAMEFORMATETC ((HRESULT)0x00040130L)
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

// Storage modes.
#define STGM_DIRECT 0x00000000L
#define STGM_TRANSACTED 0x00010000L
#define STGM_READ 0x00000000L
#define STGM_WRITE 0x00000001L
#define STGM_READWRITE 0x00000002L
#define STGM_SHARE_DENY_NONE 0x00000040L
#define STGM_SHARE_DENY_READ 0x00000030L
#define STGM_SHARE_DENY_WRITE 0x00000020L
#define STGM_SHARE_EXCLUSIVE 0x00000010L
#define STGM_CREATE 0x00001000L
#define STGM_FAILIFTHERE 0x00000000L
#define STGM_DELETEONRELEASE 0x04000000L
#define STGC_DEFAULT 0
#define STGMOVE_MOVE 0
#define STGMOVE_COPY 1

struct IEnumSTATSTG : IUnknown {
    virtual HRESULT Next(ULONG celt, STATSTG* rgelt, ULONG* pceltFetched) = 0;
    virtual HRESULT Skip(ULONG celt) = 0;
    virtual HRESULT Reset() = 0;
    virtual HRESULT Clone(IEnumSTATSTG** ppenum) = 0;
};

struct IStorage : IUnknown {
    virtual HRESULT CreateStream(const OLECHAR* pwcsName, DWORD grfMode, DWORD reserved1, DWORD reserved2,
                                 IStream** ppstm) = 0;
    virtual HRESULT OpenStream(const OLECHAR* pwcsName, void* reserved1, DWORD grfMode, DWORD reserved2,
                               IStream** ppstm) = 0;
    virtual HRESULT CreateStorage(const OLECHAR* pwcsName, DWORD grfMode, DWORD reserved1, DWORD reserved2,
                                  IStorage** ppstg) = 0;
    virtual HRESULT OpenStorage(const OLECHAR* pwcsName, IStorage* pstgPriority, DWORD grfMode, SNB snbExclude,
                                DWORD reserved, IStorage** ppstg) = 0;
    virtual HRESULT CopyTo(DWORD ciidExclude, const IID* rgiidExclude, SNB snbExclude, IStorage* pstgDest) = 0;
    virtual HRESULT MoveElementTo(const OLECHAR* pwcsName, IStorage* pstgDest, const OLECHAR* pwcsNewName,
                                  DWORD grfFlags) = 0;
    virtual HRESULT Commit(DWORD grfCommitFlags) = 0;
    virtual HRESULT Revert() = 0;
    virtual HRESULT EnumElements(DWORD reserved1, void* reserved2, DWORD reserved3, IEnumSTATSTG** ppenum) = 0;
    virtual HRESULT DestroyElement(const OLECHAR* pwcsName) = 0;
    virtual HRESULT RenameElement(const OLECHAR* pwcsOldName, const OLECHAR* pwcsNewName) = 0;
    virtual HRESULT SetElementTimes(const OLECHAR* pwcsName, const FILETIME* pctime, const FILETIME* patime,
                                    const FILETIME* pmtime) = 0;
    virtual HRESULT SetClass(REFCLSID clsid) = 0;
    virtual HRESULT SetStateBits(DWORD grfStateBits, DWORD grfMask) = 0;
    virtual HRESULT Stat(STATSTG* pstatstg, DWORD grfStatFlag) = 0;
};
typedef IStorage* LPSTORAGE;
typedef IStream* LPSTREAM;

// OLE data transfer.
typedef WORD CLIPFORMAT;
struct DVTARGETDEVICE;

#define DVASPECT_CONTENT 1
#define DVASPECT_THUMBNAIL 2
#define DVASPECT_ICON 4
#define DVASPECT_DOCPRINT 8

#define TYMED_NULL 0
#define TYMED_HGLOBAL 1
#define TYMED_FILE 2
#define TYMED_ISTREAM 4
#define TYMED_ISTORAGE 8
#define TYMED_GDI 16
#define TYMED_MFPICT 32
#define TYMED_ENHMF 64

struct FORMATETC {
    CLIPFORMAT cfFormat;
    DVTARGETDEVICE* ptd;
    DWORD dwAspect;
    LONG lindex;
    DWORD tymed;
};
typedef FORMATETC* LPFORMATETC;

typedef void* HENHMETAFILE;
struct STGMEDIUM {
    DWORD tymed;
    union {
        HBITMAP hBitmap;
        HGLOBAL hMetaFilePict;
        HENHMETAFILE hEnhMetaFile;
        HGLOBAL hGlobal;
        LPOLESTR lpszFileName;
        IStream* pstm;
        IStorage* pstg;
    };
    IUnknown* pUnkForRelease;
};
typedef STGMEDIUM* LPSTGMEDIUM;

struct IEnumFORMATETC : IUnknown {
    virtual HRESULT Next(ULONG celt, FORMATETC* rgelt, ULONG* pceltFetched) = 0;
    virtual HRESULT Skip(ULONG celt) = 0;
    virtual HRESULT Reset() = 0;
    virtual HRESULT Clone(IEnumFORMATETC** ppenum) = 0;
};

struct IAdviseSink;
struct IEnumSTATDATA;
#define DATADIR_GET 1
#define DATADIR_SET 2

struct IDataObject : IUnknown {
    virtual HRESULT GetData(FORMATETC* pformatetcIn, STGMEDIUM* pmedium) = 0;
    virtual HRESULT GetDataHere(FORMATETC* pformatetc, STGMEDIUM* pmedium) = 0;
    virtual HRESULT QueryGetData(FORMATETC* pformatetc) = 0;
    virtual HRESULT GetCanonicalFormatEtc(FORMATETC* pformatectIn, FORMATETC* pformatetcOut) = 0;
    virtual HRESULT SetData(FORMATETC* pformatetc, STGMEDIUM* pmedium, BOOL fRelease) = 0;
    virtual HRESULT EnumFormatEtc(DWORD dwDirection, IEnumFORMATETC** ppenumFormatEtc) = 0;
    virtual HRESULT DAdvise(FORMATETC* pformatetc, DWORD advf, IAdviseSink* pAdvSink, DWORD* pdwConnection) = 0;
    virtual HRESULT DUnadvise(DWORD dwConnection) = 0;
    virtual HRESULT EnumDAdvise(IEnumSTATDATA** ppenumAdvise) = 0;
};
typedef IDataObject* LPDATAOBJECT;

// The object descriptor's fixed part; its strings follow it in the same block.
struct SIZEL {
    LONG cx;
    LONG cy;
};
struct POINTL {
    LONG x;
    LONG y;
};
struct OBJECTDESCRIPTOR {
    ULONG cbSize;
    CLSID clsid;
    DWORD dwDrawAspect;
    SIZEL sizel;
    POINTL pointl;
    DWORD dwStatus;
    DWORD dwFullUserTypeName;
    DWORD dwSrcOfCopy;
};
typedef OBJECTDESCRIPTOR* LPOBJECTDESCRIPTOR;

#endif  // !_WIN32

static_assert(sizeof(OBJECTDESCRIPTOR) == 52, "the object descriptor's fixed part is 52 bytes");

// The framework's OLE data transfer classes. COleDataSource offers data (global memory blocks
// cached by FORMATETC) as an IDataObject, on the clipboard or to whoever asks; COleDataObject
// reads an IDataObject: the clipboard's or one given to it.
//
// A COleDataSource is created with new and reference counted: SetClipboard hands it to the
// clipboard, which releases it (deleting it) when other data is put there or the clipboard is
// flushed; do not delete it after SetClipboard. Without SetClipboard, delete it or call
// ExternalRelease. On Windows the thread that uses the clipboard is initialised for OLE on
// first use and must pump messages while the data stays there.
#pragma once

#include <vector>

#include "utils/framework/CFile.h"
#include "utils/framework/objidl.h"
#include "utils/framework/export.h"

class MFCQMUTILS_API COleDataSource {
public:
    COleDataSource();
    virtual ~COleDataSource();
    COleDataSource(const COleDataSource&) = delete;
    COleDataSource& operator=(const COleDataSource&) = delete;

    // Takes ownership of the block (freed by Empty or when replaced). Caching the same
    // FORMATETC again replaces the earlier item. lpFormatEtc null: cfFormat, content aspect,
    // lindex -1, TYMED_HGLOBAL (TYMED_MFPICT for CF_METAFILEPICT).
    void CacheGlobalData(CLIPFORMAT cfFormat, HGLOBAL hGlobal, LPFORMATETC lpFormatEtc = nullptr);
    // Takes ownership of the medium (released by Empty or when replaced): a block, a stream or
    // storage, or a named file (TYMED_FILE), which readers open by name and which is deleted
    // with the item when the medium came without pUnkForRelease.
    void CacheData(CLIPFORMAT cfFormat, LPSTGMEDIUM lpStgMedium, LPFORMATETC lpFormatEtc = nullptr);
    // Frees every cached item.
    void Empty();

    // Puts the source on the clipboard (the clipboard takes over the creator's reference).
    void SetClipboard();
    // Makes what is on the clipboard independent of the source put there.
    static void FlushClipboard();
    // The source on the clipboard if it is one of ours, else null.
    static COleDataSource* GetClipboardOwner();

    // The source as an IDataObject (no reference added).
    IDataObject* GetDataObject();
    DWORD ExternalAddRef();
    // Deletes the source when the count reaches 0.
    DWORD ExternalRelease();

private:
    struct Item {
        FORMATETC formatEtc;
        STGMEDIUM medium;
    };
    class XDataObject;
    friend class XDataObject;

    const Item* Find(const FORMATETC& fe, HRESULT* why) const;

    std::vector<Item> m_items;
    XDataObject* m_xDataObject;
    ULONG m_dwRef = 1;
};

class MFCQMUTILS_API COleDataObject {
public:
    COleDataObject();
    ~COleDataObject();
    COleDataObject(const COleDataObject&) = delete;
    COleDataObject& operator=(const COleDataObject&) = delete;

    // Reads from lpDataObject; with bAutoRelease the object releases it when detached.
    void Attach(LPDATAOBJECT lpDataObject, BOOL bAutoRelease = TRUE);
    // Reads from what is on the clipboard; 0 when it cannot be reached.
    BOOL AttachClipboard();
    LPDATAOBJECT Detach();
    void Release();

    // Non-zero when the data is offered in the format (and, with lpFormatEtc, as it says).
    BOOL IsDataAvailable(CLIPFORMAT cfFormat, LPFORMATETC lpFormatEtc = nullptr);
    // The medium as the data object gives it (the caller releases it with ReleaseStgMedium).
    BOOL GetData(CLIPFORMAT cfFormat, LPSTGMEDIUM lpStgMedium, LPFORMATETC lpFormatEtc = nullptr);
    // A new global block the caller frees; null when the data is not there.
    HGLOBAL GetGlobalData(CLIPFORMAT cfFormat, LPFORMATETC lpFormatEtc = nullptr);
    // A file over the data the caller deletes (a memory file over a copy of a global block or
    // stream, or the named file opened for reading); null when the data is not there.
    CFile* GetFileData(CLIPFORMAT cfFormat, LPFORMATETC lpFormatEtc = nullptr);

    void BeginEnumFormats();
    BOOL GetNextFormat(LPFORMATETC lpFormatEtc);

private:
    LPDATAOBJECT m_lpDataObject = nullptr;
    BOOL m_bAutoRelease = TRUE;
    IEnumFORMATETC* m_lpEnumerator = nullptr;
};

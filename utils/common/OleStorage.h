// Compound files (OLE structured storage): a storage on disk or in memory holding substorages
// and streams by name, as the system's IStorage and IStream interfaces, with helpers that take
// ANSI names. A host keeps attachments in compound files and a whole storage as one stream of
// another document (SaveToStream / LoadFromStream).
//
// Every helper returns the system's HRESULT (S_OK on success, an STG_E_* code otherwise) and
// never throws. Element names are 1 to 31 characters, none of \ / : ! (STG_E_INVALIDNAME
// otherwise, checked here on every target), compared without case. A file that is not a
// compound file gives STG_E_FILEALREADYEXISTS (the system's code for it); a damaged one
// STG_E_DOCFILECORRUPT or STG_E_READFAULT; a missing element STG_E_FILENOTFOUND.
//
// On Windows the storages are ole32's, in direct mode: writes reach the file as they go. On
// POSIX the element tree is kept in memory and the whole file is written at Commit on the root
// storage (and at the last Release of anything open in it, when it changed); times and state
// bits are not kept there.
#pragma once

#include <vector>

#include "utils/framework/CString.h"
#include "utils/framework/objidl.h"
#include "utils/framework/export.h"

// One element of a storage, as EnumElements reports it.
struct OleStorageElement {
    CString strName;
    DWORD type = 0;      // STGTY_STORAGE or STGTY_STREAM
    ULONGLONG size = 0;  // a stream's bytes (0 for a storage)
    CLSID clsid{};       // a storage's class id
};

class MFCQMUTILS_API OleStorage {
public:
    // A new compound file (one already there is replaced), open for reading and writing.
    static HRESULT CreateOnFile(LPCTSTR lpszPath, IStorage** ppStorage);
    // An existing compound file, read-only unless bWritable.
    static HRESULT OpenOnFile(LPCTSTR lpszPath, BOOL bWritable, IStorage** ppStorage);
    // A new storage in memory.
    static HRESULT CreateInMemory(IStorage** ppStorage);

    // Substorages and streams by name. Create replaces an element of that name unless
    // bFailIfThere (then STG_E_FILEALREADYEXISTS); an element can be open once at a time.
    static HRESULT CreateSubStorage(IStorage* pParent, LPCTSTR lpszName, IStorage** ppStorage,
                                    BOOL bFailIfThere = FALSE);
    static HRESULT OpenSubStorage(IStorage* pParent, LPCTSTR lpszName, BOOL bWritable, IStorage** ppStorage);
    static HRESULT CreateStream(IStorage* pParent, LPCTSTR lpszName, IStream** ppStream, BOOL bFailIfThere = FALSE);
    static HRESULT OpenStream(IStorage* pParent, LPCTSTR lpszName, BOOL bWritable, IStream** ppStream);

    // Replaces the stream `lpszName` with the bytes (creating it when missing).
    static HRESULT WriteStream(IStorage* pParent, LPCTSTR lpszName, const void* pData, size_t nSize);
    // All bytes of the stream `lpszName`.
    static HRESULT ReadStream(IStorage* pParent, LPCTSTR lpszName, std::vector<BYTE>& data);

    // The storage's elements in directory order (names in ANSI; '?' for what it cannot hold).
    static HRESULT ListElements(IStorage* pStorage, std::vector<OleStorageElement>& elements);
    static HRESULT SetClass(IStorage* pStorage, REFCLSID clsid);
    static HRESULT GetClass(IStorage* pStorage, CLSID& clsid);

    // Writes the whole storage (class id, substorages, streams) as compound-file bytes into the
    // stream at its current position.
    static HRESULT SaveToStream(IStorage* pStorage, IStream* pStream);
    // A storage in memory from compound-file bytes read from the stream's current position to
    // its end.
    static HRESULT LoadFromStream(IStream* pStream, IStorage** ppStorage);

    // Commits the storage (on POSIX, the root storage writes the whole file here).
    static HRESULT Commit(IStorage* pStorage);

    // Non-zero when the name can be an element's.
    static BOOL IsValidElementName(LPCTSTR lpszName);
};

// The OLE clipboard: a data object put on the clipboard (OleSetClipboard), a data object over
// what the clipboard holds (OleGetClipboard), the clipboard made independent of the object
// that was put there (OleFlushClipboard) and whether an object is still the one put there
// (OleIsCurrentClipboard). The clipboard keeps a reference to the object it was given until
// another is set, it is flushed or emptied.
//
// Windows answers with ole32 (the calling thread is initialised for OLE on first use). POSIX
// puts a copy of every global-memory format the object offers on the library's clipboard
// service at once, and reads the clipboard through a small data object over that service.
#pragma once

#include "utils/framework/objidl.h"

namespace qm::platform {

// Null clears the clipboard of the current object.
HRESULT OleClipboardSet(IDataObject* object);
HRESULT OleClipboardGet(IDataObject** object);
HRESULT OleClipboardFlush();
// S_OK when the object is the clipboard's current one, S_FALSE otherwise.
HRESULT OleClipboardIsCurrent(IDataObject* object);

// An enumerator over a copy of the formats (SHCreateStdEnumFmtEtc).
HRESULT FormatEnumCreate(UINT count, const FORMATETC* formats, IEnumFORMATETC** enumerator);

}  // namespace qm::platform

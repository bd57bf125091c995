// File URLs and URL canonicalisation, as the lightweight shell and the Internet client
// library of the system provide them.
#pragma once

#include "utils/framework/wintypes.h"

#ifndef E_POINTER
#define E_POINTER ((HRESULT)0x80004003L)
#endif

namespace qm::platform {

// UrlCreateFromPathA(path, url, size, 0): a "file:" URL for path, or path itself when it is a
// URL already (S_FALSE). *size is the buffer's size on entry and the result's length on
// success; E_POINTER with the size needed when the buffer is too small.
HRESULT FileUrlFromPath(const char* path, char* url, DWORD* size);

// PathCreateFromUrlA(url, path, size, 0): the file path of a "file:" URL, escapes decoded;
// E_INVALIDARG for anything else. Same size convention.
HRESULT PathFromFileUrl(const char* url, char* path, DWORD* size);

// InternetCanonicalizeUrlA(url, buf, size, ICU_BROWSER_MODE): unsafe bytes of the path
// escaped, dot segments resolved, query and fragment left as they are. FALSE when the buffer
// is too small (*size is then the size needed).
BOOL CanonicalizeUrlForBrowser(const char* url, char* buf, DWORD* size);

}  // namespace qm::platform

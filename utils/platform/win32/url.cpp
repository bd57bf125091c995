#include "utils/platform/url.h"

#include <shlwapi.h>
#include <wininet.h>

namespace qm::platform {

HRESULT FileUrlFromPath(const char* path, char* url, DWORD* size) {
    return UrlCreateFromPathA(path, url, size, 0);
}

HRESULT PathFromFileUrl(const char* url, char* path, DWORD* size) {
    return PathCreateFromUrlA(url, path, size, 0);
}

BOOL CanonicalizeUrlForBrowser(const char* url, char* buf, DWORD* size) {
    return InternetCanonicalizeUrlA(url, buf, size, ICU_BROWSER_MODE);
}

}  // namespace qm::platform

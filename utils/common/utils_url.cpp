// Conversions between file paths and file URLs, URL canonicalisation and percent decoding.
#include <cstdint>
#include <vector>

#include "utils/common/CVLogger.h"
#include "utils/common/utils_mail.h"
#include "utils/framework/mbchar.h"
#include "utils/platform/url.h"

#define QM_SOURCE_MODULE "Common\\mfcutils"

namespace {

// The longest URL the host's browser control accepts, with its NUL.
const DWORD kUrlBufferSize = 2084;

// Kept as they are when a file URL is percent-encoded. "%" is among them so that the escapes
// the system wrote survive; "\\" and ":" keep drive paths readable.
bool IsKeptInUrl(unsigned char c) {
    if (mbc::IsAlnum(c)) return true;
    switch (c) {
    case '~': case '!': case '.': case '*': case '-': case ':': case '(': case ')':
    case '\'': case '/': case '\\': case '%':
        return true;
    default:
        return false;
    }
}

}  // namespace

CString Path2Url(CString path) {
    char buffer[kUrlBufferSize] = {};
    DWORD size = kUrlBufferSize;
    HRESULT hRes = qm::platform::FileUrlFromPath(path, buffer, &size);
    if (!CVASSERT(SUCCEEDED(hRes))) return CString();
    CString canonical = UlrCanonize(buffer);
    static const char kHex[] = "0123456789ABCDEF";
    CString url;
    url.Preallocate(canonical.GetLength() * 3);
    for (int i = 0; i < canonical.GetLength(); ++i) {
        unsigned char c = (unsigned char)canonical[i];
        if (IsKeptInUrl(c)) {
            url += (char)c;
        } else {
            url += '%';
            url += kHex[c >> 4];
            url += kHex[c & 15];
        }
    }
    return url;
}

CString UlrCanonize(CString url) {
    // Room for every byte escaped and then some. The call's own failure is not checked: the
    // buffer starts zeroed, so a failed call gives the empty string. A size beyond what a
    // DWORD holds is capped (the call then fails for want of room, which gives "").
    uint64_t wanted = 3 * (uint64_t)url.GetLength() + 1024;
    if (wanted > 0x7FFFFFFF) wanted = 0x7FFFFFFF;
    std::vector<char> buffer((size_t)wanted, 0);
    DWORD size = (DWORD)wanted;
    qm::platform::CanonicalizeUrlForBrowser(url, buffer.data(), &size);
    buffer.back() = 0;
    return CString(buffer.data());
}

CString Url2Path(CString url) {
    char buffer[kUrlBufferSize] = {};
    DWORD size = kUrlBufferSize;
    if (FAILED(qm::platform::PathFromFileUrl(url, buffer, &size))) return CString();
    buffer[kUrlBufferSize - 1] = 0;
    // The system has decoded the escapes already; decoding again turns an escaped "%" into
    // whatever it escapes ("%2541" ends as "A").
    return UrlDecode(buffer);
}

CString UrlDecode(CString s) {
    const int n = s.GetLength();
    CString out;
    out.Preallocate(n);
    for (int i = 0; i < n; ++i) {
        char c = s[i];
        if (c != '%') {
            out += c;
            continue;
        }
        // A "%" among the last two bytes is dropped and what follows it is copied.
        if (i + 2 >= n) continue;
        unsigned char hi = (unsigned char)s[i + 1], lo = (unsigned char)s[i + 2];
        if (mbc::IsXDigit(hi) && mbc::IsXDigit(lo)) {
            auto value = [](unsigned char h) { return mbc::IsDigit(h) ? h - '0' : (h | 0x20) - 'a' + 10; };
            out += (char)(value(hi) * 16 + value(lo));
        } else {
            // A malformed pair is consumed all the same and leaves a NUL byte. Kept on purpose.
            out += '\0';
        }
        i += 2;
    }
    return out;
}

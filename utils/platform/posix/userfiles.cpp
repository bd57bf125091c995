#include "utils/platform/userfiles.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "utils/platform/files.h"

namespace qm::platform {
namespace {

// Code page 1252's characters 0x80 to 0x9F (0 where the code page has none).
const std::uint16_t kHigh1252[32] = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                     0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                     0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                     0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

char To1252(std::uint16_t c) {
    if (c < 0x80 || (c >= 0xA0 && c <= 0xFF)) return (char)c;
    for (int i = 0; i < 32; ++i)
        if (kHigh1252[i] == c) return (char)(0x80 + i);
    return '?';
}

std::string HomeFolder() {
    const char* home = std::getenv("HOME");
    return home && *home == '/' ? home : "/";
}

// XDG_DOCUMENTS_DIR from user-dirs.dirs ("$HOME/Documents" or an absolute path).
std::string XdgDocuments() {
    const char* config = std::getenv("XDG_CONFIG_HOME");
    std::string file = (config && *config == '/' ? std::string(config) : HomeFolder() + "/.config") + "/user-dirs.dirs";
    std::ifstream in(file);
    std::string line;
    while (std::getline(in, line)) {
        if (line.rfind("XDG_DOCUMENTS_DIR=", 0) != 0) continue;
        std::string value = line.substr(18);
        if (value.size() >= 2 && value.front() == '"' && value.back() == '"') value = value.substr(1, value.size() - 2);
        if (value.rfind("$HOME", 0) == 0) value = HomeFolder() + value.substr(5);
        if (!value.empty() && value[0] == '/') return value;
    }
    return HomeFolder() + "/Documents";
}

}  // namespace

bool QueryFileStatus(const char* path, std::int64_t* modified, std::uint64_t* size) {
    std::string native;
    struct stat st;
    if (!path || !ToNativePath(path, native) || stat(native.c_str(), &st) != 0) return false;
    if (modified) *modified = (std::int64_t)st.st_mtime;
    if (size) *size = (std::uint64_t)st.st_size;
    return true;
}

bool HasUnicodeSignature(const void* data, int size) {
    const unsigned char* p = static_cast<const unsigned char*>(data);
    return p && size >= 2 && p[0] == 0xFF && p[1] == 0xFE;
}

int UnicodeToAnsi(const std::uint16_t* text, int count, char* out, int outSize) {
    if (!text || count < -1 || outSize < 0 || (outSize > 0 && !out)) return 0;
    if (count == -1) {  // up to and including the terminating zero
        count = 0;
        while (text[count]) ++count;
        ++count;
    }
    std::string result;
    for (int i = 0; i < count; ++i) {
        std::uint16_t c = text[i];
        // A surrogate pair is one character outside the code page: one '?'.
        if (c >= 0xD800 && c <= 0xDBFF && i + 1 < count && text[i + 1] >= 0xDC00 && text[i + 1] <= 0xDFFF) ++i;
        result += To1252(c);
    }
    if (outSize == 0) return (int)result.size();
    if ((int)result.size() > outSize) return 0;
    std::memcpy(out, result.data(), result.size());
    return (int)result.size();
}

HRESULT GetDocumentsFolder(char* path) {
    if (!path) return E_INVALIDARG;
    std::string windows;
    if (!ToWindowsPath(XdgDocuments().c_str(), windows) || windows.size() >= MAX_PATH) return E_FAIL;
    while (windows.size() > 3 && windows.back() == '\\') windows.pop_back();
    std::memcpy(path, windows.c_str(), windows.size() + 1);
    return S_OK;
}

DWORD GetExecutableFileName(char* buffer, DWORD size) {
    if (!buffer || size == 0) return 0;
    char native[PATH_MAX];
    ssize_t n = readlink("/proc/self/exe", native, sizeof native - 1);
    std::string windows;
    if (n <= 0) return 0;
    native[n] = '\0';
    if (!ToWindowsPath(native, windows)) return 0;
    // As GetModuleFileNameA: a name that does not fit is cut to size - 1 characters.
    DWORD copied = (DWORD)std::min<size_t>(windows.size(), size - 1);
    std::memcpy(buffer, windows.c_str(), copied);
    buffer[copied] = '\0';
    return copied;
}

}  // namespace qm::platform

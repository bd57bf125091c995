#include "utils/platform/clipboard_formats.h"

#include <cstring>
#include <mutex>
#include <string>
#include <vector>


namespace qm::platform {

namespace {

struct Formats {
    std::mutex lock;
    std::vector<std::string> names;  // format 0xC000 + index
};

Formats& Table() {
    static Formats f;
    return f;
}

bool SameName(const std::string& a, const char* b) {
    if (a.size() != std::strlen(b)) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        unsigned char x = (unsigned char)a[i], y = (unsigned char)b[i];
        if (x >= 'a' && x <= 'z') x = (unsigned char)(x - 32);
        if (y >= 'a' && y <= 'z') y = (unsigned char)(y - 32);
        if (x != y) return false;
    }
    return true;
}

}  // namespace

UINT ClipboardRegisterFormat(const char* name) {
    if (!name || !*name) return 0;
    Formats& f = Table();
    std::lock_guard<std::mutex> g(f.lock);
    for (std::size_t i = 0; i < f.names.size(); ++i)
        if (SameName(f.names[i], name)) return (UINT)(0xC000 + i);
    if (f.names.size() >= 0x4000) return 0;
    f.names.emplace_back(name);
    return (UINT)(0xC000 + f.names.size() - 1);
}

int ClipboardFormatName(UINT format, char* buffer, int bufferLength) {
    if (!buffer || bufferLength <= 0) return 0;
    buffer[0] = 0;
    Formats& f = Table();
    std::lock_guard<std::mutex> g(f.lock);
    if (format < 0xC000 || format - 0xC000 >= f.names.size()) return 0;
    const std::string& name = f.names[format - 0xC000];
    int n = (int)name.size() < bufferLength - 1 ? (int)name.size() : bufferLength - 1;
    std::memcpy(buffer, name.data(), (std::size_t)n);
    buffer[n] = 0;
    return n;
}

}  // namespace qm::platform

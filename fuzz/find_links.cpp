// FindLinks, whose walks are shared between word starts, against IsValidURL tried afresh at
// every word start: both must find the same links on any bytes.
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "utils/common/utils_mail.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::vector<CLinkMatch> found;
    FindLinks(text.c_str(), text.size(), found);
    size_t k = 0;
    for (size_t i = 0; i < text.size();) {
        const unsigned char prev = i ? (unsigned char)text[i - 1] : ' ';
        const bool word = prev < 0x80 && !std::isalnum(prev) && !(prev && std::strchr("_.-@:/\\%", prev));
        int len = 0;
        bool isMail = false;
        if (word && IsValidURL(text.c_str() + i, len, isMail) && len > 0) {
            if (k >= found.size() || found[k].offset != i || found[k].length != len || found[k].isMail != isMail)
                std::abort();
            ++k;
            i += (size_t)len;
        } else {
            ++i;
        }
    }
    if (k != found.size()) std::abort();
    return 0;
}

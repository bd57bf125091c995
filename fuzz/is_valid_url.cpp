// IsValidURL and the quick address test on arbitrary bytes, NUL-terminated at every length.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "utils/common/utils_mail.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    int len = -1;
    bool isMail = false;
    if (IsValidURL(text.c_str(), len, isMail)) {
        // A link never reaches past the text's first NUL.
        if (len <= 0 || (size_t)len > std::char_traits<char>::length(text.c_str())) std::abort();
    }
    IsLooksLikeEmailAddress(text.c_str());
    IsExternalLink(text.c_str());
    return 0;
}

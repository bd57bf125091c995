// ExtractAddress on arbitrary text; the text may change only where a closing apostrophe was.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "utils/common/utils_mail.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CString original(reinterpret_cast<const char*>(data), (int)size);
    CString text = original;
    CString out;
    int found = ExtractAddress(text, out);
    if (text.GetLength() != original.GetLength()) std::abort();
    int changed = 0;
    for (int i = 0; i < text.GetLength(); ++i) {
        if (text[i] == original[i]) continue;
        if (original[i] != '\'' || text[i] != ' ') std::abort();
        ++changed;
    }
    if (changed > 1 || (!found && (changed || !out.IsEmpty()))) std::abort();
    return 0;
}

// CollectEMails on arbitrary bytes, embedded NULs included.
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "utils/common/utils_mail.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CString text(reinterpret_cast<const char*>(data), (int)size);
    CStringSet found;
    CollectEMails(text, found);
    for (const CString& address : found) {
        // Every address found is a piece of the text and holds its "@".
        if (address.IsEmpty() || address.Find('@') < 0 || text.Find(address) < 0) std::abort();
    }
    return 0;
}

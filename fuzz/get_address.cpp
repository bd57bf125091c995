// Address lists: GetAddress walked to the end, and both forms of ExtractEMailAddresses.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <vector>

#include "utils/common/utils_mail.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CString list(reinterpret_cast<const char*>(data), (int)size);
    const char* p = list;
    const char* end = p + list.GetLength();
    for (bool comments : {false, true}) {
        p = list;
        while (p) {
            CString name;
            const char* next = nullptr;
            GetAddress(p, name, &next, comments);
            // The rest always moves forward and stays inside the text.
            if (next && (next <= p || next > end)) std::abort();
            p = next;
        }
    }
    std::map<CString, CString> pairs;
    ExtractEMailAddresses(list, pairs);
    std::vector<CString> addresses;
    ExtractEMailAddresses(list, addresses);
    for (const CString& a : addresses)
        if (a.IsEmpty()) std::abort();
    return 0;
}

#include "utils/platform/crt.h"

#include <unistd.h>

namespace qm::crt {

bool LocalTime64(__int64 t, struct tm* out) {
    time_t tt = (time_t)t;
    return localtime_r(&tt, out) != nullptr;
}
bool GmTime64(__int64 t, struct tm* out) {
    time_t tt = (time_t)t;
    return gmtime_r(&tt, out) != nullptr;
}
__int64 MkTime64(struct tm* fields) { return (__int64)mktime(fields); }
__int64 Time64() { return (__int64)time(nullptr); }

int Seek64(FILE* f, __int64 offset, int whence) { return fseeko(f, (off_t)offset, whence); }
__int64 Tell64(FILE* f) { return (__int64)ftello(f); }
int Truncate64(FILE* f, __int64 length) { return ftruncate(fileno(f), (off_t)length); }

}  // namespace qm::crt

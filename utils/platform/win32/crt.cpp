#include "utils/platform/crt.h"

#include <io.h>

namespace qm::crt {

bool LocalTime64(__int64 t, struct tm* out) { return _localtime64_s(out, &t) == 0; }
bool GmTime64(__int64 t, struct tm* out) { return _gmtime64_s(out, &t) == 0; }
__int64 MkTime64(struct tm* fields) { return _mktime64(fields); }
__int64 Time64() { return _time64(nullptr); }

int Seek64(FILE* f, __int64 offset, int whence) { return _fseeki64(f, offset, whence); }
__int64 Tell64(FILE* f) { return _ftelli64(f); }
// _chsize_s returns the error code itself; errno is set as well.
int Truncate64(FILE* f, __int64 length) { return _chsize_s(_fileno(f), length) == 0 ? 0 : -1; }

}  // namespace qm::crt

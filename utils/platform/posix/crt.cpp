#include "utils/platform/crt.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

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
// Growing a file reserves its new blocks, as it does on Windows: a full disk fails here rather
// than at a later write or at close, and the writes that fill the new length find their blocks
// allocated. On ext4 that also spares each written page its delayed-allocation bookkeeping,
// and the flush ext4 starts when a file truncated on opening is closed: saving a picture that
// first sets its file's length costs a third of the CPU time. Filesystems without fallocate
// get a sparse extension.
int Truncate64(FILE* f, __int64 length) {
    const int fd = fileno(f);
#if defined(__linux__)
    struct stat st;
    if (fstat(fd, &st) == 0 && S_ISREG(st.st_mode) && (off_t)length > st.st_size) {
        if (fallocate(fd, 0, st.st_size, (off_t)length - st.st_size) == 0) return 0;
        if (errno == ENOSPC || errno == EDQUOT || errno == EFBIG) return -1;
    }
#endif
    return ftruncate(fd, (off_t)length);
}

}  // namespace qm::crt

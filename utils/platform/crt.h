// The C runtime's services whose names differ between the runtimes: 64-bit time conversions
// (for CTime, COleDateTime and the date modules) and 64-bit positions and lengths of stdio
// streams (for CFile). The Windows runtime has _localtime64_s, _fseeki64, _chsize_s, ...; the
// POSIX one localtime_r, fseeko, ftruncate, ...
#pragma once

#include <cstdio>
#include <ctime>

#include "utils/framework/wintypes.h"

namespace qm::crt {

// localtime, gmtime, mktime and time on the 64-bit scale; false / -1 on failure, as the
// runtime reports it.
bool LocalTime64(__int64 t, struct tm* out);
bool GmTime64(__int64 t, struct tm* out);
__int64 MkTime64(struct tm* fields);
__int64 Time64();

// fseek / ftell with 64-bit offsets; fseek's result (0 on success) and ftell's (-1 on
// failure, errno set).
int Seek64(FILE* f, __int64 offset, int whence);
__int64 Tell64(FILE* f);
// Sets the length of the stream's file (the stream is flushed by the caller); 0 on success,
// otherwise errno is set.
int Truncate64(FILE* f, __int64 length);

}  // namespace qm::crt

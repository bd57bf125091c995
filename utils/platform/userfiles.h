// File status, the UTF-16 text test and conversion, the user's documents folder and the
// running executable's name, as the Win32 calls named beside each function give them.
#pragma once

#include <cstdint>

#include "utils/framework/wintypes.h"

namespace qm::platform {

// _stat64: the size and the last-write time (seconds since 1970-01-01 UTC) of a file or
// folder; false when its status cannot be read.
bool QueryFileStatus(const char* path, std::int64_t* modified, std::uint64_t* size);

// IsTextUnicode(data, size, IS_TEXT_UNICODE_SIGNATURE): the little-endian UTF-16 byte-order
// mark FF FE at the start.
bool HasUnicodeSignature(const void* data, int size);
// WideCharToMultiByte(CP_ACP, 0, text, count, out, outSize, NULL, NULL): UTF-16 code units
// to the ANSI code page (1252 on POSIX, where a character it cannot hold becomes '?'). With
// outSize 0 returns the size needed; 0 when out is too small.
int UnicodeToAnsi(const std::uint16_t* text, int count, char* out, int outSize);

// SHGetFolderPathA(NULL, CSIDL_PERSONAL, NULL, 0, path): the user's documents folder into
// path (MAX_PATH characters), without a trailing backslash. POSIX: the XDG documents folder
// (XDG_DOCUMENTS_DIR of user-dirs.dirs, else ~/Documents) in its Windows form ("Z:\...").
HRESULT GetDocumentsFolder(char* path);
// GetModuleFileNameA(NULL, buffer, size): the full name of the running executable (POSIX:
// in its Windows form); the length copied, 0 on failure.
DWORD GetExecutableFileName(char* buffer, DWORD size);

}  // namespace qm::platform

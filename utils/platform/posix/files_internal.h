// Internal helpers shared by the parts of the POSIX file services (files*.cpp): Windows paths
// to native ones, errno to Windows error codes, the Win32 buffer convention, attributes of a
// stat record and the copy of one file.
#pragma once

#include <sys/stat.h>

#include <string>

#include "utils/platform/files.h"
#include "utils/platform/pathmodel.h"

namespace qm::platform::posixfs {

using pathmodel::FullPath;

constexpr DWORD kGenFailure = 31;  // ERROR_GEN_FAILURE
constexpr int kDestInsideSource = 0x76;  // shell result: the target lies inside the source
constexpr int kSameFile = 0x71;          // shell result: source and target are the same
constexpr int kUnknownShellError = 0x402;  // shell result for a source that is not there

// A full Windows path -> the native path. resolveCase: look for names in any case (what is not
// found stays as given). driveDir, when given, receives the native directory of the root.
bool NativeOf(const FullPath& fp, std::string& native, bool resolveCase = true, std::string* driveDir = nullptr);
// MakeFull, then NativeOf.
bool Native(const char* path, std::string& native, bool resolveCase = true);
// The native folder that holds a native path ("." for a bare name).
std::string ParentOf(const std::string& native);
bool IsDir(const std::string& native);
// ENOENT is "file not found" when the folder exists and "path not found" when it does not.
DWORD ErrorOf(int e, const std::string& native);
// Sets the last error from errno for native and returns FALSE.
BOOL FailErrno(const std::string& native);
// Copies text into a caller's buffer by the Win32 convention: the length without the zero
// when it fits, else the size needed with the zero (and nothing written).
DWORD CopyOut(const std::string& text, LPSTR buffer, DWORD length);
// The file attributes of a stat record (name: the entry's own name, for the hidden dot files).
DWORD AttributesOf(const struct stat& st, const char* name);
// The last name of a native path (trailing slashes ignored).
const char* BaseName(const std::string& native);
// Copies one file with its permissions and times. Error: a Windows code, 0 on success.
DWORD CopyOneFile(const std::string& from, const std::string& to, bool failIfExists);

}  // namespace qm::platform::posixfs

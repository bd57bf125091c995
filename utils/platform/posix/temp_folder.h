// The user's private temporary folder on POSIX (internal to the POSIX backend).
#pragma once

#include <string>

namespace qm::platform::posix {

// The native path of the user's own temporary folder, without a trailing slash: a folder
// under $TMPDIR (or /tmp) that is a real directory (not a link), owned by the effective user
// and closed to everyone else (no group or other permission bits). Made on first use; checked
// again at every call. False (errno set) when no such folder can be had.
bool PrivateTempFolder(std::string& native);

// Opens `native` for writing, creating it: O_CREAT | O_EXCL | O_NOFOLLOW, mode 0600. -1 when it
// exists (EEXIST, also for a link) or cannot be made.
int CreateExclusive(const std::string& native);

}  // namespace qm::platform::posix

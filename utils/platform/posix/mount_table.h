// The mount table of this process, for the POSIX file layer (internal).
//
// Reaching a share (\\server\share\...) or naming the share behind a drive needs the mount
// table, and the kernel formats /proc/self/mounts afresh on every read: on a machine with many
// mounts that read and its parse cost more than the rest of a path translation. The table is
// therefore kept, with its network shares parsed, and read again only when it may have
// changed: the kernel marks an open /proc/self/mounts with POLLPRI after every mount or
// unmount in its namespace, so one poll without waiting says whether the copy is current.
// The copy is also dropped when the process has moved to another mount namespace, and when
// the descriptor kept for polling no longer is that file (a host that closes every descriptor
// after fork, say).
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace qm::platform::mounts {

struct Table {
    std::string text;                                          // /proc/self/mounts as read
    std::vector<std::pair<std::string, std::string>> shares;   // (\\server\share, mount folder)
};

// The table as it is now; never null (empty when /proc/self/mounts cannot be read). A caller
// keeps the snapshot it got however the table changes afterwards.
std::shared_ptr<const Table> Current();

}  // namespace qm::platform::mounts

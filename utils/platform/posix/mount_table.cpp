// The kept mount table: see mount_table.h.
#include "utils/platform/posix/mount_table.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <mutex>

#include "utils/platform/files_text.h"

namespace qm::platform::mounts {

namespace {

const char kMounts[] = "/proc/self/mounts";
const char kNamespace[] = "/proc/self/ns/mnt";

bool SameFile(const struct stat& a, const struct stat& b) { return a.st_dev == b.st_dev && a.st_ino == b.st_ino; }

// The whole of a file read from its start ("" on error).
std::string ReadFrom(int fd) {
    std::string text;
    if (lseek(fd, 0, SEEK_SET) != 0) return text;
    char buf[16384];
    for (;;) {
        ssize_t n = read(fd, buf, sizeof buf);
        if (n > 0) {
            text.append(buf, (size_t)n);
        } else if (n == 0 || errno != EINTR) {
            return n == 0 ? text : std::string();
        }
    }
}

class Cache {
public:
    std::shared_ptr<const Table> Current() {
        std::lock_guard<std::mutex> lock(mutex_);
        if (!Valid()) Reopen();
        if (fd_ < 0) return Read(-1);  // no table to watch: read it every time
        pollfd p{fd_, POLLPRI, 0};
        int ready;
        do ready = poll(&p, 1, 0);
        while (ready < 0 && errno == EINTR);
        // The poll itself acknowledges the change: a mount made after it and before the read
        // below is in the text read, and is reported again by the next poll (one read more).
        if (!table_ || ready < 0 || (p.revents & (POLLPRI | POLLERR))) table_ = Read(fd_);
        return table_;
    }

private:
    // The kept descriptor is still /proc/self/mounts of the namespace the process is in now.
    bool Valid() const {
        if (fd_ < 0) return false;
        struct stat fdNow, nsNow;
        return fstat(fd_, &fdNow) == 0 && SameFile(fdNow, fdStat_) && stat(kNamespace, &nsNow) == 0 && SameFile(nsNow, nsStat_);
    }

    void Reopen() {
        // A descriptor that is no longer ours (closed behind our back, the number reused) is
        // forgotten, not closed: it may belong to someone else now.
        fd_ = -1;
        table_.reset();
        int fd = open(kMounts, O_RDONLY | O_CLOEXEC);
        if (fd < 0) return;
        if (fstat(fd, &fdStat_) != 0 || stat(kNamespace, &nsStat_) != 0) {
            close(fd);
            return;
        }
        fd_ = fd;
    }

    static std::shared_ptr<const Table> Read(int fd) {
        auto table = std::make_shared<Table>();
        if (fd >= 0) {
            table->text = ReadFrom(fd);
        } else if ((fd = open(kMounts, O_RDONLY | O_CLOEXEC)) >= 0) {
            table->text = ReadFrom(fd);
            close(fd);
        }
        table->shares = NetworkMounts(table->text);
        return table;
    }

    std::mutex mutex_;
    int fd_ = -1;
    struct stat fdStat_ {};
    struct stat nsStat_ {};
    std::shared_ptr<const Table> table_;
};

}  // namespace

std::shared_ptr<const Table> Current() {
    // Never destroyed: path translations may still run while other globals are torn down.
    static Cache* cache = new Cache;
    return cache->Current();
}

}  // namespace qm::platform::mounts

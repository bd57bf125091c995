// The kept mount table follows mounts made after it was read: in another mount namespace, in
// the same one, and after its descriptor was closed behind its back; and it is not read again
// while nothing changed. The mounts are made in a child process in a mount namespace of its
// own (a user namespace too when not run as root), so the machine's table is never touched.
// POSIX only.
#if !defined(_WIN32)
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "utils/platform/posix/mount_table.h"

namespace {

namespace mounts = qm::platform::mounts;

// A folder as the kernel writes it in the table (space, tab, newline and backslash in octal).
std::string AsInTable(const std::string& dir) {
    std::string out;
    for (char c : dir) {
        if (c == ' ' || c == '\t' || c == '\n' || c == '\\') {
            char esc[5];
            std::snprintf(esc, sizeof esc, "\\%03o", (unsigned)(unsigned char)c);
            out += esc;
        } else {
            out += c;
        }
    }
    return out;
}

bool WriteFile(const char* path, const std::string& text) {
    int fd = open(path, O_WRONLY | O_CLOEXEC);
    if (fd < 0) return false;
    bool ok = write(fd, text.data(), text.size()) == (ssize_t)text.size();
    close(fd);
    return ok;
}

// A mount namespace for this (single-threaded, forked) process, with the right to mount in it.
bool OwnMountNamespace() {
    if (geteuid() != 0) {
        uid_t uid = geteuid();
        gid_t gid = getegid();
        if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
        WriteFile("/proc/self/setgroups", "deny");
        if (!WriteFile("/proc/self/uid_map", std::to_string(uid) + " " + std::to_string(uid) + " 1")) return false;
        if (!WriteFile("/proc/self/gid_map", std::to_string(gid) + " " + std::to_string(gid) + " 1")) return false;
    } else if (unshare(CLONE_NEWNS) != 0) {
        return false;
    }
    // Nothing mounted here may reach the parent's namespace.
    return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

bool Lists(const std::shared_ptr<const mounts::Table>& table, const std::string& dir) {
    return table->text.find(" " + AsInTable(dir) + " tmpfs ") != std::string::npos;
}

// The steps of the child; its exit code names the first one that failed (0: all held).
enum Step { kAllHeld, kNoNamespace = 77, kMount = 10, kOtherNamespace, kKeptWhileUnchanged, kUnmount, kUnmountSeen, kDescriptorClosed };

int Child(const std::string& dir) {
    if (!OwnMountNamespace()) return kNoNamespace;
    // The parent read the table of its own namespace; this one has another.
    if (mount("qmtest", dir.c_str(), "tmpfs", 0, "size=64k") != 0) return kMount;
    auto withMount = mounts::Current();
    if (!Lists(withMount, dir)) return kOtherNamespace;
    if (mounts::Current() != withMount) return kKeptWhileUnchanged;
    if (umount(dir.c_str()) != 0) return kUnmount;
    if (Lists(mounts::Current(), dir)) return kUnmountSeen;
    // A host that closes every descriptor (as after fork) takes the watched one with it.
    for (int fd = 3; fd < 1024; ++fd) close(fd);
    if (mount("qmtest", dir.c_str(), "tmpfs", 0, "size=64k") != 0) return kMount;
    bool seen = Lists(mounts::Current(), dir);
    umount(dir.c_str());
    return seen ? kAllHeld : kDescriptorClosed;
}

TEST(MountTable, FollowsEveryChangeAndIsKeptOtherwise) {
    auto before = mounts::Current();
    ASSERT_NE(before, nullptr);
    EXPECT_EQ(mounts::Current(), before);  // nothing changed: the same copy

    std::string dir = (std::filesystem::current_path() / "qm-mount-XXXXXX").string();
    ASSERT_NE(mkdtemp(dir.data()), nullptr);
    pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) _exit(Child(dir));
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    std::filesystem::remove(dir);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == kNoNamespace) GTEST_SKIP() << "no mount namespace can be made here";
    EXPECT_EQ(WEXITSTATUS(status), kAllHeld);
    EXPECT_FALSE(Lists(mounts::Current(), dir));  // the parent's table never had it
}

}  // namespace
#endif

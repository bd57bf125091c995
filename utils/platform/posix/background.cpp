// Background helpers of a command-line host: the program started again in a session of its
// own, handed its input through a pipe, reporting readiness through another pipe whose number
// it finds in its environment.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "utils/platform/host.h"
#include "utils/platform/posix/clipboard_internal.h"

extern char** environ;

namespace qm::platform {

namespace {

constexpr const char* kStatusVariable = "QM_BACKGROUND_STATUS_FD";

bool WriteAll(int fd, const char* p, std::size_t n) {
    while (n > 0) {
        ssize_t w = write(fd, p, n);
        if (w < 0 && errno == EINTR) continue;
        if (w <= 0) return false;
        p += w;
        n -= (std::size_t)w;
    }
    return true;
}

}  // namespace

bool ClipboardServedByProcess() { return xclip::Active(); }

bool StartBackgroundHelper(const std::vector<std::string>& args, const std::string& input, DWORD timeoutMs,
                           std::string* message) {
    auto fail = [&](const std::string& why) {
        if (message) *message = why;
        return false;
    };
    int data[2], status[2];
    if (pipe2(data, O_CLOEXEC) != 0) return fail("cannot create a pipe");
    if (pipe2(status, O_CLOEXEC) != 0) {
        close(data[0]);
        close(data[1]);
        return fail("cannot create a pipe");
    }
    // The helper's end of the status pipe becomes its descriptor 3 (dup2 clears close-on-exec,
    // except when the number is already 3: move it out of the way first).
    if (status[1] == 3) {
        int moved = fcntl(status[1], F_DUPFD_CLOEXEC, 10);
        close(status[1]);
        status[1] = moved;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, data[0], 0);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, status[1], 3);
    posix_spawnattr_t attr;
    posix_spawnattr_init(&attr);
    posix_spawnattr_setflags(&attr, POSIX_SPAWN_SETSID);
    std::vector<std::string> env;
    for (char** e = environ; e && *e; ++e)
        if (std::strncmp(*e, kStatusVariable, std::strlen(kStatusVariable)) != 0) env.push_back(*e);
    env.push_back(std::string(kStatusVariable) + "=3");
    std::string self = "/proc/self/exe";
    std::vector<char*> argv = {self.data()}, envp;
    std::vector<std::string> copies = args;
    for (std::string& a : copies) argv.push_back(a.data());
    argv.push_back(nullptr);
    for (std::string& e : env) envp.push_back(e.data());
    envp.push_back(nullptr);
    pid_t pid = -1;
    int rc = posix_spawn(&pid, self.c_str(), &actions, &attr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attr);
    close(data[0]);
    close(status[1]);
    if (rc != 0) {
        close(data[1]);
        close(status[0]);
        return fail("cannot start the background helper");
    }
    // A helper that stops reading gives EPIPE here, not a signal.
    struct sigaction ignore {}, old {};
    ignore.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &ignore, &old);
    WriteAll(data[1], input.data(), input.size());
    sigaction(SIGPIPE, &old, nullptr);
    close(data[1]);
    std::string reply;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) break;
        pollfd p{status[0], POLLIN, 0};
        if (poll(&p, 1, (int)left.count()) <= 0) continue;
        char buf[256];
        ssize_t n = read(status[0], buf, sizeof buf);
        if (n <= 0) break;  // closed: the helper reported (or ended)
        reply.append(buf, (std::size_t)n);
        if (reply.size() > 4096) break;
    }
    close(status[0]);
    // A helper that has ended is reaped; one that serves on is left running.
    waitpid(pid, nullptr, WNOHANG);
    if (reply == "ok\n") return true;
    if (reply.rfind("error: ", 0) == 0) {
        std::string why = reply.substr(7);
        while (!why.empty() && why.back() == '\n') why.pop_back();
        return fail(why);
    }
    kill(pid, SIGTERM);
    waitpid(pid, nullptr, WNOHANG);
    return fail(reply.empty() ? "the background helper did not report in time" : "the background helper failed");
}

bool IsBackgroundHelper() {
    const char* fd = std::getenv(kStatusVariable);
    return fd && *fd;
}

void ReportBackgroundReady(bool ok, const char* message) {
    const char* value = std::getenv(kStatusVariable);
    if (!value || !*value) return;
    int fd = std::atoi(value);
    std::string line = ok ? std::string("ok\n") : "error: " + std::string(message ? message : "failed") + "\n";
    WriteAll(fd, line.data(), line.size());
    close(fd);
    unsetenv(kStatusVariable);
}

}  // namespace qm::platform

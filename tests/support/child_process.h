// Other programs for the POSIX tests that talk to them: a child with its standard streams on
// files, and an X server of the test's own (Xvfb on a free display).
#pragma once
#if !defined(_WIN32)
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

extern char** environ;

namespace qmtest {

// Starts a program (looked up on PATH) with stdin from the file `in`, stdout to the file `out`
// or, when outFd >= 0, to that descriptor, and stderr to the file `err`. env replaces the
// environment when it is not empty. The child's id, or -1.
inline pid_t Spawn(const std::vector<std::string>& args, const std::string& in = "/dev/null",
                   const std::string& out = "/dev/null", const std::vector<std::string>& env = {}, int outFd = -1,
                   const std::string& err = "/dev/null") {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, in.c_str(), O_RDONLY, 0);
    if (outFd >= 0)
        posix_spawn_file_actions_adddup2(&actions, outFd, 1);
    else
        posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    std::vector<char*> argv, envp;
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    for (const std::string& e : env) envp.push_back(const_cast<char*>(e.c_str()));
    envp.push_back(nullptr);
    pid_t pid = -1;
    if (posix_spawnp(&pid, args[0].c_str(), &actions, nullptr, argv.data(), env.empty() ? environ : envp.data()) != 0)
        pid = -1;
    posix_spawn_file_actions_destroy(&actions);
    return pid;
}

// A file's bytes, whole ("" when it cannot be read).
inline std::string Slurp(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// Waits for a child, killing it after timeoutMs; its exit status, or -1.
inline int Finish(pid_t pid, int timeoutMs) {
    for (int waited = 0; waited < timeoutMs; waited += 10) {
        int status = 0;
        if (waitpid(pid, &status, WNOHANG) == pid) return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
    return -1;
}

// Ends a child that is still running and forgets it.
inline void Stop(pid_t& pid) {
    if (pid > 0) {
        kill(pid, SIGTERM);
        waitpid(pid, nullptr, 0);
    }
    pid = -1;
}

// The first line a child writes to the descriptor (waiting up to ten seconds), which is closed.
inline std::string FirstLine(int fd) {
    std::string line;
    pollfd p{fd, POLLIN, 0};
    char c;
    while (poll(&p, 1, 10000) > 0 && read(fd, &c, 1) == 1 && c != '\n') line += c;
    close(fd);
    return line;
}

// An X server for the test alone; display is empty when it did not start.
struct XServer {
    XServer() {
        int fds[2];
        if (pipe(fds) != 0) return;
        pid = Spawn({"Xvfb", "-displayfd", std::to_string(fds[1]), "-nolisten", "tcp", "-screen", "0", "64x64x24"});
        close(fds[1]);
        std::string number = FirstLine(fds[0]);
        if (pid > 0 && !number.empty()) display = ":" + number;
    }
    ~XServer() { Stop(pid); }
    pid_t pid = -1;
    std::string display;
};

}  // namespace qmtest
#endif

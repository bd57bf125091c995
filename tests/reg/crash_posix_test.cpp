// Persisted state against processes that die at any instant, and several processes writing
// the registry store at once. POSIX only: the writers are this program run again (the
// environment variable QMREG_CHILD picks the role) and killed with SIGKILL.
#if !defined(_WIN32)
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "tests/reg/reg_env.h"
#include "utils/common/TempList.h"
#include "utils/common/mfcutils_settings.h"

extern char** environ;

namespace {

const char kCrashKey[] = "Software\\QMT\\Crash";
const int kLiveEntries = 8;

void Say(std::string line) {
    line += '\n';
    if (write(1, line.data(), line.size()) < 0) _exit(3);
}

std::string Entry(long n) { return "Z:\\crash\\f" + std::to_string(n); }

// The value that process p writes as its i-th in the concurrency test: key, name.
std::pair<CString, CString> MultiValue(long p, int i) {
    CString key, name;
    key.Format("Software\\QMT\\Multi\\k%d", i % 5);
    name.Format("p%ld_%d", p, i);
    return {key, name};
}

// The child roles. Each runs before the test framework starts and never returns.
int RunChild(const std::string& role) {
    long base = std::atol(std::getenv("QMREG_BASE") ? std::getenv("QMREG_BASE") : "0");
    if (role == "store") {  // acknowledges each write once it returned success
        for (long i = base;; ++i) {
            std::string name = "v" + std::to_string(i);
            if (!WriteDWToRegistry(kCrashKey, name.c_str(), (DWORD)i)) _exit(4);
            Say(name);
        }
    }
    if (role == "list") {  // keeps the newest entries of a growing sequence
        CTempList list(std::getenv("QMREG_LIST"));
        list.RemoveAll();
        Say("ready");
        for (long i = 0;; ++i) {
            new CTempFile(Entry(i).c_str(), &list);
            if (list.GetCount() > kLiveEntries) delete list.GetHead();
        }
    }
    if (role == "multi") {
        for (int i = 0; i < 100; ++i) {
            auto [key, name] = MultiValue(base, i);
            if (!WriteDWToRegistry(key, name, (DWORD)(base * 1000 + i))) _exit(5);
        }
        _exit(0);
    }
    _exit(2);
}

const int g_child = [] {
    const char* role = std::getenv("QMREG_CHILD");
    return role ? RunChild(role) : 0;
}();

struct Child { pid_t pid = -1; int output = -1; };

// Starts this program again in a role, with its standard output on a pipe.
Child Start(const std::string& role, const std::vector<std::string>& extra) {
    std::vector<std::string> env;
    for (char** e = environ; *e; ++e) env.push_back(*e);
    env.push_back("QMREG_CHILD=" + role);
    env.push_back("MFCQMUTILS_REGISTRY=" + regtest::NativeFolder() + "registry.db");
    for (const auto& x : extra) env.push_back(x);
    std::vector<char*> envp;
    for (auto& e : env) envp.push_back(e.data());
    envp.push_back(nullptr);
    int fds[2];
    Child child;
    if (pipe(fds) != 0) return child;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fds[1], 1);
    posix_spawn_file_actions_addclose(&actions, fds[0]);
    char exe[] = "/proc/self/exe", *argv[] = {exe, nullptr};
    if (posix_spawn(&child.pid, exe, &actions, nullptr, argv, envp.data()) != 0) child.pid = -1;
    posix_spawn_file_actions_destroy(&actions);
    close(fds[1]);
    child.output = fds[0];
    return child;
}

// Reads the child's output: up to the first line break (it has started its work), or all.
std::string Read(int fd, bool firstLineOnly) {
    std::string out;
    char c;
    while (read(fd, &c, 1) == 1) {
        out += c;
        if (firstLineOnly && c == '\n') return out;
    }
    close(fd);
    return out;
}

void KillAfter(const Child& child, int microseconds) {
    usleep((useconds_t)microseconds);
    kill(child.pid, SIGKILL);
    waitpid(child.pid, nullptr, 0);
}

std::string IntegrityCheck(const std::string& file) {
    sqlite3* db = nullptr;
    std::string result = "cannot open";
    auto keep = [](void* out, int, char** values, char**) {
        *static_cast<std::string*>(out) = values[0] ? values[0] : "";
        return 0;
    };
    if (sqlite3_open_v2(file.c_str(), &db, SQLITE_OPEN_READONLY, nullptr) == SQLITE_OK)
        sqlite3_exec(db, "PRAGMA integrity_check", keep, &result, nullptr);
    sqlite3_close(db);
    return result;
}

// A list file is complete when it is empty or holds consecutive entries of the writer's
// sequence, at most kLiveEntries of them (one more just before the oldest goes), each ended
// by carriage return and line feed.
bool IsCompleteListState(const std::string& bytes) {
    long first = std::atol(bytes.c_str() + std::min(bytes.size(), Entry(0).size() - 1));
    std::string expected;
    for (long n = first; expected.size() < bytes.size() && n <= first + kLiveEntries; ++n) expected += Entry(n) + "\r\n";
    return bytes == expected;
}

}  // namespace

TEST(CrashPosix, StoreKeepsEveryAcknowledgedWriteThroughKills) {
    std::mt19937 rng(11);
    const std::string db = regtest::NativeFolder() + "registry.db";
    long base = 0;
    size_t acknowledged = 0;
    for (int round = 0; round < 200; ++round) {
        Child child = Start("store", {"QMREG_BASE=" + std::to_string(base)});
        ASSERT_GT(child.pid, 0);
        std::string out = Read(child.output, true);
        KillAfter(child, (int)(rng() % 5000));
        out += Read(child.output, false);
        for (size_t pos = 0, end; (end = out.find('\n', pos)) != std::string::npos; pos = end + 1) {
            std::string name = out.substr(pos, end - pos);
            ASSERT_EQ(ReadDWFromRegistry(kCrashKey, name.c_str(), 0xFFFFFFFF), (DWORD)std::atol(name.c_str() + 1))
                << name;
            ++acknowledged;
        }
        base += 1000000;
        if (round % 25 == 24) { ASSERT_EQ(IntegrityCheck(db), "ok") << round; }
    }
    EXPECT_GT(acknowledged, 0u);
    EXPECT_EQ(IntegrityCheck(db), "ok");
}

TEST(CrashPosix, ListFileIsAlwaysACompleteState) {
    std::mt19937 rng(5);
    const std::string list = regtest::File("crash.lst");
    int nonEmpty = 0;
    for (int round = 0; round < 200; ++round) {
        Child child = Start("list", {"QMREG_LIST=" + list});
        ASSERT_GT(child.pid, 0);
        // Every other round waits until the writer has adopted the last list; the others may
        // also kill it during the adoption.
        if (round % 2) Read(child.output, true);
        KillAfter(child, (int)(rng() % 5000));
        Read(child.output, false);
        std::string bytes = regtest::ReadFile(list);
        ASSERT_TRUE(IsCompleteListState(bytes)) << round << ": " << bytes;
        if (!bytes.empty()) ++nonEmpty;
    }
    EXPECT_GT(nonEmpty, 0);
}

TEST(CrashPosix, SeveralProcessesWritingTheStoreLoseNothing) {
    std::vector<Child> children;
    for (int p = 0; p < 4; ++p) children.push_back(Start("multi", {"QMREG_BASE=" + std::to_string(p)}));
    for (const Child& child : children) {
        ASSERT_GT(child.pid, 0);
        int status = 0;
        waitpid(child.pid, &status, 0);
        Read(child.output, false);
        EXPECT_TRUE(WIFEXITED(status)) << "wait status " << status;
        EXPECT_EQ(WEXITSTATUS(status), 0) << "wait status " << status;
    }
    for (int p = 0; p < 4; ++p)
        for (int i = 0; i < 100; ++i) {
            auto [key, name] = MultiValue(p, i);
            EXPECT_EQ(ReadDWFromRegistry(key, name, 0xFFFFFFFF), (DWORD)(p * 1000 + i));
        }
}
#endif

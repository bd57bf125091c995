// qmutil against bad arguments and files: every command of its --help list, each run with
// generated bad values (a folder, a missing file, an empty, a binary, an oversized file, a FIFO,
// devices, odd texts) must end on its own within a bounded time, without a signal or a sanitizer
// report, with bounded output, and a refusal (exit code 2) must be one line on stderr. Where a
// command expects a file, a bad one must be refused so, naming the file. POSIX only (devices and
// FIFOs); the children run with their own HOME, XDG folders, temporary folder and registry.
#if !defined(_WIN32)
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

namespace stdfs = std::filesystem;

const int kTimeoutMs = 30000;
const std::uintmax_t kMaxOutput = 4u << 20;

struct Outcome {
    bool timedOut = false;
    int signal = 0;  // the signal that ended the child, 0 for a normal exit
    int code = -1;
    std::string err;
    std::uintmax_t outSize = 0;
};

class QmutilBadInput : public testing::Test {
protected:
    static void SetUpTestSuite() {
        root_ = stdfs::current_path() / ("qmcli-" + std::to_string(std::random_device{}() % 1000000000u));
        for (const char* sub : {"work", "home", "config", "data", "cache", "state", "runtime", "tmp", "in"})
            stdfs::create_directories(root_ / sub);
        stdfs::permissions(root_ / "runtime", stdfs::perms::owner_all);
        // Larger than every whole-file limit of the text and list commands.
        std::ofstream big(root_ / "big.txt", std::ios::binary);
        std::string line(1023, 'a');
        line += '\n';
        for (int i = 0; i < 65 * 1024; ++i) big << line;
        big.close();
    }
    // The bad inputs, made afresh before each run: some commands change what they are given
    // (dir remove takes the folder, temp add writes a list file over a missing name).
    static void ResetInputs() {
        const stdfs::path in = root_ / "in";
        std::error_code ec;
        stdfs::remove_all(in, ec);
        stdfs::create_directories(in / "folder");
        std::ofstream(in / "empty.txt").flush();
        std::string binary(4096, '\0');
        std::mt19937 rng(7);
        for (char& c : binary) c = (char)rng();
        std::ofstream(in / "binary.bin", std::ios::binary) << binary;
        mkfifo((in / "fifo").c_str(), 0600);
    }
    static void TearDownTestSuite() {
        std::error_code ec;
        stdfs::remove_all(root_, ec);
    }

    // Runs qmutil with args in cwd (the scratch work folder by default), stdin from /dev/null.
    static Outcome Run(const std::vector<std::string>& args, stdfs::path cwd = {}) {
        if (cwd.empty()) cwd = root_ / "work";
        ResetInputs();
        Outcome o;
        const stdfs::path out = root_ / "stdout", err = root_ / "stderr";
        std::vector<std::string> env = {
            "HOME=" + (root_ / "home").string(),        "XDG_CONFIG_HOME=" + (root_ / "config").string(),
            "XDG_DATA_HOME=" + (root_ / "data").string(), "XDG_CACHE_HOME=" + (root_ / "cache").string(),
            "XDG_STATE_HOME=" + (root_ / "state").string(), "XDG_RUNTIME_DIR=" + (root_ / "runtime").string(),
            "TMPDIR=" + (root_ / "tmp").string(),       "MFCQMUTILS_REGISTRY=" + (root_ / "registry.db").string(),
            "TZ=EST5EDT", "LC_ALL=C", "PATH=/usr/bin:/bin",
            // A sanitizer report must not look like one of qmutil's own exit codes.
            "ASAN_OPTIONS=exitcode=86:abort_on_error=0", "UBSAN_OPTIONS=halt_on_error=1:exitcode=87",
            "LSAN_OPTIONS=exitcode=88"};
        std::vector<std::string> argv = {QM_QMUTIL_PATH};
        argv.insert(argv.end(), args.begin(), args.end());
        std::vector<char*> cargv, cenv;
        for (auto& a : argv) cargv.push_back(a.data());
        cargv.push_back(nullptr);
        for (auto& e : env) cenv.push_back(e.data());
        cenv.push_back(nullptr);

        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        posix_spawn_file_actions_addopen(&actions, 2, err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        const stdfs::path previous = stdfs::current_path();
        stdfs::current_path(cwd);
        pid_t pid = -1;
        int rc = posix_spawn(&pid, cargv[0], &actions, nullptr, cargv.data(), cenv.data());
        stdfs::current_path(previous);
        posix_spawn_file_actions_destroy(&actions);
        if (rc != 0) {
            o.err = "cannot start qmutil";
            return o;
        }
        int status = 0;
        const auto start = std::chrono::steady_clock::now();
        for (;;) {
            pid_t done = waitpid(pid, &status, WNOHANG);
            if (done == pid) break;
            if (std::chrono::steady_clock::now() - start > std::chrono::milliseconds(kTimeoutMs)) {
                o.timedOut = true;
                kill(pid, SIGKILL);
                waitpid(pid, &status, 0);
                break;
            }
            struct timespec pause = {0, 2000000};
            nanosleep(&pause, nullptr);
        }
        if (WIFSIGNALED(status)) o.signal = WTERMSIG(status);
        if (WIFEXITED(status)) o.code = WEXITSTATUS(status);
        std::ifstream e(err, std::ios::binary);
        o.err.assign(std::istreambuf_iterator<char>(e), {});
        std::error_code ec;
        o.outSize = stdfs::file_size(out, ec);
        return o;
    }

    static std::string In(const char* name) { return (root_ / "in" / name).string(); }

    static stdfs::path root_;
};

stdfs::path QmutilBadInput::root_;

std::string Line(const std::vector<std::string>& args) {
    std::string s = "qmutil";
    for (const auto& a : args) s += " '" + a + "'";
    return s;
}

// Each command and action of "qmutil --help".
std::vector<std::vector<std::string>> ListedCommands(const std::string& help) {
    std::vector<std::vector<std::string>> out;
    std::istringstream lines(help);
    std::string line;
    bool inList = false;
    while (std::getline(lines, line)) {
        if (line == "commands:") {
            inList = true;
            continue;
        }
        if (!inList || line.rfind("  ", 0) != 0) {
            if (inList && line.empty()) break;
            continue;
        }
        std::istringstream words(line);
        std::string name, action;
        words >> name;
        const size_t at = line.find(name) + name.size();
        // An action follows after one space; the summary after two or more.
        if (line.size() > at + 1 && line[at] == ' ' && line[at + 1] != ' ') words >> action;
        if (name == "tour") continue;
        out.push_back(action.empty() ? std::vector<std::string>{name} : std::vector<std::string>{name, action});
    }
    return out;
}

void ExpectWellBehaved(const Outcome& o, const std::string& line) {
    EXPECT_FALSE(o.timedOut) << line;
    EXPECT_EQ(o.signal, 0) << line << "\n" << o.err;
    EXPECT_TRUE(o.code >= 0 && o.code <= 2) << line << ": exit code " << o.code << "\n" << o.err;
    EXPECT_LE(o.outSize, kMaxOutput) << line;
    EXPECT_EQ(o.err.find("Sanitizer"), std::string::npos) << line << "\n" << o.err;
    EXPECT_EQ(o.err.find("runtime error"), std::string::npos) << line << "\n" << o.err;
}

void ExpectRefusal(const Outcome& o, const std::string& line, const std::string& file) {
    ExpectWellBehaved(o, line);
    EXPECT_EQ(o.code, 2) << line;
    EXPECT_EQ(o.err.rfind("qmutil: ", 0), 0u) << line << "\n" << o.err;
    EXPECT_EQ(std::count(o.err.begin(), o.err.end(), '\n'), 1) << line << "\n" << o.err;
    EXPECT_NE(o.err.find(file), std::string::npos) << line << "\n" << o.err;
}

}  // namespace

// Every listed command with one, two and three bad values in place of its arguments.
TEST_F(QmutilBadInput, EveryCommandEndsCleanlyOnBadValues) {
    const Outcome help = Run({"--help"});
    ASSERT_EQ(help.code, 0);
    std::ifstream listed(root_ / "stdout");
    const auto commands = ListedCommands(std::string(std::istreambuf_iterator<char>(listed), {}));
    ASSERT_GE(commands.size(), 60u);
    const std::vector<std::string> files = {In("folder"), In("missing/x.txt"), In("empty.txt"), In("binary.bin"),
                                            In("fifo"),   "/dev/zero",          "/dev/urandom"};
    const std::vector<std::string> texts = {"", "-", "99999999999999999999", "-2147483649", "\xff\xfe\x01",
                                            std::string(5000, 'x'), "--width", "C:\\..\\..\\.."};
    for (const auto& command : commands) {
        // The commands that delete or copy folders get no devices, whatever they answer.
        const bool destructive = command[0] == "dir" && (command[1] == "remove" || command[1] == "copy");
        std::vector<std::string> values = texts;
        for (const auto& f : files)
            if (!destructive || f.rfind("/dev/", 0) != 0) values.push_back(f);
        for (const auto& v : values)
            for (size_t count = 1; count <= 3; count += 2) {
                std::vector<std::string> args = command;
                for (size_t i = 0; i < count; ++i) args.push_back(v);
                ExpectWellBehaved(Run(args), Line(args));
            }
    }
}

// Where a command reads or writes a file, each bad file is refused in one line that names it.
TEST_F(QmutilBadInput, BadFilesAreRefusedInOneLineNamingThem) {
    const std::string out = (root_ / "work" / "out.bmp").string();
    // FILE stands where the bad file goes.
    const std::vector<std::vector<std::string>> uses = {
        {"text", "links", "FILE"},
        {"text", "emails", "FILE"},
        {"text", "wrap", "FILE", "--width", "100"},
        {"text", "replace", "FILE", "a", "b"},
        {"text", "find", "FILE", "a"},
        {"text", "sort-lines", "FILE"},
        {"text", "merge-field", "FILE", "@1", "v"},
        {"text", "wrap-fields", "name", "FILE", In("folder")},
        {"bmp", "info", "FILE"},
        {"bmp", "rotate", "FILE", "90", out},
        {"bmp", "gray", "FILE", out},
        {"bmp", "convert", "FILE", out},
        {"temp", "clean", "FILE"},
        {"bmp", "sample", "4", "4", "24", "FILE"},
    };
    const std::vector<std::string> bad = {In("folder"), In("missing/x.txt"), In("fifo"), "/dev/zero", "/dev/urandom"};
    for (const auto& use : uses) {
        const bool output = use[1] == "sample";
        std::vector<std::string> files = bad;
        if (!output) {
            files.push_back(In("empty.txt"));
            if (use[0] == "text") files.push_back(In("binary.bin"));
            if (use[0] != "bmp") files.push_back((root_ / "big.txt").string());
        } else {
            files = {In("folder"), In("fifo"), "/dev/zero"};
        }
        if (use[0] == "temp") files.erase(files.end() - 2);  // an empty list file is a list
        for (const auto& file : files) {
            std::vector<std::string> args = use;
            for (auto& a : args)
                if (a == "FILE") a = file;
            ExpectRefusal(Run(args), Line(args), file);
        }
    }
    for (const std::vector<std::string>& args : std::vector<std::vector<std::string>>{
             {"temp", "list", In("missing/x.lst")}, {"temp", "list", In("folder")}, {"sys", In("missing/x")}})
        ExpectRefusal(Run(args), Line(args), args.back());
}

// A list file in the folder qmutil starts from is neither acted on nor rewritten.
TEST_F(QmutilBadInput, AStrayListFileInTheStartFolderIsLeftAlone) {
    const stdfs::path victim = root_ / "work" / "victim" / "keep.txt", sub = root_ / "work" / "sub";
    stdfs::create_directories(victim.parent_path());
    stdfs::create_directories(sub);
    std::ofstream(victim) << "keep";
    std::string windows = "Z:" + victim.string();
    for (char& c : windows)
        if (c == '/') c = '\\';
    const std::string listed = windows + "\r\n";
    std::ofstream(sub / "tempfiles.lst", std::ios::binary) << listed;
    const Outcome o = Run({"date", "today"}, sub);
    ExpectWellBehaved(o, "qmutil date today");
    EXPECT_TRUE(stdfs::exists(victim));
    std::ifstream list(sub / "tempfiles.lst", std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(list), {}), listed);
}
#endif

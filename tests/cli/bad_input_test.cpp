// qmutil against bad arguments and files. Every command of its --help list, run with generated
// bad values, must end on its own (30 s at most), without a signal or a sanitizer report, with
// bounded output, and a refusal (exit code 2) is one line on stderr; where a command expects a
// file, a bad one is refused so, naming the file. POSIX only (devices, FIFOs). The children run
// in a scratch folder with their own HOME, XDG folders, temporary folder and registry.
#if !defined(_WIN32)
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/child_process.h"

namespace {

namespace stdfs = std::filesystem;
using Args = std::vector<std::string>;

stdfs::path g_root;
using qmtest::Slurp;


std::string In(const char* name) { return (g_root / "in" / name).string(); }

// The bad inputs, made afresh before each run: some commands change what they are given
// (dir remove takes the folder, temp add writes a list file over a missing name).
void ResetInputs() {
    std::error_code ec;
    stdfs::remove_all(g_root / "in", ec);
    stdfs::create_directories(g_root / "in" / "folder");
    std::ofstream(In("empty.txt")).flush();
    std::ofstream(In("text.txt")) << "b\na\n";
    std::string binary(4096, '\0');
    std::generate(binary.begin(), binary.end(), std::mt19937(7));
    std::ofstream(In("binary.bin"), std::ios::binary) << binary;
    mkfifo(In("fifo").c_str(), 0600);
}

struct Outcome {
    int code = -1;  // the exit code; 128 + the signal when killed (also by the time limit)
    std::string err;
    std::uintmax_t outSize = 0;
};

Outcome RunQmutil(const Args& args, const stdfs::path& cwd = g_root / "work") {
    ResetInputs();
    const stdfs::path out = g_root / "stdout", err = g_root / "stderr";
    const std::string r = g_root.string();
    Args env = {"HOME=" + r + "/home", "XDG_CONFIG_HOME=" + r + "/config", "XDG_DATA_HOME=" + r + "/data",
                "XDG_CACHE_HOME=" + r + "/cache", "XDG_STATE_HOME=" + r + "/state", "TMPDIR=" + r + "/tmp",
                "MFCQMUTILS_REGISTRY=" + r + "/registry.db", "TZ=EST5EDT", "LC_ALL=C", "PATH=/usr/bin:/bin",
                // A sanitizer report must not look like one of qmutil's own exit codes.
                "ASAN_OPTIONS=exitcode=86", "UBSAN_OPTIONS=halt_on_error=1:exitcode=87", "LSAN_OPTIONS=exitcode=88"};
    Args argv = {"/usr/bin/timeout", "-s", "KILL", "30", QM_QMUTIL_PATH};
    argv.insert(argv.end(), args.begin(), args.end());
    const stdfs::path previous = stdfs::current_path();
    stdfs::current_path(cwd);
    const pid_t pid = qmtest::Spawn(argv, "/dev/null", out.string(), env, -1, err.string());
    stdfs::current_path(previous);
    Outcome o;
    int status = 0;
    if (pid > 0 && waitpid(pid, &status, 0) == pid) o.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    o.err = Slurp(err);
    o.outSize = stdfs::file_size(out);
    return o;
}

std::string Line(const Args& args) {
    std::string s = "qmutil";
    for (const auto& a : args) s += " '" + a + "'";
    return s;
}

void ExpectWellBehaved(const Outcome& o, const std::string& line) {
    EXPECT_LE(o.code, 2) << line << "\n" << o.err;
    EXPECT_GE(o.code, 0) << line;
    EXPECT_LE(o.outSize, 4u << 20) << line;
    EXPECT_EQ(o.err.find("Sanitizer"), std::string::npos) << line << "\n" << o.err;
    EXPECT_EQ(o.err.find("runtime error"), std::string::npos) << line << "\n" << o.err;
    if (o.code == 2) { EXPECT_EQ(std::count(o.err.begin(), o.err.end(), '\n'), 1) << line << "\n" << o.err; }
}

class QmutilBadInput : public testing::Test {
protected:
    static void SetUpTestSuite() {
        g_root = stdfs::current_path() / ("qmcli-" + std::to_string(std::random_device{}() % 1000000000u));
        for (const char* sub : {"work", "home", "config", "data", "cache", "state", "tmp"})
            stdfs::create_directories(g_root / sub);
        // Larger than every whole-file limit of the text and list commands.
        std::ofstream big(g_root / "big.txt", std::ios::binary);
        const std::string line = std::string(1023, 'a') + "\n";
        for (int i = 0; i < 65 * 1024; ++i) big << line;
    }
    static void TearDownTestSuite() {
        std::error_code ec;
        stdfs::remove_all(g_root, ec);
    }
};

}  // namespace

// Every listed command with one and with three bad values as its arguments.
TEST_F(QmutilBadInput, EveryCommandEndsCleanlyOnBadValues) {
    ASSERT_EQ(RunQmutil({"--help"}).code, 0);
    std::istringstream help(Slurp(g_root / "stdout"));
    std::vector<Args> commands;
    for (std::string line; std::getline(help, line);) {
        // "  name action   summary": an action follows its name after one space.
        if (line.rfind("  ", 0) != 0 || line.size() < 4 || line[2] == ' ') continue;
        const size_t end = line.find(' ', 2);
        Args command = {line.substr(2, end - 2)};
        if (end + 1 < line.size() && line[end + 1] != ' ') command.push_back(line.substr(end + 1, line.find(' ', end + 1) - end - 1));
        if (command[0] != "tour") commands.push_back(command);
    }
    ASSERT_GE(commands.size(), 60u);
    const Args values = {"", "-", "99999999999999999999", "-2147483649", "\xff\xfe\x01", std::string(5000, 'x'),
                         "--width", "C:\\..\\..\\..", In("folder"), In("missing/x.txt"), In("empty.txt"),
                         In("binary.bin"), In("fifo"), "/dev/zero", "/dev/urandom"};
    for (const auto& command : commands)
        for (const auto& v : values) {
            // The commands that delete or copy folders get no devices, whatever they answer.
            if (command[0] == "dir" && (command[1] == "remove" || command[1] == "copy") && v.rfind("/dev/", 0) == 0) continue;
            for (size_t count : {1, 3}) {
                Args args = command;
                args.insert(args.end(), count, v);
                ExpectWellBehaved(RunQmutil(args), Line(args));
            }
        }
}

// Where a command reads or writes a file, each bad file is refused in one line naming it.
TEST_F(QmutilBadInput, BadFilesAreRefusedInOneLineNamingThem) {
    const std::string out = (g_root / "work" / "out.bmp").string(), big = (g_root / "big.txt").string();
    const std::string reads[] = {In("folder"), In("missing/x.txt"), In("fifo"), "/dev/zero", "/dev/urandom", In("empty.txt"),
                                 In("binary.bin"), big};
    const struct {
        Args args;  // "F" stands where the bad file goes
        size_t bad;  // how many of `reads` apply, from the first (from the second where a folder is good)
    } uses[] = {
        {{"text", "links", "F"}, 8},         {{"text", "emails", "F"}, 8},
        {{"text", "wrap", "F", "--width", "100"}, 8},
        {{"text", "replace", "F", "a", "b"}, 8}, {{"text", "find", "F", "a"}, 8},
        {{"text", "sort-lines", "F"}, 8},    {{"text", "merge-field", "F", "@1", "v"}, 8},
        {{"text", "wrap-fields", "name", "F", In("folder")}, 8},
        {{"bmp", "info", "F"}, 6},           {{"bmp", "rotate", "F", "90", out}, 6},
        {{"bmp", "gray", "F", out}, 6},      {{"bmp", "convert", "F", out}, 6},
        {{"temp", "clean", "F"}, 5},         {{"temp", "list", "F"}, 5},
        {{"sys", "F"}, 2},                   {{"bmp", "sample", "4", "4", "24", "F"}, 1},
        {{"text", "sort-lines", In("text.txt"), "-o", "F"}, 1},
        {{"bmp", "to-wmf", "F", out}, 6},    {{"bmp", "from-wmf", "F", out}, 6},
        {{"clip", "copy", "--file", "F"}, 8}, {{"clip", "copy-bmp", "F"}, 6},
        {{"ole", "list", "F"}, 8},           {{"ole", "cat", "F", "s"}, 8},
        {{"ole", "unpack", "F", (g_root / "work" / "unpacked").string()}, 8},
        {{"ole", "pack", "F", (g_root / "work" / "out.cfb").string()}, 8},
    };
    for (const auto& use : uses)
        // A folder has free space, and is what ole pack takes.
        for (size_t i = use.args[0] == "sys" || (use.args[0] == "ole" && use.args[1] == "pack"); i < use.bad; ++i) {
            Args args = use.args;
            std::replace(args.begin(), args.end(), std::string("F"), reads[i]);
            const Outcome o = RunQmutil(args);
            ExpectWellBehaved(o, Line(args));
            EXPECT_EQ(o.code, 2) << Line(args);
            EXPECT_EQ(o.err.rfind("qmutil: ", 0), 0u) << Line(args) << "\n" << o.err;
            EXPECT_NE(o.err.find(reads[i]), std::string::npos) << Line(args) << "\n" << o.err;
        }
}

// A list file in the folder qmutil starts from is neither acted on nor rewritten.
TEST_F(QmutilBadInput, AStrayListFileInTheStartFolderIsLeftAlone) {
    const stdfs::path victim = g_root / "work" / "victim" / "keep.txt", sub = g_root / "work" / "sub";
    stdfs::create_directories(victim.parent_path());
    stdfs::create_directories(sub);
    std::ofstream(victim) << "keep";
    std::string listed = "Z:" + victim.string() + "\r\n";
    std::replace(listed.begin(), listed.end(), '/', '\\');
    std::ofstream(sub / "tempfiles.lst", std::ios::binary) << listed;
    ExpectWellBehaved(RunQmutil({"date", "today"}, sub), "qmutil date today");
    EXPECT_TRUE(stdfs::exists(victim));
    EXPECT_EQ(Slurp(sub / "tempfiles.lst"), listed);
}
#endif

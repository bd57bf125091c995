// qmutil: the library's families on the command line.
#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <string>
#include <vector>

#include "command.h"
#include "utils/common/TempList.h"
#include "utils/framework/exceptions.h"

namespace qmutil {

namespace {
std::vector<Command>& Registry() {
    static std::vector<Command> commands;
    return commands;
}
}  // namespace

void RegisterCommand(const Command& command) { Registry().push_back(command); }

const std::vector<Command>& Commands() { return Registry(); }

long ParseLong(const std::string& text, const char* what) {
    char* end = nullptr;
    errno = 0;
    long long v = std::strtoll(text.c_str(), &end, 10);
    if (text.empty() || *end || errno || v < -2147483648LL || v > 2147483647LL)
        throw UsageError(std::string("invalid ") + what + " '" + text + "' (expected a 32-bit integer)");
    return (long)v;
}

double ParseDouble(const std::string& text, const char* what) {
    char* end = nullptr;
    double v = std::strtod(text.c_str(), &end);
    if (text.empty() || *end) throw UsageError(std::string("invalid ") + what + " '" + text + "' (expected a number)");
    return v;
}

void RequireArgs(const std::vector<std::string>& args, size_t count, const char* usage) {
    if (args.size() != count) throw UsageError(std::string("usage: qmutil ") + usage);
}

void TourStep(const char* commandLine) { std::printf("\n$ qmutil %s\n", commandLine); }

}  // namespace qmutil

namespace {

void PrintUsage(FILE* out) {
    std::fprintf(out, "usage: qmutil <command> [arguments]   (qmutil <command> --help for details)\n\ncommands:\n");
    std::fprintf(out, "  %-10s %s\n", "tour", "run every family on built-in sample data");
    for (const qmutil::Command& c : qmutil::Commands()) {
        std::string name = std::string(c.name) + (c.action ? std::string(" ") + c.action : "");
        std::fprintf(out, "  %-18s %s\n", name.c_str(), c.summary);
    }
    std::fprintf(out, "\nFiles are read whole up to a limit: text 64 MiB (text wrap: 15,999 bytes), pictures\n"
                      "256 MiB, temporary-file lists 16 MiB. A missing, empty or special file (a folder, a\n"
                      "device, a FIFO), a larger one, or a binary file given as text is refused with exit code 2.\n");
}

int RunTour() {
    std::vector<qmutil::Command> ordered = qmutil::Commands();
    std::stable_sort(ordered.begin(), ordered.end(),
                     [](const qmutil::Command& a, const qmutil::Command& b) { return a.tourOrder < b.tourOrder; });
    std::printf("A tour of MFCQMUtils: each step shows a command and what it prints.\n");
    for (const qmutil::Command& c : ordered) {
        if (!c.tour) continue;
        std::printf("\n== %s%s%s: %s ==\n", c.name, c.action ? " " : "", c.action ? c.action : "", c.summary);
        c.tour();
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    // qmutil is started from any folder: a "tempfiles.lst" there belongs to someone else and is
    // neither acted on nor rewritten. "qmutil temp" works on the list file it is given.
    DetachTempListInstance();
    std::setlocale(LC_ALL, "");
    if (argc < 2 || !std::strcmp(argv[1], "--help") || !std::strcmp(argv[1], "-h")) {
        PrintUsage(argc < 2 ? stderr : stdout);
        return argc < 2 ? 2 : 0;
    }
    std::string name = argv[1];
    std::vector<std::string> args(argv + 2, argv + argc);
    try {
        if (name == "tour") return RunTour();
        bool known = false;
        for (const qmutil::Command& c : qmutil::Commands()) {
            if (name != c.name) continue;
            known = true;
            std::vector<std::string> rest = args;
            if (c.action) {
                if (args.empty() || args[0] != c.action) continue;
                rest.erase(rest.begin());
            }
            if (!rest.empty() && (rest[0] == "--help" || rest[0] == "-h")) {
                std::printf("%s", c.help);
                return 0;
            }
            return c.run(rest);
        }
        if (!known) throw qmutil::UsageError("unknown command '" + name + "' (see qmutil --help)");
        if (!args.empty() && (args[0] == "--help" || args[0] == "-h")) {
            for (const qmutil::Command& c : qmutil::Commands())
                if (name == c.name) std::printf("%s", c.help);
            return 0;
        }
        throw qmutil::UsageError("unknown or missing action for '" + name + "'" +
                                 (args.empty() ? std::string() : " ('" + args[0] + "')") + " (see qmutil " + name + " --help)");
    } catch (const qmutil::UsageError& e) {
        std::fprintf(stderr, "qmutil: %s\n", e.what());
        return 2;
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "qmutil: %s: out of memory\n", name.c_str());
        return 2;
    } catch (const std::exception& e) {
        // Whatever a command did not turn into a message of its own ends the run with one line.
        std::fprintf(stderr, "qmutil: %s: %s\n", name.c_str(), e.what());
        return 2;
    } catch (CException* e) {
        char text[512] = "";
        e->GetErrorMessage(text, sizeof text);
        e->Delete();
        std::fprintf(stderr, "qmutil: %s: %s\n", name.c_str(), text[0] ? text : "file error");
        return 2;
    }
}

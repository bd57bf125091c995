// qmutil's subcommands register themselves here: one file per family (cmd_date.cpp, ...)
// defines a Command and a static Registrar; main.cpp dispatches and runs the tour.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace qmutil {

// Thrown for bad arguments: main prints "qmutil: <message>" and exits with code 2.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// A command is either a whole family ("date", action nullptr) or one action of a family
// that several files share ("text" + "links"); "qmutil text links FILE" runs the latter.
struct Command {
    const char* name;      // "date"
    const char* action;    // "links", or nullptr when the command takes no action word
    const char* summary;   // one line for the command list
    const char* help;      // full usage text for "qmutil <name> --help"
    int (*run)(const std::vector<std::string>& args);  // args after the command (and action) word
    void (*tour)();        // shows the family on built-in sample data
    int tourOrder;         // position in the tour
};

void RegisterCommand(const Command& command);
const std::vector<Command>& Commands();

struct Registrar {
    explicit Registrar(const Command& command) { RegisterCommand(command); }
};

// Argument helpers that throw UsageError with a clear message.
long ParseLong(const std::string& text, const char* what);
double ParseDouble(const std::string& text, const char* what);
void RequireArgs(const std::vector<std::string>& args, size_t count, const char* usage);
// Prints a tour heading and the command line a user would type.
void TourStep(const char* commandLine);

}  // namespace qmutil

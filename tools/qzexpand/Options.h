// What the command line asks for.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace qzexpand {

// One -D [TYPE:]NAME=VALUE.
struct Definition {
    std::string type;  // bool, int, double, char, string; $ for a dollar macro; empty for a macro
    std::string name;
    std::string value;
};

struct Options {
    enum class Action { Expand, Evaluate, Help, Version };

    Action action = Action::Expand;
    std::string input = "-";
    std::string output = "-";
    std::string expression;  // for Evaluate
    std::vector<Definition> definitions;

    // The bounds of the run; 0 is none.
    long stackLimit = 8;    // in MiB, not 0
    long memoryLimit = -1;  // in MiB; below 0: most of what the machine has
    long timeLimit = 0;     // in seconds
};

// A wrong call.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Throws UsageError.
Options ParseCommandLine(int argc, char** argv);

extern const char s_usage[];  // for a wrong call
extern const char s_help[];   // for --help

}  // namespace qzexpand

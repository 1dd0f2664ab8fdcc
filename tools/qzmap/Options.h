// What the command line asks for.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "LoadedMap.h"

namespace qztools {

// How a compiler counts columns. Display columns count characters, wide ones twice, and a tab
// leads to the next column behind a multiple of 8.
enum class ColumnUnit { Guessed, Bytes, Display };

struct Options {
    enum class Command { Lookup, Remap, Check, Html, Help, Version };

    Command command = Command::Help;
    std::vector<std::string> maps;  // one at least
    Whereabouts whereabouts;
    Position place;                     // of lookup; the column is 0 for the whole line
    std::optional<std::string> source;  // of lookup: the file that the place is in, not the output
    ColumnUnit columns = ColumnUnit::Guessed;  // of remap
    std::string folder;      // of remap: where relative names in messages start from
    std::string page = "-";  // of html
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

}  // namespace qztools

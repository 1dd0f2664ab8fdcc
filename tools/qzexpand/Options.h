// What the command line asks for.
#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "ReportStyle.h"
#include "qzMacroExpander/LSVariable.h"

namespace qztools {

// One -D.
struct Definition {
    enum class Kind { Macro, DollarMacro, Value };

    Kind kind = Kind::Macro;
    vorn::ELSVariable type = vorn::LSV_MACRO;  // of a value: LSV_BOOL to LSV_STRING
    std::string name;
    std::string value;
};

// What becomes of the @import directives in the output.
enum class Imports { Drop, Keep, Inline };

// What happens to an @name that is neither a directive nor a variable.
enum class Unknown { Keep, Warn, Refuse };

// How line ends are read and written: see Newlines.h.
enum class Newlines { Keep, Lf, CrLf };

enum class MapFormat { QzMap, V3 };

struct Options {
    enum class Action { Expand, Evaluate, Help, Version };

    Action action = Action::Expand;
    std::string input = "-";
    std::string output = "-";
    std::vector<std::string> inputs;  // each into the folder output; none: the one input
    long jobs = 0;                    // of the inputs, at once; 0: as many as there are cores
    std::string expression;           // for Evaluate
    std::optional<std::string> depfile;
    std::optional<std::string> depfileTarget;  // the output where it is missing
    bool check = false;                        // compare the output and write nothing
    bool alwaysWrite = false;                  // also where the bytes stay the same
    std::optional<std::string> map;
    MapFormat mapFormat = MapFormat::QzMap;
    bool lineMarkers = false;
    std::vector<Definition> definitions;
    std::vector<std::string> importFolders;
    std::optional<std::string> root;  // what imports may not leave
    Imports imports = Imports::Drop;
    Newlines newlines = Newlines::Keep;
    bool allowPython = false;

    // The bounds of the run; 0 is none.
    long stackLimit = 64;   // in MiB, not 0
    long memoryLimit = -1;  // in MiB; below 0: most of what the machine has
    long timeLimit = 0;     // in seconds
    long outputLimit = 0;   // in MiB

    ReportStyle reportStyle{};
    Unknown unknownNames = Unknown::Keep;
};

// A wrong call.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Adds to the options what the command line asks for. Throws UsageError; what stands in front of
// the wrong argument has been added then.
void ParseCommandLine(int argc, char** argv, Options& options);

extern const char s_usage[];  // for a wrong call
extern const char s_help[];   // for --help

}  // namespace qztools

#include "Options.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string_view>

#include <getopt.h>

namespace qztools {

const char s_usage[] = "usage: qzmap lookup [OPTION]... MAP LINE[:COLUMN]\n"
                       "       qzmap lookup [OPTION]... MAP --source FILE:LINE[:COLUMN]\n"
                       "       qzmap remap [OPTION]... MAP...\n"
                       "       qzmap check [OPTION]... MAP...\n"
                       "       qzmap html [OPTION]... MAP [-o PAGE]\n"
                       "Try 'qzmap --help' for more.\n";

const char s_help[] =
    "usage: qzmap lookup [OPTION]... MAP LINE[:COLUMN]\n"
    "       qzmap lookup [OPTION]... MAP --source FILE:LINE[:COLUMN]\n"
    "       qzmap remap [OPTION]... MAP...\n"
    "       qzmap check [OPTION]... MAP...\n"
    "       qzmap html [OPTION]... MAP [-o PAGE]\n"
    "Goes the way between an expanded text and its sources by a map that qzexpand --map wrote.\n"
    "\n"
    "  lookup  shows where a line or a position of the output came from, or went to\n"
    "  remap   rewrites the messages of a compiler on standard input to the sources\n"
    "  check   proves that a map covers its output exactly\n"
    "  html    writes a page that shows the output and its sources side by side\n"
    "\n"
    "  --source FILE:LINE[:COLUMN]  look from a source to the output\n"
    "  -o PAGE                      write the page to PAGE, whole or not at all\n"
    "  --output FILE                where the output is now\n"
    "  --base FOLDER                where the names in the map start from now\n"
    "  -C FOLDER                    where relative names in messages start from\n"
    "  --columns UNIT               what the compiler counts: bytes or display (guessed)\n"
    "  --help, --version            show this text, or the version\n"
    "\n"
    "The status is 0 when all went well, 1 after an error, 2 after a wrong call.\n";

namespace {

using Command = Options::Command;

// ---- places ------------------------------------------------------------------------------------

bool ScanNumber(std::string_view& s, std::int64_t& number) {
    const auto [end, error] = std::from_chars(s.data(), s.data() + s.size(), number);
    if (error != std::errc() || number < 1)
        return false;
    s.remove_prefix(static_cast<std::size_t>(end - s.data()));
    return true;
}

// LINE or LINE:COLUMN
std::optional<Position> ParsePosition(std::string_view s) {
    Position position;
    if (!ScanNumber(s, position.line))
        return std::nullopt;
    if (s.starts_with(':')) {
        s.remove_prefix(1);
        if (!ScanNumber(s, position.column))
            return std::nullopt;
    }
    return s.empty() ? std::optional(position) : std::nullopt;
}

void ParseLookedUp(Options& options, const std::string& text) {
    const std::optional<Position> place = ParsePosition(text);
    if (!place)
        throw UsageError("no line, and no line and column: " + text);
    options.place = *place;
}

// The file ends in front of the longest end of the text that is a place.
void ParseSource(Options& options, const char* argument) {
    const std::string_view text(argument);
    for (std::size_t i = text.find(':', 1); i != std::string_view::npos; i = text.find(':', i + 1))
        if (const std::optional<Position> place = ParsePosition(text.substr(i + 1))) {
            options.source = text.substr(0, i);
            options.place = *place;
            return;
        }
    throw UsageError("--source needs FILE:LINE or FILE:LINE:COLUMN: " + std::string(text));
}

void ParseColumns(Options& options, std::string_view text) {
    if (text != "bytes" && text != "display")
        throw UsageError("--columns is bytes or display: " + std::string(text));
    options.columns = text == "bytes" ? ColumnUnit::Bytes : ColumnUnit::Display;
}

// ---- the tables --------------------------------------------------------------------------------

struct CommandRow {
    const char* name;
    Command command;
};

constexpr CommandRow s_commands[] = {
    {"lookup",    Command::Lookup },
    {"remap",     Command::Remap  },
    {"check",     Command::Check  },
    {"html",      Command::Html   },
    {"--help",    Command::Help   },
    {"--version", Command::Version},
};

// An option of one command, or of all where command is Help.
struct OptionRow {
    int found;  // what getopt_long returns
    Command command;
    void (*apply)(Options& options, const char* argument);
};

enum : int { s_base = 256, s_columns, s_helpOption, s_output, s_source, s_versionOption };

// clang-format off
constexpr OptionRow s_options[] = {
    {'o', Command::Html, [](Options& o, const char* s) { o.page = s; }},
    {'C', Command::Remap, [](Options& o, const char* s) { o.folder = s; }},
    {s_base, Command::Help, [](Options& o, const char* s) { o.whereabouts.base = s; }},
    {s_columns, Command::Remap, [](Options& o, const char* s) { ParseColumns(o, s); }},
    {s_helpOption, Command::Help,
     [](Options& o, const char*) { o.command = Command::Help; }},
    {s_output, Command::Help, [](Options& o, const char* s) { o.whereabouts.output = s; }},
    {s_source, Command::Lookup, ParseSource},
    {s_versionOption, Command::Help,
     [](Options& o, const char*) { o.command = Command::Version; }},
};

constexpr option s_names[] = {
    {"base", required_argument, nullptr, s_base},
    {"columns", required_argument, nullptr, s_columns},
    {"help", no_argument, nullptr, s_helpOption},
    {"output", required_argument, nullptr, s_output},
    {"source", required_argument, nullptr, s_source},
    {"version", no_argument, nullptr, s_versionOption},
    {},
};
// clang-format on

// ---- the command line --------------------------------------------------------------------------

Command ParseCommand(std::string_view name) {
    const auto row = std::find_if(std::begin(s_commands), std::end(s_commands),
                                  [name](const CommandRow& r) { return r.name == name; });
    if (row == std::end(s_commands))
        throw UsageError("no command: " + std::string(name));
    return row->command;
}

// argv[optind - 1] is the last argument that was read.
std::string OptionName(char** argv) {
    const bool isShort = optopt > 0 && optopt < s_base;
    return isShort ? std::string("-") + static_cast<char>(optopt) : argv[optind - 1];
}

void ApplyOption(Options& options, int found, char** argv) {
    const auto row = std::find_if(std::begin(s_options), std::end(s_options),
                                  [found](const OptionRow& r) { return r.found == found; });
    if (row == std::end(s_options))
        throw UsageError(found == ':' ? OptionName(argv) + " needs an argument"
                                      : "unknown option " + OptionName(argv));
    if (row->command != Command::Help && row->command != options.command) {
        const char* name = found == 'o'        ? "-o"
                           : found == 'C'      ? "-C"
                           : found == s_source ? "--source"
                                               : "--columns";
        throw UsageError(std::string(name) + " is no option of this command");
    }
    row->apply(options, optarg);
}

void TakeOperands(Options& options, std::vector<std::string> operands) {
    const bool hasPlace = options.command == Command::Lookup && !options.source;
    const bool takesMany = options.command == Command::Remap || options.command == Command::Check;
    if (operands.empty())
        throw UsageError("no map");
    if (hasPlace && operands.size() < 2)
        throw UsageError("no line");
    const std::size_t most = hasPlace ? 2 : 1;
    if (!takesMany && operands.size() > most)
        throw UsageError("too many arguments: " + operands[most]);
    if (hasPlace) {
        ParseLookedUp(options, operands.back());
        operands.pop_back();
    }
    if (options.command == Command::Remap
        && std::find(operands.begin(), operands.end(), "-") != operands.end())
        throw UsageError("standard input holds the messages, so no map can be -");
    if (options.whereabouts.output && operands.size() > 1)
        throw UsageError("--output goes with one map");
    options.maps = std::move(operands);
}

bool IsShown(Command command) {
    return command == Command::Help || command == Command::Version;
}

}  // namespace

Options ParseCommandLine(int argc, char** argv) {
    if (argc < 2)
        throw UsageError("no command");
    Options options;
    options.command = ParseCommand(argv[1]);
    opterr = 0;  // the messages are made here
    optind = 2;
    int found = 0;
    while (!IsShown(options.command)
           && (found = ::getopt_long(argc, argv, ":C:o:", s_names, nullptr)) != -1)
        ApplyOption(options, found, argv);
    if (!IsShown(options.command))
        TakeOperands(options, {argv + optind, argv + argc});
    return options;
}

}  // namespace qztools

#include "Options.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

#include <getopt.h>

#include "qzUtils/StringExt.h"

namespace qzexpand {

const char s_usage[] = "usage: qzexpand [OPTION]... [FILE]\n"
                       "       qzexpand [OPTION]... --eval EXPRESSION\n"
                       "Try 'qzexpand --help' for more.\n";

const char s_help[] =
    "usage: qzexpand [OPTION]... [FILE]\n"
    "       qzexpand [OPTION]... --eval EXPRESSION\n"
    "Expands the macros and directives in FILE, or in standard input (also -).\n"
    "\n"
    "  -o FILE                write to FILE, whole or not at all, not to standard output\n"
    "  -D NAME=VALUE          define a macro without arguments\n"
    "  -D TYPE:NAME=VALUE     define a value of type bool, int, double, char or string\n"
    "      --eval EXPRESSION  evaluate an expression and write its value\n"
    "      --stack-limit MIB  the stack for nested macros (8)\n"
    "      --memory-limit MIB the memory in all; 0 for no limit (most of the machine's)\n"
    "      --time-limit SECONDS\n"
    "                         the time in all; 0 for no limit (0)\n"
    "      --help             show this text\n"
    "      --version          show the version\n"
    "\n"
    "The status is 0 when all went well, 1 after an error in a text or a file, 2 after a wrong\n"
    "call.\n";

namespace {

constexpr std::array<std::string_view, 5> s_types = {"bool", "int", "double", "char", "string"};

bool IsType(std::string_view s) {
    return std::find(s_types.begin(), s_types.end(), s) != s_types.end();
}

bool IsIdentifier(const std::string& s) {
    vorn::SubString rest(s.data(), s.data() + s.size());
    return vorn::ScanIdentifier(rest) && rest.empty();
}

[[noreturn]] void ThrowBadDefinition(const std::string& text, const std::string& reason) {
    throw UsageError("-D " + text + ": " + reason);
}

Definition ParseDefinition(const std::string& text) {
    const std::size_t equal = text.find('=');
    if (equal == std::string::npos)
        ThrowBadDefinition(text, "'=' and a value are missing");
    Definition definition{"", text.substr(0, equal), text.substr(equal + 1)};
    const std::size_t colon = definition.name.find(':');
    if (colon != std::string::npos) {
        definition.type = definition.name.substr(0, colon);
        definition.name.erase(0, colon + 1);
        if (!IsType(definition.type))
            ThrowBadDefinition(text, "'" + definition.type + "' is no type");
    }
    if (!IsIdentifier(definition.name))
        ThrowBadDefinition(text, "'" + definition.name + "' is no name");
    if (IsType(definition.name))
        ThrowBadDefinition(text, "'" + definition.name + "' is a type and no name");
    return definition;
}

// ---- the command line --------------------------------------------------------------------------

enum LongOption {
    OPTION_EVAL = 256,
    OPTION_HELP,
    OPTION_MEMORY_LIMIT,
    OPTION_STACK_LIMIT,
    OPTION_TIME_LIMIT,
    OPTION_VERSION
};

constexpr option s_longOptions[] = {
    {"eval",         required_argument, nullptr, OPTION_EVAL        },
    {"help",         no_argument,       nullptr, OPTION_HELP        },
    {"memory-limit", required_argument, nullptr, OPTION_MEMORY_LIMIT},
    {"stack-limit",  required_argument, nullptr, OPTION_STACK_LIMIT },
    {"time-limit",   required_argument, nullptr, OPTION_TIME_LIMIT  },
    {"version",      no_argument,       nullptr, OPTION_VERSION     },
    {nullptr,        0,                 nullptr, 0                  },
};

// The number of a limit, which must lie in a range that fits every use.
long ParseLimit(const char* option, long least, std::string_view text) {
    constexpr long s_most = 1'000'000;
    long value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < least || value > s_most)
        throw UsageError(std::string(option) + " needs a number from " + std::to_string(least)
                         + " to " + std::to_string(s_most) + ": " + std::string(text));
    return value;
}

// argv[optind - 1] is the last argument that was read.
[[noreturn]] void ThrowBadOption(int found, char** argv) {
    const bool isShort = optopt > 0 && optopt < 256;
    const std::string name =
        isShort ? std::string("-") + static_cast<char>(optopt) : argv[optind - 1];
    throw UsageError(found == ':' ? name + " needs an argument" : "unknown option " + name);
}

void ApplyOption(Options& options, int found, char** argv) {
    switch (found) {
    case 'o':
        options.output = optarg;
        return;
    case 'D':
        options.definitions.push_back(ParseDefinition(optarg));
        return;
    case OPTION_EVAL:
        options.action = Options::Action::Evaluate;
        options.expression = optarg;
        return;
    case OPTION_HELP:
        options.action = Options::Action::Help;
        return;
    case OPTION_MEMORY_LIMIT:
        options.memoryLimit = ParseLimit("--memory-limit", 0, optarg);
        return;
    case OPTION_STACK_LIMIT:
        options.stackLimit = ParseLimit("--stack-limit", 1, optarg);
        return;
    case OPTION_TIME_LIMIT:
        options.timeLimit = ParseLimit("--time-limit", 0, optarg);
        return;
    case OPTION_VERSION:
        options.action = Options::Action::Version;
        return;
    default:
        ThrowBadOption(found, argv);
    }
}

}  // namespace

Options ParseCommandLine(int argc, char** argv) {
    Options options;
    opterr = 0;  // the messages are made here
    int found = 0;
    while ((found = ::getopt_long(argc, argv, ":o:D:", s_longOptions, nullptr)) != -1) {
        ApplyOption(options, found, argv);
        if (options.action == Options::Action::Help || options.action == Options::Action::Version)
            return options;
    }
    if (optind == argc)
        return options;
    if (options.action == Options::Action::Evaluate)
        throw UsageError(std::string("--eval takes no file: ") + argv[optind]);
    if (argc - optind > 1)
        throw UsageError(std::string("more than one file: ") + argv[optind + 1]);
    options.input = argv[optind];
    return options;
}

}  // namespace qzexpand

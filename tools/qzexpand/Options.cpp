#include "Options.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <string_view>

#include <getopt.h>

#include "Views.h"
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
    "  -o FILE               write to FILE, whole or not at all\n"
    "  -D NAME=VALUE         define a macro without arguments\n"
    "  -D TYPE:NAME=VALUE    define a value of type bool, int, double, char or string\n"
    "  -D '$NAME=VALUE'      define a dollar macro\n"
    "  -I FOLDER             search FOLDER for files that are imported\n"
    "  --imports=keep        leave @import directives in the output\n"
    "  --python              allow the text to run Python\n"
    "  --eval EXPRESSION     evaluate an expression and write its value\n"
    "  --stack-limit MIB     the stack for nested macros (8)\n"
    "  --memory-limit MIB    the memory in all, 0 for no limit (most of the machine's)\n"
    "  --time-limit SECONDS  the time in all, 0 for no limit (0)\n"
    "  --help, --version     show this text, or the version\n"
    "\n"
    "The status is 0 when all went well, 1 after an error, 2 after a wrong call.\n";

namespace {

std::string Quoted(std::string_view s) {
    std::string quoted("'");
    return quoted.append(s).append("'");
}

// ---- definitions -------------------------------------------------------------------------------

struct TypeName {
    std::string_view name;
    vorn::ELSVariable type;
};

constexpr TypeName s_typeNames[] = {
    {"bool",   vorn::LSV_BOOL  },
    {"int",    vorn::LSV_INT   },
    {"double", vorn::LSV_DOUBLE},
    {"char",   vorn::LSV_CHAR  },
    {"string", vorn::LSV_STRING},
};

// The type that a word names, LSV_MACRO for any other word.
vorn::ELSVariable TypeOf(std::string_view word) {
    const auto found = std::find_if(std::begin(s_typeNames), std::end(s_typeNames),
                                    [word](const TypeName& t) { return t.name == word; });
    return found == std::end(s_typeNames) ? vorn::LSV_MACRO : found->type;
}

bool IsIdentifier(const std::string& s) {
    vorn::SubString rest = ToSubString(s);
    return vorn::ScanIdentifier(rest) && rest.empty();
}

[[noreturn]] void ThrowBadDefinition(const std::string& text, const std::string& reason) {
    throw UsageError("-D " + text + ": " + reason);
}

// What stands in front of the =: NAME, $NAME or TYPE:NAME. text is the whole definition.
void ParseDefined(Definition& definition, std::string_view s, const std::string& text) {
    const std::size_t colon = s.find(':');
    if (s.starts_with('$')) {
        definition.kind = Definition::Kind::DollarMacro;
        s.remove_prefix(1);
    } else if (colon != std::string_view::npos) {
        definition.kind = Definition::Kind::Value;
        definition.type = TypeOf(s.substr(0, colon));
        if (definition.type == vorn::LSV_MACRO)
            ThrowBadDefinition(text, Quoted(s.substr(0, colon)) + " is no type");
        s.remove_prefix(colon + 1);
    }
    definition.name = s;
}

Definition ParseDefinition(const std::string& text) {
    const std::size_t equal = text.find('=');
    if (equal == std::string::npos)
        ThrowBadDefinition(text, "'=' and a value are missing");
    Definition definition;
    ParseDefined(definition, std::string_view(text).substr(0, equal), text);
    definition.value = text.substr(equal + 1);
    const std::string& name = definition.name;
    if (!IsIdentifier(name))
        ThrowBadDefinition(text, Quoted(name) + " is no name");
    // As in the language, where @def int = 5 defines nothing.
    if (definition.kind == Definition::Kind::Macro && TypeOf(name) != vorn::LSV_MACRO)
        ThrowBadDefinition(text, Quoted(name) + " is a type and no name");
    return definition;
}

// ---- the command line --------------------------------------------------------------------------

enum LongOption {
    OPTION_EVAL = 256,
    OPTION_HELP,
    OPTION_IMPORTS,
    OPTION_MEMORY_LIMIT,
    OPTION_PYTHON,
    OPTION_STACK_LIMIT,
    OPTION_TIME_LIMIT,
    OPTION_VERSION
};

constexpr option s_longOptions[] = {
    {"eval",         required_argument, nullptr, OPTION_EVAL        },
    {"help",         no_argument,       nullptr, OPTION_HELP        },
    {"imports",      required_argument, nullptr, OPTION_IMPORTS     },
    {"memory-limit", required_argument, nullptr, OPTION_MEMORY_LIMIT},
    {"python",       no_argument,       nullptr, OPTION_PYTHON      },
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

bool ParseKeepImports(const std::string& text) {
    if (text != "keep" && text != "remove")
        throw UsageError("--imports is keep or remove: " + text);
    return text == "keep";
}

void ApplyOption(Options& options, int found, char** argv) {
    switch (found) {
    case 'o':
        options.output = optarg;
        return;
    case 'D':
        options.definitions.push_back(ParseDefinition(optarg));
        return;
    case 'I':
        options.importFolders.emplace_back(optarg);
        return;
    case OPTION_EVAL:
        options.action = Options::Action::Evaluate;
        options.expression = optarg;
        return;
    case OPTION_HELP:
        options.action = Options::Action::Help;
        return;
    case OPTION_IMPORTS:
        options.keepImports = ParseKeepImports(optarg);
        return;
    case OPTION_MEMORY_LIMIT:
        options.memoryLimit = ParseLimit("--memory-limit", 0, optarg);
        return;
    case OPTION_PYTHON:
        options.allowPython = true;
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
    while ((found = ::getopt_long(argc, argv, ":o:D:I:", s_longOptions, nullptr)) != -1) {
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

#include "Options.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>
#include <string_view>

#include "Arguments.h"
#include "common/Views.h"
#include "qzUtils/StringExt.h"

namespace qztools {

const char s_usage[] = "usage: qzexpand [OPTION]... [FILE]\n"
                       "       qzexpand [OPTION]... -o FOLDER FILE...\n"
                       "       qzexpand [OPTION]... --eval EXPRESSION\n"
                       "Try 'qzexpand --help' for more.\n";

const char s_help[] =
    "usage: qzexpand [OPTION]... [FILE]\n"
    "       qzexpand [OPTION]... -o FOLDER FILE...\n"
    "       qzexpand [OPTION]... --eval EXPRESSION\n"
    "Expands the macros and directives in FILE, or in standard input (also -).\n"
    "\n"
    "  -o FILE               write to FILE, whole or not at all\n"
    "  -o FOLDER             write each of several files to FOLDER, without its .qz\n"
    "  -j N                  expand N files at once (as many as there are cores)\n"
    "  @FILE                 take arguments from FILE\n"
    "  -D NAME=VALUE         define a macro without arguments\n"
    "  -D TYPE:NAME=VALUE    define a value of type bool, int, double, char or string\n"
    "  -D '$NAME=VALUE'      define a dollar macro\n"
    "  -I FOLDER             search FOLDER for files that are imported\n"
    "  --root FOLDER         import nothing from outside FOLDER\n"
    "  --depfile FILE        write the files that are read to FILE, for Make and Ninja\n"
    "  --depfile-target NAME the target in the depfile (the output)\n"
    "  --check               show how FILE would change, and write nothing\n"
    "  --always-write        write files also where their bytes stay the same\n"
    "  --imports=inline      put the expansions of imported files where the directives stand\n"
    "  --imports=keep        leave @import directives in the output (drop: take them out)\n"
    "  --newline=lf, crlf    write these line ends (keep: those of FILE)\n"
    "  --map FILE            write to FILE where each byte of the output came from\n"
    "  --map-format=v3       as a Source Map, revision 3 (qzmap)\n"
    "  --line-markers        put #line directives into the output\n"
    "  --python              allow the text to run Python\n"
    "  --eval EXPRESSION     evaluate an expression and write its value\n"
    "  --limit-stack MIB     the stack for nested macros (64)\n"
    "  --limit-memory MIB    the memory in all, 0 for no limit (most of the machine's)\n"
    "  --limit-output MIB    the expansion, 0 for no limit (0)\n"
    "  --limit-time SECONDS  the time in all, 0 for no limit (0)\n"
    "  --backtrace=all       show all lines of context of an error, also of a long one\n"
    "  --color=WHEN          colour reports: auto (on a terminal), always or never\n"
    "  --diagnostics=json    report for editors: one JSON object a line\n"
    "  --warn-unknown        warn of an @name that is neither a directive nor a variable\n"
    "  --help, --version     show this text, or the version\n"
    "\n"
    "The status is 0 when all went well, 1 after an error, 2 after a wrong call, 3 after a "
    "limit.\n";

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

// One of the words that an option takes.
template <class Value>
struct Word {
    std::string_view word;
    Value value;
};

constexpr Word<Imports> s_importsWords[] = {
    {"drop",   Imports::Drop  },
    {"keep",   Imports::Keep  },
    {"inline", Imports::Inline},
};

constexpr Word<Newlines> s_newlineWords[] = {
    {"keep", Newlines::Keep},
    {"lf",   Newlines::Lf  },
    {"crlf", Newlines::CrLf},
};

template <class Value, std::size_t Size>
Value ParseWord(const char* option, const Word<Value> (&words)[Size], std::string_view text) {
    std::string choice;
    for (const auto& [word, value] : words) {
        if (word == text)
            return value;
        choice += (choice.empty() ? "" : &word == &words[Size - 1].word ? " or " : ", ");
        choice += word;
    }
    throw UsageError(std::string(option) + " is " + choice + ": " + std::string(text));
}

constexpr Word<MapFormat> s_mapFormatWords[] = {
    {"qzmap", MapFormat::QzMap},
    {"v3",    MapFormat::V3   },
};

constexpr Word<std::optional<bool>> s_colorWords[] = {
    {"auto",   {}   },
    {"always", true },
    {"never",  false},
};

constexpr Word<Unknown> s_warnUnknownWords[] = {
    {"warning", Unknown::Warn  },
    {"error",   Unknown::Refuse},
};

constexpr Word<bool> s_diagnosticsWords[] = {
    {"text", false},
    {"json", true },
};

constexpr Word<bool> s_backtraceWords[] = {
    {"short", false},
    {"all",   true },
};

// clang-format off
constexpr OptionRow s_options[] = {
    {'o', nullptr, true,
     [](Options& o, const char* s) { o.output = s; }},
    {'D', nullptr, true,
     [](Options& o, const char* s) { o.definitions.push_back(ParseDefinition(s)); }},
    {'I', nullptr, true,
     [](Options& o, const char* s) { o.importFolders.emplace_back(s); }},
    {'j', nullptr, true,
     [](Options& o, const char* s) { o.jobs = ParseLimit("-j", 1, s); }},
    {0, "always-write", false,
     [](Options& o, const char*) { o.alwaysWrite = true; }},
    {0, "backtrace", true,
     [](Options& o, const char* s) {
         o.reportStyle.hasWholeBacktrace = ParseWord("--backtrace", s_backtraceWords, s); }},
    {0, "check", false,
     [](Options& o, const char*) { o.check = true; }},
    {0, "color", true,
     [](Options& o, const char* s) {
         o.reportStyle.isColored = ParseWord("--color", s_colorWords, s); }},
    {0, "depfile", true,
     [](Options& o, const char* s) { o.depfile = s; }},
    {0, "depfile-target", true,
     [](Options& o, const char* s) { o.depfileTarget = s; }},
    {0, "diagnostics", true,
     [](Options& o, const char* s) {
         o.reportStyle.isJson = ParseWord("--diagnostics", s_diagnosticsWords, s); }},
    {0, "eval", true,
     [](Options& o, const char* s) { o.action = Options::Action::Evaluate; o.expression = s; }},
    {0, "help", false,
     [](Options& o, const char*) { o.action = Options::Action::Help; }},
    {0, "imports", true,
     [](Options& o, const char* s) { o.imports = ParseWord("--imports", s_importsWords, s); }},
    {0, "limit-memory", true,
     [](Options& o, const char* s) { o.memoryLimit = ParseLimit("--limit-memory", 0, s); }},
    {0, "limit-output", true,
     [](Options& o, const char* s) { o.outputLimit = ParseLimit("--limit-output", 0, s); }},
    {0, "limit-stack", true,
     [](Options& o, const char* s) { o.stackLimit = ParseLimit("--limit-stack", 1, s); }},
    {0, "limit-time", true,
     [](Options& o, const char* s) { o.timeLimit = ParseLimit("--limit-time", 0, s); }},
    {0, "line-markers", false,
     [](Options& o, const char*) { o.lineMarkers = true; }},
    {0, "map", true,
     [](Options& o, const char* s) { o.map = s; }},
    {0, "map-format", true,
     [](Options& o, const char* s) { o.mapFormat = ParseWord("--map-format", s_mapFormatWords, s); }},
    {0, "newline", true,
     [](Options& o, const char* s) { o.newlines = ParseWord("--newline", s_newlineWords, s); }},
    {0, "python", false,
     [](Options& o, const char*) { o.allowPython = true; }},
    {0, "root", true,
     [](Options& o, const char* s) { o.root = s; }},
    {0, "version", false,
     [](Options& o, const char*) { o.action = Options::Action::Version; }},
    {0, "warn-unknown", s_optionalArgument,
     [](Options& o, const char* s) {
         o.unknownNames = ParseWord("--warn-unknown", s_warnUnknownWords,
                                    s == nullptr ? "warning" : s); }},
};
// clang-format on

// Several files, or one for a folder, have their outputs in a folder.
void TakeFiles(const std::vector<std::string>& files, Options& options) {
    if (files.empty())
        return;
    if (options.action == Options::Action::Evaluate)
        throw UsageError("--eval takes no file: " + files.front());
    if (files.size() > 1 && options.output == "-")
        throw UsageError("more than one file without -o FOLDER: " + files[1]);
    if (files.size() > 1 || options.output.ends_with('/'))
        options.inputs = files;
    else
        options.input = files.front();
}

void CheckDepfile(const Options& options) {
    if (!options.inputs.empty()) {
        if (options.depfileTarget)
            throw UsageError("--depfile-target is for one file");
        return;
    }
    if (options.output == "-" && !options.depfileTarget)
        throw UsageError("--depfile needs -o FILE or --depfile-target NAME");
    if (options.depfile == options.output)
        throw UsageError("--depfile and -o name one file: " + options.output);
}

void CheckMap(const Options& options) {
    if (options.mapFormat != MapFormat::QzMap && !options.map)
        throw UsageError("--map-format needs --map FILE");
    if (!options.inputs.empty())
        return;
    if (options.map && options.map == options.output)
        throw UsageError("--map and -o name one file: " + *options.map);
    if (options.map && options.map == options.depfile)
        throw UsageError("--map and --depfile name one file: " + *options.map);
}

// What options ask for together.
void CheckTogether(const Options& options) {
    if (options.check && options.output == "-")
        throw UsageError("--check needs -o FILE");
    if (options.depfile)
        CheckDepfile(options);
    CheckMap(options);
}

}  // namespace

void ParseCommandLine(int argc, char** argv, Options& options) {
    Arguments arguments(s_options, options);
    for (int i = 1; i < argc; ++i)
        arguments.Take(argv[i]);
    if (options.action == Options::Action::Help || options.action == Options::Action::Version)
        return;
    arguments.End();
    TakeFiles(arguments.Files(), options);
    CheckTogether(options);
}

}  // namespace qztools

// Options are the same in --help, in the document of the tool and in its manual page, and readers
// of manual pages take the page.

#include "ToolRunner.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>

namespace {

using Names = std::set<std::string>;

std::string ReadWhole(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// What a command writes to both of its streams.
std::string OutputOf(const std::string& command) {
    std::FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
    std::string output;
    for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
        output += static_cast<char>(c);
    ::pclose(pipe);
    return output;
}

// The names of options in a text: of "--color=WHEN" the --color.
void AddOptions(const std::string& text, Names& names) {
    static const std::regex s_option("(^|[ `,'])(--?[A-Za-z][a-z0-9-]*)");
    for (std::sregex_iterator at(text.begin(), text.end(), s_option), end; at != end; ++at)
        names.insert((*at)[2]);
}

// From the first column of the lines that name options.
Names OptionsOfHelp(const std::string& help) {
    static const std::regex s_line("  (-.*?)(  .*|)");
    Names names;
    std::istringstream lines(help);
    std::smatch match;
    for (std::string line; std::getline(lines, line);)
        if (std::regex_match(line, match, s_line))
            AddOptions(match[1], names);
    return names;
}

// From the first column of the tables that list options.
Names OptionsOfDocument(const std::string& document) {
    static const std::regex s_row("\\| (`-.*?) \\| .*");
    Names names;
    std::istringstream lines(document);
    std::smatch match;
    for (std::string line; std::getline(lines, line);)
        if (std::regex_match(line, match, s_row))
            AddOptions(match[1], names);
    return names;
}

// From the terms that a manual page lists, in the form of troff.
Names OptionsOfPage(const std::string& page) {
    static const std::regex s_term("\\.TP\n(.*)");
    static const std::regex s_escape("\\\\(f.|(?=-))");
    Names names;
    for (std::sregex_iterator at(page.begin(), page.end(), s_term), end; at != end; ++at)
        AddOptions(std::regex_replace((*at)[1].str(), s_escape, ""), names);
    return names;
}

struct Tool {
    const char* name;
    const char* program;
};

void PrintTo(const Tool& tool, std::ostream* os) {
    *os << tool.name;
}

class ToolManual : public testing::TestWithParam<Tool> {
protected:
    static std::string Name() { return GetParam().name; }
    static std::string Help() { return OutputOf(std::string(GetParam().program) + " --help"); }
    static std::string Document() { return ReadWhole(QZ_DOCUMENTS "/" + Name() + ".md"); }
    static std::string Page() { return QZ_MAN_PAGES "/" + Name() + ".1"; }
    static std::string Rendered() {
        return OutputOf("MANWIDTH=200 LC_ALL=C.UTF-8 man -l '" + Page() + "' | col -bx");
    }
};

TEST_P(ToolManual, NamesTheOptionsOfHelpInTheDocument) {
    const Names options = OptionsOfHelp(Help());
    EXPECT_GE(options.size(), 2u);
    EXPECT_EQ(options, OptionsOfDocument(Document()));
}

TEST_P(ToolManual, NamesTheOptionsOfHelpInTheManualPage) {
    EXPECT_EQ(OptionsOfHelp(Help()), OptionsOfPage(ReadWhole(Page())));
}

TEST_P(ToolManual, HasTheSectionsOfAManualPage) {
    const std::string page = Rendered();
    std::size_t last = 0;
    for (const char* section :
         {"\nNAME\n", "\nSYNOPSIS\n", "\nDESCRIPTION\n", "\nEXIT STATUS\n", "\nSEE ALSO\n"}) {
        const std::size_t at = page.find(section, last);
        ASSERT_NE(at, page.npos) << section;
        last = at;
    }
    EXPECT_NE(page.find("\n       " + Name() + " - "), page.npos);
}

TEST_P(ToolManual, KeepsTheExamplesOfTheDocument) {
    static const std::regex s_example("(?:^|\n)(\\$ [^\n]*)");
    const std::string document = Document();
    const std::string page = Rendered();
    int count = 0;
    for (std::sregex_iterator at(document.begin(), document.end(), s_example), end; at != end;
         ++at, ++count)
        EXPECT_NE(page.find((*at)[1].str()), page.npos) << (*at)[1];
    EXPECT_GE(count, 1);
}

TEST_P(ToolManual, IsFoundByItsName) {
    const std::string line = OutputOf("lexgrog '" + Page() + "'");
    EXPECT_EQ(line.rfind(Page() + ": \"" + Name() + " - ", 0), 0u) << line;
}

TEST_P(ToolManual, GivesItsReadersNothingToComplainOf) {
    EXPECT_EQ(OutputOf("man --warnings -l '" + Page() + "' 2>&1 >/dev/null"), "");
    EXPECT_EQ(OutputOf("mandoc -T lint -W error '" + Page() + "'"), "");
}

// Pages are the same whenever they are made.
TEST_P(ToolManual, HasNoDate) {
    std::string upper = Name();
    for (char& c : upper)
        c = static_cast<char>(std::toupper(c));
    const std::string title =
        ".TH " + upper + " 1 \"\" \"" + Name() + " " QZEXPAND_VERSION "\" \"\"\n";
    EXPECT_NE(ReadWhole(Page()).find(title), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Tools, ToolManual,
                         testing::Values(Tool{"qzexpand", QZEXPAND}, Tool{"qzmap", QZMAP}),
                         [](const auto& tool) { return std::string(tool.param.name); });

}  // namespace

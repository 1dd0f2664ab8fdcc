// Messages of real compilers about what qzexpand has made of a text with deliberate errors.

#include "QzmapTest.h"

#include <algorithm>
#include <regex>
#include <sstream>

namespace {

using qzmap_test::Result;

const char* const s_library = "@def helper(name, what) =\n"
                              "{\n"
                              "    int name(int n) {\n"
                              "        return what + missing_in_body;\n"
                              "    }\n"
                              "}\n"
                              "int imported() { return missing_in_import; }\n";

const char* const s_text = "@import \"lib.qz\"\n"
                           "#include \"lib.h\"\n"
                           "namespace a {\n"
                           "    helper(f, n * missing_in_argument)\n"
                           "}\n"
                           "\tint tab() { return missing_in_text; }\n"
                           "@for (i in [1, 2])\n"
                           "{\n"
                           "int g@@i() { return @(i + 1) + missing_in_loop; }\n"
                           "}\n";

class QzmapCompilers : public qzmap_test::QzmapTest {
protected:
    QzmapCompilers() {
        Write("src/lib.qz", s_library);
        Write("src/a.cpp.qz", s_text);
        Write("gen/lib.h", "inline int h() { return missing_in_header; }\n");
        const Result result =
            Run({"--imports=inline", "--map", "gen/a.map", "-o", "gen/a.cpp", "src/a.cpp.qz"});
        EXPECT_EQ(result, (Result{0, "", ""}));
    }

    // What the compiler says of the output, in the words of the sources.
    std::string Messages(const std::string& compiler, const std::string& options = "") const {
        const Result result =
            RunProgram("/bin/sh", {"-c", compiler + " -fsyntax-only " + options
                                             + " gen/a.cpp 2>&1 | '" QZMAP "' remap gen/a.map"});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.err, "");
        return result.out;
    }
};

// Where each name is missing, by its errors.
std::vector<std::string> Places(const std::string& messages) {
    static const std::regex s_error("([^ ]*): error: .*(missing_in_[a-z]+).*");
    std::vector<std::string> places;
    std::istringstream lines(messages);
    std::smatch match;
    for (std::string line; std::getline(lines, line);)
        if (std::regex_match(line, match, s_error))
            places.push_back(match[2].str() + " at " + match[1].str());
    std::sort(places.begin(), places.end());
    return places;
}

// In the body of a macro and of a loop, in an argument, in an imported file, and in a header, which
// is no source. GCC counts a tab as 8 columns and Clang as one.
std::vector<std::string> PlacesWithTab(const std::string& column) {
    return {
        "missing_in_argument at src/a.cpp.qz:4:19",    "missing_in_body at src/lib.qz:4:23",
        "missing_in_header at gen/lib.h:1:25",         "missing_in_import at src/lib.qz:7:25",
        "missing_in_loop at src/a.cpp.qz:9:32",        "missing_in_loop at src/a.cpp.qz:9:32",
        "missing_in_text at src/a.cpp.qz:6:" + column,
    };
}

TEST_F(QzmapCompilers, ReportErrorsOfGccWhereTheyWereWritten) {
    const std::string messages = Messages("g++");
    EXPECT_EQ(Places(messages), PlacesWithTab("28")) << messages;
    EXPECT_EQ(messages.find("a.cpp:"), messages.npos) << messages;
    EXPECT_NE(messages.find("In file included from src/a.cpp.qz:2:\n"), messages.npos) << messages;
    EXPECT_NE(messages.find("src/lib.qz: In function "), messages.npos) << messages;
}

TEST_F(QzmapCompilers, ReportErrorsOfClangWhereTheyWereWritten) {
    const std::string messages = Messages("clang++");
    EXPECT_EQ(Places(messages), PlacesWithTab("21")) << messages;
    EXPECT_EQ(messages.find("a.cpp:"), messages.npos) << messages;
    EXPECT_NE(messages.find("In file included from src/a.cpp.qz:2:\n"), messages.npos) << messages;
}

// Of the same messages in another form, the places are the same.
TEST_F(QzmapCompilers, ReportErrorsInEveryFormAndColour) {
    const std::string plain = Messages("g++");
    const std::string coloured = Messages("g++", "-fdiagnostics-color=always");
    EXPECT_NE(coloured, plain);
    EXPECT_EQ(std::regex_replace(coloured, std::regex("\x1b\\[[0-9;]*[mK]"), ""), plain);
    const std::string brackets = Messages("clang++", "-fdiagnostics-format=msvc");
    EXPECT_NE(brackets.find("src/a.cpp.qz(4,19): error: use of undeclared"), brackets.npos)
        << brackets;
    const std::string ranges = Messages("clang++", "-fdiagnostics-print-source-range-info");
    EXPECT_EQ(ranges.find("a.cpp:"), ranges.npos) << ranges;
}

TEST_F(QzmapCompilers, ReportErrorsOfTheLinkerWhereTheyWereWritten) {
    Write("b.cpp.qz", "@def call = gone();\nvoid gone();\nint main() { call }\n");
    EXPECT_EQ(Run({"--map", "b.map", "-o", "b.cpp", "b.cpp.qz"}), (Result{0, "", ""}));
    const Result result =
        RunProgram("/bin/sh", {"-c", "g++ -g b.cpp -o b 2>&1 | '" QZMAP "' remap b.map"});
    EXPECT_NE(result.out.find("b.cpp.qz:3: undefined reference to `gone()'"), result.out.npos)
        << result.out;
}

}  // namespace

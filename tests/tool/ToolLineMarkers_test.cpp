// --line-markers: what a compiler and a debugger say about the lines of an output.

#include "ToolRunner.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

using testing::HasSubstr;
using testing::Not;
using tool_test::Result;
using tool_test::ToolTest;

// Puts a claim of C++ about its own line and file in place of each HERE; file is the text's name.
std::string Claim(const std::string& text, const std::string& file) {
    std::istringstream lines(text);
    std::string result;
    int number = 1;
    for (std::string line; std::getline(lines, line); ++number) {
        const std::size_t at = line.find("HERE");
        if (at != std::string::npos)
            line.replace(at, 4,
                         "static_assert(__LINE__ == " + std::to_string(number)
                             + " && !__builtin_strcmp(__FILE__, \"" + file + "\"));");
        result += line + '\n';
    }
    return result;
}

class ToolLineMarkers : public ToolTest {
protected:
    // The expansion of a text as the file a.qz.
    std::string Expand(const std::string& text, std::vector<std::string> options = {}) const {
        Write("a.qz", text);
        options.insert(options.begin(), {"a.qz", "--line-markers"});
        const Result result = Run(options);
        EXPECT_EQ(result.err, "");
        return result.out;
    }

    // What a command says that runs in the folder.
    std::string Say(const std::string& command) const {
        const std::string line = "cd '" + m_folder.string() + "' && exec 2>&1; " + command;
        std::FILE* pipe = ::popen(line.c_str(), "r");
        std::string output;
        for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
            output += static_cast<char>(c);
        ::pclose(pipe);
        return output;
    }

    // What the compiler says about a.qz, in which every HERE is checked.
    std::string Compile(const std::string& text, std::vector<std::string> options = {}) const {
        options.insert(options.end(), {"-o", "a.cpp"});
        Expand(Claim(text, "a.qz"), options);
        return Say(QZ_CXX " -std=c++20 -fsyntax-only a.cpp");
    }
};

// ---- where they stand --------------------------------------------------------------------------

struct Case {
    const char* text;
    const char* expansion;
};

// Lines of the file are numbered from 1.
constexpr Case s_cases[] = {
    {"one\ntwo\n\nfour\n",                      "#line 1 \"a.qz\"\none\ntwo\n\nfour\n"                              },
    {"one",                                     "#line 1 \"a.qz\"\none"                                             },
    {"",                                        ""                                                                  },
    {"\n \n",                                   "\n \n"                                                             },
    {"\n\nthree\n",                             "\n\n#line 3 \"a.qz\"\nthree\n"                                     },
    {"one\n@// gone\nthree\n",                  "#line 1 \"a.qz\"\none\n#line 3 \"a.qz\"\nthree\n"                  },
 // A macro of several lines in the middle of a line, and the way back.
    {"@def m = {p\n  q}\nx m y\nz\n",
     "#line 3 \"a.qz\"\nx p\n#line 2 \"a.qz\"\n    q y\n#line 4 \"a.qz\"\nz\n"                                      },
 // Calculated text of several lines: each is the line of what it was calculated from.
    {"@(\"p\\nq\\n\")x\ny\n",                   "#line 1 \"a.qz\"\np\n#line 1 \"a.qz\"\nq\n#line 1 \"a.qz\"\nx\ny\n"},
 // Turns of a loop.
    {"@for(i in [u, v])\n{\n    i;\n\n}\n",     "#line 1 \"a.qz\"\nu;\n#line 1 \"a.qz\"\nv;\n\n"                    },
 // The first byte that is not blank decides, be it that of an argument.
    {"@def f(a) =\n{\n    a\n    b\n}\nf(x)\n", "#line 6 \"a.qz\"\nx\n#line 4 \"a.qz\"\nb\n"                        },
 // A byte order mark stays in front.
    {"@(\"\xef\xbb\xbfp\")\n",                  "\xef\xbb\xbf#line 1 \"a.qz\"\np\n"                                 },
 // Line ends are those of the output.
    {"one\r\n@// gone\r\nthree\r\n",            "#line 1 \"a.qz\"\r\none\r\n#line 3 \"a.qz\"\r\nthree\r\n"          },
};

TEST_F(ToolLineMarkers, StandWhereTheLinesOfTheSourceDoNotGoOn) {
    for (const Case& c : s_cases)
        EXPECT_EQ(Expand(c.text), c.expansion) << c.text;
}

TEST_F(ToolLineMarkers, NameTheFilesAsTheyWereOpened) {
    Write("lib/b\"\\\n\x01?\?=\xff.qz", "@def m = {p\n\nq\n}\n");
    EXPECT_EQ(Expand("@importpath \"lib\"\n@import \"b\\\"\\\\\\n\x01?\?=\xff.qz\"\nm\n"),
              "\n\n#line 1 \"lib/b\\\"\\\\\\012\\001?\\?=\xff.qz\"\np\n\nq\n\n");
}

TEST_F(ToolLineMarkers, NameWhatIsNoFile) {
    EXPECT_EQ(Run({"--line-markers", "-D", "n=one\ntwo"}, "n\nm\n"),
              (Result{0, "#line 1 \"<-D n>\"\none\ntwo\n#line 2 \"<stdin>\"\nm\n", ""}));
}

TEST_F(ToolLineMarkers, AreTheToolsOwnInTheMap) {
    Expand("one\n@// gone\nthree\n", {"-o", "out", "--map", "out.map"});
    EXPECT_THAT(Read("out.map"), HasSubstr("\"pieces\": [\"eD,IAA,eD,MAS\"]"));
}

// ---- what must not be broken -------------------------------------------------------------------

// Code with line ends in every place where a directive would be something else. Written as one
// calculated stretch, it asks for a marker in front of each of its lines.
constexpr char s_code[] = R"code(#include <cstdio>
#define TWO(a, b) a \
    b \

#define THREE /* a comment
   that goes on */ 3
#define CALL(x) x
/* one
   two
*/ int a = 1; // goes on \
   # here
int b = TWO(1,
    + 2) + 1'000'000 + '"' + '\'' + 0x1p+3'0;
const char* s = "/*" "\"" R"(raw
  " // )" "x \
  y" R"x(
)" */
)x" u8R"(
)" R"()";
int c = CALL
(4) // "
    + CALL
    (5) + CALL // c
    /* d */

    (6) - (7) -
    (8);
#if 0
it's "skipped
/* and so
   is this */
#elif 1 \
    + 1
#endif
   /* a comment */ # /* b */ define FOUR \
   4
int main() {
    std::printf("%d %d %d %d %d %s", a, b, c, THREE, FOUR, s);
})code";

std::string QuoteAsLiteral(const std::string& text) {
    std::string quoted("\"");
    for (const char c : text) {
        if (c == '"' || c == '\\')
            quoted += '\\';
        quoted += c == '\n' ? std::string("\\n") : std::string(1, c);
    }
    return quoted + '"';
}

TEST_F(ToolLineMarkers, DoNotBreakTheCode) {
    Write("plain.cpp", std::string(s_code) + '\n');
    const std::string marked = Expand("@(" + QuoteAsLiteral(s_code) + ")\n");
    Write("marked.cpp", marked);
    EXPECT_EQ(Say(QZ_CXX " -std=c++17 -w -o plain plain.cpp && ./plain"),
              Say(QZ_CXX " -std=c++17 -w -o marked marked.cpp && ./marked"));
    EXPECT_THAT(Say("./plain"), HasSubstr("1 "));
    std::size_t markers = 0;
    for (std::size_t at = 0; (at = marked.find("#line", at)) != std::string::npos; ++at)
        ++markers;
    EXPECT_EQ(markers, 20u) << marked;
}

TEST_F(ToolLineMarkers, ComeAsSoonAsTheyCan) {
    EXPECT_EQ(Expand("@(\"a;\\n/* b\\nc\\n*/ d\\ne \\\\\\nf\\ng\")\nh\n"),
              "#line 1 \"a.qz\"\na;\n#line 1 \"a.qz\"\n/* b\nc\n*/ d\n#line 1 \"a.qz\"\ne \\\nf\n"
              "#line 1 \"a.qz\"\ng\nh\n");
}

// ---- what the compiler counts ------------------------------------------------------------------

TEST_F(ToolLineMarkers, MakeTheCompilerCountTheLinesOfTheSource) {
    EXPECT_EQ(Compile("HERE\n"
                      "@def body(T) =\n"
                      "{\n"
                      "    inline T get(T a)\n"
                      "    {\n"
                      "        HERE\n"
                      "        return a;\n"
                      "    }\n"
                      "    HERE\n"
                      "}\n"
                      "HERE\n"
                      "@// nothing\n"
                      "HERE\n"
                      "body(int) body(long)\n"
                      "HERE\n"
                      "int x = @(1 + 1); HERE\n"
                      "@for(n in [a, b])\n"
                      "{\n"
                      "    HERE int n;\n"
                      "    HERE\n"
                      "\n"
                      "}\n"
                      "HERE\n"),
              "");
}

TEST_F(ToolLineMarkers, MakeTheCompilerCountBehindGroupsThatItSkips) {
    EXPECT_EQ(Compile("#if 0\n"
                      "@// nothing\n"
                      "skipped\n"
                      "#if 1\n"
                      "@// nothing\n"
                      "skipped\n"
                      "#endif\n"
                      "#elif 1\n"
                      "HERE\n"
                      "# ifdef X\n"
                      "@// nothing\n"
                      "skipped\n"
                      "# else\n"
                      "HERE\n"
                      "@// nothing\n"
                      "HERE\n"
                      "# endif\n"
                      "HERE\n"
                      "#else\n"
                      "@// nothing\n"
                      "skipped\n"
                      "#endif\n"
                      "HERE\n"
                      "#if 1\n"
                      "HERE\n"
                      "#endif\n"
                      "HERE\n"),
              "");
}

TEST_F(ToolLineMarkers, MakeTheCompilerCountBehindCommentsAndStrings) {
    EXPECT_EQ(Compile("@// nothing\n"
                      "/*\n"
                      "*/\n"
                      "HERE\n"
                      "@( \"/*\\n*/ int x;\" )\n"
                      "HERE\n"
                      "@( \"int y; // \\\\\\n z\\n\" )HERE\n"
                      "const char* t = @( \"R\\\"(\\n  \\n)\\\";\" )\n"
                      "HERE\n"),
              "");
}

TEST_F(ToolLineMarkers, LeadTheCompilersErrorsToTheTextOfTheMacro) {
    Write("lib.qz", "@// getters\n"
                    "@def getter(T, name) =\n"
                    "{\n"
                    "    T get_@@name()\n"
                    "    {\n"
                    "        return missing;\n"
                    "    }\n"
                    "}\n");
    Expand("@import \"lib.qz\"\n"
           "getter(int, x)\n"
           "\n"
           "int f() { return absent; }\n",
           {"-o", "a.cpp"});
    const std::string said = Say(QZ_CXX " -fsyntax-only a.cpp");
    EXPECT_THAT(said, HasSubstr("lib.qz:6:"));
    EXPECT_THAT(said, HasSubstr("a.qz:4:"));
    EXPECT_THAT(said, Not(HasSubstr("a.cpp")));
}

// ---- what the debugger knows -------------------------------------------------------------------

// The lines that have code, as the debugger finds them in the program, for each file.
std::set<std::string> ReadLineTable(const std::string& said) {
    std::set<std::string> lines;
    std::istringstream input(said);
    std::string file;
    for (std::string line; std::getline(input, line);) {
        std::istringstream words(line);
        std::string first;
        std::string second;
        words >> first >> second;
        if (first == "symtab:")
            file = second.substr(second.rfind('/') + 1);
        else if (!first.empty() && first.find_first_not_of("0123456789") == std::string::npos
                 && second != "END")
            lines.insert(file + ":" + second);
    }
    return lines;
}

TEST_F(ToolLineMarkers, PutTheTextOfTheMacroIntoTheDebuggersLineTable) {
    Write("lib.qz", "@def twice(name, T) =\n"
                    "{\n"
                    "    T name(T a)\n"
                    "    {\n"
                    "        a += a;\n"
                    "\n"
                    "        return a;\n"
                    "    }\n"
                    "}\n"
                    "@def steps(n) = {n += 1;\n"
                    "    ++n;\n"
                    "    ++n;}\n");
    Expand("@import \"lib.qz\"\n"
           "twice(twice_int, int)\n"
           "\n"
           "int main()\n"
           "{\n"
           "    int a = twice_int(1);\n"
           "    a -= 1; steps(a) a -= 2;\n"
           "    return a - 2;\n"
           "}\n",
           {"-o", "a.cpp"});
    ASSERT_EQ(Say(QZ_CXX " -g -O0 -o a.out a.cpp && ./a.out"), "");
    const std::set<std::string> lines = ReadLineTable(
        Say("gdb -nx -batch -ex 'maint expand-symtabs' -ex 'maint info line-table' a.out"));
    EXPECT_EQ(lines, (std::set<std::string>{"a.qz:5", "a.qz:6", "a.qz:7", "a.qz:8", "a.qz:9",
                                            "lib.qz:4", "lib.qz:5", "lib.qz:7", "lib.qz:8",
                                            "lib.qz:11", "lib.qz:12"}));
    EXPECT_THAT(Say("gdb -nx -batch -ex 'info line lib.qz:7' a.out"),
                HasSubstr("lib.qz\" starts at address"));
}

}  // namespace

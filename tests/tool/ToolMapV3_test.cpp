// --map-format=v3: a Source Map, as other programs read it.

#include "ToolRunner.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;
using tool_test::Result;
using tool_test::ToolTest;

class ToolMapV3 : public ToolTest {
protected:
    // Expands with both kinds of map.
    void ExpandTwice(const std::string& input, const std::vector<std::string>& options) const {
        for (const char* format : {"qzmap", "v3"}) {
            std::vector<std::string> arguments = {
                input, "-o", "out", "--map", format, std::string("--map-format=") + format};
            arguments.insert(arguments.end(), options.begin(), options.end());
            ASSERT_EQ(Run(arguments), (Result{0, "", ""}));
        }
    }

    // What the independent reader has to say about the two.
    std::string Compare() const {
        const std::string command = "cd '" + m_folder.string()
                                    + "' && NODE_PATH=/usr/share/nodejs node '" QZ_SOURCES
                                      "/tests/tool/check_v3.js' qzmap v3 2>&1";
        std::FILE* pipe = ::popen(command.c_str(), "r");
        std::string output;
        for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe))
            output += static_cast<char>(c);
        ::pclose(pipe);
        return output;
    }

    // Of an output without characters beyond ASCII.
    std::string AllColumnsAgree() const {
        return std::to_string(Read("out").size()) + " columns agree\n";
    }
};

// ---- as another program reads it ---------------------------------------------------------------

TEST_F(ToolMapV3, AgreesWithTheMapForTheExamples) {
    for (const char* name : {"records/records.h", "state_machine/door.cpp", "sql/planets.sql"}) {
        SCOPED_TRACE(name);
        fs::copy_file(fs::path(QZ_SOURCES "/examples") / (std::string(name) + ".qz"),
                      PathOf("in.qz"), fs::copy_options::overwrite_existing);
        ExpandTwice("in.qz", {});
        EXPECT_EQ(Compare(), AllColumnsAgree());
        ExpandTwice("in.qz", {"--line-markers", "--newline=crlf"});
        EXPECT_EQ(Compare(), AllColumnsAgree());
    }
}

TEST_F(ToolMapV3, AgreesWithTheMapForSeveralFiles) {
    Write("lib dir/b%.qz", "@def f(a) = {\n    one a\n      two a\n}\nfrom b\n");
    Write("in.qz", "@import \"lib dir/b%.qz\"\n  x f(y) n z\n\n@(\"p\\nq\")m\n"
                   "@for(i in [u, v])\n{\n    i;\n}\n");
    ExpandTwice("in.qz", {"--imports=inline", "-D", "m=p q", "-D", "int:n=12345"});
    EXPECT_EQ(Compare(), AllColumnsAgree());
}

// The columns are those of UTF-16: letters take one or two, and a byte that is none takes one.
TEST_F(ToolMapV3, CountsColumnsAsTheStandardDoes) {
    const std::string letters =
        "\"\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80\xff\xc3\xe2\x82\xef\xbf\xbd\"";
    Write("in.qz", "@def f(a) = " + letters + " a /* \xf0\x9f\x98\x80 */ a\n" + letters + " f("
                       + letters + ") " + letters + " f(x)\r\n@(" + letters + ") f(y)\n");
    ExpandTwice("in.qz", {});
    const std::string said = Compare();
    EXPECT_EQ(said.substr(said.find(' ')), " columns agree\n") << said;
}

// The source of a column is found in constant time, however long its line is.
TEST_F(ToolMapV3, CopesWithLongLines) {
    std::string text;
    for (int i = 0; i < 100'000; ++i)
        text += "n @( 1 ) ";
    Write("in.qz", "@let int n = 5\n" + text);
    EXPECT_EQ(Run({"in.qz", "-o", "out", "--map", "v3", "--map-format=v3", "--limit-time=20"}),
              (Result{0, "", ""}));
}

// ---- the text ----------------------------------------------------------------------------------

TEST_F(ToolMapV3, HasTheFormOfTheStandard) {
    Write("in.qz", "@def f(a) = <a>\nx f(y) @(1 + 1)\n");
    EXPECT_EQ(Run({"in.qz", "-o", "out/a b.txt", "--map", "out.map", "--map-format=v3"}).status, 1);
    fs::create_directory(PathOf("out"));
    EXPECT_EQ(Run({"in.qz", "-o", "out/a b.txt", "--map", "out.map", "--map-format=v3"}),
              (Result{0, "", ""}));
    EXPECT_EQ(Read("out/a b.txt"), "x <y> 2\n");
    EXPECT_EQ(Read("out.map"),
              "{\"version\":3,\"file\":\"out/a%20b.txt\",\"sources\":[\"in.qz\"],\"names\":[],"
              "\"mappings\":\"AACA,EADY,CACR,CADU,CACR,CAAC,CAAQ;\"}\n");
}

TEST_F(ToolMapV3, HoldsTheTextsThatAreNoFiles) {
    Write("in.qz", "m");
    EXPECT_EQ(Run({"in.qz", "--map", "out.map", "--map-format=v3", "-D", "m=a \"b\"", "-D",
                   "n=\"\xff\""}),
              (Result{0, "a \"b\"", ""}));
    EXPECT_EQ(
        Read("out.map"),
        "{\"version\":3,\"sources\":[\"%3C-D%20m%3E\",\"%3C-D%20n%3E\",\"in.qz\"],"
        "\"sourcesContent\":[\"a \\\"b\\\"\",null,null],\"names\":[],\"mappings\":\"AAAA\"}\n");
}

TEST_F(ToolMapV3, NamesFilesOfAnyBytes) {
    Write("a:b?c#\xff%.qz", "x");
    EXPECT_EQ(Run({"a:b?c#\xff%.qz", "--map", "out.map", "--map-format=v3"}), (Result{0, "x", ""}));
    EXPECT_EQ(Read("out.map"), "{\"version\":3,\"sources\":[\"a%3Ab%3Fc%23%FF%25.qz\"],"
                               "\"names\":[],\"mappings\":\"AAAA\"}\n");
}

}  // namespace

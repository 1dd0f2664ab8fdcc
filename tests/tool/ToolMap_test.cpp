// --map: where every byte of an output came from.

#include "ToolRunner.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "common/Map.h"

namespace {

namespace fs = std::filesystem;
using qztools::HashOf;
using qztools::Map;
using qztools::MapPiece;
using qztools::MapSource;
using tool_test::Result;
using tool_test::ToolTest;
using Kind = MapPiece::Kind;

std::string ReadFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

// The bytes of a source; base is the folder of the map.
std::string BytesOf(const MapSource& source, const fs::path& base) {
    return source.text ? *source.text : ReadFile(base / source.name);
}

class ToolMap : public ToolTest {
protected:
    // Expands a text as the file main.qz to out.txt with its map.
    Map Expand(const std::string& text, std::vector<std::string> options = {}) const {
        Write("main.qz", text);
        options.insert(options.begin(), {"main.qz", "-o", "out.txt", "--map", "out.map"});
        EXPECT_EQ(Run(options), (Result{0, "", ""}));
        return ReadMap("out.map");
    }

    Map ReadMap(const std::string& name) const { return qztools::ParseMap(name, Read(name)); }

    std::vector<std::string> SourceNames(const Map& map) const {
        std::vector<std::string> names;
        for (const MapSource& source : map.sources)
            names.push_back(source.name);
        return names;
    }

    // Each piece as its output and, behind an arrow, the source bytes it is from: "5 -> main.qz:3
    // n".
    std::vector<std::string> Pieces(const Map& map) const {
        const std::string output = Read("out.txt");
        std::vector<std::string> shown;
        std::size_t start = 0;
        for (const MapPiece& piece : map.pieces) {
            const auto size = static_cast<std::size_t>(piece.size);
            shown.push_back(output.substr(start, size) + Origin(map, piece));
            start += size;
        }
        EXPECT_EQ(start, output.size());
        return shown;
    }

    std::string Origin(const Map& map, const MapPiece& piece) const {
        if (piece.kind == Kind::Indentation)
            return " indentation";
        if (piece.kind == Kind::Inserted)
            return " inserted";
        const MapSource& source = map.sources[static_cast<std::size_t>(piece.source)];
        const std::string place = source.name + ":" + std::to_string(piece.offset);
        const std::string bytes = BytesOf(source, m_folder)
                                      .substr(static_cast<std::size_t>(piece.offset),
                                              static_cast<std::size_t>(piece.length));
        return piece.kind == Kind::Copied ? " = " + place : " -> " + place + " " + bytes;
    }
};

// ---- exactness ---------------------------------------------------------------------------------

// Every statement that a map makes, held against the files. Nothing is inserted where nobody asks
// for it: every byte has been followed to its source.
void Check(const fs::path& mapPath, const fs::path& outputPath, bool isInserted) {
    const Map map = qztools::ParseMap(mapPath.string(), ReadFile(mapPath));
    const std::string output = ReadFile(outputPath);
    EXPECT_EQ(map.outputSize, std::ssize(output));
    EXPECT_EQ(map.outputHash, HashOf(output));
    std::vector<std::string> texts;
    for (const MapSource& source : map.sources) {
        texts.push_back(BytesOf(source, mapPath.parent_path()));
        EXPECT_EQ(source.hash, HashOf(texts.back())) << source.name;
    }
    std::size_t start = 0;
    for (const MapPiece& piece : map.pieces) {
        const std::string bytes = output.substr(start, static_cast<std::size_t>(piece.size));
        start += bytes.size();
        EXPECT_TRUE(piece.kind != Kind::Inserted || isInserted) << bytes;
        if (piece.kind == Kind::Indentation) {
            EXPECT_EQ(bytes, std::string(bytes.size(), ' '));
        } else if (piece.kind == Kind::Copied) {
            EXPECT_EQ(bytes, texts[static_cast<std::size_t>(piece.source)].substr(
                                 static_cast<std::size_t>(piece.offset), bytes.size()));
        }
    }
    EXPECT_EQ(start, output.size());
}

// The texts of the language's tests that have no error, and the examples.
std::vector<fs::path> AllTexts() {
    std::vector<fs::path> texts;
    for (const char* folder : {"tests/language", "examples"})
        for (const auto& entry : fs::recursive_directory_iterator(fs::path(QZ_SOURCES) / folder))
            if (entry.path().extension() == ".qz"
                && !fs::exists(fs::path(entry.path()).replace_extension(".err")))
                texts.push_back(entry.path());
    return texts;
}

TEST_F(ToolMap, IsExactForEveryText) {
    int count = 0;
    for (const fs::path& text : AllTexts()) {
        for (const std::string option : {"--imports=keep", "--line-markers", "--newline=crlf"}) {
            SCOPED_TRACE(text.string() + " " + option);
            const Result result =
                Run({text.string(), "-o", "out.txt", "--map", "out.map", "--python", option});
            if (result.status != 0)
                break;
            Check(PathOf("out.map"), PathOf("out.txt"), option != "--imports=keep");
            ++count;
        }
    }
    EXPECT_GE(count, 3 * 15);
}

TEST_F(ToolMap, IsExactForTextsWithMixedLineEnds) {
    Write("b.qz", "@def f(a) = {\n    one a\r\n    two\n}\r\nin b\r\n");
    Write("main.qz", "@import \"b.qz\"\r\nx f(y) z\n\r\n  f(\r\n)\n@(\"p\\nq\")\r\n");
    for (const char* newline : {"keep", "lf", "crlf"})
        for (const char* imports : {"drop", "keep", "inline"}) {
            SCOPED_TRACE(std::string(newline) + " " + imports);
            EXPECT_EQ(Run({"main.qz", "-o", "out.txt", "--map", "out.map", "--newline", newline,
                           "--imports", imports}),
                      (Result{0, "", ""}));
            Check(PathOf("out.map"), PathOf("out.txt"), /*isInserted=*/true);
        }
}

// ---- pieces ------------------------------------------------------------------------------------

TEST_F(ToolMap, HasTheDocumentedForm) {
    Expand("@def f(a) = <a>\nx f(y) @(1 + 1)\n", {"-D", "n=5"});
    EXPECT_EQ(Read("out.txt"), "x <y> 2\n");
    EXPECT_EQ(Read("out.map"), "{\"format\": \"qzmap\", \"version\": 1,\n"
                               " \"output\": {\"name\": \"out.txt\", \"size\": 8, \"hash\": \""
                                   + HashOf("x <y> 2\n")
                                   + "\"},\n"
                                     " \"sources\": [\n"
                                     "  {\"name\": \"<-D n>\", \"text\": \"5\"},\n"
                                     "  {\"name\": \"main.qz\", \"size\": 32, \"hash\": \""
                                   + HashOf(Read("main.qz"))
                                   + "\"}],\n"
                                     " \"pieces\": [\"EEgB,CEN,CEO,CEP,CEO,CEAC,CEO\"]}\n");
}

TEST_F(ToolMap, TellsWhatWasCopiedWhatCalculatedAndWhatIsIndentation) {
    EXPECT_EQ(Pieces(Expand("@let int n = 5\n  @scope\n  {\n    a n\n    b\n  }\n")),
              (std::vector<std::string>{"   = main.qz:15", "a  = main.qz:32", "5 -> main.qz:34 n",
                                        "\n = main.qz:35", "   indentation", "b = main.qz:40",
                                        "\n = main.qz:45"}));
}

TEST_F(ToolMap, LeadsThroughTextsThatTheExpansionPutsTogether) {
    EXPECT_EQ(Pieces(Expand("@for(x in [one, two]) {x}")),
              (std::vector<std::string>{"one = main.qz:11", "two = main.qz:16"}));
    EXPECT_EQ(Pieces(Expand("@def id(a) = a\n@def f(g(), b) = g(b)\nf(id, word)")),
              (std::vector<std::string>{"word = main.qz:43"}));
    EXPECT_EQ(Pieces(Expand("@[@quote(@exportdef m = hello)]m")),
              (std::vector<std::string>{"hello = main.qz:24"}));
}

TEST_F(ToolMap, JoinsWhatWasCopiedInOneGo) {
    std::string text;
    for (int i = 0; i < 1000; ++i)
        text += "int x" + std::to_string(i) + " = (\"y\"); /* z */ // c\n";
    EXPECT_EQ(Expand(text).pieces, (std::vector<MapPiece>{
                                       {Kind::Copied, std::ssize(text), 0, 0, std::ssize(text)}
    }));
}

TEST_F(ToolMap, IsEmptyForAnEmptyOutput) {
    const Map map = Expand("");
    EXPECT_EQ(map.pieces, std::vector<MapPiece>());
    EXPECT_EQ(map.outputSize, 0);
    EXPECT_EQ(map.sources.size(), 1u);
}

TEST_F(ToolMap, LeadsIntoImportedFiles) {
    Write("lib/b.qz", "@def m = text\nfrom b\n");
    EXPECT_EQ(Pieces(Expand("@import \"lib/b.qz\"m")),
              (std::vector<std::string>{"text = lib/b.qz:9"}));
    EXPECT_EQ(Pieces(Expand("@import \"lib/b.qz\"m", {"--imports=inline"})),
              (std::vector<std::string>{"from b\n = lib/b.qz:14", "text = lib/b.qz:9"}));
}

TEST_F(ToolMap, LeadsToTheLineEndsOfTheFile) {
    EXPECT_EQ(Pieces(Expand("a\r\nb\r\n")), (std::vector<std::string>{"a\r\nb\r\n = main.qz:0"}));
    EXPECT_EQ(Pieces(Expand("a\nb", {"--newline=crlf"})),
              (std::vector<std::string>{"a = main.qz:0", "\r inserted", "\nb = main.qz:1"}));
}

TEST_F(ToolMap, LeadsToADefinitionOfTheCommandLine) {
    const Map map = Expand("m n", {"-D", "m=a b", "-D", "int:n=1+1"});
    EXPECT_EQ(Pieces(map),
              (std::vector<std::string>{"a b = <-D m>:0", "  = main.qz:1", "2 -> main.qz:2 n"}));
    EXPECT_EQ(map.sources[0].text, "a b");
    EXPECT_EQ(map.sources[1].text, "1+1");
}

TEST_F(ToolMap, HoldsADefinitionOfAnyBytes) {
    const Map map = Expand("m", {"-D", "m=\"\xff\x01\""});
    EXPECT_EQ(map.sources[0].text, "\"\xff\x01\"");
    EXPECT_NE(Read("out.map").find("\"base64\": \"Iv8BIg==\""), std::string::npos);
}

TEST_F(ToolMap, LeadsToTheExpressionOfTheCommandLine) {
    EXPECT_EQ(Run({"--eval", "6 * 7", "-o", "out.txt", "--map", "out.map"}), (Result{0, "", ""}));
    EXPECT_EQ(Pieces(ReadMap("out.map")), (std::vector<std::string>{"42\n -> <--eval>:0 6 * 7"}));
}

// ---- sources -----------------------------------------------------------------------------------

TEST_F(ToolMap, NamesEveryFileThatWasReadOnce) {
    Write("b.qz", "@// yields nothing\n");
    const Map map = Expand("@import \"b.qz\"@import \"b.qz\"@import \"./b.qz\"");
    EXPECT_EQ(SourceNames(map), (std::vector<std::string>{"main.qz", "b.qz"}));
}

TEST_F(ToolMap, HoldsTheTextOfStandardInput) {
    EXPECT_EQ(Run({"-o", "out.txt", "--map", "out.map"}, "text"), (Result{0, "", ""}));
    const Map map = ReadMap("out.map");
    EXPECT_EQ(SourceNames(map), std::vector<std::string>{"<stdin>"});
    EXPECT_EQ(map.sources[0].text, "text");
}

struct NameCase {
    const char* input;
    const char* output;
    const char* map;
    const char* sourceName;
    const char* outputName;
};

// The working directory of the tool is WORK, a folder in which the folders in and out stand.
constexpr NameCase s_nameCases[] = {
    {"a.qz",           "a.txt",           "a.map",           "a.qz",          "a.txt"         },
    {"./a.qz",         "./a.txt",         "a.map",           "a.qz",          "a.txt"         },
    {"in/a.qz",        "out/a.txt",       "out/a.map",       "../in/a.qz",    "a.txt"         },
    {"in/a.qz",        "in/a.txt",        "out/deep/a.map",  "../../in/a.qz", "../../in/a.txt"},
    {"in/../in//a.qz", "out/a.txt",       "./a.map",         "in/a.qz",       "out/a.txt"     },
    {"../a.qz",        "../a.txt",        "a.map",           "../a.qz",       "../a.txt"      },
    {"a.qz",           "out/a.txt",       "../a.map",        "WORK/a.qz",     "WORK/out/a.txt"},
    {"/WORK/in/a.qz",  "/WORK/out/a.txt", "/WORK/out/a.map", "../in/a.qz",    "a.txt"         },
    {"/WORK/in/a.qz",  "out/a.txt",       "out/a.map",       "../in/a.qz",    "a.txt"         },
    {"in/a.qz",        "out/a.txt",       "/WORK/out/a.map", "../in/a.qz",    "a.txt"         },
    {"link/a.qz",      "a.txt",           "a.map",           "link/a.qz",     "a.txt"         },
    {"in/a.qz",        "in/a.txt",        "link/a.map",      "../../in/a.qz", "../../in/a.txt"},
};

TEST_F(ToolMap, NamesFilesAsSeenFromItsFolder) {
    for (const char* folder : {"work/in", "work/out/deep"})
        fs::create_directories(PathOf(folder));
    fs::create_directory_symlink("out/deep", PathOf("work/link"));
    const std::string work = PathOf("work").string();
    const auto fill = [&work](std::string path, const std::string& by) {
        const std::size_t at = path.find(by == "work" ? "WORK" : "/WORK");
        return at == std::string::npos ? path : path.replace(at, by == "work" ? 4 : 5, by);
    };
    for (const NameCase& c : s_nameCases) {
        const fs::path input = fs::path(work) / fill(c.input, work);
        std::ofstream(input) << "text";
        const Result result =
            tool_test::Process(
                work, {fill(c.input, work), "-o", fill(c.output, work), "--map", fill(c.map, work)},
                "", {})
                .Wait();
        ASSERT_EQ(result, (Result{0, "", ""})) << c.input;
        const fs::path path = fs::path(work) / fill(c.map, work);
        const Map map = qztools::ParseMap("map", ReadFile(path));
        EXPECT_EQ(map.sources[0].name, fill(c.sourceName, "work")) << c.input << " " << c.map;
        EXPECT_EQ(map.outputName, fill(c.outputName, "work")) << c.output << " " << c.map;
        EXPECT_TRUE(fs::equivalent(path.parent_path() / map.sources[0].name, input));
    }
}

TEST_F(ToolMap, NamesFilesByTheirPathsInAFolderThatIsGone) {
    Write("a.qz", "text");
    const fs::path gone = PathOf("gone");
    fs::create_directory(gone);
    const Result result =
        tool_test::Process(
            gone, {PathOf("a.qz").string(), "-o", PathOf("out.txt").string(), "--map", "-"}, "",
            [&gone] { fs::remove(gone); })
            .Wait();
    const Map map = qztools::ParseMap("-", result.out);
    EXPECT_EQ(map.outputName, PathOf("out.txt").string());
    EXPECT_EQ(map.sources[0].name, PathOf("a.qz").string());
}

TEST_F(ToolMap, RefusesANameThatItCannotHold) {
    Write("a\xff.qz", "text");
    EXPECT_EQ(
        Run({"a\xff.qz", "-o", "out.txt", "--map", "out.map"}),
        (Result{1, "", "qzexpand: a\\xff.qz: a map cannot hold this name, which is no UTF-8\n"}));
    EXPECT_EQ(FileNames(), std::vector<std::string>{"a\xff.qz"});
}

// ---- the file ----------------------------------------------------------------------------------

TEST_F(ToolMap, IsNotWrittenWhenTheRunFails) {
    Write("out.map", "old");
    Write("a.qz", "@fail(\"stop\")");
    EXPECT_EQ(Run({"a.qz", "-o", "out.txt", "--map", "out.map"}).status, 1);
    EXPECT_EQ(Read("out.map"), "old");
    EXPECT_EQ(FileNames(), (std::vector<std::string>{"a.qz", "out.map"}));
}

TEST_F(ToolMap, LeavesTheOutputAloneWhereItCannotBeWritten) {
    Write("a.qz", "text");
    EXPECT_EQ(Run({"a.qz", "-o", "out.txt", "--map", "nosuch/out.map"}),
              (Result{1, "", "qzexpand: nosuch/out.map: No such file or directory\n"}));
    EXPECT_EQ(FileNames(), std::vector<std::string>{"a.qz"});
}

TEST_F(ToolMap, IsNotWrittenForACheck) {
    Write("a.qz", "text");
    Write("out.txt", "text");
    EXPECT_EQ(Run({"a.qz", "-o", "out.txt", "--map", "out.map", "--check"}), (Result{0, "", ""}));
    EXPECT_EQ(FileNames(), (std::vector<std::string>{"a.qz", "out.txt"}));
}

TEST_F(ToolMap, KeepsItsTimeWhereItStaysTheSame) {
    Expand("text");
    const fs::file_time_type old = fs::last_write_time(PathOf("out.map")) - std::chrono::hours(1);
    fs::last_write_time(PathOf("out.map"), old);
    Expand("text");
    EXPECT_EQ(fs::last_write_time(PathOf("out.map")), old);
    Expand("text", {"--always-write"});
    EXPECT_GT(fs::last_write_time(PathOf("out.map")), old);
}

TEST_F(ToolMap, DescribesStandardOutputAndMayGoThere) {
    Write("a.qz", "text");
    EXPECT_EQ(Run({"a.qz", "--map", "out.map"}), (Result{0, "text", ""}));
    EXPECT_EQ(ReadMap("out.map").outputName, "-");
    const Result result = Run({"a.qz", "-o", "out.txt", "--map", "-"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(qztools::ParseMap("-", result.out).outputName, "out.txt");
}

TEST_F(ToolMap, IsOneForEachOfSeveralFiles) {
    Write("a.txt.qz", "a");
    Write("b.txt.qz", "b");
    fs::create_directories(PathOf("out/maps"));
    EXPECT_EQ(Run({"a.txt.qz", "b.txt.qz", "-o", "out", "--map", "out/maps"}), (Result{0, "", ""}));
    EXPECT_EQ(ReadMap("out/maps/a.txt.map").outputName, "../a.txt");
    EXPECT_EQ(SourceNames(ReadMap("out/maps/b.txt.map")),
              std::vector<std::string>{"../../b.txt.qz"});
    EXPECT_EQ(Run({"a.txt.qz", "b.txt.qz", "-o", "out", "--map", "out", "--depfile", "out"}),
              (Result{0, "", ""}));
    EXPECT_EQ(ReadMap("out/a.txt.map").outputName, "a.txt");
}

TEST_F(ToolMap, RefusesWrongCalls) {
    EXPECT_EQ(Run({"--map"}), tool_test::WrongCall("--map needs an argument"));
    EXPECT_EQ(Run({"--map", "-"}), tool_test::WrongCall("--map and -o name one file: -"));
    EXPECT_EQ(Run({"--map", "a", "-o", "a"}),
              tool_test::WrongCall("--map and -o name one file: a"));
    EXPECT_EQ(Run({"--map", "a", "-o", "b", "--depfile", "a"}),
              tool_test::WrongCall("--map and --depfile name one file: a"));
    EXPECT_EQ(Run({"--map-format=v3"}), tool_test::WrongCall("--map-format needs --map FILE"));
    EXPECT_EQ(Run({"--map", "a", "--map-format=v4"}),
              tool_test::WrongCall("--map-format is qzmap or v3: v4"));
}

}  // namespace

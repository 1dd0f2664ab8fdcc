// --depfile: what it holds, and that build engines run again exactly what they must.

#include "Shell.h"
#include "ToolRunner.h"

#include <chrono>
#include <thread>

namespace {

namespace fs = std::filesystem;
using tool_test::Result;
using tool_test::Shell;
using tool_test::ToolTest;
using tool_test::WrongCall;

using Names = std::vector<std::string>;

class ToolDepfile : public ToolTest {
protected:
    static Result Failure(const std::string& message) {
        return Result{1, "", "qzexpand: " + message + "\n"};
    }
};

std::string Literal(const std::string& name) {
    std::string literal;
    for (const char c : name)
        literal += c == '\\' ? "\\\\" : std::string(1, c);
    return literal;
}

// ---- what it holds -----------------------------------------------------------------------------

TEST_F(ToolDepfile, NamesTheInputAndWhatItImportsInTheOrderOfReading) {
    Write("a.qz", "@import \"b.qz\"\n@import \"c.qz\"\n@import \"b.qz\"\n");
    Write("b.qz", "@import \"d.qz\"\n");
    Write("c.qz", "@import \"d.qz\"\n");
    Write("d.qz", "");
    EXPECT_EQ(Run({"--depfile", "dep", "-o", "out", "a.qz"}), (Result{0, "", ""}));
    EXPECT_EQ(Read("dep"), "out: a.qz b.qz d.qz c.qz\nb.qz:\nd.qz:\nc.qz:\n");
    EXPECT_EQ(FileNames(), (Names{"a.qz", "b.qz", "c.qz", "d.qz", "dep", "out"}));
}

TEST_F(ToolDepfile, NamesTheFileThatWasFoundInASearch) {
    Write("src/a.qz", "@importpath \"more\"\n@import \"b.qz\"\n@import \"c.qz\"\n");
    Write("lib/b.qz", "");
    Write("src/more/c.qz", "");
    EXPECT_EQ(Run({"--depfile=dep", "-I", "none", "-I", "lib", "-o", "out", "src/a.qz"}),
              (Result{0, "", ""}));
    EXPECT_EQ(Read("dep"), "out: src/a.qz lib/b.qz src/more/c.qz\n"
                           "lib/b.qz:\nsrc/more/c.qz:\n");
}

TEST_F(ToolDepfile, HasNoNameForStandardInput) {
    Write("b.qz", "");
    EXPECT_EQ(Run({"--depfile", "dep", "-o", "out"}, "@import \"b.qz\"\n").status, 0);
    EXPECT_EQ(Read("dep"), "out: b.qz\nb.qz:\n");
    EXPECT_EQ(Run({"--depfile", "dep", "-o", "out"}, "text").status, 0);
    EXPECT_EQ(Read("dep"), "out:\n");
    EXPECT_EQ(Run({"--depfile", "dep", "-o", "out", "--eval", "1"}).status, 0);
    EXPECT_EQ(Read("dep"), "out:\n");
}

TEST_F(ToolDepfile, HasTheTargetThatIsAskedFor) {
    Write("a.qz", "text");
    EXPECT_EQ(Run({"--depfile", "dep", "--depfile-target", "x/o $", "a.qz"}),
              (Result{0, "text", ""}));
    EXPECT_EQ(Read("dep"), "x/o\\ $$: a.qz\n");
    EXPECT_EQ(Run({"--depfile", "-", "--depfile-target", "x", "-o", "out", "a.qz"}),
              (Result{0, "x: a.qz\n", ""}));
}

TEST_F(ToolDepfile, NeedsATarget) {
    EXPECT_EQ(Run({"--depfile", "dep"}),
              WrongCall("--depfile needs -o FILE or --depfile-target NAME"));
    EXPECT_EQ(Run({"--depfile", "dep", "-o", "-"}),
              WrongCall("--depfile needs -o FILE or --depfile-target NAME"));
    EXPECT_EQ(Run({"--depfile", "out", "-o", "out"}),
              WrongCall("--depfile and -o name one file: out"));
    EXPECT_EQ(Run({"--depfile"}), WrongCall("--depfile needs an argument"));
    EXPECT_EQ(FileNames(), Names{});
}

// Make would take it for a line that goes on.
TEST_F(ToolDepfile, RefusesNamesThatEndWithABackslash) {
    Write("b\\", "");
    Write("a.qz", "@import \"b\\\\\"\n");
    EXPECT_EQ(Run({"--depfile", "dep", "-o", "out", "a.qz"}),
              Failure("b\\: a depfile cannot hold a name with a line end or with a backslash at "
                      "its end"));
}

TEST_F(ToolDepfile, RefusesNamesWithLineEnds) {
    Write("b\nc.qz", "");
    Write("a.qz", "@import \"b\\nc.qz\"\n");
    EXPECT_EQ(
        Run({"--depfile", "dep", "-o", "out", "a.qz"}),
        Failure("b\\x0ac.qz: a depfile cannot hold a name with a line end or with a backslash at "
                "its end"));
    EXPECT_EQ(
        Run({"--depfile", "dep", "-o", "o\rut", "--eval", "1"}),
        Failure("o\\x0dut: a depfile cannot hold a name with a line end or with a backslash at "
                "its end"));
    EXPECT_EQ(FileNames(), (Names{"a.qz", "b\nc.qz"}));
}

// The compiler as an independent writer of the form: the same files, read in the same order.
TEST_F(ToolDepfile, IsWhatACompilerWrites) {
    const Names names = {"a b.h",  "a$b.h",    "a#b.h",     "a\\ b.h", "a\\#b.h",
                         "a\\b.h", "a\\$b.h",  " x.h",      "a  b.h",  "a\\\\ b.h",
                         "$x.h",   "[a].h",    "~a.h",      "\xff.h",  std::string(90, 'l'),
                         "a\tb.h", "y,z=1;.h", "a'b|(c).h", "m.h",     "last.h"};
    std::string includes;
    std::string imports;
    for (const std::string& name : names) {
        Write(name, "");
        includes += "#include \"" + name + "\"\n";
        imports += "@import \"" + Literal(name) + "\"\n";
    }
    Write("in", includes);
    ASSERT_TRUE(Shell(m_folder, "gcc -x c -nostdinc -MM -MP -MQ 'o ut$' -MF expected in"));
    Write("in", imports);
    EXPECT_EQ(Run({"--depfile", "dep", "-o", "o ut$", "in"}), (Result{0, "", ""}));
    EXPECT_EQ(Read("dep"), Read("expected"));
    EXPECT_EQ(Read("dep").rfind("o\\ ut$$: in a\\ b.h a$$b.h", 0), 0u);
}

// ---- when it is written ------------------------------------------------------------------------

TEST_F(ToolDepfile, IsInPlaceBeforeTheOutput) {
    Write("a.qz", "text");
    EXPECT_EQ(Run({"--depfile", "dep", "-o", "nosuch/out", "a.qz"}),
              Failure("nosuch/out: No such file or directory"));
    EXPECT_EQ(Read("dep"), "nosuch/out: a.qz\n");
}

TEST_F(ToolDepfile, KeepsAnOutputFromBeingWrittenWhereItCannotBe) {
    EXPECT_EQ(Run({"--depfile", "nosuch/dep", "-o", "out"}, "text"),
              Failure("nosuch/dep: No such file or directory"));
    EXPECT_EQ(Run({"--depfile", "", "-o", "out"}, "text"), Failure(": No such file or directory"));
    EXPECT_EQ(FileNames(), Names{});
}

TEST_F(ToolDepfile, StaysAsItWasWhenTheExpansionFails) {
    Write("dep", "old");
    EXPECT_EQ(Run({"--depfile", "dep", "-o", "out"}, "@fail(\"stop\")").status, 1);
    EXPECT_EQ(Read("dep"), "old");
    EXPECT_EQ(FileNames(), Names{"dep"});
}

// ---- build engines -----------------------------------------------------------------------------

// Files whose names an engine must be told about with care. Each is imported, as PART of the path.
const Names s_difficult = {"a b", "a$b", "a#b", "a\\ b", "a  b", "a:b",     "a\\b",     "a!b",
                           "[a]", "~a",  "a,b", "-a",    "@a",   "${HOME}", "\xc3\xa9", "b\\\\ c"};

class ToolDepfileEngine : public ToolTest {
protected:
    // How often the tool has been run.
    std::size_t Runs() const { return Read("log").size(); }

    // Runs the engine and says how often it has run the tool.
    std::size_t Build(const std::string& engine) const {
        const std::size_t before = Runs();
        EXPECT_TRUE(Shell(m_folder, engine + " >engine.out 2>&1")) << Read("engine.out");
        return Runs() - before;
    }

    // The clock of a file system is coarser than that of the processor.
    static void LetTimePass() { std::this_thread::sleep_for(std::chrono::milliseconds(20)); }

    void Touch(const std::string& name) const {
        LetTimePass();
        fs::last_write_time(PathOf(name), fs::file_time_type::clock::now());
        LetTimePass();
    }

    // With one import, whose removal needs the phony target.
    void CheckImport(const std::string& engine, const std::string& name) const {
        SCOPED_TRACE(name);
        Write("in.qz", "@import \"" + Literal(name) + "\"\ntext\n");
        Write(name, "@def m = 1\n");
        LetTimePass();
        EXPECT_EQ(Build(engine), 1u);
        EXPECT_EQ(Build(engine), 0u);
        Touch(name);
        EXPECT_EQ(Build(engine), 1u);
        EXPECT_EQ(Build(engine), 0u);
        fs::remove(PathOf(name));
        Write("in.qz", "text\n");
        LetTimePass();
        EXPECT_EQ(Build(engine), 1u);
        EXPECT_EQ(Build(engine), 0u);
        LetTimePass();
    }
};

TEST_F(ToolDepfileEngine, MakeRunsTheToolForEachChangeOnce) {
    Write("Makefile", "out\\ put: in.qz\n"
                      "\t@printf x >>log\n"
                      "\t@'" QZEXPAND "' --always-write --depfile 'd e' -o '$@' in.qz\n"
                      "-include d\\ e\n");
    for (const std::string& name : s_difficult)
        CheckImport("make", name);
}

TEST_F(ToolDepfileEngine, NinjaRunsTheToolForEachChangeOnce) {
    Write("build.ninja", "rule expand\n"
                         "  command = printf x >>log; '" QZEXPAND "' --depfile $out.d -o $out $in\n"
                         "  depfile = $out.d\n"
                         "  restat = 1\n"
                         "build output: expand in.qz\n");
    for (const std::string& name : s_difficult)
        CheckImport("ninja", name);
}

TEST_F(ToolDepfileEngine, NinjaMakesNothingFromAnOutputThatStaysTheSame) {
    Write("build.ninja", "rule expand\n"
                         "  command = '" QZEXPAND "' --depfile $out.d -o $out $in\n"
                         "  depfile = $out.d\n"
                         "  deps = gcc\n"
                         "  restat = 1\n"
                         "rule use\n"
                         "  command = printf x >>log; cp $in $out\n"
                         "build out$ put: expand in.qz\n"
                         "build used: use out$ put\n");
    Write("in.qz", "@import \"b.qz\"\nm\n");
    Write("b.qz", "@def m = 1\n");
    LetTimePass();
    EXPECT_EQ(Build("ninja used"), 1u);
    LetTimePass();
    Write("b.qz", "@def m = 1\n@def n = 1\n");
    EXPECT_EQ(Build("ninja used"), 0u);
    LetTimePass();
    Write("b.qz", "@def m = 2\n");
    EXPECT_EQ(Build("ninja used"), 1u);
    EXPECT_EQ(Build("ninja used"), 0u);
    EXPECT_EQ(Read("used"), "\n2\n");
}

}  // namespace

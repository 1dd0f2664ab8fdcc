#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

#include <sys/resource.h>

#include "qzMacroExpander/Mpfw.h"
#include "tests/support/Project.h"
#include "tests/support/Text.h"

// How projects are read and expanded, and how their errors are reported. What the parser reads in
// an expanded text: see MpfwParser_test.

namespace vorn {
namespace {

using vorn_test::FolderProject;
using vorn_test::LexError;
using vorn_test::LexErrorOf;
using vorn_test::Str;

using Strings = std::vector<std::string>;

// ---- reading -----------------------------------------------------------------------------------

TEST(AddFile, ReadsAFileAndExpandsItInTheFrameOfTheProject) {
    FolderProject project;
    project.m_folder.Write("main.txt", "@def m(a) = <a>\n  m(1)\n");
    MpfwSourceFile* file = project.AddFile("main.txt");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(Str(file->m_localPath), Str(project.m_folder.Path("main.txt")));
    EXPECT_EQ(Str(file->m_buffer), "@def m(a) = <a>\n  m(1)\n");
    EXPECT_EQ(Str(file->m_expanded), "  <1>\n");
    EXPECT_EQ(file->m_pieces.size(), file->m_expanded.size());
    ASSERT_EQ(project.m_files.size(), 1);
    EXPECT_EQ(project.m_files[0], file);
    EXPECT_NE(project.m_frame.m_vf.Find2("m"), nullptr);
    EXPECT_EQ(project.m_trace, "");
}

TEST(AddFile, ReadsAnEmptyFile) {
    FolderProject project;
    project.m_folder.Write("main.txt", "");
    MpfwSourceFile* file = project.AddFile("main.txt");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(Str(file->m_buffer), "");
    EXPECT_EQ(Str(file->m_expanded), "");
    EXPECT_EQ(file->m_pieces.size(), 0);
}

TEST(AddFile, JoinsTheExtraTextToTheFileBeforeItIsExpanded) {
    FolderProject project;
    project.m_folder.Write("main.txt", "@if (true) { yes");
    MpfwSourceFile* file = project.AddFile("main.txt", " } behind");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(Str(file->m_buffer), "@if (true) { yes } behind");
    EXPECT_EQ(Str(file->m_expanded), " yes  behind");
}

TEST(AddFile, ThrowsForAFileThatCannotBeOpened) {
    FolderProject project;
    const xstring path = project.m_folder.Path("none.txt");
    const std::string message = "Couldn't open file " + Str(path);
    EXPECT_EQ(LexErrorOf(nullptr, [&] { project.m_parser.AddFile(path, SubString()); }),
              (LexError{message, 0}));  // no token, no position
    const SubString text("a b");
    project.m_parser.Init(text);
    project.m_parser.ReadNextToken();
    EXPECT_EQ(LexErrorOf(text.m_p1, [&] { project.m_parser.AddFile(path, SubString()); }),
              (LexError{message, 2}));
    EXPECT_EQ(project.m_files.size(), 0);
}

TEST(AddFile, RefusesAFolder) {
    FolderProject project;
    project.m_folder.Write("folder/file.txt", "");
    const xstring path = project.m_folder.Path("folder");
    EXPECT_EQ(LexErrorOf(nullptr, [&] { project.m_parser.AddFile(path, SubString()); }),
              (LexError{"Couldn't open file " + Str(path), 0}));
}

TEST(AddFile, FillsTheObjectThatTheClientMakes) {
    struct NumberedFile : MpfwSourceFile {
        int m_number = 7;
    };
    class Client : public vorn_test::FolderParser {
    public:
        using FolderParser::FolderParser;
        MpfwSourceFile* CreateMpfwSourceFile() override { return new NumberedFile; }
    };
    FolderProject project;
    Client client(project.m_frame, project.m_folder);
    project.m_folder.Write("main.txt", "@import \"a.txt\"");
    project.m_folder.Write("a.txt", "a");
    client.AddFile(project.m_folder.Path("main.txt"), SubString());
    ASSERT_EQ(project.m_files.size(), 2);
    for (const MpfwSourceFile* file : project.m_files) {
        const auto* numbered = dynamic_cast<const NumberedFile*>(file);
        ASSERT_NE(numbered, nullptr);
        EXPECT_EQ(numbered->m_number, 7);
    }
}

// ---- imports -----------------------------------------------------------------------------------

TEST(ProjectImports, AreExpandedBeforeTheTextBehindThem) {
    FolderProject project;
    project.m_folder.Write("main.txt", "a b c\n@import \"one.txt\"\na b c\n");
    project.m_folder.Write("one.txt", "@def a = 1\n@import \"two.txt\"\na b c\n@def c = 3\n");
    project.m_folder.Write("two.txt", "@def b = 2\na b c\n");
    ASSERT_NE(project.AddFile("main.txt"), nullptr);
    EXPECT_EQ(project.Names(), (Strings{"main.txt", "one.txt", "two.txt"}));
    EXPECT_EQ(Str(project.m_files[0]->m_expanded), "a b c\n@import \"one.txt\"\n1 2 3\n");
    EXPECT_EQ(Str(project.m_files[1]->m_expanded), "@import \"two.txt\"\n1 2 c\n");
    EXPECT_EQ(Str(project.m_files[2]->m_expanded), "1 2 c\n");
    EXPECT_EQ(project.m_trace, "");
}

TEST(ProjectImports, GoToTheFrameOfTheProjectWhateverFrameTheyStandIn) {
    FolderProject project;
    project.m_folder.Write("a.txt", "@def m = 1\n");
    const xstring path("a.txt");
    FileScopeVarFrame other;
    EXPECT_TRUE(project.m_parser.HandleImport(&other, path, nullptr));
    EXPECT_EQ(other.Find2("m"), nullptr);
    EXPECT_NE(project.m_frame.m_vf.Find2("m"), nullptr);
}

TEST(ProjectImports, ReadAFileAsOftenAsItIsImported) {
    FolderProject project;
    project.m_folder.Write("main.txt", "@let int n = 0\n@import \"a.txt\"\n@import \"a.txt\"\nn");
    project.m_folder.Write("a.txt", "@let n = n + 1\nn");
    MpfwSourceFile* file = project.AddFile("main.txt");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(project.Names(), (Strings{"main.txt", "a.txt", "a.txt"}));
    EXPECT_EQ(Str(file->m_expanded), "@import \"a.txt\"\n@import \"a.txt\"\n2");
    EXPECT_EQ(Str(project.m_files[1]->m_expanded), "1");
    EXPECT_EQ(Str(project.m_files[2]->m_expanded), "2");
}

TEST(ProjectImports, BringTheErrorsOfASecondDefinition) {
    FolderProject project;
    project.m_folder.Write("main.txt", "@import \"a.txt\"\n@import \"a.txt\"\n");
    project.m_folder.Write("a.txt", "\n@let int n = 0\n");
    EXPECT_EQ(project.AddFile("main.txt"), nullptr);
    EXPECT_EQ(project.Names(), (Strings{"main.txt", "a.txt", "a.txt"}));
    EXPECT_EQ(project.m_trace, "\na.txt(2) : Redefinition of variable n in this scope\n"
                               "\nmain.txt(2) : Can't import file: a.txt\n");
}

TEST(ProjectImports, FindTheFirstOfAFileImportedTwice) {
    FolderProject project;
    project.m_folder.Write("main.txt", "@import \"a.txt\"\n@import \"a.txt\"\n");
    project.m_folder.Write("a.txt", "text");
    MpfwSourceFile* file = project.AddFile("main.txt");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(project.Names(), (Strings{"main.txt", "a.txt", "a.txt"}));
    project.m_parser.Init(file->m_expanded);
    EXPECT_TRUE(project.m_parser.ParseImportDirective());
    EXPECT_TRUE(project.m_parser.ParseImportDirective());
    EXPECT_EQ(project.m_parser.m_processed,
              (std::vector<MpfwSourceFile*>{project.m_files[1], project.m_files[1]}));
}

TEST(ProjectImports, ApplyDollarMacrosToTheirPaths) {
    FolderProject project;
    project.m_folder.Write("main.txt",
                           "@$DIR = \"sub\"\n@import \"$(DIR)/a.txt\"\n@import(\"$(\" + "
                           "\"FILE).txt\")\n\"$(DIR)$(FILE)\"\n");
    project.m_folder.Write("sub/a.txt", "@$FILE = \"b\"\n\"$(DIR)\"\n");
    project.m_folder.Write("b.txt", "");
    MpfwSourceFile* file = project.AddFile("main.txt");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(project.m_parser.m_resolved, (Strings{"sub/a.txt", "b.txt"}));
    EXPECT_EQ(project.Names(), (Strings{"main.txt", "sub/a.txt", "b.txt"}));
    EXPECT_EQ(Str(file->m_expanded),
              "\n@import \"$(DIR)/a.txt\"\n@import \"$(FILE).txt\"\n\"subb\"\n");
    EXPECT_EQ(Str(project.m_files[1]->m_expanded), "\n\"sub\"\n");
}

TEST(ProjectImports, SearchThePathsThatTheFilesName) {
    FolderProject project;
    project.m_folder.Write(
        "main.txt", "@$LIB = \"lib\"\n@importpath \"none/./\"\n@importpath \"$(LIB)//x/..\"\n"
                    "@importpath(\"other\" + \"\\\\deep\")\n"
                    "@import \"a.txt\"\n@import \"b.txt\"\n");
    project.m_folder.Write("lib/a.txt", "@importpath \"late\"\n");
    project.m_folder.Write("other/deep/b.txt", "");
    ASSERT_NE(project.AddFile("main.txt"), nullptr);
    Strings paths;
    for (const xstring& path : project.m_frame.m_importPaths)
        paths.push_back(Str(path));
    EXPECT_EQ(paths, (Strings{"none", "lib", "other/deep", "late"}));
    EXPECT_EQ(project.Names(), (Strings{"main.txt", "lib/a.txt", "other/deep/b.txt"}));
}

TEST(ProjectImports, AreProcessedByASecondParserOnTheFrame) {
    // Parses a file as names and imports, and writes them in the order in which they are met.
    class Lister : public vorn_test::FolderParser {
    public:
        Lister(MpfwFrame& frame, const vorn_test::TemporaryFolder& folder, Strings& names)
            : FolderParser(frame, folder), m_testFolder(folder), m_names(names) {}

        void Parse(MpfwSourceFile& file) {
            Init(file.m_expanded);
            while (m_token != TOKEN_END) {
                if (!ParseImportDirective())
                    m_names.push_back(Str(ParseIdentifier()));
            }
        }
        void ProcessImportedFile(MpfwSourceFile* srcFile) override {
            ASSERT_NE(srcFile, nullptr);
            Lister(m_frame, m_testFolder, m_names).Parse(*srcFile);
        }

    private:
        const vorn_test::TemporaryFolder& m_testFolder;
        Strings& m_names;
    };
    FolderProject project;
    project.m_folder.Write("main.txt", "a @import \"one.txt\" b @import \"two.txt\" c");
    project.m_folder.Write("one.txt", "d @import \"two.txt\" e");
    project.m_folder.Write("two.txt", "f");
    MpfwSourceFile* file = project.AddFile("main.txt");
    ASSERT_NE(file, nullptr);
    Strings names;
    Lister(project.m_frame, project.m_folder, names).Parse(*file);
    EXPECT_EQ(names, (Strings{"a", "d", "f", "e", "b", "f", "c"}));
}

// ---- errors ------------------------------------------------------------------------------------

TEST(ProjectErrors, AreReportedOnceForEachLevelInnermostFirst) {
    FolderProject project;
    project.m_folder.Write("main.txt", "first\n\n@import \"one.txt\"\nlast\n");
    project.m_folder.Write("one.txt", "@def m = 1\n@import \"two.txt\"\n");
    project.m_folder.Write("two.txt", "m\nm @if (m) { x }\n");
    EXPECT_EQ(project.AddFile("main.txt"), nullptr);
    EXPECT_EQ(project.m_trace, "\ntwo.txt(2) : No implicit conversion from int64 to bool\n"
                               "    in @if(1)\n"
                               "\none.txt(2) : Can't import file: two.txt\n"
                               "\nmain.txt(3) : Can't import file: one.txt\n");
    // The files stay, and what was defined does.
    EXPECT_EQ(project.Names(), (Strings{"main.txt", "one.txt", "two.txt"}));
    for (const MpfwSourceFile* file : project.m_files) {
        EXPECT_EQ(file->m_expanded.size(), 0);
        EXPECT_EQ(file->m_pieces.size(), 0);
    }
    EXPECT_NE(project.m_frame.m_vf.Find2("m"), nullptr);
}

TEST(ProjectErrors, AreLocatedWhereTheyLie) {
    struct Located {
        const char* text;
        int line;
        const char* message;
    };
    // clang-format off
    const Located rows[] = {
        {"a\n  @fail(\"no\")\n", 2, "no"},
        {"a\n@import \"b.txt\"\n", 2, "Couldn't open file b.txt"},
        {"a\n\n@import('b' + '.txt')\n", 3, "Couldn't open file b.txt"},
        {"\n@import 'b'\n", 2, "Quoted string expected after 'import' when read 'b'"},
        {"a\n@if (true", 2, "Met EOS while reading bracketted section"},
        {"\n@def m = {\n'\n}", 3, "Met line feed within single quoted string after reading '"},
        {"@def m = {\n\n @fail(\"no\")\n}\n\nm\n", 3, "no\n    invoking macro m"},
    };
    // clang-format on
    for (const Located& row : rows) {
        FolderProject project;
        project.m_folder.Write("main.txt", row.text);
        EXPECT_EQ(project.AddFile("main.txt"), nullptr) << row.text;
        EXPECT_EQ(project.m_trace,
                  "\nmain.txt(" + std::to_string(row.line) + ") : " + row.message + '\n')
            << row.text;
    }
}

TEST(ProjectErrors, AreReportedWithoutAPlaceWhereTheyLieInATemporaryText) {
    FolderProject project;
    project.m_folder.Write("main.txt", "@let int x = 1 2\n");
    EXPECT_EQ(project.AddFile("main.txt"), nullptr);
    EXPECT_EQ(project.m_trace, "\nRead 2 in middle of expression\n    expression: 1 2\n");
}

TEST(ProjectErrors, LieInTheFileThatDefinedTheMacro) {
    FolderProject project;
    project.m_folder.Write("main.txt", "@import \"one.txt\"\n\nm\n");
    project.m_folder.Write("one.txt", "@def m = {\n  @fail(\"no\")\n}\n");
    EXPECT_EQ(project.AddFile("main.txt"), nullptr);
    EXPECT_EQ(project.m_trace, "\none.txt(2) : no\n    invoking macro m\n");
}

TEST(ProjectErrors, OfAFileThatCannotBeOpenedStayInsideTheExpansion) {
    // A path that resolves and then does not open.
    class Promiser : public vorn_test::FolderParser {
    public:
        using FolderParser::FolderParser;
        bool ResolveImportPath(const xstring& importPath, xstring& localPath) override {
            localPath = "no/such/folder/";
            localPath += importPath;
            return true;
        }
    };
    FolderProject project;
    project.m_folder.Write("main.txt", "\n@import \"a.txt\"\n");
    Promiser promiser(project.m_frame, project.m_folder);
    const std::string trace = vorn_test::StandardErrorOf([&] {
        EXPECT_EQ(promiser.AddFile(project.m_folder.Path("main.txt"), SubString()), nullptr);
    });
    EXPECT_EQ(trace, "\nCouldn't open file no/such/folder/a.txt\n");  // there is no token yet
    EXPECT_EQ(project.Names(), Strings{"main.txt"});
}

TEST(ProjectErrors, OfAParseAreLocatedOnceTheyAreMapped) {
    FolderProject project;
    project.m_folder.Write("main.txt", "@def two = a b\n\nx two y\n\n2\n");
    MpfwSourceFile* file = project.AddFile("main.txt");
    ASSERT_NE(file, nullptr);
    ASSERT_EQ(Str(file->m_expanded), "x a b y\n\n2\n");
    project.m_parser.Init(file->m_expanded);
    try {
        while (true)
            project.m_parser.ParseIdentifier();
    } catch (LexScannerException& e) {
        EXPECT_EQ(project.Report(e), "\nExpected identifier after y when read 2\n");
        file->AdjustErrorPosition(e);
        EXPECT_EQ(project.Report(e), "\nmain.txt(5) : Expected identifier after y when read 2\n");
    }
}

TEST(ProjectErrors, LeaveTheProjectFitForFurtherFiles) {
    FolderProject project;
    project.m_folder.Write("bad.txt", "@def m = 1\n@else\n");
    project.m_folder.Write("good.txt", "m\n");
    EXPECT_EQ(project.AddFile("bad.txt"), nullptr);
    EXPECT_EQ(project.m_trace, "\nbad.txt(2) : @else with no matching @if directive\n");
    MpfwSourceFile* file = project.AddFile("good.txt");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(Str(file->m_expanded), "1\n");
}

// ---- cycles ------------------------------------------------------------------------------------

constexpr const char* s_countdown = "@let left = left - 1\n"
                                    "@import(left > 0 ? \"loop.txt\" : \"end.txt\")\n";

TEST(ImportCycles, GoAsDeepAsTheFilesSay) {
    FolderProject project;
    project.m_folder.Write("main.txt", "@let int left = 500\n@import \"loop.txt\"\nleft\n");
    project.m_folder.Write("loop.txt", s_countdown);
    project.m_folder.Write("end.txt", "");
    MpfwSourceFile* file = project.AddFile("main.txt");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(Str(file->m_expanded), "@import \"loop.txt\"\n0\n");
    ASSERT_EQ(project.m_files.size(), 502);
    EXPECT_EQ(project.m_files[501]->m_localPath, project.m_folder.Path("end.txt"));
    EXPECT_EQ(Str(project.m_files[500]->m_expanded), "@import \"end.txt\"\n");
}

TEST(ImportCycles, ReportAnErrorAtTheirEndOnceForEachTurn) {
    FolderProject project;
    project.m_folder.Write("main.txt", "@let int left = 100\n@import \"loop.txt\"\n");
    project.m_folder.Write("loop.txt", s_countdown);
    project.m_folder.Write("end.txt", "\n@fail(\"enough\")\n");
    std::string trace = "\nend.txt(2) : enough\n"
                        "\nloop.txt(2) : Can't import file: end.txt\n";
    for (int i = 1; i < 100; ++i)
        trace += "\nloop.txt(2) : Can't import file: loop.txt\n";
    trace += "\nmain.txt(2) : Can't import file: loop.txt\n";
    EXPECT_EQ(project.AddFile("main.txt"), nullptr);
    EXPECT_EQ(project.m_trace, trace);
}

// Nothing tests whether a file is being imported already: the stack is the limit.
void AddFileOnASmallStack(FolderProject& project, const std::string& name) {
    const rlimit stack{512 * 1024, 512 * 1024};
    const rlimit noCoreFile{0, 0};
    setrlimit(RLIMIT_STACK, &stack);
    setrlimit(RLIMIT_CORE, &noCoreFile);
    project.m_parser.AddFile(project.m_folder.Path(name), SubString());
}

TEST(ImportCyclesDeathTest, WithoutAnEndExhaustTheStackOfTheProcess) {
    FolderProject project;
    project.m_folder.Write("main.txt", "@import \"main.txt\"\n");
#if defined(__SANITIZE_ADDRESS__)
    const testing::ExitedWithCode overflow(1);
    const char* message = "stack-overflow";
#else
    const testing::KilledBySignal overflow(SIGSEGV);
    const char* message = "^$";
#endif
    EXPECT_EXIT(AddFileOnASmallStack(project, "main.txt"), overflow, message);
}

}  // namespace
}  // namespace vorn

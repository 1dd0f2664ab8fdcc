#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "qzMacroExpander/Mpfw.h"
#include "tests/support/Project.h"
#include "tests/support/Text.h"

// The way back from expanded text to where it was written, over whole expansions.

namespace vorn {
namespace {

using vorn_test::Address;
using vorn_test::FolderProject;
using vorn_test::HeapText;
using vorn_test::Str;

// A text, its expansion and the way back.
class Expansion {
public:
    HeapText m_text;
    FileScopeVarFrame m_frame;
    xstring m_expanded;
    OutputPieces m_pieces;

    explicit Expansion(std::string_view text, ssize_t indent = 0) : m_text(text) {
        MacroExpand(nullptr, &m_frame, m_text.View(), 0, indent, m_expanded, m_pieces);
    }

    std::string Output() const { return Str(m_expanded); }

    // For each byte of the output the byte that it comes from: a letter stands for the byte of the
    // text at that place, and a dot for none.
    std::string Sources() const {
        std::string sources;
        for (ssize_t i = 0; i < m_expanded.size(); ++i) {
            const xchar* pos = m_pieces.MapOutputPositionToAddress(i);
            sources += pos == nullptr ? '.' : *pos;
        }
        return sources;
    }

    // The offset in the text of what an offset in the output maps to.
    ssize_t Source(ssize_t pos) const {
        return m_pieces.MapOutputPositionToAddress(pos) - m_text.begin();
    }
};

struct Mapping {
    std::string_view text;
    std::string_view output;
    std::string_view sources;  // as Expansion::Sources gives them
};

template <class Rows>
void ExpectMappings(const Rows& rows, ssize_t indent) {
    for (const Mapping& row : rows) {
        const Expansion expansion(row.text, indent);
        EXPECT_EQ(expansion.Output(), row.output) << row.text;
        EXPECT_EQ(expansion.Sources(), row.sources) << row.text;
    }
}

// ---- single texts ------------------------------------------------------------------------------

TEST(PositionMapping, LeadsFromVerbatimTextToTheVeryByte) {
    const std::string text = "ab /* c */\n\t\"d\" // e\n\n 12";
    const Expansion expansion(text);
    ASSERT_EQ(expansion.Output(), text);
    for (std::size_t i = 0; i < text.size(); ++i)
        EXPECT_EQ(expansion.Source(static_cast<ssize_t>(i)), static_cast<ssize_t>(i));
}

TEST(PositionMapping, LeadsFromIndentationNowhere) {
    const Mapping rows[] = {
        {"ab\nc",  "  ab\n  c",    "..ab\n..c"   },
        {"a\n\nb", "  a\n  \n  b", "..a\n..\n..b"},
        {"a\n b",  "  a\n   b",    "..a\n.. b"   }, // an author\'s own blanks
    };
    ExpectMappings(rows, 2);
}

TEST(PositionMapping, LeadsFromWhatADirectiveYieldsToItsSign) {
    const Mapping rows[] = {
        {"a @(12 + 30) b",              "a 42 b",      "a @@ b"   },
        {"a @[q] b",                    "a q b",       "a @ b"    },
        {"a @str(x y) b",               "a \"x y\" b", "a @@@@@ b"},
        {"a @quote(x) b",               "a x b",       "a x b"    },
        {"@relativepath(\"a\", \"b\")", "\"../b\"",    "@@@@@@"   },
        {"x@@y",                        "xy",          "xy"       },
        {"@// c\nx",                    "x",           "x"        },
    };
    ExpectMappings(rows, 0);
}

TEST(PositionMapping, CountsTheIndentationInsideOfCalculatedTextAsCalculated) {
    const Mapping rows[] = {
        {"@(\"a\\nb\") c", "  a\n  b c", "@@@@@@@ c"},
        {"x @(\"a\\nb\")", "  x a\n  b", "..x @@@@@"},
    };
    ExpectMappings(rows, 2);
}

TEST(PositionMapping, LeadsFromAValueToTheNameThatStandsForIt) {
    const Expansion expansion("@let int n = 6 * 7\na n b");
    EXPECT_EQ(expansion.Output(), "a 42 b");
    EXPECT_EQ(expansion.Sources(), "a nn b");
    EXPECT_EQ(expansion.Source(2), 21);
    EXPECT_EQ(expansion.Source(3), 21);
    EXPECT_EQ(expansion.Source(5), 23);
}

TEST(PositionMapping, LeadsFromAMacroToItsBodyAndFromAnArgumentToTheCall) {
    const Expansion expansion("@def m(a) = <a-a>\nx m(12 3) y");
    ASSERT_EQ(expansion.Output(), "x <12 3-12 3> y");
    const ssize_t sources[] = {18, 19, 12, 22, 23, 24, 25, 14, 22, 23, 24, 25, 16, 27, 28};
    for (ssize_t i = 0; i < expansion.m_expanded.size(); ++i)
        EXPECT_EQ(expansion.Source(i), sources[i]) << i;
}

TEST(PositionMapping, LeadsFromBranchesAndTurnsToTheTextInThem) {
    const Mapping rows[] = {
        {"@if (true) {a} @else {b}", "a",    "a"   },
        {"@for (i in [1, 2]) {<>}",  "<><>", "<><>"},
        {"@scope {a}",               "a",    "a"   },
    };
    ExpectMappings(rows, 0);
}

TEST(PositionMapping, StaysExactBehindPiecesOfOtherSizesThanTheirSources) {
    std::string text = "@def longer = 0123456789\n@def none = {}\n";
    const ssize_t start = static_cast<ssize_t>(text.size());
    const std::string use = "a longer b none c @(1) d\n";
    const std::string expanded = "a 0123456789 b  c 1 d\n";
    for (int i = 0; i < 100; ++i)
        text += use;
    const Expansion expansion(text);
    ASSERT_EQ(expansion.m_expanded.size(), static_cast<ssize_t>(100 * expanded.size()));
    const auto outputSize = static_cast<ssize_t>(expanded.size());
    const auto useSize = static_cast<ssize_t>(use.size());
    for (ssize_t i = 0; i < 100; ++i) {
        for (const char c : {'a', 'b', 'c', 'd', '\n'}) {
            const auto offset = static_cast<ssize_t>(expanded.find(c));
            EXPECT_EQ(expansion.Source(i * outputSize + offset),
                      start + i * useSize + static_cast<ssize_t>(use.find(c)));
        }
    }
}

// ---- texts that are gone -----------------------------------------------------------------------

TEST(PositionMapping, GivesAnAddressInNoFileForATextPutTogetherDuringExpansion) {
    FolderProject project;
    project.m_folder.Write("main.txt", "@def twice(f()) = f(1)\n@def g(x) = <x>\ntwice(g)\n");
    MpfwSourceFile* file = project.AddFile("main.txt");
    ASSERT_NE(file, nullptr);
    ASSERT_EQ(Str(file->m_expanded), "<1>\n");
    std::string located;
    for (ssize_t i = 0; i < file->m_expanded.size(); ++i) {
        LexScannerException e("text", file->m_expanded.data() + i);
        file->AdjustErrorPosition(e);
        located += project.m_files.GetSrcFileIndexContainingPosition(e.m_pos) == 0 ? 'y' : 'n';
    }
    // The call of f has become the text g(1), in which the 1 stands.
    EXPECT_EQ(located, "ynyy");
}

// ---- errors ------------------------------------------------------------------------------------

TEST(AdjustErrorPosition, MovesWhatLiesInTheExpandedTextAndNothingElse) {
    const Expansion expansion("@(\"12\")3", 1);
    ASSERT_EQ(expansion.Output(), " 123");
    const xchar* source = expansion.m_text.begin();
    const xchar* output = expansion.m_expanded.data();
    const xchar* before = Address(output, -1);
    const HeapText other("other");
    struct {
        const char* what;
        const xchar* pos;
        const xchar* adjusted;
    } const rows[] = {
        {"calculated",       output,        source       },
        {"further in it",    output + 2,    source       },
        {"verbatim",         output + 3,    source + 7   },
        {"one past the end", output + 4,    output + 4   },
        {"one in front",     before,        before       },
        {"the source",       source + 2,    source + 2   },
        {"another text",     other.begin(), other.begin()},
        {"nowhere",          nullptr,       nullptr      },
    };
    for (const auto& row : rows) {
        LexScannerException e("text", row.pos);
        e.m_path = "path";
        e.m_lineNumber = 3;
        expansion.m_pieces.AdjustErrorPosition(e, expansion.m_expanded);
        EXPECT_EQ(e.m_pos, row.adjusted) << row.what;
        EXPECT_EQ(Str(e.m_description), "text") << row.what;
        EXPECT_EQ(Str(e.m_path), "path") << row.what;
        EXPECT_EQ(e.m_lineNumber, 3) << row.what;
    }
}

TEST(AdjustErrorPosition, DoesNothingWithoutAText) {
    const OutputPieces none;
    const HeapText other("other");
    LexScannerException e("text", other.begin());
    none.AdjustErrorPosition(e, SubString());
    EXPECT_EQ(e.m_pos, other.begin());
}

TEST(PositionMappingDeathTest, HasNoAnswerBehindTheOutput) {
    const Expansion expansion("ab");
    const OutputPieces none;
    EXPECT_EQ(expansion.Source(1), 1);
    EXPECT_EXIT(expansion.m_pieces.MapOutputPositionToAddress(2), testing::KilledBySignal(SIGABRT),
                "");
    EXPECT_EXIT(none.MapOutputPositionToAddress(0), testing::KilledBySignal(SIGABRT), "");
    EXPECT_EXIT(OutputPiecesMonotonePosMapper(expansion.m_pieces).MapOutputPositionToAddress(2),
                testing::KilledBySignal(SIGABRT), "");
}

// ---- many positions ----------------------------------------------------------------------------

TEST(OutputPiecesMonotonePosMapper, AgreesWithTheSearchFromTheStart) {
    const Expansion expansion("@def m = {\n  a\n  b\n}\nx m y @(\"q\\nr\")\nm\n", 3);
    for (const ssize_t step : {1, 2, 3, 7}) {
        OutputPiecesMonotonePosMapper mapper(expansion.m_pieces);
        for (ssize_t i = 0; i < expansion.m_expanded.size(); i += step)
            EXPECT_EQ(mapper.MapOutputPositionToAddress(i),
                      expansion.m_pieces.MapOutputPositionToAddress(i))
                << i;
    }
}

TEST(OutputPiecesMonotonePosMapper, StaysAtThePieceThatHoldsThePosition) {
    const Expansion expansion("@let string s := abc\nx s y");
    ASSERT_EQ(expansion.Output(), "x abc y");
    OutputPiecesMonotonePosMapper mapper(expansion.m_pieces);
    EXPECT_EQ(&mapper.m_op, &expansion.m_pieces);
    EXPECT_EQ(mapper.m_index, 0);
    EXPECT_EQ(mapper.m_offset, 0);
    const xchar* name = expansion.m_text.begin() + 23;
    for (const ssize_t pos : {2, 2, 3, 4, 4}) {
        EXPECT_EQ(mapper.MapOutputPositionToAddress(pos), name) << pos;
        EXPECT_EQ(mapper.m_offset, 2) << pos;
    }
    EXPECT_EQ(mapper.MapOutputPositionToAddress(6), name + 2);
    EXPECT_LE(mapper.m_offset, 6);
}

// ---- a project ---------------------------------------------------------------------------------

// Output bytes that come from one place: "file(line)", or nothing for indentation.
struct Stretch {
    std::string text;
    std::string place;

    bool operator==(const Stretch&) const = default;
};

void PrintTo(const Stretch& stretch, std::ostream* os) {
    *os << testing::PrintToString(stretch.text) << " from " << stretch.place;
}

using Stretches = std::vector<Stretch>;

std::string Place(const FolderProject& project, const xchar* pos) {
    xstring path;
    ssize_t line = 0;
    if (!project.m_files.GetFilenameAndLineNumber(pos, path, line))
        return "";
    return project.m_folder.Shorten(Str(path)) + '(' + std::to_string(line) + ')';
}

// An expanded text as stretches of one place, each byte by way of an error that lies there.
Stretches StretchesOf(const FolderProject& project, const std::string& name) {
    MpfwSourceFile* file = project.m_files.FindSourceFile(project.m_folder.Path(name));
    Stretches stretches;
    OutputPiecesMonotonePosMapper mapper(file->m_pieces);
    for (ssize_t i = 0; i < file->m_expanded.size(); ++i) {
        LexScannerException e("text", file->m_expanded.data() + i);
        file->AdjustErrorPosition(e);
        EXPECT_EQ(mapper.MapOutputPositionToAddress(i), e.m_pos);
        EXPECT_EQ(file->m_pieces.MapOutputPositionToAddress(i), e.m_pos);
        const std::string place = Place(project, e.m_pos);
        if (stretches.empty() || stretches.back().place != place)
            stretches.push_back({"", place});
        stretches.back().text += file->m_expanded[i];
    }
    return stretches;
}

TEST(PositionMapping, LeadsEveryByteOfFiveFilesToItsFileAndLine) {
    // clang-format off
    FolderProject project;
    project.m_folder.Write("main.txt",
        "@import \"defs.txt\"\n"                // 1
        "@import(\"sub/\" + \"list.txt\")\n"    // 2
        "start  both(me)\n"                     // 3
        "@if (wide)\n"                          // 4
        "{\n"                                   // 5
        "    lines\n"                           // 6
        "    @// note\n"                        // 7
        "    \"$(DIR)/x\"\n"                    // 8
        "}\n"                                   // 9
        "@import \"late.txt\"\n"                // 10
        "  late @(1 + 2)\n");                   // 11
    project.m_folder.Write("defs.txt",
        "@def wide = true\n"                    // 1
        "@def lines =\n"                        // 2
        "{\n"                                   // 3
        "    one\n"                             // 4
        "      two wide\n"                      // 5
        "}\n"                                   // 6
        "@def both(x) = [x, other(x)]\n"        // 7
        "plain\n");                             // 8
    project.m_folder.Write("sub/list.txt",
        "@$DIR = \"d\"\n"                       // 1
        "@import \"sub/deep.txt\"\n"            // 2
        "both(1) _DIR_\n");                     // 3
    project.m_folder.Write("sub/deep.txt",
        "\n"                                    // 1
        "@def other(y) = (y)\n"                 // 2
        " lines");                              // 3
    project.m_folder.Write("late.txt",
        "@def late = {x\n"                      // 1
        "  y}\n");                              // 2
    // clang-format on
    ASSERT_NE(project.AddFile("main.txt"), nullptr) << project.m_trace;
    ASSERT_EQ(project.m_files.size(), 5);

    const Stretches mainStretches = {
        {"@import \"defs.txt\"\n",     "main.txt(1)"    },
        {"@import \"sub/list.txt\"\n", "main.txt(2)"    },
        {"start  ",                    "main.txt(3)"    },
        {"[",                          "defs.txt(7)"    },
        {"me",                         "main.txt(3)"    },
        {", ",                         "defs.txt(7)"    },
        {"(",                          "sub/deep.txt(2)"},
        {"me",                         "main.txt(3)"    },
        {")",                          "sub/deep.txt(2)"},
        {"]",                          "defs.txt(7)"    },
        {"\n",                         "main.txt(3)"    },
        {"one\n",                      "defs.txt(4)"    },
        {"  two ",                     "defs.txt(5)"    },
        {"true",                       "defs.txt(1)"    },
        {"\n",                         "main.txt(6)"    },
        {"\"d/x\"",                    "main.txt(8)"    },
        {"\n",                         "main.txt(9)"    },
        {"@import \"late.txt\"\n",     "main.txt(10)"   },
        {"  ",                         "main.txt(11)"   },
        {"x\n",                        "late.txt(1)"    },
        {"  ",                         ""               },
        {"  y",                        "late.txt(2)"    },
        {" 3\n",                       "main.txt(11)"   },
    };
    EXPECT_EQ(StretchesOf(project, "main.txt"), mainStretches);
    const Stretches listStretches = {
        {"\n",                         "sub/list.txt(1)"},
        {"@import \"sub/deep.txt\"\n", "sub/list.txt(2)"},
        {"[",                          "defs.txt(7)"    },
        {"1",                          "sub/list.txt(3)"},
        {", ",                         "defs.txt(7)"    },
        {"(",                          "sub/deep.txt(2)"},
        {"1",                          "sub/list.txt(3)"},
        {")",                          "sub/deep.txt(2)"},
        {"]",                          "defs.txt(7)"    },
        {" d\n",                       "sub/list.txt(3)"},
    };
    EXPECT_EQ(StretchesOf(project, "sub/list.txt"), listStretches);
    const Stretches deepStretches = {
        {"\n",     "sub/deep.txt(1)"},
        {" ",      "sub/deep.txt(3)"},
        {"one\n",  "defs.txt(4)"    },
        {" ",      ""               },
        {"  two ", "defs.txt(5)"    },
        {"true",   "defs.txt(1)"    },
    };
    EXPECT_EQ(StretchesOf(project, "sub/deep.txt"), deepStretches);
    EXPECT_EQ(StretchesOf(project, "defs.txt"), (Stretches{
                                                    {"plain\n", "defs.txt(8)"}
    }));
    EXPECT_EQ(StretchesOf(project, "late.txt"), Stretches{});
}

}  // namespace
}  // namespace vorn

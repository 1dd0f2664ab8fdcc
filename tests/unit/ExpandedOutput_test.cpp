#include "qzMacroExpander/ExpandedOutput.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "qzMacroExpander/LSToken.h"
#include "qzUtils/StringStream.h"
#include "tests/support/Text.h"

namespace vorn {

bool operator==(const OutputPiece& x, const OutputPiece& y) {
    return x.in.m_p1 == y.in.m_p1 && x.in.m_p2 == y.in.m_p2 && x.out == y.out;
}

void PrintTo(const OutputPiece& piece, std::ostream* os) {
    if (piece.in.m_p1 == nullptr)
        *os << "(null)";
    else
        PrintTo(piece.in, os);
    *os << " -> " << piece.out;
}

}  // namespace vorn

namespace vorn_test {
namespace {

using namespace vorn;

// An output with the text that has been written to it.
class Output {
public:
    StringStream m_os{4096};
    ExpandedOutput m_output{m_os};

    std::string Text() {
        m_text += Str(m_os.GetString());
        EXPECT_EQ(m_output.m_size, static_cast<ssize_t>(m_text.size()));
        EXPECT_EQ(m_output.size(), m_output.m_size);
        return m_text;
    }

    std::vector<OutputPiece> Pieces() const {
        const auto& pieces = m_output.m_pieces.m_pieces;
        return {pieces.begin(), pieces.end()};
    }

private:
    std::string m_text;
};

// A piece that copies n bytes of a text, one for n blanks, and one for n bytes yielded by in.
OutputPiece Verbatim(SubString text, ssize_t offset, ssize_t n) {
    return {SubString(text.m_p1 + offset, text.m_p1 + offset + n), 0};
}
OutputPiece Indentation(ssize_t n) {
    return {SubString(), n};
}
OutputPiece Calculated(SubString in, ssize_t n) {
    return {in, n};
}

using Pieces = std::vector<OutputPiece>;

// ---- pieces ------------------------------------------------------------------------------------

TEST(OutputPiece, HasTheSizeOfItsSourceUnlessItSaysOtherwise) {
    const SubString source("source");
    EXPECT_EQ(Verbatim(source, 0, 6).size(), 6);
    EXPECT_EQ(Indentation(4).size(), 4);
    EXPECT_EQ(Calculated(source, 2).size(), 2);
}

TEST(OutputPieces, AddUp) {
    const SubString source("source");
    OutputPieces pieces;
    EXPECT_EQ(pieces.size(), 0);
    pieces.push_back(Indentation(4));
    pieces.push_back(Verbatim(source, 1, 2));
    pieces.push_back(Calculated(source, 10));
    EXPECT_EQ(pieces.size(), 16);
}

TEST(OutputPieces, Swap) {
    OutputPieces pieces;
    OutputPieces others;
    pieces.push_back(Indentation(4));
    pieces.swap(others);
    EXPECT_EQ(pieces.size(), 0);
    EXPECT_EQ(others.size(), 4);
}

// ---- writing -----------------------------------------------------------------------------------

TEST(ExpandedOutput, StartsWithALineNotBegun) {
    Output output;
    EXPECT_EQ(output.m_output.m_os, &output.m_os);
    EXPECT_EQ(output.m_output.GetColumnPos(), -1);
    EXPECT_EQ(output.m_output.m_size, 0);
    EXPECT_EQ(output.m_output.size(), 0);
}

struct Writing {
    std::string_view source;
    ssize_t indent;
    std::string_view output;
    ssize_t column;
};

const Writing s_writings[] = {
    {"",            0, "",               -1},
    {"",            4, "",               -1},
    {"x",           0, "x",              1 },
    {"x",           4, "    x",          5 },
    {"xyz",         1, " xyz",           4 },
    {"\n",          0, "\n",             -1},
    {"\n",          2, "  \n",           -1},
    {"\n\n",        2, "  \n  \n",       -1},
    {"a\nb",        0, "a\nb",           1 },
    {"a\nb",        2, "  a\n  b",       3 },
    {"a\n\nb\n",    2, "  a\n  \n  b\n", -1},
    {"\t",          0, "\t",             4 },
    {"\t",          2, "  \t",           6 },
    {"a\tb\tc",     0, "a\tb\tc",        11},
    {"a\n\tb",      1, " a\n \tb",       6 },
    {"a\r\nb",      1, " a\r\n b",       2 },
    {"a\rb",        0, "a\rb",           3 },
    {"\v\f",        0, "\v\f",           2 },
    {"\xc3\xa4",    1, " \xc3\xa4",      3 },
    {{"a\0\0b", 4}, 1, {" a\0\0b", 5},   5 },
};

TEST(ExpandedOutput, IndentsTheLinesOfSourceText) {
    for (const Writing& writing : s_writings) {
        const HeapText source(writing.source);
        Output output;
        output.m_output.WriteSubStringFromSourceFile(source.View(), writing.indent);
        EXPECT_EQ(output.Text(), writing.output);
        EXPECT_EQ(output.m_output.GetColumnPos(), writing.column) << writing.output;
    }
}

TEST(ExpandedOutput, IndentsTheLinesOfCalculatedText) {
    const SubString name("name");
    for (const Writing& writing : s_writings) {
        const HeapText source(writing.source);
        Output output;
        output.m_output.WriteCalculatedSubString(source.View(), name, writing.indent);
        EXPECT_EQ(output.Text(), writing.output);
        EXPECT_EQ(output.m_output.GetColumnPos(), writing.column) << writing.output;
        const auto size = static_cast<ssize_t>(writing.output.size());
        EXPECT_EQ(output.Pieces(), size == 0 ? Pieces{} : Pieces{Calculated(name, size)});
    }
}

TEST(ExpandedOutput, WritesAWideIndent) {
    for (const ssize_t indent : {47, 48, 49, 96, 97, 1000}) {
        Output output;
        output.m_output.WriteSubStringFromSourceFile("x", indent);
        EXPECT_EQ(output.Text(), std::string(static_cast<std::size_t>(indent), ' ') + "x");
        EXPECT_EQ(output.m_output.GetColumnPos(), indent + 1);
    }
}

TEST(ExpandedOutput, SourceTextIsOnePieceWhereItNeedsNoIndentation) {
    const SubString source("a\n\nb\nc");
    Output output;
    output.m_output.WriteSubStringFromSourceFile(source, 0);
    EXPECT_EQ(output.Pieces(), (Pieces{Verbatim(source, 0, 6)}));
}

TEST(ExpandedOutput, IndentationIsAPieceOfItsOwnInSourceText) {
    const SubString source("a\n\nb");
    Output output;
    output.m_output.WriteSubStringFromSourceFile(source, 2);
    EXPECT_EQ(output.Pieces(),
              (Pieces{Indentation(2), Verbatim(source, 0, 2), Indentation(2),
                      Verbatim(source, 2, 1), Indentation(2), Verbatim(source, 3, 1)}));
}

TEST(ExpandedOutput, AdjacentPiecesAreNotMerged) {
    const SubString source("abcd");
    Output output;
    output.m_output.WriteSubStringFromSourceFile(SubString(source.m_p1, source.m_p1 + 2), 0);
    output.m_output.WriteSubStringFromSourceFile(SubString(source.m_p1 + 2, source.m_p2), 0);
    EXPECT_EQ(output.Text(), "abcd");
    EXPECT_EQ(output.Pieces(), (Pieces{Verbatim(source, 0, 2), Verbatim(source, 2, 2)}));
}

TEST(ExpandedOutput, AnEmptyTextDoesNotBeginALine) {
    Output output;
    output.m_output.WriteSubStringFromSourceFile("", 4);
    output.m_output.WriteCalculatedSubString("", "name", 4);
    output.m_output.WriteSubStringFromSourceFile(SubString(), 4);
    output.m_output.WriteCalculatedSubString(SubString(), "name", 4);
    EXPECT_EQ(output.Text(), "");
    EXPECT_EQ(output.Pieces(), Pieces{});
    EXPECT_EQ(output.m_output.GetColumnPos(), -1);
}

TEST(ExpandedOutput, ALineThatHasBegunGetsNoIndentation) {
    Output output;
    output.m_output.WriteSubStringFromSourceFile("a", 1);
    output.m_output.WriteCalculatedSubString("b\nc", "name", 3);
    output.m_output.WriteSubStringFromSourceFile("d\n", 5);
    output.m_output.WriteCalculatedSubString("e", "name", 7);
    EXPECT_EQ(output.Text(), " ab\n   cd\n       e");
    EXPECT_EQ(output.m_output.GetColumnPos(), 8);
}

TEST(ExpandedOutput, IndentationCountsInTheCalculatedPiece) {
    const SubString name("name");
    Output output;
    output.m_output.WriteCalculatedSubString("a\nb", name, 4);
    output.m_output.WriteCalculatedSubString("c\nd", name, 4);
    EXPECT_EQ(output.Text(), "    a\n    bc\n    d");
    EXPECT_EQ(output.Pieces(), (Pieces{Calculated(name, 11), Calculated(name, 7)}));
}

TEST(ExpandedOutput, TracksTheColumnThroughMixedWrites) {
    const SubString source("x = m;\ny");
    const char* p = source.m_p1;
    Output output;
    struct {
        SubString text;
        bool calculated;
        ssize_t column;
    } const writes[] = {
        {{p, p + 1},     false, 5 },
        {{p + 1, p + 3}, false, 7 },
        {{p + 3, p + 4}, false, 8 },
        {"12",           true,  10},
        {{p + 5, p + 6}, false, 11},
        {{p + 6, p + 7}, false, -1},
        {{p + 7, p + 8}, false, 5 },
    };
    const SubString name(p + 4, p + 5);
    for (const auto& write : writes) {
        if (write.calculated)
            output.m_output.WriteCalculatedSubString(write.text, name, 4);
        else
            output.m_output.WriteSubStringFromSourceFile(write.text, 4);
        EXPECT_EQ(output.m_output.GetColumnPos(), write.column);
    }
    EXPECT_EQ(output.Text(), "    x = 12;\n    y");
    EXPECT_EQ(output.Pieces(),
              (Pieces{Indentation(4), Verbatim(source, 0, 1), Verbatim(source, 1, 2),
                      Verbatim(source, 3, 1), Calculated(name, 2), Verbatim(source, 5, 1),
                      Verbatim(source, 6, 1), Indentation(4), Verbatim(source, 7, 1)}));
}

// A sink that keeps apart what it gets in one call.
class Calls : public IOutputStream {
public:
    std::vector<std::string> m_calls;

    void WriteStream(const void* p, ssize_t n) override {
        m_calls.emplace_back(static_cast<const char*>(p), static_cast<std::size_t>(n));
    }
    void FlushStream() override {}
};

class Deferred : public testing::Test {
protected:
    Calls calls;
    xostream os{calls};
    ExpandedOutput output{os};
    const SubString source{"ab\ncd"};

    SubString Part(ssize_t from, ssize_t to) const {
        return SubString(source.m_p1 + from, source.m_p1 + to);
    }
};

using Strings = std::vector<std::string>;

TEST_F(Deferred, RunsThatFollowEachOtherReachTheStreamAsOne) {
    output.DeferSubStringFromSourceFile(Part(0, 1), 0);
    output.DeferSubStringFromSourceFile(Part(1, 3), 0);
    EXPECT_EQ(calls.m_calls, Strings{});
    EXPECT_EQ(output.GetColumnPos(), -1);
    output.DeferSubStringFromSourceFile(Part(3, 3), 0);
    output.DeferSubStringFromSourceFile(Part(3, 5), 0);
    EXPECT_EQ(output.m_size, 5);
    EXPECT_EQ(output.size(), 5);
    output.WriteDeferred();
    EXPECT_EQ(calls.m_calls, Strings{"ab\ncd"});
    EXPECT_EQ(output.m_pieces.m_pieces.size(), 3);
    output.WriteDeferred();
    EXPECT_EQ(calls.m_calls, Strings{"ab\ncd"}) << "once only";
}

TEST_F(Deferred, RunsKeepTheirPlaceAmongAllElse) {
    output.DeferSubStringFromSourceFile(Part(0, 1), 0);
    output.DeferSubStringFromSourceFile(Part(3, 4), 0);
    output.WriteCalculatedSubString("x", source, 0);
    output.DeferSubStringFromSourceFile(Part(4, 5), 0);
    output.WriteSubStringFromSourceFile(Part(0, 1), 0);
    output.DeferSubStringFromSourceFile(Part(2, 4), 2);
    output.WriteCalculatedSubString("y", source, 0);
    EXPECT_EQ(calls.m_calls, (Strings{"a", "c", "x", "d", "a", "\n", "  ", "c", "y"}));
    EXPECT_EQ(output.m_size, 10);
}

TEST(ExpandedOutput, GetPiecesSwaps) {
    Output output;
    output.m_output.WriteSubStringFromSourceFile("abc", 0);
    OutputPieces pieces;
    pieces.push_back(Indentation(7));
    output.m_output.GetPieces(pieces);
    EXPECT_EQ(pieces.size(), 3);
    EXPECT_EQ(output.m_output.size(), 7);
    EXPECT_EQ(output.m_output.m_size, 3) << "the count of bytes written stays";
}

// ---- from the output back to the source --------------------------------------------------------

// The output "    x = 12;\n    y" of "x = m;\n  y".
class Mapping : public testing::Test {
protected:
    const SubString source{"x = m;\n  y"};
    const SubString name{source.m_p1 + 4, source.m_p1 + 5};
    OutputPieces pieces;

    // What each offset of the output maps to, as an offset in the source; -1 stands for null.
    const std::vector<ssize_t> expected{-1, -1, -1, -1, 0, 1, 2, 3, 4, 4, 5, 6, -1, -1, -1, -1, 9};

    Mapping() {
        for (const OutputPiece& piece :
             {Indentation(4), Verbatim(source, 0, 3), Verbatim(source, 3, 1), Calculated(name, 2),
              Verbatim(source, 5, 2), Indentation(4), Verbatim(source, 9, 1)})
            pieces.push_back(piece);
    }

    const xchar* Expected(std::size_t pos) const {
        return expected[pos] == -1 ? nullptr : source.m_p1 + expected[pos];
    }
};

TEST_F(Mapping, GivesTheSourceOfEachByte) {
    ASSERT_EQ(pieces.size(), static_cast<ssize_t>(expected.size()));
    for (std::size_t pos = 0; pos < expected.size(); ++pos)
        EXPECT_EQ(pieces.MapOutputPositionToAddress(static_cast<ssize_t>(pos)), Expected(pos))
            << pos;
}

TEST_F(Mapping, ACursorGivesTheSame) {
    OutputPiecesMonotonePosMapper mapper(pieces);
    for (std::size_t pos = 0; pos < expected.size(); ++pos) {
        EXPECT_EQ(mapper.MapOutputPositionToAddress(static_cast<ssize_t>(pos)), Expected(pos));
        EXPECT_EQ(mapper.MapOutputPositionToAddress(static_cast<ssize_t>(pos)), Expected(pos))
            << "the same position again";
    }
}

TEST_F(Mapping, ACursorMayLeavePositionsOut) {
    for (std::size_t step = 1; step < expected.size(); ++step) {
        OutputPiecesMonotonePosMapper mapper(pieces);
        for (std::size_t pos = 0; pos < expected.size(); pos += step)
            EXPECT_EQ(mapper.MapOutputPositionToAddress(static_cast<ssize_t>(pos)), Expected(pos))
                << pos << " in steps of " << step;
    }
}

TEST_F(Mapping, ACursorStaysAtThePieceItFound) {
    OutputPiecesMonotonePosMapper mapper(pieces);
    EXPECT_EQ(&mapper.m_op, &pieces);
    EXPECT_EQ(mapper.m_index, 0);
    EXPECT_EQ(mapper.m_offset, 0);
    mapper.MapOutputPositionToAddress(3);
    EXPECT_EQ(mapper.m_index, 0);
    EXPECT_EQ(mapper.m_offset, 0);
    mapper.MapOutputPositionToAddress(4);
    EXPECT_EQ(mapper.m_index, 1);
    EXPECT_EQ(mapper.m_offset, 4);
    mapper.MapOutputPositionToAddress(9);
    EXPECT_EQ(mapper.m_index, 3);
    EXPECT_EQ(mapper.m_offset, 8);
    mapper.MapOutputPositionToAddress(16);
    EXPECT_EQ(mapper.m_index, 6);
    EXPECT_EQ(mapper.m_offset, 16);
}

TEST_F(Mapping, BeyondTheEndEndsTheProcess) {
    EXPECT_DEATH(pieces.MapOutputPositionToAddress(17), "");
    EXPECT_DEATH(OutputPiecesMonotonePosMapper(pieces).MapOutputPositionToAddress(17), "");
    EXPECT_DEATH(OutputPieces().MapOutputPositionToAddress(0), "");
}

// The error at an offset of the output, moved to the source.
class AdjustErrorPosition : public Mapping {
protected:
    const HeapText output{"    x = 12;\n    y"};

    const xchar* Adjusted(const xchar* pos) const {
        LexScannerException e("description", pos);
        pieces.AdjustErrorPosition(e, output.View());
        return e.m_pos;
    }
};

TEST_F(AdjustErrorPosition, MovesAnErrorInTheOutput) {
    for (std::size_t pos = 0; pos < expected.size(); ++pos)
        EXPECT_EQ(Adjusted(output.begin() + pos), Expected(pos)) << pos;
}

TEST_F(AdjustErrorPosition, LeavesNull) {
    EXPECT_EQ(Adjusted(nullptr), nullptr);
}

TEST_F(AdjustErrorPosition, LeavesTheEndOfTheOutput) {
    EXPECT_EQ(Adjusted(output.end()), output.end());
}

TEST_F(AdjustErrorPosition, LeavesWhatLiesElsewhere) {
    for (ssize_t i = 0; i <= source.size(); ++i)
        EXPECT_EQ(Adjusted(source.m_p1 + i), source.m_p1 + i);
}

TEST_F(AdjustErrorPosition, LeavesAllButThePosition) {
    LexScannerException e("description", output.begin() + 4);
    e.m_path = "path";
    e.m_lineNumber = 12;
    pieces.AdjustErrorPosition(e, output.View());
    EXPECT_EQ(e.m_pos, source.m_p1);
    EXPECT_EQ(Str(e.m_description), "description");
    EXPECT_EQ(Str(e.m_path), "path");
    EXPECT_EQ(e.m_lineNumber, 12);
}

TEST_F(AdjustErrorPosition, OfAnEmptyOutputLeavesEverything) {
    LexScannerException e("description", output.begin());
    OutputPieces().AdjustErrorPosition(e, SubString());
    EXPECT_EQ(e.m_pos, output.begin());
    OutputPieces().AdjustErrorPosition(e, SubString(output.begin(), output.begin()));
    EXPECT_EQ(e.m_pos, output.begin());
}

}  // namespace
}  // namespace vorn_test

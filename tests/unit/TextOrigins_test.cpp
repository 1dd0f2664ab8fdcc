// Output that was copied from a text which the expansion has put together is followed to the
// source. AddressSanitizer watches that no text is gone by then.
#include "qzMacroExpander/TextOrigins.h"

#include <gmock/gmock.h>

#include <memory>

#include "tests/support/Expand.h"

namespace vorn_test {
namespace {

using namespace vorn;
using testing::ElementsAre;

// Expands in a file scope that records origins.
class TracedSession {
public:
    TracedSession() { m_session.m_frame.m_textOrigins = &m_origins; }

    // The pieces of the output, followed, as Session::Pieces shows them. A ? would stand for a
    // source outside the texts. The sizes are checked on the way.
    std::vector<std::string> Expand(std::string_view text) {
        m_session.Expand(text);
        OutputPieces followed;
        for (const OutputPiece& piece : m_session.m_pieces.m_pieces) {
            const ssize_t before = followed.size();
            m_origins.Follow(piece, followed);
            EXPECT_EQ(followed.size() - before, piece.size());
        }
        m_session.m_pieces.swap(followed);
        return m_session.Pieces();
    }

    // The offset in the text of each copied or calculated piece behind the definitions.
    ssize_t SourceOffset(ssize_t pos) const { return m_session.SourceOffset(pos); }

    const std::string& Output() const { return m_session.m_output; }

private:
    TextOrigins m_origins;
    Session m_session;
};

TEST(TextOrigins, LeadFromAnItemOfALoopToTheListInTheSource) {
    TracedSession session;
    const std::string text = "@for(x in [one, two]) {x;}";
    EXPECT_THAT(session.Expand(text),
                ElementsAre("verbatim one", "verbatim ;", "verbatim two", "verbatim ;"));
    EXPECT_EQ(session.SourceOffset(0), static_cast<ssize_t>(text.find("one")));
    EXPECT_EQ(session.SourceOffset(4), static_cast<ssize_t>(text.find("two")));
}

TEST(TextOrigins, LeadThroughTheTupleOfALoop) {
    TracedSession session;
    EXPECT_THAT(session.Expand("@for((x, y) in [(a, b)]) {y x}"),
                ElementsAre("verbatim b", "verbatim  ", "verbatim a"));
}

TEST(TextOrigins, LeadToWhatAListWasCalculatedFrom) {
    TracedSession session;
    EXPECT_THAT(session.Expand("@let int n = 5\n@for(x in [a n b, @(\"q\")]) {x;}"),
                ElementsAre("verbatim a", "verbatim  ", "calculated n 1", "verbatim  b",
                            "verbatim ;", "calculated @ 1", "verbatim ;"));
}

TEST(TextOrigins, LeadFromAListInAMacroToItsBody) {
    TracedSession session;
    const std::string text = "@def list = [one, two]\n@for(x in list) {x}";
    EXPECT_THAT(session.Expand(text), ElementsAre("verbatim one", "verbatim two"));
    EXPECT_EQ(session.SourceOffset(3), static_cast<ssize_t>(text.find("two")));
}

TEST(TextOrigins, LeadThroughACallByAFunctionArgument) {
    TracedSession session;
    const std::string text = "@def twice(a) = a a\n@def f(g(), b) = g(b)\nf(twice, word)";
    EXPECT_THAT(session.Expand(text), ElementsAre("verbatim word", "verbatim  ", "verbatim word"));
    EXPECT_EQ(session.SourceOffset(0), static_cast<ssize_t>(text.find("word")));
}

// What the function argument is in its turn: the name in the text that was put together.
TEST(TextOrigins, LeadFromAValueInACallThatWasPutTogether) {
    TracedSession session;
    EXPECT_THAT(session.Expand("@let int n = 42\n@def id(a) = a\n@def f(g()) = g(n)\nf(id)"),
                ElementsAre("calculated n 2"));
}

TEST(TextOrigins, LeadThroughSeveralTextsThatWerePutTogether) {
    TracedSession session;
    const std::string text = "@def id(a) = a\n@def f(g(), b) = g(b)\n"
                             "@for(x in [abc, def]) {@for(y in [f(id, x)]) {f(id, y)}}";
    EXPECT_THAT(session.Expand(text), ElementsAre("verbatim abc", "verbatim def"));
    EXPECT_EQ(session.SourceOffset(0), static_cast<ssize_t>(text.find("abc")));
    EXPECT_EQ(session.SourceOffset(3), static_cast<ssize_t>(text.find("def]")));
}

TEST(TextOrigins, LeadToQuotedTextOfAMacroThatWasMadeFromIt) {
    TracedSession session;
    const std::string text = "@[@quote(@exportdef m = hello)]m";
    EXPECT_THAT(session.Expand(text), ElementsAre("verbatim hello"));
    EXPECT_EQ(session.SourceOffset(0), static_cast<ssize_t>(text.find("hello")));
}

TEST(TextOrigins, LeadToTheDirectiveThatWroteTheTextOfAMacro) {
    TracedSession session;
    EXPECT_THAT(session.Expand("@[@(\"@exportdef m = hello\")]m"), ElementsAre("calculated @ 5"));
}

TEST(TextOrigins, LeadToTheSourceOfAMacroThatWasMadeInASecondPass) {
    TracedSession session;
    const std::string text = "@def at = @quote(@)\n@[at exportdef m = hello]m";
    EXPECT_THAT(session.Expand(text), ElementsAre("verbatim hello"));
    EXPECT_EQ(session.SourceOffset(0), static_cast<ssize_t>(text.find("hello")));
}

// The blanks that a list gets by its layout are part of the text that is looped over.
TEST(TextOrigins, KeepIndentationWhatItIs) {
    TracedSession session;
    EXPECT_THAT(session.Expand("@def body =\n{\n    p\n    q\n}\n@for(x in [a body]) {x}"),
                ElementsAre("verbatim a", "verbatim  ", "verbatim p", "verbatim \n",
                            "indentation 3", "verbatim q"));
}

TEST(TextOrigins, LeaveOtherPiecesAsTheyAre) {
    const HeapText text("abc");
    const TextOrigins origins;
    OutputPieces followed;
    origins.Follow({text.View(), 0}, followed);
    origins.Follow({SubString(), 4}, followed);
    origins.Follow({text.View(), 7}, followed);
    ASSERT_EQ(followed.m_pieces.size(), 3);
    EXPECT_EQ(followed.m_pieces[0].in.m_p1, text.begin());
    EXPECT_EQ(followed.m_pieces[1].in.m_p1, nullptr);
    EXPECT_EQ(followed.m_pieces[1].out, 4);
    EXPECT_EQ(followed.m_pieces[2].out, 7);
}

// A piece that spans pieces of the text it was copied from falls into their parts.
TEST(TextOrigins, CutAPieceWhereItsOriginsMeet) {
    const HeapText source("abcdef");
    const auto kept = std::make_shared<xstring>("abXX  ef");
    const char* a = source.begin();
    OutputPieces pieces;
    pieces.push_back({SubString(a, a + 2), 0});
    pieces.push_back({SubString(a + 2, a + 4), 2});
    pieces.push_back({SubString(), 2});
    pieces.push_back({SubString(a + 4, a + 6), 0});
    TextOrigins origins;
    origins.Add(kept, pieces);

    OutputPieces followed;
    origins.Follow({SubString(kept->data() + 1, kept->data() + 7), 0}, followed);
    ASSERT_EQ(followed.m_pieces.size(), 4);
    EXPECT_EQ(Str(followed.m_pieces[0].in), "b");
    EXPECT_EQ(Str(followed.m_pieces[1].in), "cd");
    EXPECT_EQ(followed.m_pieces[1].out, 2);
    EXPECT_EQ(followed.m_pieces[2].in.m_p1, nullptr);
    EXPECT_EQ(followed.m_pieces[2].out, 2);
    EXPECT_EQ(Str(followed.m_pieces[3].in), "e");

    // What was calculated from it has the source of its first byte, cut to its own length.
    OutputPieces calculated;
    origins.Follow({SubString(kept->data() + 1, kept->data() + 7), 9}, calculated);
    origins.Follow({SubString(kept->data() + 3, kept->data() + 4), 9}, calculated);
    origins.Follow({SubString(kept->data() + 6, kept->data() + 7), 9}, calculated);
    ASSERT_EQ(calculated.m_pieces.size(), 3);
    EXPECT_EQ(Str(calculated.m_pieces[0].in), "b");
    EXPECT_EQ(Str(calculated.m_pieces[1].in), "cd");
    EXPECT_EQ(Str(calculated.m_pieces[2].in), "e");
    EXPECT_EQ(calculated.m_pieces[2].out, 9);
}

TEST(TextOrigins, AreNotKeptForAFrameWithoutThem) {
    Session session;
    session.Expand("@for(x in [one]) {x}");
    EXPECT_EQ(session.m_output, "one");
    EXPECT_THAT(session.Pieces(), ElementsAre("verbatim ?"));
}

}  // namespace
}  // namespace vorn_test

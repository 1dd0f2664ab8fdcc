#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/Faults.h"

namespace vorn_test {
namespace {

using namespace vorn;
using Texts = std::vector<std::string>;

class For : public testing::TestWithParam<Expansion> {};

TEST_P(For, Expands) {
    EXPECT_EQ(Expand(GetParam().text), GetParam().output);
}

// ---- the list ----------------------------------------------------------------------------------

INSTANTIATE_TEST_SUITE_P(RunsOnceForEachItem, For,
                         testing::Values(Expansion{"@for(x in [a,b]) {x;}", "a;b;"},
                                         Expansion{"@for(x in [a]) {<x>}", "<a>"},
                                         Expansion{"@for(x in []) {x}", ""},
                                         Expansion{"@for(x in [ ]) {x}", ""},
                                         Expansion{"@for(x in [a,]) {<x>}", "<a>"},
                                         Expansion{"@for(x in [,]) {<x>}", "<>"},
                                         Expansion{"@for(x in [,,]) {<x>}", "<><>"},
                                         Expansion{"@for(x in [a,,b]) {<x>}", "<a><><b>"},
                                         Expansion{"@for(x in [ /* c */ ]) {<x>}", ""},
                                         Expansion{"@for(x in [``]) {<x>}", ""},
                                         Expansion{"@for(x in [``,]) {<x>}", "<>"}));

INSTANTIATE_TEST_SUITE_P(
    CutsTheListAtItsCommas, For,
    testing::Values(Expansion{"@for(x in [ a , b c /* d */ ]) {<x>}", "<a><b c>"},
                    Expansion{"@for(x in [f(a,b)]) {<x>}", "<f(a,b)>"},
                    Expansion{"@for(x in [[1,2],{3,4}]) {<x>}", "<[1,2]><{3,4}>"},
                    Expansion{"@for(x in [\"a,b\", 'c,]']) {<x>}", "<\"a,b\"><'c,]'>"},
                    Expansion{"@for(x in [a /* , ] */ b]) {<x>}", "<a /* , ] */ b>"},
                    Expansion{"@for(x in [`a, b` , c]) {<x>}", "<a, b><c>"},
                    Expansion{"@for(x in [`[`]) {<x>}", "<[>"},
                    Expansion{"@for(x in\n[a,\n b\n]\n) {<x>}", "<a><b>"}));

INSTANTIATE_TEST_SUITE_P(
    ExpandsTheListFirst, For,
    testing::Values(Expansion{"@def l = [a, b]\n@for(x in l) {<x>}", "<a><b>"},
                    Expansion{"@def l = a, b\n@for(x in [l]) {<x>}", "<a><b>"},
                    Expansion{"@def l(a) = [a, a]\n@for(x in l(1)) {<x>}", "<1><1>"},
                    Expansion{"@for(x in @[@quote([a, b])]) {<x>}", "<a><b>"},
                    Expansion{"@for(x in @(\"[a, b]\")) {<x>}", "<a><b>"},
                    Expansion{"@for(x in [@for(y in [a,b]) {y y,}]) {<x>}", "<a a><b b>"},
                    // A comma that only comes with the expansion cuts too.
                    Expansion{"@def two = a, b\n@for(x in [(two), two]) {<x>}", "<(a, b)><a><b>"}));

INSTANTIATE_TEST_SUITE_P(DoesNotReadOnBehindTheList, For,
                         testing::Values(Expansion{"@for(x in [a,b] tail) {<x>}", "<a><b>"},
                                         Expansion{"@for(x in [a] ] , `) {<x>}", "<a>"},
                                         Expansion{"@for(x in []tail) {<x>}", ""}));

// ---- several names -----------------------------------------------------------------------------

INSTANTIATE_TEST_SUITE_P(
    BindsSeveralNames, For,
    testing::Values(Expansion{"@for((k,v) in [(a,1),(b,2)]) {k=v;}", "a=1;b=2;"},
                    Expansion{"@for((a) in [(1),(2)]) {<a>}", "<1><2>"},
                    Expansion{"@for((a,b,c) in [(1,,3)]) {<a><b><c>}", "<1><><3>"},
                    Expansion{"@for( ( a , b ) in [ ( 1 , 2 ) ]) {<a><b>}", "<1><2>"},
                    Expansion{"@for((a,b) in [(f(1,2), [3,4])]) {<a><b>}", "<f(1,2)><[3,4]>"},
                    Expansion{"@for((a,b) in [(`1,2`, \")\")]) {<a><b>}", "<1,2><\")\">"},
                    Expansion{"@for((a) in [()]) {<a>}", "<>"},
                    Expansion{"@for((a,b) in [(1,2),]) {<a b>}", "<1 2>"},
                    Expansion{"@for((a,b) in []) {<a b>}", ""},
                    Expansion{"@for((a,b) in [/* c */(1,2)]) {<a b>}", "<1 2>"},
                    Expansion{"@for((a,b) in [(1,2) tail, (3,4)3]) {<a b>}", "<1 2><3 4>"},
                    Expansion{"@for((a,b) in [`(1,2)`]) {<a b>}", "<1 2>"},
                    Expansion{"@for((a,a) in [(1,2)]) {<a>}", "<2>"}));

INSTANTIATE_TEST_SUITE_P(AcceptsOddNames, For,
                         testing::Values(Expansion{"@for(in in [a]) {<in>}", "<a>"},
                                         Expansion{"@for((in,for) in [(a,b)]) {<in for>}", "<a b>"},
                                         Expansion{"@for(int in [a]) {<int>}", "<a>"},
                                         Expansion{"@for(true in [a]) {<true>}", "<a>"},
                                         Expansion{"@ for /* a */ ( /* b */ x in [a]) {<x>}",
                                                   "<a>"}));

// ---- the block and where it lands --------------------------------------------------------------

INSTANTIATE_TEST_SUITE_P(ReadsTheThreeFormsOfABlock, For,
                         testing::Values(Expansion{"@for(x in [1,2]) x y\nz", "1 y2 y\nz"},
                                         Expansion{"@for(x in [1,2]) x\r\nz", "12\r\nz"},
                                         Expansion{"@for(x in [1,2]) {x }\nz", "1 2 \nz"},
                                         Expansion{"@for(x in [1,2]) {\n  x\n}\nz",
                                                   "  1\n  2\n\nz"},
                                         Expansion{"@for(x in [1,2])\n{\n  x\n}\nz", "12\nz"},
                                         Expansion{"@for(x in [1,2])\n{\n  x\n\n}\nz", "1\n2\n\nz"},
                                         Expansion{"@for(x in [1,2]) {}z", "z"},
                                         Expansion{"@for(x in [1,2])\n{\n}z", "z"}));

INSTANTIATE_TEST_SUITE_P(
    RebasesEachTurnToTheColumnOfTheFirst, For,
    testing::Values(
        Expansion{"ab: @for(x in [1,2]) {x\ny}z", "ab: 1\n    y2\n    yz"},
        Expansion{"ab: @for(x in [1,2]) {x\n}z", "ab: 1\n    2\nz"},
        Expansion{"ab: @for(x in [1,2])\n  {\n    x\n      y\n\n  }z",
                  "ab: 1\n      y\n    2\n      y\nz"},
        Expansion{"ab: @for(x in [1,2])\n  {\n    x\n      y\n  }z", "ab: 1\n      y2\n      yz"},
        Expansion{"  @for(x in [1,2]) {x\n}", "  1\n  2\n"},
        Expansion{"\t@for(x in [1,2])\n\t{\n\t\tx\n\n\t}", "\t1\n    2\n"},
        Expansion{"a @for(x in [[1,2],[3]]) {b @for(y in x) {y\n}}", "a b 1\n    2\n  b 3\n"}));

TEST(For, RebasesTurnsToTheIndentationOfItsTextAtALineStart) {
    EXPECT_EQ(Expand("@for(x in [1,2]) {x\n}z", 0, 3), "   1\n   2\n   z");
}

// The lines of an item keep the indentation that they have in the list.
TEST(For, PutsTheLinesOfAnItemAtTheColumnOfItsUse) {
    EXPECT_EQ(Expand("@for(x in [a +\n  b]) {y = x;}"), "y = a +\n      b;");
}

TEST(For, WritesNothingButItsTurns) {
    Session session;
    EXPECT_EQ(session.Expand("x @for(i in [1,23]) {<i\n} y"), "x <1\n  <23\n y");
    // The items lie in the expanded list, which is gone.
    EXPECT_EQ(session.Pieces(),
              (Texts{"verbatim x", "verbatim  ", "verbatim <", "verbatim ?", "verbatim \n",
                     "indentation 2", "verbatim <", "verbatim ?", "verbatim \n", "verbatim  y"}));
    EXPECT_EQ(session.Expand("@for(x in []) {a}"), "");
    EXPECT_EQ(session.Pieces(), Texts{});
}

// ---- when texts are expanded -------------------------------------------------------------------

TEST(For, ExpandsTheListOnceAndEachItemAtEachUse) {
    Session session;
    session.Expand("@let int n = 0\n@def count = @let n = n + 1\n");
    EXPECT_EQ(session.Expand("@for(x in [count a, b]) {<x>}n"), "<a><b>1");
    EXPECT_EQ(session.Expand("@for(x in [@quote(count)]) {}n"), "1");
    EXPECT_EQ(session.Expand("@for(x in [@quote(count)]) {<x x>}n"), "< >3");
}

TEST(For, DoesNotSeeInItsListWhatTheTurnsChange) {
    Session session;
    session.Expand("@let int n = 1\n");
    EXPECT_EQ(session.Expand("@for(x in [n, n, n]) {<x>@let n = n + 1}n"), "<1><1><1>4");
}

INSTANTIATE_TEST_SUITE_P(
    ExpandsItemsAmongTheNamesAroundIt, For,
    testing::Values(Expansion{"@for((a, b) in [(b, 1)]) {<a b>}", "<b 1>"},
                    Expansion{"@def b = outside\n@for((a, b) in [(@quote(b), 1)]) {<a b>}",
                              "<outside 1>"},
                    Expansion{"@for(x in [x]) {<x>}", "<x>"},
                    Expansion{"@def x = 1\n@for(x in [@quote(x)]) {<x>}x", "<1>1"},
                    // What the turn defines is none of them.
                    Expansion{"@def m = 1\n@for(x in [@quote(m)]) {@def m = 2\n<x m>}", "<1 2>"},
                    Expansion{"@for(r in [[1,2],[3]]) {@for(c in r) {c,}}", "1,2,3,"}));

// An item has no formal arguments: what follows it is not read. So the text of a call has to be
// put together first.
INSTANTIATE_TEST_SUITE_P(
    MakesNoCallsOfItems, For,
    testing::Values(Expansion{"@def f = 1\n@for(x in [@quote(f)]) {x(2)}", "1(2)"},
                    Expansion{"@def f(a) = <a>\n@for(x in [@quote(@quote(f))]) {@[x(2)]}", "<2>"}));

// ---- frames ------------------------------------------------------------------------------------

INSTANTIATE_TEST_SUITE_P(
    KeepsWhatATurnDefines, For,
    testing::Values(Expansion{"@for(x in [1,2]) {@def m = <x>\nm}m", "<1><2>m"},
                    Expansion{"@for(x in [1,2]) {@let int i = x\ni;}i", "1;2;i"},
                    Expansion{"@let int s = 0\n@for(x in [1,2,3]) {@let s = s + x\n}s", "6"},
                    Expansion{"@for(x in [1,2]) {@exportdef m = m x\n}x", "x"},
                    Expansion{"@for(x in [1,2]) {@exportdef n = <x>\n}n", "<x>"},
                    Expansion{"@for(x in [1,2]) {@for(y in [3]) {@exportdef m = 1\n}m}m", "11m"},
                    Expansion{"@for(x in [1,2]) {@for(y in [3]) {@def + m = 4\n}m}m", "444"},
                    Expansion{"@for(x in [1]) {x}x", "1x"},
                    Expansion{"@for((a) in [(1)]) {a}a", "1a"},
                    Expansion{"@nakeddef n(a) = <a>\n@for(x in [1,2]) {n(x)a}a", "<1>1<2>2a"},
                    Expansion{"@nakeddef n(a) = <a>\n@for(x in [@quote(n(1))]) {x a}a", "<1> aa"}));

INSTANTIATE_TEST_SUITE_P(
    KeepsWhatTheListDefines, For,
    testing::Values(Expansion{"@for(x in [@def m = 1\n m]) {<x m>}m", "<1 m>m"},
                    Expansion{"@for(x in [@exportdef m = 1\n m]) {<x m>}m", "<1 1>1"},
                    Expansion{"@for(x in [@def + m = 1\n a]) {<x m>}m", "<a 1>1"}));

TEST(For, LeavesWhatWasDoneBeforeASwallowedError) {
    Session session;
    session.Expand("@let int n = 0\n");
    EXPECT_EQ(session.Expand("@assertfails{@for(x in [1,2,true,4]) {@let n = x\n}}n"), "2");
    EXPECT_EQ(session.Expand("x"), "x");
}

// What an item defines lies in the expanded list, which has to live as long as the definition.
INSTANTIATE_TEST_SUITE_P(
    KeepsTheTextsOfDefinitions, For,
    testing::Values(
        Expansion{"@for(x in [@quote(@exportdef m = hello)]) {x}m", "hello"},
        Expansion{"@for(x in [@quote(@exportdef m = one), @quote(@exportdef n = two)]) {x}m n",
                  "one two"},
        Expansion{"@for(x in [@quote(@def + m(a) = <a>)]) {x}m(1)", "<1>"},
        Expansion{"@for((x, y) in [(@quote(@def + m = hello), @quote(@def + n = bye))]) {x y}m n",
                  " hello bye"},
        // A list in a list.
        Expansion{"@for(r in [[@quote(@quote(@def + m = hello))]]) {@for(x in r) {x}}m", "hello"},
        Expansion{"@def f(a) = <a>\n@for(x in [@quote(f(@def + m = hello))]) {x}m", "<>hello"},
        Expansion{"@for(x in [@quote(@if (true @def + m = hello\n) {})]) {x}m", "hello"},
        Expansion{"@for(x in [@quote(@for (y in [@def + m = hello\n]) {})]) {x}m", "hello"},
        Expansion{"@for(x in [@quote(@for (y in []) {} @def + m = hello)]) {x}m", "hello"},
        // Here the names of the formal arguments and of the variable lie in the list.
        Expansion{"@for(x in [@quote(@def + m(one, two) = two one)]) {x}m(1, 2)", "2 1"}));

TEST(For, KeepsTheTextOfADefinitionForAnErrorMessage) {
    Session session;
    session.Expand("@for(x in [@quote(@def + m(one, two) = one)]) {x}");
    ExpectFault(session, {"m(1^)", "Insufficient arguments provided for macro m(one,two)"});
}

// ---- what nested texts may not do --------------------------------------------------------------

TEST(For, HandsOnNoImportHandler) {
    MemoryFiles files;
    files.m_files["f"] = "@def m = 1";
    const std::pair<std::string_view, LexError> cases[] = {
        {"@for(x in [1]) {@import \"f\"}",
         {"@import statement not allowed here\n    in @for directive when x = 1", 17}    },
        {"@for(x in [1]) {@importpath \"f\"}",
         {"@importpath statement not allowed here\n    in @for directive when x = 1", 17}},
        {"@for(x in [@import \"f\"]) {}",      {"@import statement not allowed here", 12}},
    };
    for (const auto& [text, error] : cases) {
        Session session;
        session.m_importHandler = &files;
        EXPECT_EQ(session.ExpandError(text), error) << text;
    }
    Session session;
    session.m_importHandler = &files;
    EXPECT_EQ(session.Expand("@for(x in [@$X]) {@$X x}"), "@$X @$X");
}

// ---- errors ------------------------------------------------------------------------------------

class ForFault : public testing::TestWithParam<Fault> {};

TEST_P(ForFault, IsReported) {
    ExpectFault(GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    OfTheHead, ForFault,
    testing::Values(Fault{"@for ^x in [1] {x}", "( expected after @for when read x"},
                    Fault{"@for^", "( expected after @for when read EOS"},
                    Fault{"@for(^1 in [1]) {}", "Identifier expected after @for( when read 1"},
                    Fault{"@for(^", "Identifier expected after @for( when read EOS"},
                    Fault{"@for((^) in [()]) {}", "Identifier expected when read )"},
                    Fault{"@for((a,^) in [(1)]) {}", "Identifier expected when read )"},
                    Fault{"@for((a,^\"b\") in [(1)]) {}", "Identifier expected when read \"b\""},
                    Fault{"@for((a ^b) in [(1)]) {}", ", or ) expected when read b"},
                    Fault{"@for((a^", ", or ) expected when read EOS"},
                    Fault{"@for(x ^of [1]) {}", "'in' expected when read of"},
                    Fault{"@for(x ^[1]) {}", "'in' expected when read ["},
                    Fault{"@for(x ^\"in\" [1]) {}", "'in' expected when read \"in\""},
                    Fault{"@for((x)^", "'in' expected when read EOS"},
                    Fault{"@for(x in [1]^", "Met EOS while reading bracketted section"}));

INSTANTIATE_TEST_SUITE_P(OfTheExpansionOfTheList, ForFault,
                         testing::Values(Fault{"@for(x in [@fail^(\"x\")]) {}", "x"},
                                         Fault{"@def l(a) = [a]\n@for(x in l(1^, 2)) {}",
                                               "Too many arguments provided for macro l(a)"}));

// Whatever is wrong with the expanded list is reported behind the in.
INSTANTIATE_TEST_SUITE_P(
    OfTheList, ForFault,
    testing::Values(
        Fault{"@for(x in^ 1, 2) {}", "[ expected when read read 1"},
        Fault{"@for(x in^) {}", "[ expected when read read EOS"},
        Fault{"@def l = (1)\n@for(x in^ l) {}", "[ expected when read read ("},
        Fault{"@for(x in^ [1, 2) {x}",
              "Met EOS while reading argument 2\n    in @for directive for list [1, 2"},
        Fault{"@for(x in^ @(\"[1, (2]\")) {x}",
              "Met EOS while reading argument (2]\n    in @for directive for list [1, (2]"},
        Fault{"@for(x in^ [`a` b, c]) {x}", ", or ] expected when read b"},
        Fault{"@for(x in^ [`a`) {x}", ", or ] expected when read EOS"},
        Fault{"@for(x in^ [`a` `b`]) {x}", ", or ] expected when read `"}));

INSTANTIATE_TEST_SUITE_P(
    OfAnElement, ForFault,
    testing::Values(
        Fault{"@for((a,b) in^ [1]) {}", "( expected when read 1"},
        Fault{"@for((a,b) in^ [,]) {}", "( expected when read EOS"},
        Fault{"@for((a,b) in^ [(1)]) {}", ", expected when read )"},
        Fault{"@for((a,b) in^ [(1,2,3)]) {}", ") expected when read ,"},
        Fault{"@for((a) in^ [(1,2)]) {}", ") expected when read ,"},
        Fault{"@for((a) in^ [(`1` 2)]) {}", ") expected when read 2"},
        Fault{"@for((a,b) in^ [(`1` 2)]) {}", ", expected when read 2"},
        Fault{"@for((a,b) in^ @(\"[`(1`]\")) {}",
              "Met EOS while reading argument 1\n    in @for directive for list [`(1`]"},
        Fault{"@for((a,b) in^ @(\"[`(1,`]\")) {}",
              "Met EOS while reading argument \n    in @for directive for list [`(1,`]"}));

INSTANTIATE_TEST_SUITE_P(
    OfTheBlock, ForFault,
    testing::Values(Fault{"@for(x in [])^", "Expected { when read EOS\n    for @for directive"},
                    Fault{"@for(x in [])\n^a", "Expected { when read a\n    for @for directive"},
                    Fault{"@for(x in []) {^", "Met EOS before closing }\n    for @for directive"},
                    Fault{"@for(x in []) {a^",
                          "Met EOS while reading bracketted string\n    for @for directive"},
                    Fault{"@for(x in [])\n{\na^",
                          "Met EOS before closing }\n    for @for directive"}));

// The list is expanded in front of all that, and the block is read in front of the list.
INSTANTIATE_TEST_SUITE_P(
    InThisOrder, ForFault,
    testing::Values(Fault{"@for(x in @fail^(\"list\")) {", "list"},
                    Fault{"@for(x in 1) {^", "Met EOS before closing }\n    for @for directive"},
                    Fault{"@for(x in^ 1) {@fail(\"turn\")}", "[ expected when read read 1"}));

INSTANTIATE_TEST_SUITE_P(
    OfATurn, ForFault,
    testing::Values(
        Fault{"@for(x in [1,2]) {@if (x == 2) {@fail^(\"a\")}}",
              "a\n    in @for directive when x = 2"},
        Fault{"@for(x in [f( 1 )]) {@fail^(\"a\")}", "a\n    in @for directive when x = f( 1 )"},
        Fault{"@for(x in [,]) {@fail^(\"a\")}", "a\n    in @for directive when x = "},
        // With several names, none is shown, and the item has been read up.
        Fault{"@for((a,b) in [(1,2)]) {@fail^(\"a\")}", "a\n    in @for directive when  = "},
        Fault{"@for((a,b) in [(1,2) tail]) {@fail^(\"a\")}",
              "a\n    in @for directive when  =  tail"},
        Fault{"@for(x in [[1],[2]]) {@for(y in x) {@assert^(y == 1)}}",
              "Assertion failure\n        @assert(y == 1)\nie      @assert(2 == 1)\n"
              "    in @for directive when y = 2\n    in @for directive when x = [2]"},
        Fault{"@def m(l) = @for(x in l) {@fail^(\"a\")}\nm([1])",
              "a\n    in @for directive when x = 1\n    invoking macro m(l) with l=[1]"},
        Fault{
            "@def f(a) = a\n@for(x in [@quote(f)]) {x(1)}",
            "( expected to begin argument list for macro f(a) when read EOS\n    invoking macro x\n"
            "    in @for directive when x = f"},
        // An error in the text of an item lies in the list, which is gone.
        Fault{"@for(x in [@quote(@fail(\"a\"))]) {x}",
              "a\n    invoking macro x\n    in @for directive when x = @fail(\"a\")"}));

TEST(ForFault, LeavesWhatEarlierTurnsWrote) {
    Session session;
    ExpectFault(session, {"a @for(x in [1,2,true]) {<x>@if (x == 2) {b@fail^(\"c\")}}",
                          "c\n    in @for directive when x = 2"});
    EXPECT_EQ(session.m_output, "a <1><2>b");
}

TEST(ForFault, OfAnElementComesBehindTheTurnBeforeIt) {
    Session session;
    ExpectFault(session, {"@for(x in^ [`a` b]) {<x>}", ", or ] expected when read b"});
    EXPECT_EQ(session.m_output, "<a>");
    ExpectFault(session, {"@for((x,y) in^ [(1,2),(3)]) {<x>}", ", expected when read )"});
    EXPECT_EQ(session.m_output, "<1>");
    ExpectFault(session, {"@for(x in^ [1,2) {<x>}", "Met EOS while reading argument 2\n"
                                                    "    in @for directive for list [1,2"});
    EXPECT_EQ(session.m_output, "<1>");
}

}  // namespace
}  // namespace vorn_test

// Definitions made while a temporary text is expanded outlive that text: they keep it alive. What
// is read here after such a text would have ended, AddressSanitizer watches.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>

#include "qzMacroExpander/src/MacroExpander.h"
#include "tests/support/Expand.h"

namespace vorn_test {
namespace {

using namespace vorn;

// Expands the parts in one file scope, one call each, and joins their outputs with bars. Every
// name and body that the file's frame holds is read at the end.
std::string ExpandParts(std::initializer_list<std::string_view> parts) {
    Session session;
    std::string outputs;
    for (const std::string_view part : parts)
        outputs += session.Expand(part) + '|';
    outputs.pop_back();
    StringStream os(4096);
    session.m_frame.WriteToStream(os);
    EXPECT_NE(os.GetString().size(), 0);
    return outputs;
}

// ---- the text that is put together for a function argument --------------------------------------

TEST(FunctionArgumentText, LivesForTheArgumentsOfANakedMacro) {
    EXPECT_EQ(Expand("@nakeddef n(a) = a\n@def f(g()) = g(1)\nf(n) a"), "1 1");
    EXPECT_EQ(ExpandParts({"@nakeddef n(a) = a\n@def f(g()) = g(1)\nf(n)", "a"}), "1|1");
}

TEST(FunctionArgumentText, LivesForWhatAnArgumentExports) {
    EXPECT_EQ(ExpandParts(
                  {"@def h(a) = a\n@def f(g()) = g(@quote(@exportdef m = hello))\n", "f(h)m", "m"}),
              "|hello|hello");
}

TEST(FunctionArgumentText, LivesForWhatAnArgumentPutsIntoTheFilesFrame) {
    EXPECT_EQ(ExpandParts({"@def h(a) = { @scope { @scope { a } } }\n"
                           "@def f(g()) = g(@quote(@def + m(x) = <x>))\n",
                           "f(h)", "m(1)"}),
              "|      |<1>");
}

TEST(FunctionArgumentText, LivesForAMacroWithFormalArgumentsAndATypedOne) {
    EXPECT_EQ(
        ExpandParts({"@def h(a) = a\n@def f(g()) = g(@quote(@def + int m(int x, y()) = { y(x) "
                     "+ 1 }))\n@def k(z) = 10 * z\n",
                     "f(h)", "m(2, k)"}),
        "||21");
}

TEST(FunctionArgumentText, LivesForANakedMacroDefinedInIt) {
    EXPECT_EQ(
        ExpandParts({"@def h(a) = a\n@def f(g()) = g(@quote(@nakeddef + n(x, int y) = x/y))\n",
                     "f(h)", "n(p, 1 + 1)", "x y"}),
        "||p/2|p 2");
}

TEST(FunctionArgumentText, LivesWhereOneStandsInAnother) {
    EXPECT_EQ(ExpandParts({"@nakeddef n(a) = a\n"
                           "@def f(g()) = g(g(x))\n"
                           "@def k(g(), x) = f(g)\n",
                           "k(n, y)", "a"}),
              "|y|y");
    EXPECT_EQ(
        ExpandParts({"@nakeddef n(a) = a\n@def f(g()) = k(g)\n@def k(g()) = g(1)\n", "f(n)", "a"}),
        "|1|1");
}

TEST(FunctionArgumentText, LivesThroughARowOfCalls) {
    EXPECT_EQ(ExpandParts({"@nakeddef n(a) = a\n@def f(g(), x) = g(x)\n",
                           "f(n,1) f(n,2) f(n,a) f(n,`f(n,3)`) a"}),
              "|1 2 2 3 3");
}

TEST(FunctionArgumentText, LivesForATypedArgumentThatDefines) {
    EXPECT_EQ(ExpandParts({"@def h(int a) = a\n"
                           "@def f(g()) = g(@quote(@def + m = { bye } 1))\n",
                           "f(h) m", "m"}),
              "|1  bye | bye ");
}

TEST(FunctionArgumentText, LivesForWhatItsBeginningDefines) {
    // The text runs in the caller's frame itself, and so do statements in front of the name.
    EXPECT_EQ(ExpandParts({"@def h(a) = a\n@def f(g()) = g(1)\n",
                           "f(@let int value = { 5 } @def k(x) = { <x> } h)", "value k(2)"}),
              "|1|5  <2> ");
    EXPECT_EQ(ExpandParts({"@def h(a) = a\n@def f(g()) = g(1)\n",
                           "@scope { f(@let int value = { 5 } h) value }"}),
              "| 1 5 ");
}

TEST(FunctionArgumentText, IsWrittenBeforeItEnds) {
    Session session;
    EXPECT_EQ(session.Expand("@def h(a) = a a\n@def f(g()) = x g(1 y  z) w\nf(h);"),
              "x 1 y  z 1 y  z w;");
    EXPECT_EQ(session.ExpandError("@def e(g()) = g(u v @else)\ne(nosuch)").description,
              "@else with no matching @if directive\n    invoking macro e(g) with g=nosuch");
    EXPECT_EQ(session.ExpandError("@def e(g()) = g(u v @quote(@else))\ne(nosuch)").description,
              "@else with no matching @if directive\n"
              "    invoking macro g\n"
              "    invoking macro e(g) with g=nosuch");
    EXPECT_EQ(session.m_output, "nosuch(u v");
}

// ---- the second pass of @[ ] --------------------------------------------------------------------

TEST(SecondPass, TextLivesForWhatItExports) {
    EXPECT_EQ(Expand("@[@quote(@exportdef m = hello)]m"), "hello");
    EXPECT_EQ(ExpandParts({"@[@quote(@exportdef m = hello)]", "m"}), "|hello");
}

TEST(SecondPass, TextLivesForWhatGoesToTheFilesFrame) {
    EXPECT_EQ(ExpandParts({"@scope { @[@quote(@def + m(a, g()) = a@@g(a))] }", "@def h(x) = <x>\n",
                           "m(1,h)"}),
              "  ||1<1>");
}

TEST(SecondPass, TextLivesForANakedMacroAndItsArguments) {
    EXPECT_EQ(ExpandParts({"@[@quote(@exportdef d = 0 @@)]",
                           "@[@quote(@nakeddef + n(a, int b) = <a b>)]", "n(x, 2 + 3)", "a b"}),
              "||<x 5>|x 5");
}

TEST(SecondPass, TextLivesForTheArgumentsOfACallInIt) {
    EXPECT_EQ(ExpandParts({"@nakeddef n(a) = @exportdef k = a\n", "@[@quote(n(text) k)] k"}),
              "| text a");
}

TEST(SecondPass, TextLivesForAValueDeclaredInIt) {
    // The name of the value lies in the body, which lies in the text of the second pass.
    EXPECT_EQ(ExpandParts({"@[@quote(@nakeddef + n = { @let int value = 5 })]", "n", "value"}),
              "||5");
}

TEST(SecondPass, InASecondPass) {
    EXPECT_EQ(ExpandParts({"@[@quote(@[@quote(@def + m = deep)])]", "m"}), "|deep");
    EXPECT_EQ(ExpandParts({"@[@quote(@def + k = @[@quote(@def + m = { k2 })])]", "k", "m"}),
              "|| k2 ");
}

TEST(SecondPass, IsWrittenBeforeItEnds) {
    EXPECT_EQ(Expand("@def m = 1\na @[x @quote(m  y)] b"), "a x 1  y b");
}

TEST(SecondPass, MayFailBehindADefinition) {
    Session session;
    EXPECT_EQ(session.ExpandError("@[@quote(@exportdef m = { hello } @else)]"),
              (LexError{"@else with no matching @if directive\n"
                        "    in @[@exportdef m = { hello } @else]",
                        0}));
    EXPECT_EQ(session.Expand("m"), " hello ");
}

// ---- the list of @for ---------------------------------------------------------------------------

TEST(ForList, LivesForWhatAnItemExports) {
    EXPECT_EQ(ExpandParts({"@for (x in [@quote(@def + m = { one }), @quote(@def + k = { two })]) "
                           "{ x }",
                           "m k"}),
              "    | one   two ");
}

TEST(ForList, LivesForWhatAMemberOfATupleDefines) {
    EXPECT_EQ(
        ExpandParts({"@for ((x, y) in [(1, @quote(@def + m(a) = { <a> }))]) { x y }", "m(2)"}),
        " 1  | <2> ");
}

TEST(ForList, LivesForTheArgumentsOfANakedMacro) {
    EXPECT_EQ(ExpandParts({"@nakeddef n(a) = @def + k = <a>\n",
                           "@for (x in [@quote(n(1)), @quote(n(2))]) { x@@k@@a }", "k"}),
              "| <a>a  <a>a |<a>");
}

TEST(ForList, LivesForACallByWayOfAFunctionArgument) {
    EXPECT_EQ(ExpandParts({"@def f(g()) = g(@quote(@def + m = { item }))\n@def h(a) = a\n",
                           "@for (x in [@quote(f(h))]) { x@@m }", "m"}),
              "|  item  | item ");
    EXPECT_EQ(ExpandParts({"@def f(g()) = g(@quote(@def + m = { item }))\n@def h(a) = a\n",
                           "@for (x in [f(h) 1]) { x@@m }", "m"}),
              "| 1 item  | item ");
}

TEST(ForList, MayFailBehindADefinition) {
    Session session;
    EXPECT_EQ(
        session.ExpandError("@for (x in [@quote(@def + m = { hello } @else)]) { x }").description,
        "@else with no matching @if directive\n"
        "    invoking macro x\n"
        "    in @for directive when x = @def + m = { hello } @else");
    EXPECT_EQ(session.Expand("m"), " hello ");
}

// ---- texts within a temporary text --------------------------------------------------------------

// Every text that is expanded within a temporary one and may define something.
TEST(TextWithinATemporaryText, KeepsItForWhatItDefines) {
    const std::string_view texts[] = {
        "DEF",
        "@scope { DEF }",
        "@scope { @scope { DEF } }",
        "@if (true) { DEF }",
        "@if (false) {} @else { DEF }",
        "@if (DEF true) {}",
        "@if (false) {} @elseif (DEF true) {}",
        "@for (x in [1]) { DEF }",
        "@for (x in [DEF 1]) {}",
        "@for (x in [@quote(DEF)]) { x }",
        "@let bool go = { true } @while (go) { DEF @let go = { false } }",
        "@while (DEF false) {}",
        "@str(DEF)",
        "@strxW(DEF)",
        "@unstr(DEF \"x\")",
        "@print(DEF)",
        "@assert(DEF true)",
        "@assertfails(DEF @else)",
        "@relativepath(DEF \"a\", \"b\")",
        "@[DEF]",
        "@[@quote(DEF)]",
        "@[@[DEF]]",
        "@(DEF \"x\")",
        "@let string s = { DEF \"x\" }",
        "@let string s := { DEF }",
        "@let int i = { 1 } @let i = { DEF 2 }",
        "@let string s = { \"\" } @let s := { DEF }",
        "@def p = { DEF } p",
        "@def p(a) = { a } p(DEF)",
        "@def p(a) = { q(a) } @def q(a) = { a } p(DEF)",
        "@def p(int a) = { a } p(DEF 1)",
        "@def int p = { DEF 1 } p",
        "@def int p(int a) = { a } p(p(DEF 1))",
        "@def p(a) = { a } @def q(g()) = { g(DEF) } q(p)",
        "@def p(a) = { a } @def q(g()) = { g(@quote(DEF)) } q(p)",
        "@nakeddef p(a) = { a } p(DEF)",
        "@nakeddef p = { DEF } p",
    };
    for (const std::string_view text : texts) {
        std::string site(text);
        site.replace(site.find("DEF"), 3, "@def + m(a) = { kept a }");
        Session session;
        session.Expand("@[@quote(" + site + ")]");
        EXPECT_EQ(session.Expand("m(1)"), " kept 1 ") << text;
    }
}

TEST(TextWithinATemporaryText, KeepsItForWhatThePythonOfAMacroDefines) {
    // The expression is expanded before anybody asks for Python.
    ForbidPython();
    Session session;
    EXPECT_EQ(session.ExpandError("@[@quote(@defpython p = { @def + m = { kept } 1 } p)]"),
              (LexError{"Python initialisation error: forbidden by the host\n"
                        "    invoking python macro p\n"
                        "    in @[@defpython p = { @def + m = { kept } 1 } p]",
                        0}));
    EXPECT_EQ(session.Expand("m"), " kept ");
}

// ---- definitions of definitions -----------------------------------------------------------------

TEST(DefinitionFromATemporaryText, MayDefineFurtherMacrosWhenItsFrameIsGone) {
    // m dies with the scope, and k, which was read from m's body, stays.
    EXPECT_EQ(
        ExpandParts({"@scope { @[@quote(@exportdef m = { @def + k(a) = { bye a } })] m }", "k(1)"}),
        "   | bye 1 ");
}

TEST(DefinitionFromATemporaryText, MayBeSeveralStepsAway) {
    Session session;
    session.Expand("@scope {\n@[@quote(@exportdef a = { @exportdef b = { @def + c = { end } } })]\n"
                   "a\n@scope {\nb\n}\n}\n");
    EXPECT_EQ(session.Expand("a@@b@@c"), "ab end ");
}

TEST(DefinitionFromATemporaryText, MayBeHidden) {
    // The entry of a name that is defined again keeps the older definition's view of the name.
    EXPECT_EQ(ExpandParts({"@[@quote(@def + m = { old })]", "@[@quote(@def + m = { new })]", "m",
                           "@def other = 1\n", "m other"}),
              "|| new || new  1");
}

TEST(DefinitionFromATemporaryText, MayStandInALongFrame) {
    Session session;
    std::string names;
    for (int i = 0; i < 30; ++i) {
        const std::string name = "m" + std::to_string(i);
        session.Expand("@[@quote(@def + " + name + "(a) = { <a " + name + "x> })]");
        names += name + "(" + std::to_string(i) + ")";
    }
    std::string expected;
    for (int i = 0; i < 30; ++i)
        expected += " <" + std::to_string(i) + " m" + std::to_string(i) + "x> ";
    EXPECT_EQ(session.Expand(names), expected);
}

TEST(DefinitionFromATemporaryText, OfATypedMacroIsEvaluatedFromIt) {
    EXPECT_EQ(ExpandParts({"@[@quote(@def + int m(int a) = { @def + k = { kept } a * 2 })]",
                           "m(21) k", "k"}),
              "|42  kept | kept ");
}

TEST(DefinitionFromATemporaryText, FreesItWithTheFrame) {
    // LeakSanitizer would report what is left.
    auto session = std::make_unique<Session>();
    session->Expand("@[@quote(@def + m(a) = { <a> })]");
    const LSVariable* m = session->m_frame.Find2("m");
    ASSERT_NE(m, nullptr);
    ASSERT_NE(m->m_keptText, nullptr);
    const std::weak_ptr<const xstring> text = m->m_keptText;
    EXPECT_FALSE(text.expired());
    session.reset();
    EXPECT_TRUE(text.expired());
}

TEST(DefinitionFromATemporaryText, SharesIt) {
    Session session;
    session.Expand("@[@quote(@def + m = { 1 } @def + k = { 2 })]");
    const LSVariable* m = session.m_frame.Find2("m");
    const LSVariable* k = session.m_frame.Find2("k");
    ASSERT_NE(m, nullptr);
    ASSERT_NE(k, nullptr);
    EXPECT_NE(m->m_keptText, nullptr);
    EXPECT_EQ(m->m_keptText, k->m_keptText);
    EXPECT_EQ(m->m_keptText.use_count(), 2) << "nothing else keeps it";
}

TEST(DefinitionFromATextOfTheHosts, KeepsNothing) {
    Session session;
    session.Expand("@def f(g()) = g(1)\n@nakeddef n(a) = a\n@scope {\n@exportdef m = 1\n}\nn(x)");
    for (const char* name : {"f", "n", "m", "a"}) {
        const LSVariable* var = session.m_frame.Find2(name);
        ASSERT_NE(var, nullptr) << name;
        EXPECT_EQ(var->m_keptText, nullptr) << name;
    }
}

}  // namespace
}  // namespace vorn_test

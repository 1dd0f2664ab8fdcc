// The frames of LSVariable.cpp: look-up, imports, ambiguity, dollar macros.
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "qzMacroExpander/LSToken.h"
#include "qzMacroExpander/LSVariable.h"
#include "tests/support/Variables.h"

namespace vorn_test {
namespace {

using namespace vorn;

// ---- frames ------------------------------------------------------------------------------------

TEST(VarFrame, HandsTheFileScopeDown) {
    FileScopeVarFrame file;
    VarFrame child(&file);
    VarFrame grandchild(&child);
    EXPECT_EQ(file.GetParent(), nullptr);
    EXPECT_EQ(file.GetFileScopeVarFrame(), &file);
    EXPECT_EQ(child.GetParent(), &file);
    EXPECT_EQ(child.GetFileScopeVarFrame(), &file);
    EXPECT_EQ(grandchild.GetParent(), &child);
    EXPECT_EQ(grandchild.GetFileScopeVarFrame(), &file);
}

TEST(VarFrame, WithoutAFileHasNoFileScope) {
    VarFrame root(nullptr);
    VarFrame child(&root);
    EXPECT_EQ(root.GetParent(), nullptr);
    EXPECT_EQ(root.GetFileScopeVarFrame(), nullptr);
    EXPECT_EQ(child.GetFileScopeVarFrame(), nullptr);
    EXPECT_TRUE(root.m_setOfFrames.empty());
    EXPECT_TRUE(root.m_setOfDirectFrames.empty());
    EXPECT_EQ(root.m_localVariables.m_first, nullptr);
}

TEST(VarFrame, OwnsItsVariablesAndNoFrame) {
    std::vector<std::string> ends;
    VarFrame parent(nullptr);
    VarFrame imported(nullptr);
    parent.AddVariable(new Mortal("parent", ends));
    imported.AddVariable(new Mortal("imported", ends));
    {
        VarFrame frame(&parent);
        frame.ImportFrame(&imported);
        frame.AddVariable(new Mortal("local", ends));
    }
    EXPECT_EQ(ends, std::vector<std::string>{"local"});
}

TEST(VarFrame, FindsTheInnermostDefinition) {
    VarFrame outer(nullptr);
    VarFrame inner(&outer);
    LSVariable* outerA = Define(outer, "a");
    LSVariable* outerB = Define(outer, "b");
    LSVariable* innerA = Define(inner, "a");
    EXPECT_EQ(inner.Find("a", nullptr), innerA);
    EXPECT_EQ(inner.Find("b", nullptr), outerB);
    EXPECT_EQ(inner.Find("c", nullptr), nullptr);
    EXPECT_EQ(outer.Find("a", nullptr), outerA);
    EXPECT_EQ(inner.Find2("a"), innerA);
    EXPECT_EQ(inner.Find2("b"), outerB);
    EXPECT_EQ(inner.Find2("c"), nullptr);
}

TEST(VarFrame, FindLocalLeavesTheParentsOut) {
    VarFrame outer(nullptr);
    VarFrame inner(&outer);
    Define(outer, "a");
    LSVariable* innerB = Define(inner, "b");
    EXPECT_EQ(inner.FindLocal("a", nullptr), nullptr);
    EXPECT_EQ(inner.FindLocal("b", nullptr), innerB);
}

TEST(VarFrame, ALocalNameHidesAnImportedOne) {
    VarFrame imported(nullptr);
    VarFrame frame(nullptr);
    frame.ImportFrame(&imported);
    LSVariable* importedA = Define(imported, "a");
    EXPECT_EQ(frame.Find("a", nullptr), importedA);
    LSVariable* localA = Define(frame, "a");
    EXPECT_EQ(frame.Find("a", nullptr), localA);
}

TEST(VarFrame, AnImportOfAnInnerFrameHidesWhatIsFurtherOut) {
    VarFrame imported(nullptr);
    VarFrame outer(nullptr);
    VarFrame inner(&outer);
    inner.ImportFrame(&imported);
    LSVariable* outerA = Define(outer, "a");
    LSVariable* importedA = Define(imported, "a");
    EXPECT_EQ(inner.Find("a", nullptr), importedA);
    EXPECT_EQ(outer.Find("a", nullptr), outerA);
}

TEST(VarFrame, AnImportOfAParentIsFoundFromInside) {
    VarFrame imported(nullptr);
    VarFrame outer(nullptr);
    VarFrame inner(&outer);
    outer.ImportFrame(&imported);
    LSVariable* importedA = Define(imported, "a");
    EXPECT_EQ(inner.Find("a", nullptr), importedA);
    EXPECT_EQ(inner.FindLocal("a", nullptr), nullptr);
}

TEST(VarFrame, TheParentsOfAnImportAreSearchedToo) {
    VarFrame outer(nullptr);
    VarFrame imported(&outer);
    VarFrame frame(nullptr);
    frame.ImportFrame(&imported);
    LSVariable* outerA = Define(outer, "a");
    EXPECT_EQ(frame.FindLocal("a", nullptr), outerA);
}

TEST(VarFrame, Find2LooksAtNoImports) {
    VarFrame imported(nullptr);
    VarFrame frame(nullptr);
    frame.ImportFrame(&imported);
    Define(imported, "a");
    EXPECT_EQ(frame.Find2("a"), nullptr);
}

// ---- ambiguity ---------------------------------------------------------------------------------

// A frame that imports two frames, both of which define a.
class TwoImports : public testing::Test {
protected:
    VarFrame f{nullptr};
    VarFrame g{nullptr};
    VarFrame h{nullptr};
    LSVariable* fa = Define(f, "a");
    LSVariable* ga = Define(g, "a");

    TwoImports() {
        h.ImportFrame(&f);
        h.ImportFrame(&g);
    }
};

TEST_F(TwoImports, AUseIsAmbiguousAtThePositionGiven) {
    const xchar* text = "text";
    const LexError ambiguous{"Ambiguous macro name : a", 2};
    EXPECT_EQ(LexErrorOf(text, [&] { h.Find("a", text + 2); }), ambiguous);
    EXPECT_EQ(LexErrorOf(text, [&] { h.FindLocal("a", text + 2); }), ambiguous);
    EXPECT_EQ(LexErrorOf(text, [&] { h.FindInDirectImports("a", text + 2); }), ambiguous);
}

TEST_F(TwoImports, TheErrorHasNeitherPathNorLine) {
    try {
        h.Find("a", nullptr);
        FAIL() << "no error";
    } catch (const LexScannerException& e) {
        EXPECT_TRUE(e.m_path.empty());
        EXPECT_EQ(e.m_lineNumber, -1);
        EXPECT_EQ(e.m_pos, nullptr);
    }
}

TEST_F(TwoImports, AnotherNameIsNoError) {
    LSVariable* gb = Define(g, "b");
    EXPECT_EQ(h.Find("b", nullptr), gb);
    EXPECT_EQ(h.Find("c", nullptr), nullptr);
}

TEST_F(TwoImports, ALocalDefinitionSettlesTheMatter) {
    LSVariable* ha = Define(h, "a");
    EXPECT_EQ(h.Find("a", nullptr), ha);
}

TEST_F(TwoImports, ADefinitionFurtherInSettlesTheMatter) {
    VarFrame inner(&h);
    LSVariable* innerA = Define(inner, "a");
    EXPECT_EQ(inner.Find("a", nullptr), innerA);
}

TEST_F(TwoImports, ADefinitionFurtherOutDoesNot) {
    VarFrame outer(nullptr);
    VarFrame inner(&outer);
    Define(outer, "a");
    inner.ImportFrame(&f);
    inner.ImportFrame(&g);
    EXPECT_EQ(LexErrorOf(nullptr, [&] { inner.Find("a", nullptr); }),
              (LexError{"Ambiguous macro name : a", 0}));
}

TEST_F(TwoImports, Find2NeverRaisesAnError) {
    EXPECT_EQ(h.Find2("a"), nullptr);
    EXPECT_EQ(f.Find2("a"), fa);
    EXPECT_EQ(g.Find2("a"), ga);
}

TEST(Ambiguity, WhatADirectImportDefinesOutranksWhatItImports) {
    VarFrame f(nullptr);
    VarFrame g(nullptr);
    VarFrame h(nullptr);
    g.ImportFrame(&f);
    h.ImportFrame(&g);
    Define(f, "a");
    LSVariable* ga = Define(g, "a");
    ASSERT_EQ(h.m_setOfFrames, (std::set<VarFrame*>{&f, &g}));
    EXPECT_EQ(h.Find("a", nullptr), ga);
}

TEST(Ambiguity, OneVariableOnTwoPathsIsNoConflict) {
    VarFrame f(nullptr);
    VarFrame g1(nullptr);
    VarFrame g2(nullptr);
    VarFrame h(nullptr);
    g1.ImportFrame(&f);
    g2.ImportFrame(&f);
    h.ImportFrame(&g1);
    h.ImportFrame(&g2);
    LSVariable* fa = Define(f, "a");
    EXPECT_EQ(h.Find("a", nullptr), fa);
    EXPECT_EQ(h.FindInDirectImports("a", nullptr), fa);
}

TEST(Ambiguity, OneVariableOfACommonParentIsNoConflict) {
    VarFrame common(nullptr);
    VarFrame f(&common);
    VarFrame g(&common);
    VarFrame h(nullptr);
    h.ImportFrame(&f);
    h.ImportFrame(&g);
    LSVariable* commonA = Define(common, "a");
    EXPECT_EQ(h.Find("a", nullptr), commonA);
}

TEST(Ambiguity, TheDirectImportsLookAtNoParentsOfTheirs) {
    VarFrame outer(nullptr);
    VarFrame f(&outer);
    VarFrame g(nullptr);
    VarFrame h(nullptr);
    h.ImportFrame(&f);
    h.ImportFrame(&g);
    Define(outer, "a");
    LSVariable* ga = Define(g, "a");
    EXPECT_EQ(h.Find("a", nullptr), ga);
}

TEST(Ambiguity, MayBeLeftUnansweredByTheDirectImports) {
    VarFrame outer1(nullptr);
    VarFrame outer2(nullptr);
    VarFrame f(&outer1);
    VarFrame g(&outer2);
    VarFrame h(nullptr);
    h.ImportFrame(&f);
    h.ImportFrame(&g);
    Define(outer1, "a");
    Define(outer2, "a");
    EXPECT_EQ(h.Find("a", nullptr), nullptr);
}

TEST(Ambiguity, OfAnImportItselfPasses) {
    VarFrame e(nullptr);
    VarFrame f(nullptr);
    VarFrame g(nullptr);
    VarFrame h(nullptr);
    g.ImportFrame(&e);
    g.ImportFrame(&f);
    h.ImportFrame(&g);
    Define(e, "a");
    Define(f, "a");
    const xchar* text = "text";
    EXPECT_EQ(LexErrorOf(text, [&] { h.Find("a", text + 1); }),
              (LexError{"Ambiguous macro name : a", 1}));
}

// ---- imports -----------------------------------------------------------------------------------

TEST(ImportFrame, TakesInWhatTheImportHasImported) {
    VarFrame f(nullptr);
    VarFrame g(nullptr);
    VarFrame h(nullptr);
    g.ImportFrame(&f);
    h.ImportFrame(&g);
    EXPECT_EQ(h.m_setOfFrames, (std::set<VarFrame*>{&f, &g}));
    EXPECT_EQ(h.m_setOfDirectFrames, std::set<VarFrame*>{&g});
    LSVariable* fa = Define(f, "a");
    EXPECT_EQ(h.Find("a", nullptr), fa);
}

TEST(ImportFrame, DoesNotLearnOfLaterImports) {
    VarFrame f(nullptr);
    VarFrame g(nullptr);
    VarFrame h(nullptr);
    h.ImportFrame(&g);
    g.ImportFrame(&f);
    Define(f, "a");
    EXPECT_EQ(h.m_setOfFrames, std::set<VarFrame*>{&g});
    EXPECT_EQ(h.Find("a", nullptr), nullptr);
}

TEST(ImportFrame, TheTieBreakReachesLaterImports) {
    VarFrame outer1(nullptr);
    VarFrame outer2(nullptr);
    VarFrame e(&outer1);
    VarFrame g(&outer2);
    VarFrame f(nullptr);
    VarFrame h(nullptr);
    h.ImportFrame(&e);
    h.ImportFrame(&g);
    g.ImportFrame(&f);  // after h has imported g
    Define(outer1, "a");
    Define(outer2, "a");
    LSVariable* fa = Define(f, "a");
    EXPECT_EQ(h.Find("a", nullptr), fa);
}

TEST(ImportFrame, OfAFrameKnownByWayOfAnotherMakesItDirectOnly) {
    VarFrame e(nullptr);
    VarFrame f(nullptr);
    VarFrame g(nullptr);
    VarFrame h(nullptr);
    g.ImportFrame(&f);
    h.ImportFrame(&g);
    f.ImportFrame(&e);
    h.ImportFrame(&f);
    EXPECT_EQ(h.m_setOfFrames, (std::set<VarFrame*>{&f, &g}));
    EXPECT_EQ(h.m_setOfDirectFrames, (std::set<VarFrame*>{&f, &g}));
}

TEST(AddImport, OfOneFrameTwiceIsListedTwice) {
    FileScopeVarFrame f;
    FileScopeVarFrame h;
    h.AddImport(&f);
    h.AddImport(&f);
    EXPECT_EQ(h.m_setOfFrames, std::set<VarFrame*>{&f});
    EXPECT_EQ(h.m_setOfDirectFrames, std::set<VarFrame*>{&f});
    ASSERT_EQ(h.m_imports.size(), 2);
    EXPECT_EQ(h.m_imports[0], &f);
    EXPECT_EQ(h.m_imports[1], &f);
}

// ---- dumps of frames ---------------------------------------------------------------------------

TEST(VarFrame, DumpsItsVariablesAndItsParents) {
    VarFrame imported(nullptr);
    VarFrame outer(nullptr);
    VarFrame inner(&outer);
    inner.ImportFrame(&imported);
    Define(imported, "unseen", "0");
    Define(outer, "x", "1");
    Define(inner, "y", "2");
    Define(inner, "z", "3");
    EXPECT_EQ(Dump(inner), "{\n"
                           "    Local vars\n"
                           "    {\n"
                           "        z = 3\n"
                           "        y = 2\n"
                           "    }\n"
                           "    Parent frame\n"
                           "    {\n"
                           "        Local vars\n"
                           "        {\n"
                           "            x = 1\n"
                           "        }\n"
                           "        Parent frame\n"
                           "    }\n"
                           "}\n");
}

TEST(VarFrame, DumpLeavesTheIndentAsItWas) {
    StringStream os(4096);
    const VarFrame frame(nullptr);
    frame.WriteToStream(os);
    EXPECT_EQ(os.GetIndent(), 0);
}

// ---- deep chains -------------------------------------------------------------------------------

// A chain of frames below a file's, as a recursion makes them.
class DeepChain {
public:
    static constexpr std::size_t s_depth = 40;

    explicit DeepChain(VarFrame* root) {
        for (std::size_t i = 0; i < s_depth; ++i)
            m_frames.push_back(
                std::make_unique<VarFrame>(m_frames.empty() ? root : m_frames.back().get()));
    }
    ~DeepChain() {
        while (!m_frames.empty())
            m_frames.pop_back();
    }

    VarFrame& At(std::size_t i) { return *m_frames[i]; }
    VarFrame& Innermost() { return *m_frames.back(); }
    void Pop() { m_frames.pop_back(); }

private:
    std::vector<std::unique_ptr<VarFrame>> m_frames;
};

TEST(DeepFrames, FindTheNamesOfTheFile) {
    FileScopeVarFrame file;
    const LSVariable* m = Define(file, "m");
    DeepChain chain(&file);
    EXPECT_EQ(chain.Innermost().Find("m", nullptr), m);
    EXPECT_EQ(chain.Innermost().Find2("m"), m);
    EXPECT_EQ(chain.Innermost().Find("n", nullptr), nullptr);
    EXPECT_EQ(chain.Innermost().Find2("n"), nullptr);
}

TEST(DeepFrames, FindTheInnermostOfAName) {
    FileScopeVarFrame file;
    Define(file, "m");
    DeepChain chain(&file);
    for (std::size_t i = 0; i < DeepChain::s_depth; ++i) {
        const LSVariable* m = Define(chain.At(i), "m");
        EXPECT_EQ(chain.Innermost().Find("m", nullptr), m) << i;
        EXPECT_EQ(chain.Innermost().Find2("m"), m) << i;
    }
}

TEST(DeepFrames, FindWhatLiesBetweenOnceItIsDefined) {
    FileScopeVarFrame file;
    const LSVariable* ofFile = Define(file, "m");
    DeepChain chain(&file);
    EXPECT_EQ(chain.Innermost().Find("m", nullptr), ofFile);
    const LSVariable* between = Define(chain.At(3), "m");
    EXPECT_EQ(chain.Innermost().Find("m", nullptr), between);
    EXPECT_EQ(chain.Innermost().Find2("m"), between);
    EXPECT_EQ(chain.At(3).Find("m", nullptr), between);
    EXPECT_EQ(chain.At(2).Find("m", nullptr), ofFile);
}

// The bytes m...m and m??m fall into one slot, and so do names that hide each other.
TEST(DeepFrames, TellNamesApartThatShareASlot) {
    ASSERT_EQ(LocalNames::SlotOf("mabm"), LocalNames::SlotOf("mcdm"));
    FileScopeVarFrame file;
    const LSVariable* ofFile = Define(file, "mabm");
    DeepChain chain(&file);
    const LSVariable* other = Define(chain.At(0), "mcdm");
    EXPECT_EQ(chain.Innermost().Find("mabm", nullptr), ofFile);
    EXPECT_EQ(chain.Innermost().Find("mcdm", nullptr), other);
}

TEST(DeepFrames, ForgetAFrameThatHasEnded) {
    FileScopeVarFrame file;
    const LSVariable* ofFile = Define(file, "m");
    const LSVariable* empty = Define(file, "");
    DeepChain chain(&file);
    Define(chain.Innermost(), "m");
    Define(chain.Innermost(), "m");
    Define(chain.Innermost(), "");
    chain.Pop();
    EXPECT_EQ(chain.Innermost().Find("m", nullptr), ofFile);
    EXPECT_EQ(chain.Innermost().Find("", nullptr), empty);
    EXPECT_FALSE(file.m_localNames->MayHold("m"));
    EXPECT_FALSE(file.m_localNames->MayHold(""));
}

TEST(DeepFrames, SeeWhatAFrameBetweenImports) {
    FileScopeVarFrame file;
    FileScopeVarFrame imported;
    const LSVariable* late = Define(imported, "late");
    DeepChain chain(&file);
    EXPECT_EQ(chain.Innermost().Find("late", nullptr), nullptr);
    chain.At(1).ImportFrame(&imported);
    EXPECT_EQ(chain.Innermost().Find("late", nullptr), late);
}

TEST(DeepFrames, SeeWhatTheFileImports) {
    FileScopeVarFrame imported;
    const LSVariable* m = Define(imported, "m");
    FileScopeVarFrame file;
    file.AddImport(&imported);
    DeepChain chain(&file);
    EXPECT_EQ(chain.Innermost().Find("m", nullptr), m);
    EXPECT_EQ(chain.Innermost().Find2("m"), nullptr);
    EXPECT_FALSE(file.m_localNames->MayHold("m"));
}

TEST(DeepFrames, NeedNoFile) {
    VarFrame root(nullptr);
    const LSVariable* m = Define(root, "m");
    DeepChain chain(&root);
    const LSVariable* n = Define(chain.At(0), "n");
    EXPECT_EQ(chain.Innermost().Find("m", nullptr), m);
    EXPECT_EQ(chain.Innermost().Find("n", nullptr), n);
    EXPECT_EQ(chain.Innermost().Find2("m"), m);
    EXPECT_EQ(chain.Innermost().Find2("x"), nullptr);
}

// ---- dollar macros -----------------------------------------------------------------------------

struct DollarForm {
    std::string_view text;
    std::string_view name;  // empty where the text does not start with a use
    ssize_t size;
};

TEST(ScanDollarMacro, KnowsItsForm) {
    const DollarForm forms[] = {
        {"$(A)",     "A",    4},
        {"$(Ab_1)x", "Ab_1", 7},
        {"$(_)",     "_",    4},
        {"$(A)$(B)", "A",    4},
        {"",         "",     0},
        {"$",        "",     0},
        {"$(",       "",     0},
        {"$(A",      "",     0},
        {"$(ABC",    "",     0},
        {"$()",      "",     0},
        {"$())",     "",     0},
        {"$( A)",    "",     0},
        {"$(A )",    "",     0},
        {"$(1A)",    "",     0},
        {"$(A-B)",   "",     0},
        {"$(A\xe4)", "",     0},
        {"$A",       "",     0},
        {"$A()x",    "",     0},
        {"$ (A)",    "",     0},
        {" $(A)",    "",     0},
        {"$$(A)",    "",     0},
        {"x$(A)",    "",     0},
    };
    for (const DollarForm& form : forms) {
        const HeapText text(form.text);
        SubString name("unchanged");
        const xchar* end = ScanDollarMacro(text.View(), name);
        if (form.name.empty()) {
            EXPECT_EQ(end, nullptr) << form.text;
            EXPECT_EQ(name, "unchanged") << form.text;
        } else {
            EXPECT_EQ(end, text.begin() + form.size) << form.text;
            EXPECT_EQ(Str(name), form.name);
            EXPECT_EQ(name.m_p1, text.begin() + 2) << "a view of the text";
        }
    }
}

// What the use of a dollar macro yields, or nothing.
std::string FindDollar(const FileScopeVarFrame& frame, const char* name) {
    const xstring* value = frame.FindDollarMacro(xstring(name));
    return value == nullptr ? "(none)" : Str(*value);
}

TEST(DollarMacro, IsFoundByItsExactName) {
    FileScopeVarFrame frame;
    frame.InsertDollarMacro("A", "x");
    EXPECT_EQ(FindDollar(frame, "A"), "x");
    EXPECT_EQ(FindDollar(frame, "a"), "(none)");
    EXPECT_EQ(FindDollar(frame, "AB"), "(none)");
    EXPECT_EQ(FindDollar(frame, ""), "(none)");
}

TEST(DollarMacro, ALaterSettingReplacesTheValue) {
    FileScopeVarFrame frame;
    frame.InsertDollarMacro("A", "old");
    const xstring* value = frame.FindDollarMacro("A");
    frame.InsertDollarMacro("A", "new");
    EXPECT_EQ(FindDollar(frame, "A"), "new");
    EXPECT_EQ(frame.FindDollarMacro("A"), value) << "the entry stays where it was";
    EXPECT_EQ(frame.m_dollarMacrosMap.size(), 1U);
}

TEST(DollarMacro, MakesAVariableBetweenUnderscores) {
    FileScopeVarFrame frame;
    std::string name = "A";
    std::string value = "x";
    frame.InsertDollarMacro(name.c_str(), value.c_str());
    name = value = "?";
    const LSVariable* var = frame.Find2("_A_");
    ASSERT_NE(var, nullptr);
    EXPECT_EQ(var->GetType(), LSV_STRING);
    EXPECT_EQ(Dump(*var), "_A_ = x");
}

TEST(DollarMacro, ALaterSettingHidesTheEarlierVariable) {
    FileScopeVarFrame frame;
    frame.InsertDollarMacro("A", "old");
    frame.InsertDollarMacro("A", "new");
    EXPECT_EQ(Value(*frame.Find2("_A_")), "new");
    EXPECT_EQ(Dump(frame.m_localVariables), "{\n    _A_ = new\n    _A_ = old\n}\n");
}

TEST(DollarMacro, TheFirstImportWins) {
    FileScopeVarFrame f;
    FileScopeVarFrame g;
    FileScopeVarFrame h;
    h.AddImport(&f);
    h.AddImport(&g);
    f.InsertDollarMacro("A", "from f");
    g.InsertDollarMacro("A", "from g");
    g.InsertDollarMacro("B", "from g");
    EXPECT_EQ(FindDollar(h, "A"), "from f");
    EXPECT_EQ(FindDollar(h, "B"), "from g");
    h.InsertDollarMacro("A", "own");
    EXPECT_EQ(FindDollar(h, "A"), "own");
}

TEST(DollarMacro, TheVariablesOfTwoImportsAreAmbiguous) {
    FileScopeVarFrame f;
    FileScopeVarFrame g;
    FileScopeVarFrame h;
    h.AddImport(&f);
    h.AddImport(&g);
    f.InsertDollarMacro("A", "from f");
    g.InsertDollarMacro("A", "from g");
    EXPECT_EQ(LexErrorOf(nullptr, [&] { h.Find("_A_", nullptr); }),
              (LexError{"Ambiguous macro name : _A_", 0}));
}

TEST(DollarMacro, ImportsAreSearchedDepthFirst) {
    FileScopeVarFrame e;
    FileScopeVarFrame f;
    FileScopeVarFrame g;
    FileScopeVarFrame h;
    f.AddImport(&e);
    h.AddImport(&f);
    h.AddImport(&g);
    g.InsertDollarMacro("A", "from g");
    EXPECT_EQ(FindDollar(h, "A"), "from g");
    e.InsertDollarMacro("A", "from e");
    EXPECT_EQ(FindDollar(h, "A"), "from e");
}

TEST(DollarMacro, ImportsOfTheFrameAloneAreNotSearched) {
    FileScopeVarFrame f;
    FileScopeVarFrame h;
    h.ImportFrame(&f);
    f.InsertDollarMacro("A", "x");
    EXPECT_EQ(FindDollar(h, "A"), "(none)");
}

TEST(DollarMacro, ParentsPlayNoPart) {
    FileScopeVarFrame parent;
    FileScopeVarFrame frame;
    frame.m_parent = &parent;
    parent.InsertDollarMacro("A", "x");
    EXPECT_EQ(FindDollar(frame, "A"), "(none)");
}

struct DollarSubstitution {
    std::string_view text;
    std::string_view once;  // what one pass writes
    bool changed;
    std::string_view all;  // what all passes leave
};

TEST(DollarMacro, IsSubstituted) {
    FileScopeVarFrame frame;
    frame.InsertDollarMacro("A", "x");
    frame.InsertDollarMacro("B", "$(A)");
    frame.InsertDollarMacro("C", "$(B)$(B)");
    frame.InsertDollarMacro("E", "");
    frame.InsertDollarMacro("U", "$(NOSUCH)");
    frame.InsertDollarMacro("OPEN", "$(");
    const DollarSubstitution substitutions[] = {
        {"",              "",              false, ""             },
        {"text",          "text",          false, "text"         },
        {"$(A)",          "x",             true,  "x"            },
        {"<$(A)$(A)>",    "<xx>",          true,  "<xx>"         },
        {"$(B)",          "$(A)",          true,  "x"            },
        {"$(C)",          "$(B)$(B)",      true,  "xx"           },
        {"$(E)",          "",              true,  ""             },
        {"$(U)",          "$(NOSUCH)",     true,  "$(NOSUCH)"    },
        {"$(NOSUCH)",     "$(NOSUCH)",     false, "$(NOSUCH)"    },
        {"$(NOSUCH)$(A)", "$(NOSUCH)x",    true,  "$(NOSUCH)x"   },
        {"$($(A))",       "$(x)",          true,  "$(x)"         },
        {"$(OPEN)A)",     "$(A)",          true,  "x"            },
        {"$$(A)",         "$x",            true,  "$x"           },
        {"$( A) $A $(a)", "$( A) $A $(a)", false, "$( A) $A $(a)"},
        {"$(A",           "$(A",           false, "$(A"          },
    };
    for (const DollarSubstitution& substitution : substitutions) {
        const HeapText text(substitution.text);
        StringStream os(4096);
        EXPECT_EQ(frame.ApplyDollarMacros(os, text.View()), substitution.changed)
            << substitution.text;
        EXPECT_EQ(Str(os.GetString()), substitution.once) << substitution.text;
        xstring s(text.View());
        EXPECT_EQ(frame.ApplyDollarMacros(s), substitution.changed) << substitution.text;
        EXPECT_EQ(Str(s), substitution.all) << substitution.text;
    }
}

TEST(DollarMacro, LeavesAStringWithoutAUseUntouched) {
    FileScopeVarFrame frame;
    frame.InsertDollarMacro("A", "x");
    xstring s("$(NOSUCH)");
    const xchar* bytes = s.data();
    EXPECT_FALSE(frame.ApplyDollarMacros(s));
    EXPECT_EQ(s.data(), bytes);
}

TEST(DollarMacro, CarriesAnyByte) {
    FileScopeVarFrame frame;
    const char value[] = {'\0', '\xff', '\n'};
    frame.InsertDollarMacro("A", xstring(value, value + 3));
    const char text[] = {'\xe4', '\0', '$', '(', 'A', ')'};
    xstring s(text, text + 6);
    EXPECT_TRUE(frame.ApplyDollarMacros(s));
    EXPECT_EQ(Str(s), std::string("\xe4\0\0\xff\n", 5));
    EXPECT_EQ(Value(*frame.Find2("_A_")), std::string("\0\xff\n", 3));
}

}  // namespace
}  // namespace vorn_test

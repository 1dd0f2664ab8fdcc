#include "qzMacroExpander/LSVariable.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <map>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "qzMacroExpander/LSToken.h"
#include "qzUtils/StringStream.h"
#include "tests/support/Text.h"

namespace {

// The number of allocations after which one fails; -1 where none does.
int s_allocationsLeft = -1;

}  // namespace

// Kept out of line, where the compiler does not pair them up with each other.
[[gnu::noinline]] void* operator new(std::size_t size) {
    if (s_allocationsLeft == 0)
        throw std::bad_alloc();
    if (s_allocationsLeft > 0)
        --s_allocationsLeft;
    void* p = std::malloc(size);
    if (p == nullptr)
        throw std::bad_alloc();
    return p;
}
[[gnu::noinline]] void operator delete(void* p) noexcept {
    std::free(p);
}
[[gnu::noinline]] void operator delete(void* p, std::size_t) noexcept {
    std::free(p);
}

namespace vorn_test {
namespace {

using namespace vorn;

// What a dump writes.
template <class Dumped>
std::string Dump(const Dumped& dumped) {
    StringStream os(4096);
    dumped.WriteToStream(os);
    return Str(os.GetString());
}

std::string Value(const LSVariable& var) {
    StringStream os(4096);
    var.WriteValue(os);
    return Str(os.GetString());
}

std::string NameAndFormals(const LSMacroVariable& var) {
    StringStream os(4096);
    var.WriteNameAndFormalParameterList(os);
    return Str(os.GetString());
}

LSMacroVariable* NewMacro(SubString name, SubString body) {
    auto* var = new LSMacroVariable(LSV_MACRO, name, nullptr, false, false, false);
    var->SetSubstitutionString(body, false, 0);
    return var;
}

LSValueVariable* NewValue(SubString name, SubString value) {
    return new LSValueVariable(LSV_STRING, name, value);
}

// Adds a variable to a frame and returns it.
LSVariable* Define(VarFrame& frame, SubString name, SubString value = "") {
    LSVariable* var = NewValue(name, value);
    frame.AddVariable(var);
    return var;
}

// ---- variables ---------------------------------------------------------------------------------

TEST(LSVariable, TypesHaveTheirValues) {
    const std::pair<ELSVariable, int> expected[] = {
        {LSV_UNDEF,  0},
        {LSV_MACRO,  1},
        {LSV_BOOL,   2},
        {LSV_INT,    3},
        {LSV_DOUBLE, 4},
        {LSV_CHAR,   5},
        {LSV_STRING, 6},
    };
    for (const auto& [type, value] : expected)
        EXPECT_EQ(static_cast<int>(type), value);
}

TEST(LSVariable, KeepsAViewOfItsNameAndBelongsToNoList) {
    const std::string name = "name";
    const LSValueVariable var(LSV_INT, SubString(name.data(), name.data() + 4), "1");
    EXPECT_EQ(var.GetName().m_p1, name.data());
    EXPECT_EQ(var.GetName().m_p2, name.data() + 4);
    EXPECT_EQ(var.m_next, nullptr);
    EXPECT_EQ(var.m_keptText, nullptr);
}

TEST(LSMacroVariable, StartsWithoutArgumentsAndBody) {
    VarFrame context(nullptr);
    const LSMacroVariable var(LSV_INT, "m", &context, true, false, true);
    EXPECT_EQ(var.GetName(), "m");
    EXPECT_EQ(var.GetReturnType(), LSV_INT);
    EXPECT_EQ(var.GetContext(), &context);
    EXPECT_TRUE(var.IsPython());
    EXPECT_FALSE(var.IsNaked());
    EXPECT_TRUE(var.IsFnArg());
    EXPECT_EQ(var.GetNumArgs(), 0);
    EXPECT_EQ(var.GetIndent(), -1);
    EXPECT_TRUE(var.GetSubstitutionString().empty());
}

TEST(LSMacroVariable, TellsItsFlagsApart) {
    const LSMacroVariable naked(LSV_MACRO, "m", nullptr, false, true, false);
    EXPECT_FALSE(naked.IsPython());
    EXPECT_TRUE(naked.IsNaked());
    EXPECT_FALSE(naked.IsFnArg());
    EXPECT_EQ(naked.GetContext(), nullptr);
}

TEST(LSMacroVariable, IsAMacroWhateverItReturns) {
    for (const ELSVariable type : {LSV_MACRO, LSV_BOOL, LSV_INT, LSV_DOUBLE, LSV_CHAR, LSV_STRING})
        EXPECT_EQ(LSMacroVariable(type, "m", nullptr, false, false, false).GetType(), LSV_MACRO);
}

TEST(LSMacroVariable, FormalArgumentsKeepTheirOrder) {
    LSMacroVariable var(LSV_MACRO, "m", nullptr, false, false, false);
    var.AddArgName("a", LSV_MACRO, false);
    var.AddArgName("b", LSV_STRING, false);
    var.AddArgName("g", LSV_MACRO, true);
    ASSERT_EQ(var.GetNumArgs(), 3);
    EXPECT_EQ(var.GetArg(0).m_name, "a");
    EXPECT_EQ(var.GetArg(0).m_type, LSV_MACRO);
    EXPECT_EQ(var.GetArg(1).m_name, "b");
    EXPECT_EQ(var.GetArg(1).m_type, LSV_STRING);
    EXPECT_FALSE(var.GetArg(1).m_isFnArg);
    EXPECT_EQ(var.GetArg(2).m_name, "g");
    EXPECT_TRUE(var.GetArg(2).m_isFnArg);
    var.ClearArgs();
    EXPECT_EQ(var.GetNumArgs(), 0);
}

TEST(LSMacroVariable, FindArgNameGivesTheFirstOfThatExactName) {
    LSMacroVariable var(LSV_MACRO, "m", nullptr, false, false, false);
    EXPECT_EQ(var.FindArgName("a"), -1);
    for (const char* name : {"ab", "a", "b", "a"})
        var.AddArgName(name, LSV_MACRO, false);
    EXPECT_EQ(var.FindArgName("ab"), 0);
    EXPECT_EQ(var.FindArgName("a"), 1);
    EXPECT_EQ(var.FindArgName("b"), 2);
    EXPECT_EQ(var.FindArgName("A"), -1);
    EXPECT_EQ(var.FindArgName(""), -1);
}

TEST(LSMacroVariable, BorrowsItsBodyUnlessToldToCopy) {
    std::string body = "body";
    const SubString view(body.data(), body.data() + body.size());
    LSMacroVariable var(LSV_MACRO, "m", nullptr, false, false, false);
    var.SetSubstitutionString(view, false, 3);
    EXPECT_EQ(var.GetSubstitutionString().m_p1, body.data());
    EXPECT_EQ(var.m_substitutionString.m_capacity, 0);
    EXPECT_EQ(var.GetIndent(), 3);
    var.SetSubstitutionString(view, true, 5);
    body = "????";
    EXPECT_EQ(var.GetSubstitutionString(), "body");
    EXPECT_EQ(var.m_substitutionString.m_capacity, 4);
    EXPECT_EQ(var.GetIndent(), 5);
}

TEST(LSMacroVariable, WritesNameAndFormals) {
    const std::pair<std::vector<const char*>, const char*> expected[] = {
        {{},              "m"       },
        {{"a"},           "m(a)"    },
        {{"a", "b"},      "m(a,b)"  },
        {{"a", "b", "c"}, "m(a,b,c)"},
    };
    for (const auto& [names, text] : expected) {
        LSMacroVariable var(LSV_INT, "m", nullptr, false, false, false);
        for (const char* name : names)
            var.AddArgName(name, LSV_STRING, true);
        EXPECT_EQ(NameAndFormals(var), text);
    }
}

TEST(LSMacroVariable, DumpsNameFormalsAndBody) {
    LSMacroVariable var(LSV_BOOL, "m", nullptr, true, true, false);
    var.AddArgName("a", LSV_INT, false);
    EXPECT_EQ(Dump(var), "m(a) = ");
    var.SetSubstitutionString(" a\n  + b ", false, 2);
    EXPECT_EQ(Dump(var), "m(a) =  a\n  + b ");
    EXPECT_EQ(Value(var), " a\n  + b ");
}

TEST(LSValueVariable, CopiesItsValueAndKeepsItsName) {
    std::string name = "n";
    std::string value = "one";
    const LSValueVariable var(LSV_INT, SubString(name.data(), name.data() + 1),
                              SubString(value.data(), value.data() + 3));
    name = "k";
    value = "two";
    EXPECT_EQ(var.GetName(), "k");
    EXPECT_EQ(Str(var.m_value), "one");
    EXPECT_EQ(var.GetType(), LSV_INT);
}

TEST(LSValueVariable, DumpsNameAndValue) {
    const char bytes[] = {'a', '\0', '\xff'};
    const LSValueVariable var(LSV_CHAR, "v", SubString(bytes, bytes + 3));
    EXPECT_EQ(Dump(var), std::string("v = a\0\xff", 7));
    EXPECT_EQ(Value(var), std::string("a\0\xff", 3));
    EXPECT_EQ(Dump(LSValueVariable(LSV_STRING, "empty", "")), "empty = ");
}

TEST(LSVar, CopiesItsNameToo) {
    std::string name = "name";
    const LSVar var(SubString(name.data(), name.data() + 4), "value");
    name = "????";
    EXPECT_EQ(var.GetName(), "name");
    EXPECT_EQ(var.GetName().m_p1, var.m_nameStr.data());
    EXPECT_EQ(var.GetType(), LSV_STRING);
    EXPECT_EQ(Dump(var), "name = value");
}

// ---- lists -------------------------------------------------------------------------------------

// Reports its own end.
class Mortal : public LSValueVariable {
public:
    Mortal(SubString name, std::vector<std::string>& ends)
        : LSValueVariable(LSV_STRING, name, ""), m_ends(ends) {}
    ~Mortal() override { m_ends.push_back(Str(m_name)); }

private:
    std::vector<std::string>& m_ends;
};

TEST(LSVariableList, FindsAnExactName) {
    LSVariableList list;
    EXPECT_EQ(list.Find("a"), nullptr);
    LSVariable* ab = NewValue("ab", "1");
    LSVariable* a = NewMacro("a", "2");
    list.Add(ab);
    list.Add(a);
    EXPECT_EQ(list.Find("ab"), ab);
    EXPECT_EQ(list.Find("a"), a);
    EXPECT_EQ(list.Find("A"), nullptr);
    EXPECT_EQ(list.Find("b"), nullptr);
    EXPECT_EQ(list.Find(""), nullptr);
}

TEST(LSVariableList, ANewerVariableHidesTheOlderWhichLivesOn) {
    std::vector<std::string> ends;
    {
        LSVariableList list;
        auto* older = new Mortal("a", ends);
        auto* newer = new Mortal("a", ends);
        list.Add(older);
        list.Add(newer);
        EXPECT_EQ(list.Find("a"), newer);
        EXPECT_EQ(list.m_first, newer);
        EXPECT_EQ(newer->m_next, older);
        EXPECT_EQ(older->m_next, nullptr);
        EXPECT_EQ(list.m_map.size(), 1U);
        EXPECT_EQ(Dump(list), "{\n    a = \n    a = \n}\n");
        EXPECT_TRUE(ends.empty());
    }
    EXPECT_EQ(ends, (std::vector<std::string>{"a", "a"}));
}

TEST(LSVariableList, EndsEveryVariableThroughItsOwnDestructor) {
    std::vector<std::string> ends;
    {
        LSVariableList list;
        for (const char* name : {"a", "b", "c"})
            list.Add(new Mortal(name, ends));
    }
    std::sort(ends.begin(), ends.end());
    EXPECT_EQ(ends, (std::vector<std::string>{"a", "b", "c"}));
}

TEST(LSVariableList, OrdersNamesByTheirBytes) {
    LSVariableList list;
    const char zero[] = {'a', '\0'};
    for (const SubString name : {SubString("b"), SubString("\xe4"), SubString("a"), SubString("B"),
                                 SubString(zero, zero + 2), SubString("ab")})
        list.Add(NewValue(name, ""));
    std::vector<std::string> names;
    for (const auto& [name, var] : list.m_map)
        names.push_back(Str(name));
    EXPECT_EQ(names,
              (std::vector<std::string>{"B", "a", std::string("a\0", 2), "ab", "b", "\xe4"}));
}

TEST(LSVariableList, FindsTheNewestOfANameInAListOfAnyLength) {
    std::vector<std::string> names;
    for (int i = 0; i < 40; ++i)
        names.push_back("name" + std::to_string(i % 20));
    LSVariableList list;
    std::map<std::string, LSVariable*> newest;
    for (const std::string& name : names) {
        LSVariable* var = NewValue(SubString(name.data(), name.data() + name.size()), "");
        list.Add(var);
        newest[name] = var;
        for (const auto& [known, expected] : newest)
            EXPECT_EQ(list.Find(known.c_str()), expected) << known << " behind " << name;
        EXPECT_EQ(list.Find("name"), nullptr);
        EXPECT_EQ(list.Find("name20"), nullptr);
    }
}

TEST(LSVariableList, FindsAHiddenNamesNeighboursInALongList) {
    LSVariableList list;
    LSVariable* first = NewValue("first", "");
    list.Add(first);
    LSVariable* last = nullptr;
    for (int i = 0; i < 20; ++i) {
        last = NewValue("again", "");
        list.Add(last);
        EXPECT_EQ(list.Find("first"), first) << i;
        EXPECT_EQ(list.Find("again"), last) << i;
    }
}

TEST(LSVariableList, OwnsWhatIsAddedEvenWhereMemoryRunsOut) {
    const std::string names = "abcdefghijklmnop";
    for (int allocations = 0; allocations < 40; ++allocations) {
        std::vector<std::string> ends;
        ends.reserve(names.size());
        std::vector<LSVariable*> added;
        for (const char& name : names)
            added.push_back(new Mortal(SubString(&name, &name + 1), ends));
        {
            LSVariableList list;
            s_allocationsLeft = allocations;
            std::size_t failures = 0;
            for (LSVariable* var : added) {
                try {
                    list.Add(var);
                } catch (const std::bad_alloc&) {
                    ++failures;
                    s_allocationsLeft = -1;
                }
            }
            s_allocationsLeft = -1;
            EXPECT_LE(failures, 1U);
            for (std::size_t i = 0; i < names.size(); ++i) {
                LSVariable* found = list.Find(SubString(&names[i], &names[i] + 1));
                if (found != nullptr) {
                    EXPECT_EQ(Str(found->GetName()), names.substr(i, 1));
                }
            }
        }
        EXPECT_EQ(ends.size(), names.size());
    }
}

TEST(LSVariableList, DumpsTheNewestFirst) {
    LSVariableList list;
    EXPECT_EQ(Dump(list), "{\n}\n");
    list.Add(NewValue("x", "1"));
    auto* macro = NewMacro("m", "body");
    macro->AddArgName("a", LSV_MACRO, false);
    list.Add(macro);
    list.Add(NewMacro("lines", "one\n  two"));
    EXPECT_EQ(Dump(list), "{\n"
                          "    lines = one\n"
                          "      two\n"
                          "    m(a) = body\n"
                          "    x = 1\n"
                          "}\n");
}

// ---- counting look-ups -------------------------------------------------------------------------

// Puts the counters back when a test ends.
class LookUpCount : public testing::Test {
protected:
    ~LookUpCount() override {
        s_started = false;
        s_count = 0;
    }
};

TEST_F(LookUpCount, CountsNothingUntilStarted) {
    LSVariableList list;
    list.Find("a");
    EXPECT_FALSE(s_started);
    EXPECT_EQ(s_count, 0);
}

TEST_F(LookUpCount, CountsEveryLookUpInAListOnceStarted) {
    SetStarted();
    EXPECT_TRUE(s_started);
    LSVariableList list;
    list.Find("a");  // in an empty list
    list.Add(NewValue("a", ""));
    list.Find("a");
    list.Find("b");
    EXPECT_EQ(s_count, 3);
}

TEST_F(LookUpCount, CountsOneLookUpForEachFrameOfAChain) {
    VarFrame outer(nullptr);
    VarFrame middle(&outer);
    VarFrame inner(&middle);
    Define(outer, "a");
    SetStarted();
    inner.Find2("a");
    EXPECT_EQ(s_count, 3);
    inner.Find("a", nullptr);
    EXPECT_EQ(s_count, 6);
}

TEST_F(LookUpCount, WrapsAround) {
    SetStarted();
    s_count = std::numeric_limits<int32>::max();
    LSVariableList list;
    list.Find("a");
    EXPECT_EQ(s_count, std::numeric_limits<int32>::min());
}

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

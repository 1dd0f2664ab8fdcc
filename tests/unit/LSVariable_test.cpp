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

#include "tests/support/Variables.h"

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

std::string NameAndFormals(const LSMacroVariable& var) {
    StringStream os(4096);
    var.WriteNameAndFormalParameterList(os);
    return Str(os.GetString());
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

}  // namespace
}  // namespace vorn_test

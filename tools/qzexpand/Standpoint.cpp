#include "Standpoint.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>

#include "qzUtils/StringExt.h"

namespace qztools {

using namespace vorn;

namespace {

// The directives that run further text.
constexpr ConstStringZ s_nesting[] = {
    "[",   "(",     "assert",  "assertfails",  "for",       "if",
    "let", "print", "println", "relativepath", "runpython", "scope",
    "str", "strW",  "strx",    "strxW",        "unstr",     "while",
};

// A name that is longer is not looked for.
constexpr std::uintptr_t s_mostBytes = 200;

bool IsWholeIdentifier(const SourceText& text, SubString s) {
    const SubString all = text.text;
    SubString rest = s;
    return ScanIdentifier(rest) && rest.empty()
           && (s.m_p1 == all.m_p1 || !IsCharOf(s.m_p1[-1], CHAR_IDENTIFIER))
           && (s.m_p2 == all.m_p2 || !IsCharOf(*s.m_p2, CHAR_IDENTIFIER));
}

// Whether a name in a text stands for a macro of the file's frame, and is not the very name that
// one was defined by.
bool IsMacroCall(const FileScopeVarFrame& frame, SubString name) {
    bool found = false;
    for (const LSVariable* var = frame.m_localVariables.m_first; var != nullptr;
         var = var->m_next) {
        if (var->m_name.m_p1 == name.m_p1)
            return false;
        found = found || (var->m_name == name && var->GetType() == LSV_MACRO);
    }
    return found;
}

// What stands behind the @ of a directive that runs further text; empty for anything else.
SubString NameOfDirective(const SourceText& text, const char* at) {
    SubString rest(at + 1, text.text.data_end());
    ScanWhiteSpace(rest);
    SubString name(rest.m_p1, rest.m_p1);
    if (!ScanIdentifier(rest) && rest)
        ++rest;
    name.setend(rest.m_p1);
    const bool found = std::any_of(std::begin(s_nesting), std::end(s_nesting),
                                   [name](ConstStringZ word) { return name == word; });
    return found ? name : SubString();
}

// The step that a pair of words stands for; without a text where it stands for none.
Step RecogniseStep(const Session& session, SubString token) {
    const SourceText* text = session.texts.Find(token.m_p1);
    if (text == nullptr || !text->Holds(token.m_p2, true))
        return {};
    if (token == "@") {
        const SubString name = NameOfDirective(*text, token.m_p1);
        return name.empty() ? Step{} : Step{text, token, name};
    }
    const bool isCall = IsWholeIdentifier(*text, token) && IsMacroCall(session.frame, token);
    return isCall ? Step{text, token, token} : Step{};
}

// The stack is not read as the objects that stand there, so a sanitizer has to look away.
[[gnu::noinline, gnu::no_sanitize_address]] std::uintptr_t ReadWord(const std::uintptr_t* word) {
    return *word;
}

// The pairs that have been judged already, of which a runaway recursion holds few.
class Judged {
public:
    bool Add(SubString pair) {
        const auto end = m_pairs.begin() + m_size;
        const bool isNew = std::none_of(m_pairs.begin(), end, [pair](SubString p) {
            return p.m_p1 == pair.m_p1 && p.m_p2 == pair.m_p2;
        });
        if (isNew)
            m_pairs[static_cast<std::size_t>(m_size++)] = pair;
        return isNew;
    }
    bool IsFull() const { return m_size == std::ssize(m_pairs); }

private:
    std::array<SubString, 256> m_pairs{};
    std::ptrdiff_t m_size = 0;
};

}  // namespace

std::size_t FindSteps(const Session& session, const void* low, const void* high, Step* steps,
                      std::size_t size) {
    const auto* word = static_cast<const std::uintptr_t*>(low);
    const auto* last = static_cast<const std::uintptr_t*>(high) - 1;
    Judged judged;
    std::size_t count = 0;
    for (; word < last && count < size && !judged.IsFull(); ++word) {
        const std::uintptr_t start = ReadWord(word);
        const std::uintptr_t end = ReadWord(word + 1);
        if (start == end || end - start > s_mostBytes)
            continue;
        const SubString pair(reinterpret_cast<const char*>(start),
                             reinterpret_cast<const char*>(end));
        if (session.texts.Find(pair.m_p1) == nullptr || !judged.Add(pair))
            continue;
        const Step step = RecogniseStep(session, pair);
        if (step.text != nullptr)
            steps[count++] = step;
    }
    return count;
}

}  // namespace qztools

#include "Definitions.h"

#include <algorithm>
#include <iterator>
#include <memory>

#include "Expressions.h"

namespace qzexpand {

using namespace vorn;

namespace {

SubString View(const std::string& s) {
    return SubString(s.data(), s.data() + s.size());
}

// The body is the value as it stands, line feeds and braces included.
void DefineMacro(VarFrame& frame, SubString name, SubString value) {
    auto macro = std::make_unique<LSMacroVariable>(LSV_MACRO, name, nullptr, false, false, false);
    macro->SetSubstitutionString(value, false, 0);
    frame.AddVariable(macro.release());
}

struct TypeName {
    const char* name;
    ELSVariable type;
};

constexpr TypeName s_typeNames[] = {
    {"bool",   LSV_BOOL  },
    {"int",    LSV_INT   },
    {"double", LSV_DOUBLE},
    {"char",   LSV_CHAR  },
    {"string", LSV_STRING},
};

ELSVariable TypeOf(const Definition& definition) {
    const auto found = std::find_if(std::begin(s_typeNames), std::end(s_typeNames),
                                    [&](const TypeName& t) { return t.name == definition.type; });
    return found == std::end(s_typeNames) ? LSV_MACRO : found->type;
}

}  // namespace

void Define(FileScopeVarFrame& frame, SourceTexts& texts, const Definition& definition) {
    const SubString name = View(definition.name);
    const SourceText& source =
        texts.Add("<-D " + definition.name + ">", xstring(View(definition.value)));
    texts.SetCurrent(source);
    const ELSVariable type = TypeOf(definition);
    if (type == LSV_MACRO)
        DefineMacro(frame, name, source.text);
    else if (type == LSV_STRING)
        frame.AddVariable(new LSValueVariable(type, name, source.text));
    else
        frame.AddVariable(new LSValueVariable(type, name, EvaluateAs(type, frame, source)));
}

}  // namespace qzexpand

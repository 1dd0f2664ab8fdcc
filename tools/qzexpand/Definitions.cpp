#include "Definitions.h"

#include <algorithm>
#include <iterator>
#include <memory>

#include "Expressions.h"
#include "Views.h"

namespace qzexpand {

using namespace vorn;

namespace {

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

void Define(Session& session, const Definition& definition) {
    VarFrame& frame = session.frame;
    const SubString name = ToSubString(definition.name);
    const SourceText& source =
        session.texts.Add("<-D " + definition.name + ">", xstring(ToSubString(definition.value)));
    session.texts.SetCurrent(source);
    const ELSVariable type = TypeOf(definition);
    if (type == LSV_MACRO)
        DefineMacro(frame, name, source.text);
    else if (type == LSV_STRING)
        frame.AddVariable(new LSValueVariable(type, name, source.text));
    else
        frame.AddVariable(new LSValueVariable(type, name, EvaluateAs(type, frame, source)));
}

}  // namespace qzexpand

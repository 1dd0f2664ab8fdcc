#include "Definitions.h"

#include <memory>

#include "Expressions.h"
#include "common/Views.h"

namespace qztools {

using namespace vorn;

namespace {

// The body is the value as it stands, line feeds and braces included.
void DefineMacro(VarFrame& frame, SubString name, SubString value) {
    auto macro = std::make_unique<LSMacroVariable>(LSV_MACRO, name, nullptr, false, false, false);
    macro->SetSubstitutionString(value, false, 0);
    frame.AddVariable(macro.release());
}

void DefineValue(FileScopeVarFrame& frame, ELSVariable type, SubString name,
                 const SourceText& source) {
    const xstring value = type == LSV_STRING ? source.text : EvaluateAs(type, frame, source);
    frame.AddVariable(new LSValueVariable(type, name, value));
}

}  // namespace

void Define(Session& session, const Definition& definition) {
    FileScopeVarFrame& frame = session.frame;
    const SubString name = ToSubString(definition.name);
    const SourceText& source =
        session.texts.Add("<-D " + definition.name + ">", xstring(ToSubString(definition.value)));
    session.texts.SetCurrent(source);
    switch (definition.kind) {
    case Definition::Kind::Macro:
        return DefineMacro(frame, name, source.text);
    case Definition::Kind::DollarMacro:
        return frame.InsertDollarMacro(name.GetString(), source.text);
    case Definition::Kind::Value:
        return DefineValue(frame, definition.type, name, source);
    }
}

}  // namespace qztools

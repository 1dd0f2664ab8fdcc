#include "Definitions.h"

#include <memory>

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

}  // namespace

void Define(FileScopeVarFrame& frame, SourceTexts& texts, const Definition& definition) {
    const SubString name = View(definition.name);
    const SourceText& source =
        texts.Add("<-D " + definition.name + ">", xstring(View(definition.value)));
    if (definition.type == "string")
        frame.AddVariable(new LSValueVariable(LSV_STRING, name, source.text));
    else
        DefineMacro(frame, name, source.text);
}

}  // namespace qzexpand

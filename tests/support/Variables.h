// What tests of variables and frames share: making variables, reading what they write, and seeing
// them end.
#pragma once

#include <string>
#include <vector>

#include "qzMacroExpander/LSVariable.h"
#include "qzUtils/StringStream.h"
#include "tests/support/Text.h"

namespace vorn_test {

// What a dump writes.
template <class Dumped>
std::string Dump(const Dumped& dumped) {
    vorn::StringStream os(4096);
    dumped.WriteToStream(os);
    return Str(os.GetString());
}

inline std::string Value(const vorn::LSVariable& var) {
    vorn::StringStream os(4096);
    var.WriteValue(os);
    return Str(os.GetString());
}

inline vorn::LSMacroVariable* NewMacro(vorn::SubString name, vorn::SubString body) {
    auto* var = new vorn::LSMacroVariable(vorn::LSV_MACRO, name, nullptr, false, false, false);
    var->SetSubstitutionString(body, false, 0);
    return var;
}

inline vorn::LSValueVariable* NewValue(vorn::SubString name, vorn::SubString value) {
    return new vorn::LSValueVariable(vorn::LSV_STRING, name, value);
}

// Adds a variable to a frame and returns it.
inline vorn::LSVariable* Define(vorn::VarFrame& frame, vorn::SubString name,
                                vorn::SubString value = "") {
    vorn::LSVariable* var = NewValue(name, value);
    frame.AddVariable(var);
    return var;
}

// Reports its own end.
class Mortal : public vorn::LSValueVariable {
public:
    Mortal(vorn::SubString name, std::vector<std::string>& ends)
        : vorn::LSValueVariable(vorn::LSV_STRING, name, ""), m_ends(ends) {}
    ~Mortal() override { m_ends.push_back(Str(m_name)); }

private:
    std::vector<std::string>& m_ends;
};

}  // namespace vorn_test

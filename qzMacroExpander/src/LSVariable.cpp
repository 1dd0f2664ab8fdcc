#include "qzMacroExpander/LSVariable.h"

#include <algorithm>
#include <functional>
#include <string_view>

#include "ScannerErrors.h"
#include "qzUtils/StringStream.h"

namespace vorn {

bool s_started = false;
int32 s_count = 0;

void SetStarted() {
    s_started = true;
}

// ---- variables ---------------------------------------------------------------------------------

void LSMacroVariable::WriteNameAndFormalParameterList(xostream& os) const {
    os << m_name;
    for (ssize_t i = 0; i < m_argNames.size(); ++i)
        os << (i == 0 ? '(' : ',') << m_argNames[i].m_name;
    if (!m_argNames.empty())
        os << ')';
}

void LSMacroVariable::WriteToStream(xostream& os) const {
    WriteNameAndFormalParameterList(os);
    os << " = " << GetSubstitutionString();
}

void LSMacroVariable::WriteValue(xostream& os) const {
    os << GetSubstitutionString();
}

ssize_t LSMacroVariable::FindArgName(SubString name) const {
    const auto it = std::find_if(m_argNames.begin(), m_argNames.end(),
                                 [name](const LSFormalArg& arg) { return arg.m_name == name; });
    return it == m_argNames.end() ? -1 : it - m_argNames.begin();
}

void LSValueVariable::WriteToStream(xostream& os) const {
    os << m_name << " = " << m_value;
}

void LSValueVariable::WriteValue(xostream& os) const {
    os << m_value;
}

// ---- lists -------------------------------------------------------------------------------------

LSVariableList::~LSVariableList() {
    while (m_first != nullptr) {
        LSVariable* next = m_first->m_next;
        if (m_localNames != nullptr)
            m_localNames->Remove(m_first->m_nameSlot);
        delete m_first;
        m_first = next;
    }
}

namespace {

// How many variables a list has without an index. Calls of macros have fewer arguments than this,
// and their frames are searched faster by walking the list. Hidden variables count, since they are
// walked over too: a naked macro adds its arguments to one frame with every call.
constexpr ssize_t s_variablesWithoutIndex = 8;

}  // namespace

// The list owns the variable before anything can throw: no look-up then finds one that is gone.
void LSVariableList::Add(LSVariable* var) {
    var->m_next = m_first;
    m_first = var;
    ++m_size;
    if (m_localNames != nullptr) {
        var->m_nameSlot = LocalNames::SlotOf(var->m_name);
        m_localNames->Add(var->m_nameSlot);
    }
    m_map[var->m_name] = var;
    AddToIndex(var);
}

void LSVariableList::AddToIndex(LSVariable* var) {
    if (m_index == nullptr) {
        if (m_size <= s_variablesWithoutIndex)
            return;
        auto index = std::make_unique<LSVariableIndex>();
        for (const auto& [name, variable] : m_map)
            index->Set(variable);
        m_index = std::move(index);
    }
    m_index->Set(var);
}

std::size_t LSVariableIndex::Hash(SubString name) {
    return std::hash<std::string_view>()(
        std::string_view(name.m_p1, static_cast<std::size_t>(name.size())));
}

LSVariable* LSVariableIndex::Find(SubString name, std::size_t hash) const {
    return m_slots[FindSlot(name, hash)].variable;
}

std::size_t LSVariableIndex::FindSlot(SubString name, std::size_t hash) const {
    const std::size_t mask = m_slots.size() - 1;
    std::size_t i = hash & mask;
    while (m_slots[i].variable != nullptr
           && (m_slots[i].hash != hash || m_slots[i].variable->m_name != name))
        i = (i + 1) & mask;
    return i;
}

void LSVariableIndex::Set(LSVariable* var) {
    if (2 * m_taken >= m_slots.size())
        Grow();
    const std::size_t hash = Hash(var->m_name);
    Slot& slot = m_slots[FindSlot(var->m_name, hash)];
    m_taken += slot.variable == nullptr ? 1 : 0;
    slot = Slot{hash, var};
}

void LSVariableIndex::Grow() {
    constexpr std::size_t s_least = 32;
    std::vector<Slot> old(std::max(s_least, 2 * m_slots.size()), Slot{0, nullptr});
    old.swap(m_slots);
    for (const Slot& slot : old) {
        if (slot.variable != nullptr)
            m_slots[FindSlot(slot.variable->m_name, slot.hash)] = slot;
    }
}

void LSVariableList::WriteToStream(xostream& os) const {
    os << "{\n";
    {
        const Indenter indenter(os, 4);
        for (const LSVariable* var = m_first; var != nullptr; var = var->m_next) {
            var->WriteToStream(os);
            os << '\n';
        }
    }
    os << "}\n";
}

// ---- frames ------------------------------------------------------------------------------------

namespace {

[[noreturn]] void ThrowAmbiguous(SubString name, const xchar* pos) {
    ThrowScannerError(pos, "Ambiguous macro name : ", name);
}

}  // namespace

// frame and its parents.
LSVariable* VarFrame::FindFar(VarFrame* frame, SubString name, const xchar* pos) {
    if (!MayBeLocal(name))
        return m_fileScopeFrame->FindLocal(name, pos);
    for (; frame != nullptr; frame = frame->m_parent) {
        if (LSVariable* var = frame->FindLocal(name, pos))
            return var;
    }
    return nullptr;
}

LSVariable* VarFrame::Find2(SubString name) {
    int asked = 0;
    for (VarFrame* frame = this; frame != nullptr; frame = frame->m_parent) {
        if (++asked > s_nearFrames && !MayBeLocal(name))
            return m_fileScopeFrame->m_localVariables.Find(name);
        if (LSVariable* var = frame->m_localVariables.Find(name))
            return var;
    }
    return nullptr;
}

LSVariable* VarFrame::Find2(SubString name, std::size_t hash) {
    for (VarFrame* frame = this; frame != nullptr; frame = frame->m_parent) {
        if (LSVariable* var = frame->m_localVariables.Find(name, hash))
            return var;
    }
    return nullptr;
}

LSVariable* VarFrame::FindInImports(SubString name, const xchar* pos) {
    LSVariable* found = nullptr;
    const std::size_t hash = LSVariableIndex::Hash(name);
    for (VarFrame* frame : m_setOfFrames) {
        LSVariable* var = frame->Find2(name, hash);
        if (found != nullptr && var != nullptr && var != found)
            return FindInDirectImports(name, pos);
        if (found == nullptr)
            found = var;
    }
    return found;
}

LSVariable* VarFrame::FindInDirectImports(SubString name, const xchar* pos) {
    LSVariable* found = nullptr;
    for (VarFrame* frame : m_setOfDirectFrames) {
        LSVariable* var = frame->FindLocal(name, pos);
        if (found != nullptr && var != nullptr && var != found)
            ThrowAmbiguous(name, pos);
        if (found == nullptr)
            found = var;
    }
    return found;
}

void VarFrame::ImportFrame(VarFrame* vf) {
    if (m_localNames != nullptr && this != m_fileScopeFrame)
        m_localNames->AddAll();
    if (m_setOfFrames.insert(vf).second)
        m_setOfFrames.insert(vf->m_setOfFrames.begin(), vf->m_setOfFrames.end());
    m_setOfDirectFrames.insert(vf);
}

void VarFrame::WriteToStream(xostream& os) const {
    os << "{\n";
    {
        const Indenter indenter(os, 4);
        os << "Local vars\n";
        m_localVariables.WriteToStream(os);
        os << "Parent frame\n";
        if (m_parent != nullptr)
            m_parent->WriteToStream(os);
    }
    os << "}\n";
}

// ---- dollar macros -----------------------------------------------------------------------------

const xchar* ScanDollarMacro(SubString s, SubString& name) {
    if (s.size() < 4 || s[0] != '$' || s[1] != '(')
        return nullptr;
    s += 2;
    const xchar* start = s.m_p1;
    if (!ScanIdentifier(s) || !s || *s != ')')
        return nullptr;
    name = SubString(start, s.m_p1);
    return s.m_p1 + 1;
}

void FileScopeVarFrame::AddImport(FileScopeVarFrame* frame) {
    ImportFrame(frame);
    m_imports.push_back(frame);
}

const xstring* FileScopeVarFrame::FindDollarMacro(const xstring& name) const {
    const auto it = m_dollarMacrosMap.find(name);
    if (it != m_dollarMacrosMap.end())
        return &it->second;
    for (const FileScopeVarFrame* import : m_imports) {
        if (const xstring* value = import->FindDollarMacro(name))
            return value;
    }
    return nullptr;
}

bool FileScopeVarFrame::ApplyDollarMacros(xostream& os, SubString s) const {
    bool changed = false;
    while (s) {
        SubString name;
        const xchar* end = ScanDollarMacro(s, name);
        const xstring* value = end == nullptr ? nullptr : FindDollarMacro(name.GetString());
        if (value != nullptr) {
            os << *value;
            s.setbegin(end);
            changed = true;
        } else {
            os << *s;
            ++s;
        }
    }
    return changed;
}

bool FileScopeVarFrame::ApplyDollarMacros(xstring& s) const {
    bool changed = false;
    StringStream os(4096);
    while (ApplyDollarMacros(os, s)) {
        os.GetString(s, true);
        changed = true;
    }
    return changed;
}

void FileScopeVarFrame::InsertDollarMacro(const xstring& name, const xstring& value) {
    m_dollarMacrosMap[name] = value;
    xstring variableName("_");
    variableName += name;
    variableName += '_';
    AddVariable(new LSVar(variableName, value));
}

}  // namespace vorn

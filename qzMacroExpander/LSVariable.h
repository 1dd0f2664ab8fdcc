// What a name can stand for: macros and typed values, the frames that hold them, and look-up.
//
// A frame owns its variables, and they die with it; nothing else removes one. Frames form a chain
// through their parents, and frames can import other frames; neither owns the other, so a parent
// and an import must outlive whoever points to it.
//
// Names, bodies and formal arguments are views of the text in which the definition stands: a
// source text must outlive the frames that its definitions land in. Where that text was put
// together during expansion, the variable keeps it alive itself (m_keptText).
//
// One thread at a time may use a chain of frames.
#pragma once

#include <array>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "qzUtils/StringExt.h"
#include "qzUtils/SubString.h"
#include "qzUtils/xostream.h"

namespace vorn {

class VarFrame;
class FileScopeVarFrame;
class TextOrigins;

// What a variable is; also the type of a formal argument and of a macro's result.
enum ELSVariable {
    LSV_UNDEF,   // no type
    LSV_MACRO,   // a macro; for formal arguments and results: untyped text
    LSV_BOOL,    // "bool"
    LSV_INT,     // "int"
    LSV_DOUBLE,  // "double"
    LSV_CHAR,    // "char"
    LSV_STRING,  // "string"
};

static_assert(LSV_UNDEF == 0 && LSV_STRING == 6);

// A text that came into being during expansion, shared by the definitions that were read from it.
// Null stands for a text of the host's, whose life is the host's affair.
using KeptText = std::shared_ptr<const xstring>;

class LSVariable {
public:
    SubString m_name;     // not owned
    LSVariable* m_next;   // the variable added to the same list before this one
    KeptText m_keptText;  // what m_name and further views of the variable lie in, if not the host's
    uint8 m_nameSlot = 0;  // see LocalNames

    explicit LSVariable(SubString name) : m_name(name), m_next(nullptr) {}
    virtual ~LSVariable() = default;
    LSVariable(const LSVariable&) = delete;
    LSVariable& operator=(const LSVariable&) = delete;

    virtual ELSVariable GetType() const = 0;
    virtual void WriteToStream(xostream& os) const = 0;  // the name and what it stands for
    virtual void WriteValue(xostream& os) const = 0;     // what it stands for

    SubString GetName() const { return m_name; }
};

// One formal argument of a macro.
struct LSFormalArg {
    SubString m_name;    // a view of the definition
    ELSVariable m_type;  // LSV_MACRO for an untyped argument
    bool m_isFnArg;      // declared with () behind its name: it stands for a function
};

class LSMacroVariable : public LSVariable {
public:
    bool m_isPython;                  // the expanded body is evaluated as a Python expression
    bool m_naked;                     // a call makes no frame of its own
    bool m_isFnArg;                   // a formal argument that stands for a function
    ELSVariable m_returnType;         // LSV_MACRO, or the type that the body is converted to
    xvector<LSFormalArg> m_argNames;  // in the order of the definition
    VarFrame* m_context;              // parent of the call's frame; null: the caller's frame
    ssize_t m_indentation;            // source indentation of the body in columns; -1 without one
    StringX m_substitutionString;     // the body

    LSMacroVariable(ELSVariable returnType, SubString name, VarFrame* context, bool isPython,
                    bool naked, bool isFnArg)
        : LSVariable(name),
          m_isPython(isPython),
          m_naked(naked),
          m_isFnArg(isFnArg),
          m_returnType(returnType),
          m_context(context),
          m_indentation(-1) {}

    ELSVariable GetType() const override { return LSV_MACRO; }
    void WriteToStream(xostream& os) const override;
    void WriteValue(xostream& os) const override;

    bool IsPython() const { return m_isPython; }
    bool IsNaked() const { return m_naked; }
    bool IsFnArg() const { return m_isFnArg; }
    ELSVariable GetReturnType() const { return m_returnType; }
    VarFrame* GetContext() const { return m_context; }
    ssize_t GetIndent() const { return m_indentation; }
    SubString GetSubstitutionString() const { return m_substitutionString; }

    ssize_t GetNumArgs() const { return m_argNames.size(); }
    const LSFormalArg& GetArg(ssize_t i) const { return m_argNames[i]; }
    void AddArgName(SubString name, ELSVariable type, bool isFnArg) {
        m_argNames.push_back(LSFormalArg{name, type, isFnArg});
    }
    void ClearArgs() { m_argNames.clear(); }

    // The index of the first formal argument of that exact name; -1 if there is none.
    ssize_t FindArgName(SubString name) const;

    // Sets the body and the indentation, in columns, that its lines have in their source. The
    // body is borrowed unless copy is set.
    void SetSubstitutionString(SubString s, bool copy, ssize_t indentation) {
        m_indentation = indentation;
        m_substitutionString.Set(s, copy);
    }

    // Writes name(a,b), or the bare name where there are no formal arguments.
    void WriteNameAndFormalParameterList(xostream& os) const;
};

// A typed value, stored as the very text that a use of the variable writes.
class LSValueVariable : public LSVariable {
public:
    ELSVariable m_type;  // LSV_BOOL to LSV_STRING
    xstring m_value;

    LSValueVariable(ELSVariable type, SubString name, SubString value)
        : LSVariable(name), m_type(type), m_value(value) {}

    ELSVariable GetType() const override { return m_type; }
    void WriteToStream(xostream& os) const override;
    void WriteValue(xostream& os) const override;
};

// A string variable that owns its name, for names whose text does not outlive the call.
class LSVar : public LSValueVariable {
public:
    xstring m_nameStr;

    LSVar(SubString name, SubString value)
        : LSValueVariable(LSV_STRING, name, value), m_nameStr(name) {
        m_name = m_nameStr;
    }
};

// Look-ups are counted once SetStarted() has been called, for whoever wants to measure them. The
// library decides nothing by these, and they are not atomic. The count wraps.
extern bool s_started;
extern int32 s_count;
void SetStarted();

// The variables of a long list by the hash of their names: a table with open addressing, in which
// a name that is not there costs a look at one slot, as most words of a text are no names.
class LSVariableIndex {
public:
    static std::size_t Hash(SubString name);

    // Adds var, or puts it in the place of the variable of its name.
    void Set(LSVariable* var);

    // hash is Hash(name).
    LSVariable* Find(SubString name, std::size_t hash) const;

private:
    struct Slot {
        std::size_t hash;
        LSVariable* variable;  // null where the slot is free
    };

    // The slot that holds name, or the free one where it belongs.
    std::size_t FindSlot(SubString name, std::size_t hash) const;
    void Grow();

    std::vector<Slot> m_slots;  // as many as a power of two, at most half of them taken
    std::size_t m_taken = 0;
};

// Which names may be bound in the frames that are open below a file's: for each slot that names
// fall into, the number of variables there. Deep in a recursion a name that no call has bound, as
// that of the macro itself, is then found without asking the frame of every call.
class LocalNames {
public:
    static uint8 SlotOf(SubString name) {
        const auto byte = [](xchar c) {
            return static_cast<uint8>(c);
        };
        return name.empty() ? uint8{0}
                            : static_cast<uint8>(7 * byte(*name.m_p1) + 31 * byte(name.m_p2[-1])
                                                 + static_cast<uint8>(name.size()));
    }

    void Add(uint8 slot) { ++m_counts[slot]; }
    void Remove(uint8 slot) { --m_counts[slot]; }

    // From now on any name may be bound: a frame imports another.
    void AddAll() { m_mayHoldAll = true; }

    bool MayHold(SubString name) const { return m_mayHoldAll || m_counts[SlotOf(name)] != 0; }

private:
    std::array<std::size_t, 256> m_counts{};
    bool m_mayHoldAll = false;
};

// The variables of one frame.
//
// A list of a few variables is searched from the newest on; a longer one has an index.
class LSVariableList {
public:
    LSVariable* m_first = nullptr;           // newest first, through m_next; this list owns
    std::map<SubString, LSVariable*> m_map;  // the newest variable of each name
    LocalNames* m_localNames = nullptr;  // counts the variables, where it is not null; not owned

    LSVariableList() = default;
    ~LSVariableList();
    LSVariableList(const LSVariableList&) = delete;
    LSVariableList& operator=(const LSVariableList&) = delete;

    // Takes ownership. A variable of the same name is hidden by the new one and lives on.
    void Add(LSVariable* var);

    // The newest variable of that exact name, or null.
    LSVariable* Find(SubString name) {
        CountLookup();
        return m_index != nullptr ? m_index->Find(name, LSVariableIndex::Hash(name)) : Walk(name);
    }

    // The same, for whoever asks many lists. hash is LSVariableIndex::Hash(name).
    LSVariable* Find(SubString name, std::size_t hash) {
        CountLookup();
        return m_index != nullptr ? m_index->Find(name, hash) : Walk(name);
    }

    void WriteToStream(xostream& os) const;

private:
    static void CountLookup() {
        if (s_started)
            s_count = static_cast<int32>(static_cast<uint32>(s_count) + 1);
    }

    LSVariable* Walk(SubString name) const {
        LSVariable* var = m_first;
        while (var != nullptr && var->m_name != name)
            var = var->m_next;
        return var;
    }

    void AddToIndex(LSVariable* var);

    ssize_t m_size = 0;                        // variables on the list, hidden ones included
    std::unique_ptr<LSVariableIndex> m_index;  // the same as m_map, once there are many
};

// One scope: a file, a call of a macro, a branch, a turn of a loop.
class VarFrame {
public:
    std::set<VarFrame*> m_setOfFrames;  // all that was reachable through imports, as of each import
    std::set<VarFrame*> m_setOfDirectFrames;  // what was imported directly
    LSVariableList m_localVariables;
    VarFrame* m_parent;                   // the enclosing scope, or null
    FileScopeVarFrame* m_fileScopeFrame;  // the file's frame of the chain, or null
    LocalNames* m_localNames;             // what the frames below the file's bind, or null

    explicit VarFrame(VarFrame* parent)
        : m_parent(parent),
          m_fileScopeFrame(parent == nullptr ? nullptr : parent->m_fileScopeFrame),
          m_localNames(parent == nullptr ? nullptr : parent->m_localNames) {
        m_localVariables.m_localNames = m_localNames;
    }
    VarFrame(const VarFrame&) = delete;
    VarFrame& operator=(const VarFrame&) = delete;

    // Takes ownership.
    void AddVariable(LSVariable* var) { m_localVariables.Add(var); }

    VarFrame* GetParent() const { return m_parent; }
    FileScopeVarFrame* GetFileScopeVarFrame() const { return m_fileScopeFrame; }

    // What name stands for here: this frame with its imports, then each parent with its own; null
    // if nothing. Throws LexScannerException "Ambiguous macro name : " with pos as its position
    // where the imports of a frame give two answers that its direct imports do not settle.
    LSVariable* Find(SubString name, const xchar* pos) {
        int asked = 0;
        for (VarFrame* frame = this; frame != nullptr; frame = frame->m_parent) {
            if (++asked > s_nearFrames)
                return FindFar(frame, name, pos);
            if (LSVariable* var = frame->FindLocal(name, pos))
                return var;
        }
        return nullptr;
    }

    // The same without imports: never throws.
    LSVariable* Find2(SubString name);

    // This frame and its imports, without its parents.
    LSVariable* FindLocal(SubString name, const xchar* pos) {
        if (LSVariable* var = m_localVariables.Find(name))
            return var;
        return m_setOfFrames.empty() ? nullptr : FindInImports(name, pos);
    }

    // The direct imports alone, with what they define themselves in front of what they import.
    LSVariable* FindInDirectImports(SubString name, const xchar* pos);

    // Makes the definitions of vf, and of what vf has imported by now, visible here. vf is not
    // owned. Cycles are not looked for.
    void ImportFrame(VarFrame* vf);

    // A dump of the variables of this frame and of its parents.
    void WriteToStream(xostream& os) const;

private:
    // The frames that are asked before the count of local names is: in most texts, all there are.
    static constexpr int s_nearFrames = 8;

    // Whether a frame other than the file's may bind the name; also where no file's frame is there.
    bool MayBeLocal(SubString name) const {
        return m_localNames == nullptr || m_localNames->MayHold(name);
    }

    LSVariable* FindFar(VarFrame* frame, SubString name, const xchar* pos);
    LSVariable* FindInImports(SubString name, const xchar* pos);
    LSVariable* Find2(SubString name, std::size_t hash);
};

// The form of a use of a dollar macro, $(NAME): if s starts with one, sets name to the identifier
// and returns the position behind the closing bracket; otherwise returns null.
const xchar* ScanDollarMacro(SubString s, SubString& name);

// The frame of a file. It holds dollar macros too: named strings that are put in place of $(NAME)
// inside double-quoted strings.
class FileScopeVarFrame : public VarFrame {
public:
    xvector<const FileScopeVarFrame*> m_imports;  // in the order of AddImport, repeats included
    std::map<xstring, xstring> m_dollarMacrosMap;
    TextOrigins* m_textOrigins = nullptr;  // see TextOrigins.h; not owned, null: nothing is kept

    FileScopeVarFrame() : VarFrame(nullptr) {
        m_fileScopeFrame = this;
        m_localNames = &m_names;
    }

    // Imports a frame, which is not owned, with its dollar macros.
    void AddImport(FileScopeVarFrame* frame);

    // The value in this frame, or else in its imports, depth first; null if there is none. Valid
    // until the macro is set again or its frame ends.
    const xstring* FindDollarMacro(const xstring& name) const;

    // Writes s with each use of a known dollar macro replaced, once. Unknown names stay. True if
    // anything was replaced.
    bool ApplyDollarMacros(xostream& os, SubString s) const;

    // Replaces in place until nothing changes, so that values may hold uses themselves. A value
    // that leads back to itself does not end. True if anything was replaced.
    bool ApplyDollarMacros(xstring& s) const;

    // Sets a dollar macro, and adds a string variable _NAME_ with the same value.
    void InsertDollarMacro(const xstring& name, const xstring& value);

private:
    LocalNames m_names;
};

}  // namespace vorn

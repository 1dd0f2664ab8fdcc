// A host with its files in memory: memory_files NAME writes the expansion of one of them.
//
// The text of an imported file stands where its directive stood. The library leaves each @import
// in its output, as a piece of its own, and what the handler was given tells which piece that is.

#include <algorithm>
#include <map>
#include <vector>

#include "qzMacroExpander/LSSourceFile.h"
#include "qzMacroExpander/MacroExpand.h"
#include "qzUtils/Tracer.h"

namespace {

using namespace vorn;

class MemoryFiles final : public ImportHandler {
public:
    // The files stay where they are from here on: the definitions and the errors point into them.
    explicit MemoryFiles(std::vector<LSSourceFile> files) : m_files(std::move(files)) {}

    const LSSourceFile* Find(const xstring& name) const {
        const auto isIt = [&name](const LSSourceFile& file) {
            return file.m_name == name;
        };
        const auto found = std::find_if(m_files.begin(), m_files.end(), isIt);
        return found == m_files.end() ? nullptr : &*found;
    }

    xstring Expand(const LSSourceFile& file, VarFrame* vf) {
        xstring text;
        OutputPieces pieces;
        MacroExpand(this, vf, file.m_buffer, 0, 0, text, pieces);
        return InsertImports(text, pieces);
    }

    bool HandleImport(VarFrame* vf, const xstring& importPath, const char* errorpos) override {
        if (*errorpos != '"')
            throw LexScannerException("A path in quotes is wanted here", errorpos);
        const LSSourceFile* file = Find(importPath);
        if (file == nullptr)
            return false;
        if (std::find(m_open.begin(), m_open.end(), file) != m_open.end())
            throw LexScannerException("A file imports itself", errorpos);
        m_open.push_back(file);
        m_imported[errorpos] = Expand(*file, vf);
        m_open.pop_back();
        return true;
    }

    // Turns the position of an error into a file and a line.
    void Locate(LexScannerException& e) const {
        for (const LSSourceFile& file : m_files)
            file.GetFilenameAndLineNumber(e.m_pos, e.m_path, e.m_lineNumber);
    }

private:
    xstring InsertImports(const xstring& text, const OutputPieces& pieces) const {
        xstring result;
        const char* p = text.data();
        for (const OutputPiece& piece : pieces.m_pieces) {
            const auto import = m_imported.lower_bound(piece.in.m_p1);
            if (import != m_imported.end() && import->first < piece.in.m_p2)
                result += import->second;
            else
                result.append(p, p + piece.size());
            p += piece.size();
        }
        return result;
    }

    std::vector<LSSourceFile> m_files;
    std::vector<const LSSourceFile*> m_open;    // which imports have been begun
    std::map<const char*, xstring> m_imported;  // by the position of the directive's path
};

}  // namespace

int main(int argc, char** argv) {
    MemoryFiles files({
        {"letter.txt",    "@import \"lib/greet.txt\"\ngreet(Ada)\n@import \"lib/end.txt\"\n"},
        {"lib/greet.txt", "@def greet(who) = Dear who,\n@import \"lib/head.txt\""           },
        {"lib/head.txt",  "-- a letter --"                                                  },
        {"lib/end.txt",   "-- the end --"                                                   },
        {"wrong.txt",     "Well,\n@import \"lib/fails.txt\"\n"                              },
        {"lib/fails.txt", "\n@fail(\"stop\")\n"                                             },
        {"loop.txt",      "On and on:\n@import \"loop.txt\"\n"                              },
    });
    const LSSourceFile* file = argc == 2 ? files.Find(argv[1]) : nullptr;
    if (file == nullptr)
        return 2;
    FileScopeVarFrame frame;
    try {
        xcout << files.Expand(*file, &frame);
    } catch (LexScannerException& e) {
        files.Locate(e);
        TracerX trace;
        e.Write(trace);
        trace << "\n";
        return 1;
    }
}

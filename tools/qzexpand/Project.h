// A text and the files that it imports, expanded in one frame.
//
// An @import is followed at once, so that the definitions of the imported file are there for the
// text behind it. The text of an imported file goes where the directive stood, or nowhere: then
// only what it defines, and what it prints, has an effect. A file is read and expanded as often as
// it is imported.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ImportSplices.h"
#include "Root.h"
#include "Session.h"
#include "UnknownNames.h"
#include "common/Files.h"
#include "qzMacroExpander/MacroExpand.h"

namespace qztools {

class Project final : public vorn::ImportHandler {
public:
    // Throws Fault where the root of the options is no folder.
    explicit Project(Session& session);

    // Expands the input that the options name. REQUIRES: called once. Throws LexScannerException,
    // LimitReached and Fault; the last one also for unknown names, where the options refuse them.
    Expansion Expand();

    bool HandleImportPath(const vorn::xstring& importPath, const char* errorpos) override;
    bool HandleImport(vorn::VarFrame* vf, const vorn::xstring& importPath,
                      const char* errorpos) override;

private:
    // A file as it was read.
    struct File {
        std::string path;  // empty for standard input
        FileId id;
        vorn::xstring text;
    };

    // A file whose expansion has begun and not ended.
    struct OpenFile {
        const SourceText* text;
        std::string path;
        FileId id;
        const vorn::ExpandedOutput* output;
        std::vector<Import> imports{};  // that are to be replaced
    };

    File ReadInput() const;
    std::string ReadCandidate(File& file) const;
    File ReadImport(const std::string& path, const char* errorpos) const;
    std::vector<std::string> Candidates(const std::string& path) const;
    std::string RelativeToOpenFile(const std::string& path) const;
    void RefuseCycle(const File& file, const char* errorpos) const;
    const SourceText& AddText(File& file, const char* importedAt);
    Expansion ExpandFile(File file, const char* importedAt, vorn::VarFrame* vf);
    bool IsTextUsed(std::size_t depth) const;

    Session& m_session;
    std::optional<Root> m_root;
    UnknownNames m_unknownNames;
    std::vector<OpenFile> m_open;            // outermost first
    std::vector<std::string> m_importPaths;  // of @importpath, in their order
    vorn::ssize_t m_outputSize = 0;          // what has been written so far
};

}  // namespace qztools

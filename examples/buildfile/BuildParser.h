// The parser of build descriptions: a client of the project front end, to be copied from.
//
//   file      any number of settings, macros, targets and imports
//   setting   $compiler = "text"    $output = "path"
//   macro     $NAME = "text"    $NAME = path "text"          for the strings behind it
//   target    program NAME { properties }    library NAME { properties }
//   property  sources { "path" "path" ... }    uses NAME, NAME ... ;    optimise = expression ;
//   import    @import "path"
//
// A NAME is made of identifiers and slashes. All of the macro language may be used anywhere: this
// grammar is that of the text which expansion leaves.
#pragma once

#include <optional>
#include <set>
#include <string>

#include "Build.h"
#include "qzMacroExpander/Mpfw.h"

namespace buildfile {

// What the parsers of one project share, besides the frame of the library.
struct Project {
    vorn::MpfwSourceFileList files;  // the texts, which everything else points into
    vorn::MpfwFrame frame{files};
    std::string folder;  // of the root file; imports are found from here
    std::set<const vorn::MpfwSourceFile*> parsed;
    Build build;
};

class BuildParser : public vorn::MpfwParser {
public:
    explicit BuildParser(Project& project) : MpfwParser(project.frame), m_project(project) {}

    // Parses the expanded text of a file into the build. Throws LexScannerException with a
    // position in the text that the author wrote.
    void ParseFile(vorn::MpfwSourceFile& file);

    bool HandleImport(vorn::VarFrame* vf, const vorn::xstring& importPath,
                      const vorn::xchar* errorpos) override;
    bool ResolveImportPath(const vorn::xstring& importPath, vorn::xstring& localPath) override;
    void ProcessImportedFile(vorn::MpfwSourceFile* srcFile) override;

private:
    void ParseStatement();
    void ParseDollar();
    void ParseTarget(Target::Kind kind);
    void Locate(Target& target);
    void ParseProperty(Target& target);
    void ParseSources(Target& target);
    void ParseUses(Target& target);

    Project& m_project;
    vorn::MpfwSourceFile* m_file = nullptr;                       // the one that is being parsed
    std::optional<vorn::OutputPiecesMonotonePosMapper> m_mapper;  // on its pieces
    int m_importDepth = 0;
};

// Reads a build description with all that it imports. False if anything is wrong with it; then
// the errors have been reported to standard error, each as "path(line) : message".
bool ReadBuild(const std::string& path, Build& build);

}  // namespace buildfile

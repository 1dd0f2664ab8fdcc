#include "BuildParser.h"

#include <filesystem>
#include <functional>

#include "qzUtils/FilePath.h"
#include "qzUtils/StringStream.h"
#include "qzUtils/Tracer.h"

namespace buildfile {

using namespace vorn;

namespace {

// Deeper imports are a cycle. The library follows one until the stack ends.
constexpr int s_maxImportDepth = 50;

std::string Std(const xstring& s) {
    return std::string(s.begin(), s.end());
}

xstring Qz(const std::string& s) {
    return xstring(s.data(), s.data() + s.size());
}

[[noreturn]] void Fail(const char* message, const std::string& name, const LSToken& token) {
    throw LexScannerException(Qz(message + name), token);
}

// Counts the calls of a function that are under way, however they end.
class Nesting {
public:
    explicit Nesting(int& depth) : m_depth(depth) { ++m_depth; }
    ~Nesting() { --m_depth; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

private:
    int& m_depth;
};

bool Holds(SubString text, const xchar* pos) {
    const std::less<const xchar*> before;
    return !before(pos, text.m_p1) && before(pos, text.m_p2);
}

// Moves an error from the expanded text of a file to the text that its author wrote. Every other
// error stays: one of an imported file has been moved already.
void MapError(const MpfwSourceFileList& files, MpfwSourceFile& file, LexScannerException& e) {
    const SubString expanded = file.m_expanded;
    if (e.m_pos == expanded.m_p2) {
        e.m_pos = file.m_buffer.data_end();  // the end is no byte, so no piece leads back from it
        return;
    }
    if (!Holds(expanded, e.m_pos))
        return;
    const xchar* pos = e.m_pos;
    file.AdjustErrorPosition(e);
    // What the expansion put together, such as an item of a loop's list, stands in no file: the
    // text in front of it does.
    while (pos != expanded.m_p1 && files.GetSrcFileIndexContainingPosition(e.m_pos) == -1) {
        e.m_pos = --pos;
        file.AdjustErrorPosition(e);
    }
}

}  // namespace

// ---- files -------------------------------------------------------------------------------------

void BuildParser::ParseFile(MpfwSourceFile& file) {
    // A file that is imported twice has been expanded twice, but describes its targets once.
    if (!m_project.parsed.insert(&file).second)
        return;
    m_file = &file;
    m_mapper.emplace(file.m_pieces);
    try {
        Init(file.m_expanded);
        while (m_token != TOKEN_END)
            ParseStatement();
    } catch (LexScannerException& e) {
        MapError(m_project.files, file, e);
        throw;
    }
}

// Called by the expansion.
bool BuildParser::HandleImport(VarFrame* vf, const xstring& importPath, const xchar* errorpos) {
    if (m_importDepth == s_maxImportDepth)
        throw LexScannerException("Imports are nested too deeply", errorpos);
    const Nesting nesting(m_importDepth);
    return MpfwParser::HandleImport(vf, importPath, errorpos);
}

// Called by the expansion and again by the parse, which both get the same answer: search paths
// that are added in between are searched last.
bool BuildParser::ResolveImportPath(const xstring& importPath, xstring& localPath) {
    const std::filesystem::path folder = m_project.folder;
    const std::string name = Std(importPath);
    const auto found = [&](const std::filesystem::path& path) {
        localPath = Qz(path.string());
        NormalisePath(localPath);
        return std::filesystem::is_regular_file(Std(localPath));
    };
    if (found(folder / name))
        return true;
    for (const xstring& path : m_frame.m_importPaths) {
        if (found(folder / Std(path) / name))
            return true;
    }
    return false;
}

// Called by the parse. This parser stands in the middle of the importing text; another one on the
// same project reads the imported text.
void BuildParser::ProcessImportedFile(MpfwSourceFile* srcFile) {
    if (srcFile == nullptr)
        Fail("Not imported before it was parsed: ", Std(m_token.GetTokenString()), m_token);
    BuildParser(m_project).ParseFile(*srcFile);
}

// ---- the grammar -------------------------------------------------------------------------------

void BuildParser::ParseStatement() {
    if (m_token == TOKEN_DOLLAR)
        ParseDollar();
    else if (m_token == "program")
        ParseTarget(Target::Program);
    else if (m_token == "library")
        ParseTarget(Target::Library);
    else if (!ParseImportDirective())
        ThrowExpectedException("a setting, a target or @import");
}

// Settings and macros start alike: the name decides, which is read ahead on a copy of the text.
void BuildParser::ParseDollar() {
    SubString ahead = m_str;
    const LSToken name = LsScanToken(ahead, false);
    xstring value;
    if (name == "compiler") {
        ParseStringSetting("compiler", value);
        m_project.build.compiler = Std(value);
    } else if (name == "output") {
        ParsePathSetting("output", value);
        m_project.build.output = Std(value);
    } else {
        ParseMacroDef();
    }
}

void BuildParser::ParseTarget(Target::Kind kind) {
    Target target;
    target.kind = kind;
    Locate(target);
    ReadNextToken();
    const LSToken nameToken = m_token;
    target.name = Std(ParsePath());
    if (m_project.build.Find(target.name) != nullptr)
        Fail("Target described twice: ", target.name, nameToken);
    ParseGivenToken(TOKEN_LEFT_CURLY, "{");
    while (m_token != TOKEN_RIGHT_CURLY)
        ParseProperty(target);
    ReadNextToken();
    m_project.build.targets.push_back(target);
}

// Any position can be mapped, not those of errors alone. Those of the targets rise.
void BuildParser::Locate(Target& target) {
    const xchar* source =
        m_mapper->MapOutputPositionToAddress(m_token.m_str.m_p1 - m_file->m_expanded.data());
    xstring path;
    ssize_t line = 0;
    if (m_project.files.GetFilenameAndLineNumber(source, path, line)) {
        target.file = Std(path);
        target.line = line;
    }
}

void BuildParser::ParseProperty(Target& target) {
    if (m_token == "sources") {
        ReadNextToken();
        ParseSources(target);
    } else if (m_token == "uses") {
        ReadNextToken();
        ParseUses(target);
    } else if (m_token == "optimise") {
        ReadNextToken();
        ParseGivenToken(TOKEN_EQUAL, "=");
        target.optimise = ParseInt32(false);
        ParseGivenToken(TOKEN_SEMICOLON, ";");
    } else {
        ThrowExpectedException("sources, uses, optimise or }");
    }
}

void BuildParser::ParseSources(Target& target) {
    ParseGivenToken(TOKEN_LEFT_CURLY, "{");
    while (m_token != TOKEN_RIGHT_CURLY) {
        target.sources.push_back(Std(ParseFileOrDirName()));  // stays at the string
        ReadNextToken();
    }
    ReadNextToken();
}

void BuildParser::ParseUses(Target& target) {
    while (true) {
        const LSToken nameToken = m_token;
        target.uses.push_back(Std(ParsePath()));
        if (m_project.build.Find(target.uses.back()) == nullptr)
            Fail("No such target: ", target.uses.back(), nameToken);
        if (m_token != TOKEN_COMMA)
            break;
        ReadNextToken();
    }
    ParseGivenToken(TOKEN_SEMICOLON, ";");
}

// ---- the whole ---------------------------------------------------------------------------------

bool ReadBuild(const std::string& path, Build& build) {
    Project project;
    project.folder = std::filesystem::path(path).parent_path().string();
    try {
        BuildParser parser(project);
        MpfwSourceFile* root = parser.AddFile(Qz(path), SubString());
        if (root == nullptr)
            return false;  // AddFile has reported what is wrong
        parser.ParseFile(*root);
    } catch (const LexScannerException& e) {
        TracerX os;
        project.files.WriteLexScannerError(os, e);
        return false;
    }
    build = project.build;
    return true;
}

}  // namespace buildfile

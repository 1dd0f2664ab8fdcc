#include "Project.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <new>

#include "Limits.h"
#include "Newlines.h"
#include "common/Fault.h"
#include "common/Views.h"
#include "qzUtils/FilePath.h"

namespace qztools {

using namespace vorn;

// ---- output ------------------------------------------------------------------------------------

namespace {

// What a sink throws in the middle of an expansion that has become too long.
struct TooLong {};

// Appends to a string, and keeps count of the output.
class StringSink final : public IOutputStream {
public:
    StringSink(xstring& text, const Options& options, ssize_t& outputSize)
        : m_text(text), m_options(options), m_outputSize(outputSize) {}
    void WriteStream(const void* p, ssize_t n) override {
        const auto* bytes = static_cast<const char*>(p);
        m_outputSize += n;
        if (IsTooLong(m_options, m_outputSize))
            throw TooLong();
        m_text.append(bytes, bytes + n);
    }
    void FlushStream() override {}

private:
    xstring& m_text;
    const Options& m_options;
    ssize_t& m_outputSize;
};

class NullSink final : public IOutputStream {
public:
    void WriteStream(const void*, ssize_t) override {}
    void FlushStream() override {}
};

// The start of the last piece that stands for a place in a text; null if there is none.
const char* LastPosition(const OutputPieces& pieces) {
    const auto first = std::reverse_iterator(pieces.m_pieces.end());
    const auto end = std::reverse_iterator(pieces.m_pieces.begin());
    const auto last =
        std::find_if(first, end, [](const OutputPiece& piece) { return piece.in.m_p1 != nullptr; });
    return last == end ? nullptr : last->in.m_p1;
}

}  // namespace

// ---- the project -------------------------------------------------------------------------------

namespace {

// With its slash, as that may be all there is of it.
std::string FolderOf(const std::string& path) {
    return path.substr(0, path.rfind('/') + 1);
}

}  // namespace

Project::Project(Session& session) : m_session(session), m_unknownNames(session) {
    const Options& options = session.options;
    if (!options.root)
        return;
    std::vector<std::string> named = options.importFolders;
    if (const std::string folder = FolderOf(options.input); !folder.empty())
        named.push_back(folder);
    m_root.emplace(*options.root, named);
}

Expansion Project::Expand() {
    Expansion expansion = ExpandFile(ReadInput(), nullptr, &m_session.frame);
    if (m_session.options.unknownNames == Unknown::Refuse && m_unknownNames.HaveBeenFound())
        throw Fault("unknown names are treated as errors");
    return expansion;
}

// importedAt is where the file is imported, null for the input.
const SourceText& Project::AddText(File& file, const char* importedAt) {
    const std::string name = file.path.empty() ? "<stdin>" : file.path;
    SourceText text{VisibleName(name), std::move(file.text), importedAt, file.path};
    ReadLineEnds(text, m_session.options.newlines);
    return m_session.texts.Add(std::move(text));
}

Expansion Project::ExpandFile(File file, const char* importedAt, VarFrame* vf) {
    const SourceText& text = AddText(file, importedAt);
    Expansion expansion;
    StringSink stringSink(expansion.text, m_session.options, m_outputSize);
    NullSink nullSink;
    xostream os(IsTextUsed(m_open.size()) ? static_cast<IOutputStream&>(stringSink) : nullSink);
    ExpandedOutput output(os);
    m_open.push_back({&text, file.path, file.id, &output});
    m_session.texts.SetCurrent(text);
    try {
        MacroExpand(this, vf, text.text, 0, 0, output);
    } catch (const std::bad_alloc&) {
        throw MemoryRanOut(LastPosition(output.m_pieces));
    } catch (const TooLong&) {
        throw OutputIsFull(m_session.options, LastPosition(output.m_pieces));
    } catch (const LexScannerException&) {
        m_unknownNames.Report(output.m_pieces);  // one of them may be what has led to the error
        throw;
    }
    m_unknownNames.Report(output.m_pieces);
    output.GetPieces(expansion.pieces);
    const std::vector<Import> imports = std::move(m_open.back().imports);
    m_open.pop_back();
    if (!m_open.empty())
        m_session.texts.SetCurrent(*m_open.back().text);
    return imports.empty() ? std::move(expansion) : SpliceImports(expansion, imports);
}

// Whether anything is made of the text of a file that so many imports have led to.
bool Project::IsTextUsed(std::size_t depth) const {
    return depth == 0 || m_session.options.imports == Imports::Inline;
}

// ---- imports -----------------------------------------------------------------------------------

namespace {

[[noreturn]] void ThrowImportError(const std::string& message, const char* errorpos) {
    throw LexScannerException(xstring(ToSubString(message)), errorpos);
}

std::string ApplyDollarMacros(const Session& session, const xstring& path) {
    xstring text = path;
    session.frame.ApplyDollarMacros(text);
    return std::string(ToView(text));
}

std::string Join(const std::string& folder, const std::string& path) {
    const bool isWhole = folder.empty() || path.starts_with('/');
    return isWhole ? path : folder + (folder.ends_with('/') ? "" : "/") + path;
}

}  // namespace

bool Project::HandleImportPath(const xstring& importPath, const char*) {
    xstring path(ToSubString(RelativeToOpenFile(ApplyDollarMacros(m_session, importPath))));
    NormalisePath(path);
    m_importPaths.emplace_back(ToView(path));
    return true;
}

bool Project::HandleImport(VarFrame* vf, const xstring& importPath, const char* errorpos) {
    File file = ReadImport(ApplyDollarMacros(m_session, importPath), errorpos);
    RefuseCycle(file, errorpos);
    Expansion expansion = ExpandFile(std::move(file), errorpos, vf);
    OpenFile& importer = m_open.back();
    const Imports imports = m_session.options.imports;
    if (imports == Imports::Drop)
        expansion = {};
    if (imports != Imports::Keep && IsTextUsed(m_open.size() - 1))
        importer.imports.emplace_back(errorpos, *importer.output, std::move(expansion));
    return true;
}

// ---- files -------------------------------------------------------------------------------------

Project::File Project::ReadInput() const {
    const std::string& path = m_session.options.input;
    File file;
    if (path != "-")
        file.path = path;
    const int error =
        path == "-" ? ReadStandardInput(file.text, file.id) : ReadFile(path, file.text, file.id);
    if (error != 0)
        ThrowSystemFault(path == "-" ? "standard input" : path, error);
    if (path != "-")
        m_session.filesRead.Add(path);
    return file;
}

std::string Project::RelativeToOpenFile(const std::string& path) const {
    return Join(FolderOf(m_open.back().path), path);
}

std::vector<std::string> Project::Candidates(const std::string& path) const {
    std::vector<std::string> candidates = {RelativeToOpenFile(path)};
    if (path.starts_with('/'))
        return candidates;
    for (const auto* folders : {&m_session.options.importFolders, &m_importPaths})
        for (const std::string& folder : *folders)
            candidates.push_back(Join(folder, path));
    return candidates;
}

// Returns why the file can't be read; nothing when it has been.
std::string Project::ReadCandidate(File& file) const {
    if (m_root)
        return m_root->Read(file.path, file.text, file.id);
    const int error = ReadFile(file.path, file.text, file.id);
    return error != 0 ? std::strerror(error) : "";
}

Project::File Project::ReadImport(const std::string& path, const char* errorpos) const {
    std::string reasons;
    for (const std::string& candidate : Candidates(path)) {
        File file;
        file.path = candidate;
        const std::string reason = ReadCandidate(file);
        if (reason.empty()) {
            m_session.filesRead.Add(candidate);
            return file;
        }
        reasons += "\n    " + candidate + ": " + reason;
    }
    ThrowImportError("Can't import file: " + path + reasons, errorpos);
}

// The library follows imports wherever they lead, so one that leads back would have no end.
void Project::RefuseCycle(const File& file, const char* errorpos) const {
    const auto isSame = [&file](const OpenFile& open) {
        return open.id == file.id;
    };
    const auto start = std::find_if(m_open.begin(), m_open.end(), isSame);
    if (start == m_open.end())
        return;
    std::string path;
    for (auto open = start; open != m_open.end(); ++open)
        path += open->text->name + " -> ";
    ThrowImportError(file.path + " imports itself: " + path + file.path, errorpos);
}

}  // namespace qztools

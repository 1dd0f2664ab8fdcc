#include "LoadedMap.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <utility>

#include "common/Fault.h"
#include "common/Files.h"
#include "common/Views.h"

namespace qztools {

namespace fs = std::filesystem;

// ---- names -------------------------------------------------------------------------------------

namespace {

// The normal form of a path, if it leads to the same file.
std::string NormalForm(const fs::path& path) {
    const fs::path normal = path.lexically_normal();
    std::error_code error;
    const bool isSame = !fs::exists(path, error) || fs::equivalent(path, normal, error);
    return (isSame ? normal : path).string();
}

}  // namespace

std::string PathOfName(const std::string& mapPath, const Whereabouts& whereabouts,
                       const std::string& name) {
    const fs::path folder = whereabouts.base ? fs::path(*whereabouts.base)
                            : mapPath == "-" ? fs::path()
                                             : fs::path(mapPath).parent_path();
    return NormalForm(folder / name);
}

std::string OutputPath(const std::string& mapPath, const Whereabouts& whereabouts,
                       const std::string& name) {
    if (whereabouts.output)
        return *whereabouts.output;
    if (name == "-")
        throw Fault(mapPath
                    + ": the output went to standard output; --output FILE tells where it"
                      " is now");
    return PathOfName(mapPath, whereabouts, name);
}

// ---- reading -----------------------------------------------------------------------------------

namespace {

std::string ReadOrThrow(const std::string& path, const std::string& shownName) {
    vorn::xstring bytes;
    FileId id;
    const int error = path == "-" ? ReadStandardInput(bytes, id) : ReadFile(path, bytes, id);
    if (error != 0)
        ThrowSystemFault(shownName, error);
    return std::string(ToView(bytes));
}

}  // namespace

Map ReadMap(const std::string& path) {
    return ParseMap(path, ReadOrThrow(path, path));
}

LoadedMap::LoadedMap(std::string path, const Whereabouts& whereabouts)
    : m_name(std::move(path)), m_map(ReadMap(m_name)) {
    LoadOutput(whereabouts);
    for (const MapSource& source : m_map.sources)
        LoadSource(source, whereabouts);
    m_starts.reserve(m_map.pieces.size());
    std::int64_t start = 0;
    for (const MapPiece& piece : m_map.pieces) {
        m_starts.push_back(start);
        start += piece.size;
    }
}

void LoadedMap::LoadOutput(const Whereabouts& whereabouts) {
    const std::string path = OutputPath(m_name, whereabouts, m_map.outputName);
    if (!whereabouts.output)
        RefuseOthers(path, m_map.outputSize);
    m_texts.emplace_back(path, path, ReadUnchanged(path, m_map.outputSize, m_map.outputHash));
}

void LoadedMap::LoadSource(const MapSource& source, const Whereabouts& whereabouts) {
    if (source.text) {
        m_texts.emplace_back(source.name, "", *source.text);
        return;
    }
    const std::string path = PathOfName(m_name, whereabouts, source.name);
    RefuseOthers(path, source.size);
    m_texts.emplace_back(path, path, ReadUnchanged(path, source.size, source.hash));
}

// What a map names is a file of a known size, so that nothing else is read: a pipe might never end.
void LoadedMap::RefuseOthers(const std::string& path, std::int64_t size) const {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (fs::exists(status) && !fs::is_regular_file(status) && !fs::is_directory(status))
        throw Fault(m_name + ": " + path + " is no regular file");
    if (fs::is_regular_file(status)
        && fs::file_size(path, error) != static_cast<std::uintmax_t>(size))
        ThrowChanged(path);
}

void LoadedMap::ThrowChanged(const std::string& path) const {
    throw Fault(m_name + ": " + path + " is not what it was when the map was made");
}

std::string LoadedMap::ReadUnchanged(const std::string& path, std::int64_t size,
                                     const std::string& hash) {
    std::string bytes = ReadOrThrow(path, m_name + ": " + path);
    if (static_cast<std::int64_t>(bytes.size()) != size || HashOf(bytes) != hash)
        ThrowChanged(path);
    return bytes;
}

std::size_t LoadedMap::PieceAt(std::int64_t offset) const {
    return static_cast<std::size_t>(std::upper_bound(m_starts.begin(), m_starts.end(), offset)
                                    - m_starts.begin() - 1);
}

}  // namespace qztools

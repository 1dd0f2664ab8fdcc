#include "Target.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "Message.h"
#include "common/Fault.h"

namespace qztools {

namespace fs = std::filesystem;

namespace {

// What compilers call their standard input.
constexpr std::string_view s_standardInput = "<stdin>";

std::string Absolute(const fs::path& path) {
    std::error_code error;
    return (fs::current_path(error) / path).lexically_normal().string();
}

}  // namespace

Target::Target(std::string mapPath, const Whereabouts& whereabouts, std::string folder)
    : m_mapPath(std::move(mapPath)), m_whereabouts(whereabouts), m_folder(std::move(folder)) {
    const std::string name = ReadMap(m_mapPath).outputName;
    m_outputPath = OutputPath(m_mapPath, m_whereabouts, name);
    m_ends.push_back(fs::path(m_outputPath).filename().string());
    if (name == "-") {
        m_ends.emplace_back(s_standardInput);
    } else {
        m_recordedPath = Absolute(PathOfName(m_mapPath, m_whereabouts, name));
        m_ends.push_back(fs::path(m_recordedPath).filename().string());
    }
}

// ---- names in a line ---------------------------------------------------------------------------

namespace {

constexpr std::size_t s_longestPath = 4096;
constexpr int s_mostStarts = 8;  // of names that could end at one place

bool EndsWithColour(std::string_view s) {
    constexpr std::size_t s_longestColour = 32;
    s.remove_prefix(s.size() - std::min(s.size(), s_longestColour));
    const std::size_t escape = s.rfind('\x1b');
    return escape != std::string_view::npos
           && SizeOfSequence(s.substr(escape)) == s.size() - escape;
}

// Whether a name can start behind these bytes.
bool CanStartBehind(std::string_view s) {
    constexpr std::string_view s_before = " \t\r\"'`([<>=";
    return s.empty() || s_before.find(s.back()) != std::string_view::npos
           || s.ends_with("\xe2\x80\x98") || s.ends_with("\xe2\x80\x9c") || EndsWithColour(s);
}

bool IsFile(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error);
}

}  // namespace

bool Target::IsOutput(const std::string& name) const {
    if (name == s_standardInput)
        return m_recordedPath.empty();
    const fs::path path = m_folder / fs::path(name);
    std::error_code error;
    if (fs::exists(path, error))
        return fs::equivalent(path, m_outputPath, error);
    return !m_recordedPath.empty() && Absolute(path) == m_recordedPath;
}

// Names may hold blanks: the shortest that is the output counts, unless it is the end of a longer
// one that is a file too.
std::size_t Target::FindName(std::string_view line, std::size_t nameLast) const {
    constexpr std::size_t npos = std::string_view::npos;
    std::size_t found = npos;
    for (const std::string& end : m_ends) {
        if (found != npos || !line.substr(0, nameLast).ends_with(end))
            continue;
        const std::size_t least = nameLast - std::min(nameLast, s_longestPath);
        int starts = 0;
        for (std::size_t i = nameLast - end.size() + 1; i-- > least && starts < s_mostStarts;) {
            if (!CanStartBehind(line.substr(0, i)))
                continue;
            ++starts;
            const std::string path(line.substr(i, nameLast - i));
            if (found == npos && IsOutput(path))
                found = i;
            else if (found != npos && IsFile(m_folder / fs::path(path)))
                return npos;
        }
    }
    return found;
}

// ---- the map -----------------------------------------------------------------------------------

const LoadedMap* Target::Load(const Reporter& report) {
    if (m_map != nullptr || m_isRefused)
        return m_map.get();
    try {
        m_map = std::make_unique<LoadedMap>(m_mapPath, m_whereabouts);
    } catch (const Fault& e) {
        report(e.what());
        m_isRefused = true;
    }
    return m_map.get();
}

}  // namespace qztools

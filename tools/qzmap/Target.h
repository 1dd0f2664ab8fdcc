// An output that messages can speak of, and its map.
#pragma once

#include <memory>

#include "LoadedMap.h"
#include "Remap.h"

namespace qztools {

class Target {
public:
    // Reads what the map says about its output. Throws Fault.
    // Relative names in messages start from the folder.
    Target(std::string mapPath, const Whereabouts& whereabouts, std::string folder);

    // Whether a line names the output directly in front of nameLast: returns where the name starts,
    // npos if not. A name is the output's if its path leads to that very file; a path that leads
    // nowhere is compared with the path that the map gives.
    std::size_t FindName(std::string_view line, std::size_t nameLast) const;

    // The map with its files. They are read when the first message speaks of them: the build whose
    // messages come in may have made them just before. Null, after a report, where it is not fit.
    const LoadedMap* Load(const Reporter& report);
    bool IsRefused() const { return m_isRefused; }

private:
    bool IsOutput(const std::string& name) const;

    std::string m_mapPath;
    Whereabouts m_whereabouts;
    std::string m_folder;
    std::string m_outputPath;         // where the output is
    std::string m_recordedPath;       // where the map says it is; absolute
    std::vector<std::string> m_ends;  // what a path to it ends with
    std::unique_ptr<LoadedMap> m_map;
    bool m_isRefused = false;
};

}  // namespace qztools

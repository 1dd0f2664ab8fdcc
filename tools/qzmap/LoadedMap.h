// A map together with the texts that it speaks of.
#pragma once

#include <deque>
#include <optional>
#include <string>

#include "Text.h"
#include "common/Map.h"

namespace qztools {

// Where the files of a map are, if not where its names say.
struct Whereabouts {
    std::optional<std::string> output;  // the output's own path
    std::optional<std::string> base;    // the folder that relative names start from
};

// The path of a file that a map names, and the same as it is shown: in its normal form, unless a
// symbolic link lets that lead elsewhere. mapPath is the map's own path.
std::string PathOfName(const std::string& mapPath, const Whereabouts& whereabouts,
                       const std::string& name);
std::string OutputPath(const std::string& mapPath, const Whereabouts& whereabouts,
                       const std::string& name);

// The map in a file. Throws Fault.
Map ReadMap(const std::string& path);

class LoadedMap {
public:
    // Reads a map, its output and its sources. Throws Fault, also where a file is no longer what
    // it was when the map was made.
    LoadedMap(std::string path, const Whereabouts& whereabouts);

    const std::string& Name() const { return m_name; }
    const std::vector<MapPiece>& Pieces() const { return m_map.pieces; }
    const Text& Output() const { return m_texts.front(); }
    std::int64_t SourceCount() const { return static_cast<std::int64_t>(m_map.sources.size()); }
    const Text& Source(std::int64_t i) const { return m_texts[static_cast<std::size_t>(i + 1)]; }

    // Pieces by index. The piece that holds a byte of the output, and where a piece starts there.
    // REQUIRES: 0 <= offset < Output().Size().
    std::size_t PieceAt(std::int64_t offset) const;
    std::int64_t StartOf(std::size_t piece) const { return m_starts[piece]; }

private:
    void LoadOutput(const Whereabouts& whereabouts);
    void LoadSource(const MapSource& source, const Whereabouts& whereabouts);
    void RefuseOthers(const std::string& path, std::int64_t size) const;
    [[noreturn]] void ThrowChanged(const std::string& path) const;
    std::string ReadUnchanged(const std::string& path, std::int64_t size, const std::string& hash);

    std::string m_name;  // its path
    Map m_map;
    std::deque<Text> m_texts;            // the output, then the sources
    std::vector<std::int64_t> m_starts;  // of the pieces in the output
};

}  // namespace qztools

// The texts of a run as the sources of a map, and an output in terms of them.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "Newlines.h"
#include "SourceTexts.h"
#include "common/Map.h"
#include "qzMacroExpander/TextOrigins.h"

namespace qztools {

class MapSources {
public:
    // The texts must outlive the object, and none may come in behind its back.
    explicit MapSources(const SourceTexts& texts);

    // In the order in which they were read. A file that was read several times is one source,
    // unless its bytes have changed in between.
    const std::vector<const SourceText*>& Texts() const { return m_texts; }

    // REQUIRES: text is one of those of the run.
    std::int64_t IndexOf(const SourceText& text) const { return m_indexes.at(&text); }

private:
    std::vector<const SourceText*> m_texts;
    std::map<const SourceText*, std::int64_t> m_indexes;
};

// An output, and where each stretch of it came from.
struct MappedText {
    vorn::xstring text;
    std::vector<MapPiece> pieces;
};

// Follows the pieces of an expansion through the texts that it has put together itself.
Expansion FollowOrigins(Expansion expansion, const vorn::TextOrigins& origins);

// What belongs together is put together: copied stretches that follow each other on both sides,
// indentation, insertions.
MappedText MapPieces(Written written, const MapSources& sources);

// Appends a piece, or makes the last one longer by it.
void AppendPiece(std::vector<MapPiece>& pieces, const MapPiece& piece);

}  // namespace qztools

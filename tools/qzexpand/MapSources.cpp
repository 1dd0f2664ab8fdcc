#include "MapSources.h"

#include <algorithm>
#include <utility>

namespace qztools {

using namespace vorn;

namespace {

bool IsSameSource(const SourceText& a, const SourceText& b) {
    return a.path == b.path && a.name == b.name && a.Bytes() == b.Bytes();
}

}  // namespace

MapSources::MapSources(const SourceTexts& texts) {
    for (const SourceText* text : texts.InOrder()) {
        const auto found =
            std::find_if(m_texts.begin(), m_texts.end(),
                         [text](const SourceText* other) { return IsSameSource(*text, *other); });
        m_indexes[text] = found - m_texts.begin();
        if (found == m_texts.end())
            m_texts.push_back(text);
    }
}

// ---- pieces ------------------------------------------------------------------------------------

Expansion FollowOrigins(Expansion expansion, const TextOrigins& origins) {
    OutputPieces followed;
    for (const OutputPiece& piece : expansion.pieces.m_pieces)
        origins.Follow(piece, followed);
    expansion.pieces.swap(followed);
    return expansion;
}

namespace {

// Whether two pieces that stand side by side are one.
bool AreOne(const MapPiece& a, const MapPiece& b) {
    using Kind = MapPiece::Kind;
    if (a.kind != b.kind || a.kind == Kind::Calculated)
        return false;
    return a.kind != Kind::Copied || (a.source == b.source && a.offset + a.length == b.offset);
}

}  // namespace

void AppendPiece(std::vector<MapPiece>& pieces, const MapPiece& piece) {
    if (piece.size == 0)
        return;
    if (pieces.empty() || !AreOne(pieces.back(), piece))
        return pieces.push_back(piece);
    pieces.back().size += piece.size;
    pieces.back().length += piece.length;
}

MappedText MapPieces(Written written, const MapSources& sources) {
    MappedText mapped{std::move(written.bytes), {}};
    for (const WrittenPiece& piece : written.pieces) {
        const bool hasSource = piece.source != nullptr;
        AppendPiece(mapped.pieces,
                    {piece.kind, piece.size, hasSource ? sources.IndexOf(*piece.source) : -1,
                     piece.offset, hasSource ? piece.length : 0});
    }
    return mapped;
}

}  // namespace qztools

#include "MapSources.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <utility>

namespace qztools {

using namespace vorn;

namespace {

// What texts of one source have in common besides their bytes. No path starts with a zero byte.
std::string KeyOf(const SourceText& text) {
    const bool isFile = !text.path.empty();
    return isFile ? std::filesystem::path(text.path).lexically_normal().string() : '\0' + text.name;
}

}  // namespace

MapSources::MapSources(const SourceTexts& texts) {
    std::multimap<std::string, std::int64_t> indexes;
    for (const SourceText* text : texts.InOrder()) {
        const auto [first, last] = indexes.equal_range(KeyOf(*text));
        const auto found = std::find_if(first, last, [this, text](const auto& entry) {
            return m_texts[static_cast<std::size_t>(entry.second)]->Bytes() == text->Bytes();
        });
        if (found != last) {
            m_indexes[text] = found->second;
            continue;
        }
        m_indexes[text] = std::ssize(m_texts);
        indexes.emplace(KeyOf(*text), std::ssize(m_texts));
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

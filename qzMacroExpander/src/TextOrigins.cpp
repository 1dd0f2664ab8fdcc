#include "qzMacroExpander/TextOrigins.h"

#include <algorithm>

namespace vorn {

namespace {

// The part of a piece between two offsets of its output.
OutputPiece PartOf(const OutputPiece& piece, ssize_t first, ssize_t last) {
    if (piece.out != 0)
        return {piece.in, last - first};
    return {SubString(piece.in.m_p1 + first, piece.in.m_p1 + last), 0};
}

}  // namespace

// What the text came from has been added before, so that one step is all that is ever to follow.
void TextOrigins::Add(const KeptText& text, const OutputPieces& pieces) {
    Origin origin{text, {}, {}};
    for (const OutputPiece& piece : pieces.m_pieces)
        Follow(piece, origin.pieces);
    ssize_t offset = 0;
    for (const OutputPiece& piece : origin.pieces.m_pieces) {
        origin.offsets.push_back(offset);
        offset += piece.size();
    }
    if (offset != 0)
        m_origins.insert_or_assign(text->data(), std::move(origin));
}

const TextOrigins::Origin* TextOrigins::Find(const xchar* pos) const {
    auto found = m_origins.upper_bound(pos);
    if (pos == nullptr || found == m_origins.begin())
        return nullptr;
    --found;
    const Origin& origin = found->second;
    return std::less<>()(pos, origin.text->data_end()) ? &origin : nullptr;
}

void TextOrigins::Follow(const OutputPiece& piece, OutputPieces& result) const {
    const Origin* origin = Find(piece.in.m_p1);
    if (origin == nullptr)
        return result.push_back(piece);
    const ssize_t first = piece.in.m_p1 - origin->text->data();
    if (piece.out != 0)
        result.push_back({origin->FollowSource(first, piece.in.size()), piece.out});
    else
        origin->FollowCopied(first, first + piece.in.size(), result);
}

// The index of the piece that holds the byte at that offset.
ssize_t TextOrigins::Origin::PieceAt(ssize_t offset) const {
    return std::upper_bound(offsets.begin(), offsets.end(), offset) - offsets.begin() - 1;
}

void TextOrigins::Origin::FollowCopied(ssize_t first, ssize_t last, OutputPieces& result) const {
    for (ssize_t i = PieceAt(first); first != last; ++i) {
        const OutputPiece& piece = pieces.m_pieces[i];
        const ssize_t start = offsets[static_cast<std::size_t>(i)];
        const ssize_t end = std::min(last, start + piece.size());
        result.push_back(PartOf(piece, first - start, end - start));
        first = end;
    }
}

// The start of what was calculated is a name or an @, which never comes from indentation.
SubString TextOrigins::Origin::FollowSource(ssize_t first, ssize_t size) const {
    const ssize_t i = PieceAt(first);
    const OutputPiece& piece = pieces.m_pieces[i];
    if (piece.out != 0)
        return piece.in;
    const ssize_t skipped = first - offsets[static_cast<std::size_t>(i)];
    const ssize_t rest = piece.in.size() - skipped;
    const xchar* start = piece.in.m_p1 + skipped;
    return SubString(start, start + std::min(size, rest));
}

}  // namespace vorn

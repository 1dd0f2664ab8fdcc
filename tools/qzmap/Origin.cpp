#include "Origin.h"

#include <algorithm>

namespace qztools {

using Kind = MapPiece::Kind;

std::optional<Origin> OriginOf(const LoadedMap& map, std::int64_t offset) {
    const std::size_t index = map.PieceAt(offset);
    const MapPiece& piece = map.Pieces()[index];
    if (piece.source < 0)
        return std::nullopt;
    const std::int64_t inside = piece.kind == Kind::Copied ? offset - map.StartOf(index) : 0;
    return Origin{&map.Source(piece.source), piece.offset + inside};
}

std::optional<Origin> OriginOfPlace(const LoadedMap& map, std::int64_t offset) {
    const Text& output = map.Output();
    const std::int64_t end = output.LineEnd(output.PositionOf(offset).line);
    std::size_t index = map.PieceAt(offset);
    while (map.Pieces()[index].kind == Kind::Indentation && index + 1 < map.Pieces().size()
           && map.StartOf(index + 1) < end)
        offset = map.StartOf(++index);
    return OriginOf(map, offset);
}

std::optional<Origin> OriginOfLine(const LoadedMap& map, std::int64_t line) {
    const Text& output = map.Output();
    const std::int64_t start = output.LineStart(line);
    const std::int64_t end = output.LineEnd(line);
    std::optional<Origin> first;
    for (std::size_t i = map.PieceAt(start); i < map.Pieces().size() && map.StartOf(i) < end; ++i) {
        const std::int64_t begin = std::max(start, map.StartOf(i));
        const std::int64_t behind = std::min(end, map.StartOf(i) + map.Pieces()[i].size);
        const std::string_view bytes = output.Bytes().substr(
            static_cast<std::size_t>(begin), static_cast<std::size_t>(behind - begin));
        const std::size_t written = bytes.find_first_not_of(" \t\r\n");
        if (map.Pieces()[i].kind == Kind::Copied && written != std::string_view::npos)
            return OriginOf(map, begin + static_cast<std::int64_t>(written));
        if (!first)
            first = OriginOf(map, begin);
    }
    return first;
}

}  // namespace qztools

#include "Check.h"

#include <algorithm>

#include "common/Fault.h"

namespace qztools {

using Kind = MapPiece::Kind;

namespace {

std::string_view Part(const Text& text, std::int64_t offset, std::int64_t size) {
    return text.Bytes().substr(static_cast<std::size_t>(offset), static_cast<std::size_t>(size));
}

[[noreturn]] void ThrowUnproven(const LoadedMap& map, std::int64_t offset,
                                const std::string& reason) {
    throw Fault(map.Name() + ": " + PlaceName(map.Output(), offset) + ": " + reason);
}

void CheckPiece(const LoadedMap& map, const MapPiece& piece, std::int64_t start) {
    const std::string_view bytes = Part(map.Output(), start, piece.size);
    if (piece.kind == Kind::Indentation) {
        const std::size_t written = bytes.find_first_not_of(" \t");
        if (written != std::string_view::npos)
            ThrowUnproven(map, start + static_cast<std::int64_t>(written),
                          "this is no indentation");
    }
    if (piece.kind == Kind::Copied) {
        const Text& source = map.Source(piece.source);
        const std::string_view copied = Part(source, piece.offset, piece.size);
        const auto [here, there] = std::mismatch(bytes.begin(), bytes.end(), copied.begin());
        const std::int64_t same = here - bytes.begin();
        if (here != bytes.end())
            ThrowUnproven(map, start + same,
                          "this was not copied from " + PlaceName(source, piece.offset + same));
    }
}

std::string Count(std::int64_t n, const char* what) {
    return std::to_string(n) + ' ' + what + (n == 1 ? "" : "s");
}

}  // namespace

std::string Check(const LoadedMap& map) {
    std::int64_t inserted = 0;
    for (std::size_t i = 0; i < map.Pieces().size(); ++i) {
        const MapPiece& piece = map.Pieces()[i];
        CheckPiece(map, piece, map.StartOf(i));
        inserted += piece.kind == Kind::Inserted ? piece.size : 0;
    }
    return map.Name() + ": " + Count(map.Output().Size(), "byte") + ", "
           + Count(std::ssize(map.Pieces()), "piece") + ", all proven"
           + (inserted == 0 ? "" : "; " + Count(inserted, "byte") + " put in without a source");
}

}  // namespace qztools

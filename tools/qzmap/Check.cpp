#include "Check.h"

#include <algorithm>

#include "common/Fault.h"

namespace qztools {

using Kind = MapPiece::Kind;

namespace {

std::string_view Part(const Text& text, std::int64_t offset, std::int64_t size) {
    return text.Bytes().substr(static_cast<std::size_t>(offset), static_cast<std::size_t>(size));
}

// Whether the tool puts such bytes in: the CR of a line end, or a line marker.
bool IsInserted(std::string_view bytes) {
    if (bytes == "\r")
        return true;
    const bool isLine = bytes.starts_with("#line ") && bytes.find('\n') == bytes.size() - 1;
    if (!isLine)
        return false;
    const std::string_view behind = bytes.substr(bytes.find_first_not_of("0123456789", 6));
    return behind.starts_with(" \"") && (behind.ends_with("\"\n") || behind.ends_with("\"\r\n"));
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
    if (piece.kind == Kind::Inserted && !IsInserted(bytes))
        ThrowUnproven(map, start, "this is nothing that the tool puts in");
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

}  // namespace

namespace {

std::string Count(std::int64_t n, const char* what) {
    return std::to_string(n) + ' ' + what + (n == 1 ? "" : "s");
}

}  // namespace

std::string Check(const LoadedMap& map) {
    for (std::size_t i = 0; i < map.Pieces().size(); ++i)
        CheckPiece(map, map.Pieces()[i], map.StartOf(i));
    return map.Name() + ": " + Count(map.Output().Size(), "byte") + ", "
           + Count(std::ssize(map.Pieces()), "piece") + ", all proven";
}

}  // namespace qztools

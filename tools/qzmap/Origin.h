// The way from the output of a map back to its sources.
#pragma once

#include <optional>

#include "LoadedMap.h"

namespace qztools {

// A byte of a source.
struct Origin {
    const Text* text = nullptr;
    std::int64_t offset = 0;
};

// Where a byte of the output was copied from, or where the directive or name starts that it was
// calculated from. Indentation, and what the tool put in, has no origin.
std::optional<Origin> OriginOf(const LoadedMap& map, std::int64_t offset);

// The same, where blanks of indentation count as what follows them on their line. This is what
// fits a place that a compiler names.
std::optional<Origin> OriginOfPlace(const LoadedMap& map, std::int64_t offset);

// The origin of a line of the output as a whole: of the first byte that was copied and is no
// blank, or else of the first byte that has one.
std::optional<Origin> OriginOfLine(const LoadedMap& map, std::int64_t line);

}  // namespace qztools

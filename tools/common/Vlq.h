// Numbers as Source Maps write them: digits of base 64 with five bits each, the lowest first. All
// but the last of a number have a sixth bit set; the lowest bit of the number is its sign.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qztools {

// REQUIRES: the number is not the least that there is.
void AppendVlq(std::string& out, std::int64_t number);

// The number of digits that it takes.
int VlqSize(std::int64_t number);

// Takes the number off the start of s; none where there is no number that fits.
std::optional<std::int64_t> ReadVlq(std::string_view& s);

}  // namespace qztools

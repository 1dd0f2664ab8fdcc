// What changes between two texts, in the form of diff -u.
#pragma once

#include <string>
#include <string_view>

namespace qztools {

// The hunks, each with three lines of context around its changes; empty where the texts are the
// same. The texts are bytes: a line ends with a line feed, and what stands in front of it, a
// carriage return or a zero byte, is part of the line.
std::string FormatHunks(std::string_view oldText, std::string_view newText);

// The two lines in front of the hunks, for a file that is there or is missing so far.
std::string FormatDiffHeader(const std::string& path, bool isThere);

}  // namespace qztools

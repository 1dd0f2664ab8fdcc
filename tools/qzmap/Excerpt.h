// A line of a text with a mark below a part of it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace qztools {

// The line and the mark, ^ below the byte at first and ~ below the others of size bytes; "" for an
// empty line. The line is made visible (see Visible.h), and of a very long one only the part around
// the mark is shown.
std::string Excerpt(std::string_view line, std::int64_t first, std::int64_t size);

}  // namespace qztools

// Texts as strings of JSON.
#pragma once

#include <optional>
#include <string>

namespace qztools {

// The text in quotes, with what has to be escaped; none where it is no UTF-8.
std::optional<std::string> QuoteJson(const std::string& text);

}  // namespace qztools

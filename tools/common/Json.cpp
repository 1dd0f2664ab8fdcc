#include "common/Json.h"

#include <nlohmann/json.hpp>

namespace qztools {

std::optional<std::string> QuoteJson(const std::string& text) {
    try {
        return nlohmann::json(text).dump();
    } catch (const nlohmann::json::type_error&) {
        return std::nullopt;
    }
}

}  // namespace qztools

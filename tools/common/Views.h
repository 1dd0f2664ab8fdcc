// Views of text, from the standard library's form to the project's and back.
#pragma once

#include <string_view>

#include "qzUtils/SubString.h"

namespace qztools {

inline std::string_view ToView(vorn::SubString s) {
    return {s.m_p1, static_cast<std::size_t>(s.size())};
}

inline vorn::SubString ToSubString(std::string_view s) {
    return {s.data(), s.data() + s.size()};
}

}  // namespace qztools

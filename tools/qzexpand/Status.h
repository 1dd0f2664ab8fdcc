// How a run ends, for whoever has called the tool. 0: all went well.
#pragma once

namespace qztools {

inline constexpr int s_statusError = 1;    // in a text, with a file
inline constexpr int s_statusDiffers = 1;  // what --check has found
inline constexpr int s_statusLimit = 3;    // one of the limits of the options

}  // namespace qztools

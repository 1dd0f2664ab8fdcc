// Which lines make one text into another.
#pragma once

#include <vector>

namespace qztools {

// Two lines are the same where their numbers are.
using LineNumbers = std::vector<int>;

// For each line of the old text whether it goes, for each of the new one whether it comes. The
// others follow each other in both texts in the same order.
struct LineChanges {
    std::vector<char> removed;
    std::vector<char> added;
};

// Few changes, and the fewest possible where the texts are small or alike: the effort is bounded,
// so that large texts with nothing in common do not take time without end. REQUIRES: the numbers
// are not below 0, and below the sum of the sizes.
LineChanges FindLineChanges(const LineNumbers& oldLines, const LineNumbers& newLines);

}  // namespace qztools

// What a text forgot to close.
#pragma once

#include <string>

#include "qzUtils/SubString.h"

namespace qztools {

// A sentence about the one bracket of a text that is not closed. Empty where there is none, or
// more than one, or where closing brackets do not match the opening ones: then nothing is certain.
std::string DescribeOpenBracket(vorn::SubString text);

// A sentence about the comment that a text does not close; empty where there is none.
std::string DescribeOpenComment(vorn::SubString text);

}  // namespace qztools

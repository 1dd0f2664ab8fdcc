// Texts that fail to expand, as rows of a table.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/support/Expand.h"

namespace vorn_test {

// A text with a ^ in front of the place of its error, and the whole message. The ^ is taken out
// before the text is expanded. Without one, the place lies in a temporary text, outside of this.
struct Fault {
    std::string_view text;
    std::string message;
};

inline void PrintTo(const Fault& fault, std::ostream* os) {
    *os << testing::PrintToString(std::string(fault.text));
}

// Expands the text of a fault in the session, whose output can be looked at afterwards.
inline void ExpectFault(Session& session, const Fault& fault) {
    std::string text(fault.text);
    const std::size_t mark = text.find('^');
    if (mark != std::string::npos)
        text.erase(mark, 1);
    const LexError error = session.ExpandError(text);
    EXPECT_EQ(error.description, fault.message) << "of " << fault.text;
    if (mark != std::string::npos) {
        EXPECT_EQ(error.offset, static_cast<vorn::ssize_t>(mark)) << "of " << fault.text;
    } else {
        EXPECT_FALSE(error.offset >= 0 && error.offset <= static_cast<vorn::ssize_t>(text.size()))
            << error.offset << " lies in " << fault.text;
    }
}

inline void ExpectFault(const Fault& fault) {
    Session session;
    ExpectFault(session, fault);
}

}  // namespace vorn_test

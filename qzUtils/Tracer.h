// Output for whoever watches the process: reports that no caller receives.
#pragma once

#include "qzUtils/StringStream.h"

namespace vorn {

// Collects a text and, when it is destroyed, hands it to standard error in one write, so that
// the reports of several processes do not mix. What standard error does not take is lost.
class TracerX : public StringStream {
public:
    explicit TracerX(ssize_t pageSize = 4096) : StringStream(pageSize) {}
    ~TracerX();
};

}  // namespace vorn

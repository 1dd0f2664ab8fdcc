// The sink that text streams write to.
#pragma once

#include "qzUtils/xchar.h"

namespace vorn {

// To be implemented by whoever takes bytes. What an implementation throws passes through the
// stream to the writer.
class IOutputStream {
public:
    virtual ~IOutputStream() = default;

    // Takes n bytes at p, which stay valid for the call alone.
    virtual void WriteStream(const void* p, ssize_t n) = 0;

    // Hands on whatever the sink has held back.
    virtual void FlushStream() = 0;

protected:
    IOutputStream() = default;
    IOutputStream(const IOutputStream&) = default;
    IOutputStream& operator=(const IOutputStream&) = default;
};

}  // namespace vorn

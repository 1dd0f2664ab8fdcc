// The root of the libraries' exceptions. They are thrown by value and caught by reference.
#pragma once

#include "qzUtils/xostream.h"

namespace vorn {

class IException {
public:
    virtual ~IException() = default;

    // Writes the error for a reader, with no line end behind it.
    virtual void Write(xostream& os) const = 0;

protected:
    IException() = default;
    IException(const IException&) = default;
    IException& operator=(const IException&) = default;
};

}  // namespace vorn

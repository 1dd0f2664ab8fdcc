#include "qzUtils/Tracer.h"

#include <cstdio>

namespace vorn {

TracerX::~TracerX() {
    try {
        const xstring text = GetString();
        std::fwrite(text.data(), 1, static_cast<std::size_t>(text.size()), stderr);
        std::fflush(stderr);
    } catch (...) {
        // A report that finds no memory is lost; the process goes on without it.
    }
}

}  // namespace vorn

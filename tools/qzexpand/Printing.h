// What a text prints on its way, by @print or from Python.
//
// It goes to standard error, like all that is said to whoever runs the tool: standard output is
// for the expansion alone, wherever that goes.
#pragma once

#include <cstdio>

#include "Options.h"

namespace qztools {

// Until the end of its scope, everything that is written to standard output goes to standard error,
// also by processes that a script starts. What the library prints may take as much as the output;
// when it is more, the run ends. One at a time. Throws Fault.
class Printing {
public:
    explicit Printing(const Options& options);
    ~Printing();
    Printing(const Printing&) = delete;
    Printing& operator=(const Printing&) = delete;

    // What was printed counts as output: throws Fault where a part of it could not be written.
    void Check() const;

private:
    static ssize_t Write(void* self, const char* bytes, std::size_t size);

    const Options& m_options;
    vorn::ssize_t m_size = 0;  // what has been printed so far
    std::FILE* m_oldStream;    // the C library's stdout
    std::FILE* m_stream;
    int m_oldOutput;  // a copy of standard output; below 0 where that was closed
};

// Makes sure that the three standard streams are there, so that no file can take their place. The
// use of one that was closed is an error as before.
void OccupyStandardStreams();

}  // namespace qztools

// The text stream: writes to a sink and indents the lines of its text.
//
// A stream holds nothing back: every put reaches the sink at once, in one call where the indent
// is 0. One thread at a time may use a stream.
#pragma once

#include "qzUtils/StreamInterfaces.h"
#include "qzUtils/SubString.h"

namespace vorn {

class IndentingOutputStreamToOStream;

class xostream {
public:
    // Wraps a sink, which is not owned and must outlive the stream.
    explicit xostream(IOutputStream& sink);
    ~xostream();
    xostream(const xostream&) = delete;
    xostream& operator=(const xostream&) = delete;

    void put(char c);
    void put(int value);     // decimal digits
    void put(long value);    // decimal digits
    void put(double value);  // six significant digits, the default form of a C++ stream
    void put(const char* p, ssize_t n);

    // Forwards to the sink.
    void flush();

    // Every line that is begun while the indent is above 0 starts with that many blanks, an empty
    // line too. They are written with the first byte of the line, its line feed included.
    void Indent(ssize_t delta);
    ssize_t GetIndent() const;

    IndentingOutputStreamToOStream* m_os = nullptr;  // the implementation; owned

protected:
    // For a stream that holds its own sink, which does not exist yet when the base is built.
    // REQUIRES: Init is called before anything else.
    xostream() = default;
    void Init(IOutputStream& sink);

    // What is written next begins a line.
    void BeginLine();
};

inline xostream& operator<<(xostream& os, char c) {
    os.put(c);
    return os;
}
inline xostream& operator<<(xostream& os, int value) {
    os.put(value);
    return os;
}
inline xostream& operator<<(xostream& os, long value) {
    os.put(value);
    return os;
}
inline xostream& operator<<(xostream& os, double value) {
    os.put(value);
    return os;
}
inline xostream& operator<<(xostream& os, SubString s) {
    os.put(s.m_p1, s.size());
    return os;
}
inline xostream& operator<<(xostream& os, ConstString8Z z) {
    return os << SubString(z);
}
inline xostream& operator<<(xostream& os, const xstring& s) {
    return os << SubString(s);
}

// Indents a stream by n further blanks for as long as it lives.
class Indenter {
public:
    Indenter(xostream& os, ssize_t n) : m_os(os), m_n(n) { m_os.Indent(m_n); }
    ~Indenter() { m_os.Indent(-m_n); }
    Indenter(const Indenter&) = delete;
    Indenter& operator=(const Indenter&) = delete;

private:
    xostream& m_os;
    ssize_t m_n;
};

// The stream on standard output. It writes through the C library's stdout, so that its text
// keeps its place among everything else that the process prints there.
extern xostream& xcout;

}  // namespace vorn

#include "qzUtils/xostream.h"

#include <charconv>
#include <cstdio>

namespace vorn {

class IndentingOutputStreamToOStream {
public:
    explicit IndentingOutputStreamToOStream(IOutputStream& sink) : m_sink(sink) {}

    void Write(const char* p, ssize_t n) {
        if (n <= 0)
            return;
        if (m_indent <= 0)
            m_sink.WriteStream(p, n);
        else
            WriteIndented(SubString(p, p + n));
        m_atLineStart = p[n - 1] == '\n';
    }

    void Flush() { m_sink.FlushStream(); }

    void BeginLine() { m_atLineStart = true; }

    ssize_t m_indent = 0;

private:
    void WriteIndented(SubString s) {
        while (s) {
            if (m_atLineStart)
                WriteBlanks();
            const void* lineFeed = std::memchr(s.m_p1, '\n', static_cast<std::size_t>(s.size()));
            m_atLineStart = lineFeed != nullptr;
            const char* end = m_atLineStart ? static_cast<const char*>(lineFeed) + 1 : s.m_p2;
            m_sink.WriteStream(s.m_p1, end - s.m_p1);
            s.setbegin(end);
        }
    }

    void WriteBlanks() {
        static constexpr char s_blanks[] = "                                ";
        constexpr ssize_t s_most = sizeof s_blanks - 1;
        for (ssize_t left = m_indent; left > 0; left -= s_most)
            m_sink.WriteStream(s_blanks, left < s_most ? left : s_most);
    }

    IOutputStream& m_sink;
    bool m_atLineStart = true;
};

xostream::xostream(IOutputStream& sink) {
    Init(sink);
}

void xostream::Init(IOutputStream& sink) {
    m_os = new IndentingOutputStreamToOStream(sink);
}

xostream::~xostream() {
    delete m_os;
}

void xostream::BeginLine() {
    m_os->BeginLine();
}

void xostream::put(char c) {
    m_os->Write(&c, 1);
}

void xostream::put(int value) {
    put(static_cast<long>(value));
}

void xostream::put(long value) {
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    m_os->Write(digits, end - digits);
}

void xostream::put(double value) {
    char digits[32];
    const auto end =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::general, 6).ptr;
    m_os->Write(digits, end - digits);
}

void xostream::put(const char* p, ssize_t n) {
    m_os->Write(p, n);
}

void xostream::flush() {
    m_os->Flush();
}

void xostream::Indent(ssize_t delta) {
    m_os->m_indent += delta;
}

ssize_t xostream::GetIndent() const {
    return m_os->m_indent;
}

namespace {

class StandardOutput final : public IOutputStream {
public:
    void WriteStream(const void* p, ssize_t n) override {
        std::fwrite(p, 1, static_cast<std::size_t>(n), stdout);
    }
    void FlushStream() override { std::fflush(stdout); }
};

// Never destroyed, so that whatever runs at exit can still print.
xostream& MakeStandardOutputStream() {
    static StandardOutput* const s_sink = new StandardOutput;
    static xostream* const s_stream = new xostream(*s_sink);
    return *s_stream;
}

}  // namespace

xostream& xcout = MakeStandardOutputStream();

}  // namespace vorn

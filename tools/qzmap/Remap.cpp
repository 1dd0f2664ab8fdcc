#include "Remap.h"

#include <array>
#include <cerrno>

#include <unistd.h>

#include "Rewriter.h"
#include "common/Fault.h"
#include "common/Files.h"
#include "common/Views.h"

namespace qztools {

namespace {

// Beyond this, a line is no message: its start is rewritten, and the rest goes through.
constexpr std::size_t s_longestMessage = 1 << 20;

// Cuts a stream of bytes into lines.
class Stream {
public:
    explicit Stream(Rewriter& rewriter) : m_rewriter(rewriter) {}

    // Appends to out what follows from these bytes.
    void Take(std::string_view bytes, std::string& out) {
        while (!bytes.empty()) {
            const std::size_t end = bytes.find('\n');
            const bool isWhole = end != std::string_view::npos;
            const std::string_view part = bytes.substr(0, isWhole ? end + 1 : end);
            bytes.remove_prefix(part.size());
            TakePart(part, isWhole, out);
        }
    }

    void Finish(std::string& out) {
        if (!m_line.empty())
            m_rewriter.Rewrite(m_line, false, out);
        m_rewriter.Finish(out);
    }

private:
    void TakePart(std::string_view part, bool isWhole, std::string& out) {
        if (m_isBehindStart) {
            out += part;
            m_isBehindStart = !isWhole;
            return;
        }
        m_line += part;
        m_isBehindStart = !isWhole && m_line.size() > s_longestMessage;
        if (isWhole || m_isBehindStart) {
            m_rewriter.Rewrite(m_line, m_isBehindStart, out);
            m_line.clear();
        }
    }

    Rewriter& m_rewriter;
    std::string m_line;            // the line that has no end yet
    bool m_isBehindStart = false;  // of a very long line
};

void Write(const std::string& out) {
    if (const int error = WriteAll(STDOUT_FILENO, ToSubString(out)))
        ThrowSystemFault("standard output", error);
}

// Returns no bytes at the end.
std::string_view ReadSome(std::array<char, 65536>& buffer) {
    while (true) {
        const ssize_t n = ::read(STDIN_FILENO, buffer.data(), buffer.size());
        if (n >= 0)
            return {buffer.data(), static_cast<std::size_t>(n)};
        if (errno != EINTR)
            ThrowSystemFault("standard input", errno);
    }
}

}  // namespace

bool Remap(const Options& options, const Reporter& report) {
    Rewriter rewriter(options, report);
    Stream stream(rewriter);
    std::array<char, 65536> buffer;
    std::string out;
    while (true) {
        const std::string_view bytes = ReadSome(buffer);
        if (bytes.empty())
            break;
        out.clear();
        stream.Take(bytes, out);
        Write(out);
    }
    out.clear();
    stream.Finish(out);
    Write(out);
    return rewriter.IsComplete();
}

}  // namespace qztools

#include "qzMacroExpander/ExpandedOutput.h"

#include <functional>
#include <numeric>

#include "qzMacroExpander/LSToken.h"
#include "qzUtils/VornAssert.h"

namespace vorn {

namespace {

// Moves the column over the bytes of one line, up to and including its line feed, and returns
// where it stopped. Behind a line feed the column is -1.
const char* AdvanceOverLine(const char* p, const char* end, ssize_t& column) {
    for (; p != end; ++p) {
        if (*p == '\n') {
            column = -1;
            return p + 1;
        }
        column += *p == '\t' ? 4 : 1;
    }
    return p;
}

// The address that offset pos of a piece stands for.
const xchar* AddressInPiece(const OutputPiece& piece, ssize_t pos) {
    return piece.out == 0 ? piece.in.m_p1 + pos : piece.in.m_p1;
}

}  // namespace

void ExpandedOutput::CopyRun(const char* p1, const char* p2) {
    if (p1 == p2)
        return;
    if (p1 != m_deferred.m_p2) {
        WriteDeferred();
        m_deferred.setbegin(p1);
    }
    m_deferred.setend(p2);
    m_size += p2 - p1;
    m_pieces.push_back(OutputPiece{SubString(p1, p2), 0});
}

void ExpandedOutput::WriteDeferred() {
    const SubString run = m_deferred;
    m_deferred = SubString();
    if (run)
        m_os->put(run.m_p1, run.size());
}

void ExpandedOutput::WriteBlanks(ssize_t n) {
    static constexpr char s_blanks[] = "                                                ";
    constexpr ssize_t s_most = sizeof s_blanks - 1;
    WriteDeferred();
    for (ssize_t left = n; left > 0; left -= s_most)
        m_os->put(s_blanks, left < s_most ? left : s_most);
    m_size += n;
}

void ExpandedOutput::DeferSubStringFromSourceFile(SubString s, ssize_t indent) {
    const char* start = s.m_p1;  // the first byte that no piece covers yet
    const char* p = s.m_p1;
    while (p != s.m_p2) {
        if (m_columnPos < 0) {
            if (indent > 0) {
                CopyRun(start, p);
                WriteBlanks(indent);
                m_pieces.push_back(OutputPiece{SubString(), indent});
                start = p;
            }
            m_columnPos = indent;
        }
        p = AdvanceOverLine(p, s.m_p2, m_columnPos);
    }
    CopyRun(start, p);
}

void ExpandedOutput::WriteCalculatedSubString(SubString s, SubString sSrcFile, ssize_t indent) {
    if (s.empty())
        return;
    const ssize_t sizeBefore = m_size;
    WriteDeferred();
    while (s) {
        if (m_columnPos < 0) {
            if (indent > 0)
                WriteBlanks(indent);
            m_columnPos = indent;
        }
        const char* end = AdvanceOverLine(s.m_p1, s.m_p2, m_columnPos);
        m_os->put(s.m_p1, end - s.m_p1);
        m_size += end - s.m_p1;
        s.setbegin(end);
    }
    m_pieces.push_back(OutputPiece{sSrcFile, m_size - sizeBefore});
}

ssize_t OutputPieces::size() const {
    return std::accumulate(
        m_pieces.begin(), m_pieces.end(), ssize_t{0},
        [](ssize_t sum, const OutputPiece& piece) { return sum + piece.size(); });
}

const xchar* OutputPieces::MapOutputPositionToAddress(ssize_t pos) const {
    return OutputPiecesMonotonePosMapper(*this).MapOutputPositionToAddress(pos);
}

const xchar* OutputPiecesMonotonePosMapper::MapOutputPositionToAddress(ssize_t pos) {
    for (; m_index < m_op.m_pieces.size(); ++m_index) {
        const OutputPiece& piece = m_op.m_pieces[m_index];
        if (m_offset + piece.size() > pos)
            return AddressInPiece(piece, pos - m_offset);
        m_offset += piece.size();
    }
    DeclareUnreachable();
}

void OutputPieces::AdjustErrorPosition(LexScannerException& e, SubString s) const {
    const std::less<const xchar*> before;
    if (e.m_pos == nullptr || before(e.m_pos, s.m_p1) || !before(e.m_pos, s.m_p2))
        return;
    e.m_pos = MapOutputPositionToAddress(e.m_pos - s.m_p1);
}

}  // namespace vorn

#include "ImportSplices.h"

#include "qzMacroExpander/LSToken.h"

namespace qztools {

using namespace vorn;

namespace {

// Where the directive starts that a piece of output ends with, in bytes from the start of the
// piece. One that was put together for @import(expression) is nothing but the directive. One of
// source text has the blanks in front of the @.
ssize_t FindDirective(const OutputPiece& piece) {
    if (piece.out != 0)
        return 0;
    SubString rest = piece.in;
    const LSToken at = LsScanToken(rest, false);
    return at.m_str.m_p1 - piece.in.m_p1;
}

// Copies an expansion piece by piece, with something else in some places.
class Splicer {
public:
    explicit Splicer(const Expansion& expansion) : m_from(expansion) {
        m_to.text.reserve(expansion.text.size());
    }

    // The pieces in front of that one.
    void CopyUpTo(ssize_t index) {
        for (; m_index < index; ++m_index)
            Copy(m_from.pieces.m_pieces[m_index]);
    }

    // The next piece up to an offset, and a replacement for the rest of it.
    void CopyWith(const Expansion& replacement, ssize_t offset) {
        const OutputPiece& piece = m_from.pieces.m_pieces[m_index++];
        const ssize_t end = m_offset + piece.size();
        if (offset != 0)
            Copy({SubString(piece.in.m_p1, piece.in.m_p1 + offset), 0});
        m_offset = end;
        m_to.text += replacement.text;
        for (const OutputPiece& inner : replacement.pieces.m_pieces)
            m_to.pieces.push_back(inner);
    }

    Expansion& Result() { return m_to; }

private:
    void Copy(const OutputPiece& piece) {
        const char* first = m_from.text.data() + m_offset;
        m_to.text.append(first, first + piece.size());
        m_to.pieces.push_back(piece);
        m_offset += piece.size();
    }

    const Expansion& m_from;
    Expansion m_to;
    ssize_t m_index = 0;   // of the next piece
    ssize_t m_offset = 0;  // of its text
};

}  // namespace

Expansion SpliceImports(const Expansion& expansion, const std::vector<Import>& imports) {
    Splicer splicer(expansion);
    for (const Import& import : imports) {
        splicer.CopyUpTo(import.piece);
        splicer.CopyWith(import.replacement,
                         FindDirective(expansion.pieces.m_pieces[import.piece]));
    }
    splicer.CopyUpTo(expansion.pieces.m_pieces.size());
    return std::move(splicer.Result());
}

}  // namespace qztools

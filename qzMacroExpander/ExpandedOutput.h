// The output of expansion: text with its lines re-based, and the record of where it came from.
//
// A column is one byte of output; a tab counts 4, with no tab stops. One thread at a time may use
// an object of these classes.
#pragma once

#include "qzUtils/SubString.h"
#include "qzUtils/xostream.h"
#include "qzUtils/xvector.h"

namespace vorn {

class LexScannerException;

// One run of output and its origin:
//   verbatim     in = the bytes that were copied             out = 0
//   indentation  in = null                                   out = the number of blanks
//   calculated   in = the directive or name that yielded it  out = the number of bytes
struct OutputPiece {
    SubString in;  // a view of the source, which must outlive whoever reads through it
    ssize_t out;

    ssize_t size() const { return out != 0 ? out : in.size(); }
};

// The pieces of an output, in order. Laid end to end they cover it exactly.
class OutputPieces {
public:
    xvector<OutputPiece> m_pieces;

    // The number of output bytes covered. Takes time in proportion to the number of pieces.
    ssize_t size() const;

    void push_back(const OutputPiece& piece) { m_pieces.push_back(piece); }
    void swap(OutputPieces& other) { m_pieces.swap(other.m_pieces); }

    // The source address of the output byte at offset pos: the very byte of a verbatim piece, the
    // start of what yielded a calculated one, null for indentation. Takes time in proportion to
    // the number of pieces in front of it. REQUIRES: 0 <= pos < size().
    const xchar* MapOutputPositionToAddress(ssize_t pos) const;

    // Where the position of e lies in s, the output that these pieces describe, replaces it by
    // the source address. Every other position stays.
    void AdjustErrorPosition(LexScannerException& e, SubString s) const;
};

// Maps many output positions in rising order, in time proportional to the pieces passed.
class OutputPiecesMonotonePosMapper {
public:
    const OutputPieces& m_op;  // not owned
    ssize_t m_index = 0;       // the piece at which the next search starts
    ssize_t m_offset = 0;      // the output offset of that piece

    explicit OutputPiecesMonotonePosMapper(const OutputPieces& op) : m_op(op) {}

    // As OutputPieces::MapOutputPositionToAddress. REQUIRES: pos is not below the one before it.
    const xchar* MapOutputPositionToAddress(ssize_t pos);
};

// Writes output to a stream. Any number of texts may be expanded into one object in turn; the
// column goes on from one to the next.
class ExpandedOutput {
public:
    xostream* m_os;       // not owned
    ssize_t m_columnPos;  // column of the next byte, from 0; -1 where its line has not begun
    OutputPieces m_pieces;
    ssize_t m_size;  // bytes written

    // os must outlive the object.
    explicit ExpandedOutput(xostream& os) : m_os(&os), m_columnPos(-1), m_size(0) {}

    ssize_t GetColumnPos() const { return m_columnPos; }
    ssize_t size() const { return m_pieces.size(); }

    // Hands the pieces over by swapping.
    void GetPieces(OutputPieces& pieces) { m_pieces.swap(pieces); }

    // Copies source text. Each line that it begins, an empty one too, gets indent blanks.
    void WriteSubStringFromSourceFile(SubString s, ssize_t indent) {
        DeferSubStringFromSourceFile(s, indent);
        WriteDeferred();
    }

    // The same, but the stream may get the text only with WriteDeferred, so that runs which
    // follow each other in the source reach it as one. The caller sees to it that nobody looks at
    // the stream before.
    void DeferSubStringFromSourceFile(SubString s, ssize_t indent);
    void WriteDeferred();

    // Writes text that the source range sSrcFile has yielded, as one piece. Each line that it
    // begins gets indent blanks, which belong to the piece. An empty s writes nothing.
    void WriteCalculatedSubString(SubString s, SubString sSrcFile, ssize_t indent);

private:
    void CopyRun(const char* p1, const char* p2);
    void WriteBlanks(ssize_t n);

    SubString m_deferred;  // recorded in the pieces, not yet in the stream
};

}  // namespace vorn

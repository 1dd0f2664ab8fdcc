#include "Newlines.h"

#include <cstring>
#include <utility>

namespace qztools {

using namespace vorn;

// ---- reading -----------------------------------------------------------------------------------

namespace {

// An empty text may have no address to search from.
const char* FindLineFeed(SubString s) {
    if (s.empty())
        return s.m_p2;
    const void* found = std::memchr(s.m_p1, '\n', static_cast<std::size_t>(s.size()));
    return found != nullptr ? static_cast<const char*>(found) : s.m_p2;
}

bool HasCrBefore(SubString s, const char* pos) {
    return pos != s.m_p1 && pos[-1] == '\r';
}

// CR CR LF is no line end CR LF: what is left of it, CR LF, could not be told from one.
bool EndsAllLinesWithCrLf(SubString s) {
    const char* lineFeed = FindLineFeed(s);
    if (lineFeed == s.m_p2)
        return false;
    for (; lineFeed != s.m_p2; lineFeed = FindLineFeed(SubString(lineFeed + 1, s.m_p2)))
        if (!HasCrBefore(s, lineFeed) || HasCrBefore(s, lineFeed - 1))
            return false;
    return true;
}

}  // namespace

void ReadLineEnds(SourceText& text, Newlines newlines) {
    const SubString bytes = text.text;
    if (newlines == Newlines::Keep && !EndsAllLinesWithCrLf(bytes))
        return;
    xstring converted;
    converted.reserve(bytes.size());
    const char* start = bytes.m_p1;
    while (start != bytes.m_p2) {
        const char* lineFeed = FindLineFeed(SubString(start, bytes.m_p2));
        const bool isCrLf = lineFeed != bytes.m_p2 && HasCrBefore(bytes, lineFeed);
        converted.append(start, lineFeed - (isCrLf ? 1 : 0));
        if (isCrLf)
            text.lineEnds.push_back(converted.size());
        start = lineFeed;
        if (start != bytes.m_p2)
            converted += *start++;
    }
    if (text.lineEnds.empty())
        return;
    text.original = std::move(text.text);
    text.text = std::move(converted);
}

LineEnds ChooseLineEnds(const SourceText& text, Newlines newlines) {
    switch (newlines) {
    case Newlines::Lf:
        return LineEnds::Lf;
    case Newlines::CrLf:
        return LineEnds::CrLf;
    case Newlines::Keep:
        break;
    }
    return text.lineEnds.empty() ? LineEnds::AsTheyAre : LineEnds::CrLf;
}

// ---- writing -----------------------------------------------------------------------------------

namespace {

using Kind = MapPiece::Kind;

// Puts an output together from its stretches.
class Writer {
public:
    Writer(const SourceTexts& texts, LineEnds lineEnds, bool withPieces)
        : m_texts(texts), m_lineEnds(lineEnds), m_withPieces(withPieces) {}

    // bytes is the output that the piece describes.
    void Write(const OutputPiece& piece, SubString bytes) {
        if (piece.out == 0)
            return Copy(bytes, piece.in);
        WriteText(bytes);
        if (piece.in.m_p1 == nullptr)
            return Cover({Kind::Indentation, 0, nullptr, 0, 0});
        const SourceText* source = Find(piece.in.m_p1);
        if (source == nullptr)
            return Cover({});
        const ssize_t offset = source->OffsetOf(piece.in.m_p1);
        Cover({Kind::Calculated, 0, source, offset, source->OffsetOf(piece.in.m_p2) - offset});
    }

    // What no piece is asked for.
    void WriteText(SubString s) {
        while (s) {
            const char* lineFeed = FindLineFeed(s);
            m_written.bytes.append(s.m_p1, lineFeed);
            s.setbegin(lineFeed);
            if (s) {
                if (NeedsCr())
                    m_written.bytes += '\r';
                m_written.bytes += '\n';
                ++s;
            }
        }
    }

    Written& Result() { return m_written; }

private:
    // s is what has been copied from a stretch of a source, of which it has the bytes.
    void Copy(SubString s, SubString from) {
        const SourceText* source = Find(from.m_p1);
        const char* pos = from.m_p1;
        while (s) {
            const char* lineFeed = FindLineFeed(s);
            m_written.bytes.append(s.m_p1, lineFeed);
            CoverCopy(source, pos, 0);
            pos += lineFeed - s.m_p1;
            s.setbegin(lineFeed);
            if (s) {
                CopyLineFeed(source, pos++);
                ++s;
            }
        }
    }

    void CopyLineFeed(const SourceText* source, const char* pos) {
        const bool wasCrLf = source != nullptr && source->IsCrLf(pos);
        if (NeedsCr()) {
            m_written.bytes += '\r';
            wasCrLf ? CoverCopy(source, pos, 0) : Cover({});
        }
        m_written.bytes += '\n';
        CoverCopy(source, pos, wasCrLf ? 1 : 0);
    }

    // Whether a line end is to be written that has no CR yet. Takes it away from one that is to
    // have none.
    bool NeedsCr() {
        xstring& bytes = m_written.bytes;
        const bool hasCr = !bytes.empty() && bytes.data_end()[-1] == '\r';
        if (hasCr && m_lineEnds == LineEnds::Lf) {
            bytes.erase(bytes.end() - 1);
            if (bytes.size() < m_covered)
                Uncover();
        }
        return !hasCr && m_lineEnds == LineEnds::CrLf;
    }

    // ---- the pieces

    // A stretch mostly comes from the same source as the one before it.
    const SourceText* Find(const char* pos) {
        if (m_withPieces && (m_source == nullptr || !m_source->Holds(pos, false)))
            m_source = m_texts.Find(pos);
        return m_source;
    }

    // What has been written last is a copy of the source bytes that start at an address, or so many
    // bytes behind it.
    void CoverCopy(const SourceText* source, const char* pos, ssize_t behind) {
        if (source == nullptr)
            return Cover({});
        Cover({Kind::Copied, 0, source, source->OffsetOf(pos) + behind, 0});
    }

    // What has been written last is such a piece. Its size is set here.
    void Cover(WrittenPiece piece) {
        piece.size = m_written.bytes.size() - m_covered;
        if (!m_withPieces || piece.size == 0)
            return;
        m_covered += piece.size;
        if (piece.kind == Kind::Copied)
            piece.length = piece.size;
        if (m_written.pieces.empty() || !Extend(m_written.pieces.back(), piece))
            m_written.pieces.push_back(piece);
    }

    static bool Extend(WrittenPiece& last, const WrittenPiece& piece) {
        const bool goesOn = last.kind == piece.kind && last.source == piece.source
                            && last.offset + last.length == piece.offset;
        if (!goesOn || (piece.kind != Kind::Copied && piece.kind != Kind::Inserted))
            return false;
        last.size += piece.size;
        last.length += piece.length;
        return true;
    }

    // The last byte that was covered has been taken away.
    void Uncover() {
        WrittenPiece& last = m_written.pieces.back();
        --m_covered;
        --last.size;
        if (last.kind == Kind::Copied)
            --last.length;
        if (last.size == 0)
            m_written.pieces.pop_back();
    }

    const SourceTexts& m_texts;
    const LineEnds m_lineEnds;
    const bool m_withPieces;
    Written m_written;
    ssize_t m_covered = 0;  // how many of the bytes written have a piece
    const SourceText* m_source = nullptr;
};

}  // namespace

Written WriteLineEnds(Expansion expansion, const SourceTexts& texts, LineEnds lineEnds,
                      bool withPieces) {
    if (!withPieces && lineEnds == LineEnds::AsTheyAre)
        return {std::move(expansion.text), {}};
    Writer writer(texts, lineEnds, withPieces);
    if (!withPieces) {
        writer.WriteText(expansion.text);
        return std::move(writer.Result());
    }
    const char* pos = expansion.text.data();
    for (const OutputPiece& piece : expansion.pieces.m_pieces) {
        writer.Write(piece, SubString(pos, pos + piece.size()));
        pos += piece.size();
    }
    return std::move(writer.Result());
}

}  // namespace qztools

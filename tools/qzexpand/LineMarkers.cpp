#include "LineMarkers.h"

#include <algorithm>
#include <deque>

#include "CodeLines.h"
#include "TextLines.h"
#include "common/Views.h"

namespace qztools {

using vorn::xstring;

namespace {

constexpr std::string_view s_blanks = " \t\r\n\v\f";
constexpr std::string_view s_byteOrderMark = "\xef\xbb\xbf";

// A line of a source, from 1.
struct SourceLine {
    std::int64_t source;
    std::int64_t line;

    bool operator==(const SourceLine&) const = default;
};

// ---- the directive -----------------------------------------------------------------------------

void AppendOctal(std::string& out, unsigned char byte) {
    out += {'\\', static_cast<char>('0' + (byte >> 6)), static_cast<char>('0' + (byte >> 3 & 7)),
            static_cast<char>('0' + (byte & 7))};
}

// A name as a string of C. Two question marks could start a trigraph.
std::string QuoteC(std::string_view name) {
    std::string quoted("\"");
    for (const char c : name) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7f) {
            AppendOctal(quoted, byte);
            continue;
        }
        if (c == '"' || c == '\\' || (c == '?' && quoted.ends_with('?')))
            quoted += '\\';
        quoted += c;
    }
    return quoted + '"';
}

// ---- a text with pieces, read from its start to its end ----------------------------------------

class PieceReader {
public:
    explicit PieceReader(const MappedText& mapped) : m_mapped(mapped) {}

    // The first byte from one offset up to another that is copied or calculated and not blank: the
    // piece and the offset in the piece; null where there is none. Offsets never fall.
    const MapPiece* FindCode(std::int64_t first, std::int64_t last, std::int64_t& inPiece) {
        for (std::int64_t at = first; at < last; at = End()) {
            while (End() <= at)
                Advance();
            const MapPiece& piece = m_mapped.pieces[m_index];
            if (piece.source < 0)
                continue;
            const std::string_view text = ToView(m_mapped.text);
            const auto from = static_cast<std::size_t>(at);
            const auto size = static_cast<std::size_t>(std::min(last, End()) - at);
            const std::size_t code = text.substr(from, size).find_first_not_of(s_blanks);
            if (code != std::string_view::npos) {
                inPiece = at + static_cast<std::int64_t>(code) - m_start;
                return &piece;
            }
        }
        return nullptr;
    }

    // Appends text and pieces from one offset up to another.
    void Copy(std::int64_t first, std::int64_t last, MappedText& to) {
        to.text.append(m_mapped.text.data() + first, m_mapped.text.data() + last);
        for (std::int64_t at = first; at < last;) {
            while (End() <= at)
                Advance();
            const std::int64_t end = std::min(last, End());
            AppendPiece(to.pieces, Part(at - m_start, end - m_start));
            at = end;
        }
    }

private:
    std::int64_t End() const { return m_start + m_mapped.pieces[m_index].size; }

    void Advance() {
        m_start = End();
        ++m_index;
    }

    MapPiece Part(std::int64_t first, std::int64_t last) const {
        MapPiece part = m_mapped.pieces[m_index];
        part.size = last - first;
        if (part.kind == MapPiece::Kind::Copied) {
            part.offset += first;
            part.length = part.size;
        }
        return part;
    }

    const MappedText& m_mapped;
    std::size_t m_index = 0;   // of a piece
    std::int64_t m_start = 0;  // of that piece in the text
};

// ---- the lines ---------------------------------------------------------------------------------

class Inserter {
public:
    Inserter(const MappedText& mapped, const MapSources& sources)
        : m_sources(sources), m_finder(mapped), m_copier(mapped), m_text(ToView(mapped.text)) {
        for (const SourceText* text : sources.Texts())
            m_lines.emplace_back(ToView(text->Bytes()));
    }

    MappedText Result() {
        while (m_lineStart < m_text.size())
            TakeLine();
        m_copier.Copy(m_copied, std::ssize(m_text), m_result);
        return std::move(m_result);
    }

private:
    void TakeLine() {
        const std::size_t size = m_text.substr(m_lineStart).find('\n');
        const std::string_view line =
            m_text.substr(m_lineStart, size == std::string_view::npos ? size : size + 1);
        if (line.ends_with('\n'))
            m_lineEnd = line.ends_with("\r\n") ? "\r\n" : "\n";
        const std::optional<SourceLine> source = FindSource(line);
        if (source && source != m_next && m_code.MayInsertBefore(line))
            Insert(*source);
        m_code.Read(line);
        if (m_code.HasLeftGroup())
            m_next.reset();
        else if (m_next)
            ++m_next->line;
        m_lineStart += line.size();
    }

    std::optional<SourceLine> FindSource(std::string_view line) {
        const auto first = static_cast<std::int64_t>(m_lineStart);
        std::int64_t inPiece = 0;
        const MapPiece* piece = m_finder.FindCode(first, first + std::ssize(line), inPiece);
        if (piece == nullptr)
            return std::nullopt;
        const bool isCopied = piece->kind == MapPiece::Kind::Copied;
        const TextLines& lines = m_lines[static_cast<std::size_t>(piece->source)];
        return SourceLine{piece->source,
                          1 + lines.LineOf(piece->offset + (isCopied ? inPiece : 0))};
    }

    // A byte order mark has to stay the first of all.
    void Insert(const SourceLine& source) {
        const bool isMarked = m_lineStart == 0 && m_text.starts_with(s_byteOrderMark);
        const auto at =
            static_cast<std::int64_t>(m_lineStart + (isMarked ? s_byteOrderMark.size() : 0));
        m_copier.Copy(m_copied, at, m_result);
        m_copied = at;
        const SourceText& text = *m_sources.Texts()[static_cast<std::size_t>(source.source)];
        const std::string marker = "#line " + std::to_string(source.line) + ' '
                                   + QuoteC(text.path.empty() ? text.name : text.path) + m_lineEnd;
        m_result.text += ToSubString(marker);
        AppendPiece(m_result.pieces, {MapPiece::Kind::Inserted, std::ssize(marker), -1, 0, 0});
        m_code.Inserted();
        m_next = source;
    }

    const MapSources& m_sources;
    std::deque<TextLines> m_lines;  // of the sources
    PieceReader m_finder;
    PieceReader m_copier;
    CodeLines m_code;
    std::string_view m_text;
    std::size_t m_lineStart = 0;
    std::int64_t m_copied = 0;         // up to there
    std::string m_lineEnd = "\n";      // of the lines there
    std::optional<SourceLine> m_next;  // what a compiler takes the next line for
    MappedText m_result;
};

}  // namespace

MappedText InsertLineMarkers(const MappedText& mapped, const MapSources& sources) {
    return Inserter(mapped, sources).Result();
}

}  // namespace qztools

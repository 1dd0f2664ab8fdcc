#include "SourceMapV3.h"

#include <algorithm>
#include <deque>

#include "TextLines.h"
#include "common/Json.h"
#include "common/Vlq.h"

namespace qztools {

namespace {

// ---- mappings ----------------------------------------------------------------------------------

// Where a segment leads, from 0 on.
struct Target {
    std::int64_t source = 0;
    std::int64_t line = 0;
    std::int64_t column = 0;
};

// Writes segments as the distances from those before.
class MappingsText {
public:
    void EndLine() {
        m_text += ';';
        m_column = 0;
        m_isLineEmpty = true;
    }

    // target is null for text that comes from nowhere.
    void Add(std::int64_t column, const Target* target) {
        if (!m_isLineEmpty)
            m_text += ',';
        m_isLineEmpty = false;
        AppendVlq(m_text, column - m_column);
        m_column = column;
        if (target == nullptr)
            return;
        AppendVlq(m_text, target->source - m_target.source);
        AppendVlq(m_text, target->line - m_target.line);
        AppendVlq(m_text, target->column - m_target.column);
        m_target = *target;
    }

    std::string& Text() { return m_text; }

private:
    std::string m_text;
    std::int64_t m_column = 0;
    Target m_target;
    bool m_isLineEmpty = true;
};

// Goes over an output, character by character and piece by piece.
class Walk {
public:
    Walk(const Map& map, std::string_view output, const std::vector<std::string_view>& texts)
        : m_map(map), m_output(output) {
        for (const std::string_view text : texts)
            m_lines.emplace_back(text);
    }

    std::string Mappings() {
        std::size_t offset = 0;
        std::int64_t column = 0;
        while (offset < m_output.size()) {
            if (FindPiece(offset) || column == 0)
                AddSegment(offset, column);
            const Utf16Step step = FirstUtf16Step(m_output.substr(offset));
            column += step.units;
            if (m_output[offset] == '\n') {
                m_mappings.EndLine();
                column = 0;
            }
            offset += step.bytes;
        }
        return std::move(m_mappings.Text());
    }

private:
    // Goes on to the piece that holds an offset. Whether it is another one than before.
    bool FindPiece(std::size_t offset) {
        const std::size_t before = m_index;
        while (offset >= m_start + Size()) {
            m_start += Size();
            ++m_index;
        }
        return m_index != before;
    }

    std::size_t Size() const { return static_cast<std::size_t>(m_map.pieces[m_index].size); }

    void AddSegment(std::size_t offset, std::int64_t column) {
        const MapPiece& piece = m_map.pieces[m_index];
        if (piece.source < 0)
            return m_mappings.Add(column, nullptr);
        const bool isCopied = piece.kind == MapPiece::Kind::Copied;
        const std::int64_t at =
            piece.offset + (isCopied ? static_cast<std::int64_t>(offset - m_start) : 0);
        const TextLines& lines = m_lines[static_cast<std::size_t>(piece.source)];
        const Target target{piece.source, lines.LineOf(at), lines.ColumnOf(at)};
        m_mappings.Add(column, &target);
    }

    const Map& m_map;
    std::string_view m_output;
    std::deque<TextLines> m_lines;  // of the sources
    MappingsText m_mappings;
    std::size_t m_index = 0;  // of the piece
    std::size_t m_start = 0;  // of the piece, in the output
};

// ---- the rest ----------------------------------------------------------------------------------

// A path as a relative reference of the web.
std::string QuoteUrl(std::string_view path) {
    static constexpr std::string_view s_plain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
        "0123456789-._~/!$&'()*+,;=@";
    static constexpr char s_digits[] = "0123456789ABCDEF";
    std::string url("\"");
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (s_plain.find(c) != std::string_view::npos)
            url += c;
        else
            url += {'%', s_digits[byte >> 4], s_digits[byte & 15]};
    }
    return url + '"';
}

template <class Format>
std::string FormatList(const std::vector<MapSource>& sources, Format format) {
    std::string list("[");
    for (const MapSource& source : sources)
        list.append(list.size() > 1 ? "," : "").append(format(source));
    return list + ']';
}

}  // namespace

// Files are read from where they are; the text of anything else is in the map, if it is UTF-8.
std::string FormatSourceMapV3(const Map& map, std::string_view output,
                              const std::vector<std::string_view>& texts) {
    std::string out = "{\"version\":3,";
    if (map.outputName != "-")
        out += "\"file\":" + QuoteUrl(map.outputName) + ',';
    out += "\"sources\":"
           + FormatList(map.sources, [](const MapSource& s) { return QuoteUrl(s.name); });
    if (std::any_of(map.sources.begin(), map.sources.end(),
                    [](const MapSource& s) { return s.text.has_value(); }))
        out += ",\"sourcesContent\":" + FormatList(map.sources, [](const MapSource& s) {
                   return s.text ? QuoteJson(*s.text).value_or("null") : "null";
               });
    return out + ",\"names\":[],\"mappings\":\"" + Walk(map, output, texts).Mappings() + "\"}\n";
}

}  // namespace qztools

#include "Lookup.h"

#include <algorithm>
#include <filesystem>

#include "Origin.h"
#include "common/Excerpt.h"
#include "common/Fault.h"
#include "common/Views.h"
#include "common/Visible.h"
#include "qzUtils/StringExt.h"

namespace qztools {

using Kind = MapPiece::Kind;

namespace {

// Bytes of a text.
struct Range {
    std::int64_t first = 0;
    std::int64_t last = 0;  // behind them

    bool empty() const { return first >= last; }
};

Range Intersection(const Range& a, const Range& b) {
    return {std::max(a.first, b.first), std::min(a.last, b.last)};
}

// What a place names: one byte, or a line without its end; of an empty line, the end alone.
Range RangeOf(const Text& text, const Position& place) {
    if (place.line > text.LineCount())
        throw Fault(text.Name() + " has " + std::to_string(text.LineCount()) + " lines");
    const std::int64_t start = text.LineStart(place.line);
    const std::int64_t size = text.LineEnd(place.line) - start;
    if (place.column > size)
        throw Fault(text.Name() + ':' + std::to_string(place.line) + " has " + std::to_string(size)
                    + " columns");
    if (place.column > 0)
        return {start + place.column - 1, start + place.column};
    const auto content = static_cast<std::int64_t>(text.Line(place.line).size());
    return {start, start + (content > 0 ? content : size)};
}

// The line of a text in which a range starts, with a mark below as much of the range as lies there.
std::string ExcerptOf(const Text& text, const Range& range) {
    const Position position = text.PositionOf(range.first);
    if (position.line > text.LineCount())
        return {};
    const std::string_view line = text.Line(position.line);
    const std::int64_t end = text.LineStart(position.line) + static_cast<std::int64_t>(line.size());
    const std::int64_t size = std::max<std::int64_t>(std::min(range.last, end) - range.first, 1);
    const Excerpt excerpt = MakeExcerpt(line, static_cast<std::size_t>(position.column - 1),
                                        static_cast<std::size_t>(size));
    return line.empty() ? "" : excerpt.line + '\n' + excerpt.blanks + excerpt.mark + '\n';
}

std::string Shown(const Text& text, std::int64_t offset) {
    return VisibleName(PlaceName(text, offset));
}

// "columns 3-7: "
std::string ColumnsOf(const Text& text, const Range& range) {
    const std::int64_t first = text.PositionOf(range.first).column;
    const std::int64_t last = first + (range.last - range.first) - 1;
    if (range.first + 1 == range.last)
        return "column " + std::to_string(first) + ": ";
    return "columns " + std::to_string(first) + '-' + std::to_string(last) + ": ";
}

// ---- from the output to the sources ------------------------------------------------------------

// How much of a text belongs to the bracket that it starts with, up to its end in the same line.
std::size_t SizeOfBracket(std::string_view s) {
    constexpr std::string_view s_open = "([{";
    constexpr std::string_view s_close = ")]}";
    if (s.empty() || s_open.find(s.front()) == std::string_view::npos)
        return 0;
    int depth = 0;
    for (std::size_t i = 0; i < s.size() && s[i] != '\n'; ++i) {
        depth += s_open.find(s[i]) != std::string_view::npos ? 1 : 0;
        depth -= s_close.find(s[i]) != std::string_view::npos ? 1 : 0;
        if (depth == 0)
            return i + 1;
    }
    return std::min(s.find('\n'), s.size());
}

// Of a directive the map names the @ alone. What is shown for it is its name and the bracket
// behind, as far as that can be told without the language.
std::string_view CalculatedFrom(const Text& text, const MapPiece& piece) {
    const std::string_view rest = text.Bytes().substr(static_cast<std::size_t>(piece.offset));
    const auto length = static_cast<std::size_t>(piece.length);
    if (rest.substr(0, length) != "@")
        return rest.substr(0, length);
    vorn::SubString name = ToSubString(rest.substr(1));
    vorn::ScanIdentifier(name);
    const std::string_view behind = ToView(name);
    return rest.substr(0, rest.size() - behind.size() + SizeOfBracket(behind));
}

// The text that something was calculated from, as it fits into a line.
std::string Quoted(std::string_view text) {
    constexpr std::size_t s_most = 60;
    const std::size_t end = std::min(text.find_first_of("\r\n"), s_most);
    return '`' + VisibleName(text.substr(0, end)) + (end < text.size() ? "...`" : "`");
}

std::string DescribeOrigin(const LoadedMap& map, std::size_t index, const Range& range,
                           const std::string& columns) {
    const MapPiece& piece = map.Pieces()[index];
    const Text& output = map.Output();
    if (piece.kind == Kind::Indentation)
        return Shown(output, range.first) + ": " + columns + "indentation\n";
    if (piece.kind == Kind::Inserted)
        return Shown(output, range.first) + ": " + columns + "inserted by qzexpand\n"
               + ExcerptOf(output, range);
    const Text& source = map.Source(piece.source);
    if (piece.kind == Kind::Calculated)
        return Shown(source, piece.offset) + ": " + columns + "calculated from "
               + Quoted(CalculatedFrom(source, piece)) + '\n'
               + ExcerptOf(source, {piece.offset, piece.offset + piece.length});
    const std::int64_t first = piece.offset + (range.first - map.StartOf(index));
    return Shown(source, first) + ": " + columns + "copied\n"
           + ExcerptOf(source, {first, first + (range.last - range.first)});
}

std::string LookupOutput(const LoadedMap& map, const Position& place) {
    const Range range = RangeOf(map.Output(), place);
    std::string result;
    for (std::size_t i = map.PieceAt(range.first);
         i < map.Pieces().size() && map.StartOf(i) < range.last; ++i) {
        const Range part =
            Intersection(range, {map.StartOf(i), map.StartOf(i) + map.Pieces()[i].size});
        const std::string columns = place.column == 0 ? ColumnsOf(map.Output(), part) : "";
        result += DescribeOrigin(map, i, part, columns);
    }
    return result;
}

// ---- from a source to the output ---------------------------------------------------------------

// Names are compared as they are shown and as they stand in the map; paths by what they lead to.
std::int64_t FindSource(const LoadedMap& map, const std::string& name) {
    for (std::int64_t i = 0; i < map.SourceCount(); ++i)
        if (map.Source(i).Name() == name)
            return i;
    for (std::int64_t i = 0; i < map.SourceCount(); ++i) {
        std::error_code error;
        const std::string& path = map.Source(i).Path();
        if (!path.empty() && std::filesystem::equivalent(path, name, error))
            return i;
    }
    throw Fault(map.Name() + ": " + name + " is no source of " + map.Output().Name());
}

// Where the part of a piece is that came from the range.
Range OutputOf(const LoadedMap& map, std::size_t index, const Range& part) {
    const MapPiece& piece = map.Pieces()[index];
    const std::int64_t start = map.StartOf(index);
    if (piece.kind == Kind::Calculated)
        return {start, start + piece.size};
    return {start + part.first - piece.offset, start + part.last - piece.offset};
}

std::string LookupSource(const LoadedMap& map, const std::string& name, const Position& place) {
    const std::int64_t source = FindSource(map, name);
    const Text& text = map.Source(source);
    const Range range = RangeOf(text, place);
    std::string result;
    for (std::size_t i = 0; i < map.Pieces().size(); ++i) {
        const MapPiece& piece = map.Pieces()[i];
        const Range part = Intersection(range, {piece.offset, piece.offset + piece.length});
        if (piece.source != source || part.empty())
            continue;
        const Range there = OutputOf(map, i, part);
        result += Shown(map.Output(), there.first)
                  + (piece.kind == Kind::Copied ? ": copied\n" : ": calculated\n")
                  + ExcerptOf(map.Output(), there);
    }
    if (result.empty())
        throw Fault(PlaceName(text, range.first) + ": nothing of this is in "
                    + map.Output().Name());
    return result;
}

}  // namespace

std::string Lookup(const Options& options) {
    const LoadedMap map(options.maps.front(), options.whereabouts);
    return options.source ? LookupSource(map, *options.source, options.place)
                          : LookupOutput(map, options.place);
}

}  // namespace qztools

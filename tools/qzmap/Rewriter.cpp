#include "Rewriter.h"

#include <algorithm>
#include <filesystem>

#include "common/Fault.h"

namespace qztools {

namespace {

bool IsThere(const std::string& path) {
    std::error_code error;
    return std::filesystem::exists(path, error);
}

}  // namespace

Rewriter::Rewriter(const Options& options, const Reporter& report)
    : m_options(options), m_report(report), m_columns(options.columns) {
    for (const std::string& path : options.maps) {
        if (IsThere(path))
            AddTarget(path);
        else
            m_missing.push_back(path);
    }
}

void Rewriter::AddTarget(const std::string& mapPath) {
    try {
        m_targets.emplace_back(mapPath, m_options.whereabouts, m_options.folder);
    } catch (const Fault& e) {
        m_report(e.what());
        m_isComplete = false;
    }
}

// A first build makes its maps while its messages come in.
void Rewriter::AddMissing() {
    const auto there = std::stable_partition(
        m_missing.begin(), m_missing.end(), [](const std::string& path) { return !IsThere(path); });
    for (auto path = there; path != m_missing.end(); ++path)
        AddTarget(*path);
    m_missing.erase(there, m_missing.end());
}

bool Rewriter::IsComplete() const {
    return m_isComplete
           && std::none_of(m_targets.begin(), m_targets.end(),
                           [](const Target& target) { return target.IsRefused(); });
}

// ---- places ------------------------------------------------------------------------------------

// Returns where the name starts, and notes whose it is.
std::size_t Rewriter::FindName(std::string_view line, std::size_t nameLast) {
    AddMissing();
    for (Target& target : m_targets) {
        const std::size_t first = target.FindName(line, nameLast);
        m_named = &target;
        if (first != std::string_view::npos)
            return first;
    }
    return std::string_view::npos;
}

std::optional<MessagePlace> Rewriter::FindNext(std::string_view line, std::size_t from) {
    return FindPlace(line, from, [this](std::string_view all, std::size_t nameLast) {
        return FindName(all, nameLast);
    });
}

// A place in what the tool put in, and one that is not in the output, stays as it is.
std::optional<Rewriter::Found> Rewriter::Map(const MessagePlace& place) {
    const LoadedMap* map = m_named->Load(m_report);
    const std::int64_t line = place.line.value;
    if (map == nullptr || line < 1 || line > map->Output().LineCount())
        return std::nullopt;
    const Text& output = map->Output();
    std::optional<Origin> origin;
    if (!place.column || place.column->value < 1) {
        origin = OriginOfLine(*map, line);
    } else {
        const std::int64_t byte = m_columns.ByteOf(output.Line(line), place.column->value);
        const std::int64_t last = output.LineEnd(line) - 1;
        origin = OriginOfPlace(*map, std::min(output.LineStart(line) + byte, last));
    }
    return origin ? std::optional(Found{m_named, line, *origin}) : std::nullopt;
}

// ---- a line ------------------------------------------------------------------------------------

namespace {

std::string ColumnOf(const Columns& columns, const Origin& origin) {
    const Position position = origin.text->PositionOf(origin.offset);
    return std::to_string(columns.ColumnOf(origin.text->Line(position.line), position.column - 1));
}

std::string LineOf(const Origin& origin) {
    return std::to_string(origin.text->PositionOf(origin.offset).line);
}

}  // namespace

// What stands between the parts of a place is copied.
void Rewriter::AppendPlace(std::string_view line, const MessagePlace& place, const Found& found,
                           std::string& out) {
    out += found.origin.text->Name();
    out += line.substr(place.nameLast, place.line.first - place.nameLast);
    out += LineOf(found.origin);
    std::size_t end = place.line.last;
    if (place.column) {
        out += line.substr(end, place.column->first - end);
        const bool isColumn = place.column->value > 0;
        out += isColumn ? ColumnOf(m_columns, found.origin) : std::to_string(0);
        end = place.column->last;
    }
    if (!place.ranges.empty()) {
        AppendRanges(place, found, out);
        return;
    }
    out += line.substr(end, place.last - end);
}

// The end of a range is the byte behind its last one, which can have come from somewhere else, so
// the last one is mapped. A range that does not lie in one source is left out, with all others.
void Rewriter::AppendRanges(const MessagePlace& place, const Found& found, std::string& out) {
    std::string ranges(":");
    for (std::size_t i = 0; i < place.ranges.size(); i += 2) {
        const bool isEnd = i % 4 == 2;
        MessagePlace part;
        part.line = place.ranges[i];
        part.column = place.ranges[i + 1];
        part.column->value -= isEnd ? 1 : 0;
        std::optional<Found> end = part.column->value < 1 ? std::nullopt : Map(part);
        if (!end || end->origin.text != found.origin.text)
            return;
        end->origin.offset += isEnd ? 1 : 0;
        ranges += isEnd ? "" : "{";
        ranges += LineOf(end->origin) + ':' + ColumnOf(m_columns, end->origin);
        ranges += isEnd ? '}' : '-';
    }
    out += ranges;
}

// Returns whether there are any.
bool Rewriter::AppendPlaces(std::string_view line, bool isCut, std::string& out) {
    std::size_t done = 0;
    bool isFound = false;
    while (const std::optional<MessagePlace> place = FindNext(line, done)) {
        out += line.substr(done, place->nameFirst - done);
        const bool isWhole = !isCut || place->last < line.size();
        const std::optional<Found> found = isWhole ? Map(*place) : std::nullopt;
        if (found)
            AppendPlace(line, *place, *found, out);
        else
            out += line.substr(place->nameFirst, place->last - place->nameFirst);
        if (!isFound)
            m_found = found;
        isFound = true;
        done = place->last;
    }
    out += line.substr(done);
    return isFound;
}

// ---- excerpts ----------------------------------------------------------------------------------

namespace {

std::string_view WithoutIndentation(std::string_view line) {
    return line.substr(std::min(line.find_first_not_of(" \t"), line.size()));
}

}  // namespace

// The line of the source that a line of the output is a copy of, if the last message points there.
std::optional<std::int64_t> Rewriter::LineOfExcerpt(std::int64_t line, const std::string& plain) {
    const LoadedMap* map = m_found ? m_found->target->Load(m_report) : nullptr;
    if (map == nullptr || line < 1 || line > map->Output().LineCount())
        return std::nullopt;
    const std::string_view shown = map->Output().Line(line);
    const std::optional<Origin> origin = OriginOfLine(*map, line);
    if (!origin || origin->text != m_found->origin.text || ExpandTabs(shown) != ExpandTabs(plain))
        return std::nullopt;
    const std::int64_t there = origin->text->PositionOf(origin->offset).line;
    const bool isSame = WithoutIndentation(origin->text->Line(there)) == WithoutIndentation(shown);
    return isSame ? std::optional(there) : std::nullopt;
}

// Excerpts show the output. The number in front of a line of them becomes that of the source where
// the whole line is the same there, but for its indentation, and the number has room.
bool Rewriter::AppendExcerpt(std::string_view line, std::string& out) {
    std::string plain;
    const std::string_view content = line.substr(0, line.find_last_not_of("\r\n") + 1);
    if (const std::optional<Number> number = FindGutter(content, plain)) {
        const std::optional<std::int64_t> there = LineOfExcerpt(number->value, plain);
        std::string digits = there ? std::to_string(*there) : "";
        const std::size_t blanks = line.find_first_not_of(' ');
        if (there && blanks == number->first && digits.size() < number->last) {
            out += std::string(number->last - digits.size(), ' ') + digits;
            line.remove_prefix(number->last);
        }
        out += line;
        return true;
    }
    const bool isShown =
        m_found && m_found->target->Load(m_report) != nullptr
        && ExpandTabs(WithoutColours(content))
               == ExpandTabs(m_found->target->Load(m_report)->Output().Line(m_found->line));
    if (isShown || IsExcerpt(content))
        out += line;
    return isShown || IsExcerpt(content);
}

// ---- headings ----------------------------------------------------------------------------------

// A heading has no line of its own. It waits for the message behind it, whose file it gets.
bool Rewriter::HoldHeading(std::string_view line) {
    const std::optional<Heading> heading =
        FindHeading(line, [this](std::string_view all, std::size_t nameLast) {
            return FindName(all, nameLast);
        });
    if (!heading)
        return false;
    m_heading = line;
    m_headingName = *heading;
    m_headingTarget = m_named;
    m_columns.GuessDisplay();
    return true;
}

void Rewriter::ReleaseHeading(std::string& out) {
    out += m_heading;
    m_heading.clear();
}

void Rewriter::Finish(std::string& out) {
    ReleaseHeading(out);
    for (const std::string& path : m_missing)
        AddTarget(path);
}

void Rewriter::Rewrite(std::string_view line, bool isCut, std::string& out) {
    if (m_heading.empty() && AppendExcerpt(line, out))
        return;
    std::string rewritten;
    const bool isPlace = AppendPlaces(line, isCut, rewritten);
    if (!m_heading.empty() && isPlace && m_found && m_found->target == m_headingTarget)
        m_heading.replace(m_headingName.nameFirst, m_headingName.nameLast - m_headingName.nameFirst,
                          m_found->origin.text->Name());
    ReleaseHeading(out);
    if (isPlace || isCut || !HoldHeading(line))
        out += rewritten;
}

}  // namespace qztools

// The lines of a compiler's messages, one after the other.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <string_view>

#include "Columns.h"
#include "Message.h"
#include "Origin.h"
#include "Target.h"

namespace qztools {

class Rewriter {
public:
    // REQUIRES: the options live as long.
    Rewriter(const Options& options, const Reporter& report);

    // Takes a line with its end, or a part of a very long line that is cut behind it, and appends
    // to out what is known about it and the lines before.
    void Rewrite(std::string_view line, bool isCut, std::string& out);

    // Appends what has been held back, and reports the maps that never came.
    void Finish(std::string& out);

    // Whether all maps could be used.
    bool IsComplete() const;

private:
    // What a place of a message has become.
    struct Found {
        Target* target = nullptr;
        std::int64_t line = 0;  // of the output
        Origin origin;
    };

    void AddTarget(const std::string& mapPath);
    void AddMissing();
    std::size_t FindName(std::string_view line, std::size_t nameLast);
    std::optional<MessagePlace> FindNext(std::string_view line, std::size_t from);
    std::optional<Found> Map(const MessagePlace& place);
    bool AppendPlaces(std::string_view line, bool isCut, std::string& out);
    void AppendPlace(std::string_view line, const MessagePlace& place, const Found& found,
                     std::string& out);
    void AppendRanges(const MessagePlace& place, const Found& found, std::string& out);
    bool AppendExcerpt(std::string_view line, std::string& out);
    std::optional<std::int64_t> LineOfExcerpt(std::int64_t line, const std::string& plain);
    bool HoldHeading(std::string_view line);
    void ReleaseHeading(std::string& out);

    const Options& m_options;
    Reporter m_report;
    Columns m_columns;
    std::deque<Target> m_targets;
    std::vector<std::string> m_missing;  // maps that are not there yet
    bool m_isComplete = true;
    Target* m_named = nullptr;     // by the place or heading found last
    std::optional<Found> m_found;  // by the last message
    std::string m_heading;         // a line that waits for the message behind it
    Heading m_headingName;
    Target* m_headingTarget = nullptr;
};

}  // namespace qztools

// Places in the messages of compilers.
//
// Understood are the forms of GCC and Clang, and of tools that write like them,
//
//   NAME:3: ...   NAME:3:7: ...   NAME:3:7:{3:7-3:9}{4:1-4:2}: ...   from NAME:3,
//
// that of other compilers, NAME(3): ... and NAME(3,7): ..., and that of Python, "NAME", line 3.
// Colours may stand around a place.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

namespace qztools {

// A number in a line: bytes first to last of it.
struct Number {
    std::size_t first = 0;
    std::size_t last = 0;
    std::int64_t value = 0;
};

// A place in a line. The parts lie in this order; what stands between them is no part of it.
struct MessagePlace {
    std::size_t nameFirst = 0;
    std::size_t nameLast = 0;
    Number line;
    std::optional<Number> column;
    std::vector<Number> ranges;   // line, column, line, column of each range
    std::size_t rangesFirst = 0;  // the bytes of all ranges, with their braces
    std::size_t last = 0;         // behind the place
};

// Finds the name that stands directly in front of a position of the line. Returns where it starts,
// npos where there is none.
using FindName = std::function<std::size_t(std::string_view line, std::size_t nameLast)>;

// The first place at or behind from whose name is found.
std::optional<MessagePlace> FindPlace(std::string_view line, std::size_t from,
                                      const FindName& findName);

// The name in a line that is a heading for the messages behind it, as GCC writes them:
//
//   NAME: In function 'int main()':     NAME: At global scope:
struct Heading {
    std::size_t nameFirst = 0;
    std::size_t nameLast = 0;
};
std::optional<Heading> FindHeading(std::string_view line, const FindName& findName);

// The gutter in front of a source line that is shown: "   12 | int a = b;". The line without its
// colours is put into plain.
std::optional<Number> FindGutter(std::string_view line, std::string& plain);

// Whether the line belongs to such an excerpt, the line of marks included: "      | ^~~".
bool IsExcerpt(std::string_view line);

// A line without the sequences that colour it.
std::string WithoutColours(std::string_view line);

// The size of the sequence for the terminal that starts here, 0 where none does.
std::size_t SizeOfSequence(std::string_view s);

}  // namespace qztools

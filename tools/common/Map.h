// The map of an output: for every byte of it, the source byte that it came from.
//
// In a file a map is a JSON object:
//
//   {"format": "qzmap", "version": 1,
//    "output": {"name": "a.cpp", "size": 17, "hash": "sha256:0a1b..."},
//    "sources": [
//     {"name": "../src/a.cpp.qz", "size": 40, "hash": "sha256:4c5d..."},
//     {"name": "<-D n>", "text": "5"}],
//    "pieces": ["IAA,CEA,Q,GAUM"]}
//
// The pieces stand in the order of the output and cover it exactly. Each is a record of one to four
// numbers, written as in the mappings of a Source Map (see Vlq.h), with a comma between two records
// and whole records in every string:
//
//   n             n bytes of indentation
//   n r d         n bytes copied from a source
//   n r d m       n bytes that were calculated from m bytes of a source: a directive or a name
//   n -1          n bytes that the tool put in, such as a line marker
//
// Every source has two marks, which lie at its start in the beginning. r / 2, rounded down, is the
// index of the source, and r % 2 is one of its marks. d is the distance in bytes from this mark to
// the first source byte of the piece, and the mark moves to the end of that stretch of the source.
// With two of them, going to and fro between the uses of a macro and its text takes short
// distances. Copied stretches that follow each other in the output and in the source are one
// piece. So the pieces above are 4 0 0, 1 2 0, 8 and 3 0 10 6.
//
// The name of a file is its path as seen from the folder of the map, or an absolute path, so that
// a tree can be moved as a whole. A source that is no file has its bytes in the map, as "text"
// where they are UTF-8 and as "base64" where they are not. An output that went to standard output
// has the name "-".
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qztools {

struct MapSource {
    std::string name;
    std::int64_t size = 0;            // in bytes
    std::string hash;                 // see HashOf
    std::optional<std::string> text;  // of a source that is no file
};

struct MapPiece {
    enum class Kind { Copied, Calculated, Indentation, Inserted };

    Kind kind = Kind::Inserted;
    std::int64_t size = 0;     // in bytes of output; not 0
    std::int64_t source = -1;  // an index; -1 for indentation and what was inserted
    std::int64_t offset = 0;   // of the first source byte
    std::int64_t length = 0;   // in bytes of source; of what was copied, the size

    bool operator==(const MapPiece&) const = default;
};

struct Map {
    std::string outputName;
    std::int64_t outputSize = 0;
    std::string outputHash;
    std::vector<MapSource> sources;
    std::vector<MapPiece> pieces;
};

// "sha256:" and 64 lower-case hexadecimal digits.
std::string HashOf(std::string_view bytes);

// The map in its form for a file, with a line feed at the end. Throws Fault for a name that is no
// UTF-8, which JSON cannot hold.
std::string FormatMap(const Map& map);

// Reads that form; name is the map's own name for messages. Throws Fault, "NAME: ...", for a text
// that is no such map: no JSON, an unknown version, a missing field, a piece that reaches outside
// its source, pieces that do not add up to the size of the output.
Map ParseMap(const std::string& name, std::string_view text);

}  // namespace qztools

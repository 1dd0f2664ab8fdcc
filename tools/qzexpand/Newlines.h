// Line ends: LF within, CR LF outside where that is the custom of a text.
//
// The language knows line ends as LF alone: a CR in front of one would be a byte of its line, in
// the way of whatever has to stand at the line's end. So a text with line ends CR LF is expanded as
// if it had LF, and its expansion is written with CR LF. The positions of both sides, in the file
// as it was read and in the output as it is written, are exact throughout.
#pragma once

#include <vector>

#include "Expansion.h"
#include "Options.h"
#include "SourceTexts.h"
#include "common/Map.h"

namespace qztools {

// Turns the line ends CR LF of a file that has just been read into LF: under Keep where it has no
// others, otherwise wherever there are any. A CR elsewhere stays.
void ReadLineEnds(SourceText& text, Newlines newlines);

// How line ends are written: as they are, or all of them in one way.
enum class LineEnds { AsTheyAre, Lf, CrLf };

// What becomes of the expansion of a text: under Keep, that text decides.
LineEnds ChooseLineEnds(const SourceText& text, Newlines newlines);

// A stretch of the output as it is written, like MapPiece.
struct WrittenPiece {
    MapPiece::Kind kind = MapPiece::Kind::Inserted;
    vorn::ssize_t size = 0;              // in bytes of output; not 0
    const SourceText* source = nullptr;  // null where there is none
    vorn::ssize_t offset = 0;            // in the bytes of the source: see SourceText::Bytes
    vorn::ssize_t length = 0;            // likewise; of what was copied, the size

    bool operator==(const WrittenPiece&) const = default;
};

// The bytes of an output and its pieces, which cover it exactly. A byte that was copied is the byte
// of the source, line ends included: a CR LF that was LF in between is a copy of both bytes, one
// with a LF for its source a copy with an inserted CR. What comes from a text that is none of the
// session's, which the expansion put together on its way, counts as inserted.
struct Written {
    vorn::xstring bytes;
    std::vector<WrittenPiece> pieces;  // without two copied ones that could be one
};

// The pieces are made only where they are asked for.
Written WriteLineEnds(Expansion expansion, const SourceTexts& texts, LineEnds lineEnds,
                      bool withPieces);

}  // namespace qztools

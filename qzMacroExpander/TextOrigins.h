// Where the texts that expansion itself puts together came from.
//
// Some directives put a text together and then expand it: the list of a @for, the call that a
// function argument stands for, the inner text of a @[ ]. Output that was copied from such a text
// names addresses in it, and as a rule the text is gone by the time somebody asks. A host that
// wants to follow every byte of its output to a text of its own sets the m_textOrigins of the
// file's frame to an object of this class before the first expansion:
//
//   TextOrigins origins;              // outlives the frame
//   FileScopeVarFrame frame;
//   frame.m_textOrigins = &origins;
//   MacroExpand(handler, &frame, text, 0, 0, result, pieces);
//   OutputPieces followed;
//   for (const OutputPiece& piece : pieces.m_pieces)
//       origins.Follow(piece, followed);
//
// It costs the memory of each such text and of its pieces. One thread at a time may use an object.
#pragma once

#include <functional>
#include <map>
#include <vector>

#include "qzMacroExpander/ExpandedOutput.h"
#include "qzMacroExpander/LSVariable.h"

namespace vorn {

class TextOrigins {
public:
    // Keeps a text with the record of where it came from, which covers it exactly. The expansion
    // calls this; what the pieces refer to is one of the host's texts, or was added before.
    void Add(const KeptText& text, const OutputPieces& pieces);

    // Appends to result what piece stands for: pieces of the same kinds and, together, of the same
    // size, with no address in a text that was added. A calculated piece stays one; its source is
    // what its first source byte came from. Any other piece is appended as it is. Takes time in
    // proportion to the logarithm of what was added, and to what is appended.
    void Follow(const OutputPiece& piece, OutputPieces& result) const;

private:
    // The pieces of a text, none of which refers to a text that was added.
    struct Origin {
        KeptText text;
        OutputPieces pieces;
        std::vector<ssize_t> offsets;  // of the pieces, in the text

        ssize_t PieceAt(ssize_t offset) const;
        void FollowCopied(ssize_t first, ssize_t last, OutputPieces& result) const;
        SubString FollowSource(ssize_t first, ssize_t size) const;
    };

    const Origin* Find(const xchar* pos) const;

    std::map<const xchar*, Origin, std::less<>> m_origins;  // by the start of the text
};

}  // namespace vorn

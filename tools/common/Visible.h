// Text from outside, made fit to be shown on a terminal.
//
// A text that is reported can hold any byte, and a terminal obeys some of them. Printable ASCII
// and valid UTF-8 are shown as they are. Everything else is shown byte by byte as \x1b: control
// bytes, bytes that are no UTF-8, and the characters that control a terminal or turn the
// direction of what follows.
#pragma once

#include <string>
#include <string_view>

namespace qztools {

// The first character of a text: its bytes, and what is shown for it.
struct Glyph {
    std::size_t size = 0;  // in bytes
    bool isShownAsItIs = false;

    // The terminal columns it takes; a tab and a line feed do not count.
    std::size_t Columns() const { return isShownAsItIs ? 1 : 4 * size; }
};

// REQUIRES: s is not empty.
Glyph FirstGlyph(std::string_view s);

// Appends the first character of s in its visible form.
void AppendGlyph(std::string& out, std::string_view s, const Glyph& glyph);

// A text in its visible form. Line feeds and tabs stay.
std::string Visible(std::string_view s);

// The same for text that has to stay on its line: line feeds and tabs become visible as well.
std::string VisibleName(std::string_view s);

}  // namespace qztools

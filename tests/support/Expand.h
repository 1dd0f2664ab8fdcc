// What tests of expansion share: a file scope with the texts that are expanded in it, a check
// that the pieces of an output cover it, cases for tables, and an import handler on files in
// memory.
#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "qzMacroExpander/MacroExpand.h"
#include "qzUtils/StringStream.h"
#include "tests/support/Text.h"

namespace vorn_test {

// The column that follows on an output: -1 where its last line has not begun.
inline vorn::ssize_t ColumnBehind(std::string_view output) {
    const std::string_view line = output.substr(output.rfind('\n') + 1);
    vorn::ssize_t column = line.empty() ? -1 : 0;
    for (const char c : line)
        column += c == '\t' ? 4 : 1;
    return column;
}

// A file scope and the texts that have been expanded in it. Every expansion, a failing one too, is
// checked: its pieces, laid end to end, cover its output, and its column is that of the output.
class Session {
public:
    vorn::ImportHandler* m_importHandler = nullptr;
    vorn::OutputPieces m_pieces;  // of the last expansion
    std::string m_output;         // of the last expansion

private:
    std::deque<HeapText> m_texts;

public:
    vorn::FileScopeVarFrame m_frame;

    std::string Expand(std::string_view text, vorn::ssize_t srcIndent = 0,
                       vorn::ssize_t dstIndent = 0) {
        return ExpandIn(m_frame, text, srcIndent, dstIndent);
    }

    std::string ExpandIn(vorn::VarFrame& frame, std::string_view text, vorn::ssize_t srcIndent = 0,
                         vorn::ssize_t dstIndent = 0) {
        const vorn::SubString source = m_texts.emplace_back(text).View();
        vorn::StringStream os(4096);
        vorn::ExpandedOutput output(os);
        try {
            vorn::MacroExpand(m_importHandler, &frame, source, srcIndent, dstIndent, output);
        } catch (const vorn::LexScannerException&) {
            Take(os, output);
            throw;
        }
        Take(os, output);
        return m_output;
    }

    // The error of an expansion, with its place as an offset in text.
    LexError ExpandError(std::string_view text) { return ExpandErrorIn(m_frame, text); }
    LexError ExpandErrorIn(vorn::VarFrame& frame, std::string_view text) {
        try {
            ExpandIn(frame, text);
        } catch (const vorn::LexScannerException& e) {
            return LexErrorOf(LastText().m_p1, [&e] { throw e; });
        }
        return {"(no error)", -1};
    }

    // The text expanded last.
    vorn::SubString LastText() const { return m_texts.back().View(); }

    // The pieces of the last expansion: "verbatim x", "indentation 4", "calculated m 2". Where
    // the source is a text that may be gone, a ? stands for it.
    std::vector<std::string> Pieces() const {
        std::vector<std::string> pieces;
        for (const vorn::OutputPiece& piece : m_pieces.m_pieces) {
            const std::string in = Holds(piece.in) ? Str(piece.in) : "?";
            const std::string out = std::to_string(piece.out);
            if (piece.out == 0)
                pieces.push_back("verbatim " + in);
            else if (piece.in.m_p1 == nullptr)
                pieces.push_back("indentation " + out);
            else
                pieces.push_back("calculated " + in + ' ' + out);
        }
        return pieces;
    }

    // The offset in the text expanded last that a position of its output comes from.
    vorn::ssize_t SourceOffset(vorn::ssize_t pos) const {
        return m_pieces.MapOutputPositionToAddress(pos) - LastText().m_p1;
    }

private:
    void Take(vorn::StringStream& os, vorn::ExpandedOutput& output) {
        m_output = Str(os.GetString());
        const auto size = static_cast<vorn::ssize_t>(m_output.size());
        EXPECT_EQ(output.m_size, size);
        EXPECT_EQ(output.size(), size);
        EXPECT_EQ(output.GetColumnPos(), ColumnBehind(m_output));
        m_pieces.m_pieces.clear();
        output.GetPieces(m_pieces);
        CheckPieces();
    }

    void CheckPieces() const {
        std::size_t offset = 0;
        for (const vorn::OutputPiece& piece : m_pieces.m_pieces) {
            const auto size = static_cast<std::size_t>(piece.size());
            EXPECT_GT(size, 0U) << "an empty piece at offset " << offset;
            ASSERT_LE(offset + size, m_output.size());
            CheckPiece(piece, m_output.substr(offset, size), offset);
            offset += size;
        }
        EXPECT_EQ(offset, m_output.size()) << "where the pieces end";
    }

    void CheckPiece(const vorn::OutputPiece& piece, const std::string& output,
                    std::size_t offset) const {
        if (piece.in.m_p1 == nullptr) {
            EXPECT_EQ(output, std::string(output.size(), ' ')) << "at offset " << offset;
        } else if (piece.out == 0 && Holds(piece.in)) {
            EXPECT_EQ(output, Str(piece.in)) << "at offset " << offset;
        }
    }

    // Whether s lies in one of the texts. A text put together during expansion may be gone.
    bool Holds(vorn::SubString s) const {
        const std::less<const char*> before;
        for (const HeapText& text : m_texts) {
            if (!before(s.m_p1, text.begin()) && !before(text.end(), s.m_p2))
                return true;
        }
        return false;
    }
};

// The expansion of a text in a file scope of its own, and the error of one.
inline std::string Expand(std::string_view text, vorn::ssize_t srcIndent = 0,
                          vorn::ssize_t dstIndent = 0) {
    return Session().Expand(text, srcIndent, dstIndent);
}
inline LexError ExpandError(std::string_view text) {
    return Session().ExpandError(text);
}

// A text and what it expands to, as the parameter of a test that is named for what it shows.
struct Expansion {
    std::string_view text;
    std::string_view output;
};

inline void PrintTo(const Expansion& expansion, std::ostream* os) {
    *os << testing::PrintToString(std::string(expansion.text));
}

// Imports files that lie in memory: they are expanded for their definitions.
class MemoryFiles : public vorn::ImportHandler {
public:
    std::map<std::string, std::string> m_files;
    std::vector<std::string> m_importPaths;

    bool HandleImportPath(const vorn::xstring& importPath, const vorn::xchar*) override {
        m_importPaths.push_back(Str(importPath));
        return true;
    }

    bool HandleImport(vorn::VarFrame* vf, const vorn::xstring& importPath,
                      const vorn::xchar*) override {
        const auto file = m_files.find(Str(importPath));
        if (file == m_files.end())
            return false;
        const char* text = file->second.data();
        vorn::xstring ignored;
        vorn::MacroExpand(this, vf, vorn::SubString(text, text + file->second.size()), 0, 0,
                          ignored);
        return true;
    }
};

}  // namespace vorn_test

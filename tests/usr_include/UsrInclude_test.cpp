// Every C header below /usr/include is a text of the language: it comes out as it went in, or it is
// refused with an error of the scanner.

#include <filesystem>
#include <iostream>
#include <map>

#include "qzMacroExpander/MacroExpand.h"
#include "qzUtils/FilePath.h"
#include "tests/support/Text.h"

namespace {

using namespace vorn;
namespace fs = std::filesystem;

// The pieces, laid end to end, are the text: nothing but verbatim pieces, each a part of the
// source right behind the one before it.
bool PiecesCover(const OutputPieces& pieces, SubString source, SubString output) {
    const char* next = source.m_p1;
    for (const OutputPiece& piece : pieces.m_pieces) {
        if (piece.out != 0 || piece.in.m_p1 != next || piece.in.empty())
            return false;
        next = piece.in.m_p2;
    }
    return next == source.m_p2 && pieces.size() == output.size();
}

// The message up to what it quotes, so that messages of one kind count as one.
std::string Kind(const LexScannerException& e) {
    const std::string message = vorn_test::Str(e.m_description);
    std::size_t end = message.size();
    for (const char* mark : {" after reading ", "Bad token ", "(not ", "escape character "})
        end = std::min(end, message.find(mark));
    return message.substr(0, end);
}

class Headers {
public:
    void Add(const fs::path& path) {
        xstring source;
        if (!ReadStringFromFile(source, xstring(path.c_str()), true)) {
            ++m_unreadable;
            return;
        }
        try {
            Check(path, source);
            ++m_accepted;
        } catch (const LexScannerException& e) {
            EXPECT_GE(GetLineNumber(source, e.m_pos), 1) << path;
            ++m_refused[Kind(e)];
        }
    }

    long Accepted() const { return m_accepted; }

    void Print() const {
        std::cout << m_accepted << " files accepted, " << m_unreadable << " unreadable, refused:\n";
        for (const auto& [kind, count] : m_refused)
            std::cout << "    " << count << "  " << kind << "\n";
    }

private:
    static void Check(const fs::path& path, const xstring& source) {
        VarFrame frame(nullptr);
        xstring text;
        OutputPieces pieces;
        MacroExpand(nullptr, &frame, source, 0, 0, text, pieces);
        EXPECT_TRUE(text == source) << path;
        EXPECT_TRUE(PiecesCover(pieces, source, text)) << path;
    }

    long m_accepted = 0;
    long m_unreadable = 0;
    std::map<std::string, long> m_refused;
};

TEST(UsrInclude, EveryHeaderComesOutAsItWentInOrIsRefused) {
    Headers headers;
    for (const auto& entry : fs::recursive_directory_iterator(
             "/usr/include", fs::directory_options::skip_permission_denied)) {
        if (entry.path().extension() == ".h")
            headers.Add(entry.path());
    }
    headers.Print();
    EXPECT_GT(headers.Accepted(), 0);
}

}  // namespace

// Expands every text of a folder and compares it with what is written beside it:
//
//   Language_test FOLDER
//
//   NAME.qz       the text; it is expanded in a fresh file scope, without an import handler
//   NAME.out      the output, byte for byte
//   NAME.err      instead of it, the error: its message, and a last line that names its place as
//                 "line L, column C", both counted from 1, or as "nowhere" if it does not lie in
//                 the text. If there is a NAME.out too, it holds what was written in front.
//   NAME.printed  what the text prints on standard output; nothing if there is no such file
//
// A text needs a NAME.out or a NAME.err, and each of these needs its text.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <set>
#include <string>

#include "qzMacroExpander/MacroExpand.h"
#include "qzUtils/StringStream.h"
#include "tests/support/Text.h"

namespace vorn_test {
namespace {

using namespace vorn;
namespace fs = std::filesystem;

// What an expansion yields, in the form of the files.
struct Result {
    std::string out;
    std::string err;  // empty if there was none
    std::string printed;
};

// A text that is not there counts as empty.
std::string Read(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The place of pos in text, a position behind its last byte included.
std::string Place(const HeapText& text, const xchar* pos) {
    const std::less<const xchar*> before;
    if (pos == nullptr || before(pos, text.begin()) || before(text.end(), pos))
        return "nowhere";
    const xchar* lineStart = pos;
    while (lineStart != text.begin() && lineStart[-1] != '\n')
        --lineStart;
    return "line " + std::to_string(1 + std::count(text.begin(), pos, '\n')) + ", column "
           + std::to_string(1 + (pos - lineStart));
}

Result Expand(const HeapText& text) {
    Result result;
    FileScopeVarFrame frame;
    StringStream os(4096);
    ExpandedOutput output(os);
    testing::internal::CaptureStdout();
    try {
        MacroExpand(nullptr, &frame, text.View(), 0, 0, output);
    } catch (const LexScannerException& e) {
        result.err = Str(e.m_description) + '\n' + Place(text, e.m_pos) + '\n';
    }
    result.printed = testing::internal::GetCapturedStdout();
    result.out = Str(os.GetString());
    EXPECT_EQ(output.size(), static_cast<ssize_t>(result.out.size())) << "the pieces' sizes";
    return result;
}

class LanguageText : public testing::Test {
public:
    explicit LanguageText(fs::path path) : m_path(std::move(path)) {}

    void TestBody() override {
        ASSERT_TRUE(fs::exists(Beside(".qz"))) << "there is no text for what is expected";
        const bool fails = fs::exists(Beside(".err"));
        const bool writes = fs::exists(Beside(".out"));
        ASSERT_TRUE(fails || writes) << "neither a .out nor a .err says what is expected";
        const HeapText text(Read(Beside(".qz")));
        const Result result = Expand(text);
        EXPECT_EQ(result.err, Read(Beside(".err")));
        if (writes) {
            EXPECT_EQ(result.out, Read(Beside(".out")));
        }
        EXPECT_EQ(result.printed, Read(Beside(".printed")));
    }

private:
    fs::path Beside(const char* extension) const { return fs::path(m_path) += extension; }

    fs::path m_path;  // without an extension
};

// One test for each NAME of the folder. How many there are.
std::size_t RegisterTexts(const fs::path& folder) {
    static const std::set<std::string> s_extensions = {".qz", ".out", ".err", ".printed"};
    std::set<fs::path> paths;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (s_extensions.contains(entry.path().extension().string()))
            paths.insert(fs::path(entry.path()).replace_extension());
    }
    for (const fs::path& path : paths) {
        testing::RegisterTest(folder.filename().string().c_str(), path.filename().string().c_str(),
                              nullptr, nullptr, (path.string() + ".qz").c_str(), 1,
                              [path]() -> testing::Test* { return new LanguageText(path); });
    }
    return paths.size();
}

}  // namespace
}  // namespace vorn_test

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (argc != 2 || vorn_test::RegisterTexts(argv[1]) == 0) {
        std::cerr << "usage: Language_test FOLDER, a folder of texts\n";
        return 2;
    }
    return RUN_ALL_TESTS();
}

// Expands every example of a document and compares it with what the document says it gives:
//
//   Examples_test FILE.md
//
// An example is a fenced block marked qz. It is expanded in a fresh file scope. The blocks behind
// it, up to the next example, say what it gives:
//
//   output   the output, byte for byte
//   error    instead of it, the error: its message, and a last line that names its place as
//            "line L, column C", both counted from 1
//   printed  what the example prints on standard output; nothing if there is no such block
//
// A block marked "qz NAME" is no example, but a file that the examples behind it can import.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "tests/support/Expand.h"

namespace vorn_test {
namespace {

using namespace vorn;

struct Example {
    int line;  // of the document, where the text begins
    std::string text;
    std::map<std::string, std::string> expected;  // by the mark of the block
};

class Document {
public:
    explicit Document(const std::string& path) {
        std::ifstream file(path, std::ios::binary);
        for (std::string line; std::getline(file, line);)
            ReadLine(line);
        if (m_inBlock)
            m_faults.push_back("the last block is not closed");
    }

    std::vector<Example> m_examples;
    MemoryFiles m_files;
    std::vector<std::string> m_faults;

private:
    void ReadLine(const std::string& line) {
        ++m_line;
        if (!line.starts_with("```")) {
            if (m_inBlock)
                m_block += line + '\n';
        } else if (m_inBlock) {
            m_inBlock = false;
            Store();
        } else {
            m_inBlock = true;
            m_mark = line.substr(3);
            m_block.clear();
            m_blockLine = m_line + 1;
        }
    }

    void Store() {
        if (m_mark == "qz")
            m_examples.push_back({m_blockLine, m_block, {}});
        else if (m_mark.starts_with("qz "))
            m_files.m_files[m_mark.substr(3)] = m_block;
        else if (m_mark == "output" || m_mark == "error" || m_mark == "printed")
            StoreExpectation();
    }

    void StoreExpectation() {
        if (m_examples.empty() || !m_examples.back().expected.emplace(m_mark, m_block).second)
            m_faults.push_back("line " + std::to_string(m_blockLine) + ": no example for this");
    }

    int m_line = 0;
    bool m_inBlock = false;
    std::string m_mark;
    std::string m_block;
    int m_blockLine = 0;
};

// The place of an offset in text.
std::string Place(const std::string& text, ssize_t offset) {
    if (offset < 0 || offset > static_cast<ssize_t>(text.size()))
        return "nowhere";
    const std::string front = text.substr(0, static_cast<std::size_t>(offset));
    return "line " + std::to_string(1 + std::count(front.begin(), front.end(), '\n')) + ", column "
           + std::to_string(front.size() - (front.rfind('\n') + 1) + 1);
}

class ExampleTest : public testing::Test {
public:
    ExampleTest(const Example& example, MemoryFiles& files) : m_example(example), m_files(files) {}

    void TestBody() override {
        std::map<std::string, std::string> actual;
        Session session;
        session.m_importHandler = &m_files;
        testing::internal::CaptureStdout();
        try {
            actual["output"] = session.Expand(m_example.text);
        } catch (const LexScannerException& e) {
            actual.erase("output");
            const LexError error = LexErrorOf(session.LastText().m_p1, [&e] { throw e; });
            actual["error"] = error.description + '\n' + Place(m_example.text, error.offset) + '\n';
        }
        if (std::string printed = testing::internal::GetCapturedStdout(); !printed.empty())
            actual["printed"] = printed;
        EXPECT_EQ(actual, m_example.expected);
    }

private:
    const Example& m_example;
    MemoryFiles& m_files;
};

// One test for each example, named by its line. How many there are.
std::size_t RegisterExamples(Document& document, const std::string& path) {
    for (const Example& example : document.m_examples) {
        const std::string name = "line_" + std::to_string(example.line);
        testing::RegisterTest(
            "Example", name.c_str(), nullptr, nullptr, path.c_str(), example.line,
            [&]() -> testing::Test* { return new ExampleTest(example, document.m_files); });
    }
    return document.m_examples.size();
}

}  // namespace
}  // namespace vorn_test

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    if (argc != 2) {
        std::cerr << "usage: Examples_test FILE.md\n";
        return 2;
    }
    vorn_test::Document document(argv[1]);
    for (const std::string& fault : document.m_faults)
        std::cerr << argv[1] << ": " << fault << '\n';
    if (vorn_test::RegisterExamples(document, argv[1]) == 0 || !document.m_faults.empty()) {
        std::cerr << argv[1] << ": not a document with examples\n";
        return 2;
    }
    return RUN_ALL_TESTS();
}

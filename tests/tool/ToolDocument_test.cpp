// The documents of the tool: what their examples show is what happens.

#include "Shell.h"
#include "ToolRunner.h"

#include <fstream>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

// Lines that were typed, and everything that came back.
struct Example {
    std::string commands;
    std::string output;
};

// The blocks of a document that are marked as console.
std::vector<Example> ReadExamples(const fs::path& path) {
    std::ifstream document(path);
    std::vector<Example> examples;
    bool isInside = false;
    for (std::string line; std::getline(document, line);) {
        if (line == "```console")
            examples.emplace_back();
        isInside = line == "```console" || (isInside && line != "```");
        if (!isInside || line == "```console")
            continue;
        if (line.rfind("$ ", 0) == 0)
            examples.back().commands += line.substr(2) + '\n';
        else
            examples.back().output += line + '\n';
    }
    return examples;
}

class ToolDocument : public tool_test::ToolTest {
protected:
    // Each example runs in a folder of its own.
    void Check(const fs::path& document, std::size_t leastExamples) const {
        const std::vector<Example> examples = ReadExamples(document);
        EXPECT_GE(examples.size(), leastExamples);
        for (std::size_t i = 0; i < examples.size(); ++i) {
            const fs::path folder = PathOf(std::to_string(i));
            fs::create_directory(folder);
            EXPECT_EQ(tool_test::OutputOf("cd '" + folder.string()
                                          + "'\nqzexpand() { '" QZEXPAND "' \"$@\"; }\n"
                                          + examples[i].commands),
                      examples[i].output)
                << examples[i].commands;
        }
    }
};

TEST_F(ToolDocument, ShowsInItsExamplesWhatHappens) {
    Check(QZEXPAND_DOCUMENT, 9);
}

TEST_F(ToolDocument, ShowsInTheExamplesOfBuildsWhatHappens) {
    Check(fs::path(QZEXPAND_DOCUMENT).parent_path() / "builds.md", 3);
}

TEST_F(ToolDocument, ShowsInTheExamplesOfMapsWhatHappens) {
    Check(fs::path(QZEXPAND_DOCUMENT).parent_path() / "maps.md", 2);
}

}  // namespace

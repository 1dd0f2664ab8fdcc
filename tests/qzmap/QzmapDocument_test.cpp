// The document of the tool: what its examples show, one after the other, is what happens.

#include "QzmapTest.h"

#include <fstream>

#include "tests/tool/Shell.h"

namespace {

// Lines that were typed, and everything that came back. A line that starts with "> " goes on with
// the command before.
struct Step {
    std::string commands;
    std::string output;
};

std::vector<Step> ReadSteps() {
    std::ifstream document(QZMAP_DOCUMENT);
    std::vector<Step> steps;
    bool isInside = false;
    for (std::string line; std::getline(document, line);) {
        const bool isStart = line == "```console";
        isInside = isStart || (isInside && line != "```");
        if (!isInside || isStart)
            continue;
        if (line.starts_with("$ "))
            steps.push_back({line.substr(2) + '\n', ""});
        else if (line.starts_with("> "))
            steps.back().commands += line.substr(2) + '\n';
        else
            steps.back().output += line + '\n';
    }
    return steps;
}

class QzmapDocument : public qzmap_test::QzmapTest {};

TEST_F(QzmapDocument, ShowsInItsExamplesWhatHappens) {
    const std::vector<Step> steps = ReadSteps();
    EXPECT_GE(steps.size(), 8u);
    for (const Step& step : steps)
        EXPECT_EQ(tool_test::OutputOf("cd '" + m_folder.string()
                                      + "'\nexport LC_ALL=C\n"
                                        "qzexpand() { '" QZEXPAND "' \"$@\"; }\n"
                                        "qzmap() { '" QZMAP "' \"$@\"; }\n"
                                      + step.commands),
                  step.output)
            << step.commands;
}

}  // namespace

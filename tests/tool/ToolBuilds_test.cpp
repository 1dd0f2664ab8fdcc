// The document on builds: its build files do what it says.

#include "Shell.h"
#include "ToolRunner.h"

#include <chrono>
#include <fstream>
#include <thread>

namespace {

namespace fs = std::filesystem;
using tool_test::Shell;
using tool_test::ToolTest;

const fs::path s_document = fs::path(QZEXPAND_DOCUMENT).parent_path() / "builds.md";

// All blocks of the document in one language, one behind the other.
std::string BlocksOf(const std::string& language) {
    std::ifstream document(s_document);
    std::string blocks;
    bool isInside = false;
    for (std::string line; std::getline(document, line);) {
        if (line == "```" + language || line == "```")
            isInside = line != "```";
        else if (isInside)
            blocks += line + '\n';
    }
    return blocks;
}

class ToolBuilds : public ToolTest {
protected:
    ToolBuilds() {
        Write("main.txt.qz", "@import \"common.qz\"\nname\n");
        Write("other.txt.qz", "text\n");
        Write("common.qz", "@def name = world\n");
        LetTimePass();
    }

    // How often the tool is run by a build.
    std::size_t Build(const std::string& engine) const {
        const std::string path = fs::path(QZEXPAND).parent_path().string();
        EXPECT_TRUE(Shell(m_folder, "PATH='" + path + "':$PATH " + engine + " >log 2>&1"))
            << Read("log");
        LetTimePass();
        const std::string log = Read("log");
        std::size_t runs = 0;
        for (std::size_t at = 0; (at = log.find("qzexpand ", at)) != std::string::npos; ++at)
            ++runs;
        return runs;
    }

    // The clock of a file system is coarser than that of the processor.
    static void LetTimePass() { std::this_thread::sleep_for(std::chrono::milliseconds(20)); }
};

TEST_F(ToolBuilds, RunTheToolWithNinjaWhereTextsHaveChanged) {
    Write("build.ninja", BlocksOf("ninja")
                             + "rule copy\n  command = cp $in $out\n"
                               "build used: copy main.txt\n");
    EXPECT_EQ(Build("ninja -v"), 3u);
    EXPECT_EQ(Read("used"), "\nworld\n");
    EXPECT_EQ(Build("ninja -v"), 0u);
    Write("common.qz", "@def name = world\n@def more = 1\n");
    LetTimePass();
    EXPECT_EQ(Build("ninja -v used"), 1u);
    EXPECT_EQ(Read("log").find("cp "), std::string::npos);
    Write("common.qz", "@def name = moon\n");
    LetTimePass();
    EXPECT_EQ(Build("ninja -v"), 2u);
    EXPECT_EQ(Read("used"), "\nmoon\n");
    fs::remove(PathOf("common.qz"));
    Write("main.txt.qz", "two\n");
    EXPECT_EQ(Build("ninja -v"), 2u);
    EXPECT_EQ(Read("main.txt"), "two\n");
    EXPECT_EQ(Read("third.txt"), "1 + 1\n");
    EXPECT_EQ(Build("ninja -v"), 0u);
}

TEST_F(ToolBuilds, RunTheToolWithMakeWhereFilesHaveChanged) {
    Write("Makefile", BlocksOf("make"));
    EXPECT_EQ(Build("make"), 2u);
    EXPECT_EQ(Read("main.txt"), "\nworld\n");
    EXPECT_EQ(Build("make"), 0u);
    Write("common.qz", "@def name = world\n@def more = 1\n");
    LetTimePass();
    EXPECT_EQ(Build("make"), 1u);
    EXPECT_EQ(Build("make"), 0u);
    fs::remove(PathOf("common.qz"));
    Write("main.txt.qz", "two\n");
    LetTimePass();
    EXPECT_EQ(Build("make"), 1u);
    EXPECT_EQ(Read("main.txt"), "two\n");
    EXPECT_EQ(Build("make"), 0u);
}

// What is said of an output that keeps its time: Make calls the tool each time, and makes nothing
// from it.
TEST_F(ToolBuilds, MakeNothingWithMakeFromAnOutputThatStaysTheSame) {
    std::string makefile = BlocksOf("make");
    makefile.erase(makefile.find("--always-write "), 15);
    Write("Makefile", "used: main.txt\n\tcp main.txt used\n" + makefile);
    EXPECT_EQ(Build("make used"), 1u);
    EXPECT_EQ(Build("make used"), 0u);
    Write("common.qz", "@def name = world\n@def more = 1\n");
    LetTimePass();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(Build("make used"), 1u);
        EXPECT_EQ(Read("log").find("cp "), std::string::npos);
    }
}

}  // namespace

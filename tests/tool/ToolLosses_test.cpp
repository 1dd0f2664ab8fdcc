// What a run writes never takes the place of what it has read, or of another file that it writes.

#include "ToolRunner.h"

#include <filesystem>

namespace {

using tool_test::Result;

class ToolLosses : public tool_test::ToolTest {
protected:
    ToolLosses() {
        Write("a.qz", s_text);
        Write("in/b.qz", "@def m = x\n");
        std::filesystem::create_symlink("a.qz", PathOf("link.qz"));
        std::filesystem::create_directory(PathOf("out"));
    }

    void ExpectRefusal(const std::vector<std::string>& arguments,
                       const std::string& message) const {
        EXPECT_EQ(Run(arguments), (Result{1, "", "qzexpand: " + message + "\n"}));
        EXPECT_EQ(Read("a.qz"), s_text);
        EXPECT_EQ(Read("in/b.qz"), "@def m = x\n");
        EXPECT_EQ(FileNames(), (std::vector<std::string>{"a.qz", "in", "link.qz", "out"}));
    }

    static constexpr const char* s_text = "@import \"in/b.qz\"\nm\n";
};

TEST_F(ToolLosses, SpareTheInput) {
    ExpectRefusal({"a.qz", "-o", "a.qz"}, "a.qz: this would replace a.qz, which has been read");
    ExpectRefusal({"a.qz", "-o", "./link.qz"},
                  "./link.qz: this would replace a.qz, which has been read");
    ExpectRefusal({"a.qz", "-o", "out/a", "--map", "in/../a.qz"},
                  "in/../a.qz: this would replace a.qz, which has been read");
    ExpectRefusal({"link.qz", "-o", "out/a", "--depfile", "a.qz"},
                  "a.qz: this would replace link.qz, which has been read");
}

TEST_F(ToolLosses, SpareImportedFiles) {
    ExpectRefusal({"a.qz", "-o", "in/b.qz"},
                  "in/b.qz: this would replace in/b.qz, which has been read");
    ExpectRefusal({"a.qz", "-o", "out/a", "--map", "in/b.qz"},
                  "in/b.qz: this would replace in/b.qz, which has been read");
}

TEST_F(ToolLosses, SpareEachOther) {
    ExpectRefusal({"a.qz", "-o", "out/a", "--map", "./out/a"},
                  "./out/a: this and out/a are one file");
    ExpectRefusal({"a.qz", "-o", "out/a", "--depfile", "out/../out/a"},
                  "out/../out/a: this and out/a are one file");
    ExpectRefusal({"a.qz", "-o", "out/a", "--map", "out/m", "--depfile", "out//m"},
                  "out//m: this and out/m are one file");
}

TEST_F(ToolLosses, AreNoneWhereNothingIsKept) {
    EXPECT_EQ(Run({"a.qz", "-o", "/dev/null", "--map", "/dev//null"}), (Result{0, "", ""}));
    EXPECT_EQ(Run({"-", "-o", "out/a", "--map", "out/m"}, "x"), (Result{0, "", ""}));
    EXPECT_EQ(Read("out/a"), "x");
}

}  // namespace

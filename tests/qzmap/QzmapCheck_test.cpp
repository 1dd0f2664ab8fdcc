// qzmap check, and that every command refuses a map that no longer holds.

#include "QzmapTest.h"

#include <sys/stat.h>

namespace {

using qzmap_test::Composition;
using qzmap_test::EveryKind;
using qzmap_test::Result;

class QzmapCheck : public qzmap_test::QzmapTest {
protected:
    void ExpectFault(const qztools::Map& map, const std::string& message) const {
        WriteMap(map);
        EXPECT_EQ(Qzmap({"check", "a.cpp.map"}), (Result{1, "", "qzmap: " + message + "\n"}));
    }
};

TEST_F(QzmapCheck, ProvesAMapThatCoversItsOutput) {
    WriteFiles(EveryKind());
    EXPECT_EQ(
        Qzmap({"check", "a.cpp.map"}),
        (Result{0, "a.cpp.map: 65 bytes, 9 pieces, all proven; 8 bytes put in without a source\n",
                ""}));
}

TEST_F(QzmapCheck, ProvesTheMapOfAnEmptyOutput) {
    WriteFiles(Composition("a.cpp"));
    EXPECT_EQ(Qzmap({"check", "a.cpp.map"}),
              (Result{0, "a.cpp.map: 0 bytes, 0 pieces, all proven\n", ""}));
}

TEST_F(QzmapCheck, NamesTheFirstByteThatWasNotCopied) {
    const Composition a = EveryKind();
    WriteFiles(a);
    qztools::Map map = a.Map();
    map.pieces[2].offset += 1;  // of lib.qz, "eturn @" for "return "
    ExpectFault(map, "a.cpp.map: a.cpp:3:5: this was not copied from lib.qz:1:14");
    map = a.Map();
    map.pieces[0].source = 1;
    map.pieces[0].offset = 0;
    ExpectFault(map, "a.cpp.map: a.cpp:1:1: this was not copied from lib.qz:1:1");
}

TEST_F(QzmapCheck, NamesTheFirstByteThatIsNoIndentation) {
    const Composition a = EveryKind();
    WriteFiles(a);
    qztools::Map map = a.Map();
    map.pieces[1].size += 2;
    map.pieces[2].size -= 2;
    map.pieces[2].offset += 2;
    map.pieces[2].length -= 2;
    ExpectFault(map, "a.cpp.map: a.cpp:3:5: this is no indentation");
}

TEST_F(QzmapCheck, CountsOneAsOne) {
    Composition a("a.cpp");
    a.Insert("\r");
    WriteFiles(a);
    EXPECT_EQ(Qzmap({"check", "a.cpp.map"}),
              (Result{0, "a.cpp.map: 1 byte, 1 piece, all proven; 1 byte put in without a source\n",
                      ""}));
}

TEST_F(QzmapCheck, ReadsNothingThatMightNotEnd) {
    const Composition a = EveryKind();
    WriteFiles(a);
    qztools::Map map = a.Map();
    map.outputName = "/dev/zero";
    Write("a.cpp.map", qztools::FormatMap(map));
    EXPECT_EQ(Qzmap({"check", "a.cpp.map"}),
              (Result{1, "", "qzmap: a.cpp.map: /dev/zero is no regular file\n"}));
    map = a.Map();
    map.sources[0].name = "pipe";
    ASSERT_EQ(::mkfifo(PathOf("pipe").c_str(), 0600), 0);
    ExpectFault(map, "a.cpp.map: pipe is no regular file");
}

TEST_F(QzmapCheck, RefusesPiecesThatDoNotAddUp) {
    const Composition a = EveryKind();
    WriteFiles(a);
    qztools::Map map = a.Map();
    map.pieces.pop_back();
    ExpectFault(map, "a.cpp.map: no map: the pieces cover 57 bytes of an output of 65");
}

TEST_F(QzmapCheck, ChecksEveryMapThatIsNamed) {
    WriteFiles(EveryKind());
    WriteFiles(Composition("b.cpp"));
    EXPECT_EQ(Qzmap({"check", "a.cpp.map", "no.map", "b.cpp.map"}),
              (Result{1,
                      "a.cpp.map: 65 bytes, 9 pieces, all proven; 8 bytes put in without a source\n"
                      "b.cpp.map: 0 bytes, 0 pieces, all proven\n",
                      "qzmap: no.map: No such file or directory\n"}));
}

// ---- maps that no longer hold ------------------------------------------------------------------

class QzmapStale : public QzmapCheck {
protected:
    // Every command but remap ends with this fault and writes nothing.
    void ExpectRefused(const std::string& message) const {
        const Result refused{1, "", "qzmap: a.cpp.map: " + message + "\n"};
        EXPECT_EQ(Qzmap({"check", "a.cpp.map"}), refused);
        EXPECT_EQ(Qzmap({"lookup", "a.cpp.map", "1"}), refused);
        EXPECT_EQ(Qzmap({"lookup", "a.cpp.map", "--source", "lib.qz:1"}), refused);
        EXPECT_EQ(Qzmap({"html", "a.cpp.map", "-o", "page.html"}), refused);
        EXPECT_FALSE(Exists("page.html"));
        const std::string messages = "a.cpp:2:5: error: x\na.cpp:3: y\n";
        EXPECT_EQ(Qzmap({"remap", "a.cpp.map"}, messages), (Result{1, messages, refused.err}));
    }
};

TEST_F(QzmapStale, IsRefusedWhenTheOutputHasChanged) {
    WriteFiles(EveryKind());
    std::string output = Read("a.cpp");
    output[4] = 'X';
    Write("a.cpp", output);
    ExpectRefused("a.cpp is not what it was when the map was made");
    Write("a.cpp", output + "\n");
    ExpectRefused("a.cpp is not what it was when the map was made");
}

TEST_F(QzmapStale, IsRefusedWhenASourceHasChanged) {
    WriteFiles(EveryKind());
    Write("lib.qz", Read("lib.qz") + " ");
    ExpectRefused("lib.qz is not what it was when the map was made");
}

TEST_F(QzmapStale, IsRefusedWhenASourceIsGone) {
    WriteFiles(EveryKind());
    std::filesystem::remove(PathOf("lib.qz"));
    ExpectRefused("lib.qz: No such file or directory");
}

TEST_F(QzmapStale, IsRefusedWhenTheOutputIsGone) {
    WriteFiles(EveryKind());
    std::filesystem::remove(PathOf("a.cpp"));
    ExpectRefused("a.cpp: No such file or directory");
}

}  // namespace

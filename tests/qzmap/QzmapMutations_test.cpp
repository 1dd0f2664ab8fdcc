// Maps and messages that somebody has damaged: every command ends, by itself, and says why.

#include "QzmapTest.h"

#include <algorithm>
#include <random>

namespace {

using qzmap_test::Composition;
using qzmap_test::EveryKind;
using qzmap_test::Result;

class QzmapMutations : public qzmap_test::QzmapTest {
protected:
    // The same numbers on every machine.
    std::size_t Random(std::size_t count) { return m_random() % count; }

    // A few changes of bytes, some to those that mean something here.
    std::string Mutated(std::string text, std::string_view bytes) {
        for (std::size_t changes = 1 + Random(4); changes > 0 && !text.empty(); --changes) {
            const std::size_t at = Random(text.size());
            const char byte =
                Random(4) == 0 ? static_cast<char>(Random(256)) : bytes[Random(bytes.size())];
            switch (Random(4)) {
            case 0:
                text.erase(at, 1 + Random(8));
                break;
            case 1:
                text.insert(at, 1, byte);
                break;
            case 2:
                text.insert(at, text.substr(Random(text.size()), Random(40)));
                break;
            default:
                text[at] = byte;
            }
        }
        return text;
    }

    // Ends as it should: with a result, or with one line that says what is wrong.
    void ExpectSound(const std::vector<std::string>& arguments, const std::string& map) const {
        const Result result = Qzmap(arguments, "a.cpp:3:13: error: x\n");
        const bool isRefused = result.status == 1 && result.err.starts_with("qzmap: ")
                               && result.err.find('\n') + 1 == result.err.size();
        EXPECT_TRUE(isRefused || (result.status == 0 && result.err.empty()))
            << arguments[0] << " gives " << testing::PrintToString(result) << " for\n"
            << map;
    }

private:
    std::mt19937 m_random{1};
};

TEST_F(QzmapMutations, OfAMapAreRefusedOrHarmless) {
    WriteFiles(EveryKind());
    const std::string map = Read("a.cpp.map");
    int refused = 0;
    for (int i = 0; i < 60; ++i) {
        const std::string mutated = Mutated(map, "0123456789abcAEIMQUYgw+/\"[]{},:-");
        Write("a.cpp.map", mutated);
        const std::vector<std::string> commands[] = {
            {"check",     "a.cpp.map"},
            {"lookup",    "a.cpp.map", "3"},
            {"lookup",           "a.cpp.map",               "--source", "lib.qz:1"},
            {"remap", "a.cpp.map"},
            {"html",     "a.cpp.map"    },
        };
        for (const std::vector<std::string>& command : commands)
            ExpectSound(command, mutated);
        refused += Qzmap({"check", "a.cpp.map"}).status;
    }
    EXPECT_GT(refused, 40);
}

// Changes of the pieces alone reach further than those of the text: they still add up.
TEST_F(QzmapMutations, OfPiecesAreFoundByTheProof) {
    WriteFiles(EveryKind());
    const qztools::Map map = EveryKind().Map();
    int refused = 0;
    for (int i = 0; i < 30; ++i) {
        qztools::Map mutated = map;
        qztools::MapPiece& piece = mutated.pieces[Random(mutated.pieces.size())];
        piece.source = static_cast<std::int64_t>(Random(3));
        piece.offset = static_cast<std::int64_t>(Random(40));
        piece.kind = qztools::MapPiece::Kind::Copied;
        piece.length = piece.size;
        if (mutated.pieces == map.pieces)
            continue;
        WriteMap(mutated);
        const std::string text = qztools::FormatMap(mutated);
        ExpectSound({"check", "a.cpp.map"}, text);
        ExpectSound({"html", "a.cpp.map"}, text);
        ExpectSound({"lookup", "a.cpp.map", "3"}, text);
        ExpectSound({"remap", "a.cpp.map"}, text);
        refused += Qzmap({"check", "a.cpp.map"}).status;
    }
    EXPECT_GT(refused, 20);
}

// What is not about the output goes through to the byte.
TEST_F(QzmapMutations, OfMessagesGoThrough) {
    WriteFiles(EveryKind());
    const std::string messages =
        "a.cpp: In function 'int main()':\n\x1b[01m\x1b[Ka.cpp:3:13:\x1b[m\x1b[K error: x\n"
        "    3 |     return 3 + five(5);\n      |   ^~~~\na.cpp:2:5:{2:5-2:9}: y\n"
        "In file included from a.cpp:1,\na.cpp(3,4): z\n  File \"a.cpp\", line 2\n";
    for (int i = 0; i < 100; ++i) {
        const std::string mutated = Mutated(messages, "0123456789:(){}-\x1b[]mK\n\r |acp.");
        const Result result = Qzmap({"remap", "a.cpp.map"}, mutated);
        EXPECT_EQ(result.status, 0) << mutated;
        EXPECT_EQ(result.err, "") << mutated;
        EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'),
                  std::count(mutated.begin(), mutated.end(), '\n'))
            << mutated;
        const bool isUnnamed = mutated.find("a.cpp") == std::string::npos;
        EXPECT_TRUE(!isUnnamed || result.out == mutated) << mutated;
    }
}

}  // namespace

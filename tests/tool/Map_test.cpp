// The map in its form for a file: what is written, what is read back, and what is refused.

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "common/Fault.h"
#include "common/Map.h"
#include "common/Vlq.h"

namespace {

using namespace qztools;
using Kind = MapPiece::Kind;

const std::string s_hash = "sha256:" + std::string(64, '0');

// Pieces that go forwards and backwards in two sources.
Map Example() {
    Map map;
    map.outputName = "a.cpp";
    map.outputSize = 19;
    map.outputHash = s_hash;
    map.sources = {
        {"../a.cpp.qz", 40, s_hash, {} },
        {"<-D n>",      1,  {},     "5"}
    };
    map.pieces = {
        {Kind::Copied,      4, 0,  0,  4},
        {Kind::Copied,      1, 1,  0,  1},
        {Kind::Indentation, 8, -1, 0,  0},
        {Kind::Calculated,  3, 0,  14, 6},
        {Kind::Copied,      1, 0,  2,  1},
        {Kind::Inserted,    2, -1, 0,  0}
    };
    return map;
}

const char* const s_example = R"("pieces": ["IAA,CEA,Q,GAUM,CCE,ED"]})";

// A map of an output of 10 bytes from a source of 20, with those pieces.
std::string WithPieces(const std::string& pieces) {
    return R"({"format":"qzmap","version":1,"output":{"name":"-","size":10,"hash":")" + s_hash
           + R"("},"sources":[{"name":"a","size":20,"hash":")" + s_hash + R"("}],"pieces":)"
           + pieces + '}';
}

// What reading it ends with: the message, or "read".
std::string Outcome(const std::string& text) {
    try {
        ParseMap("m.map", text);
        return "read";
    } catch (const Fault& e) {
        return e.what();
    }
}

std::string Replace(std::string text, const std::string& what, const std::string& by) {
    const std::size_t at = text.find(what);
    EXPECT_NE(at, std::string::npos) << what;
    return text.replace(at, what.size(), by);
}

// ---- numbers -----------------------------------------------------------------------------------

TEST(Vlq, IsThatOfSourceMaps) {
    const std::pair<std::int64_t, const char*> s_numbers[] = {
        {0,         "A"     },
        {1,         "C"     },
        {-1,        "D"     },
        {15,        "e"     },
        {16,        "gB"    },
        {-16,       "hB"    },
        {123,       "2H"    },
        {123456789, "qxmvrH"}
    };
    for (const auto& [number, text] : s_numbers) {
        std::string written;
        AppendVlq(written, number);
        EXPECT_EQ(written, text);
        EXPECT_EQ(VlqSize(number), std::ssize(written));
        std::string_view rest = text;
        EXPECT_EQ(ReadVlq(rest), number);
        EXPECT_EQ(rest, "");
    }
}

TEST(Vlq, HoldsTheLargestNumbers) {
    for (const std::int64_t number : {INT64_MAX, INT64_MAX - 1, -INT64_MAX}) {
        std::string written;
        AppendVlq(written, number);
        std::string_view rest = written;
        EXPECT_EQ(ReadVlq(rest), number);
    }
}

// ---- writing -----------------------------------------------------------------------------------

TEST(MapFormat, HasTheDocumentedForm) {
    EXPECT_EQ(FormatMap(Example()), "{\"format\": \"qzmap\", \"version\": 1,\n"
                                    " \"output\": {\"name\": \"a.cpp\", \"size\": 19, \"hash\": \""
                                        + s_hash
                                        + "\"},\n"
                                          " \"sources\": [\n"
                                          "  {\"name\": \"../a.cpp.qz\", \"size\": 40, \"hash\": \""
                                        + s_hash
                                        + "\"},\n"
                                          "  {\"name\": \"<-D n>\", \"text\": \"5\"}],\n "
                                        + s_example + "\n");
}

TEST(MapFormat, BreaksLongLinesOfPieces) {
    Map map = Example();
    map.pieces.assign(200, {Kind::Inserted, 1, -1, 0, 0});
    map.outputSize = 200;
    const std::string text = FormatMap(map);
    std::istringstream lines(text.substr(text.find("\"pieces\"")));
    std::vector<std::size_t> sizes;
    for (std::string line; std::getline(lines, line);)
        sizes.push_back(line.size());
    EXPECT_EQ(sizes, (std::vector<std::size_t>{94, 92, 92, 92, 92, 92, 72}));
    EXPECT_EQ(ParseMap("m.map", text).pieces, map.pieces);
}

// A macro and its uses lie far from each other.
TEST(MapFormat, TakesTheMarkThatLiesNearer) {
    Map map = Example();
    map.outputSize = 5;
    map.sources[0].size = 2000;
    map.pieces = {
        {Kind::Copied, 1, 0, 0,    1},
        {Kind::Copied, 1, 0, 1000, 1},
        {Kind::Copied, 1, 0, 2,    1},
        {Kind::Copied, 1, 0, 1002, 1},
        {Kind::Copied, 1, 0, 4,    1}
    };
    const std::string text = FormatMap(map);
    EXPECT_EQ(text.substr(text.find("\"pieces\"")), "\"pieces\": [\"CAA,CAu+B,CCE,CAC,CCC\"]}\n");
    EXPECT_EQ(ParseMap("m.map", text).pieces, map.pieces);
}

TEST(MapFormat, RefusesANameThatIsNoUtf8) {
    Map map = Example();
    map.sources[0].name = "a\xff.qz";
    try {
        FormatMap(map);
        FAIL() << "the name was taken";
    } catch (const Fault& e) {
        EXPECT_STREQ(e.what(), "a\xff.qz: a map cannot hold this name, which is no UTF-8");
    }
}

TEST(MapHash, IsThatOfTheStandard) {
    EXPECT_EQ(HashOf(""),
              "sha256:e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(HashOf("abc"),
              "sha256:ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

// ---- reading what was written ------------------------------------------------------------------

TEST(MapReading, GivesBackWhatWasWritten) {
    const Map map = Example();
    const Map back = ParseMap("m.map", FormatMap(map));
    EXPECT_EQ(back.outputName, map.outputName);
    EXPECT_EQ(back.outputSize, map.outputSize);
    EXPECT_EQ(back.outputHash, map.outputHash);
    ASSERT_EQ(back.sources.size(), 2U);
    EXPECT_EQ(back.sources[0].name, "../a.cpp.qz");
    EXPECT_EQ(back.sources[0].size, 40);
    EXPECT_EQ(back.sources[0].hash, s_hash);
    EXPECT_EQ(back.sources[0].text, std::nullopt);
    EXPECT_EQ(back.pieces, map.pieces);
}

TEST(MapReading, KnowsSizeAndHashOfASourceWithText) {
    const Map back = ParseMap("m.map", FormatMap(Example()));
    EXPECT_EQ(back.sources[1].name, "<-D n>");
    EXPECT_EQ(back.sources[1].text, "5");
    EXPECT_EQ(back.sources[1].size, 1);
    EXPECT_EQ(back.sources[1].hash, HashOf("5"));
}

TEST(MapReading, GivesBackTextsOfAnyBytes) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte)
        all += static_cast<char>(byte);
    for (const std::string& text :
         {std::string(), all.substr(0, 128), all, all.substr(1), all.substr(2),
          std::string("\"\\/\n\t\0\x7f", 7), std::string("\xc3\xa4\xf0\x9f\x98\x80"),
          std::string("\xed\xa0\x80"), std::string("\xc0\x80"), std::string("\xef\xbb\xbf")}) {
        Map map = Example();
        map.sources[1].text = text;
        map.pieces = {
            {Kind::Copied, 19, 0, 0, 19}
        };
        EXPECT_EQ(ParseMap("m.map", FormatMap(map)).sources[1].text, text)
            << testing::PrintToString(text);
    }
}

TEST(MapReading, TakesFieldsInAnyOrder) {
    const std::string text = R"({"pieces":["CAA"],"sources":[{"text":"x","name":"a"}],)"
                             R"("output":{"hash":")"
                             + s_hash + R"(","size":1,"name":"-"},"version":1,"format":"qzmap"})";
    EXPECT_EQ(ParseMap("m.map", text).pieces, (std::vector<MapPiece>{
                                                  {Kind::Copied, 1, 0, 0, 1}
    }));
}

TEST(MapReading, TakesAnEmptyOutput) {
    EXPECT_EQ(Outcome(Replace(WithPieces("[]"), "\"size\":10", "\"size\":0")), "read");
}

TEST(MapReading, TakesAMapOfManyPieces) {
    Map map = Example();
    map.outputSize = 500'000;
    map.sources[0].size = 1'000'000;
    map.pieces.clear();
    for (std::int64_t i = 0; i < map.outputSize; ++i)
        map.pieces.push_back({Kind::Copied, 1, 0, 2 * i, 1});
    const std::string text = FormatMap(map);
    EXPECT_GT(text.size(), 1'900'000U);
    EXPECT_EQ(ParseMap("m.map", text).pieces, map.pieces);
}

// ---- pieces that are refused -------------------------------------------------------------------

constexpr std::int64_t s_most = INT64_MAX;

struct PieceCase {
    std::vector<std::vector<std::int64_t>> pieces;
    const char* outcome;
};

const PieceCase s_pieceCases[] = {
    {{{10, 0, 10}},                  "read"                                        },
    {{{10, 0, 0, 20}},               "read"                                        },
    {{{10, 0, 20, 0}},               "read"                                        },
    {{{1, 0, 19}, {1, 0, -20}, {8}}, "read"                                        },
    {{{10, -1}},                     "read"                                        },
    {{{9}},                          "the pieces cover 9 bytes of an output of 10" },
    {{{11}},                         "piece 0 reaches behind the end of the output"},
    {{{9}, {2}},                     "piece 1 reaches behind the end of the output"},
    {{{9}, {s_most}},                "piece 1 reaches behind the end of the output"},
    {{{0}},                          "piece 0 has no size above 0"                 },
    {{{5}, {-5}, {10}},              "piece 1 has no size above 0"                 },
    {{{-s_most}},                    "piece 0 has no size above 0"                 },
    {{{5}, {}, {5}},                 "piece 1 has no size above 0"                 },
    {{{10, 0}},                      "piece 0 has a source and no offset"          },
    {{{10, -2}},                     "piece 0 has a source and no offset"          },
    {{{10, 2, 0}},                   "piece 0 has a source that is not there"      },
    {{{10, -1, 0}},                  "piece 0 has a source that is not there"      },
    {{{10, s_most, 0}},              "piece 0 has a source that is not there"      },
    {{{10, -s_most, 0}},             "piece 0 has a source that is not there"      },
    {{{10, 0, 11}},                  "piece 0 reaches outside its source"          },
    {{{10, 0, -1}},                  "piece 0 reaches outside its source"          },
    {{{5, 0, 15}, {5, 0, 1}},        "piece 1 reaches outside its source"          },
    {{{5, 0, 0}, {5, 0, -6}},        "piece 1 reaches outside its source"          },
    {{{5, 0, 0}, {5, 0, s_most}},    "piece 1 reaches outside its source"          },
    {{{5, 0, 0}, {5, 0, -s_most}},   "piece 1 reaches outside its source"          },
    {{{10, 0, 0, 21}},               "piece 0 reaches outside its source"          },
    {{{10, 0, 1, 20}},               "piece 0 reaches outside its source"          },
    {{{10, 0, 0, -1}},               "piece 0 reaches outside its source"          },
    {{{10, 0, 1, s_most}},           "piece 0 reaches outside its source"          },
    {{{10, 0, 0, 1, 1}},             "piece 0 has more than four numbers"          },
};

std::string Encode(const std::vector<std::vector<std::int64_t>>& pieces) {
    std::string text("[\"");
    for (const std::vector<std::int64_t>& piece : pieces) {
        for (const std::int64_t number : piece)
            AppendVlq(text, number);
        text += &piece == &pieces.back() ? "\"]" : ",";
    }
    return text;
}

std::string Refusal(const std::string& reason) {
    return reason == "read" ? reason : "m.map: no map: " + reason;
}

TEST(MapReading, ChecksEveryPiece) {
    for (const PieceCase& c : s_pieceCases)
        EXPECT_EQ(Outcome(WithPieces(Encode(c.pieces))), Refusal(c.outcome)) << Encode(c.pieces);
}

struct RecordCase {
    const char* pieces;
    const char* outcome;
};

constexpr RecordCase s_recordCases[] = {
    {R"(["U"])",                  "read"                                        },
    {R"(["C","S"])",              "read"                                        },
    {R"(["\u0055"])",             "read"                                        },
    {R"([])",                     "the pieces cover 0 bytes of an output of 10" },
    {R"([""])",                   "piece 0 has no size above 0"                 },
    {R"(["B"])",                  "piece 0 has no size above 0"                 },
    {R"(["U,"])",                 "piece 1 has no size above 0"                 },
    {R"([",U"])",                 "piece 0 has no size above 0"                 },
    {R"(["U "])",                 "piece 0 is no record of numbers"             },
    {R"(["U;"])",                 "piece 0 is no record of numbers"             },
    {R"(["U\u0000"])",            "piece 0 is no record of numbers"             },
    {R"(["\u00ff"])",             "piece 0 is no record of numbers"             },
    {R"(["U","g"])",              "piece 1 is no record of numbers"             },
    {R"(["g,U"])",                "piece 0 is no record of numbers"             },
    {R"(["+//////////f"])",       "piece 0 reaches behind the end of the output"},
    {R"(["+///////////P"])",      "piece 0 reaches behind the end of the output"},
    {R"(["+///////////f"])",      "piece 0 is no record of numbers"             },
    {R"(["gggggggggggggB"])",     "piece 0 is no record of numbers"             },
    {R"([10])",                   "the pieces are not strings alone"            },
    {R"([-10])",                  "the pieces are not strings alone"            },
    {R"([1.5])",                  "the pieces are not strings alone"            },
    {R"([18446744073709551616])", "the pieces are not strings alone"            },
    {R"(["U",null])",             "the pieces are not strings alone"            },
    {R"([true])",                 "the pieces are not strings alone"            },
    {R"([["U"]])",                "the pieces are not strings alone"            },
    {R"([{}])",                   "the pieces are not strings alone"            },
    {R"({})",                     "the field \"pieces\" is not a list"          },
    {R"("U")",                    "the field \"pieces\" is not a list"          },
    {R"(7)",                      "the field \"pieces\" is not a list"          },
};

TEST(MapReading, ChecksEveryRecord) {
    for (const RecordCase& c : s_recordCases)
        EXPECT_EQ(Outcome(WithPieces(c.pieces)), Refusal(c.outcome)) << c.pieces;
}

// ---- other texts that are refused --------------------------------------------------------------

struct ReplaceCase {
    const char* what;  // of a map that is sound
    const char* by;
    const char* outcome;  // behind "m.map: no map: "
};

constexpr ReplaceCase s_replaceCases[] = {
    {"\"qzmap\"",             "\"map\"",                       "the field \"format\" is not \"qzmap\""                      },
    {"\"qzmap\"",             "1",                             "the field \"format\" is not a string"                       },
    {"\"format\":\"qzmap\"",  "\"a\":1",                       "the field \"a\" is not known"                               },
    {"\"format\":\"qzmap\",", "",                              "the field \"format\" is missing"                            },
    {"\"version\":1",         "\"version\":2",                 "version 2 of the format is not known"                       },
    {"\"version\":1",         "\"version\":-1",                "version -1 of the format is not known"                      },
    {"\"version\":1",         "\"version\":1.0",               "the field \"version\" is not a whole number"                },
    {"\"version\":1",         "\"version\":\"1\"",             "the field \"version\" is not a whole number"                },
    {"\"version\":1,",        "",                              "the field \"version\" is missing"                           },
    {"\"version\":1",         "\"version\":1,\"version\":1",   "the field \"version\" stands there twice"                   },
    {"\"size\":10",           "\"size\":-10",                  "the field \"size\" is below 0"                              },
    {"\"size\":10",           "\"size\":10e0",                 "the field \"size\" is not a whole number"                   },
    {"\"size\":10",           "\"size\":9223372036854775808",  "the field \"size\" is not a whole number"                   },
    {"\"size\":10",           "\"size\":[10]",                 "the field \"size\" is not a whole number"                   },
    {"\"size\":10,",          "",                              "the field \"size\" is missing"                              },
    {"\"name\":\"-\"",        "\"name\":null",                 "the field \"name\" is not a string"                         },
    {"\"name\":\"-\"",        "\"name\":\"-\",\"name\":\"-\"", "the field \"name\" stands there twice"                      },
    {"\"name\":\"-\"",        "\"text\":\"-\"",                "the field \"text\" is not known"                            },
    {"\"size\":20,",          "",                              "source 0 has neither just a size and a hash nor just a text"},
    {"\"size\":20,",          "\"text\":\"\",",
     "source 0 has neither just a size and a hash nor just a text"                                                          },
    {"\"size\":20,",          "\"size\":20,\"base64\":\"\",",
     "source 0 has neither just a size and a hash nor just a text"                                                          },
    {"\"name\":\"a\",",       "",                              "source 0 has no name"                                       },
    {"{\"name\":\"a\"",       "[],{\"name\":\"a\"",            "source 0 is no object"                                      },
    {"{\"name\":\"a\"",       "\"a\",{\"name\":\"a\"",         "source 0 is no object"                                      },
    {"\"name\":\"a\"",        "\"name\":\"a\",\"size\":20",    "the field \"size\" stands there twice"                      },
    {"\"name\":\"a\"",        "\"n\":{}",                      "the field \"n\" is not known"                               },
    {"\"name\":\"a\"",        "\"name\":\"a\\u0000b\"",        "the field \"name\" has a zero byte"                         },
    {"\"name\":\"a\"",        "\"name\":{}",                   "the field \"name\" is not a string"                         },
    {"\"pieces\":[\"U\"]",    "\"output\":{}",                 "the field \"output\" stands there twice"                    },
    {",\"pieces\":[\"U\"]",   "",                              "the field \"pieces\" is missing"                            },
    {"\"sha256:0",            "\"sha256:",                     "the field \"hash\" is not sha256: and 64 hexadecimal digits"},
    {"\"sha256:0",            "\"sha256:A",                    "the field \"hash\" is not sha256: and 64 hexadecimal digits"},
    {"\"sha256:0",            "\"sha512:0",                    "the field \"hash\" is not sha256: and 64 hexadecimal digits"},
    {"{\"format\"",           "x{\"format\"",                  "no JSON at byte 1"                                          },
    {"{\"format\"",           "{'format'",                     "no JSON at byte 2"                                          },
    {"[\"U\"]",               "[\"U\",]",                      "no JSON at byte 274"                                        },
    {"[\"U\"]",               "[\"U\\x\"]",                    "no JSON at byte 273"                                        },
    {"[\"U\"]",               "[\"U\"]}",                      "no JSON at byte 275"                                        },
    {"\"name\":\"a\"",        "\"name\":\"\xff\"",             "no JSON at byte 164"                                        },
    {"\"name\":\"a\"",        "\"name\":\"\\ud800\"",          "no JSON at byte 170"                                        },
    {"\"name\":\"a\"",        "\"name\":\"\n\"",               "no JSON at byte 164"                                        },
};

TEST(MapReading, RefusesWhatIsNoMap) {
    const std::string sound = WithPieces("[\"U\"]");
    ASSERT_EQ(Outcome(sound), "read");
    for (const ReplaceCase& c : s_replaceCases)
        EXPECT_EQ(Outcome(Replace(sound, c.what, c.by)), std::string("m.map: no map: ") + c.outcome)
            << c.what << " -> " << c.by;
}

TEST(MapReading, RefusesBase64ThatIsNone) {
    const std::string sound =
        Replace(WithPieces("[\"U\"]"), "\"size\":20,\"hash\":\"" + s_hash, "\"base64\":\"/w==");
    EXPECT_EQ(Outcome(sound), "read");
    for (const char* text : {"/w=", "/", "/w==x", "*w=="})
        EXPECT_EQ(Outcome(Replace(sound, "/w==", text)),
                  "m.map: no map: the field \"base64\" is not in base64")
            << text;
}

TEST(MapReading, RefusesOtherValuesThanAnObject) {
    for (const char* text : {"[]", "1", "-1", "0.5", "null", "false", "\"x\""})
        EXPECT_EQ(Outcome(text), "m.map: no map: it is no object") << text;
    EXPECT_EQ(Outcome(""), "m.map: no map: no JSON at byte 1");
    EXPECT_EQ(Outcome("{}"), "m.map: no map: the field \"format\" is missing");
}

TEST(MapReading, DoesNotDescendIntoDeepTexts) {
    const std::string deep(10'000'000, '[');
    EXPECT_EQ(Outcome(deep), "m.map: no map: it is no object");
    EXPECT_EQ(Outcome(WithPieces(deep)), "m.map: no map: the pieces are not strings alone");
    EXPECT_EQ(Outcome(R"({"x":)" + deep), "m.map: no map: the field \"x\" is not known");
}

TEST(MapReading, RefusesEveryBeginningOfAMap) {
    const std::string sound = WithPieces(R"(["IAA,M"])");
    for (std::size_t size = 0; size < sound.size(); ++size)
        EXPECT_EQ(Outcome(sound.substr(0, size)),
                  "m.map: no map: no JSON at byte " + std::to_string(size + 1));
}

}  // namespace

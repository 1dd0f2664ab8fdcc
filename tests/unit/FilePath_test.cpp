#include "qzUtils/FilePath.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/Text.h"

namespace {

using vorn::SubString;
using vorn::xstring;
using vorn_test::HeapText;
using vorn_test::Str;

xstring ToXstring(std::string_view text) {
    return xstring(text.data(), text.data() + text.size());
}

std::string Normal(std::string_view path) {
    xstring s = ToXstring(path);
    vorn::NormalisePath(s);
    return Str(s);
}

std::string Relative(std::string_view a, std::string_view b) {
    xstring result("what it held before");
    vorn::CalcRelativePath(HeapText(a).View(), HeapText(b).View(), result);
    return Str(result);
}

struct Normalisation {
    const char* path;
    const char* expected;
};

constexpr Normalisation s_normalisations[] = {
    {"",              ""             }, // empty stays empty
    {"a",             "a"            },
    {"a/b.h",         "a/b.h"        },
    {"a\\b\\c",       "a/b/c"        }, // every backslash becomes a slash
    {"\\a",           "/a"           },
    {"a\\..\\b",      "b"            },
    {"a//b",          "a/b"          }, // no empty elements
    {"a///b//c",      "a/b/c"        },
    {"//a",           "/a"           },
    {"///",           "/"            },
    {"a\\/b",         "a/b"          },
    {"./a",           "a"            }, // no "." elements
    {"a/./b",         "a/b"          },
    {"a/.",           "a"            },
    {"././a/./.",     "a"            },
    {"/./a",          "/a"           },
    {"/.",            "/"            },
    {"a/..",          "."            }, // what cancels to nothing becomes "."
    {"a/../",         "."            },
    {".",             "."            },
    {"./",            "."            },
    {"./.",           "."            },
    {"a/b/../..",     "."            },
    {"a/../b",        "b"            }, // x/.. cancelled
    {"a/b/../c",      "a/c"          },
    {"a/b/../../c",   "c"            },
    {"a/b/..",        "a"            },
    {"..",            ".."           }, // leading ".." kept
    {"../",           ".."           },
    {"../a",          "../a"         },
    {"../../a",       "../../a"      },
    {"a/../..",       ".."           },
    {"a/../../b",     "../b"         },
    {"./..",          ".."           },
    {"../a/..",       ".."           },
    {"../a/../..",    "../.."        },
    {"/..",           "/"            }, // nothing lies above the root
    {"/../../a",      "/a"           },
    {"/a/../..",      "/"            },
    {"a/",            "a"            }, // no trailing slash but for "/" itself
    {"a/b///",        "a/b"          },
    {"/a/",           "/a"           },
    {"/",             "/"            },
    {"...",           "..."          }, // names of dots that mean nothing
    {".../..a/b..",   ".../..a/b.."  },
    {".a/.b",         ".a/.b"        },
    {"a b/c",         "a b/c"        },
    {"c:\\x\\..\\y",  "c:/y"         },
    {"\xff/\xc3\xa4", "\xff/\xc3\xa4"},
};

TEST(FilePathTest, NormalisePathGivesTheLexicalNormalForm) {
    for (const auto& [path, expected] : s_normalisations)
        EXPECT_EQ(Normal(path), expected) << testing::PrintToString(path);
}

TEST(FilePathTest, NormalisePathKeepsZeroBytes) {
    EXPECT_EQ(Normal(std::string_view("a\0b/../\0c/", 10)), std::string("\0c", 2));
}

// The rule by itself, element by element.
std::string NormalByTheRule(std::string_view path) {
    if (path.empty())
        return "";
    const bool absolute = path[0] == '/' || path[0] == '\\';
    std::vector<std::string> kept;
    std::string element;
    for (const char c : std::string(path) + '/') {
        if (c != '/' && c != '\\') {
            element += c;
            continue;
        }
        if (element == ".." && !kept.empty() && kept.back() != "..")
            kept.pop_back();
        else if (element == ".." ? !absolute : !element.empty() && element != ".")
            kept.push_back(element);
        element.clear();
    }
    std::string normal;
    for (const std::string& name : kept)
        normal += (normal.empty() ? "" : "/") + name;
    return absolute ? '/' + normal : normal.empty() ? "." : normal;
}

TEST(FilePathTest, NormalisePathFollowsTheRuleOnEveryShortPath) {
    constexpr std::string_view s_alphabet = "a./\\b";
    for (int length = 0; length <= 6; ++length) {
        std::string path(static_cast<std::size_t>(length), s_alphabet[0]);
        int count = 1;
        for (int i = 0; i < length; ++i)
            count *= 5;
        for (int number = 0; number < count; ++number) {
            int rest = number;
            for (char& c : path) {
                c = s_alphabet[static_cast<std::size_t>(rest % 5)];
                rest /= 5;
            }
            ASSERT_EQ(Normal(path), NormalByTheRule(path)) << testing::PrintToString(path);
            ASSERT_EQ(Normal(Normal(path)), Normal(path)) << testing::PrintToString(path);
        }
    }
}

struct RelativePath {
    const char* a;  // the base, a directory
    const char* b;
    const char* expected;
};

constexpr RelativePath s_relativePaths[] = {
    {"a/b",     "a/c/d.h",   "../c/d.h"},
    {"a",       "a",         "."       }, // equal paths
    {"a/b",     "a/b",       "."       },
    {"/",       "/",         "."       },
    {".",       ".",         "."       },
    {"..",      "..",        "."       },
    {"",        "",          "."       },
    {"a",       "a/b/c",     "b/c"     }, // down
    {"/",       "/a",        "a"       },
    {".",       "a/b",       "a/b"     },
    {"",        "a",         "a"       },
    {"a/b",     "a",         ".."      }, // up
    {"a/b/c",   "a",         "../.."   },
    {"a",       ".",         ".."      },
    {"a/b",     ".",         "../.."   },
    {"/a/b",    "/",         "../.."   },
    {"a",       "b",         "../b"    }, // up and down
    {"/a/b",    "/c",        "../../c" },
    {"ab",      "a",         "../a"    },
    {"a/b/x.h", "a/b/y.h",   "../y.h"  },
    {".",       "../a",      "../a"    }, // b climbs out
    {"a",       "../b",      "../../b" },
    {"..",      "../..",     ".."      },
    {"../a",    "../b",      "../b"    }, // both climb out equally far
    {"../a",    "..",        ".."      },
    {"../../a", "../../b/c", "../b/c"  },
    {"/a",      "b",         "b"       }, // one absolute and the other not: b itself
    {"a",       "/b",        "/b"      },
    {"/a",      ".",         "."       },
    {".",       "/",         "/"       },
    {"..",      "b",         "b"       }, // a climbs out where b does not: b itself
    {"../a",    "b",         "b"       },
    {"../a/c",  "b",         "b"       },
    {"../a/c",  ".",         "."       },
    {"../../x", "../y",      "../y"    },
    {"../..",   "..",        ".."      },
};

TEST(FilePathTest, CalcRelativePathLeadsFromTheFirstToTheSecond) {
    for (const auto& [a, b, expected] : s_relativePaths)
        EXPECT_EQ(Relative(a, b), expected)
            << "from " << testing::PrintToString(a) << " to " << testing::PrintToString(b);
}

// Going to a and from there along the result arrives at b.
TEST(FilePathTest, CalcRelativePathArrives) {
    const std::vector<std::string> names = {"..", "a", "b", "c"};
    std::mt19937 random(1);
    int arrived = 0;
    for (int i = 0; i < 5000; ++i) {
        const auto path = [&] {
            std::string text = random() % 2 == 0 ? "/x" : "x";
            for (auto n = random() % 5; n > 0; --n)
                text += '/' + names[random() % 4];
            return Normal(text);
        };
        const std::string a = path();
        const std::string b = path();
        const std::string relative = Relative(a, b);
        if (relative == b)
            continue;
        ++arrived;
        ASSERT_EQ(Normal(a + '/' + relative), b) << "from " << a << " along " << relative;
    }
    EXPECT_GT(arrived, 1000);
}

TEST(FilePathTest, CalcRelativePathMayReplaceOneOfItsArguments) {
    xstring a("a/b");
    vorn::CalcRelativePath(a, SubString("a/c"), a);
    EXPECT_EQ(Str(a), "../c");
    xstring b("a/c");
    vorn::CalcRelativePath(SubString("a/b"), b, b);
    EXPECT_EQ(Str(b), "../c");
}

// A folder of its own, removed with all that is in it.
class ReadStringFromFileTest : public testing::Test {
protected:
    ReadStringFromFileTest() {
        std::string pattern = testing::TempDir() + "ReadStringFromFileXXXXXX";
        m_folder = ::mkdtemp(pattern.data());
    }
    ~ReadStringFromFileTest() override { std::filesystem::remove_all(m_folder); }

    xstring Path(const std::string& name) const { return ToXstring(m_folder + '/' + name); }

    xstring Write(const std::string& name, std::string_view text) const {
        std::ofstream(m_folder + '/' + name, std::ios::binary) << text;
        return Path(name);
    }

    // A file that cannot be read gives false and leaves the string alone.
    static void ExpectUnreadable(const xstring& path) {
        xstring s("before");
        EXPECT_FALSE(vorn::ReadStringFromFile(s, path, true)) << Str(path);
        EXPECT_EQ(Str(s), "before") << Str(path);
    }

    std::string m_folder;
};

TEST_F(ReadStringFromFileTest, GivesTheExactBytes) {
    std::string all;
    for (int c = 0; c < 256; ++c)
        all += static_cast<char>(c);
    const std::string texts[] = {"a", "a\n", "a\r\nb\r\n", all, std::string(3, '\0'), ""};
    for (const std::string& text : texts) {
        for (const bool flag : {true, false}) {
            xstring s("before");
            EXPECT_TRUE(vorn::ReadStringFromFile(s, Write("file", text), flag));
            EXPECT_EQ(Str(s), text);
        }
    }
}

TEST_F(ReadStringFromFileTest, ReadsFilesOfAnySize) {
    for (const int size : {4095, 4096, 65535, 65536, 65537, 1000000}) {
        std::string text;
        for (int i = 0; i < size; ++i)
            text += static_cast<char>(i * 7 + i / 256);
        xstring s;
        EXPECT_TRUE(vorn::ReadStringFromFile(s, Write("file", text), true));
        EXPECT_TRUE(Str(s) == text) << size;
    }
}

TEST_F(ReadStringFromFileTest, ReadsFilesThatDoNotTellTheirSize) {
    xstring s;
    ASSERT_TRUE(vorn::ReadStringFromFile(s, "/proc/self/status", true));
    EXPECT_EQ(Str(s).substr(0, 6), "Name:\t");
    EXPECT_EQ(s[s.size() - 1], '\n');
}

TEST_F(ReadStringFromFileTest, MissingFileGivesFalse) {
    ExpectUnreadable(Path("none"));
    ExpectUnreadable(Path("none/none"));
    ExpectUnreadable(xstring());
}

TEST_F(ReadStringFromFileTest, DirectoryGivesFalse) {
    ExpectUnreadable(ToXstring(m_folder));
    ExpectUnreadable("/");
    ExpectUnreadable(".");
}

TEST_F(ReadStringFromFileTest, FileAsADirectoryGivesFalse) {
    Write("file", "text");
    ExpectUnreadable(Path("file/"));
    ExpectUnreadable(Path("file/x"));
}

TEST_F(ReadStringFromFileTest, FileThatCannotBeReadToItsEndGivesFalse) {
    ExpectUnreadable("/proc/self/mem");
}

TEST_F(ReadStringFromFileTest, PathWithAZeroByteNamesNoFile) {
    const xstring path = Write("file", "text");
    xstring withZero(path);
    withZero += '\0';
    ExpectUnreadable(withZero);
    withZero += "more";
    ExpectUnreadable(withZero);
    xstring s;
    EXPECT_TRUE(vorn::ReadStringFromFile(s, path, true)) << "the file in front of the zero exists";
}

TEST_F(ReadStringFromFileTest, PathAndTextMayBeTheSameString) {
    xstring s = Write("file", "text");
    EXPECT_TRUE(vorn::ReadStringFromFile(s, s, true));
    EXPECT_EQ(Str(s), "text");
}

}  // namespace

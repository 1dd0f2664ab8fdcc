#include "qzUtils/xostream.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "qzUtils/IException.h"
#include "tests/support/Text.h"

namespace {

using vorn::Indenter;
using vorn::IOutputStream;
using vorn::ssize_t;
using vorn::SubString;
using vorn::xostream;
using vorn::xstring;

static_assert(std::has_virtual_destructor_v<IOutputStream>);
static_assert(sizeof(xostream) == sizeof(void*), "one field");
static_assert(std::is_same_v<decltype(xostream::m_os), vorn::IndentingOutputStreamToOStream*>);

// The members, to the letter.
[[maybe_unused]] constexpr void (IOutputStream::*s_writeStream)(const void*, ssize_t) =
    &IOutputStream::WriteStream;
[[maybe_unused]] constexpr void (IOutputStream::*s_flushStream)() = &IOutputStream::FlushStream;
[[maybe_unused]] constexpr void (xostream::*s_putChar)(char) = &xostream::put;
[[maybe_unused]] constexpr void (xostream::*s_putInt)(int) = &xostream::put;
[[maybe_unused]] constexpr void (xostream::*s_putLong)(long) = &xostream::put;
[[maybe_unused]] constexpr void (xostream::*s_putDouble)(double) = &xostream::put;
[[maybe_unused]] constexpr void (xostream::*s_putBytes)(const char*, ssize_t) = &xostream::put;
[[maybe_unused]] constexpr void (xostream::*s_flush)() = &xostream::flush;
[[maybe_unused]] constexpr void (xostream::*s_indent)(ssize_t) = &xostream::Indent;
[[maybe_unused]] constexpr ssize_t (xostream::*s_getIndent)() const = &xostream::GetIndent;

class RecordingSink : public IOutputStream {
public:
    void WriteStream(const void* p, ssize_t n) override {
        writes.emplace_back(static_cast<const char*>(p), static_cast<std::size_t>(n));
    }
    void FlushStream() override { ++flushes; }

    std::string Text() const {
        std::string text;
        for (const std::string& write : writes)
            text += write;
        return text;
    }

    std::vector<std::string> writes;
    int flushes = 0;
};

class FailingSink : public IOutputStream {
public:
    void WriteStream(const void*, ssize_t) override { throw std::runtime_error("full"); }
    void FlushStream() override { throw std::runtime_error("gone"); }
};

template <class T>
std::string Put(T value) {
    RecordingSink sink;
    xostream os(sink);
    os.put(value);
    return sink.Text();
}

TEST(xostreamTest, PutsEveryByteAsItIs) {
    for (int c = 0; c < 256; ++c)
        EXPECT_EQ(Put(static_cast<char>(c)), std::string(1, static_cast<char>(c)));
}

TEST(xostreamTest, PutsIntegersInDecimal) {
    EXPECT_EQ(Put(0), "0");
    EXPECT_EQ(Put(-1), "-1");
    EXPECT_EQ(Put(std::numeric_limits<int>::max()), "2147483647");
    EXPECT_EQ(Put(std::numeric_limits<int>::min()), "-2147483648");
    EXPECT_EQ(Put(0L), "0");
    EXPECT_EQ(Put(-10L), "-10");
    EXPECT_EQ(Put(std::numeric_limits<long>::max()), "9223372036854775807");
    EXPECT_EQ(Put(std::numeric_limits<long>::min()), "-9223372036854775808");
}

TEST(xostreamTest, PutsDoublesWithSixSignificantDigits) {
    struct Case {
        double value;
        const char* expected;
    };
    constexpr double s_infinity = std::numeric_limits<double>::infinity();
    constexpr Case s_cases[] = {
        {0.0,         "0"           },
        {-0.0,        "-0"          },
        {2.0,         "2"           },
        {-0.5,        "-0.5"        },
        {0.1,         "0.1"         },
        {3.14159265,  "3.14159"     },
        {100000.0,    "100000"      },
        {999999.0,    "999999"      },
        {1000000.0,   "1e+06"       },
        {1234567.0,   "1.23457e+06" },
        {0.0001,      "0.0001"      },
        {0.00001,     "1e-05"       },
        {1e20,        "1e+20"       },
        {-1.5e300,    "-1.5e+300"   },
        {5e-324,      "4.94066e-324"},
        {s_infinity,  "inf"         },
        {-s_infinity, "-inf"        },
    };
    for (const auto& [value, expected] : s_cases)
        EXPECT_EQ(Put(value), expected);
}

TEST(xostreamTest, PutsAnyDoubleAsAStandardStreamDoes) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 20000; ++i) {
        const std::uint64_t bits = random();
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        if (i % 2 == 0)
            value = static_cast<double>(static_cast<std::int64_t>(bits >> 20)) / 4096.0;
        std::ostringstream standard;
        standard << value;
        ASSERT_EQ(Put(value), standard.str()) << "bits " << bits;
    }
}

TEST(xostreamTest, PutsBytesInOneWriteAndNoneForNone) {
    RecordingSink sink;
    xostream os(sink);
    os.put("a\0\nb", 4);
    os.put(nullptr, 0);
    os.put("xyz", 2);
    EXPECT_EQ(sink.writes, (std::vector<std::string>{std::string("a\0\nb", 4), "xy"}));
}

TEST(xostreamTest, HoldsNothingBackAndForwardsFlush) {
    RecordingSink sink;
    {
        xostream os(sink);
        os.put('a');
        EXPECT_EQ(sink.Text(), "a");
        EXPECT_EQ(sink.flushes, 0);
        os.flush();
        EXPECT_EQ(sink.flushes, 1);
    }
    EXPECT_EQ(sink.flushes, 1) << "the end of a stream flushes nothing";
}

TEST(xostreamTest, ShiftOperatorsForwardToPutAndChain) {
    RecordingSink sink;
    xostream os(sink);
    const xstring text("string");
    const vorn::ConstString8Z z = "zero";
    xostream& result = os << 'c' << 1 << -2L << 0.5 << z << "literal" << SubString("view") << text;
    EXPECT_EQ(&result, &os);
    EXPECT_EQ(sink.Text(), "c1-20.5zeroliteralviewstring");
    os << SubString() << xstring() << "";
    EXPECT_EQ(sink.writes.size(), 8U) << "an empty text reaches no sink";
}

// The text is written in the pieces that '|' divides it into.
TEST(xostreamTest, EveryLineThatIsBegunGetsTheBlanks) {
    struct Case {
        ssize_t indent;
        const char* pieces;
        const char* expected;
    };
    constexpr Case s_cases[] = {
        {0,  "a\nb\n",   "a\nb\n"                           },
        {-3, "a\nb\n",   "a\nb\n"                           },
        {2,  "",         ""                                 },
        {2,  "a",        "  a"                              },
        {2,  "a\nb",     "  a\n  b"                         },
        {2,  "a\n",      "  a\n"                            },
        {2,  "a\n|b",    "  a\n  b"                         },
        {2,  "a|b|\n|c", "  ab\n  c"                        },
        {2,  "a\n\nb",   "  a\n  \n  b"                     },
        {2,  "\n",       "  \n"                             },
        {2,  "\n|\n",    "  \n  \n"                         },
        {1,  "\r\n",     " \r\n"                            },
        {32, "a",        "                                a"},
        {33, "a\nb",
         "                                 a\n"
         "                                 b"               },
    };
    for (const auto& [indent, pieces, expected] : s_cases) {
        RecordingSink sink;
        xostream os(sink);
        os.Indent(indent);
        std::istringstream in(pieces);
        for (std::string piece; std::getline(in, piece, '|');)
            os << piece.c_str();
        EXPECT_EQ(sink.Text(), expected) << testing::PrintToString(pieces);
    }
}

TEST(xostreamTest, BlanksOfEveryWidthAreExact) {
    for (ssize_t indent = 1; indent <= 200; ++indent) {
        RecordingSink sink;
        xostream os(sink);
        os.Indent(indent);
        os.put('x');
        ASSERT_EQ(sink.Text(), std::string(static_cast<std::size_t>(indent), ' ') + "x");
    }
}

TEST(xostreamTest, EveryKindOfPutBeginsALine) {
    RecordingSink sink;
    xostream os(sink);
    os.Indent(1);
    os << 'c' << '\n' << 1 << '\n' << 2L << '\n' << 0.5 << '\n' << "z\n" << SubString("s\n");
    os << xstring("x");
    EXPECT_EQ(sink.Text(), " c\n 1\n 2\n 0.5\n z\n s\n x");
}

TEST(xostreamTest, IndentAppliesFromTheNextLineThatIsBegun) {
    RecordingSink sink;
    xostream os(sink);
    os << "a";
    os.Indent(2);
    EXPECT_EQ(os.GetIndent(), 2);
    os << "b\nc\n";
    os.Indent(3);
    EXPECT_EQ(os.GetIndent(), 5);
    os << "d\n";
    os.Indent(-5);
    EXPECT_EQ(os.GetIndent(), 0);
    os << "e";
    EXPECT_EQ(sink.Text(), "ab\n  c\n     d\ne");
}

TEST(xostreamTest, IndenterAddsForAsLongAsItLives) {
    RecordingSink sink;
    xostream os(sink);
    os << "a\n";
    {
        const Indenter outer(os, 4);
        EXPECT_EQ(os.GetIndent(), 4);
        os << "b\n";
        {
            const Indenter inner(os, 2);
            os << "c\n";
        }
        os << "d\n";
    }
    os << "e\n";
    EXPECT_EQ(os.GetIndent(), 0);
    EXPECT_EQ(sink.Text(), "a\n    b\n      c\n    d\ne\n");
}

TEST(xostreamTest, WhatASinkThrowsReachesTheWriter) {
    FailingSink sink;
    xostream os(sink);
    EXPECT_THROW(os << "a", std::runtime_error);
    EXPECT_THROW(os.flush(), std::runtime_error);
    const Indenter indenter(os, 1);
    EXPECT_THROW(os << "a", std::runtime_error);
}

TEST(xostreamTest, StandardOutputKeepsItsPlaceAmongOtherOutput) {
    static_assert(std::is_same_v<decltype((vorn::xcout)), xostream&>);
    testing::internal::CaptureStdout();
    std::printf("a");
    vorn::xcout << "b" << 1 << '\n';
    std::printf("c");
    vorn::xcout.flush();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "ab1\nc");
}

class Oops : public vorn::IException {
public:
    void Write(xostream& os) const override { os << "oops"; }
};

TEST(IExceptionTest, IsCaughtByReferenceAndWritesItself) {
    static_assert(std::has_virtual_destructor_v<vorn::IException>);
    RecordingSink sink;
    xostream os(sink);
    try {
        throw Oops();
    } catch (const vorn::IException& e) {
        e.Write(os);
    }
    EXPECT_EQ(sink.Text(), "oops");
}

}  // namespace

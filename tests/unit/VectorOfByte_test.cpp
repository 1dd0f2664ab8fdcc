#include "qzUtils/VectorOfByte.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <new>
#include <string>
#include <type_traits>

#include "qzUtils/xstring.h"
#include "tests/support/Text.h"

// Exhausted memory is to raise the exception of the library here, not to end the test.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}

namespace {

using vorn::ssize_t;
using vorn::uint8;
using vorn::VectorOfByte;
using vorn::xstring;

constexpr ssize_t s_most = std::numeric_limits<ssize_t>::max();

static_assert(std::is_same_v<VectorOfByte::value_type, uint8>);
static_assert(std::is_same_v<decltype(VectorOfByte::m_buffer), uint8*>);
static_assert(std::is_same_v<decltype(VectorOfByte::size_), ssize_t>);
static_assert(std::is_same_v<decltype(VectorOfByte::m_capacity), ssize_t>);
static_assert(offsetof(VectorOfByte, m_buffer) == 0);
static_assert(offsetof(VectorOfByte, size_) == 8 && offsetof(VectorOfByte, m_capacity) == 16);
static_assert(sizeof(VectorOfByte) == 24);

// The operations, to the letter.
[[maybe_unused]] constexpr void (VectorOfByte::*s_clear)() = &VectorOfByte::clear;
[[maybe_unused]] constexpr void (VectorOfByte::*s_insertbytes)(ssize_t, ssize_t) =
    &VectorOfByte::insertbytes;
[[maybe_unused]] constexpr void (VectorOfByte::*s_reserve)(ssize_t) const = &VectorOfByte::reserve;
[[maybe_unused]] constexpr void (VectorOfByte::*s_swap)(VectorOfByte&) = &VectorOfByte::swap;
[[maybe_unused]] constexpr void (VectorOfByte::*s_growbytes)(ssize_t) = &VectorOfByte::growbytes;

std::string Bytes(const VectorOfByte& v) {
    return std::string(v.begin(), v.end());
}

void Append(VectorOfByte& v, const char* z) {
    for (; *z != '\0'; ++z)
        v.push_back(*z);
}

TEST(VectorOfByteTest, StartsEmptyWithoutMemory) {
    const VectorOfByte v;
    EXPECT_EQ(v.m_buffer, nullptr);
    EXPECT_EQ(v.size(), 0);
    EXPECT_EQ(v.m_capacity, 0);
    EXPECT_EQ(v.data(), nullptr);
    EXPECT_EQ(v.begin(), v.end());
}

TEST(VectorOfByteTest, DataBeginAndEndBoundTheBytesInUse) {
    VectorOfByte v;
    Append(v, "abc");
    EXPECT_EQ(v.data(), v.m_buffer);
    EXPECT_EQ(v.begin(), v.m_buffer);
    EXPECT_EQ(v.end(), v.m_buffer + 3);
    const VectorOfByte& constant = v;
    EXPECT_EQ(constant.data(), v.m_buffer);
    EXPECT_EQ(constant.begin(), v.m_buffer);
    EXPECT_EQ(constant.end(), v.m_buffer + 3);
}

TEST(VectorOfByteTest, GrowthAddsTheOldCapacityToTheNewSize) {
    struct Step {
        ssize_t added;
        ssize_t size;
        ssize_t capacity;
    };
    constexpr Step s_steps[] = {
        {0,  0,   0  }, // nothing exceeds nothing
        {1,  1,   1  }, // 0 + 1
        {1,  2,   3  }, // 1 + 2
        {1,  3,   3  }, // fits to the last byte
        {1,  4,   7  }, // 3 + 4
        {3,  7,   7  },
        {10, 17,  24 }, // 7 + 17
        {7,  24,  24 },
        {0,  24,  24 },
        {76, 100, 124}, // 24 + 100
    };
    VectorOfByte v;
    for (const auto& [added, size, capacity] : s_steps) {
        v.growbytes(added);
        EXPECT_EQ(v.size(), size);
        EXPECT_EQ(v.m_capacity, capacity) << "at size " << size;
    }
}

TEST(VectorOfByteTest, PushedBytesGrowByTheSameRule) {
    VectorOfByte v;
    ssize_t capacity = 0;
    for (ssize_t size = 1; size <= 1000; ++size) {
        v.push_back('x');
        if (size > capacity)
            capacity += size;
        ASSERT_EQ(v.size(), size);
        ASSERT_EQ(v.m_capacity, capacity) << "at size " << size;
    }
}

TEST(VectorOfByteTest, PushedObjectsGrowByTheirSize) {
    VectorOfByte v;
    v.push_back(1.0);
    EXPECT_EQ(v.size(), 8);
    EXPECT_EQ(v.m_capacity, 8);
    v.push_back(2.0);
    EXPECT_EQ(v.size(), 16);
    EXPECT_EQ(v.m_capacity, 8 + 16);
}

TEST(VectorOfByteTest, InsertedGapsGrowByTheSameRule) {
    VectorOfByte v;
    v.insertbytes(0, 4);
    EXPECT_EQ(v.m_capacity, 4);
    v.insertbytes(2, 3);
    EXPECT_EQ(v.size(), 7);
    EXPECT_EQ(v.m_capacity, 4 + 7);
    v.insertbytes(7, 4);
    EXPECT_EQ(v.size(), 11);
    EXPECT_EQ(v.m_capacity, 11);
}

TEST(VectorOfByteTest, MakeroomGrowsWithoutUse) {
    VectorOfByte v;
    Append(v, "abc");
    v.makeroom(0);
    EXPECT_EQ(v.m_capacity, 3);
    v.makeroom(2);
    EXPECT_EQ(v.m_capacity, 3 + 5);
    EXPECT_EQ(Bytes(v), "abc");
}

TEST(VectorOfByteTest, ReserveIsExactAndNeverShrinks) {
    VectorOfByte v;
    Append(v, "abc");
    v.reserve(10);
    EXPECT_EQ(v.m_capacity, 10);
    v.reserve(5);
    EXPECT_EQ(v.m_capacity, 10);
    v.reserve(0);
    EXPECT_EQ(v.m_capacity, 10);
    EXPECT_EQ(Bytes(v), "abc");
}

TEST(VectorOfByteTest, ReserveServesConstants) {
    const VectorOfByte v;
    v.reserve(3);
    EXPECT_EQ(v.m_capacity, 3);
    EXPECT_NE(v.data(), nullptr);
    EXPECT_EQ(v.size(), 0);
}

TEST(VectorOfByteTest, ClearKeepsTheMemory) {
    VectorOfByte v;
    Append(v, "abcd");
    const uint8* const data = v.data();
    v.clear();
    EXPECT_EQ(v.size(), 0);
    EXPECT_EQ(v.m_capacity, 7);
    EXPECT_EQ(v.data(), data);
}

TEST(VectorOfByteTest, InsertbytesOpensAGap) {
    struct Case {
        ssize_t pos;
        ssize_t n;
        const char* expected;  // with the gap filled by '-'
    };
    constexpr Case s_cases[] = {
        {0, 2, "--abc"  },
        {1, 3, "a---bc" },
        {3, 1, "abc-"   },
        {3, 0, "abc"    },
        {0, 0, "abc"    },
        {2, 4, "ab----c"},
    };
    for (const auto& [pos, n, expected] : s_cases) {
        VectorOfByte v;
        Append(v, "abc");
        v.insertbytes(pos, n);
        std::fill_n(v.begin() + pos, n, static_cast<uint8>('-'));
        EXPECT_EQ(Bytes(v), expected);
    }
    VectorOfByte empty;
    empty.insertbytes(0, 0);
    EXPECT_EQ(empty.size(), 0);
}

TEST(VectorOfByteTest, SwapExchangesTheBlocks) {
    VectorOfByte a;
    VectorOfByte b;
    Append(a, "abcd");
    const uint8* const data = a.data();
    a.swap(b);
    EXPECT_EQ(b.data(), data);
    EXPECT_EQ(Bytes(b), "abcd");
    EXPECT_EQ(b.m_capacity, 7);
    EXPECT_EQ(a.data(), nullptr);
    EXPECT_EQ(a.size(), 0);
    EXPECT_EQ(a.m_capacity, 0);
}

TEST(VectorOfByteTest, PushesTheBytesOfAnObjectAtAnyOffset) {
    VectorOfByte v;
    v.push_back('x');
    v.push_back(static_cast<vorn::uint32>(0x01020304));
    v.push_back(static_cast<const void*>(&v));
    ASSERT_EQ(v.size(), 1 + 4 + 8);
    vorn::uint32 number = 0;
    const void* pointer = nullptr;
    std::memcpy(&number, v.data() + 1, 4);
    std::memcpy(&pointer, v.data() + 5, 8);
    EXPECT_EQ(number, 0x01020304U);
    EXPECT_EQ(pointer, &v);
}

TEST(VectorOfByteTest, PushesAByteOfItsOwn) {
    VectorOfByte v;
    Append(v, "abc");  // full
    ASSERT_EQ(v.m_capacity, v.size());
    v.push_back(v.data()[0]);
    v.push_back(v.data()[1]);
    EXPECT_EQ(Bytes(v), "abcab");
}

TEST(VectorOfByteTest, ConstructsAnOwningObjectInPlace) {
    VectorOfByte v;
    v.push_back(xstring("first"));
    auto* objects = reinterpret_cast<xstring*>(v.data());
    v.push_back(objects[0]);  // moves the block while the object is still to be copied
    objects = reinterpret_cast<xstring*>(v.data());
    EXPECT_EQ(v.size(), 2 * static_cast<ssize_t>(sizeof(xstring)));
    EXPECT_EQ(objects[0], "first");
    EXPECT_EQ(objects[1], "first");
    std::destroy(objects, objects + 2);
}

TEST(VectorOfByteTest, SizeBeyondAllMemoryRaisesBadAllocAndChangesNothing) {
    VectorOfByte v;
    Append(v, "abc");
    const uint8* const data = v.data();
    EXPECT_THROW(v.growbytes(s_most), std::bad_alloc);
    EXPECT_THROW(v.growbytes(s_most - 5), std::bad_alloc);
    EXPECT_THROW(v.insertbytes(1, s_most - 3), std::bad_alloc);
    EXPECT_THROW(v.growbytes(s_most / 2), std::bad_alloc);
    EXPECT_THROW(v.reserve(s_most), std::bad_alloc);
    EXPECT_THROW(v.reserve(s_most / 2), std::bad_alloc);
    EXPECT_EQ(v.data(), data);
    EXPECT_EQ(v.m_capacity, 3);
    EXPECT_EQ(Bytes(v), "abc");
}

}  // namespace

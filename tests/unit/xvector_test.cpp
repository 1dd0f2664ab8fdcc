#include "qzUtils/xvector.h"

#include <gtest/gtest.h>

#include <limits>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include "qzUtils/xstring.h"
#include "tests/support/Text.h"

namespace {

using vorn::ssize_t;
using vorn::SubString;
using vorn::xstring;
using vorn::xvector;

// Owns memory, counts how many of its kind live and are copied, and fails on demand.
class Counted {
public:
    explicit Counted(int value) : m_value(new int(value)) { ++s_alive; }
    Counted(const Counted& other) : m_value(nullptr) {
        if (s_copiesLeft == 0)
            throw std::bad_alloc();
        --s_copiesLeft;
        m_value = new int(*other.m_value);
        ++s_alive;
    }
    Counted& operator=(const Counted&) = delete;
    ~Counted() {
        delete m_value;
        --s_alive;
    }

    int Value() const { return *m_value; }

    static inline int s_alive = 0;
    static inline int s_copiesLeft = 0;

private:
    int* m_value;
};

std::string Bytes(const xvector<char>& v) {
    return std::string(v.begin(), v.end());
}

xvector<int> Ints(const std::vector<int>& values) {
    return xvector<int>(values.data(), values.data() + values.size());
}

std::vector<int> Values(const xvector<int>& v) {
    return std::vector<int>(v.begin(), v.end());
}

std::vector<int> Values(const xvector<Counted>& v) {
    std::vector<int> values;
    for (const Counted& element : v)
        values.push_back(element.Value());
    return values;
}

// Filled with 0, 1, 2 ... and the copies that this takes allowed for.
void Fill(xvector<Counted>& v, int count) {
    Counted::s_copiesLeft = std::numeric_limits<int>::max();
    for (int i = 0; i < count; ++i)
        v.push_back(Counted(i));
}

}  // namespace

namespace vorn {

template <>
struct IsRelocatable<Counted> : std::true_type {};

}  // namespace vorn

namespace {

static_assert(sizeof(xvector<int>) == sizeof(vorn::VectorOfByte));
static_assert(std::is_same_v<decltype(xvector<int>::m_buffer), vorn::VectorOfByte>);
static_assert(xvector<int>::npos == -1 && xstring::npos == -1);
static_assert(vorn::IsRelocatable<char>::value && vorn::IsRelocatable<SubString>::value);
static_assert(vorn::IsRelocatable<xstring>::value && vorn::IsRelocatable<int*>::value);
static_assert(vorn::IsRelocatable<xvector<int>>::value);
static_assert(!vorn::IsRelocatable<std::string>::value, "may point into itself");
static_assert(std::is_nothrow_move_constructible_v<xvector<int>>);
static_assert(std::is_nothrow_move_assignable_v<xvector<int>>);

TEST(xvectorTest, StartsEmptyWithoutMemory) {
    const xvector<int> v;
    EXPECT_EQ(v.size(), 0);
    EXPECT_TRUE(v.empty());
    EXPECT_EQ(v.data(), nullptr);
    EXPECT_EQ(v.begin(), v.end());
    EXPECT_EQ(v.data_end(), v.data());
    EXPECT_EQ(v.m_buffer.m_capacity, 0);
}

TEST(xvectorTest, CountsElementsInBytes) {
    const xvector<int> v = Ints({1, 2, 3});
    EXPECT_EQ(v.size(), 3);
    EXPECT_EQ(v.m_buffer.size(), 12);
    EXPECT_EQ(v.data_end() - v.data(), 3);
    EXPECT_EQ(v.end(), v.data_end());
    EXPECT_EQ(v.begin(), v.data());
    EXPECT_FALSE(v.empty());
}

TEST(xvectorTest, ElementsAreReadAndChangedInPlace) {
    xvector<int> v = Ints({1, 2, 3});
    v[1] = 5;
    *v.begin() = 4;
    v.data()[2] = 6;
    EXPECT_EQ(Values(v), (std::vector<int>{4, 5, 6}));
    const xvector<int>& constant = v;
    EXPECT_EQ(constant[2], 6);
    EXPECT_EQ(*(constant.end() - 1), 6);
}

TEST(xvectorTest, CopiesOwnTheirElements) {
    xvector<int> original = Ints({1, 2});
    const xvector<int> copy(original);
    original[0] = 9;
    EXPECT_EQ(Values(copy), (std::vector<int>{1, 2}));
    EXPECT_EQ(copy.m_buffer.m_capacity, 8) << "a new vector has room for its elements alone";
}

TEST(xvectorTest, AssignmentReplacesTheElements) {
    xvector<int> v = Ints({1, 2, 3});
    const xvector<int> other = Ints({4});
    v = other;
    EXPECT_EQ(Values(v), (std::vector<int>{4}));
    const xvector<int>& same = v;
    v = same;
    EXPECT_EQ(Values(v), (std::vector<int>{4}));
    v = xvector<int>();
    EXPECT_TRUE(v.empty());
}

TEST(xvectorTest, MovesLeaveTheirSourceEmpty) {
    xvector<int> source = Ints({1, 2});
    const int* const data = source.data();
    xvector<int> target(std::move(source));
    EXPECT_EQ(target.data(), data);
    EXPECT_TRUE(source.empty());
    source = std::move(target);
    EXPECT_EQ(source.data(), data);
    EXPECT_TRUE(target.empty());
    xvector<int>& same = source;
    source = std::move(same);
    EXPECT_EQ(Values(source), (std::vector<int>{1, 2}));
}

TEST(xvectorTest, SwapExchangesTheBlocks) {
    xvector<int> a = Ints({1, 2});
    xvector<int> b = Ints({3});
    const int* const data = a.data();
    a.swap(b);
    EXPECT_EQ(b.data(), data);
    EXPECT_EQ(Values(a), (std::vector<int>{3}));
}

TEST(xvectorTest, ReserveCountsElements) {
    xvector<int> v;
    v.reserve(5);
    EXPECT_EQ(v.m_buffer.m_capacity, 20);
    EXPECT_TRUE(v.empty());
    v.reserve(2);
    EXPECT_EQ(v.m_buffer.m_capacity, 20);
}

TEST(xvectorTest, ReserveBeyondAllMemoryRaisesBadAlloc) {
    constexpr ssize_t s_most = std::numeric_limits<ssize_t>::max();
    xvector<int> v = Ints({1});
    EXPECT_THROW(v.reserve(s_most), std::bad_alloc);
    EXPECT_THROW(v.reserve(s_most / 4 + 1), std::bad_alloc);
    EXPECT_EQ(Values(v), (std::vector<int>{1}));
}

// The capacity becomes the old capacity plus the new size, counted in bytes.
TEST(xvectorTest, GrowthAddsTheOldCapacityToTheNewSize) {
    xvector<int> v;
    ssize_t capacity = 0;
    for (int i = 1; i <= 100; ++i) {
        v.push_back(i);
        if (i * 4 > capacity)
            capacity += i * 4;
        ASSERT_EQ(v.m_buffer.m_capacity, capacity) << "with " << i << " elements";
    }
}

TEST(xvectorTest, RangesGrowOnceForAllTheirElements) {
    const int five[] = {1, 2, 3, 4, 5};
    xvector<int> v = Ints({7});
    v.push_back(five, five + 5);
    EXPECT_EQ(Values(v), (std::vector<int>{7, 1, 2, 3, 4, 5}));
    EXPECT_EQ(v.m_buffer.m_capacity, 4 + 24);

    const xstring words[] = {"a", "b", "c", "d", "e"};
    xvector<xstring> w(words, words + 1);
    w.push_back(words, words + 5);
    EXPECT_EQ(w.size(), 6);
    EXPECT_EQ(w.m_buffer.m_capacity, static_cast<ssize_t>(7 * sizeof(xstring)));
}

TEST(xvectorTest, EmptyRangesChangeNothing) {
    xvector<int> v;
    const int* const null = nullptr;
    v.push_back(null, null);
    v.append(null, null);
    v.assign(null, null);
    EXPECT_EQ(v.data(), nullptr);
    v = Ints({1});
    v.push_back(v.end(), v.end());
    v.append(xvector<int>());
    EXPECT_EQ(Values(v), (std::vector<int>{1}));
}

TEST(xvectorTest, RangesAreTakenFromChangeablePointersToo) {
    char text[] = "abc";
    xvector<char> v;
    v.push_back(text, text + 2);
    v.append(text + 2, text + 3);
    EXPECT_EQ(Bytes(v), "abc");
}

TEST(xvectorTest, AppendsElementsOfItsOwn) {
    xvector<int> v = Ints({1, 2, 3});
    ASSERT_EQ(v.m_buffer.m_capacity, v.m_buffer.size()) << "the first append must move the block";
    v.push_back(v[0]);
    v.push_back(v.begin() + 1, v.begin() + 3);
    EXPECT_EQ(Values(v), (std::vector<int>{1, 2, 3, 1, 2, 3}));
    v.append(v);
    EXPECT_EQ(v.size(), 12);
    v += v;
    EXPECT_EQ(v.size(), 24);
    for (int i = 0; i < 24; ++i)
        EXPECT_EQ(v[i], i % 3 + 1);
}

TEST(xvectorTest, AppendsOwningElementsOfItsOwn) {
    const xstring words[] = {"alpha", "beta"};
    xvector<xstring> v(words, words + 2);
    v.push_back(v[0]);
    v.push_back(v.begin(), v.end());
    ASSERT_EQ(v.size(), 6);
    const char* const expected[] = {"alpha", "beta", "alpha", "alpha", "beta", "alpha"};
    for (ssize_t i = 0; i < 6; ++i)
        EXPECT_EQ(v[i], expected[i]);
}

TEST(xvectorTest, AssignsPartsOfItself) {
    xvector<char> v;
    const char* const text = "abcdef";
    v.assign(text, text + 6);
    v.assign(v.begin() + 2, v.begin() + 5);
    EXPECT_EQ(Bytes(v), "cde");
    v.assign(v.begin() + 1, v.begin() + 1);
    EXPECT_EQ(Bytes(v), "");
    v.assign(text, text + 2);
    v.assign(v);
    EXPECT_EQ(Bytes(v), "ab");
}

TEST(xvectorTest, AssignKeepsTheMemoryThatSuffices) {
    xvector<int> v = Ints({1, 2, 3, 4});
    const int* const data = v.data();
    const int two[] = {5, 6};
    v.assign(two, two + 2);
    EXPECT_EQ(Values(v), (std::vector<int>{5, 6}));
    EXPECT_EQ(v.data(), data);
    v.assign(Ints({7, 8, 9}));
    EXPECT_EQ(Values(v), (std::vector<int>{7, 8, 9}));
}

TEST(xvectorTest, AppendJoinsVectors) {
    xvector<int> v = Ints({1});
    v.append(Ints({2, 3}));
    v += Ints({4});
    (v += Ints({5})) += Ints({6});
    EXPECT_EQ(Values(v), (std::vector<int>{1, 2, 3, 4, 5, 6}));
}

TEST(xvectorTest, EraseClosesTheGap) {
    xvector<int> v = Ints({0, 1, 2, 3, 4, 5});
    EXPECT_EQ(v.erase(v.begin() + 1, v.begin() + 3), v.begin() + 1);
    EXPECT_EQ(Values(v), (std::vector<int>{0, 3, 4, 5}));
    EXPECT_EQ(*v.erase(v.begin()), 3);
    const int* const behindTheLast = v.erase(v.end() - 1);
    EXPECT_EQ(behindTheLast, v.end());
    EXPECT_EQ(v.erase(v.begin(), v.begin()), v.begin());
    EXPECT_EQ(Values(v), (std::vector<int>{3, 4}));
    v.erase(v.begin(), v.end());
    EXPECT_TRUE(v.empty());
    v.erase(v.begin(), v.end());
    EXPECT_TRUE(v.empty());
    xvector<int> none;
    none.erase(none.begin(), none.end());
    EXPECT_TRUE(none.empty());
}

TEST(xvectorTest, ClearKeepsTheMemory) {
    xvector<int> v = Ints({1, 2});
    const int* const data = v.data();
    v.clear();
    EXPECT_TRUE(v.empty());
    EXPECT_EQ(v.data(), data);
    EXPECT_EQ(v.m_buffer.m_capacity, 8);
}

TEST(xvectorTest, FindGivesTheFirstIndexOrNpos) {
    const xvector<int> v = Ints({3, 1, 2, 1});
    EXPECT_EQ(v.find(3), 0);
    EXPECT_EQ(v.find(1), 1);
    EXPECT_EQ(v.find(v[3]), 1);
    EXPECT_EQ(v.find(4), xvector<int>::npos);
    EXPECT_EQ(xvector<int>().find(0), xvector<int>::npos);
}

TEST(xvectorTest, IsOrderedLexicographically) {
    const std::vector<std::vector<int>> ascending = {
        { },
        {-1},
        {0 },
        {0,  0},
        {0,  1},
        {1},
        {1,  -5},
        {2 },
    };
    for (std::size_t i = 0; i < ascending.size(); ++i) {
        for (std::size_t j = 0; j < ascending.size(); ++j) {
            SCOPED_TRACE(testing::Message() << i << " and " << j);
            const xvector<int> a = Ints(ascending[i]);
            const xvector<int> b = Ints(ascending[j]);
            EXPECT_EQ(a == b, i == j);
            EXPECT_EQ(a != b, i != j);
            EXPECT_EQ(a < b, i < j);
            EXPECT_EQ(a <= b, i <= j);
            const int order = a.compare(b);
            EXPECT_EQ(order < 0, i < j);
            EXPECT_EQ(order == 0, i == j);
        }
    }
}

TEST(xvectorTest, BytesAreOrderedAsUnsignedNumbers) {
    const char* const low = "\x01";
    const char* const high = "\x80";
    const xvector<char> a(low, low + 1);
    const xvector<char> b(high, high + 1);
    EXPECT_TRUE(a < b);
    EXPECT_FALSE(b <= a);
    EXPECT_LT(a.compare(b), 0);
}

TEST(xvectorTest, DestroysEveryElementOnce) {
    {
        xvector<Counted> v;
        Fill(v, 20);
        EXPECT_EQ(Counted::s_alive, 20);
        v.erase(v.begin() + 3, v.begin() + 8);
        EXPECT_EQ(Counted::s_alive, 15);
        xvector<Counted> copy(v);
        EXPECT_EQ(Counted::s_alive, 30);
        v.assign(copy.begin(), copy.begin() + 2);
        EXPECT_EQ(Counted::s_alive, 17);
        v.append(v);
        EXPECT_EQ(Values(v), (std::vector<int>{0, 1, 0, 1}));
        copy.clear();
        EXPECT_EQ(Counted::s_alive, 4);
    }
    EXPECT_EQ(Counted::s_alive, 0);
}

TEST(xvectorTest, GrowthCallsNoConstructor) {
    xvector<Counted> v;
    Fill(v, 3);
    Counted::s_copiesLeft = 0;
    v.reserve(100);
    EXPECT_EQ(Values(v), (std::vector<int>{0, 1, 2}));
}

TEST(xvectorTest, CopyThatFailsHalfWayLeaksNothing) {
    xvector<Counted> v;
    Fill(v, 5);
    Counted::s_copiesLeft = 3;
    EXPECT_THROW(xvector<Counted>{v}, std::bad_alloc);
    EXPECT_EQ(Counted::s_alive, 5);
    Counted::s_copiesLeft = 3;
    EXPECT_THROW((xvector<Counted>{v.begin(), v.end()}), std::bad_alloc);
    EXPECT_EQ(Counted::s_alive, 5);
}

TEST(xvectorTest, AppendThatFailsHalfWayKeepsWhatItHas) {
    xvector<Counted> v;
    Fill(v, 3);
    for (int copies = 0; copies < 2; ++copies) {
        Counted::s_copiesLeft = copies;
        EXPECT_THROW(v.push_back(v.begin() + 1, v.begin() + 3), std::bad_alloc);
    }
    EXPECT_EQ(Values(v), (std::vector<int>{0, 1, 2, 1}));
    Counted::s_copiesLeft = 0;
    EXPECT_THROW(v.push_back(v[0]), std::bad_alloc);
    EXPECT_EQ(Values(v), (std::vector<int>{0, 1, 2, 1}));
    EXPECT_EQ(Counted::s_alive, 4);
}

}  // namespace

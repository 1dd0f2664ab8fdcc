#include "qzUtils/AutoPtrExt.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

namespace {

using vorn::AutoCollectionOfPtr;
using vorn::xvector;

// Writes its letter to a log when it is deleted.
class Logged {
public:
    Logged(std::string& log, char letter) : m_log(log), m_letter(letter) {}
    Logged(const Logged&) = delete;
    Logged& operator=(const Logged&) = delete;
    virtual ~Logged() { m_log += m_letter; }

private:
    std::string& m_log;
    char m_letter;
};

using Collection = AutoCollectionOfPtr<xvector<Logged*>>;
static_assert(std::is_base_of_v<xvector<Logged*>, Collection>);
static_assert(sizeof(Collection) == sizeof(xvector<Logged*>), "no fields of its own");
static_assert(!std::is_copy_constructible_v<Collection> && !std::is_copy_assignable_v<Collection>,
              "two owners would delete twice");

TEST(AutoPtrExtTest, DeletesItsElementsInOrder) {
    std::string log;
    {
        Collection collection;
        for (const char letter : {'a', 'b', 'c'})
            collection.push_back(new Logged(log, letter));
        EXPECT_EQ(collection.size(), 3);
        EXPECT_EQ(log, "");
    }
    EXPECT_EQ(log, "abc");
}

TEST(AutoPtrExtTest, DeleteAndClearEmptiesTheCollection) {
    std::string log;
    {
        Collection collection;
        collection.push_back(new Logged(log, 'a'));
        collection.push_back(nullptr);
        collection.DeleteAndClear();
        EXPECT_TRUE(collection.empty());
        EXPECT_EQ(log, "a");
        collection.DeleteAndClear();
        collection.push_back(new Logged(log, 'b'));
    }
    EXPECT_EQ(log, "ab") << "each is deleted once";
}

TEST(AutoPtrExtTest, EmptyCollectionsEndQuietly) {
    Collection collection;
    collection.DeleteAndClear();
    EXPECT_TRUE(collection.empty());
}

TEST(AutoPtrExtTest, OwnsThePointersOfAnyVector) {
    std::string log;
    {
        AutoCollectionOfPtr<std::vector<Logged*>> collection;
        collection.push_back(new Logged(log, 'a'));
    }
    EXPECT_EQ(log, "a");
}

}  // namespace

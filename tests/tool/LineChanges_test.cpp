// The changes between lists of lines: right always, and the fewest where the lists are small.

#include "common/LineChanges.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

namespace {

using qztools::FindLineChanges;
using qztools::LineChanges;
using qztools::LineNumbers;

LineNumbers Kept(const LineNumbers& lines, const std::vector<char>& changed) {
    LineNumbers kept;
    for (std::size_t i = 0; i < lines.size(); ++i)
        if (changed[i] == 0)
            kept.push_back(lines[i]);
    return kept;
}

std::ptrdiff_t Count(const LineChanges& changes) {
    return std::count(changes.removed.begin(), changes.removed.end(), 1)
           + std::count(changes.added.begin(), changes.added.end(), 1);
}

// By the table of all common subsequences.
std::ptrdiff_t FewestChanges(const LineNumbers& a, const LineNumbers& b) {
    std::vector<std::ptrdiff_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), 0);
    for (const int line : a) {
        std::ptrdiff_t diagonal = row[0]++;
        for (std::size_t k = 0; k < b.size(); ++k) {
            const std::ptrdiff_t above = row[k + 1];
            row[k + 1] = line == b[k] ? diagonal : 1 + std::min(above, row[k]);
            diagonal = above;
        }
    }
    return row.back();
}

LineNumbers RandomLines(std::mt19937& random, std::size_t mostLines, int kinds) {
    LineNumbers lines(random() % (mostLines + 1));
    for (int& line : lines)
        line = static_cast<int>(random() % static_cast<unsigned>(kinds));
    return lines;
}

// A number must lie below the sum of the sizes.
int FitKinds(int kinds, const LineNumbers& a, const LineNumbers& b) {
    return std::min(kinds, static_cast<int>(a.size() + b.size()));
}

TEST(LineChanges, AreTheFewestForSmallLists) {
    std::mt19937 random(1);
    for (int round = 0; round < 20000; ++round) {
        const int kinds = 1 + static_cast<int>(random() % 6);
        LineNumbers a = RandomLines(random, 12, kinds);
        LineNumbers b = RandomLines(random, 12, kinds);
        for (LineNumbers* lines : {&a, &b})
            for (int& line : *lines)
                line = std::min(line, FitKinds(kinds, a, b) - 1);
        const LineChanges changes = FindLineChanges(a, b);
        ASSERT_EQ(changes.removed.size(), a.size());
        ASSERT_EQ(changes.added.size(), b.size());
        ASSERT_EQ(Kept(a, changes.removed), Kept(b, changes.added)) << round;
        ASSERT_EQ(Count(changes), FewestChanges(a, b)) << round;
    }
}

TEST(LineChanges, AreFewForLongListsThatAreAlike) {
    std::mt19937 random(2);
    LineNumbers a(100'000);
    for (std::size_t i = 0; i < a.size(); ++i)
        a[i] = static_cast<int>(i % 50'000);
    LineNumbers b = a;
    for (int i = 0; i < 100; ++i)
        b.erase(b.begin() + static_cast<std::ptrdiff_t>(random() % b.size()));
    const LineChanges changes = FindLineChanges(a, b);
    EXPECT_EQ(Kept(a, changes.removed), b);
    EXPECT_EQ(Count(changes), 100);
}

TEST(LineChanges, EndSoonForLongListsThatAreNot) {
    std::mt19937 random(3);
    for (const int kinds : {2, 1000, 300'000}) {
        LineNumbers a(300'000);
        LineNumbers b(300'000);
        for (LineNumbers* lines : {&a, &b})
            for (int& line : *lines)
                line = static_cast<int>(random() % static_cast<unsigned>(kinds));
        const LineChanges changes = FindLineChanges(a, b);
        EXPECT_EQ(Kept(a, changes.removed), Kept(b, changes.added)) << kinds;
    }
}

}  // namespace

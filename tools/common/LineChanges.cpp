#include "common/LineChanges.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace qztools {

namespace {

// ---- one side ----------------------------------------------------------------------------------

// The lines of one text that the other one has as well; those it has not are changes in any case.
struct Side {
    std::vector<int> numbers;
    std::vector<std::size_t> places;  // of those lines in their text
    std::vector<char>& changed;       // of all lines

    Side(const LineNumbers& lines, const std::vector<char>& isShared, std::vector<char>& changes)
        : changed(changes) {
        changed.assign(lines.size(), 1);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            if (isShared[static_cast<std::size_t>(lines[i])] == 0)
                continue;
            numbers.push_back(lines[i]);
            places.push_back(i);
            changed[i] = 0;
        }
    }

    int Size() const { return static_cast<int>(numbers.size()); }
    int Number(int i) const { return numbers[static_cast<std::size_t>(i)]; }

    void Change(int first, int last) {
        for (; first < last; ++first)
            changed[places[static_cast<std::size_t>(first)]] = 1;
    }
};

std::vector<char> FindShared(const LineNumbers& oldLines, const LineNumbers& newLines) {
    std::vector<char> seen(oldLines.size() + newLines.size(), 0);
    for (const int line : oldLines)
        seen[static_cast<std::size_t>(line)] |= 1;
    for (const int line : newLines)
        seen[static_cast<std::size_t>(line)] |= 2;
    for (char& sides : seen)
        sides = static_cast<char>(sides == 3);
    return seen;
}

// ---- the search --------------------------------------------------------------------------------

struct Point {
    int x, y;  // in the old text, in the new one
};

// A part of both texts.
struct Box {
    Point first, last;
};

// How far a search has come on each diagonal x - y of a box.
class Front {
public:
    Front(std::size_t size, int lowest) : m_reached(size), m_lowest(lowest) {}

    int& operator[](int diagonal) {
        return m_reached[static_cast<std::size_t>(diagonal - m_lowest)];
    }

    void Start(int diagonal, int x) {
        low = high = diagonal;
        (*this)[diagonal] = x;
    }

    // Takes in the next diagonals on both sides, as long as they touch the box.
    void Widen(int least, int most, int beyond) {
        if (low > least)
            (*this)[--low - 1] = beyond;
        else
            ++low;
        if (high < most)
            (*this)[++high + 1] = beyond;
        else
            --high;
    }

    bool Covers(int diagonal) const { return diagonal >= low && diagonal <= high; }

    int low = 0;
    int high = 0;

private:
    std::vector<int> m_reached;
    int m_lowest;
};

// The linear-space search of Myers: two fronts, from the start and from the end of a box, take one
// more change at a time until they meet on a shortest way. That point cuts the box in two.
class Search {
public:
    Search(Side& oldSide, Side& newSide)
        : m_old(oldSide),
          m_new(newSide),
          m_forward(FrontSize(), -m_new.Size() - 1),
          m_backward(FrontSize(), -m_new.Size() - 1),
          m_mostCost(static_cast<int>(
              std::clamp(s_effort / (1 + m_old.Size() + m_new.Size()), 32L, 4096L))) {}

    void Run() {
        m_todo.push_back({
            {0,            0           },
            {m_old.Size(), m_new.Size()}
        });
        while (!m_todo.empty()) {
            const Box box = Trim(m_todo.back());
            m_todo.pop_back();
            if (box.first.x == box.last.x || box.first.y == box.last.y)
                Change(box);
            else
                Divide(box);
        }
    }

private:
    // About how many steps are made in all where the texts have little in common.
    static constexpr long s_effort = 100'000'000;
    static constexpr int s_never = std::numeric_limits<int>::max();

    std::size_t FrontSize() const {
        return static_cast<std::size_t>(m_old.Size()) + static_cast<std::size_t>(m_new.Size()) + 3;
    }

    bool AreSame(int x, int y) const { return m_old.Number(x) == m_new.Number(y); }

    Point Forward(Point p, const Point& last) const {
        while (p.x < last.x && p.y < last.y && AreSame(p.x, p.y))
            ++p.x, ++p.y;
        return p;
    }

    Point Backward(Point p, const Point& first) const {
        while (p.x > first.x && p.y > first.y && AreSame(p.x - 1, p.y - 1))
            --p.x, --p.y;
        return p;
    }

    Box Trim(const Box& box) const {
        const Point first = Forward(box.first, box.last);
        return {first, Backward(box.last, first)};
    }

    void Change(const Box& box) {
        m_old.Change(box.first.x, box.last.x);
        m_new.Change(box.first.y, box.last.y);
    }

    void Divide(const Box& box) {
        const Point middle = FindMiddle(box);
        m_todo.push_back({box.first, middle});
        m_todo.push_back({middle, box.last});
    }

    // REQUIRES: both sides of the box hold lines, and neither begins or ends with the same ones.
    Point FindMiddle(const Box& box) {
        m_forward.Start(box.first.x - box.first.y, box.first.x);
        m_backward.Start(box.last.x - box.last.y, box.last.x);
        const bool meetsForward = ((m_forward.low - m_backward.low) & 1) != 0;
        Point meeting{};
        for (int cost = 1; cost <= m_mostCost; ++cost) {
            if (StepForward(box, meeting) && meetsForward)
                return meeting;
            if (StepBackward(box, meeting) && !meetsForward)
                return meeting;
        }
        return FindFurthest(box);
    }

    // One more change on each diagonal from the start; whether the fronts have met.
    bool StepForward(const Box& box, Point& meeting) {
        m_forward.Widen(box.first.x - box.last.y, box.last.x - box.first.y, -1);
        bool met = false;
        for (int k = m_forward.high; k >= m_forward.low && !met; k -= 2) {
            const int x = std::max(m_forward[k - 1] + 1, m_forward[k + 1]);
            const Point p = Forward({x, x - k}, box.last);
            m_forward[k] = p.x;
            met = m_backward.Covers(k) && m_backward[k] <= p.x;
            meeting = p;
        }
        return met;
    }

    bool StepBackward(const Box& box, Point& meeting) {
        m_backward.Widen(box.first.x - box.last.y, box.last.x - box.first.y, s_never);
        bool met = false;
        for (int k = m_backward.high; k >= m_backward.low && !met; k -= 2) {
            const int x = std::min(m_backward[k - 1], m_backward[k + 1] - 1);
            const Point p = Backward({x, x - k}, box.first);
            m_backward[k] = p.x;
            met = m_forward.Covers(k) && p.x <= m_forward[k];
            meeting = p;
        }
        return met;
    }

    // Where the fronts did not meet in time: the point that one of them has come furthest to.
    Point FindFurthest(const Box& box) {
        Point best = box.first;
        int most = 0;
        for (int k = m_forward.low; k <= m_forward.high; k += 2) {
            const int x = std::min({m_forward[k], box.last.x, box.last.y + k});
            if (x + x - k - box.first.x - box.first.y > most) {
                best = {x, x - k};
                most = best.x + best.y - box.first.x - box.first.y;
            }
        }
        for (int k = m_backward.low; k <= m_backward.high; k += 2) {
            const int x = std::max({m_backward[k], box.first.x, box.first.y + k});
            if (box.last.x + box.last.y - x - x + k > most) {
                best = {x, x - k};
                most = box.last.x + box.last.y - best.x - best.y;
            }
        }
        return best;
    }

    Side& m_old;
    Side& m_new;
    Front m_forward;
    Front m_backward;
    int m_mostCost;
    std::vector<Box> m_todo;
};

}  // namespace

LineChanges FindLineChanges(const LineNumbers& oldLines, const LineNumbers& newLines) {
    const std::vector<char> isShared = FindShared(oldLines, newLines);
    LineChanges changes;
    Side oldSide(oldLines, isShared, changes.removed);
    Side newSide(newLines, isShared, changes.added);
    Search(oldSide, newSide).Run();
    return changes;
}

}  // namespace qztools

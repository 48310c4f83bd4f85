#include "pslist.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

template <class T>
std::vector<T> contents(const psList<T>& list) {
    const std::vector<T> forward(list.begin(), list.end());
    std::vector<T> backward;
    for (auto pos = list.end(); pos != list.begin();) backward.push_back(*--pos);
    std::ranges::reverse(backward);
    EXPECT_EQ(forward, backward) << "the links back";
    return forward;
}

TEST(PsList, TheWalkSurvivesTheReleaseOfItsNode) {
    psList<int> list;
    for (const int value : {3, 4}) list.push_back(value);
    list.push_front(1);
    list.insert(std::next(list.begin()), 2);
    EXPECT_EQ(*list.first(), 1);
    list.erase(list.begin());           // behind the cursor
    list.erase(list.begin());           // under the cursor
    list.erase(std::prev(list.end()));  // ahead of it
    EXPECT_EQ(*list.next(), 3);
    EXPECT_EQ(list.next(), nullptr);
    EXPECT_EQ(list.next(), nullptr);
    list.clear();
    EXPECT_EQ(list.first(), nullptr);
}

TEST(PsList, SortIsStable) {
    std::mt19937 random(1);
    for (const int size : {0, 1, 2, 3, 7, 64, 1000, 70'000}) {  // beyond 2^16 too
        psList<std::pair<int, int>> list;
        std::vector<std::pair<int, int>> expected;
        for (int i = 0; i < size; ++i) {
            expected.emplace_back(static_cast<int>(random() % 10), i);
            list.push_back(expected.back());
        }
        const auto less = [](const auto& a, const auto& b) { return a.first < b.first; };
        std::ranges::stable_sort(expected, less);
        list.sort(less);
        list.merge(list, less);  // nothing to add
        ASSERT_EQ(contents(list), expected) << size;
    }
}

}  // namespace

// Rows side by side: each place once, and after those that it depends on.
#include "codecs/common/wavefront.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <vector>

#include "support/row_name.h"

namespace {

struct Size {
    const char* why;
    int columns, rows, threads;
};

// clang-format off
const Size kSizes[] = {
    // why                      columns  rows  threads
    {"one thread",              7,       5,    1},
    {"fewer columns than wait", 3,       40,   2},
    {"one column",              1,       20,   3},
    {"one row",                 30,      1,    3},
    {"more threads than rows",  50,      3,    5},
    {"usual",                   46,      36,   2},
    {"more than processors",    80,      45,   7},
};
// clang-format on

class Visits : public testing::TestWithParam<Size> {};
INSTANTIATE_TEST_SUITE_P(Sizes, Visits, testing::ValuesIn(kSizes), test_support::NameOfRow());

TEST_P(Visits, FollowThoseToTheLeftAndAbove) {
    const auto [why, columns, rows, threads] = GetParam();
    constexpr int kRuns = 20;
    codecs::TaskTeam team(threads);
    codecs::Wavefront wavefront(team);
    std::vector<std::atomic<int>> visits(static_cast<std::size_t>(columns * rows));
    std::atomic<int> early = 0;
    for (int run = 1; run <= kRuns; ++run) {
        wavefront.Run(columns, rows, [&](int x, int y) {
            const auto lacks = [&](int column, int row) {
                return visits[static_cast<std::size_t>(row * columns + column)] != run;
            };
            if (x > 0 && lacks(x - 1, y)) ++early;
            if (y > 0 && lacks(std::min(x + 1, columns - 1), y - 1)) ++early;
            ++visits[static_cast<std::size_t>(y * columns + x)];
        });
    }
    EXPECT_EQ(early, 0);
    EXPECT_TRUE(std::all_of(visits.begin(), visits.end(),
                            [&](const std::atomic<int>& count) { return count == kRuns; }));
}

TEST(VisitsOfRanges, WaitForNoOtherRange) {
    codecs::TaskTeam team(2);
    codecs::Wavefront wavefront(team);
    const codecs::Wavefront::Rows ranges[] = {{2, 5}, {7, 8}, {9, 12}};
    // The upper ranges end when the lowest one has.
    std::vector<int> order;
    std::mutex mutex;
    std::condition_variable ended;
    bool last = false;
    wavefront.Run(3, ranges, [&](int x, int y) {
        std::unique_lock lock(mutex);
        if (y == 4 && x == 2) ended.wait(lock, [&] { return last; });
        last = last || (y == 11 && x == 2);
        ended.notify_one();
        if (x == 0) order.push_back(y);
    });
    std::sort(order.begin(), order.end());
    EXPECT_EQ(order, (std::vector<int>{2, 3, 4, 7, 9, 10, 11}));
}

}  // namespace

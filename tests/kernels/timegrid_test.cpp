#include "kernels/timegrid.h"

#include <gtest/gtest.h>

#include <limits>
#include <numeric>

namespace MCVelscore_850::kernels {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

std::vector<double> Ascending(size_t count)
{
    std::vector<double> times(count);
    std::iota(times.begin(), times.end(), 1.0);
    return times;
}

// The counts say how many times lie before each cell; the last one is all of them.
TEST(TimeGrid, HasACellForFourTimes)
{
    const std::vector<double> times = Ascending(20);
    std::vector<double> counts;
    const TimeGrid grid = MakeTimeGrid(times.data(), times.size(), counts);
    EXPECT_EQ(grid.counts, counts.data());
    EXPECT_EQ(grid.origin, 1.0);
    EXPECT_EQ(grid.scale, 4.0 / 19.0);
    EXPECT_EQ(grid.last, 4.0);
    // (t - 1) 4 / 19 rounds to 0 up to 3, to 1 up to 8, to 2 up to 12, to 3 up to 17.
    EXPECT_EQ(counts, (std::vector<double>{0, 3, 8, 12, 17, 20}));
    EXPECT_EQ(grid.most, 5U);
}

TEST(TimeGrid, HasOneCellForFewTimesAndForTimesWithoutEnd)
{
    const std::vector<double> few = Ascending(16);
    std::vector<double> fromNowhere = Ascending(20);
    fromNowhere.front() = -kInf;
    std::vector<double> endless = Ascending(20);
    endless.back() = kInf;
    for (const std::vector<double>& times : {few, fromNowhere, endless}) {
        std::vector<double> counts;
        const TimeGrid grid = MakeTimeGrid(times.data(), times.size(), counts);
        const auto all = static_cast<double>(times.size());
        EXPECT_EQ(counts, (std::vector<double>{0, all})) << times.front() << " to " << times.back();
        EXPECT_EQ(grid.most, times.size());
        EXPECT_EQ(grid.last, 0.0);
    }
}

}  // namespace
}  // namespace MCVelscore_850::kernels

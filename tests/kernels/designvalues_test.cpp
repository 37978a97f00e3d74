#include "kernels/designvalues.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace MCVelscore_850::kernels {
namespace {

TEST(IsNear, TakesATrillionthOfTheLargerNumber)
{
    constexpr double kMost = std::numeric_limits<double>::max();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const double below = std::nextafter(kMost, 0.0);
    const struct {
        double x;
        double number;
        bool near;
    } kRows[] = {
        {1.0, 1.0, true},
        {1.0 + 5e-13, 1.0, true},
        {1.0 - 5e-13, 1.0, true},
        {1.0 + 2e-12, 1.0, false},
        {-1.0 - 5e-13, -1.0, true},
        {-1.0, 1.0, false},
        {0.0, -0.0, true},
        {5e-324, 0.0, false},
        {kMost, below, true},
        {below, kMost, true},
        {-kMost, -below, true},
        {-kMost, kMost, false},
        {kInfinity, kMost, false},
        {kMost, kInfinity, false},
        {kInfinity, kInfinity, true},
        {kInfinity, -kInfinity, false},
        {std::numeric_limits<double>::quiet_NaN(), 1.0, false},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(IsNear<double>(row.x, row.number), row.near) << row.x << ", " << row.number;
    }
}

}  // namespace
}  // namespace MCVelscore_850::kernels

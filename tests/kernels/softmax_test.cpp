#include "kernels/softmax.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

namespace MCVelscore_850::kernels {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
const double kNaN = std::nan("");

TEST(LargestOf, IsTheFirstOfTheLargest)
{
    struct Row {
        std::vector<double> numbers;
        size_t index;
    };
    const Row rows[] = {
        {{}, 0},
        {{-5}, 0},
        {{1, 2, 3}, 2},
        {{3, 3, 3}, 0},
        {{1, 3, 3}, 1},
        {{-1, -2}, 0},
        {{0.0, -0.0}, 0},
        {{-0.0, 0.0}, 0},
        {{-kInf, 0}, 1},
        {{0, kInf}, 1},
        {{1, 1.0000000000000002}, 1},
        {{kNaN, 1}, 0},
        {{1, kNaN, 2}, 2},
        {{kNaN, kNaN}, 0},
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        EXPECT_EQ(LargestOf(rows[i].numbers.data(), rows[i].numbers.size()).index,
                  static_cast<double>(rows[i].index))
            << "row " << i;
    }
}

// The numerators of linear predictors, and their sum.
struct Softmax {
    explicit Softmax(std::vector<double> numbers) : lp(std::move(numbers)), e(lp.size())
    {
        const double largest = LargestOf(lp.data(), lp.size()).value;
        sum = Exponentials(lp.data(), lp.size(), largest, e.data());
    }
    std::vector<double> lp;
    std::vector<double> e;
    double sum;
};

TEST(Exponentials, OfMiddlingNumbersAreTheirExp)
{
    const Softmax s({0, 1, -2});
    EXPECT_EQ(s.e, (std::vector<double>{1.0, std::exp(1.0), std::exp(-2.0)}));
    EXPECT_EQ(s.sum, 1.0 + std::exp(1.0) + std::exp(-2.0));
}

TEST(Exponentials, LimitItselfIsNeitherSubtractedNorCutOff)
{
    EXPECT_EQ(kLargestExponent, 709.782712893384);
    const Softmax s({kLargestExponent, -kLargestExponent, 0});
    // exp of both by mpmath: 1.7976931348622732e308 and 5.562684646268136e-309
    EXPECT_NEAR(s.e[0], 1.7976931348622732e308, 1e293);
    EXPECT_NEAR(s.e[1], 5.562684646268136e-309, 1e-320);
    EXPECT_EQ(s.e[2], 1.0);
}

TEST(Exponentials, JustAboveTheLimitTheLargestIsSubtractedFromAll)
{
    const double above = std::nextafter(kLargestExponent, kInf);
    const Softmax s({0, above, above - 1.0});
    EXPECT_EQ(s.e[0], 0.0);  // 0 became -709.78.., below the other limit
    EXPECT_EQ(s.e[1], 1.0);
    EXPECT_EQ(s.e[2], std::exp(-1.0));
}

TEST(Exponentials, JustBelowTheLowerLimitIsZero)
{
    const Softmax s({0, std::nextafter(-kLargestExponent, -kInf)});
    EXPECT_EQ(s.e, (std::vector<double>{1.0, 0.0}));
    EXPECT_EQ(s.sum, 1.0);
}

TEST(Exponentials, AllBelowTheLowerLimitLeaveNothing)
{
    // Nothing is subtracted here: the guard looks at the upper limit alone.
    const Softmax s({-1000, -1001});
    EXPECT_EQ(s.sum, 0.0);
}

TEST(Exponentials, HugeNumbers)
{
    EXPECT_EQ(Softmax({1e3, 1e3}).e, (std::vector<double>{1.0, 1.0}));
    EXPECT_EQ(Softmax({1e308, -1e308, 0}).e, (std::vector<double>{1.0, 0.0, 0.0}));
    EXPECT_TRUE(std::isnan(Softmax({kInf, 0}).e[0]));
    EXPECT_EQ(Softmax({0, -kInf}).e, (std::vector<double>{1.0, 0.0}));
    EXPECT_TRUE(std::isnan(Softmax({0, kNaN}).e[1]));
}

}  // namespace
}  // namespace MCVelscore_850::kernels

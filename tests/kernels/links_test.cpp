#include "kernels/links.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>
#include <string>

namespace MCVelscore_850::kernels {
namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

// By mpmath: tests/data/links/links.py.
TEST(MeanDerivative, AgreesWithHighPrecisionOnAGrid)
{
    std::ifstream file("tests/data/links/links.csv");
    std::string line;
    std::getline(file, line);
    int seen[kLinks] = {};
    while (std::getline(file, line)) {
        int link = -1;
        double k = 0.0, eta = 0.0, mean = 0.0, derivative = 0.0;
        ASSERT_EQ(
            std::sscanf(line.c_str(), "%d,%lf,%lf,%lf,%lf", &link, &k, &eta, &mean, &derivative),
            5);
        ++seen[link];
        // Arguments of exp reach some hundreds, and 1 - mean loses digits of a mean near 1.
        EXPECT_NEAR(MeanDerivative(static_cast<Link>(link), eta, k), derivative,
                    2e-13 * std::fabs(derivative))
            << line;
    }
    for (const int count : seen) EXPECT_GE(count, 10);
}

// Where the mean has a limit instead of its formula, or isn't there.
TEST(MeanDerivative, IsZeroBeyondTheGuardsAndNoneWithoutAMean)
{
    struct Edge {
        Link link;
        double k;
        double eta;
        double derivative;
    };
    const Edge edges[] = {
        {Link::ComplementaryLogLog, 0, -709, 0},
        {Link::ComplementaryLogLog, 0, 710, 0},
        {Link::Log, 0, -709, 0},
        {Link::Log, 0, 710, kNone},
        {Link::LogComplement, 0, -709, 0},
        {Link::Logit, 0, -709, 0},
        {Link::Logit, 0, 710, 0},
        {Link::NegativeLogLog, 0, 709, 0},
        {Link::NegativeBinomial, 2, 1, kNone},  // a mean below 0
        {Link::OddsPower, 2, -0.75, kNone},     // a root of -0.5
        {Link::Power, 2, -1, kNone},
        // eta^(1/k) at 0: a corner for k = 1, flat below it, steep above.
        {Link::Power, 1, 0, 1},
        {Link::Power, 0.5, 0, 0},
        {Link::Power, 2, 0, kInf},
    };
    for (const Edge& edge : edges) {
        EXPECT_EQ(MeanDerivative(edge.link, edge.eta, edge.k), edge.derivative)
            << static_cast<int>(edge.link) << ", k " << edge.k << ", eta " << edge.eta;
    }
}

}  // namespace
}  // namespace MCVelscore_850::kernels

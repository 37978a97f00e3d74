#include "models/gzlrlinks.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include "models/gzlrmodel.h"
#include "tests/models/modelfixture.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;
using Link = GZLRModel::LinkFunction;

constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

double Mean(Link link, double eta, double k = 0.0)
{
    GZLRModel model;
    model.SetLinkFunction(link);
    model.SetLinkParameter(k);
    return model.GetInverseValue(eta);
}

struct Point {
    int link;
    double k;
    double eta;
    double mean;
};

std::vector<Point> HighPrecision()
{
    std::ifstream file("tests/data/links/links.csv");
    std::string line;
    std::getline(file, line);
    std::vector<Point> points;
    while (std::getline(file, line)) {
        Point p{};
        EXPECT_EQ(std::sscanf(line.c_str(), "%d,%lf,%lf,%lf", &p.link, &p.k, &p.eta, &p.mean), 4);
        points.push_back(p);
    }
    return points;
}

// How far rounding may take each link's formula from the mean: exp and log are right to 1 eps of
// their answer, an error of a in the argument of exp is a relative error of a, and 1 - x has the
// absolute error of x.
double Bound(const Point& p)
{
    const double r = std::fabs(p.mean);
    switch (p.link) {
        case GZLRModel::LINK_IDENTITY: return 0.0;
        case GZLRModel::LINK_CLOGLOG: return 3.0 * kEps;
        case GZLRModel::LINK_LOG: return 2.0 * kEps * r;
        case GZLRModel::LINK_LOGC: return 2.0 * kEps * (1.0 + std::exp(p.eta));
        case GZLRModel::LINK_LOGIT: return 4.0 * kEps * r;
        case GZLRModel::LINK_NEGBIN: return kEps * r * (4.0 + 2.0 / (1.0 - std::exp(p.eta)));
        case GZLRModel::LINK_NLOGLOG: return kEps * r * (2.0 + 2.0 * std::exp(-p.eta));
        // Through exp(log(base) / k): the logarithm of the power times eps, and the base's own.
        case GZLRModel::LINK_ODDSPOWER: {
            const double t = r / (1.0 - r);
            if (p.k == 0.0) return 4.0 * kEps * r;
            return kEps * r * (4.0 + 4.0 * std::fabs(std::log(t)) + 4.0 / std::fabs(p.k));
        }
        case GZLRModel::LINK_POWER:
            return p.k == 0.0 ? 2.0 * kEps * r : kEps * r * (4.0 + 4.0 * std::fabs(std::log(r)));
        // What the normal distribution function is measured at.
        default: return (p.eta > -8.0 ? 3e-14 : 1e-12) * r;
    }
}

TEST(GZLRLinks, AgreeWithHighPrecisionOnAGrid)
{
    const std::vector<Point> points = HighPrecision();
    ASSERT_GT(points.size(), 200u);
    std::vector<int> seen(10);
    for (const Point& p : points) {
        ++seen.at(static_cast<size_t>(p.link));
        const double found = Mean(static_cast<Link>(p.link), p.eta, p.k);
        EXPECT_LE(std::fabs(found - p.mean), Bound(p))
            << "link " << p.link << ", k " << p.k << ", eta " << p.eta << ": " << found << " for "
            << p.mean;
    }
    for (const int count : seen) EXPECT_GE(count, 10);
}

// What each link answers at the ends of its guards and beyond. Numbers are exact.
TEST(GZLRLinks, GuardsAndRangesAtTheirEdges)
{
    struct Edge {
        Link link;
        double k;
        double eta;
        double mean;
    };
    const double e709 = std::exp(709.0);
    const double em708 = std::exp(-708.0);
    const Edge edges[] = {
        {GZLRModel::LINK_IDENTITY, 0, -1e300, -1e300},
        {GZLRModel::LINK_IDENTITY, 0, kInf, kInf},
        {GZLRModel::LINK_CLOGLOG, 0, -709, 0},
        {GZLRModel::LINK_CLOGLOG, 0, -708, 0},  // 1 - exp(-tiny) rounds to it
        {GZLRModel::LINK_CLOGLOG, 0, 6.6, 1},   // exp(6.6) is beyond 708
        {GZLRModel::LINK_CLOGLOG, 0, 709, 1},
        {GZLRModel::LINK_CLOGLOG, 0, 710, 1},
        {GZLRModel::LINK_LOG, 0, -709, 0},
        {GZLRModel::LINK_LOG, 0, -708, em708},  // the limit itself is computed
        {GZLRModel::LINK_LOG, 0, 709, e709},
        {GZLRModel::LINK_LOG, 0, 709.5, kSysmis},  // exp wouldn't overflow yet
        {GZLRModel::LINK_LOG, 0, 710, kSysmis},
        {GZLRModel::LINK_LOGC, 0, -709, 1},
        {GZLRModel::LINK_LOGC, 0, 1, 1.0 - std::exp(1.0)},  // no lower bound
        {GZLRModel::LINK_LOGC, 0, 709, 1.0 - e709},
        {GZLRModel::LINK_LOGC, 0, 710, kSysmis},
        {GZLRModel::LINK_LOGIT, 0, 710, 1},
        {GZLRModel::LINK_LOGIT, 0, 709, 1},
        {GZLRModel::LINK_LOGIT, 0, -708, em708},
        {GZLRModel::LINK_LOGIT, 0, -709, 0},
        {GZLRModel::LINK_NEGBIN, 2, 0, kSysmis},      // 1 - exp(0) is 0
        {GZLRModel::LINK_NEGBIN, 2, 1e-17, kSysmis},  // exp rounds to 1
        {GZLRModel::LINK_NEGBIN, 2, 1, kSysmis},      // negative
        {GZLRModel::LINK_NEGBIN, 2, 709, kSysmis},
        {GZLRModel::LINK_NEGBIN, 2, 710, kSysmis},  // -1/2
        {GZLRModel::LINK_NEGBIN, -2, 710, 0.5},
        {GZLRModel::LINK_NEGBIN, 2, -709, 0},
        {GZLRModel::LINK_NEGBIN, 2, -708, em708 / 2},
        {GZLRModel::LINK_NEGBIN, -2, -708, kSysmis},
        {GZLRModel::LINK_NLOGLOG, 0, 708, 1},
        {GZLRModel::LINK_NLOGLOG, 0, 709, 1},
        {GZLRModel::LINK_NLOGLOG, 0, -6.6, 0},  // exp(6.6) is beyond 708
        {GZLRModel::LINK_NLOGLOG, 0, -709, 0},
        {GZLRModel::LINK_NLOGLOG, 0, -710, 0},
        {GZLRModel::LINK_ODDSPOWER, 0, -709, 0},        // underflow is a usable zero
        {GZLRModel::LINK_ODDSPOWER, 0, 710, kSysmis},   // overflow is no number
        {GZLRModel::LINK_ODDSPOWER, 2, -0.5, 0},        // base 0
        {GZLRModel::LINK_ODDSPOWER, 2, -1, kSysmis},    // no square root of a negative base
        {GZLRModel::LINK_ODDSPOWER, -2, 0.5, kSysmis},  // 0 to a negative power
        {GZLRModel::LINK_ODDSPOWER, 1, -1.5, kSysmis},  // t of -0.5 gives -1
        {GZLRModel::LINK_ODDSPOWER, 1, -4, kSysmis},    // t of -3 gives 1.5
        {GZLRModel::LINK_POWER, 0, -709, 0},
        {GZLRModel::LINK_POWER, 0, 710, kSysmis},
        {GZLRModel::LINK_POWER, 2, -8, kSysmis},
        {GZLRModel::LINK_POWER, 2, 0, 0},
        {GZLRModel::LINK_POWER, 3, 0, 0},
        {GZLRModel::LINK_POWER, -1, 0, kSysmis},
        {GZLRModel::LINK_POWER, 0.5, -3, 9.0},  // a whole exponent takes a negative base
        {GZLRModel::LINK_POWER, 4294967297.0, -8, kSysmis},  // odd, and beyond what is trusted
        {GZLRModel::LINK_PROBIT, 0, 0, 0.5},
        {GZLRModel::LINK_PROBIT, 0, 40, 1},
        {GZLRModel::LINK_PROBIT, 0, -40, 0},
        {static_cast<Link>(10), 0, 1, kSysmis},
        {static_cast<Link>(15), 0, 1, kSysmis},
    };
    for (const Edge& e : edges) {
        const double found = Mean(e.link, e.eta, e.k);
        if (e.link == GZLRModel::LINK_POWER && e.mean == 9.0) {
            EXPECT_NEAR(found, e.mean, 9.0 * 10.0 * kEps);  // through a logarithm
        } else {
            EXPECT_EQ(found, e.mean) << "link " << e.link << ", k " << e.k << ", eta " << e.eta;
        }
    }
}

TEST(GZLRLinks, NegativeBinomialDividesByItsParameterLast)
{
    // Dividing by the product of the two rounds otherwise at most of these.
    for (const double k : {0.3, 0.7, 3.0}) {
        for (const double eta : {-3.7, -2.1, -1.3, -0.9, -0.4, -0.1}) {
            const double e = std::exp(eta);
            EXPECT_EQ(Mean(GZLRModel::LINK_NEGBIN, eta, k), (e / (1.0 - e)) / k) << k << ' ' << eta;
        }
    }
}

TEST(GZLRLinks, OddWholePowerTakesTheRootOfANegativeNumber)
{
    EXPECT_NEAR(Mean(GZLRModel::LINK_POWER, -8.0, 3.0), -2.0, 10.0 * kEps);
    EXPECT_NEAR(Mean(GZLRModel::LINK_POWER, -8.0, -3.0), -0.5, 10.0 * kEps);
    EXPECT_NEAR(Mean(GZLRModel::LINK_POWER, -32.0, 5.0), -2.0, 10.0 * kEps);
    EXPECT_EQ(Mean(GZLRModel::LINK_POWER, -1e-320, 1e-300), kSysmis);   // no odd number
    EXPECT_FALSE(std::signbit(Mean(GZLRModel::LINK_POWER, 0.0, 3.0)));  // 0 is not negative
}

TEST(GZLRLinks, LinearPredictorThatIsNoNumberHasNoMeanOrIsHandedOn)
{
    for (const Link link : {GZLRModel::LINK_LOG, GZLRModel::LINK_LOGC}) {
        EXPECT_EQ(Mean(link, kNaN), kSysmis) << link;
    }
    for (const Link link :
         {GZLRModel::LINK_IDENTITY, GZLRModel::LINK_CLOGLOG, GZLRModel::LINK_LOGIT,
          GZLRModel::LINK_NEGBIN, GZLRModel::LINK_NLOGLOG, GZLRModel::LINK_PROBIT}) {
        EXPECT_TRUE(std::isnan(Mean(link, kNaN, 2.0))) << link;
    }
}

TEST(GZLRLinks, EveryLinkHasItsOwnRow)
{
    const char* const names[] = {
        "Identity",          "Complementary log-log", "Log",        "Log complement", "Logit",
        "Negative binomial", "Negative log-log",      "Odds power", "Power",          "Probit"};
    for (int link = 0; link < 10; ++link) {
        ASSERT_NE(GZLRLink::Find(link), nullptr);
        EXPECT_STREQ(GZLRLink::Find(link)->name, names[link]);
        EXPECT_EQ(GZLRLink::Find(link)->takesParameter, link == 5 || link == 7 || link == 8);
    }
    EXPECT_EQ(GZLRLink::Find(10), nullptr);
    EXPECT_EQ(GZLRLink::Find(-1), nullptr);
}

}  // namespace
}  // namespace MCVelscore_850

#include "kernels/links.h"

#include <cmath>

#include "stats/mcdistfun.h"
#include "stats/mcpower.h"

namespace MCVelscore_850::kernels {

using MCMath_850::MCDistFun;
using MCMath_850::MCPower;

double InverseOddsPower(double eta, double k)
{
    double t = kNone;
    if (k == 0.0) {
        MCPower::Exponent(eta, t);
    } else {
        MCPower::Power(1.0 + eta * k, 1.0 / k, t);
    }
    return t == kNone ? kNone : t / (1.0 + t);
}

namespace {

template <Link kLink>
double MeanOfOne(double eta, double k)
{
    return MeanOf<kLink>(eta, k);
}

template <CumulativeLink kLink>
double ProbabilityOfOne(double x)
{
    return CumulativeProbability<kLink>(x);
}

bool IsOddWhole(double k)
{
    const double half = 0.5 * k + 0.5;
    return !(k > static_cast<double>(MCPower::gMachineMaxInt)) && std::floor(k) == k &&
           std::floor(half) == half;
}

}  // namespace

double InversePower(double eta, double k)
{
    double r = kNone;
    if (k == 0.0) {
        MCPower::Exponent(eta, r);
    } else if (eta < 0.0 && IsOddWhole(k)) {
        MCPower::Power(std::fabs(eta), 1.0 / k, r);
        if (r != kNone) r = -r;
    } else {
        MCPower::Power(eta, 1.0 / k, r);
    }
    return r;
}

double Mean(Link link, double eta, double k)
{
    constexpr double (*kMeans[kLinks])(double, double) = {
        MeanOfOne<Link::Identity>,
        MeanOfOne<Link::ComplementaryLogLog>,
        MeanOfOne<Link::Log>,
        MeanOfOne<Link::LogComplement>,
        MeanOfOne<Link::Logit>,
        MeanOfOne<Link::NegativeBinomial>,
        MeanOfOne<Link::NegativeLogLog>,
        MeanOfOne<Link::OddsPower>,
        MeanOfOne<Link::Power>,
        MeanOfOne<Link::Probit>,
    };
    return kMeans[static_cast<int>(link)](eta, k);
}

double MeanDerivative(Link link, double eta, double k)
{
    constexpr double kTwoPi = 6.283185307179586;
    const double mean = Mean(link, eta, k);
    if (mean == kNone) return kNone;
    const LinkGuards& guards = kLinkGuards[static_cast<int>(link)];
    if (eta < guards.low || eta > guards.high) return 0.0;
    const double small = std::exp(-std::fabs(eta));
    const double logistic = small / ((1.0 + small) * (1.0 + small));
    switch (link) {
        case Link::Identity: return 1.0;
        case Link::ComplementaryLogLog: return std::exp(eta - std::exp(eta));
        case Link::Log: return std::exp(eta);
        case Link::LogComplement: return -std::exp(eta);
        case Link::Logit: return logistic;
        case Link::NegativeBinomial: {
            const double rest = -std::expm1(eta);
            return std::exp(eta) / (k * rest * rest);
        }
        case Link::NegativeLogLog: return std::exp(-eta - std::exp(-eta));
        case Link::OddsPower: {
            if (k == 0.0) return logistic;
            // With t = (1 + k eta)^(1/k) the mean is t / (1 + t), and dt = t / (1 + k eta).
            return mean * (1.0 - mean) / (1.0 + k * eta);
        }
        case Link::Power:
            if (k == 0.0) return mean;
            return eta == 0.0 ? std::pow(eta, 1.0 / k - 1.0) / k : mean / (k * eta);
        case Link::Probit: return std::exp(-0.5 * eta * eta) / std::sqrt(kTwoPi);
    }
    return kNone;
}

double ProbabilityOf(CumulativeLink link, double x)
{
    constexpr double (*kProbabilities[kCumulativeLinks])(double) = {
        ProbabilityOfOne<CumulativeLink::Logit>,
        ProbabilityOfOne<CumulativeLink::Cauchit>,
        ProbabilityOfOne<CumulativeLink::ComplementaryLogLog>,
        ProbabilityOfOne<CumulativeLink::NegativeLogLog>,
        ProbabilityOfOne<CumulativeLink::Probit>,
    };
    return kProbabilities[static_cast<int>(link)](x);
}

double NormalProbability(double x) { return MCDistFun::CdfStdNorm(x); }

double CauchyProbability(double x) { return std::atan(x) / 3.141592653589793 + 0.5; }

double OrdinalNormalProbability(double x) { return MCDistFun::CdfNorm(x, 0.0, 1.0); }

}  // namespace MCVelscore_850::kernels

#include "models/gzlrlinks.h"

#include <cmath>
#include <cstddef>
#include <iterator>

#include "host/numericvalue.h"
#include "stats/mcdistfun.h"
#include "stats/mcpower.h"

namespace MCVelscore_850 {

using MCMath_850::MCDistFun;
using MCMath_850::MCPower;

namespace {

// exp neither vanishes nor overflows between the two; both are still computed. These are this
// family's own limits: the softmax families take the logarithm of the largest double.
constexpr double kLowest = -708.0;
constexpr double kHighest = 709.0;

constexpr double kNone = NumericValue::GetSysmisValue();
constexpr double kInfinite = NumericValue::GetInfinity();

double Identity(double eta, double) { return eta; }

double ComplementaryLogLog(double eta, double)
{
    const double t = -std::exp(eta);
    return t < kLowest ? 1.0 : 1.0 - std::exp(t);
}

// On purpose: a NaN has no mean here, while other exponential links hand it on.
double Log(double eta, double) { return eta <= kHighest ? std::exp(eta) : kNone; }

double LogComplement(double eta, double) { return eta <= kHighest ? 1.0 - std::exp(eta) : kNone; }

double Logit(double eta, double)
{
    const double e = std::exp(eta);
    return e / (1.0 + e);
}

double NegativeBinomial(double eta, double k)
{
    if (eta > kHighest) return -1.0 / k;  // where the quotient tends to, in range for k < 0 alone
    const double e = std::exp(eta);
    return e == 1.0 ? kNone : (e / (1.0 - e)) / k;  // exact: the denominator would be 0
}

double NegativeLogLog(double eta, double)
{
    const double u = -std::exp(-eta);
    return u < kLowest ? 0.0 : std::exp(u);
}

double OddsPower(double eta, double k)
{
    double t = kNone;
    if (k == 0.0) {
        MCPower::Exponent(eta, t);
    } else {
        MCPower::Power(1.0 + eta * k, 1.0 / k, t);
    }
    return t == kNone ? kNone : t / (1.0 + t);
}

bool IsOddWhole(double k)
{
    const double half = 0.5 * k + 0.5;
    return !(k > static_cast<double>(MCPower::gMachineMaxInt)) && std::floor(k) == k &&
           std::floor(half) == half;
}

double Power(double eta, double k)
{
    double r = kNone;
    if (k == 0.0) {
        MCPower::Exponent(eta, r);
    } else if (eta < 0.0 && IsOddWhole(k)) {
        // The odd root of a negative number is the negative root.
        MCPower::Power(std::fabs(eta), 1.0 / k, r);
        if (r != kNone) r = -r;
    } else {
        MCPower::Power(eta, 1.0 / k, r);
    }
    return r;
}

double Probit(double eta, double) { return MCDistFun::CdfStdNorm(eta); }

// By GZLRModel::LinkFunction. The negative log-log link is guarded on -eta, so its limits change
// places. The log complement has no lower bound, on purpose.
constexpr GZLRLink kLinks[] = {
    {"Identity", false, "eta", nullptr, -kInfinite, 0.0, kInfinite, 0.0, Identity, -kInfinite,
     kInfinite},
    {"Complementary log-log", false, "1 - exp(-exp(eta))", nullptr, kLowest, 0.0, kHighest, 1.0,
     ComplementaryLogLog, 0.0, 1.0},
    {"Log", false, "exp(eta)", nullptr, kLowest, 0.0, kHighest, kNone, Log, 0.0, kInfinite},
    {"Log complement", false, "1 - exp(eta)", nullptr, kLowest, 1.0, kHighest, kNone, LogComplement,
     -kInfinite, 1.0},
    {"Logit", false, "exp(eta) / (1 + exp(eta))", nullptr, kLowest, 0.0, kHighest, 1.0, Logit,
     -kInfinite, kInfinite},
    {"Negative binomial", true, "exp(eta) / (k (1 - exp(eta)))", nullptr, kLowest, 0.0, kInfinite,
     kNone, NegativeBinomial, 0.0, kInfinite},
    {"Negative log-log", false, "exp(-exp(-eta))", nullptr, -kHighest, 0.0, -kLowest, 1.0,
     NegativeLogLog, 0.0, 1.0},
    {"Odds power", true, "(1 + k eta)^(1/k) / (1 + (1 + k eta)^(1/k))", "exp(eta) / (1 + exp(eta))",
     -kInfinite, 0.0, kInfinite, 0.0, OddsPower, 0.0, 1.0},
    {"Power", true, "eta^(1/k)", "exp(eta)", -kInfinite, 0.0, kInfinite, 0.0, Power, -kInfinite,
     kInfinite},
    {"Probit", false, "Phi(eta)", nullptr, -kInfinite, 0.0, kInfinite, 0.0, Probit, 0.0, 1.0},
};

}  // namespace

double GZLRLink::Mean(double eta, double k) const
{
    double r = 0.0;
    if (eta < low) {
        r = below;
    } else if (eta > high) {
        r = above;
    } else {
        r = inverse(eta, k);
    }
    return r < least || r > most ? kNone : r;
}

const GZLRLink* GZLRLink::Find(int link)
{
    const auto row = static_cast<std::size_t>(link);  // a negative number is no link either
    return row < std::size(kLinks) ? &kLinks[row] : nullptr;
}

}  // namespace MCVelscore_850

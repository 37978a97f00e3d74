#ifndef VELSCORE_KERNELS_LINKS_H
#define VELSCORE_KERNELS_LINKS_H

#include <limits>

#include "kernels/exp.h"

namespace MCVelscore_850::kernels {

/// A number that doesn't exist: the system-missing number of values and of the statistics.
inline constexpr double kNone = -std::numeric_limits<double>::max();

/// The links of generalized linear models, by the numbers that their model gives them.
enum class Link {
    Identity,
    ComplementaryLogLog,
    Log,
    LogComplement,
    Logit,
    NegativeBinomial,
    NegativeLogLog,
    OddsPower,
    Power,
    Probit
};
inline constexpr int kLinks = 10;

/// Where a mean isn't what its formula says. The mean is
///
///     below             where eta < low
///     above             where eta > high
///     inverse(eta, k)   else, a NaN among them
///
/// and what then lies outside least .. most is no mean: kNone. A NaN is not outside. The guards
/// hold exp off overflow.
struct LinkGuards {
    double low;
    double below;
    double high;
    double above;
    double least;
    double most;
};

// exp neither vanishes nor overflows between the two; both are still computed. These are this
// family's own limits: the softmax families take the logarithm of the largest double.
inline constexpr double kLowestEta = -708.0;
inline constexpr double kHighestEta = 709.0;
inline constexpr double kInfinite = std::numeric_limits<double>::infinity();

// By Link. The negative log-log link is guarded on -eta, so its limits change places. The log
// complement has no lower bound, on purpose.
inline constexpr LinkGuards kLinkGuards[kLinks] = {
    {-kInfinite, 0.0, kInfinite, 0.0, -kInfinite, kInfinite},
    {kLowestEta, 0.0, kHighestEta, 1.0, 0.0, 1.0},
    {kLowestEta, 0.0, kHighestEta, kNone, 0.0, kInfinite},
    {kLowestEta, 1.0, kHighestEta, kNone, -kInfinite, 1.0},
    {kLowestEta, 0.0, kHighestEta, 1.0, -kInfinite, kInfinite},
    {kLowestEta, 0.0, kInfinite, kNone, 0.0, kInfinite},
    {-kHighestEta, 0.0, -kLowestEta, 1.0, 0.0, 1.0},
    {-kInfinite, 0.0, kInfinite, 0.0, 0.0, 1.0},
    {-kInfinite, 0.0, kInfinite, 0.0, -kInfinite, kInfinite},
    {-kInfinite, 0.0, kInfinite, 0.0, 0.0, 1.0},
};

/// t / (1 + t) with t = (1 + k eta)^(1/k), exp(eta) for k = 0; kNone where t has no value.
double InverseOddsPower(double eta, double k);
/// eta^(1/k), exp(eta) for k = 0; the odd root of a negative number is the negative root. kNone
/// where there is none.
double InversePower(double eta, double k);
/// The standard normal distribution function.
double NormalProbability(double x);

/// The mean of one linear predictor: MeanOf with a link that is known only now.
double Mean(Link link, double eta, double k);

/// The derivative of the mean by eta, as the link's formula has it within its guards; 0 where the
/// mean stays the same beyond them, and kNone where there is no mean.
double MeanDerivative(Link link, double eta, double k);

inline namespace VELSCORE_LANES {

/// The formula of a link between its guards; k is the link's parameter.
template <Link kLink, class Lane>
VELSCORE_LANE Lane InverseLink(Lane eta, double k)
{
    const auto everywhere = [](double number) { return All<Lane>(number); };
    if constexpr (kLink == Link::Identity) {
        return eta;
    } else if constexpr (kLink == Link::ComplementaryLogLog) {
        const Lane t = -Exp(eta);
        return Select(t < kLowestEta, everywhere(1.0), 1.0 - Exp(t));
    } else if constexpr (kLink == Link::Log) {
        // On purpose: a NaN has no mean here, while other exponential links hand it on.
        return Select(eta <= kHighestEta, Exp(eta), everywhere(kNone));
    } else if constexpr (kLink == Link::LogComplement) {
        return Select(eta <= kHighestEta, 1.0 - Exp(eta), everywhere(kNone));
    } else if constexpr (kLink == Link::Logit) {
        const Lane e = Exp(eta);
        return e / (1.0 + e);
    } else if constexpr (kLink == Link::NegativeBinomial) {
        const Lane e = Exp(eta);
        // Exact: the denominator would be 0.
        const Lane mean = Select(e == 1.0, everywhere(kNone), (e / (1.0 - e)) / k);
        // Where the quotient tends to, in range for k < 0 alone.
        return Select(eta > kHighestEta, everywhere(-1.0 / k), mean);
    } else if constexpr (kLink == Link::NegativeLogLog) {
        const Lane u = -Exp(-eta);
        return Select(u < kLowestEta, everywhere(0.0), Exp(u));
    } else if constexpr (kLink == Link::OddsPower) {
        return Each(eta, [k](double each) { return InverseOddsPower(each, k); });
    } else if constexpr (kLink == Link::Power) {
        return Each(eta, [k](double each) { return InversePower(each, k); });
    } else {
        return Each(eta, [](double each) { return NormalProbability(each); });
    }
}

/// The mean of a linear predictor eta, kNone where there is none.
template <Link kLink, class Lane>
VELSCORE_LANE Lane MeanOf(Lane eta, double k)
{
    constexpr LinkGuards kGuards = kLinkGuards[static_cast<int>(kLink)];
    Lane mean = InverseLink<kLink>(eta, k);
    mean = Select(eta > kGuards.high, All<Lane>(kGuards.above), mean);
    mean = Select(eta < kGuards.low, All<Lane>(kGuards.below), mean);
    return Select(Either(mean<kGuards.least, mean> kGuards.most), All<Lane>(kNone), mean);
}

}  // namespace VELSCORE_LANES

/// The links of ordinal models, by the numbers that their models give them.
enum class CumulativeLink { Logit, Cauchit, ComplementaryLogLog, NegativeLogLog, Probit };
inline constexpr int kCumulativeLinks = 5;

/// atan(x) / pi + 0.5
double CauchyProbability(double x);
/// The standard normal distribution function as the ordinal families take it.
double OrdinalNormalProbability(double x);
/// CumulativeProbability with a link that is known only now.
double ProbabilityOf(CumulativeLink link, double x);

inline namespace VELSCORE_LANES {

/// The probability of a boundary x less or plus the linear predictor; kNone for an x of kNone.
template <CumulativeLink kLink, class Lane>
VELSCORE_LANE Lane CumulativeProbability(Lane x)
{
    // Where exp is taken as infinity and as 0. The lower limit itself counts as 0, on purpose.
    const auto guarded = [](Lane at, double above, double below, Lane between) {
        return Select(at > kHighestEta, All<Lane>(above),
                      Select(at <= kLowestEta, All<Lane>(below), between));
    };
    Lane p{};
    if constexpr (kLink == CumulativeLink::Logit) {
        const Lane e = Exp(x);
        p = guarded(x, 1.0, 0.0, e / (1.0 + e));
    } else if constexpr (kLink == CumulativeLink::Cauchit) {
        p = Each(x, [](double each) { return CauchyProbability(each); });
    } else if constexpr (kLink == CumulativeLink::ComplementaryLogLog) {
        const Lane t = -Exp(x);
        p = guarded(x, 1.0, 0.0, Select(t < kLowestEta, All<Lane>(1.0), 1.0 - Exp(t)));
    } else if constexpr (kLink == CumulativeLink::NegativeLogLog) {
        const Lane u = -Exp(-x);
        p = guarded(-x, 0.0, 1.0, Select(u <= kLowestEta, All<Lane>(0.0), Exp(u)));
    } else {
        p = Each(x, [](double each) { return OrdinalNormalProbability(each); });
    }
    return Select(x == kNone, All<Lane>(kNone), p);
}

}  // namespace VELSCORE_LANES
}  // namespace MCVelscore_850::kernels

#endif

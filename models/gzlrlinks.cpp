#include "models/gzlrlinks.h"

#include <cstddef>
#include <iterator>

namespace MCVelscore_850 {

namespace {

// By GZLRModel::LinkFunction.
constexpr GZLRLink kLinks[] = {
    {"Identity", false, "eta", nullptr},
    {"Complementary log-log", false, "1 - exp(-exp(eta))", nullptr},
    {"Log", false, "exp(eta)", nullptr},
    {"Log complement", false, "1 - exp(eta)", nullptr},
    {"Logit", false, "exp(eta) / (1 + exp(eta))", nullptr},
    {"Negative binomial", true, "exp(eta) / (k (1 - exp(eta)))", nullptr},
    {"Negative log-log", false, "exp(-exp(-eta))", nullptr},
    {"Odds power", true, "(1 + k eta)^(1/k) / (1 + (1 + k eta)^(1/k))",
     "exp(eta) / (1 + exp(eta))"},
    {"Power", true, "eta^(1/k)", "exp(eta)"},
    {"Probit", false, "Phi(eta)", nullptr},
};
static_assert(std::size(kLinks) == kernels::kLinks);

}  // namespace

double GZLRLink::Mean(double eta, double k) const
{
    return kernels::Mean(static_cast<kernels::Link>(this - kLinks), eta, k);
}

const GZLRLink* GZLRLink::Find(int link)
{
    const auto row = static_cast<std::size_t>(link);  // a negative number is no link either
    return row < std::size(kLinks) ? &kLinks[row] : nullptr;
}

}  // namespace MCVelscore_850

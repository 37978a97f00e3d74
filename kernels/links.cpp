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

double NormalProbability(double x) { return MCDistFun::CdfStdNorm(x); }

double CauchyProbability(double x) { return std::atan(x) / 3.141592653589793 + 0.5; }

double OrdinalNormalProbability(double x) { return MCDistFun::CdfNorm(x, 0.0, 1.0); }

}  // namespace MCVelscore_850::kernels

#include "models/limitquantile.h"

#include "host/model/scoremodel.h"
#include "host/values/numericvalue.h"
#include "models/studentquantile.h"
#include "stats/mcdistfun.h"
#include "stats/precise.h"

namespace MCVelscore_850 {

namespace {

bool IsLevel(double level) { return level > 0.0 && level < 1.0; }

// Taken of the lower tail, which is exact for levels from 0.5 on: close to 1 the upper one isn't.
double TailOf(double level) { return (1.0 - level) / 2.0; }

}  // namespace

double StudentLimitQuantile(double level, double df)
{
    if (level == ScoreModel::kDefaultConfidenceLevel) return StudentQuantile95(df);
    if (!IsLevel(level) || !(df > 0.0)) return NumericValue::GetSysmisValue();
    return -MCMath_850::Precise::IdfT(TailOf(level), df);
}

double NormalLimitQuantile(double level)
{
    if (level == ScoreModel::kDefaultConfidenceLevel) {
        static const double kQuantile = MCMath_850::MCDistFun::IdfNorm(0.975, 0.0, 1.0);
        return kQuantile;
    }
    if (!IsLevel(level)) return NumericValue::GetSysmisValue();
    return -MCMath_850::Precise::IdfStdNorm(TailOf(level));
}

}  // namespace MCVelscore_850

#ifndef VELSCORE_ENGINE_SCORING_CURVESHAPER_H
#define VELSCORE_ENGINE_SCORING_CURVESHAPER_H

#include <cstdint>
#include <string>
#include <vector>

#include "host/model/modeldescription.h"
#include "host/model/survivalpoint.h"

namespace MCVelscore_850 {

class RowText;

/// Writes survival curves in long form: a line for each time of each case.
///
/// Columns  row, time, survival, cum_hazard; row counts the cases of all tables, from 1.
/// Rows     A case without a curve has one line, its times and numbers empty; so is a number that
///          doesn't exist.
class CurveShaper {
public:
    /// True for a model that has curves.
    static bool Suits(const ModelDescription& description) { return !description.strata.empty(); }
    /// The description without what a curve doesn't read: the end time, unless it is a predictor
    /// or the stratum too.
    static ModelDescription Needs(ModelDescription description);

    static const std::vector<std::string>& Columns();
    static void WriteCurve(RowText& rows, int64_t row, const std::vector<SurvivalPoint>& curve);
    static void WriteNoCurve(RowText& rows, int64_t row);
};

}  // namespace MCVelscore_850

#endif

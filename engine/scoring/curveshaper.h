#ifndef VELSCORE_ENGINE_SCORING_CURVESHAPER_H
#define VELSCORE_ENGINE_SCORING_CURVESHAPER_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/scoring/keptcolumns.h"
#include "host/model/modeldescription.h"
#include "host/model/survivalpoint.h"

namespace MCVelscore_850 {

class RowText;

/// The most times that curves may be asked for at.
inline constexpr size_t kMostCurveTimes = 100'000;

/// How curves are written.
struct CurveForm {
    /// A row a case, with the survival at each of the times, in place of a row a time.
    bool wide = false;
    std::vector<double> times{};  ///< of the wide form's columns
};

/// Writes survival curves: a row for each time of each case, or in the wide form one for each case.
///
/// Columns  what is kept of the input, then row, time, survival, cum_hazard; in the wide form row
///          and a survival@TIME for each time. row counts the cases of all tables, from 1.
/// Rows     A case without a curve has one row, its times and numbers empty; so is a number that
///          doesn't exist.
/// Errors   what KeptColumns refuses, from the constructor.
class CurveShaper {
public:
    /// True for a model that has curves.
    static bool Suits(const ModelDescription& description) { return !description.strata.empty(); }
    /// The description without what a curve doesn't read: the end time, unless it is a predictor
    /// or the stratum too.
    static ModelDescription Needs(ModelDescription description);

    /// The columns of the long form, without any that is kept.
    static const std::vector<std::string>& LongColumns();

    CurveShaper(const CurveForm& form, const OutputOptions& output,
                std::span<const std::string> header, const std::string& tableName);

    const std::vector<std::string>& Columns() const { return columns_; }
    /// The positions in the input of the columns that are kept.
    std::span<const size_t> Kept() const { return kept_.Positions(); }

    /// In the wide form the curve has a point for each time, or none.
    void WriteCurve(RowText& rows, const InputRow& input, int64_t row,
                    const std::vector<SurvivalPoint>& curve) const;
    /// The row of one that can't be read.
    void WriteTorn(RowText& rows, std::string_view table, int64_t row) const;

private:
    void WriteNoCurve(RowText& rows, int64_t row) const;

    bool wide_;
    std::vector<std::string> results_;  ///< of the columns those that aren't kept
    KeptColumns kept_;
    std::vector<std::string> columns_;
};

}  // namespace MCVelscore_850

#endif

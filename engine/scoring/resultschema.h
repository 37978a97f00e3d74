#ifndef VELSCORE_ENGINE_SCORING_RESULTSCHEMA_H
#define VELSCORE_ENGINE_SCORING_RESULTSCHEMA_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/model/survivalpoint.h"

namespace MCVelscore_850 {

struct ModelDescription;

/// What a column of results holds.
enum class ResultQuantity {
    Prediction,
    StdDev,
    CILower,
    CIUpper,
    Probability,
    CumHazard,
    LinearPredictor,
    LinearPredictorError,
    Risk,
    MedianSurvival,
    SurvivalAt,
    ProbabilityError,
    Status,
    StatusField
};

/// A number; one of the target's categories; the status, a whole number that is always there; the
/// name of a field.
enum class ResultKind { Number, Category, Status, FieldName };

struct ResultColumn {
    std::string name;
    std::string meaning;
    ResultQuantity quantity = ResultQuantity::Prediction;
    ResultKind kind = ResultKind::Number;
    /// No case has a value: the document has no covariances to compute it from.
    bool lacksCovariances = false;
    size_t category = 0;  ///< of a probability: its place among the target's categories
    size_t time = 0;      ///< of a survival at a time: its place among those that are asked for
};

/// The name that stands for the columns of all probabilities.
inline constexpr std::string_view kAllProbabilities = "probabilities";
/// What the column of a survival at a time is called, before the time.
inline constexpr std::string_view kSurvivalAt = "survival@";
/// What stands for all of them where columns are listed.
inline std::string SurvivalPlaceholder() { return std::string(kSurvivalAt) + "TIME"; }
/// The most such columns.
inline constexpr size_t kMostSurvivalColumns = 1000;

/// Which columns are wanted beside those that every table of results has.
struct ResultOptions {
    bool predictionOnly = false;
    /// Of models with one equation; others have no such column.
    bool linearPredictor = false;
    /// Of those among them whose document has covariances. It costs time on its own.
    bool linearPredictorError = false;
    /// Of models whose description has them. They cost time on their own too: every row then goes
    /// through the model alone.
    bool probabilityErrors = false;
    /// Of Cox models.
    SurvivalQuestions survival{};
    /// The columns of survival.times, each called as it was asked for; fewer are of no column.
    std::vector<std::string> survivalColumns{};
};

/// A time as an option or a column's name tells it: a number of 0 or more. Throws Failure
/// (kSurvivalTime, usage) for any other text, which `where` has.
double SurvivalTimeOf(const std::string& where, std::string_view text);

/// The options that give the columns of these names, as far as the model has them, and none that
/// costs time and isn't named. A name that the model has no column for gives all there are, for
/// whoever tells them. Where a Cox model's columns are named and none of them is for a case's own
/// end time, that isn't asked for. Throws Failure (usage): what SurvivalTimeOf() refuses,
/// kTooManySurvivalTimes.
ResultOptions OptionsFor(const ModelDescription& description, std::span<const std::string> names);

/// The columns of a model's results, in their order: what they are called, hold and mean, whoever
/// writes them.
///
/// Columns  by the kind of the model's result:
///              LRResult      prediction, std_dev, ci_lower, ci_upper
///              MLRResult     prediction, probability(CATEGORY) for each target category
///              CLRResult     prediction
///              CoxRegResult  prediction, cum_hazard
///          then linear_predictor, std_err(linear_predictor), std_err(probability(CATEGORY)) and,
///          of Cox models, risk, median_survival and survival@TIME where they are asked for, status
///          and status_field. Without end times prediction and cum_hazard are left out.
/// Empty    A case whose status isn't 0 has no value but status and, where one is at fault, field.
/// A
///          number that doesn't exist is no value either, as Exists() tells of each quantity of
///          numbers.
class ResultSchema {
public:
    explicit ResultSchema(const ModelDescription& description, const ResultOptions& options = {});

    const std::vector<ResultColumn>& Columns() const { return columns_; }
    /// How many of them hold values: all but the last two, status and status_field.
    size_t ValueCount() const { return columns_.size() - 2; }
    std::span<const ResultColumn> ValueColumns() const
    {
        return std::span(columns_).first(ValueCount());
    }
    /// The target's categories, in the document's order; empty for a model that predicts a number.
    const std::vector<std::string>& Categories() const { return categories_; }
    /// ScoreResult::GetScoreResultType() of the results that fill the columns.
    int ResultType() const { return resultType_; }

    /// False for a number that stands for none: the system-missing number, NaN, an error that no
    /// model wrote, a limit without a mean.
    static bool Exists(ResultQuantity quantity, double number);
    /// The same of up to 64 numbers, a bit each, least significant first.
    static uint64_t ExistingBits(ResultQuantity quantity, const double* numbers, size_t count);
    /// Numbers in that range exist, whatever else does.
    struct Range {
        double low;
        double high;
    };
    static Range SureRange(ResultQuantity quantity);

private:
    int resultType_;
    std::vector<std::string> categories_;
    std::vector<ResultColumn> columns_;
};

/// The columns of values that a table of results has only where they are asked for.
std::vector<ResultColumn> ColumnsOnRequest(const ModelDescription& description);

/// Why no level of confidence limits can be set for a model without
/// ModelDescription::hasConfidenceLevel: the rest of a sentence that begins with its document.
std::string WhyNoLevel(const ModelDescription& description);

}  // namespace MCVelscore_850

#endif

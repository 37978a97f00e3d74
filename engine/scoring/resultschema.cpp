#include "engine/scoring/resultschema.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <string_view>
#include <unordered_map>

#include <fmt/format.h>

#include "engine/messages/failure.h"
#include "engine/messages/shorttext.h"
#include "host/messages/messages.h"
#include "host/model/modeldescription.h"
#include "host/model/scoreresult.h"
#include "host/values/numbertext.h"
#include "host/values/numericvalue.h"

namespace MCVelscore_850 {

namespace {

constexpr double kMissing = NumericValue::GetSysmisValue();
// Numbers up to this size exist: it lies below those that stand for none.
constexpr double kSureSize = 1e300;
static_assert(kSureSize < -kMissing);

// Two numbers side by side, of which a comparison makes two masks.
using Pair = double __attribute__((vector_size(16)));

template <class X>
X All(double number)
{
    return X{} + number;
}

// A mask that is set where one of the two is, without a branch.
template <class Mask>
Mask Either(Mask one, Mask other)
{
    return one | other;
}
bool Either(bool one, bool other) { return (int{one} | int{other}) != 0; }

// What tells of a number, or of each of two, that it stands for none.
struct LacksNumber {
    static constexpr ResultSchema::Range kSure{-kSureSize, kSureSize};
    template <class X>
    static auto Of(X x)
    {
        return Either(x == All<X>(kMissing), x != x);
    }
};

// -1 is what a result holds that no standard error was written into.
struct LacksError {
    static constexpr ResultSchema::Range kSure{0.0, kSureSize};
    template <class X>
    static auto Of(X x)
    {
        return Either(LacksNumber::Of(x), x < X{});
    }
};

// A limit without a mean may come multiplied by a number of trials, so whatever is as large as the
// system-missing number is none.
struct LacksLimit {
    static constexpr ResultSchema::Range kSure{-kSureSize, kSureSize};
    template <class X>
    static auto Of(X x)
    {
        return Either(Either(x <= All<X>(kMissing), x >= All<X>(-kMissing)), x != x);
    }
};

template <class Lacks>
bool AllExist(const double* numbers, size_t count)
{
    decltype(Lacks::Of(Pair{})) lacking{};
    for (size_t i = 0; i < count; i += 2) {
        Pair pair;
        std::memcpy(&pair, numbers + i, sizeof pair);
        lacking += Lacks::Of(pair);  // -1 for each; g++ takes an | apart again
    }
    return (lacking[0] | lacking[1]) == 0;
}

template <class Lacks>
uint64_t Bits(const double* numbers, size_t count)
{
    // A word of them nearly always exists whole.
    if (count == 64 && AllExist<Lacks>(numbers, count)) return ~uint64_t{0};
    uint64_t bits = 0;
    for (size_t i = 0; i < count; ++i) bits |= uint64_t{!Lacks::Of(numbers[i])} << i;
    return bits;
}

// Which numbers exist: bit by bit, and where surely.
struct Existence {
    uint64_t (*bits)(const double* numbers, size_t count) = nullptr;
    ResultSchema::Range sure{};
};
template <class Lacks>
constexpr Existence kUnless{Bits<Lacks>, Lacks::kSure};

constexpr int kAnyResult = -1;

struct Quantity {
    ResultQuantity quantity;
    ResultKind kind;
    std::string_view name;
    int resultType;         // that has it
    bool ofPredictionOnly;  // also where the prediction alone is wanted
    Existence existence;
    std::string_view meaning;  // where the model tells none
};

// In the order of ResultQuantity.
constexpr Quantity kQuantities[] = {
    {ResultQuantity::Prediction, ResultKind::Number, "prediction", kAnyResult, true,
     kUnless<LacksNumber>, ""},
    {ResultQuantity::StdDev, ResultKind::Number, "std_dev", ScoreResult::LR_RESULT, false,
     kUnless<LacksError>, ""},
    {ResultQuantity::CILower, ResultKind::Number, "ci_lower", ScoreResult::LR_RESULT, false,
     kUnless<LacksLimit>, ""},
    {ResultQuantity::CIUpper, ResultKind::Number, "ci_upper", ScoreResult::LR_RESULT, false,
     kUnless<LacksLimit>, ""},
    {ResultQuantity::Probability, ResultKind::Number, "probability", ScoreResult::MLR_RESULT, false,
     kUnless<LacksNumber>, ""},
    {ResultQuantity::CumHazard, ResultKind::Number, "cum_hazard", ScoreResult::COXREG_RESULT, false,
     kUnless<LacksNumber>, ""},
    {ResultQuantity::LinearPredictor, ResultKind::Number, "linear_predictor", kAnyResult, true,
     kUnless<LacksNumber>, "linear predictor"},
    {ResultQuantity::LinearPredictorError, ResultKind::Number, "std_err(linear_predictor)",
     kAnyResult, true, kUnless<LacksError>, "standard error of the linear predictor"},
    {ResultQuantity::Risk, ResultKind::Number, "risk", ScoreResult::COXREG_RESULT, true,
     kUnless<LacksNumber>, "exp of the linear predictor: the hazard, relative to the baseline's"},
    {ResultQuantity::MedianSurvival, ResultKind::Number, "median_survival",
     ScoreResult::COXREG_RESULT, true, kUnless<LacksNumber>,
     "smallest time of the baseline with a survival of 0.5 or less"},
    {ResultQuantity::SurvivalAt, ResultKind::Number, kSurvivalAt, ScoreResult::COXREG_RESULT, true,
     kUnless<LacksNumber>, "probability to survive that time"},
    {ResultQuantity::ProbabilityError, ResultKind::Number, "std_err(probability",
     ScoreResult::MLR_RESULT, false, kUnless<LacksError>, "standard error of the probability"},
    {ResultQuantity::Status,
     ResultKind::Status,
     "status",
     kAnyResult,
     true,
     {},
     "0, or the code of the reason why there is no score"},
    {ResultQuantity::StatusField,
     ResultKind::FieldName,
     "status_field",
     kAnyResult,
     true,
     {},
     "the field at fault"},
};

bool IsWanted(const Quantity& quantity, const ModelDescription& description,
              const ResultOptions& options)
{
    if (quantity.resultType != kAnyResult && quantity.resultType != description.resultType) {
        return false;
    }
    const bool hasOneEquation = description.equations.size() == 1;
    switch (quantity.quantity) {
        case ResultQuantity::Prediction: return options.survival.endTime;
        case ResultQuantity::CumHazard: return options.survival.endTime && !options.predictionOnly;
        case ResultQuantity::Risk: return options.survival.risk;
        case ResultQuantity::MedianSurvival: return options.survival.median;
        case ResultQuantity::LinearPredictor: return options.linearPredictor && hasOneEquation;
        case ResultQuantity::LinearPredictorError:
            return options.linearPredictorError && hasOneEquation &&
                   description.hasLinearPredictorError;
        case ResultQuantity::ProbabilityError:
            return options.probabilityErrors && !options.predictionOnly &&
                   description.hasProbabilityErrors;
        default: return quantity.ofPredictionOnly || !options.predictionOnly;
    }
}

// What the model tells of its columns, by their names.
using Told = std::unordered_map<std::string_view, const ModelDescription::Quantity*>;

ResultColumn ColumnOf(const Quantity& quantity, std::string name, const Told& told)
{
    ResultColumn column;
    column.quantity = quantity.quantity;
    column.kind = quantity.kind;
    column.meaning = quantity.meaning;
    const auto found = told.find(name);
    if (found != told.end()) {
        column.meaning = found->second->meaning;
        column.lacksCovariances = found->second->lacksCovariances;
    }
    column.name = std::move(name);
    return column;
}

}  // namespace

double SurvivalTimeOf(const std::string& where, std::string_view text)
{
    double time = 0.0;
    if (ReadNumber(text, time) == NumberText::Number && time >= 0.0) return time;
    throw Failure(FailureKind::Usage, kSurvivalTime, {where, ShortText(text)});
}

namespace {

// The survivals among the names.
void AskForSurvivals(std::span<const std::string> names, ResultOptions& options)
{
    std::vector<std::string>& columns = options.survivalColumns;
    for (const std::string& name : names) {
        if (name.starts_with(kSurvivalAt)) columns.push_back(name);
    }
    if (columns.size() > kMostSurvivalColumns) {
        throw Failure(
            FailureKind::Usage, kTooManySurvivalTimes,
            {"--columns", std::to_string(columns.size()), std::to_string(kMostSurvivalColumns)});
    }
    // A column that is named twice is for whoever orders them to refuse.
    std::sort(columns.begin(), columns.end());
    columns.erase(std::unique(columns.begin(), columns.end()), columns.end());
    for (const std::string& name : columns) {
        options.survival.times.push_back(
            SurvivalTimeOf("--columns", std::string_view(name).substr(kSurvivalAt.size())));
    }
}

// Of each quantity whether a column of it is named. Nothing where a name is of no column.
using Named = std::array<bool, std::size(kQuantities)>;
std::optional<Named> NamedBy(std::span<const std::string> names, const ResultSchema& schema)
{
    std::unordered_map<std::string_view, ResultQuantity> quantityOf;
    for (const ResultColumn& column : schema.Columns()) {
        quantityOf.emplace(column.name, column.quantity);
    }
    Named named{};
    for (const std::string& name : names) {
        if (name == kAllProbabilities) continue;
        const auto found = quantityOf.find(name);
        if (found == quantityOf.end()) return std::nullopt;
        named[static_cast<size_t>(found->second)] = true;
    }
    return named;
}

}  // namespace

ResultOptions OptionsFor(const ModelDescription& description, std::span<const std::string> names)
{
    const bool isCox = description.resultType == ScoreResult::COXREG_RESULT;
    ResultOptions options{
        .linearPredictor = true, .linearPredictorError = true, .probabilityErrors = true};
    options.survival.risk = isCox;
    options.survival.median = isCox;
    if (isCox) AskForSurvivals(names, options);
    const std::optional<Named> named = NamedBy(names, ResultSchema(description, options));
    if (!named) return options;
    const auto isNamed = [&](ResultQuantity quantity) {
        return (*named)[static_cast<size_t>(quantity)];
    };
    options.linearPredictorError = isNamed(ResultQuantity::LinearPredictorError);
    options.probabilityErrors = isNamed(ResultQuantity::ProbabilityError);
    options.survival.risk = isNamed(ResultQuantity::Risk);
    options.survival.median = isNamed(ResultQuantity::MedianSurvival);
    if (!isCox) return options;
    const bool namesTimeless = isNamed(ResultQuantity::LinearPredictor) ||
                               options.linearPredictorError || options.survival.risk ||
                               options.survival.median || !options.survival.times.empty();
    options.survival.endTime =
        !namesTimeless || isNamed(ResultQuantity::Prediction) || isNamed(ResultQuantity::CumHazard);
    return options;
}

ResultSchema::ResultSchema(const ModelDescription& description, const ResultOptions& options)
    : resultType_(description.resultType)
{
    if (resultType_ == ScoreResult::MLR_RESULT) categories_ = description.targetCategories;
    Told told;
    for (const auto& each : description.quantities) told.emplace(each.column, &each);
    for (const Quantity& quantity : kQuantities) {
        if (!IsWanted(quantity, description, options)) continue;
        if (quantity.quantity == ResultQuantity::SurvivalAt) {
            for (size_t i = 0; i < options.survivalColumns.size(); ++i) {
                columns_.push_back(ColumnOf(quantity, options.survivalColumns[i], told));
                columns_.back().time = i;
            }
            continue;
        }
        const bool isError = quantity.quantity == ResultQuantity::ProbabilityError;
        if (quantity.quantity != ResultQuantity::Probability && !isError) {
            columns_.push_back(ColumnOf(quantity, std::string(quantity.name), told));
            continue;
        }
        for (size_t i = 0; i < categories_.size(); ++i) {
            std::string name(quantity.name);
            name.append("(").append(categories_[i]).append(isError ? "))" : ")");
            columns_.push_back(ColumnOf(quantity, std::move(name), told));
            columns_.back().category = i;
        }
    }
    if (resultType_ == ScoreResult::MLR_RESULT) columns_.front().kind = ResultKind::Category;
}

bool ResultSchema::Exists(ResultQuantity quantity, double number)
{
    return ExistingBits(quantity, &number, 1) != 0;
}

uint64_t ResultSchema::ExistingBits(ResultQuantity quantity, const double* numbers, size_t count)
{
    return kQuantities[static_cast<size_t>(quantity)].existence.bits(numbers, count);
}

ResultSchema::Range ResultSchema::SureRange(ResultQuantity quantity)
{
    return kQuantities[static_cast<size_t>(quantity)].existence.sure;
}

std::vector<ResultColumn> ColumnsOnRequest(const ModelDescription& description)
{
    ResultOptions all{
        .linearPredictor = true, .linearPredictorError = true, .probabilityErrors = true};
    all.survival = {.risk = true, .median = true};
    all.survivalColumns = {SurvivalPlaceholder()};
    // Behind those that are there without being asked for.
    const ResultSchema schema(description, all);
    const auto columns = schema.ValueColumns().subspan(ResultSchema(description).ValueCount());
    return {columns.begin(), columns.end()};
}

std::string WhyNoLevel(const ModelDescription& about)
{
    const ResultSchema schema(about);
    const auto& columns = schema.Columns();
    const auto limit = std::find_if(columns.begin(), columns.end(), [](const auto& column) {
        return column.quantity == ResultQuantity::CILower;
    });
    if (limit == columns.end()) {
        return fmt::format(
            "has no limits: {} ({})",
            about.targetCategories.empty() ? "its family has none" : "it predicts a category",
            about.family);
    }
    return limit->lacksCovariances ? "has no limits: the document has no covariances (PCovMatrix)"
                                   : "has no limits of a level: the document fixes their distance";
}

}  // namespace MCVelscore_850

#include "engine/scoring/resultschema.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <unordered_map>

#include <fmt/format.h>

#include "host/model/modeldescription.h"
#include "host/model/scoreresult.h"
#include "host/values/numericvalue.h"

namespace MCVelscore_850 {

namespace {

constexpr double kMissing = NumericValue::GetSysmisValue();

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
    template <class X>
    static auto Of(X x)
    {
        return Either(x == All<X>(kMissing), x != x);
    }
};

// -1 is what a result holds that no standard error was written into.
struct LacksError {
    template <class X>
    static auto Of(X x)
    {
        return Either(LacksNumber::Of(x), x < X{});
    }
};

// A limit without a mean may come multiplied by a number of trials, so whatever is as large as the
// system-missing number is none.
struct LacksLimit {
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

constexpr int kAnyResult = -1;

struct Quantity {
    ResultQuantity quantity;
    ResultKind kind;
    std::string_view name;
    int resultType;         // that has it
    bool ofPredictionOnly;  // also where the prediction alone is wanted
    uint64_t (*existing)(const double* numbers, size_t count);
    std::string_view meaning;  // where the model tells none
};

// In the order of ResultQuantity.
constexpr Quantity kQuantities[] = {
    {ResultQuantity::Prediction, ResultKind::Number, "prediction", kAnyResult, true,
     Bits<LacksNumber>, ""},
    {ResultQuantity::StdDev, ResultKind::Number, "std_dev", ScoreResult::LR_RESULT, false,
     Bits<LacksError>, ""},
    {ResultQuantity::CILower, ResultKind::Number, "ci_lower", ScoreResult::LR_RESULT, false,
     Bits<LacksLimit>, ""},
    {ResultQuantity::CIUpper, ResultKind::Number, "ci_upper", ScoreResult::LR_RESULT, false,
     Bits<LacksLimit>, ""},
    {ResultQuantity::Probability, ResultKind::Number, "probability", ScoreResult::MLR_RESULT, false,
     Bits<LacksNumber>, ""},
    {ResultQuantity::CumHazard, ResultKind::Number, "cum_hazard", ScoreResult::COXREG_RESULT, false,
     Bits<LacksNumber>, ""},
    {ResultQuantity::LinearPredictor, ResultKind::Number, "linear_predictor", kAnyResult, true,
     Bits<LacksNumber>, "linear predictor"},
    {ResultQuantity::LinearPredictorError, ResultKind::Number, "std_err(linear_predictor)",
     kAnyResult, true, Bits<LacksError>, "standard error of the linear predictor"},
    {ResultQuantity::ProbabilityError, ResultKind::Number, "std_err(probability",
     ScoreResult::MLR_RESULT, false, Bits<LacksError>, "standard error of the probability"},
    {ResultQuantity::Status, ResultKind::Status, "status", kAnyResult, true, nullptr,
     "0, or the code of the reason why there is no score"},
    {ResultQuantity::StatusField, ResultKind::FieldName, "status_field", kAnyResult, true, nullptr,
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
        case ResultQuantity::LinearPredictor: return options.linearPredictor && hasOneEquation;
        case ResultQuantity::LinearPredictorError:
            return options.linearPredictorError && hasOneEquation && description.hasCovariances;
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

ResultOptions OptionsFor(const ModelDescription& description, std::span<const std::string> names)
{
    ResultOptions options{.linearPredictor = true};
    const auto haveAll = [&] {
        const ResultSchema schema(description, options);
        return std::all_of(names.begin(), names.end(), [&](const std::string& name) {
            return name == kAllProbabilities ||
                   std::any_of(schema.Columns().begin(), schema.Columns().end(),
                               [&](const ResultColumn& column) { return column.name == name; });
        });
    };
    if (haveAll()) return options;
    options.linearPredictorError = true;
    options.probabilityErrors = !haveAll();
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
    return kQuantities[static_cast<size_t>(quantity)].existing(numbers, count);
}

std::vector<ResultColumn> ColumnsOnRequest(const ModelDescription& description)
{
    const ResultSchema schema(
        description,
        {.linearPredictor = true, .linearPredictorError = true, .probabilityErrors = true});
    std::vector<ResultColumn> columns;
    for (const ResultColumn& column : schema.ValueColumns()) {
        if (column.quantity == ResultQuantity::LinearPredictor ||
            column.quantity == ResultQuantity::LinearPredictorError ||
            column.quantity == ResultQuantity::ProbabilityError) {
            columns.push_back(column);
        }
    }
    return columns;
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

#include "engine/comparison/modelcomparison.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <span>
#include <tuple>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "engine/documents/loadedmodel.h"
#include "host/model/modeltables.h"
#include "host/model/scoremodel.h"
#include "host/values/numbertext.h"
#include "host/values/scorevalue.h"
#include "host/variables/scoredictionary.h"
#include "host/variables/valueset.h"

namespace MCVelscore_850 {

namespace {

// One thing that a model is or has. Those of two models belong together by subject and name.
struct Fact {
    std::string subject;
    std::string name;
    std::string text;
    std::optional<double> number{};
};

std::string TextOf(double number)
{
    std::string text;
    AppendNumber(number, text);
    return text;
}

class FactsOfModel {
public:
    explicit FactsOfModel(const LoadedModel& model)
    {
        // The family that computes: a RegressionModel is described as what it was.
        model.Model().Describe(about_);
        AddModel();
        AddFields(model);
        for (const auto& equation : about_.equations) AddTerms(equation);
        for (const auto& contrast : about_.contrasts) AddContrast(contrast);
    }
    const std::vector<Fact>& Facts() const { return facts_; }

private:
    void Add(const char* subject, std::string name, std::string text)
    {
        if (!text.empty()) facts_.push_back({subject, std::move(name), std::move(text)});
    }
    void AddNumber(const char* subject, std::string name, double number)
    {
        facts_.push_back({subject, std::move(name), TextOf(number), number});
    }

    void AddModel()
    {
        const auto list = [](const std::vector<std::string>& texts) {
            return fmt::format("{}", fmt::join(texts, ", "));
        };
        Add("model", "class", about_.className);
        Add("model", "target", about_.target);
        Add("model", "categories", list(about_.targetCategories));
        Add("model", "reference", about_.referenceCategory);
        if (about_.hasCutoff) {
            AddNumber("model", "cut-off for " + about_.cutoffCategory, about_.cutoff);
        }
        Add("model", "link", about_.link);
        if (about_.hasLinkParameter) AddNumber("model", "link parameter", about_.linkParameter);
        Add("model", "distribution", about_.distribution);
        Add("model", "offset", about_.offset);
        Add("model", "trials", about_.trials);
        if (about_.hasConfidenceLevel) AddNumber("model", "df", about_.degreesOfFreedom);
        Add("model", "end time", about_.endTimeVariable);
        Add("model", "strata", about_.stratumVariable);
        Add("model", "events", list(about_.eventValues));
    }

    void AddFields(const LoadedModel& model)
    {
        for (const std::string& name : model.Columns()) {
            const ScoreDictVar* var = model.Model().GetDictionary()->GetVar(name);
            if (var != nullptr) Add("field", name, FieldText(*var));
        }
        for (const MiningFieldTreatment& each : model.Treatments()) {
            if (model.Model().GetDictionary()->GetVar(each.name) == nullptr) continue;
            Add("missing value of", each.name, each.missingValueReplacement);
            Add("invalid value of", each.name,
                each.invalidValueTreatment + (each.invalidValueReplacement.empty() ? "" : " ") +
                    each.invalidValueReplacement);
        }
    }

    static std::string FieldText(const ScoreDictVar& var)
    {
        static constexpr const char* kLevels[] = {"continuous", "categorical", "ordinal"};
        std::string text = var.GetValueType() == ScoreDictVar::STRING     ? "text"
                           : var.GetValueType() == ScoreDictVar::DATETIME ? "date or time"
                                                                          : "number";
        text += fmt::format(", {}", kLevels[var.GetMeasureLevel()]);
        const ValueSet* values = var.GetValueSet();
        if (values == nullptr) return text;
        std::vector<std::string> listed;
        for (const ValueSetEntry& entry : values->GetEntries()) {
            listed.push_back(entry.GetEntryValue()->GetString());
        }
        return text + fmt::format(": {}", fmt::join(listed, ", "));
    }

    void AddTerms(const ModelDescription::Equation& equation)
    {
        for (const ModelDescription::Term& term : equation.terms) {
            std::string name = TermText(term);
            if (!equation.category.empty()) {
                name += fmt::format(" of {}{}", equation.category,
                                    equation.isCumulative ? " and below" : "");
            }
            const int before = seen_[name]++;
            if (before > 0) name += fmt::format(" ({})", before + 1);
            AddNumber("beta", name, term.beta);
            if (term.referencePoint) AddNumber("base point", name, *term.referencePoint);
        }
    }

    static std::string TermText(const ModelDescription::Term& term)
    {
        std::vector<std::string> factors;
        for (const ModelDescription::Factor& factor : term.factors) {
            if (factor.isCategory) {
                factors.push_back(fmt::format("[{} = {}]", factor.predictor, factor.category));
            } else if (factor.exponent == 1.0) {  // exact: as the document writes it
                factors.push_back(factor.predictor);
            } else {
                factors.push_back(fmt::format("{}^{}", factor.predictor, TextOf(factor.exponent)));
            }
        }
        // The order of a product's factors is the document's affair.
        std::sort(factors.begin(), factors.end());
        return factors.empty() ? "intercept" : fmt::format("{}", fmt::join(factors, " * "));
    }

    void AddContrast(const ModelDescription::Contrast& contrast)
    {
        for (size_t row = 0; row < contrast.rows.size(); ++row) {
            for (size_t column = 0; column < contrast.rows[row].size(); ++column) {
                const auto category = [&](size_t i) {
                    return i < contrast.categories.size() ? contrast.categories[i]
                                                          : TextOf(static_cast<double>(i + 1));
                };
                AddNumber(
                    "contrast",
                    fmt::format("{}: {}, {}", contrast.predictor, category(row), category(column)),
                    contrast.rows[row][column]);
            }
        }
    }

    ModelDescription about_;
    std::vector<Fact> facts_;
    std::map<std::string, int> seen_;  // terms, by what they are made of
};

bool AreSame(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

double Apart(double a, double b)
{
    const double apart = std::fabs(a - b);
    return std::isnan(apart) ? std::numeric_limits<double>::infinity() : apart;
}

void CompareFacts(std::span<const Fact> first, std::span<const Fact> second,
                  std::vector<ModelDifference>& differences)
{
    using Key = std::pair<std::string, std::string>;
    std::map<Key, const Fact*> others;
    for (const Fact& fact : second) others.emplace(Key(fact.subject, fact.name), &fact);
    std::set<Key> met;
    for (const Fact& fact : first) {
        const Key key(fact.subject, fact.name);
        met.insert(key);
        const auto found = others.find(key);
        if (found == others.end()) {
            differences.push_back({fact.subject, fact.name, fact.text, std::nullopt});
            continue;
        }
        const Fact& other = *found->second;
        const bool areNumbers = fact.number && other.number;
        if (areNumbers ? AreSame(*fact.number, *other.number) : fact.text == other.text) continue;
        ModelDifference& difference = differences.emplace_back(
            ModelDifference{fact.subject, fact.name, fact.text, other.text});
        if (areNumbers) difference.size = Apart(*fact.number, *other.number);
    }
    for (const Fact& fact : second) {
        if (met.contains({fact.subject, fact.name})) continue;
        differences.push_back({fact.subject, fact.name, std::nullopt, fact.text});
    }
}

// How many numbers of two tables of one shape differ, and where the most.
struct Spread {
    size_t count = 0;
    double largest = 0.0;
    double first = 0.0;
    double second = 0.0;
    size_t at = 0;

    void Look(double a, double b, size_t place)
    {
        if (AreSame(a, b)) return;
        const double apart = Apart(a, b);
        if (count++ > 0 && !(apart > largest)) return;
        largest = apart;
        first = a;
        second = b;
        at = place;
    }
};

void AddSpread(const char* subject, std::string name, const Spread& spread,
               std::vector<ModelDifference>& differences)
{
    if (spread.count == 0) return;
    differences.push_back(
        {subject, std::move(name), TextOf(spread.first), TextOf(spread.second), spread.largest});
}

void CompareCovariances(const ModelTables& first, const ModelTables& second,
                        std::vector<ModelDifference>& differences)
{
    const size_t rows = first.covariances.size();
    const auto shape = [](const ModelTables& tables) -> std::optional<std::string> {
        if (tables.covariances.empty()) return std::nullopt;
        return fmt::format("{0} x {0}", tables.covariances.size());
    };
    if (rows != second.covariances.size()) {
        differences.push_back({"covariances", "matrix", shape(first), shape(second)});
        return;
    }
    Spread spread;
    for (size_t i = 0; i < rows; ++i) {
        for (size_t j = 0; j < rows; ++j) {
            spread.Look(first.covariances[i][j], second.covariances[i][j], i * rows + j);
        }
    }
    if (spread.count == 0) return;
    AddSpread("covariances",
              fmt::format("{} of {} cells, the most row {}, column {}", spread.count, rows * rows,
                          spread.at / rows + 1, spread.at % rows + 1),
              spread, differences);
}

void CompareBaseline(const std::string& stratum, const ModelTables::Baseline& first,
                     const ModelTables::Baseline& second, std::vector<ModelDifference>& differences)
{
    const std::string of = stratum.empty() ? "" : fmt::format("{}: ", stratum);
    if (first.times != second.times) {
        const auto text = [](const ModelTables::Baseline& baseline) {
            if (baseline.times.empty()) return std::string("no times");
            return fmt::format("{} times from {} to {}", baseline.times.size(),
                               TextOf(baseline.times.front()), TextOf(baseline.times.back()));
        };
        differences.push_back({"baseline", of + "times", text(first), text(second)});
        return;
    }
    Spread spread;
    for (size_t i = 0; i < first.times.size(); ++i) {
        spread.Look(first.hazards[i], second.hazards[i], i);
    }
    if (spread.count == 0) return;
    AddSpread("baseline",
              fmt::format("{}{} of {} hazards, the most at {}", of, spread.count,
                          first.times.size(), TextOf(first.times[spread.at])),
              spread, differences);
}

// By the value of their strata, whatever their order.
void CompareBaselines(const LoadedModel& first, const ModelTables& firstTables,
                      const LoadedModel& second, const ModelTables& secondTables,
                      std::vector<ModelDifference>& differences)
{
    const auto& strata = first.Description().strata;
    const auto& others = second.Description().strata;
    const auto find = [](const auto& all, const std::string& value) {
        return std::find_if(all.begin(), all.end(),
                            [&](const auto& each) { return each.value == value; });
    };
    const auto table = [](const ModelTables& tables, size_t i) {
        return i < tables.baselines.size() ? tables.baselines[i] : ModelTables::Baseline();
    };
    for (size_t i = 0; i < strata.size(); ++i) {
        const auto other = find(others, strata[i].value);
        if (other == others.end()) {
            differences.push_back({"stratum", strata[i].value,
                                   fmt::format("{} times", strata[i].cells), std::nullopt});
            continue;
        }
        const auto at = static_cast<size_t>(other - others.begin());
        CompareBaseline(strata[i].value, table(firstTables, i), table(secondTables, at),
                        differences);
        for (const auto& [name, one, two] :
             {std::tuple("first time", strata[i].minTime, other->minTime),
              std::tuple("last time", strata[i].maxTime, other->maxTime)}) {
            if (AreSame(one, two)) continue;
            differences.push_back({"baseline",
                                   strata[i].value + (strata[i].value.empty() ? "" : ": ") + name,
                                   TextOf(one), TextOf(two), Apart(one, two)});
        }
    }
    for (const auto& each : others) {
        if (find(strata, each.value) != strata.end()) continue;
        differences.push_back(
            {"stratum", each.value, std::nullopt, fmt::format("{} times", each.cells)});
    }
}

}  // namespace

std::vector<ModelDifference> CompareModels(const LoadedModel& first, const LoadedModel& second)
{
    std::vector<ModelDifference> differences;
    CompareFacts(FactsOfModel(first).Facts(), FactsOfModel(second).Facts(), differences);
    ModelTables firstTables;
    ModelTables secondTables;
    first.Model().Tabulate(firstTables);
    second.Model().Tabulate(secondTables);
    CompareCovariances(firstTables, secondTables, differences);
    CompareBaselines(first, firstTables, second, secondTables, differences);
    return differences;
}

}  // namespace MCVelscore_850

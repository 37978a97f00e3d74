#include "tests/fuzz/documentchecks.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>
#include <sstream>

#include "engine/documents/documentconverter.h"
#include "engine/documents/documentfix.h"
#include "engine/documents/documentloader.h"
#include "engine/documents/verificationsection.h"
#include "engine/messages/failure.h"
#include "engine/reports/checkjson.h"
#include "engine/reports/jsontext.h"
#include "engine/reports/modeljson.h"
#include "engine/scoring/curveshaper.h"
#include "engine/scoring/outputevaluator.h"
#include "engine/scoring/verification.h"
#include "host/messages/scoringlog.h"
#include "host/model/scoremodel.h"
#include "host/values/datetimetext.h"
#include "host/values/scorevalue.h"
#include "host/variables/scoredictionary.h"
#include "host/variables/scoredictvar.h"
#include "host/variables/targetdeclaration.h"
#include "host/variables/valueset.h"
#include "tests/fuzz/fuzztarget.h"

extern "C" MCVelscore_850::BaseTranslator* GiveMyTranslator();

namespace MCVelscore_850::fuzz {

namespace {

#ifdef VELSCORE_FUZZ_SHARES
constexpr size_t kDrawnRows = 8;
#else
constexpr size_t kDrawnRows = 24;
#endif

// Of how many documents one goes through a check beside that it is read and scores. A share of its
// own each, so that every pair of checks meets in some document.
constexpr uint32_t kInReports = 8;
constexpr uint32_t kInAsIs = 16;
constexpr uint32_t kInFix = 16;
constexpr uint32_t kInConversion = 8;
enum Salt : uint32_t { kReports = 1, kAsIs, kFix, kConversion };

// Results of one table, row by row; the first that differ are told with their case.
void RequireSame(const std::vector<std::string>& one, const std::vector<std::string>& other,
                 const CaseTable& table, const std::string& what)
{
    const size_t columns = table.header.size();
    for (size_t row = 0; row < one.size() && one.size() == other.size(); ++row) {
        if (one[row] == other[row]) continue;
        std::string told = what + ", of";
        const size_t first = row * columns % table.texts.size();
        for (size_t i = 0; i < columns; ++i) {
            told += " " + table.header[i] + "='" + table.texts[first + i] + "'";
        }
        Require(false, told + ": " + one[row] + " and " + other[row]);
    }
    Require(one.size() == other.size(), what);
}

// Wider than rounding over the longest sums, far narrower than what a wrong formula would show.
constexpr double kRounding = 1e-9;

// With a trace on every row goes alone.
class RowsAlone {
public:
    RowsAlone()
    {
        ScoringLog::GetInstance()->SetSink([](int, std::string_view) {});
        ScoringLog::GetInstance()->SetLevel(1);
    }
    RowsAlone(const RowsAlone&) = delete;
    RowsAlone& operator=(const RowsAlone&) = delete;
    ~RowsAlone()
    {
        ScoringLog::GetInstance()->SetLevel(0);
        ScoringLog::GetInstance()->SetSink(nullptr);
    }
};

// What a row's results hold, as far as they are there.
class RowNumbers {
public:
    RowNumbers(const ResultSchema& schema, const ResultBlock& results, size_t row)
        : schema_(schema), results_(results), row_(row)
    {}

    std::optional<double> Of(ResultQuantity quantity) const
    {
        std::optional<double> number;
        Visit(quantity, [&](double found) { number = found; });
        return number;
    }
    template <class Visitor>
    void Visit(ResultQuantity quantity, Visitor visitor) const
    {
        for (size_t i = 0; i < schema_.ValueCount(); ++i) {
            const ResultBlock::Column& column = results_.columns[i];
            if (schema_.Columns()[i].quantity != quantity || column.numbers.empty()) continue;
            if (HasRow(column.present, row_)) visitor(column.numbers[row_]);
        }
    }

private:
    const ResultSchema& schema_;
    const ResultBlock& results_;
    size_t row_;
};

bool IsBetween(double low, double x, double high)
{
    const double room = kRounding * std::max({std::fabs(low), std::fabs(x), std::fabs(high)});
    return x >= low - room && x <= high + room;
}

// A mean that goes through infinity between two linear predictors: limits may lie on both sides.
bool HasPole(const ModelDescription& description)
{
    return description.hasLinkParameter;  // power, odds power, negative binomial
}

// What a document's Target makes of a limit, were it predicted: limits themselves stay the model's.
double PredictedOf(const LoadedModel& model, double limit)
{
    const TargetDeclaration* target = TargetOf(model.Model().GetTargetVar());
    return target == nullptr ? limit : target->Apply(limit);
}

// Links that binary targets may have, and whose inverse doesn't keep the mean within 0 and 1.
bool HasUnboundedMean(const ModelDescription& description)
{
    constexpr std::string_view kLinks[] = {"Identity", "Log", "Log complement", "Power"};
    return std::find(std::begin(kLinks), std::end(kLinks), description.link) != std::end(kLinks);
}

// The standard's normalizations but softmax take each category's share of an equation of its own,
// and nothing keeps these shares together: the documents' fault, if it is one, and the user's to
// see.
bool HasSharesByEquation(const ModelDescription& description)
{
    return description.className == "RegressionModel" || description.className == "NormalizedModel";
}

void CheckRow(const LoadedModel& model, const RowNumbers& row, size_t categories)
{
    double sum = 0.0;
    size_t count = 0;
    const bool sharesByEquation = HasSharesByEquation(model.Description());
    const bool anyShare = sharesByEquation || HasUnboundedMean(model.Description());
    row.Visit(ResultQuantity::Probability, [&](double probability) {
        Require(anyShare || (probability >= 0.0 && probability <= 1.0),
                "a probability within 0 and 1");
        sum += probability;
        ++count;
    });
    if (count > 0 && count == categories && !anyShare) {
        Require(std::fabs(sum - 1.0) <= kRounding, "probabilities that add up to 1");
    }
    const auto prediction = row.Of(ResultQuantity::Prediction);
    if (CurveShaper::Suits(model.Description()) && prediction) {
        Require(*prediction >= 0.0 && *prediction <= 1.0, "a survival within 0 and 1");
    }
    const auto lower = row.Of(ResultQuantity::CILower);
    const auto upper = row.Of(ResultQuantity::CIUpper);
    if (HasPole(model.Description()) || !prediction || !lower || !upper) return;
    const double low = PredictedOf(model, *lower);
    const double high = PredictedOf(model, *upper);
    if (std::isfinite(low) && std::isfinite(high)) {
        Require(IsBetween(std::min(low, high), *prediction, std::max(low, high)),
                "limits around the prediction");
    }
}

void CheckResults(const LoadedModel& model, const CaseTable& table)
{
    TableScorer scorer(model, table.header, "input.csv");
    ResultBlock results(scorer.Schema());
    TextRows rows(table.header.size());
    const size_t most = TableScorer::kRows * table.header.size();
    for (size_t from = 0; from < table.views.size(); from += most) {
        const size_t count = std::min(most, table.views.size() - from);
        scorer.Score(rows.Block(std::span(table.views).subspan(from, count)), results);
        for (size_t row = 0; row < results.rows; ++row) {
            CheckRow(model, {scorer.Schema(), results, row}, scorer.Schema().Categories().size());
        }
    }
}

void CheckCurves(const LoadedModel& model, const CaseTable& table)
{
    if (!CurveShaper::Suits(model.Description())) return;
    TableScorer scorer(model, table.header, "input.csv", {.curves = true});
    TextRows rows(table.header.size());
    const size_t most = std::min(table.views.size(), TableScorer::kRows * table.header.size());
    scorer.VisitCurves(
        rows.Block(std::span(table.views).first(most)),
        [](size_t, const CaseStatus&, const std::vector<SurvivalPoint>& curve) {
            double before = 1.0;
            for (const SurvivalPoint& point : curve) {
                if (!ResultSchema::Exists(ResultQuantity::Prediction, point.survival)) {
                    continue;
                }
                Require(point.survival >= 0.0 && point.survival <= before,
                        "a survival curve that doesn't rise, within 0 and 1");
                before = point.survival;
            }
            return true;
        });
}

// What a program is told of a document: texts that are made, and that is all that is asked.
void CheckReports(const LoadedModel& model)
{
    std::ostringstream text;
    model.Display(text);
    Require(!ModelJson(model).empty(), "a description");
    Require(!JsonText(AcceptedJson("document", model)).empty(), "a report");
}

void CheckVerification(std::string_view document)
{
    if (document.find("ModelVerification") == std::string_view::npos) return;
    const auto model = ModelOf(document, {.verification = true});
    if (model == nullptr) return;
    try {
        Verify(*model, *model->Verification());
    } catch (const Failure&) {
        // Fields that the model doesn't have, and the like.
    }
}

// A document that could be put right is read again, and has nothing left to put right.
void CheckFix(std::string_view document)
{
    std::string fixed;
    try {
        Document tree = LoadDocumentText(document, "document", {}, {.comments = true});
        fixed = FixDocument(tree).text;
    } catch (const Failure&) {
        return;
    }
    Document again = LoadDocumentText(fixed, "fixed");
    Require(FixDocument(again).changes.empty(), "a fixed document without anything to fix");
}

void CheckConversion(std::string_view document, const LoadedModel& model, const CaseTable& table)
{
    std::string converted;
    try {
        Document tree = LoadDocumentText(document, "document");
        converted = ConvertDocument(tree, *BuiltIn()).text;
    } catch (const Failure&) {
        return;
    }
    // Its audit may know more faults than that of the older form; that isn't conversion's matter.
    const auto published = ModelOf(converted, {.asIs = true});
    Require(published != nullptr, "a converted document that is read");
    RequireSame(ScoreTable(*published, table, 2), ScoreTable(model, table, 2), table,
                "a converted document that scores the same");
}

void CheckRead(std::string_view document, const LoadOptions& options)
{
    const auto model = ModelOf(document, options);
    if (model == nullptr) return;
    if (IsInShare(document, kInReports, kReports)) CheckReports(*model);
    const CaseTable cases = DrawnCases(*model);
    try {
        CheckScores(*model, cases, !options.asIs);
        if (!options.asIs && IsInShare(document, kInConversion, kConversion)) {
            CheckConversion(document, *model, cases);
        }
    } catch (const Failure&) {
        // The header: a model that reads two columns of one name, say.
    }
}

}  // namespace

std::shared_ptr<const Plugin> BuiltIn()
{
    static const auto plugin = std::make_shared<const Plugin>(&GiveMyTranslator);
    return plugin;
}

std::unique_ptr<LoadedModel> ModelOf(std::string_view document, const LoadOptions& options)
{
    try {
        return std::make_unique<LoadedModel>(DocumentText{document, "document"}, BuiltIn(),
                                             options);
    } catch (const Failure& failure) {
        Require(*failure.what() != '\0', "a refusal that says why");
        if (IsInShare(document, kInReports, kReports)) {
            Require(!JsonText(RefusedJson("document", failure)).empty(), "a report");
        }
        return nullptr;
    }
}

CaseTable DrawnCases(const LoadedModel& model)
{
    // The text of a date's value is its number, which the field doesn't read.
    const auto textOf = [](const ScoreDictVar& var, const ScoreValue& value) {
        if (var.GetValueType() != ScoreDictVar::DATETIME) return value.GetString();
        std::string text;
        AppendDateTime(value.GetDouble(), var.GetDateTimeType(), text);
        return text;
    };
    static const std::vector<std::string> kTexts{
        "0",    "1",     "2",    "0.5",    "-1",   "3.25",  "10",         "100", "",
        "1e3",  "-1e-3", "1e9",  "-1e9",   "1e15", "1e308", "-1e308",     "x",   "NA",
        "4e-5", "1985",  "-0.0", "5e-324", "true", "false", "1990-01-31", "male"};
    const std::vector<std::string> columns = model.Columns();
    std::vector<std::vector<std::string>> texts;
    for (const std::string& name : columns) {
        std::vector<std::string>& own = texts.emplace_back();
        const ScoreDictVar* var = model.Model().GetDictionary()->GetVar(name);
        if (var != nullptr && var->GetValueSet() != nullptr) {
            for (const ValueSetEntry& entry : var->GetValueSet()->GetEntries()) {
                own.push_back(textOf(*var, *entry.GetEntryValue()));
            }
        }
        // Categories are what most rows have; numbers too have more ordinary values than odd ones.
        if (own.empty()) own.insert(own.end(), {"1", "2", "0.5", "3", "-1", "7"});
    }
    std::vector<std::string> cells;
    uint32_t draw = 12345;
    const auto below = [&](size_t count) {
        draw = draw * 1664525U + 1013904223U;
        return static_cast<size_t>(draw >> 8) % count;
    };
    for (size_t row = 0; row < kDrawnRows; ++row) {
        for (const auto& own : texts) {
            cells.push_back(below(6) == 0 ? kTexts[below(kTexts.size())] : own[below(own.size())]);
        }
    }
    return {columns, std::move(cells)};
}

void CheckScores(const LoadedModel& model, const CaseTable& table, bool isSound)
{
    if (table.header.empty()) return;
    // So often that rows go together after those that settle the model.
    const std::vector<std::string> together = ScoreTable(model, table, 2);
    {
        const RowsAlone alone;
        RequireSame(together, ScoreTable(model, table, 2), table,
                    "rows that score alike together and alone");
    }
    if (!isSound) return;
    CheckResults(model, table);
    CheckCurves(model, table);
}

void CheckDocument(std::string_view document)
{
    CheckRead(document, {});
    if (IsInShare(document, kInAsIs, kAsIs)) CheckRead(document, {.asIs = true});
    CheckVerification(document);
    if (IsInShare(document, kInFix, kFix)) CheckFix(document);
}

void CheckConverted(std::string_view document)
{
    const auto model = ModelOf(document);
    if (model == nullptr) return;
    try {
        CheckConversion(document, *model, DrawnCases(*model));
    } catch (const Failure&) {
        // As in CheckRead.
    }
}

}  // namespace MCVelscore_850::fuzz

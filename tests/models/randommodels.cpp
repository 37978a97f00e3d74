// Models of every family with terms, betas and inputs that are drawn.
#include "tests/models/randommodels.h"

#include <algorithm>
#include <set>

#include <gtest/gtest.h>

#include "host/values/datetimetext.h"
#include "host/values/datetimevalue.h"
#include "host/variables/transformationdictionary.h"
#include "models/blrmodel.h"
#include "models/clrmodel.h"
#include "models/coxregrmodel.h"
#include "models/glrmodel.h"
#include "models/gzlrmodel.h"
#include "models/lrmodel.h"
#include "models/mlrmodel.h"
#include "models/normalizedmodel.h"
#include "models/ogzlrmodel.h"
#include "models/ormodel.h"
#include "tests/models/modelfixture.h"

namespace MCVelscore_850::testing {

DrawnModel::~DrawnModel() = default;

namespace {

constexpr const char* kTexts[] = {"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l"};
constexpr const char* kNumberTexts[] = {"1", "0", "2", "3.5", "-1", "0.30000000000000004", "1e300"};
constexpr const char* kDays[] = {"100", "0", "-25", "7305"};
constexpr const char* kTextsOfNumbers[] = {"1.5", "-2", "0", "abc"};

// What a predictor is.
enum class Kind {
    Number,
    Text,        // a factor of texts
    Category,    // a factor of numbers
    Bounded,     // a number of some intervals
    Whole,       // a whole number
    TextNumber,  // a text that is read as a number
    Date,
    Derived,       // a number of the record's derived ones
    UnlistedText,  // a factor that takes texts that it doesn't list
    DateCategory,
    OpenText,  // a factor without a list
    LooseText  // a text of no list that is read as a number
};
constexpr Kind kNumbers[] = {Kind::Number,     Kind::Number, Kind::Bounded, Kind::Whole,
                             Kind::TextNumber, Kind::Date,   Kind::Derived};
constexpr Kind kPlainKinds[] = {Kind::Number, Kind::Number, Kind::Text, Kind::Category};
constexpr Kind kListedKinds[] = {Kind::Number,  Kind::Number,       Kind::Text,
                                 Kind::Text,    Kind::Category,     Kind::Bounded,
                                 Kind::Whole,   Kind::TextNumber,   Kind::Date,
                                 Kind::Derived, Kind::UnlistedText, Kind::DateCategory};
constexpr Kind kAllKinds[] = {Kind::Number,   Kind::Number,  Kind::Text,         Kind::Text,
                              Kind::Category, Kind::Bounded, Kind::Whole,        Kind::TextNumber,
                              Kind::Date,     Kind::Derived, Kind::UnlistedText, Kind::DateCategory,
                              Kind::OpenText};

constexpr double kMostExponents[] = {1.0, 1.0, 1.0, 2.0, 3.0, 0.5, 1.5, 0.0, -1.0, 2.5, 10.0};
constexpr double kLevels[] = {0.95, 0.95, 0.5, 0.9, 0.99, 0.999};
constexpr double kPlainExponents[] = {1.0, 1.0, 2.0};
constexpr double kOddBetas[] = {1e300,  -1e300, 1e-300, 800.0,
                                -800.0, 5e-324, -0.0,   NumericValue::GetInfinity()};

std::unique_ptr<DictVar> DateVar(const std::string& name, ScoreDictVar::MeasureLevel level,
                                 ScoreDictVar::DateTimeType dateTimeType)
{
    DictVarType type;
    type.name = name;
    type.level = level;
    type.valueType = ScoreDictVar::DATETIME;
    type.dateTimeType = dateTimeType;
    return std::make_unique<DictVar>(type);
}

std::string TextOf(double number) { return NumericValue(number).GetString(); }

template <class Model>
class Drawn final : public DrawnModel {
public:
    static constexpr bool kIsOrdinal = std::is_base_of_v<CumulativeLinkModel, Model>;

    struct Predictor {
        std::string name;
        bool isFactor;
        std::vector<std::string> categories;  // of a factor, as its cells have them
    };
    struct Term {
        std::string name;
        std::vector<std::pair<size_t, std::string>> cells;
    };

    Draw& draw;
    const bool plain;
    Built<Model> built;
    std::vector<Predictor> predictors;
    std::vector<Term> terms;
    double spread;  // of betas
    bool hasOddBetas;

    Drawn(Draw& by, bool isPlain, std::unique_ptr<DictVar> target)
        : draw(by), plain(isPlain), built(std::move(target))
    {
        static constexpr double kSpreads[] = {0.3, 0.3, 1.0, 50.0};
        spread = plain ? 0.3 : draw.Of(kSpreads);
        hasOddBetas = !plain && draw.Once(4);
    }
    RegressionModel& Get() override { return built.model; }

    /// An oddity of a model that isn't plain.
    bool Odd(size_t of) { return !plain && draw.Once(of); }

    void AddPredictors(size_t most, std::span<const Kind> kinds)
    {
        const size_t count = 1 + draw.Below(most);
        for (size_t i = 0; i < count; ++i) {
            AddPredictor(plain ? draw.Of(kPlainKinds) : draw.Of(kinds));
        }
        // Some families take no text without a position.
        if (!Odd(30)) return;
        AddPredictor(draw.Once(2) ? Kind::LooseText : Kind::OpenText);
        leavesGoodRows = true;
    }
    void AddCovariates(size_t most)
    {
        const size_t count = 1 + draw.Below(most);
        for (size_t i = 0; i < count; ++i) AddPredictor(plain ? Kind::Number : draw.Of(kNumbers));
    }
    void AddPredictor(Kind kind)
    {
        std::string name = "x";
        name += std::to_string(predictors.size());
        switch (kind) {
            case Kind::Number: return AddNumber(Continuous(name), DrawnColumn::Any);
            case Kind::Whole: return AddWhole(name);
            case Kind::Bounded: return AddBounded(name);
            case Kind::Date: return AddDate(name);
            case Kind::Derived: return AddDerived(name);
            case Kind::TextNumber:
            case Kind::LooseText: return AddTextOfNumbers(name, kind == Kind::TextNumber);
            case Kind::Text: return AddTexts(name, false);
            case Kind::UnlistedText: return AddTexts(name, true);
            case Kind::OpenText: return AddOpenTexts(name);
            case Kind::Category: return AddNumberCategories(name);
            case Kind::DateCategory: return AddDateCategories(name);
        }
    }

    /// A variable that is no predictor.
    const DictVar* AddOther(std::unique_ptr<DictVar> var, DrawnColumn::Values values,
                            std::vector<double> numbers = {}, std::vector<std::string> texts = {})
    {
        const DictVar* added = var.get();
        const std::string name = added->GetName();
        built.Dictionary().AddVar(name, var.release());
        columns.push_back({added, values, std::move(numbers), std::move(texts)});
        return added;
    }

    /// The parameters with their cells: an intercept, powers, dummies and products.
    void DrawTerms()
    {
        if (kIsOrdinal) terms.push_back({"threshold", {}});
        if (!draw.Once(6)) AddTerm({});
        for (size_t k = 0; k < predictors.size(); ++k) {
            if (predictors[k].isFactor) {
                AddDummies(k);
            } else {
                for (size_t i = draw.Once(5) ? 2 : 1; i > 0; --i) AddTerm({{k, CellOf(k)}});
            }
        }
        for (size_t products = draw.Below(4); products > 0 && predictors.size() > 1; --products) {
            std::set<size_t> of;
            for (size_t i = 2 + draw.Below(3); i > 0; --i) of.insert(draw.Below(predictors.size()));
            std::vector<std::pair<size_t, std::string>> cells;
            for (const size_t k : of) cells.emplace_back(k, CellOf(k));
            AddTerm(std::move(cells));
        }
        for (const Term& term : terms) built.Parameters({term.name});
    }
    void WriteCells()
    {
        for (const Term& term : terms) {
            for (const auto& [k, text] : term.cells) WriteCell(term.name, predictors[k], text);
        }
    }
    double DrawBeta()
    {
        if (draw.Once(8)) return 0.0;
        return hasOddBetas && draw.Once(6) ? draw.Of(kOddBetas) : draw.Normal(spread);
    }
    void WriteBetas(const std::string& category)
    {
        for (const Term& term : terms) {
            if (kIsOrdinal && &term == &terms.front()) continue;
            built.Beta(category, term.name, DrawBeta());
        }
    }
    void WriteCovariances()
    {
        PCovMatrix& covariances = *built.model.CreatePCovMatrix();
        const size_t zeros = 2 + draw.Below(10);
        for (size_t i = 0; i < terms.size(); ++i) {
            for (size_t j = 0; j <= i; ++j) {
                const double v =
                    i == j ? 1.0 + static_cast<double>(draw.Below(3)) : draw.Normal(0.4);
                const double cell = draw.Once(zeros) ? 0.0 : v;
                covariances.SetCell(terms[i].name, terms[j].name, cell);
                covariances.SetCell(terms[j].name, terms[i].name, cell);
            }
        }
    }
    void Finish()
    {
        built.model.SetConfidenceLevel(draw.Of(kLevels));
        if (Odd(10)) built.model.SetScoreCaseValidationCheck(false);
        if (Odd(10)) built.model.SetAllowMissingFactors(true);
        if (Odd(10)) built.model.SetMissingValuePolicy(ScoreModel::MV_STATUS_ONLY);
        built.model.FinishSetup();
    }

private:
    void AddNumber(std::unique_ptr<DictVar> var, DrawnColumn::Values values)
    {
        if (Odd(8)) Replace(*var, draw.Normal());
        AddListed(std::move(var), {}, {}, false, values);
    }
    void AddListed(std::unique_ptr<DictVar> var, std::vector<double> numbers,
                   std::vector<std::string> texts, bool isFactor,
                   DrawnColumn::Values values = DrawnColumn::Listed)
    {
        const DictVar& added = built.Add(
            std::move(var), isFactor ? ScoreModel::ROLE_FACTOR : ScoreModel::ROLE_COVARIATE);
        predictors.push_back({added.GetName(), isFactor, {}});
        columns.push_back({&added, values, std::move(numbers), std::move(texts)});
    }
    void AddWhole(const std::string& name)
    {
        DictVarType type;
        type.name = name;
        type.dataType = "integer";
        AddNumber(std::make_unique<DictVar>(type), DrawnColumn::Whole);
    }
    void AddBounded(const std::string& name)
    {
        auto var = Continuous(name);
        var->DeclareInterval({-3.0, 100.0, true, false});
        if (draw.Once(2)) var->DeclareMissingRange(50.0, 60.0);
        var->EndDeclarations();
        AddNumber(std::move(var), DrawnColumn::Any);
    }
    void AddDate(const std::string& name)
    {
        static constexpr ScoreDictVar::DateTimeType kTypes[] = {
            ScoreDictVar::DATE_DAYS_SINCE_1960, ScoreDictVar::DATE, ScoreDictVar::TIME_SECONDS,
            ScoreDictVar::DATE_TIME_SECONDS_SINCE_1980};
        AddListed(DateVar(name, ScoreDictVar::CONTINUOUS, draw.Of(kTypes)), {}, {}, false,
                  draw.Once(4) ? DrawnColumn::Any : DrawnColumn::Whole);
    }
    void AddDerived(const std::string& name)
    {
        if (derived_ == nullptr) {
            derived_ = new TransformationDictionary;
            built.model.SetTransformationScoreDictionary(derived_);
        }
        auto var = testing::Derived(name);
        const DictVar& added = *var;
        built.model.SetVarRole(var.get(), ScoreModel::ROLE_COVARIATE);
        derived_->AddVar(name, var.release());
        built.model.AddPredictor(name);
        predictors.push_back({name, false, {}});
        columns.push_back({&added, DrawnColumn::Any, {}, {}});
    }
    void AddTextOfNumbers(const std::string& name, bool isListed)
    {
        const std::vector<std::string> texts(std::begin(kTextsOfNumbers),
                                             std::end(kTextsOfNumbers));
        DictVarType type;
        type.name = name;
        type.valueType = ScoreDictVar::STRING;
        AddListed(isListed ? Categorical(name, texts) : std::make_unique<DictVar>(type), {}, texts,
                  false);
    }
    void AddTexts(const std::string& name, bool takesUnlisted)
    {
        static constexpr size_t kCounts[] = {2, 3, 5, 12};
        const std::vector<std::string> texts(std::begin(kTexts),
                                             std::begin(kTexts) + draw.Of(kCounts));
        auto var = Categorical(name, texts);
        var->SetAcceptsUnlisted(takesUnlisted);
        std::vector<std::string> good = texts;
        if (takesUnlisted) good.push_back("unheard of");
        AddListed(std::move(var), {}, good, true);
        predictors.back().categories = texts;
    }
    void AddOpenTexts(const std::string& name)
    {
        AddListed(Categorical(name, {}), {}, {"a", "b", "c", "d"}, true);
        predictors.back().categories = {"a", "b", "c"};
    }
    void AddNumberCategories(const std::string& name)
    {
        const size_t count = 2 + draw.Below(std::size(kNumberTexts) - 2 - (plain ? 1 : 0));
        const std::vector<std::string> texts(std::begin(kNumberTexts),
                                             std::begin(kNumberTexts) + count);
        auto var = Categorical(name, texts, ScoreDictVar::NUMERIC);
        std::vector<double> numbers = NumbersOf(texts);
        if (Odd(3)) {  // some families compare nearly
            var->SetAcceptsUnlisted(true);
            numbers.insert(numbers.end(), {1.0 + 5e-13, 1.0 + 5e-12, 7.0});
        }
        AddListed(std::move(var), std::move(numbers), {}, true);
        predictors.back().categories = texts;
    }
    void AddDateCategories(const std::string& name)
    {
        auto var = DateVar(name, ScoreDictVar::CATEGORICAL, ScoreDictVar::DATE_DAYS_SINCE_1960);
        const std::vector<std::string> texts(std::begin(kDays), std::end(kDays));
        for (const std::string& text : texts) var->AddCategory(var->MakeValue(text), text);
        var->SetUpCatEncoder();
        AddListed(std::move(var), NumbersOf(texts), {}, true);
        predictors.back().categories = texts;
    }
    static std::vector<double> NumbersOf(const std::vector<std::string>& texts)
    {
        std::vector<double> numbers;
        for (const std::string& text : texts) numbers.push_back(std::stod(text));
        return numbers;
    }

    void AddTerm(std::vector<std::pair<size_t, std::string>> cells)
    {
        std::string name = "p";
        name += std::to_string(terms.size());
        terms.push_back({std::move(name), std::move(cells)});
    }
    void AddDummies(size_t k)
    {
        for (const std::string& category : predictors[k].categories) {
            if (draw.Once(6)) continue;
            AddTerm({{k, category}});
            if (draw.Once(20)) AddTerm({{k, category}});
            if (draw.Once(20)) AddTerm({});
        }
    }
    std::string CellOf(size_t k)
    {
        if (predictors[k].isFactor) return draw.Of(predictors[k].categories);
        return TextOf(plain ? draw.Of(kPlainExponents) : draw.Of(kMostExponents));
    }
    // As the readers write them: a text, else a number.
    void WriteCell(const std::string& parameter, const Predictor& predictor,
                   const std::string& text)
    {
        const auto& var = static_cast<const DictVar&>(*VarOf(predictor.name));
        const bool isText = predictor.isFactor && var.GetValueType() == ScoreDictVar::STRING;
        const bool isDate = predictor.isFactor && var.GetValueType() == ScoreDictVar::DATETIME;
        const double number = isText ? var.FindCategoryText(text) : std::stod(text);
        std::unique_ptr<ScoreValue> cell;
        if (isText) {
            cell = std::make_unique<StringValue>(text);
        } else if (isDate) {
            cell.reset(var.MakeValue(text));
        } else {
            cell = std::make_unique<NumericValue>(number);
        }
        built.model.GetPPCMatrix()->SetCell(parameter, predictor.name, cell.release());
        auto& numbers = built.model.GetNumericPPMatrix();
        if (numbers.empty()) return;
        numbers[static_cast<size_t>(built.model.GetParameterIndex(parameter))]
               [static_cast<size_t>(built.model.GetPredictorIndex(predictor.name))] = number;
    }

public:
    const ScoreDictVar* VarOf(const std::string& name) const
    {
        const auto found = std::find_if(columns.begin(), columns.end(), [&](const auto& column) {
            return column.var->GetName() == name;
        });
        return found == columns.end() ? nullptr : found->var;
    }

private:
    TransformationDictionary* derived_ = nullptr;  // the model's
};

// A target of so many categories, of texts or of numbers.
std::unique_ptr<DictVar> DrawTarget(Draw& draw, size_t count)
{
    if (!draw.Once(3)) {
        // Their order isn't that of their names.
        std::vector<std::string> names = {"no", "yes", "maybe", "late", "never", "b"};
        const auto first = static_cast<std::ptrdiff_t>(draw.Below(names.size()));
        std::rotate(names.begin(), names.begin() + first, names.end());
        names.resize(count);
        return Categorical("y", names);
    }
    std::vector<std::string> numbers;
    for (size_t i = 0; i < count; ++i) numbers.push_back(TextOf(static_cast<double>(i) - 1.0));
    return Categorical("y", numbers, ScoreDictVar::NUMERIC);
}

std::vector<std::string> CategoriesOf(const RegressionModel& model)
{
    std::vector<std::string> names(model.GetCategoryMap().size());
    for (const auto& [name, row] : model.GetCategoryMap()) names[static_cast<size_t>(row)] = name;
    return names;
}

// A constant, a variable of its own, or a predictor.
template <class Model>
void DrawOffset(Drawn<Model>& drawn)
{
    Draw& draw = drawn.draw;
    switch (draw.Below(5)) {
        case 0: return;
        case 1: return drawn.built.model.SetOffsetValue(draw.Normal());
        case 2: {
            const ScoreDictVar* predictor = drawn.VarOf("x0");
            return drawn.built.model.SetOffsetVar(predictor);
        }
        default: break;
    }
    const DictVar* var = drawn.AddOther(Continuous("offset"), DrawnColumn::Any);
    drawn.built.model.SetVarRole(var, ScoreModel::ROLE_OFFSET);
    drawn.built.model.SetOffsetVar(var);
}

constexpr double kDegrees[] = {1.0, 3.0, 10.0, 12.5, 57.0, -1.0, 0.4, kSysmis};

std::unique_ptr<DrawnModel> DrawLinear(Draw& draw, bool plain, int)
{
    auto drawn = std::make_unique<Drawn<LRModel>>(draw, plain, Continuous("y"));
    drawn->AddCovariates(7);
    for (const auto& predictor : drawn->predictors) {
        drawn->terms.push_back({"b" + predictor.name, {}});
    }
    if (!drawn->Odd(6)) drawn->terms.push_back({"constant", {}});
    for (const auto& term : drawn->terms) drawn->built.Parameters({term.name});
    EXPECT_TRUE(drawn->built.SetUp());
    drawn->WriteBetas(drawn->built.model.GetDummyCategory());
    drawn->built.model.SetDF(draw.Of(kDegrees));
    if (!draw.Once(3)) {
        drawn->WriteCovariances();
        for (const DrawnColumn& column : drawn->columns) {
            if (OriginShift(column.var->GetDateTimeType()) != 0.0) drawn->mayLackBlocks = true;
        }
    }
    drawn->Finish();
    return drawn;
}

std::unique_ptr<DrawnModel> DrawGeneralLinear(Draw& draw, bool plain, int)
{
    auto drawn = std::make_unique<Drawn<GLRModel>>(draw, plain, Continuous("y"));
    GLRModel& model = drawn->built.model;
    drawn->AddPredictors(6, kListedKinds);
    drawn->DrawTerms();
    EXPECT_TRUE(drawn->built.SetUp());
    drawn->WriteCells();
    drawn->WriteBetas(model.GetDummyCategory());
    model.SetDF(draw.Of(kDegrees));
    if (!draw.Once(3)) drawn->WriteCovariances();
    if (draw.Once(3)) model.SetAlgorithmName("linearSVM");
    if (draw.Once(3)) model.SetSigmaValue(0.75);
    if (draw.Once(3)) model.SetPercentileValue(1.25);
    drawn->Finish();
    return drawn;
}

void DrawTrials(Drawn<GZLRModel>& drawn)
{
    static const std::vector<double> kTrials = {1.0, 2.0, 10.0, 0.0, 3.9, -4.0};
    switch (drawn.draw.Below(3)) {
        case 0: return;
        case 1: return drawn.built.model.SetTrialsValue(static_cast<int>(drawn.draw.Below(5)));
        default: break;
    }
    drawn.built.model.SetTrialsVar(
        drawn.AddOther(Continuous("trials"), DrawnColumn::Partly, kTrials));
}

std::unique_ptr<DrawnModel> DrawGeneralized(Draw& draw, bool plain, int link)
{
    static constexpr double kLinkParameters[] = {-2.0, -1.0, -0.5, 0.0, 0.3, 0.5, 1.0, 2.0, 3.0};
    // A plain model has to have a mean for every row.
    const bool classifies = plain ? link == GZLRModel::LINK_LOGIT && draw.Once(2) : draw.Once(3);
    auto drawn = std::make_unique<Drawn<GZLRModel>>(
        draw, plain, classifies ? DrawTarget(draw, 2) : Continuous("y"));
    GZLRModel& model = drawn->built.model;
    model.SetLinkFunction(static_cast<GZLRModel::LinkFunction>(link));
    model.SetLinkParameter(draw.Of(kLinkParameters));
    model.SetDistType(draw.Once(2) ? GZLRModel::DIST_BINOMIAL : GZLRModel::DIST_GAMMA);
    drawn->AddPredictors(6, kAllKinds);
    DrawOffset(*drawn);
    DrawTrials(*drawn);
    drawn->DrawTerms();
    EXPECT_TRUE(drawn->built.SetUp());
    if (classifies) model.UpdateResAndRefCat(draw.Of(CategoriesOf(model)));
    drawn->WriteCells();
    for (const std::string& category : CategoriesOf(model)) drawn->WriteBetas(category);
    if (!draw.Once(3)) drawn->WriteCovariances();
    drawn->Finish();
    return drawn;
}

std::unique_ptr<DrawnModel> DrawMultinomial(Draw& draw, bool plain, int)
{
    auto drawn =
        std::make_unique<Drawn<MLRModel>>(draw, plain, DrawTarget(draw, 3 + draw.Below(4)));
    MLRModel& model = drawn->built.model;
    drawn->AddPredictors(5, kListedKinds);
    DrawOffset(*drawn);
    drawn->DrawTerms();
    EXPECT_TRUE(drawn->built.SetUp());
    drawn->WriteCells();
    const std::vector<std::string> categories = CategoriesOf(model);
    const size_t reference = draw.Below(categories.size() + 1);
    for (size_t c = 0; c < categories.size(); ++c) {
        if (c != reference) drawn->WriteBetas(categories[c]);
    }
    drawn->Finish();
    return drawn;
}

// By the standard's words; "simplemax" first.
constexpr const char* kNormalizations[] = {"simplemax", "none",   "logit",  "probit",
                                           "cloglog",   "loglog", "cauchit"};

std::unique_ptr<DrawnModel> DrawNormalized(Draw& draw, bool plain, int normalization)
{
    auto drawn =
        std::make_unique<Drawn<NormalizedModel>>(draw, plain, DrawTarget(draw, 2 + draw.Below(5)));
    NormalizedModel& model = drawn->built.model;
    EXPECT_TRUE(model.SetNormalization(kNormalizations[normalization]));
    if (draw.Once(2)) model.SetOrdered();
    drawn->AddPredictors(5, kListedKinds);
    drawn->DrawTerms();
    EXPECT_TRUE(drawn->built.SetUp());
    drawn->WriteCells();
    const std::vector<std::string> categories = CategoriesOf(model);
    for (const std::string& category : categories) drawn->WriteBetas(category);
    model.SetRemainder(draw.Of(categories));
    drawn->Finish();
    return drawn;
}

// Square; an incomplete one lacks places of a row or two.
RegressionModel::Matrix DrawContrasts(DrawnModel& drawn, Draw& draw, size_t size, bool incomplete)
{
    RegressionModel::Matrix rows(size, std::vector<double>(size));
    for (auto& row : rows) {
        for (double& contrast : row) contrast = draw.Once(3) ? 0.0 : draw.Normal();
    }
    if (!incomplete) return rows;
    drawn.leavesGoodRows = true;
    rows[draw.Below(size)].resize(draw.Below(size));
    if (draw.Once(2)) rows.pop_back();
    return rows;
}

std::unique_ptr<DrawnModel> DrawBinary(Draw& draw, bool plain, int)
{
    auto drawn = std::make_unique<Drawn<BLRModel>>(draw, plain, DrawTarget(draw, 2));
    BLRModel& model = drawn->built.model;
    drawn->AddPredictors(6, kListedKinds);
    drawn->DrawTerms();
    for (const auto& predictor : drawn->predictors) {
        if (!predictor.isFactor) continue;
        const auto& var = static_cast<const DictVar&>(*drawn->VarOf(predictor.name));
        const bool isText = var.GetValueType() == ScoreDictVar::STRING;
        std::vector<double> labels;
        for (const std::string& category : predictor.categories) {
            labels.push_back(isText ? var.FindCategoryText(category) : std::stod(category));
        }
        if (var.AcceptsUnlisted()) drawn->leavesGoodRows = true;
        const auto rows = DrawContrasts(*drawn, draw, labels.size(), drawn->Odd(12));
        if (drawn->Odd(3)) std::reverse(labels.begin(), labels.end());
        EXPECT_TRUE(model.SetContrastMatrix(predictor.name, rows, labels));
    }
    EXPECT_TRUE(drawn->built.SetUp());
    drawn->WriteCells();
    const std::vector<std::string> categories = CategoriesOf(model);
    const size_t reference = draw.Below(3);
    if (reference < 2) model.SetReferencedTargetCate(new StringValue(categories[reference]));
    for (const std::string& category : categories) drawn->WriteBetas(category);
    if (draw.Once(2)) {
        static constexpr double kCutoffs[] = {0.5, 0.2, 0.9, 1.0};
        model.SetCutoff(draw.Of(kCutoffs));
        const size_t of = draw.Below(plain ? 2 : 3);
        model.SetTargetReferenceCategory(of < 2 ? categories[of] : "nobody");
    }
    if (drawn->Odd(8)) {
        model.SetPredictionOnly(true);
        drawn->mayLackBlocks = model.GetCutoff() > 0.0;
    }
    if (!draw.Once(3)) drawn->WriteCovariances();
    drawn->Finish();
    return drawn;
}

std::unique_ptr<DrawnModel> DrawConditional(Draw& draw, bool plain, int)
{
    auto drawn = std::make_unique<Drawn<CLRModel>>(draw, plain, DrawTarget(draw, 2));
    CLRModel& model = drawn->built.model;
    drawn->AddPredictors(6, kAllKinds);
    drawn->DrawTerms();
    if (drawn->terms.empty()) drawn->terms.push_back({"p0", {}}), drawn->built.Parameters({"p0"});
    EXPECT_TRUE(drawn->built.SetUp());
    drawn->WriteCells();
    const std::vector<std::string> categories = CategoriesOf(model);
    drawn->WriteBetas(categories[0]);
    if (drawn->Odd(5)) drawn->WriteBetas(categories[1]);
    if (!draw.Once(3)) drawn->WriteCovariances();
    drawn->Finish();
    return drawn;
}

// Thresholds on both sides of 0 and a linear predictor that hardly departs from it: the outer
// categories are as probable but for rounding.
template <class Model>
void MakeNearTies(Drawn<Model>& drawn, std::vector<double>& thresholds)
{
    drawn.spread = 3e-15;
    drawn.hasOddBetas = false;
    const size_t boundaries = thresholds.size() - 1;
    for (size_t i = 0; i < boundaries; ++i) {
        thresholds[i] = 0.1 * (static_cast<double>(i) - 0.5 * static_cast<double>(boundaries - 1));
    }
}

template <class Model>
std::unique_ptr<DrawnModel> DrawOrdinal(Draw& draw, bool plain, int link)
{
    auto drawn = std::make_unique<Drawn<Model>>(draw, plain, DrawTarget(draw, 2 + draw.Below(5)));
    Model& model = drawn->built.model;
    model.SetLinkFunction(static_cast<CumulativeLinkModel::CumulLinkFunction>(link));
    drawn->AddPredictors(6, kAllKinds);
    DrawOffset(*drawn);
    if (const ScoreDictVar* offset = model.GetOffsetVar()) {
        // It is read as a plain number.
        if (OriginShift(offset->GetDateTimeType()) != 0.0) drawn->mayLackBlocks = true;
    }
    drawn->DrawTerms();
    EXPECT_TRUE(drawn->built.SetUp());
    drawn->WriteCells();
    const std::vector<std::string> categories = CategoriesOf(model);
    std::vector<double> thresholds(categories.size());
    for (double& threshold : thresholds) threshold = draw.Normal(2.0);
    if (!drawn->Odd(6)) std::sort(thresholds.begin(), thresholds.end());
    if (drawn->Odd(4)) MakeNearTies(*drawn, thresholds);
    if (drawn->Odd(12)) thresholds.front() = kSysmis;
    for (size_t c = 0; c < categories.size(); ++c) {
        drawn->built.Beta(categories[c], "threshold", thresholds[c]);
    }
    drawn->WriteBetas(categories[categories.size() - 2]);
    if (!draw.Once(3)) drawn->WriteCovariances();
    drawn->Finish();
    return drawn;
}

constexpr size_t kCellCounts[] = {0, 1, 2, 10, 1000};

CoxRegModel::HazardTable DrawBaseline(Draw& draw)
{
    CoxRegModel::HazardTable table;
    double hazard = 0.0;
    for (size_t i = draw.Of(kCellCounts); i > 0; --i) {
        hazard += 0.01 * static_cast<double>(draw.Below(10));
        table[0.25 * static_cast<double>(table.size() + 1)] = draw.Once(40) ? kSysmis : hazard;
    }
    return table;
}

// The case's time: before, at, between and after the times of the tables.
void DrawEndTime(Drawn<CoxRegModel>& drawn, const std::vector<CoxRegModel::HazardTable>& tables)
{
    std::vector<double> times = {0.0, -1.0, 0.1, 1e6, 250.0, 0.3};
    for (const auto& table : tables) {
        for (const auto& [time, hazard] : table) {
            if (times.size() < 40) times.insert(times.end(), {time, time + 0.1});
        }
    }
    drawn.AddOther(Continuous("time"), DrawnColumn::Partly, times);
    drawn.built.model.SetEndTimeVariableName("time");
}

void DrawStrata(Drawn<CoxRegModel>& drawn)
{
    Draw& draw = drawn.draw;
    std::vector<std::string> strata;
    std::string name;
    if (!draw.Once(3)) {
        name = "stratum";
        strata = {"1", "2", "3.5"};
        if (draw.Once(2)) {
            strata = {"north", "south", "east"};
            drawn.AddOther(Categorical(name, strata), DrawnColumn::Listed, {}, strata);
        } else {
            drawn.AddOther(Categorical(name, strata, ScoreDictVar::NUMERIC), DrawnColumn::Listed,
                           {1.0, 2.0, 3.5});
        }
        // A category without a stratum, and strata without a table.
        if (drawn.Odd(6)) strata.erase(strata.begin());
    }
    std::vector<CoxRegModel::HazardTable> tables(std::max(strata.size(), size_t{1}));
    if (drawn.Odd(6) && tables.size() > 1) tables.pop_back();
    std::vector<double> first, last;
    for (auto& table : tables) {
        table = DrawBaseline(draw);
        first.push_back(table.empty() ? 0.0 : table.begin()->first);
        last.push_back(table.empty() ? 1.0 : table.rbegin()->first + (draw.Once(2) ? 5.0 : 0.0));
    }
    if (drawn.Odd(8)) last.pop_back();
    if (drawn.Odd(8)) first.pop_back();
    drawn.built.model.SetCumHazardTable(tables, strata, name);
    drawn.built.model.SetMinMaxTime(first, last);
    DrawEndTime(drawn, tables);
}

std::unique_ptr<DrawnModel> DrawCox(Draw& draw, bool plain, int)
{
    auto drawn = std::make_unique<Drawn<CoxRegModel>>(draw, plain, Continuous("y"));
    CoxRegModel& model = drawn->built.model;
    const bool contrasts = draw.Once(2);
    if (contrasts) {
        drawn->AddPredictors(6, kListedKinds);
    } else {
        drawn->AddPredictors(6, kAllKinds);
    }
    DrawStrata(*drawn);
    drawn->DrawTerms();
    for (const auto& predictor : drawn->predictors) {
        if (!contrasts || !predictor.isFactor) continue;
        const auto& var = static_cast<const DictVar&>(*drawn->VarOf(predictor.name));
        if (var.AcceptsUnlisted()) drawn->leavesGoodRows = true;
        std::vector<ScoreValue*> categories;
        for (const std::string& text : predictor.categories) {
            categories.push_back(var.MakeValue(text));
        }
        const auto rows = DrawContrasts(*drawn, draw, categories.size(), drawn->Odd(12));
        EXPECT_TRUE(model.SetContrastMatrix(predictor.name, rows, categories));
    }
    if (draw.Once(2)) {
        std::vector<double> points(drawn->terms.size() + (drawn->Odd(6) ? 1 : 0));
        for (double& point : points) point = draw.Once(3) ? 0.0 : draw.Normal();
        model.SetBasePointTable(points);
    }
    EXPECT_TRUE(drawn->built.SetUp());
    drawn->WriteCells();
    drawn->WriteBetas(model.GetDummyCategory());
    if (!draw.Once(3)) drawn->WriteCovariances();
    drawn->Finish();
    return drawn;
}

constexpr DrawnFamily kFamilies[] = {
    {"Linear", DrawLinear, 0},
    {"GeneralLinear", DrawGeneralLinear, 0},
    {"GeneralizedIdentity", DrawGeneralized, GZLRModel::LINK_IDENTITY},
    {"GeneralizedCloglog", DrawGeneralized, GZLRModel::LINK_CLOGLOG},
    {"GeneralizedLog", DrawGeneralized, GZLRModel::LINK_LOG},
    {"GeneralizedLogc", DrawGeneralized, GZLRModel::LINK_LOGC},
    {"GeneralizedLogit", DrawGeneralized, GZLRModel::LINK_LOGIT},
    {"GeneralizedNegbin", DrawGeneralized, GZLRModel::LINK_NEGBIN},
    {"GeneralizedNloglog", DrawGeneralized, GZLRModel::LINK_NLOGLOG},
    {"GeneralizedOddspower", DrawGeneralized, GZLRModel::LINK_ODDSPOWER},
    {"GeneralizedPower", DrawGeneralized, GZLRModel::LINK_POWER},
    {"GeneralizedProbit", DrawGeneralized, GZLRModel::LINK_PROBIT},
    {"Multinomial", DrawMultinomial, 0},
    {"NormalizedSimplemax", DrawNormalized, 0},
    {"NormalizedNone", DrawNormalized, 1},
    {"NormalizedLogit", DrawNormalized, 2},
    {"NormalizedProbit", DrawNormalized, 3},
    {"NormalizedCloglog", DrawNormalized, 4},
    {"NormalizedLoglog", DrawNormalized, 5},
    {"NormalizedCauchit", DrawNormalized, 6},
    {"Binary", DrawBinary, 0},
    {"Conditional", DrawConditional, 0},
    {"OrdinalLogit", DrawOrdinal<ORModel>, CumulativeLinkModel::CUM_LOGIT},
    {"OrdinalCauchit", DrawOrdinal<ORModel>, CumulativeLinkModel::CUM_CAUCHIT},
    {"OrdinalCloglog", DrawOrdinal<ORModel>, CumulativeLinkModel::CUM_CLOGLOG},
    {"OrdinalLoglog", DrawOrdinal<ORModel>, CumulativeLinkModel::CUM_LOGLOG},
    {"OrdinalProbit", DrawOrdinal<ORModel>, CumulativeLinkModel::CUM_PROBIT},
    {"GeneralizedOrdinalLogit", DrawOrdinal<OGZLRModel>, CumulativeLinkModel::CUM_LOGIT},
    {"GeneralizedOrdinalCauchit", DrawOrdinal<OGZLRModel>, CumulativeLinkModel::CUM_CAUCHIT},
    {"GeneralizedOrdinalCloglog", DrawOrdinal<OGZLRModel>, CumulativeLinkModel::CUM_CLOGLOG},
    {"GeneralizedOrdinalLoglog", DrawOrdinal<OGZLRModel>, CumulativeLinkModel::CUM_LOGLOG},
    {"GeneralizedOrdinalProbit", DrawOrdinal<OGZLRModel>, CumulativeLinkModel::CUM_PROBIT},
    {"Cox", DrawCox, 0},
};

}  // namespace

std::span<const DrawnFamily> DrawnFamilies() { return kFamilies; }

}  // namespace MCVelscore_850::testing

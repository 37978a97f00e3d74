// The dictionary of documents in the older form.

#include "host/documents/zelttranslator.h"

#include <limits>
#include <memory>

#include <gtest/gtest.h>

#include "dom.h"
#include "host/messages/messages.h"
#include "host/model/scoremodel.h"
#include "host/values/numericvalue.h"
#include "host/values/stringvalue.h"
#include "host/variables/catencoder.h"
#include "host/variables/scoredictionary.h"
#include "host/variables/scoredictvar.h"
#include "host/variables/valueset.h"
#include "host/variables/varstats.h"

namespace MCVelscore_850 {
namespace {

using Dictionary = std::unique_ptr<ScoreDictionary>;

// The base of the readers with nothing of its own.
class ZeltReader final : public ZELTTranslator {
public:
    ScoreModel* ParseFromTree(xercesc::DOMDocument*, const std::string&) override
    {
        return nullptr;
    }
};

Dictionary Read(const std::string& variables)
{
    StartXml();
    const Dom dom("<dictionary>" + variables + "</dictionary>");
    ZeltReader reader;
    return Dictionary(reader.ParseDictionary(dom.Root()));
}

Refusal RefusedFor(const std::string& variables)
{
    return RefusalOf([&] { Read(variables); });
}

std::string Variable(const std::string& attributes, const std::string& content = "")
{
    return "<variable name='v' " + attributes + ">" + content + "</variable>";
}

constexpr char kNumber[] = "storage-type='NUMERIC'";
constexpr char kCode[] = "storage-type='NUMERIC' measurement-level='NOMINAL'";
constexpr char kText[] = "storage-type='STRING' measurement-level='NOMINAL'";

std::string Missing(const std::string& content)
{
    return "<missing-values>" + content + "</missing-values>";
}
std::string Categories(const std::string& content)
{
    return "<categories>" + content + "</categories>";
}

bool IsMissing(const ScoreDictVar& var, double number)
{
    const NumericValue value(number);
    return var.IsMissing(&value);
}
bool Accepts(const ScoreDictVar& var, double number)
{
    const NumericValue value(number);
    return var.Accepts(&value);
}
bool Accepts(const ScoreDictVar& var, const char* text)
{
    const StringValue value(text);
    return var.Accepts(&value);
}

TEST(ZeltDictionary, VariablesStandInDocumentOrder)
{
    const Dictionary d = Read(
        "<variable name='b' storage-type='STRING'/>"
        "<variable name='a' storage-type='NUMERIC'/>");
    ASSERT_EQ(d->GetVarCount(), 2);
    EXPECT_EQ(d->GetVars()[0]->GetName(), "b");
    EXPECT_EQ(d->GetVars()[1]->GetName(), "a");
    EXPECT_EQ(Read("")->GetVarCount(), 0);
}

TEST(ZeltDictionary, StorageAndLevelMakeTheType)
{
    const struct {
        const char* attributes;
        int valueType;
        ScoreDictVar::MeasureLevel level;
    } kRows[] = {
        {"storage-type='NUMERIC' measurement-level='CONTINUOUS'", 0, ScoreDictVar::CONTINUOUS},
        {"storage-type='NUMERIC' measurement-level='NOMINAL'", 0, ScoreDictVar::CATEGORICAL},
        {"storage-type='NUMERIC' measurement-level='ORDINAL'", 0, ScoreDictVar::ORDINAL},
        {"storage-type='NUMERIC' measurement-level='UNKNOWN'", 0, ScoreDictVar::CONTINUOUS},
        {"storage-type='NUMERIC' measurement-level=''", 0, ScoreDictVar::CONTINUOUS},
        {"storage-type='NUMERIC'", 0, ScoreDictVar::CONTINUOUS},
        {"storage-type='STRING' measurement-level='NOMINAL'", 1, ScoreDictVar::CATEGORICAL},
        {"storage-type='STRING' measurement-level='ORDINAL'", 1, ScoreDictVar::ORDINAL},
        {"storage-type='STRING' measurement-level='UNKNOWN'", 1, ScoreDictVar::CATEGORICAL},
        {"storage-type='STRING'", 1, ScoreDictVar::CATEGORICAL},
    };
    for (const auto& row : kRows) {
        const Dictionary d = Read(Variable(row.attributes));
        const ScoreDictVar* var = d->GetVar("v");
        EXPECT_EQ(var->GetValueType(), row.valueType) << row.attributes;
        EXPECT_EQ(var->GetMeasureLevel(), row.level) << row.attributes;
        EXPECT_EQ(var->GetCatEncoder() != nullptr, row.level != ScoreDictVar::CONTINUOUS)
            << row.attributes;
        EXPECT_EQ(var->HasOpenCategories(), row.level != ScoreDictVar::CONTINUOUS)
            << row.attributes;
    }
}

TEST(ZeltDictionary, CategoriesCloseAVariableInTheirOrder)
{
    const Dictionary d =
        Read(Variable(kText, Categories("<category value='u' display-value='Upper'/>"
                                        "<category value='l' proportion='0.5' rank='2'/>")));
    const ScoreDictVar& var = *d->GetVar("v");
    EXPECT_FALSE(var.HasOpenCategories());
    ASSERT_EQ(var.GetValueSet()->GetEntries().size(), 2u);
    EXPECT_EQ(var.GetValueSet()->GetEntries()[0].GetEntryValue()->GetString(), "u");
    EXPECT_EQ(var.GetCatEncoder()->EncodeString("l"), 1);
    EXPECT_EQ(var.GetCatEncoder()->EncodeString("Upper"), -1);
    EXPECT_TRUE(Accepts(var, "u"));
    EXPECT_FALSE(Accepts(var, "x"));
}

TEST(ZeltDictionary, MissingValuesAloneCloseNoVariable)
{
    const Dictionary texts = Read(Variable(kText, Missing("<value value='9'/>")));
    const ScoreDictVar& text = *texts->GetVar("v");
    EXPECT_TRUE(text.HasOpenCategories());
    EXPECT_EQ(text.GetValueSet(), nullptr);
    EXPECT_TRUE(Accepts(text, "anything"));
    EXPECT_FALSE(Accepts(text, "9"));
    const StringValue nine("9");
    EXPECT_TRUE(text.IsMissing(&nine));
    const std::unique_ptr<ScoreDictVar> copy(text.Clone());
    EXPECT_TRUE(copy->HasOpenCategories());
    EXPECT_TRUE(copy->IsMissing(&nine));

    const Dictionary codes = Read(Variable(kCode, Missing("<value value='9'/>")));
    EXPECT_TRUE(codes->GetVar("v")->HasOpenCategories());
    EXPECT_TRUE(Accepts(*codes->GetVar("v"), 8.0));
    EXPECT_TRUE(IsMissing(*codes->GetVar("v"), 9.0));

    const Dictionary numbers = Read(Variable(kNumber, Missing("<value value='9'/>")));
    EXPECT_FALSE(numbers->GetVar("v")->SurelyAccepts(9.0));
    EXPECT_TRUE(numbers->GetVar("v")->SurelyAccepts(8.0));
    EXPECT_FALSE(Accepts(*numbers->GetVar("v"), 9.0));

    // A list closes it, also one that says nothing new.
    const Dictionary listed =
        Read(Variable(kText, Missing("<value value='9'/>") + Categories("<category value='9'/>")));
    EXPECT_FALSE(listed->GetVar("v")->HasOpenCategories());
    EXPECT_TRUE(listed->GetVar("v")->IsMissing(&nine));
}

TEST(ZeltDictionary, CategoriesOfNumbersAreNumbers)
{
    const Dictionary d =
        Read(Variable(kCode, Categories("<category value='1.0'/><category value=' 2 '/>")));
    const ScoreDictVar& var = *d->GetVar("v");
    EXPECT_TRUE(Accepts(var, 1.0));
    EXPECT_TRUE(Accepts(var, 2.0));
    EXPECT_FALSE(Accepts(var, 3.0));
    EXPECT_EQ(var.GetCatEncoder()->EncodeString("2.0"), 1);
}

TEST(ZeltDictionary, CategoriesOfAContinuousVariableAreItsOnlyValues)
{
    const Dictionary d = Read(Variable(kNumber, Categories("<category value='1'/>")));
    EXPECT_TRUE(Accepts(*d->GetVar("v"), 1.0));
    EXPECT_FALSE(Accepts(*d->GetVar("v"), 2.0));
}

TEST(ZeltDictionary, MissingValuesOfTextsAndNumbers)
{
    const Dictionary texts = Read(Variable(kText, Missing("<value value='none'/>")));
    EXPECT_FALSE(Accepts(*texts->GetVar("v"), "none"));
    EXPECT_TRUE(Accepts(*texts->GetVar("v"), "some"));

    const Dictionary numbers =
        Read(Variable(kNumber, Missing("<value value='9'/><value value='-1.50'/>")));
    const ScoreDictVar& var = *numbers->GetVar("v");
    EXPECT_TRUE(IsMissing(var, 9.0));
    EXPECT_TRUE(IsMissing(var, -1.5));
    EXPECT_TRUE(Accepts(var, 8.0));
}

TEST(ZeltDictionary, AValueThatIsDeclaredTwiceIsWhatItIsFirst)
{
    const std::string category = Categories("<category value='9'/>");
    const std::string missing = Missing("<value value='9'/>");
    EXPECT_TRUE(Accepts(*Read(Variable(kCode, category + missing))->GetVar("v"), 9.0));
    EXPECT_FALSE(Accepts(*Read(Variable(kCode, missing + category))->GetVar("v"), 9.0));
}

TEST(ZeltDictionary, MissingRangesHoldTheirEnds)
{
    constexpr double kInf = std::numeric_limits<double>::infinity();
    const struct {
        const char* ranges;
        std::vector<double> missing;
        std::vector<double> present;
    } kRows[] = {
        {"<range minimum='2' maximum='4'/>", {2, 3, 4}, {1.9999, 4.0001}},
        {"<range minimum='LOWEST' maximum='-1'/>", {-1e308, -1}, {-0.5, 1e308}},
        {"<range minimum='7' maximum='HIGHEST'/>", {7, 1e308}, {6.5, -1e308}},
        {"<range minimum='LOWEST' maximum='HIGHEST'/>", {-1e308, 0, 1e308}, {}},
        {"<range minimum='5' maximum='5'/>", {5}, {4, 6}},
        {"<range minimum='4' maximum='2'/>", {}, {2, 3, 4}},
        // one within another, one that bridges two, one that begins where another ends
        {"<range minimum='1' maximum='9'/><range minimum='2' maximum='3'/>", {1, 2, 5, 9}, {0, 10}},
        {"<range minimum='2' maximum='3'/><range minimum='1' maximum='9'/>", {1, 2, 5, 9}, {0, 10}},
        {"<range minimum='1' maximum='2'/><range minimum='5' maximum='6'/>"
         "<range minimum='2' maximum='5'/>",
         {1, 2, 3.5, 5, 6},
         {0.5, 6.5}},
        {"<range minimum='1' maximum='2'/><value value='9'/><range minimum='4' maximum='5'/>",
         {1, 2, 9, 4, 5},
         {3, 6}},
    };
    for (const auto& row : kRows) {
        const Dictionary d = Read(Variable(kNumber, Missing(row.ranges)));
        const ScoreDictVar& var = *d->GetVar("v");
        for (const double number : row.missing) {
            EXPECT_TRUE(IsMissing(var, number)) << row.ranges << " " << number;
            EXPECT_FALSE(var.SurelyAccepts(number)) << row.ranges << " " << number;
        }
        for (const double number : row.present) {
            EXPECT_TRUE(Accepts(var, number)) << row.ranges << " " << number;
        }
        EXPECT_FALSE(Accepts(var, kInf));
    }
}

TEST(ZeltDictionary, MissingRangesGoWithACopy)
{
    const Dictionary d = Read(Variable(kNumber, Missing("<range minimum='2' maximum='4'/>")));
    const std::unique_ptr<ScoreDictVar> copy(d->GetVar("v")->Clone());
    EXPECT_TRUE(IsMissing(*copy, 3.0));
    EXPECT_FALSE(IsMissing(*copy, 5.0));
}

TEST(ZeltDictionary, RangesSayNothingOfTexts)
{
    const Dictionary d =
        Read(Variable(kText, Missing("<range minimum='LOWEST' maximum='HIGHEST'/>")));
    EXPECT_TRUE(Accepts(*d->GetVar("v"), "3"));
    EXPECT_TRUE(d->GetVar("v")->HasOpenCategories());
}

TEST(ZeltDictionary, StatisticsReachTheVariable)
{
    const Dictionary d =
        Read(Variable(kNumber,
                      "<var-stats minimum='-2' maximum='1e3' mean='0.5' median='0' "
                      "standard-deviation='1' inter-quartile-range='2'/>"));
    const VarStats* stats = d->GetVar("v")->GetVarStats();
    ASSERT_NE(stats, nullptr);
    EXPECT_EQ(stats->GetMinimum(), -2.0);
    EXPECT_EQ(stats->GetMaximum(), 1000.0);
    EXPECT_EQ(stats->GetMean(), 0.5);
    EXPECT_EQ(stats->GetMissingReplacement(), nullptr);
    EXPECT_EQ(Read(Variable(kNumber))->GetVar("v")->GetVarStats(), nullptr);
}

TEST(ZeltDictionary, StatisticsWithoutANumberSayNothing)
{
    for (const char* word : {"INF", "-INF", "NaN", ""}) {
        const std::string text = std::string("<var-stats minimum='") + word + "' maximum='" + word +
                                 "' mean='" + word + "'/>";
        const Dictionary d = Read(Variable(kNumber, text));
        const VarStats* stats = d->GetVar("v")->GetVarStats();
        ASSERT_NE(stats, nullptr);
        EXPECT_EQ(stats->GetMinimum(), NumericValue::GetSysmisValue()) << word;
        EXPECT_EQ(stats->GetMaximum(), NumericValue::GetSysmisValue()) << word;
        EXPECT_EQ(stats->GetMean(), NumericValue::GetSysmisValue()) << word;
    }
    EXPECT_TRUE(
        Accepts(*Read(Variable(kNumber, "<var-stats minimum='0' maximum='1'/>"))->GetVar("v"),
                5.0));  // they bound nothing
}

TEST(ZeltDictionary, LabelsAndFormatsAreTakenAndSayNothing)
{
    const Dictionary d = Read(Variable("label='A number' unique-id='7' storage-type='NUMERIC'",
                                       "<format-spec format='F' width='8' decimals='2'/>"));
    EXPECT_EQ(d->GetVar("v")->GetName(), "v");
    EXPECT_TRUE(Accepts(*d->GetVar("v"), 1.0));
}

TEST(ZeltDictionary, RefusalsTellCodeAndArguments)
{
    const struct {
        std::string variables;
        Refusal refusal;
    } kRows[] = {
        {"<field name='v'/>", {260153, {"field", "variable", "dictionary"}}},
        {"<variable storage-type='NUMERIC'/>", {260115, {"name", "variable"}}},
        {"<variable name='v'/>", {260115, {"storage-type", "variable"}}},
        {Variable("storage-type='numeric'"), {260153, {"numeric", "storage-type", "variable"}}},
        {Variable("storage-type='NUMERIC' measurement-level='SCALE'"),
         {260153, {"SCALE", "measurement-level", "variable"}}},
        {Variable("storage-type='STRING' measurement-level='CONTINUOUS'"),
         {kStorageAndLevel, {"v", "STRING", "CONTINUOUS"}}},
        {Variable(kNumber) + Variable(kText), {kDuplicateField, {"v"}}},
        {Variable(kText, "<levels/>"), {260153, {"levels", "format-spec", "variable"}}},
        {Variable(kText, Categories("<value value='a'/>")),
         {260153, {"value", "category", "categories"}}},
        {Variable(kText, Categories("<category/>")), {260115, {"value", "category"}}},
        {Variable(kText, Categories("<category value=''/>")), {260127, {"", "v"}}},
        {Variable(kCode, Categories("<category value='one'/>")), {260127, {"one", "v"}}},
        {Variable(kNumber, Missing("<category value='1'/>")),
         {260153, {"category", "range", "missing-values"}}},
        {Variable(kNumber, Missing("<value/>")), {260115, {"value", "value"}}},
        {Variable(kNumber, Missing("<value value='none'/>")), {260127, {"none", "v"}}},
        {Variable(kNumber, Missing("<range maximum='1'/>")), {260115, {"minimum", "range"}}},
        {Variable(kNumber, Missing("<range minimum='1'/>")), {260115, {"maximum", "range"}}},
        {Variable(kNumber, Missing("<range minimum='low' maximum='1'/>")),
         {kNotANumber, {"low", "minimum"}}},
        {Variable(kNumber, Missing("<range minimum='HIGHEST' maximum='1'/>")),
         {kNotANumber, {"HIGHEST", "minimum"}}},
        {Variable(kNumber, Missing("<range minimum='1' maximum='LOWEST'/>")),
         {kNotANumber, {"LOWEST", "maximum"}}},
        {Variable(kNumber, Missing("<range minimum='1' maximum='INF'/>")),
         {kNotANumber, {"INF", "maximum"}}},
        {Variable(kNumber, "<var-stats mean='average'/>"), {kNotANumber, {"average", "mean"}}},
        {Variable(kNumber, "<var-stats minimum='1e999'/>"),
         {kNumberTooLarge, {"1e999", "minimum"}}},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(RefusedFor(row.variables), row.refusal) << row.variables;
    }
}

}  // namespace
}  // namespace MCVelscore_850

// Targets: what a document says of the predictions of a field.

#include <cmath>
#include <limits>
#include <memory>

#include <gtest/gtest.h>

#include "dom.h"
#include "host/messages/messages.h"
#include "host/values/numericvalue.h"
#include "host/variables/dictvar.h"
#include "host/variables/targetdeclaration.h"
#include "pmmlreader.h"
#include "vars.h"

namespace MCVelscore_850 {
namespace {

// A dictionary of y and c, and the targets read into it.
class TargetsOf {
public:
    explicit TargetsOf(const std::string& targets, const std::string& schema = "")
        : dom_("<GeneralRegressionModel>" + schema + "<Targets>" + targets +
               "</Targets></GeneralRegressionModel>")
    {
        for (const char* name : {"y", "c"}) {
            DictVarType type;
            type.name = name;
            dictionary_.AddVar(name, new DictVar(type));
        }
        reader_.HandleTargets(dom_.First("Targets"), &dictionary_);
    }
    const TargetDeclaration* Of(const std::string& name) const
    {
        return static_cast<const DictVar*>(dictionary_.GetVar(name))->GetTargetDeclaration();
    }

private:
    Dom dom_;
    PmmlReader reader_;
    BaseDictionary dictionary_;
};

TEST(Targets, AFieldWithoutOneHasNone)
{
    const TargetsOf targets("<Target field='y'/>");
    EXPECT_NE(targets.Of("y"), nullptr);
    EXPECT_EQ(targets.Of("c"), nullptr);
}

TEST(Targets, WithoutAFieldIsForTheTargetOfTheSchema)
{
    for (const char* usage : {"target", "predicted"}) {
        const TargetsOf targets("<Target rescaleFactor='3'/>",
                                "<MiningSchema><MiningField name='c'/><MiningField name='y' "
                                "usageType='" +
                                    std::string(usage) + "'/></MiningSchema>");
        ASSERT_NE(targets.Of("y"), nullptr);
        EXPECT_EQ(targets.Of("y")->rescaleFactor, 3.0);
        EXPECT_EQ(targets.Of("c"), nullptr);
    }
}

TEST(Targets, OfAnUnknownFieldIsRefused)
{
    const Refusal refused{260125, {"q", "DataDictionary", "TransformationDictionary"}};
    EXPECT_EQ(RefusalOf([] { TargetsOf("<Target field='q'/>"); }), refused);
}

TEST(Targets, AnUnknownCastIsRefused)
{
    EXPECT_EQ(RefusalOf([] { TargetsOf("<Target field='y' castInteger='up'/>"); }),
              (Refusal{kUnknownDataType, {"up", "castInteger", "y"}}));
    EXPECT_EQ(RefusalOf([] { TargetsOf("<Target field='y' min='low'/>"); }),
              (Refusal{kNotANumber, {"low", "min"}}));
}

TEST(Targets, ApplyLimitsThenScalesThenCasts)
{
    struct Row {
        const char* attributes;
        double predicted;
        double expected;
    };
    constexpr Row kRows[] = {
        {"", 7.25, 7.25},
        {"min='0' max='5'", -1.0, 0.0},
        {"min='0' max='5'", 7.25, 5.0},
        {"min='0' max='5'", 2.5, 2.5},
        {"rescaleFactor='10' rescaleConstant='-3'", 7.25, 69.5},
        {"max='5' rescaleFactor='10' rescaleConstant='-3'", 7.25, 47.0},
        {"castInteger='round'", 7.25, 7.0},
        {"castInteger='round'", 7.5, 8.0},
        {"castInteger='ceiling'", 7.25, 8.0},
        {"castInteger='floor'", 7.75, 7.0},
        {"castInteger='floor'", -7.25, -8.0},
        {"rescaleFactor='10' castInteger='floor'", 7.29, 72.0},
    };
    for (const Row& row : kRows) {
        const TargetsOf targets("<Target field='y' " + std::string(row.attributes) + "/>");
        EXPECT_EQ(targets.Of("y")->Apply(row.predicted), row.expected) << row.attributes;
    }
}

TEST(Targets, AMissingPredictionStaysMissing)
{
    const TargetsOf targets("<Target field='y' min='0' rescaleConstant='1' castInteger='floor'/>");
    EXPECT_EQ(targets.Of("y")->Apply(NumericValue::GetSysmisValue()),
              NumericValue::GetSysmisValue());
    EXPECT_TRUE(std::isnan(targets.Of("y")->Apply(std::numeric_limits<double>::quiet_NaN())));
}

TEST(Targets, ValuesCarryPriorsDisplayAndDefault)
{
    const TargetsOf targets(
        "<Target field='c'><TargetValue value='a' displayValue='A!' priorProbability='0.25'/>"
        "<TargetValue value='b' priorProbability='0.375'/>"
        "<TargetValue value='d' displayValue='D!' priorProbability='0.375'/></Target>"
        "<Target field='y'><TargetValue defaultValue='4.5'/></Target>");
    const TargetDeclaration& c = *targets.Of("c");
    EXPECT_EQ(c.displayValues,
              (std::vector<std::pair<std::string, std::string>>{{"a", "A!"}, {"d", "D!"}}));
    EXPECT_EQ(*c.DefaultCategory(), "b");  // the first of the largest
    EXPECT_FALSE(c.hasDefault);
    const TargetDeclaration& y = *targets.Of("y");
    EXPECT_TRUE(y.hasDefault);
    EXPECT_EQ(y.defaultValue, 4.5);
    EXPECT_EQ(y.DefaultCategory(), nullptr);
}

TEST(Targets, ACopyOfTheVariableKeepsThem)
{
    const TargetsOf targets("<Target field='y' max='5'/>");
    DictVarType type;
    type.name = "y";
    DictVar var(type);
    var.SetTargetDeclaration(*targets.Of("y"));
    const std::unique_ptr<ScoreDictVar> copy(var.Clone());
    EXPECT_EQ(static_cast<const DictVar&>(*copy).GetTargetDeclaration()->maximum, 5.0);
}

}  // namespace
}  // namespace MCVelscore_850

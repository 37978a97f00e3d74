// Documents of the family that normalizes equations of its own, one a category.

#include <gtest/gtest.h>

#include <cmath>

#include "host/messages/messages.h"
#include "models/normalizedmodel.h"
#include "tests/models/modelfixture.h"
#include "tests/readers/logisticdocument.h"

namespace MCVelscore_850 {
namespace {

using namespace testing;

std::string Extension(const std::string& name, const std::string& value)
{
    return "<Extension name='" + name + "' value='" + value + "'/>";
}

// Target y (a, b, c); y(a) = 0.5 x, y(b) = 0.25, and an equation of c that has a part in no score
// where c is what the others leave.
LogisticDocument Normalized(const std::string& extensions)
{
    LogisticDocument document;
    document.selector = "normalizedRegression";
    document.target =
        "<DataField name='y' optype='ordinal' dataType='string'>"
        "<Value value='a'/><Value value='b'/><Value value='c'/></DataField>";
    document.fields = "<DataField name='x' optype='continuous' dataType='double'/>";
    document.schema = "<MiningField name='y' usageType='target'/><MiningField name='x'/>";
    document.leading = extensions;
    document.parameters = "<Parameter name='p0'/><Parameter name='px'/>";
    document.factors = "";
    document.cells = "<PPCell value='1' predictorName='x' parameterName='px'/>";
    document.betas =
        "<PCell targetCategory='a' parameterName='px' beta='0.5'/>"
        "<PCell targetCategory='b' parameterName='p0' beta='0.25'/>"
        "<PCell targetCategory='c' parameterName='p0' beta='0.125'/>";
    return document;
}

// The probabilities of a, b and c at x = 0.5.
std::vector<double> ScoresOf(const LogisticDocument& document)
{
    const auto model = ReadModel(document.Text());
    Case c;
    c.With("x", 0.5);
    Slot slot;
    EXPECT_TRUE(model->GetScore(&c.Record(), slot.result, true).IsOK());
    return {slot.Percent("a"), slot.Percent("b"), slot.Percent("c")};
}

TEST(NormalizedDocument, IsScoredAsItsExtensionsSay)
{
    using Probabilities = std::vector<double>;
    const std::string none = Extension("normalizationMethod", "none");
    // Every y is 0.25 but that of c: 0.125, which has a part in quotients alone.
    EXPECT_EQ(ScoresOf(Normalized(none)), (Probabilities{0.25, 0.25, 0.5}));
    EXPECT_EQ(ScoresOf(Normalized(none + Extension("remainderCategory", "a"))),
              (Probabilities{0.625, 0.25, 0.125}));
    EXPECT_EQ(ScoresOf(Normalized(Extension("normalizationMethod", "simplemax"))),
              (Probabilities{0.4, 0.4, 0.2}));
    // Cumulative: 0.25 up to a, 0.25 up to b.
    EXPECT_EQ(ScoresOf(Normalized(none + Extension("orderedCategories", "true"))),
              (Probabilities{0.25, 0.0, 0.75}));
    EXPECT_EQ(ScoresOf(Normalized(none + Extension("orderedCategories", "false"))),
              (Probabilities{0.25, 0.25, 0.5}));
}

TEST(NormalizedDocument, NeedsANormalizationThatIsKnownAndACategoryOfTheTarget)
{
    struct Row {
        std::string extensions;
        int code;
        std::vector<std::string> arguments;
    };
    const std::string none = Extension("normalizationMethod", "none");
    const Row rows[] = {
        {"", 260115, {"normalizationMethod", "GeneralRegressionModel"}},
        {Extension("normalizationMethod", "average"),
         260153,
         {"average", "value", "normalizationMethod"}},
        {none + Extension("remainderCategory", "d"), 260127, {"d", "y"}},
    };
    for (const Row& row : rows) {
        const VSException refusal = RefusalOf(Normalized(row.extensions).Text());
        EXPECT_EQ(refusal.GetErrorCode(), row.code) << row.extensions << refusal.GetText();
        EXPECT_EQ(refusal.GetArguments(), row.arguments) << row.extensions;
    }
}

}  // namespace
}  // namespace MCVelscore_850

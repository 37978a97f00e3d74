#include <gtest/gtest.h>

#include "tests/engine/adapted.h"

namespace MCVelscore_850 {
namespace {

TEST(GeneralizedLinear, WithoutASelectorGetsOne)
{
    for (const char* named : {"", " algorithmName='glm'", " modelName='my model'",
                              " algorithmName='glm' modelName='GZLM'"}) {
        Parts parts;
        parts.model = std::string("modelType='generalizedLinear'") + named;
        const Adapted adapted(parts.Text());
        EXPECT_EQ(adapted.Rules(), "generalized-linear") << named;
        EXPECT_TRUE(adapted.Has("algorithmName='GZLM'")) << named;
    }
}

TEST(GeneralizedLinear, WithASelectorStays)
{
    for (const char* named :
         {" algorithmName='GZLM'", " modelName='GEE'", " algorithmName='generalLinearModel'",
          " algorithmName='Cox'", " modelName='CSCox'"}) {
        Parts parts;
        parts.model = std::string("modelType='generalizedLinear'") + named;
        EXPECT_TRUE(Adapted(parts.Text()).Untouched()) << named;
    }
}

TEST(GeneralizedLinear, OtherModelTypesStay)
{
    Parts parts;
    parts.model = "modelType='generalLinear' algorithmName='glm'";
    EXPECT_TRUE(Adapted(parts.Text()).Untouched());
}

}  // namespace
}  // namespace MCVelscore_850

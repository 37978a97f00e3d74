#include "host/variables/scoredictionary.h"

#include <gtest/gtest.h>

#include "vars.h"

namespace MCVelscore_850 {
namespace {

// A variable that counts itself.
class CountedVar final : public DictVar {
public:
    explicit CountedVar(int& alive) : DictVar(NumberType()), alive_(alive) { ++alive_; }
    ~CountedVar() override { --alive_; }

private:
    int& alive_;
};

TEST(BaseDictionary, VariablesStandInTheOrderOfTheirAdding)
{
    BaseDictionary dictionary;
    auto* z = new DictVar(NumberType());
    auto* a = new DictVar(NumberType());
    EXPECT_TRUE(dictionary.AddVar("z", z));
    EXPECT_TRUE(dictionary.AddVar("a", a));
    EXPECT_EQ(dictionary.GetVarCount(), 2);
    EXPECT_EQ(dictionary.GetVars(), (std::vector<ScoreDictVar*>{z, a}));
    EXPECT_EQ(dictionary.GetVar("a"), a);
    EXPECT_EQ(dictionary.GetVar("A"), nullptr);
}

TEST(BaseDictionary, VariableIsFoundUnderTheNameItWasAddedWith)
{
    BaseDictionary dictionary;
    auto* var = new DictVar(NumberType());  // its own name is "v"
    dictionary.AddVar("x", var);
    EXPECT_EQ(dictionary.GetVar("x"), var);
    EXPECT_EQ(dictionary.GetVar("v"), nullptr);
}

TEST(BaseDictionary, SecondVariableOfANameIsReleasedAndRefused)
{
    int alive = 0;
    BaseDictionary dictionary;
    auto* first = new CountedVar(alive);
    EXPECT_TRUE(dictionary.AddVar("x", first));
    EXPECT_FALSE(dictionary.AddVar("x", new CountedVar(alive)));
    EXPECT_EQ(alive, 1);
    EXPECT_EQ(dictionary.GetVar("x"), first);
    EXPECT_EQ(dictionary.GetVarCount(), 1);
    EXPECT_FALSE(dictionary.AddVar("y", nullptr));
}

TEST(BaseDictionary, OwnsItsVariables)
{
    int alive = 0;
    {
        BaseDictionary dictionary;
        dictionary.AddVar("x", new CountedVar(alive));
        dictionary.AddVar("y", new CountedVar(alive));
        EXPECT_EQ(alive, 2);
    }
    EXPECT_EQ(alive, 0);
}

}  // namespace
}  // namespace MCVelscore_850

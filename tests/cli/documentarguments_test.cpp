#include "cli/documentarguments.h"

#include <gtest/gtest.h>

#include "cli/commands.h"
#include "engine/documents/loadedmodel.h"

namespace MCVelscore_850 {
namespace {

std::string RefusalOf(const DocumentArguments& arguments)
{
    try {
        LoadOptionsOf(arguments);
    } catch (const UsageError& refusal) {
        return refusal.what();
    }
    return {};
}

TEST(DocumentArguments, BecomeOptionsOfLoading)
{
    DocumentArguments arguments;
    EXPECT_FALSE(LoadOptionsOf(arguments).asIs);
    EXPECT_TRUE(LoadOptionsOf(arguments).allowed.empty());
    arguments.allowed = {"misspelt-attribute"};
    EXPECT_EQ(LoadOptionsOf(arguments).allowed, arguments.allowed);
    arguments.allowed.clear();
    arguments.asIs = true;
    EXPECT_TRUE(LoadOptionsOf(arguments).asIs);
}

TEST(DocumentArguments, RulesThatCannotBeAllowedAreRefusedByName)
{
    DocumentArguments arguments;
    arguments.allowed = {"misspelt-attribute", "mispelt-attribute"};
    EXPECT_EQ(RefusalOf(arguments).find("--allow mispelt-attribute: "), 0u) << RefusalOf(arguments);
    EXPECT_NE(RefusalOf(arguments).find("'misspelt-attribute'"), std::string::npos)
        << RefusalOf(arguments);
    // an adaptation is no fault
    arguments.allowed = {"short-version"};
    EXPECT_EQ(RefusalOf(arguments).find("--allow short-version: "), 0u) << RefusalOf(arguments);
}

TEST(DocumentArguments, NothingIsAllowedWhereNothingIsLookedFor)
{
    DocumentArguments arguments;
    arguments.allowed = {"misspelt-attribute"};
    arguments.asIs = true;
    EXPECT_EQ(RefusalOf(arguments),
              "--allow has no meaning with --as-is, which looks for no faults");
}

}  // namespace
}  // namespace MCVelscore_850

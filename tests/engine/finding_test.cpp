// What is told of a finding, and how findings are counted.

#include <gtest/gtest.h>

#include "tests/engine/adapted.h"
#include "tests/engine/audited.h"

namespace MCVelscore_850 {
namespace {

TEST(Audited, TellsFindingsByPlace)
{
    Parts parts;
    parts.root = "PMML version='4.4.1'";
    parts.schema += "<MiningField name='a'/>";
    const Audited audited(parts.Text());
    EXPECT_EQ(audited.Rules(Answer::Adapted), "short-version repeated-mining-field");
    EXPECT_EQ(audited.Rules(Answer::Fault), "");
    EXPECT_TRUE(audited.Has("short-version"));
    EXPECT_EQ(audited.Of("short-version").place.line, 1u);
    EXPECT_EQ(audited.Of("repeated-mining-field").place.line, 2u);
    EXPECT_EQ(audited.Of("no-estimates").rule, nullptr);
}

}  // namespace
}  // namespace MCVelscore_850

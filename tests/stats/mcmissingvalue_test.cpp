#include "stats/mcmissingvalue.h"

#include <bit>
#include <cstdint>
#include <type_traits>

#include "tests/stats/support/expect.h"

namespace {

using MCCommon_850::MCMV;

TEST(MissingValue, IsTheMostNegativeFiniteDouble)
{
    EXPECT_EQ(MCMV::Missing(), -1.7976931348623157e+308);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(MCMV::Missing()), 0xFFEFFFFFFFFFFFFFu);
    EXPECT_EQ(MCMV::gMissingValue, MCMV::Missing());
    static_assert(std::is_same_v<decltype(MCMV::gMissingValue), double>);
}

TEST(MissingValue, IsFoundByEqualityAlone)
{
    EXPECT_TRUE(MCMV::IsMissing(-1.7976931348623157e+308));
    EXPECT_FALSE(MCMV::IsMissing(-1.7976931348623155e+308));  // its neighbour
    EXPECT_FALSE(MCMV::IsMissing(-expect::kInf));
    EXPECT_FALSE(MCMV::IsMissing(0.0));
}

TEST(MissingValue, NaNPassesForANumber) { EXPECT_FALSE(MCMV::IsMissing(expect::kNaN)); }

// Read while this file's own initialisers run: the value stands before any of them.
const double kReadDuringLoad = MCMV::Missing();
TEST(MissingValue, StandsBeforeOtherInitialisersRun)
{
    EXPECT_EQ(kReadDuringLoad, -1.7976931348623157e+308);
}

}  // namespace

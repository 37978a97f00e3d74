#include "engine/scoring/lentarena.h"

#include <gtest/gtest.h>

namespace MCVelscore_850 {
namespace {

TEST(LentArena, IsLentToTheNextRunOfAsManyThreads)
{
    const oneapi::tbb::task_arena* first = nullptr;
    {
        LentArena arena(3);
        EXPECT_EQ(arena.Get().max_concurrency(), 3);
        first = &arena.Get();
    }
    LentArena other(2);
    EXPECT_EQ(other.Get().max_concurrency(), 2);
    EXPECT_NE(&other.Get(), first);
    LentArena next(3);
    EXPECT_EQ(&next.Get(), first);
}

TEST(LentArena, RunsAtTheSameTimeHaveArenasOfTheirOwn)
{
    LentArena first(3);
    LentArena second(3);
    EXPECT_NE(&first.Get(), &second.Get());
}

}  // namespace
}  // namespace MCVelscore_850

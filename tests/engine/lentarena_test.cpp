#include "engine/scoring/lentarena.h"

#include <gtest/gtest.h>
#include <oneapi/tbb/parallel_pipeline.h>

#include "tests/residentbytes.h"
#include "tests/system/runcommand.h"

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

// Of an arena that goes the library keeps some 13 KB.
TEST(LentArena, RunsLeaveNoMemoryBehind)
{
    namespace tbb = oneapi::tbb;
    constexpr int kRuns = 2000;
    constexpr long kMostGrowth = long{8} << 20;
    const auto run = [] {
        int items = 0;
        const auto take = [&](tbb::flow_control& control) {
            if (++items > 5) control.stop();
            return items;
        };
        LentArena arena(2);
        arena.Get().execute([&] {
            tbb::parallel_pipeline(
                5, tbb::make_filter<void, int>(tbb::filter_mode::serial_in_order, take) &
                       tbb::make_filter<int, void>(tbb::filter_mode::parallel, [](int) {}));
        });
    };
    run();
    const long before = ResidentBytes();
    for (int i = 0; i < kRuns; ++i) run();
    if (!kIsSanitized) {  // which keeps what was freed
        EXPECT_LE(ResidentBytes(), before + kMostGrowth);
    }
}

}  // namespace
}  // namespace MCVelscore_850

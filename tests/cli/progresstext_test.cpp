#include "cli/progresstext.h"

#include <gtest/gtest.h>

namespace MCVelscore_850 {
namespace {

struct Shown {
    Progress progress;
    double seconds;
    const char* text;
};

TEST(ProgressText, TellsShareRateAndTheTimeThatIsLeft)
{
    constexpr uint64_t kMebibyte = uint64_t{1} << 20;
    for (const Shown& shown :
         {Shown{{50, 200, 3000}, 10.0, " 25 %, 3000 rows, 300 rows/s, 30 s left"},
          Shown{{1, 10, 100}, 10.0, " 10 %, 100 rows, 10 rows/s, 1 min 30 s left"},
          Shown{{1, 1000, 5}, 10.0, "  0 %, 5 rows, 0 rows/s, 2 h 46 min left"},
          Shown{{200, 200, 8}, 2.0, "100 %, 8 rows, 4 rows/s, 0 s left"},
          // a table that grows while it is read
          Shown{{300, 200, 8}, 2.0, "100 %, 8 rows, 4 rows/s, 0 s left"},
          Shown{{0, 200, 0}, 1.0, "  0 %, 0 rows, 0 rows/s"},
          // of a pipe nobody knows the size
          Shown{{5 * kMebibyte, 0, 1000}, 20.0, "5 MiB read, 1000 rows, 50 rows/s"}}) {
        EXPECT_EQ(ProgressText(shown.progress, shown.seconds), shown.text);
    }
}

TEST(ProgressText, SharesAreOneAtMost)
{
    EXPECT_EQ(ShareOf({1, 4, 0}), 0.25);
    EXPECT_EQ(ShareOf({5, 4, 0}), 1.0);
}

}  // namespace
}  // namespace MCVelscore_850

// Which numbers of a column of the C data interface a double holds exactly.

#include "engine/tables/arrowvalues.h"

#include <cstdint>
#include <limits>

#include <gtest/gtest.h>

#include "engine/tables/arrowtype.h"

namespace MCVelscore_850 {
namespace {

// True where a column of the one number is read as doubles, and as this one then.
bool IsReadAs(const char* format, uint64_t bits, double expected)
{
    const void* const buffers[] = {nullptr, &bits};
    ArrowArray array{};
    array.length = 1;
    array.n_buffers = 2;
    array.buffers = const_cast<const void**>(buffers);
    array.release = [](ArrowArray*) {};
    const ArrowValues values(array, ArrowTypeOf(format).value(), "x", 0, 1);
    double number = std::numeric_limits<double>::quiet_NaN();
    return values.ReadNumbers(0, 1, &number) && number == expected;
}

TEST(ArrowValues, AreNumbersUpToWhatADoubleHolds)
{
    constexpr int64_t kMost = int64_t{1} << 53;
    const struct {
        const char* format;
        int64_t whole;
        bool isExact;
    } kRows[] = {
        {"l", 0, true},          {"l", -1, true},          {"l", kMost, true},
        {"l", kMost + 1, false}, {"l", -kMost, true},      {"l", -kMost - 1, false},
        {"L", 1, true},          {"L", kMost, true},       {"L", kMost + 1, false},
        {"L", -1, false},        {"i", -2147483648, true}, {"c", -128, true},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(
            IsReadAs(row.format, static_cast<uint64_t>(row.whole), static_cast<double>(row.whole)),
            row.isExact)
            << row.format << ' ' << row.whole;
    }
}

}  // namespace
}  // namespace MCVelscore_850

#include "engine/tables/bytescan.h"

#include <string>

#include <gtest/gtest.h>

namespace MCVelscore_850 {
namespace {

// Bytes that are searched, around a text too, where they must not count.
std::string Surrounded(const std::string& text)
{
    return std::string(kScanWidth, ',') + text + std::string(kScanWidth, ',');
}

TEST(ByteScan, FindsEachByteAtEachPlace)
{
    const ByteScan<3> scan({',', '\n', '\xFF'});
    for (size_t size = 0; size <= 3 * kScanWidth; ++size) {
        const std::string none = Surrounded(std::string(size, 'x'));
        const char* const begin = none.data() + kScanWidth;
        EXPECT_EQ(scan.Find(begin, begin + size), begin + size) << size;
        EXPECT_EQ(scan.Count(begin, begin + size), 0u) << size;
        for (const char byte : {',', '\n', '\xFF'}) {
            for (size_t place = 0; place < size; ++place) {
                std::string text(size, 'x');
                text[place] = byte;
                if (place + 3 < size) text[place + 3] = '\n';
                const std::string whole = Surrounded(text);
                const char* const start = whole.data() + kScanWidth;
                EXPECT_EQ(scan.Find(start, start + size), start + place) << size;
                EXPECT_EQ(scan.Count(start, start + size), place + 3 < size ? 2u : 1u) << size;
            }
        }
    }
}

TEST(ByteScan, HasABitForEachOfTheBytes)
{
    const ByteScan<2> scan({'"', '\r'});
    const std::string text = "\"a\rb\r\"cdefghijk\"";
    ASSERT_EQ(text.size(), kScanWidth);
    EXPECT_EQ(scan.At(text.data()), 0b1000'0000'0011'0101u);
}

// Counts of single bytes are added up before they come to 256.
TEST(ByteScan, CountsMoreThanAByteHolds)
{
    const ByteScan<1> scan({'x'});
    for (const size_t size : {255 * kScanWidth, 256 * kScanWidth, 600 * kScanWidth + 5}) {
        const std::string text = std::string(size, 'x') + std::string(kScanWidth, ' ');
        EXPECT_EQ(scan.Count(text.data(), text.data() + size), size);
    }
}

}  // namespace
}  // namespace MCVelscore_850

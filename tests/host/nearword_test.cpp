#include "host/messages/nearword.h"

#include <gtest/gtest.h>

namespace MCVelscore_850 {
namespace {

using Words = std::vector<std::string>;

TEST(NearWord, DistanceCountsLettersThatAreInsertedDroppedChangedOrSwapped)
{
    struct Sample {
        const char* one;
        const char* other;
        size_t distance;
    };
    for (const Sample& sample :
         {Sample{"", "", 0}, Sample{"", "abc", 3}, Sample{"keep", "keeep", 1},
          Sample{"keep", "kep", 1}, Sample{"keep", "kelp", 1}, Sample{"keep", "kepe", 1},
          Sample{"weight", "wieghts", 2}, Sample{"kitten", "sitting", 3}, Sample{"SEX", "sex", 0},
          Sample{"gr\xC3\xB6\xC3\x9F"
                 "e",
                 "groesse", 4},
          Sample{"\xC3\xA4", "\xC3\xB6", 1}}) {
        EXPECT_EQ(WordDistance(sample.one, sample.other), sample.distance)
            << sample.one << " " << sample.other;
        EXPECT_EQ(WordDistance(sample.other, sample.one), sample.distance)
            << sample.other << " " << sample.one;
    }
}

TEST(NearWord, OneLetterMayBeWrongInUpToFiveAndTwoInLongerNames)
{
    struct Sample {
        const char* word;
        Words candidates;
        const char* near;
    };
    const Sample kSamples[] = {
        {"keeep", {"out", "keep"}, "keep"},
        {"wieght", {"height", "weight"}, "weight"},  // two letters to the first, one to the second
        {"heigth", {"weight", "height"}, "height"},
        {"aeg", {"id", "age"}, "age"},
        {"SEX", {"x", "sex"}, "sex"},
        {"price", {"prices"}, "prices"},
        {"hourz", {"hours"}, "hours"},
        {"huorz", {"hours"}, ""},           // two in five
        {"wieghtz", {"weight"}, "weight"},  // two in six
        {"wieghtzz", {"weight"}, ""},
        {"y", {"x"}, ""},  // no letter is right
        {"X", {"x"}, "x"},
        {"", {"x"}, ""},
        {"keep", {"keep", "keeep"}, ""},  // nothing is misspelt
        {"gender", {"sex"}, ""},
        {"x", {}, ""},
    };
    for (const Sample& sample : kSamples) {
        EXPECT_EQ(NearWord(sample.word, sample.candidates), sample.near) << sample.word;
    }
}

TEST(NearWord, AVeryLongWordIsNearToNone)
{
    EXPECT_EQ(NearWord(std::string(1 << 20, 'x'), Words{std::string((1 << 20) + 1, 'x')}), "");
}

}  // namespace
}  // namespace MCVelscore_850

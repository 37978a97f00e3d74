#include "engine/tables/rowtext.h"

#include <charconv>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace MCVelscore_850 {
namespace {

TEST(RowText, QuotesOnlyWhatNeedsIt)
{
    RowText rows;
    for (const char* text : {"plain", "a,b", "say \"x\"", "two\nlines", "", " blank ", "a\rb"}) {
        rows.AddText(text);
    }
    rows.EndRow();
    EXPECT_EQ(rows.Text(), "plain,\"a,b\",\"say \"\"x\"\"\",\"two\nlines\",, blank ,\"a\rb\"\n");
}

TEST(RowText, NumbersReadBackToTheSameDouble)
{
    const double numbers[] = {0.1,      1.0 / 3.0, 1e300, -2.5e-308, 5e-324, 123456789012345680.0,
                              0.1 + 0.2};
    RowText rows;
    for (const double number : numbers) rows.AddNumber(number);
    rows.EndRow();
    EXPECT_TRUE(rows.Text().starts_with("0.1,"));
    const char* place = rows.Text().data();
    for (const double number : numbers) {
        double read = 0.0;
        place = std::from_chars(place, rows.Text().data() + rows.Text().size(), read).ptr + 1;
        EXPECT_EQ(read, number);
    }
}

TEST(RowText, FewerDigitsAreThoseOfPrintf)
{
    struct Sample {
        double number;
        int digits;
        const char* written;  // by printf %.*g
    };
    for (const Sample& sample :
         {Sample{1.0 / 3.0, 4, "0.3333"}, Sample{2.0 / 3.0, 1, "0.7"}, Sample{0.5, 6, "0.5"},
          Sample{123456.0, 3, "1.23e+05"}, Sample{-1e-7, 2, "-1e-07"},
          Sample{0.1, 17, "0.10000000000000001"}, Sample{99.96, 3, "100"}}) {
        RowText rows({.digits = sample.digits});
        rows.AddNumber(sample.number);
        rows.AddLabel(123456.0);
        rows.AddWhole(1234567);
        rows.EndRow();
        EXPECT_EQ(rows.Text(), std::string(sample.written) + ",123456,1234567\n");
    }
}

struct Form {
    RowForm form;
    const char* written;  // of -1.5, 1e300, 17 and 7
};

class NumbersIn : public testing::TestWithParam<Form> {};
INSTANTIATE_TEST_SUITE_P(Forms, NumbersIn,
                         testing::Values(Form{{';', ','}, "-1,5;1e+300;17;7\n"},
                                         Form{{',', ','}, "\"-1,5\",1e+300,17,7\n"},
                                         Form{{'-', '.'}, "\"-1.5\"-1e+300-17-7\n"},
                                         Form{{'1', '.'}, "\"-1.5\"1\"1e+300\"1\"17\"17\n"},
                                         Form{{'e', '.'}, "-1.5e\"1e+300\"e17e7\n"},
                                         Form{{'+', '.'}, "-1.5+\"1e+300\"+17+7\n"}),
                         [](const auto& each) { return std::to_string(each.index); });

TEST_P(NumbersIn, StandInQuotesWhereTheyHoldTheDelimiter)
{
    RowText rows(GetParam().form);
    rows.AddNumber(-1.5);
    rows.AddLabel(1e300);
    rows.AddWhole(17);
    rows.AddNumber(7);
    rows.EndRow();
    EXPECT_EQ(rows.Text(), GetParam().written);
}

TEST(RowText, HasWholeRowsAndTheirEnds)
{
    RowText rows;
    rows.AddText("a");
    rows.EndRow();
    rows.AddEmpty();
    rows.AddEmpty();
    rows.EndRow();
    rows.AddText("half");
    EXPECT_EQ(rows.Text(), "a\n,\n");
    EXPECT_EQ(rows.RowEnds(), (std::vector<size_t>{2, 4}));
    rows.Clear();
    rows.AddText("b");
    rows.EndRow();
    EXPECT_EQ(rows.Text(), "b\n");
}

}  // namespace
}  // namespace MCVelscore_850

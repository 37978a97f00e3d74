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

const std::vector<std::string> kNames{"a", "say \"x\""};

TEST(RowTextOfJson, IsAnObjectARowWithoutAHeader)
{
    RowText rows({.delimiter = '.', .decimal = ',', .table = TableForm::JsonLines});
    rows.SetColumns(kNames);
    rows.AddHeader(kNames);
    rows.AddNumber(-1.5);
    rows.AddEmpty();
    rows.EndRow();
    rows.AddWhole(17);
    rows.AddJson("1e999");
    rows.EndRow();
    EXPECT_EQ(rows.Text(),
              "{\"a\":-1.5,\"say \\\"x\\\"\":null}\n{\"a\":17,\"say \\\"x\\\"\":1e999}\n");
    EXPECT_EQ(rows.RowEnds().size(), 2u);
}

TEST(RowTextOfJson, HasNullForNumbersThatJsonHasNot)
{
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    for (const int digits : {0, 5}) {
        RowText rows({.digits = digits, .table = TableForm::JsonLines});
        rows.SetColumns(kNames);
        for (const double number : {kInfinity, -kInfinity, kNaN}) {
            rows.AddNumber(number);
            rows.AddLabel(number);
            rows.EndRow();
            EXPECT_EQ(rows.Text(), "{\"a\":null,\"say \\\"x\\\"\":null}\n");
            rows.Clear();
        }
    }
}

TEST(RowTextOfJson, EscapesWhatJsonAsksFor)
{
    struct Sample {
        std::string text;
        std::string written;
    };
    // RFC 8259, section 7; a byte that isn't UTF-8 is U+FFFD, EF BF BD.
    for (const Sample& sample :
         {Sample{"", ""}, Sample{"a,b;'/\x7F", "a,b;'/\x7F"}, Sample{"\"\\", "\\\"\\\\"},
          Sample{std::string("\n\x1F\0", 3), "\\u000a\\u001f\\u0000"},
          Sample{"\xC3\xA9\xF0\x9D\x84\x9E", "\xC3\xA9\xF0\x9D\x84\x9E"},
          Sample{"a\xFF"
                 "b\xC3",
                 "a\xEF\xBF\xBD"
                 "b\xEF\xBF\xBD"},
          Sample{"\xED\xA0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"}}) {
        RowText rows({.table = TableForm::JsonLines});
        rows.SetColumns(std::span(kNames).first(1));
        rows.AddText(sample.text);
        rows.EndRow();
        EXPECT_EQ(rows.Text(), "{\"a\":\"" + sample.written + "\"}\n");
    }
}

}  // namespace
}  // namespace MCVelscore_850

#include "engine/tables/recordcheck.h"

#include <gtest/gtest.h>

#include "host/messages/messages.h"

namespace MCVelscore_850 {
namespace {

using namespace std::string_literals;
using Fields = std::vector<std::string>;

struct Record {
    std::string text;
    size_t columns;  // 0: a header
    int code;
    uint64_t found;
};

TEST(RecordCheck, TellsTheFirstThingThatIsWrong)
{
    const std::string longest(kMaxField, 'a');
    const std::vector<Record> kRecords = {
        {"1,2", 2, 0, 2},
        {"1,2\r\n", 2, 0, 2},
        {"1,", 2, 0, 2},
        {",", 2, 0, 2},
        {"\"a,\"\"b\nc\",2\n", 2, 0, 2},
        {"\"\",\"\"", 2, 0, 2},
        {"1", 2, kRowLength, 1},
        {"1,2,3", 2, kRowLength, 3},
        {"", 2, kRowLength, 0},
        {"\n", 2, kRowLength, 0},
        {"", 1, 0, 0},  // a blank line is an empty field
        {"1,2,3", 0, 0, 3},
        {"", 0, 0, 0},
        {"1,\"2", 2, kUnclosedQuote, 1},
        {"1,\"", 2, kUnclosedQuote, 1},
        {"1,\"2\"\"", 2, kUnclosedQuote, 1},
        {"1\"2,3", 2, kStrayQuote, 0},
        {"\"1\"2,3", 2, kStrayQuote, 0},
        {"1, \"2\"", 2, kStrayQuote, 1},
        {"1,\0"s, 2, kNulByte, 1},
        {"1,\"a\0\""s, 2, kNulByte, 1},
        {"1,\"a\"\0"s, 2, kNulByte, 1},
        {"1,2,3\"", 2, kStrayQuote, 2},  // before the length
        {longest + ",1", 2, 0, 2},
        {longest + "a,1", 2, kFieldTooLong, 0},
        {"\"" + longest + "\",1", 2, 0, 2},
        {"\"" + longest + "a\",1", 2, kFieldTooLong, 0},
        {"\"" + longest + "a", 2, kFieldTooLong, 0},
        {"\"" + std::string(2 * kMaxField, '"') + "\"", 1, 0, 1}};  // two for each
    for (const Record& record : kRecords) {
        const RecordFault fault = CheckRecord(record.text, ',', record.columns);
        EXPECT_EQ(fault.code, record.code) << record.text.substr(0, 30);
        EXPECT_EQ(fault.found, record.found) << record.text.substr(0, 30);
    }
}

TEST(RecordCheck, LimitOfARowLeavesFieldsTooManyOut)
{
    std::string full;  // just kMaxRow bytes in 16 fields
    for (size_t i = 0; i < kMaxRow / kMaxField; ++i) {
        full += std::string(i == 0 ? "" : ",") + std::string(kMaxField, 'a');
    }
    EXPECT_EQ(CheckRecord(full, ',', 16).code, 0);
    EXPECT_EQ(CheckRecord(full + ",", ',', 17).code, 0);
    EXPECT_EQ(CheckRecord(full + ",b", ',', 17).code, kRowTooLong);
    EXPECT_EQ(CheckRecord(full + ",b", ',', 0).code, kRowTooLong);
    EXPECT_EQ(CheckRecord(full + ",b", ',', 16).code, kRowLength);
}

TEST(RecordCheck, LimitOfColumnsIsAHeadersToo)
{
    const std::string most(kMaxColumns - 1, ',');
    EXPECT_EQ(CheckRecord(most, ',', 0).code, 0);
    EXPECT_EQ(CheckRecord(most + ",", ',', 0).code, kTooManyColumns);
}

TEST(RecordCheck, FieldsHaveNoQuotes)
{
    EXPECT_EQ(FieldsOf("1,2\r\n", ','), (Fields{"1", "2"}));
    EXPECT_EQ(FieldsOf("\"a,\"\"b\"\"\",\"\",", ','), (Fields{"a,\"b\"", "", ""}));
    EXPECT_EQ(FieldsOf("a,b;c", ';'), (Fields{"a,b", "c"}));
    EXPECT_EQ(FieldsOf("\n", ','), Fields{});
}

TEST(RecordCheck, FailureTellsTableRowAndLimit)
{
    EXPECT_STREQ(FailureOf({kRowLength, 3}, "t.csv", 7, 2).what(),
                 "t.csv: row 7 has 3 fields, the header 2");
    EXPECT_STREQ(FailureOf({kFieldTooLong}, "t.csv", 7, 2).what(),
                 "t.csv: row 7 has a field of more than 1048576 bytes; is a quote open?");
    EXPECT_STREQ(FailureOf({kRowTooLong}, "t.csv", 7, 2).what(),
                 "t.csv: row 7 has more than 16777216 bytes; is a line end lacking?");
    EXPECT_STREQ(FailureOf({kTooManyColumns}, "t.csv", 0, 0).what(),
                 "t.csv has more than 1048576 columns; is a line end lacking?");
    EXPECT_STREQ(FailureOf({kUnclosedQuote}, "t.csv", 7, 2).what(),
                 "t.csv: row 7 opens a quote that is never closed");
}

}  // namespace
}  // namespace MCVelscore_850

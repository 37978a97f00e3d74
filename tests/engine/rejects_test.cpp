#include "engine/scoring/rejects.h"

#include <gtest/gtest.h>

#include "engine/tables/rowtext.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {
namespace {

struct Torn {
    RecordFault fault;
    const char* word;
};

TEST(RejectTable, HasAClassForEachFaultOfARecord)
{
    for (const Torn& torn :
         {Torn{{kRowLength, 1}, "too few fields"}, Torn{{kRowLength, 0}, "too few fields"},
          Torn{{kRowLength, 3}, "too many fields"}, Torn{{kUnclosedQuote}, "open quote"},
          Torn{{kStrayQuote}, "stray quote"}, Torn{{kNulByte}, "encoding"},
          Torn{{kRowEncoding}, "encoding"}, Torn{{kFieldTooLong}, "too long"},
          Torn{{kRowTooLong}, "too long"}}) {
        RowText rows;
        RejectTable::WriteTorn(rows, "a,b.csv", {{7, 4096, "1,\xE9"}, torn.fault}, 2);
        EXPECT_EQ(rows.Text(), "\"a,b.csv\",7,4096,," + std::to_string(torn.fault.code) + "," +
                                   torn.word + ",,\"1,\\xE9\"\n");
    }
}

struct Refused {
    long code;
    std::optional<std::string_view> text;
    bool isMissing;
    const char* word;
};

TEST(RejectTable, HasAClassForEachRowWithoutAScore)
{
    const std::string field = "x";
    for (const Refused& refused :
         {Refused{kCaseTextNotANumber, "abc", false, "not a number,abc"},
          Refused{kCaseTextNotADateTime, "1.1.", false, "not a date,1.1."},
          Refused{kCaseInvalidValue, "q", false, "invalid,q"}, Refused{90029, "", true, "missing,"},
          Refused{90029, "q", false, "invalid,q"},
          Refused{90015, std::nullopt, false, "refused by the model,"}}) {
        RowText rows;
        RejectTable::WriteNotScored(rows, "t.csv", {1, 5, "q"},
                                    {refused.code, &field, refused.text}, refused.isMissing);
        EXPECT_EQ(rows.Text(),
                  "t.csv,1,5,x," + std::to_string(refused.code) + "," + refused.word + ",q\n");
    }
}

TEST(RejectTable, BlamesNoColumnWhereNoneIsKnown)
{
    RowText rows;
    RejectTable::WriteNotScored(rows, "t.csv", {1, 5, "1,2"}, {90028}, false);
    EXPECT_EQ(rows.Text(), "t.csv,1,5,,90028,refused by the model,,\"1,2\"\n");
}

}  // namespace
}  // namespace MCVelscore_850

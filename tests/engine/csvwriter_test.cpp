#include "engine/tables/csvwriter.h"

#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <sstream>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "engine/messages/failure.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {
namespace {

class CsvWriterTest : public testing::Test {
protected:
    CsvWriterTest() : file_(testing::TempDir() + "csvwriter_" + std::to_string(::getpid())) {}
    ~CsvWriterTest() override { std::remove(file_.c_str()); }
    std::string Written() const
    {
        std::ifstream in(file_, std::ios::binary);
        std::stringstream text;
        text << in.rdbuf();
        return text.str();
    }
    std::string file_;
};

TEST_F(CsvWriterTest, QuotesOnlyWhatNeedsIt)
{
    CsvWriter writer(file_);
    for (const char* text : {"plain", "a,b", "say \"x\"", "two\nlines", "", " blank ", "a\rb"}) {
        writer.AddText(text);
    }
    writer.EndRow();
    writer.Close();
    EXPECT_EQ(Written(), "plain,\"a,b\",\"say \"\"x\"\"\",\"two\nlines\",, blank ,\"a\rb\"\n");
}

TEST_F(CsvWriterTest, NumbersReadBackToTheSameDouble)
{
    const double numbers[] = {0.1,      1.0 / 3.0, 1e300, -2.5e-308, 5e-324, 123456789012345680.0,
                              0.1 + 0.2};
    CsvWriter writer(file_);
    for (const double number : numbers) writer.AddNumber(number);
    writer.EndRow();
    writer.Close();
    std::istringstream line(Written());
    std::string text;
    for (const double number : numbers) {
        ASSERT_TRUE(std::getline(line, text, ','));
        EXPECT_EQ(std::strtod(text.c_str(), nullptr), number) << text;
    }
    EXPECT_TRUE(Written().starts_with("0.1,"));
}

TEST_F(CsvWriterTest, OtherDelimiterAndDecimalMark)
{
    CsvWriter writer(file_, ';', ',');
    writer.AddNumber(2.5);
    writer.AddText("a,b");
    writer.AddText("c;d");
    writer.EndRow();
    writer.Close();
    EXPECT_EQ(Written(), "2,5;a,b;\"c;d\"\n");
}

TEST_F(CsvWriterTest, DecimalCommaBetweenCommasStandsInQuotes)
{
    CsvWriter writer(file_, ',', ',');
    writer.AddNumber(2.5);
    writer.AddNumber(3);
    writer.EndRow();
    writer.Close();
    EXPECT_EQ(Written(), "\"2,5\",3\n");
}

TEST_F(CsvWriterTest, NumbersThatHoldTheDelimiterStandInQuotes)
{
    struct Sample {
        char delimiter;
        double number;
        const char* written;
    };
    for (const Sample& sample :
         {Sample{'-', -1.5, "\"-1.5\"-7\n"}, Sample{'1', 21.5, "\"21.5\"17\n"},
          Sample{'e', 1e300, "\"1e+300\"e7\n"}, Sample{'+', 1e300, "\"1e+300\"+7\n"}}) {
        CsvWriter writer(file_, sample.delimiter);
        writer.AddNumber(sample.number);
        writer.AddNumber(7);
        writer.EndRow();
        writer.Close();
        EXPECT_EQ(Written(), sample.written);
    }
}

TEST_F(CsvWriterTest, RowsWrittenLeaveTheHeaderOut)
{
    CsvWriter writer(file_);
    for (int row = 0; row < 3; ++row) {
        writer.AddText("x");
        writer.EndRow();
    }
    EXPECT_EQ(writer.RowsWritten(), 0);  // still in the buffer
    writer.Flush();
    EXPECT_EQ(writer.RowsWritten(), 2);
}

TEST_F(CsvWriterTest, UnfinishedRowIsNeverWritten)
{
    {
        CsvWriter writer(file_);
        writer.AddText("whole");
        writer.EndRow();
        writer.AddText("half");
        writer.Close();
    }
    EXPECT_EQ(Written(), "whole\n");
}

TEST_F(CsvWriterTest, FullDeviceFailsWithNoRowsWritten)
{
    CsvWriter writer("/dev/full");
    writer.AddText("x");
    writer.EndRow();
    try {
        writer.Close();
        FAIL() << "/dev/full took a row";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Kind(), FailureKind::Output);
        EXPECT_EQ(failure.Code(), kOutputFull);
        EXPECT_EQ(writer.RowsWritten(), 0);
    }
}

// The largest size of a file stands for a full disk: a write there comes back short, too.
TEST_F(CsvWriterTest, FullDiskLeavesWholeRowsInARegularFile)
{
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{1000, before.rlim_max};
    CsvWriter writer(file_);
    const std::string row = "0123456789abcdef";  // 17 bytes with its end: 1000 is in a row's midst
    for (int i = 0; i < 100; ++i) {
        writer.AddText(row);
        writer.EndRow();
    }
    int code = 0;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    try {
        writer.Close();
    } catch (const Failure& failure) {
        code = failure.Code();
    }
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(code, kOutputFull);
    EXPECT_EQ(writer.RowsWritten(), 57);
    EXPECT_EQ(writer.EndEarly(true), file_);
    EXPECT_EQ(Written().size(), 58u * 17u);  // the header and 57 rows
}

TEST_F(CsvWriterTest, EndedEarlyItLeavesWholeRowsBesideTheFile)
{
    std::ofstream(file_) << "old";
    CsvWriter writer(file_);
    for (const char* text : {"header", "row"}) {
        writer.AddText(text);
        writer.EndRow();
    }
    writer.Flush();
    const std::string part = writer.EndEarly(false);
    EXPECT_TRUE(part.starts_with(file_ + ".part")) << part;
    EXPECT_EQ(Written(), "old");
    std::stringstream rows;
    rows << std::ifstream(part).rdbuf();
    EXPECT_EQ(rows.str(), "header\nrow\n");
    std::remove(part.c_str());
}

TEST_F(CsvWriterTest, EndedEarlyWithoutRowsItLeavesNothing)
{
    for (const bool underItsName : {false, true}) {
        CsvWriter writer(file_);
        writer.AddText("header");
        writer.EndRow();
        writer.Flush();
        EXPECT_EQ(writer.EndEarly(underItsName), "");
        EXPECT_EQ(Written(), "");
    }
}

TEST(CsvWriter, FileThatCannotBeMadeIsRefused)
{
    EXPECT_THROW(CsvWriter("/nowhere/at/all.csv"), Failure);
}

}  // namespace
}  // namespace MCVelscore_850

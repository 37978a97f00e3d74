#include "engine/tables/rowwriter.h"

#include <csignal>
#include <cstdio>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "engine/messages/failure.h"
#include "engine/tables/rowtext.h"
#include "host/messages/messages.h"

namespace MCVelscore_850 {
namespace {

class RowWriterTest : public testing::Test {
protected:
    RowWriterTest() : file_(testing::TempDir() + "rowwriter_" + std::to_string(::getpid())) {}
    ~RowWriterTest() override { std::remove(file_.c_str()); }
    std::string Written() const
    {
        std::ifstream in(file_, std::ios::binary);
        std::stringstream text;
        text << in.rdbuf();
        return text.str();
    }
    // Writes rows of one field each.
    static void Write(RowWriter& writer, const std::vector<std::string>& texts)
    {
        RowText rows;
        for (const std::string& text : texts) {
            rows.AddText(text);
            rows.EndRow();
        }
        writer.Write(rows);
    }
    std::string file_;
};

TEST_F(RowWriterTest, TellsRowsBeforeTheyAreInTheFile)
{
    RowWriter writer(file_);
    EXPECT_EQ(writer.End().rows, 0);
    Write(writer, {"a", "b"});
    EXPECT_EQ(writer.End().rows, 2);
    EXPECT_EQ(writer.End().bytes, 4U);
    EXPECT_EQ(writer.RowsWritten(), 0);
    writer.Flush();
    Write(writer, {"c"});
    EXPECT_EQ(writer.End().rows, 3);
    EXPECT_EQ(writer.RowsWritten(), 1);  // the header apart
    writer.Close();
    EXPECT_EQ(writer.RowsWritten(), 2);
}

// No rows at all are an empty member, and no member more behind some.
TEST_F(RowWriterTest, PackedTablesHaveAMember)
{
    {
        RowWriter none(file_, Compression::Gzip);
        none.Close();
        EXPECT_GE(Written().size(), 18U);  // head and tail of a member
    }
    RowWriter writer(file_, Compression::Gzip);
    Write(writer, {"a"});
    const uint64_t bytes = writer.End().bytes;
    writer.Flush();
    writer.Close();
    EXPECT_EQ(Written().size(), bytes);
}

TEST_F(RowWriterTest, RowsWrittenLeaveTheHeaderOut)
{
    RowWriter writer(file_);
    Write(writer, {"x", "x", "x"});
    EXPECT_EQ(writer.RowsWritten(), 0);  // still in the buffer
    writer.Flush();
    EXPECT_EQ(writer.RowsWritten(), 2);
}

TEST_F(RowWriterTest, UnfinishedRowIsNeverWritten)
{
    {
        RowWriter writer(file_);
        RowText rows;
        rows.AddText("whole");
        rows.EndRow();
        rows.AddText("half");
        writer.Write(rows);
        writer.Close();
    }
    EXPECT_EQ(Written(), "whole\n");
}

TEST_F(RowWriterTest, FullDeviceFailsWithNoRowsWritten)
{
    RowWriter writer("/dev/full");
    Write(writer, {"x"});
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
TEST_F(RowWriterTest, FullDiskLeavesWholeRowsInARegularFile)
{
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{1000, before.rlim_max};
    RowWriter writer(file_);
    const std::string row = "0123456789abcdef";  // 17 bytes with its end: 1000 is in a row's midst
    Write(writer, std::vector<std::string>(100, row));
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

TEST_F(RowWriterTest, EndedEarlyItLeavesWholeRowsBesideTheFile)
{
    std::ofstream(file_) << "old";
    RowWriter writer(file_);
    Write(writer, {"header", "row"});
    writer.Flush();
    const std::string part = writer.EndEarly(false);
    EXPECT_TRUE(part.starts_with(file_ + ".part")) << part;
    EXPECT_EQ(Written(), "old");
    std::stringstream rows;
    rows << std::ifstream(part).rdbuf();
    EXPECT_EQ(rows.str(), "header\nrow\n");
    std::remove(part.c_str());
}

TEST_F(RowWriterTest, EndedEarlyWithoutRowsItLeavesNothing)
{
    for (const bool underItsName : {false, true}) {
        RowWriter writer(file_);
        Write(writer, {"header"});
        writer.Flush();
        EXPECT_EQ(writer.EndEarly(underItsName), "");
        EXPECT_EQ(Written(), "");
    }
}

TEST_F(RowWriterTest, TextsGoOneBehindTheOther)
{
    RowWriter writer(file_);
    std::string expected;
    for (int i = 0; i < 200; ++i) {  // beyond what is buffered
        const std::string text(1000, static_cast<char>('a' + i % 26));
        Write(writer, {text, "x"});
        expected.append(text).append("\nx\n");
    }
    EXPECT_GT(writer.RowsWritten(), 0);
    EXPECT_LT(writer.RowsWritten(), 399);
    writer.Close();
    EXPECT_EQ(writer.RowsWritten(), 399);
    EXPECT_EQ(Written(), expected);
}

TEST(RowWriter, FileThatCannotBeMadeIsRefused)
{
    EXPECT_THROW(RowWriter("/nowhere/at/all.csv"), Failure);
}

}  // namespace
}  // namespace MCVelscore_850

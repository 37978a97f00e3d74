#include "engine/tables/tablereader.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "engine/messages/failure.h"
#include "host/messages/messages.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

class Tables : public testing::Test {
protected:
    // All blocks as "table/rows before/first row: text", and the code of what ended the reading.
    std::string Read(const std::vector<std::string>& paths, const RecordForm& form = {},
                     const BlockReader::BlockSize& size = {})
    {
        std::string text;
        try {
            TableReader reader(paths, form, size);
            RecordBlock block;
            while (reader.Next(block)) {
                text += std::to_string(block.table) + "/" + std::to_string(block.rowsBefore) + "/" +
                        std::to_string(block.firstRow) + ": " + std::string(block.Text());
                bytesRead_ = block.bytesRead;
            }
            totalBytes_ = reader.TotalBytes();
        } catch (const Failure& failure) {
            text += std::to_string(failure.Code());
        }
        return text;
    }

    ScratchFolder folder_;
    uint64_t bytesRead_ = 0;
    uint64_t totalBytes_ = 0;
};

TEST_F(Tables, GoOneAfterTheOther)
{
    const std::string one = folder_.Write("one", "a,b\n1,2\n3,4\n");
    const std::string bare = folder_.Write("bare", "a,b\n");
    const std::string two = folder_.Write("two", "\"a\",b\r\n5,6");
    EXPECT_EQ(Read({one, bare, two}), "0/0/1: 1,2\n3,4\n2/2/1: 5,6");
    EXPECT_EQ(totalBytes_, 12u + 4u + 10u);
    EXPECT_EQ(bytesRead_, totalBytes_);
    EXPECT_EQ(Read({one, one}, {}, {.rows = 1}),
              "0/0/1: 1,2\n0/0/2: 3,4\n1/2/1: 1,2\n1/2/2: 3,4\n");
}

TEST_F(Tables, WithoutAHeaderHaveTheirFirstRow)
{
    const std::string one = folder_.Write("one", "1,2\n");
    const std::string two = folder_.Write("two", "3,4\n");
    const std::string wide = folder_.Write("wide", "3,4,5\n");
    EXPECT_EQ(Read({one, two}, {.hasHeader = false}), "0/0/1: 1,2\n1/1/1: 3,4\n");
    EXPECT_EQ(Read({one, wide}, {.hasHeader = false}),
              "0/0/1: 1,2\n" + std::to_string(kOtherHeader));
}

TEST_F(Tables, HaveTheSameColumns)
{
    const std::string one = folder_.Write("one", "a,b\n1,2\n");
    for (const char* header : {"b,a\n", "a\n", "a,b,c\n", "a,B\n"}) {
        EXPECT_EQ(Read({one, folder_.Write("other", header)}),
                  "0/0/1: 1,2\n" + std::to_string(kOtherHeader))
            << header;
    }
}

TEST_F(Tables, ThatCannotBeReadAreRefusedAtOnce)
{
    const std::string one = folder_.Write("one", "a,b\n1,2\n");
    for (const std::string& other : {folder_.Path("none"), folder_.Path()}) {
        EXPECT_EQ(Read({one, other}), std::to_string(kCasesNotRead)) << other;
    }
}

// A pipe can be opened once only: to look whether it is there doesn't open it, or this would wait.
TEST_F(Tables, MayBePipesWhoseSizeNobodyKnows)
{
    const std::string pipe = folder_.Path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const TableReader reader({folder_.Write("one", "a\n1\n"), pipe}, {}, {});
    EXPECT_EQ(reader.TotalBytes(), 0u);
    EXPECT_EQ(reader.TableCount(), 2u);
    EXPECT_EQ(reader.NameOf(1), pipe);
}

}  // namespace
}  // namespace MCVelscore_850

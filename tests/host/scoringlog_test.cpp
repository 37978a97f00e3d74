#include "host/messages/scoringlog.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace MCVelscore_850 {
namespace {

// The log is the process's own: each test gives it back as it found it, silent.
class ScoringLogTest : public testing::Test {
protected:
    ScoringLogTest()
    {
        log_.SetSink([this](int level, std::string_view line) {
            lines_.emplace_back(level, std::string(line));
        });
    }
    ~ScoringLogTest() override
    {
        log_.SetLevel(0);
        log_.SetSink({});
    }

    ScoringLog& log_ = *ScoringLog::GetInstance();
    std::vector<std::pair<int, std::string>> lines_;
};

using Lines = std::vector<std::pair<int, std::string>>;

TEST_F(ScoringLogTest, IsSilentByDefault)
{
    log_.TraceText(1, "Entry:%s", "GetScore");
    log_.TraceText(0, "level 0");
    log_.TraceText(-1, "level -1");
    EXPECT_TRUE(lines_.empty());
    EXPECT_FALSE(log_.IsOn(0));
    EXPECT_FALSE(log_.IsOn(1));
}

TEST_F(ScoringLogTest, LevelLetsItsOwnAndLowerLinesThrough)
{
    log_.SetLevel(1);
    log_.TraceText(1, "one");
    log_.TraceText(2, "two");
    log_.SetLevel(2);
    log_.TraceText(2, "two again");
    EXPECT_EQ(lines_, (Lines{{1, "one"}, {2, "two again"}}));
}

TEST_F(ScoringLogTest, FormatsAsPrintfDoes)
{
    log_.SetLevel(2);
    log_.TraceText(1, "MCStatus error code is :%ld", 90029L);
    log_.TraceText(2, "The Model Type is %d.", 5);
    log_.TraceText(1, "Exit:%s", "");
    log_.TraceText(1, "%s", "");
    EXPECT_EQ(lines_, (Lines{{1, "MCStatus error code is :90029"},
                             {2, "The Model Type is 5."},
                             {1, "Exit:"},
                             {1, ""}}));
}

TEST_F(ScoringLogTest, LongLinesAreWhole)
{
    log_.SetLevel(1);
    const std::string name(10000, 'x');
    log_.TraceText(1, "Entry:%s", name.c_str());
    ASSERT_EQ(lines_.size(), 1u);
    EXPECT_EQ(lines_[0].second, "Entry:" + name);
}

TEST_F(ScoringLogTest, WithoutASinkLinesGoToStandardError)
{
    log_.SetSink({});
    log_.SetLevel(1);
    testing::internal::CaptureStderr();
    log_.TraceText(1, "Enter:%s", "Setup");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Enter:Setup\n");
}

}  // namespace
}  // namespace MCVelscore_850

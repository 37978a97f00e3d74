#include "engine/messages/trace.h"

#include <cstdio>
#include <fstream>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include "engine/messages/explanation.h"
#include "host/messages/scoringlog.h"

namespace MCVelscore_850 {
namespace {

TEST(Trace, LevelAndFileAreSet)
{
    const std::string file = testing::TempDir() + "trace_" + std::to_string(::getpid());
    ASSERT_TRUE(SetUpTrace("1:" + file));
    ScoringLog::GetInstance()->TraceText(1, "code %d", 7);
    ScoringLog::GetInstance()->TraceText(2, "not at this level");
    ASSERT_TRUE(SetUpTrace("0"));
    std::ifstream in(file);
    std::string line;
    ASSERT_TRUE(std::getline(in, line));
    EXPECT_EQ(line, "code 7");
    EXPECT_FALSE(std::getline(in, line));
    std::remove(file.c_str());
}

TEST(Trace, OtherTextsAreRefused)
{
    for (const char* text : {"", "loud", "-1", "10", "1:/nowhere/at/all.txt", ":file"}) {
        EXPECT_FALSE(SetUpTrace(text)) << text;
    }
}

TEST(Explanation, EveryCodeHasATextAndKnownOnesARemedy)
{
    const std::vector<Explanation> all = ExplainAll();
    ASSERT_FALSE(all.empty());
    for (const Explanation& explanation : all)
        EXPECT_FALSE(explanation.text.empty()) << explanation.code;
    ASSERT_TRUE(Explain(90029));
    EXPECT_FALSE(Explain(90029)->remedy.empty());
    EXPECT_FALSE(Explain(1));
}

}  // namespace
}  // namespace MCVelscore_850

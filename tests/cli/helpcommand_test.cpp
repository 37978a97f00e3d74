#include <gtest/gtest.h>

#include "engine/documents/documentrules.h"
#include "engine/messages/explanation.h"
#include "tests/cli/inprocess.h"

namespace MCVelscore_850 {
namespace {

TEST(Help, ListsEveryCode)
{
    const Answered run = RunInProcess({"help"});
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(static_cast<size_t>(std::count(run.out.begin(), run.out.end(), '\n')),
              ExplainAll().size());
    EXPECT_NE(run.out.find("\n 90029  "), std::string::npos) << run.out;
}

TEST(Help, ExplainsEveryCodeAndEveryRule)
{
    for (const Explanation& each : ExplainAll()) {
        const std::string code = std::to_string(each.code);
        const Answered run = RunInProcess({"help", code});
        EXPECT_EQ(run.exitCode, 0) << code;
        EXPECT_TRUE(run.out.starts_with(code + "  ")) << run.out;
        EXPECT_EQ(run.out.find("\nwhat to do: ") != std::string::npos, !each.remedy.empty())
            << code;
    }
    for (const Rule* rule : AllRules()) {
        const std::string name(rule->name);
        const Answered run = RunInProcess({"help", name});
        EXPECT_EQ(run.exitCode, 0) << name;
        EXPECT_TRUE(run.out.starts_with(name + "  " + std::string(WordOf(rule->answer)) + ": "))
            << run.out;
        EXPECT_EQ(run.out.find('{'), std::string::npos) << run.out;
    }
}

TEST(Help, RefusesWhatIsNeitherACodeNorARule)
{
    const auto refusal = [](const char* asked) {
        const Answered run = RunInProcess({"help", asked});
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_EQ(run.out, "");
        return run.err.substr(0, run.err.find('\n'));
    };
    const std::string error = "velscore: error: ";
    EXPECT_EQ(refusal("7"), error + "no message has the code 7; 'velscore help' lists them all");
    EXPECT_EQ(
        refusal("seven"),
        error + "'seven' is neither a code, such as 260115, nor a rule, such as short-version");
    EXPECT_EQ(refusal("90029x"), error +
                                     "'90029x' is neither a code, such as 260115, nor a rule, "
                                     "such as short-version");
    EXPECT_EQ(refusal("unknown-paramter"),
              error +
                  "'unknown-paramter' is neither a code, such as 260115, nor a rule, such as "
                  "short-version. Did you mean 'unknown-parameter'?");
}

}  // namespace
}  // namespace MCVelscore_850

// verify: records of a document beside its scores, and records made of cases.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/cli/inprocess.h"
#include "tests/scratchfolder.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Json = nlohmann::json;
using Texts = std::vector<std::string>;

// y = 1 + 2 x + 10 [sex = m]
class Verify : public testing::Test {
protected:
    std::string WithRecords(const std::string& rows) const
    {
        TestModel model;
        model.atEnd =
            "<ModelVerification><VerificationFields><VerificationField field='x'/>"
            "<VerificationField field='sex'/><VerificationField field='y'/></VerificationFields>"
            "<InlineTable>" +
            rows + "</InlineTable></ModelVerification>";
        return folder_.Write("records.pmml", model.Text());
    }

    const ScratchFolder folder_;
    const std::string plain_ = folder_.Write("model.pmml", TestModel().Text());
    const std::string cases_ = folder_.Write("cases.csv", "x,sex\n1,f\n2,m\n,f\n");
};

TEST_F(Verify, CountsWhatAgrees)
{
    const Answered run =
        RunInProcess({"verify", WithRecords("<row><x>1</x><sex>f</sex><y>3</y></row>"
                                            "<row><x>2</x><sex>m</sex><y>15</y></row>")});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, "velscore: 2 records, 2 values compared, 0 differ\n");
}

TEST_F(Verify, TellsWhatDiffersAndWhy)
{
    const std::string file = WithRecords(
        "<row><x>1</x><sex>f</sex><y>4</y></row>"
        "<row><x>2</x><sex>z</sex><y>15</y></row>");
    const Answered run = RunInProcess({"verify", file});
    EXPECT_EQ(run.exitCode, 6) << run.err;
    EXPECT_EQ(run.out,
              "record 1, y: expected 4, found 3\n"
              "record 2, y: expected 15, found nothing (status 90029, field sex: 'z')\n");
    EXPECT_EQ(run.err, "velscore: 2 records, 2 values compared, 2 differ\n");
    const Answered json = RunInProcess({"verify", "--json", file});
    EXPECT_EQ(json.exitCode, 6);
    EXPECT_EQ(Json::parse(json.out).at("differences").size(), 2u);
}

TEST_F(Verify, MakesRecordsThatItVerifies)
{
    const std::string made = folder_.Path("made.pmml");
    const Answered run = RunInProcess({"verify", plain_, "--emit", cases_, "-o", made});
    EXPECT_EQ(run.exitCode, 0) << run.err;
    EXPECT_EQ(run.err, "velscore: 2 records written, 1 cases without a score left out\n");
    const Answered again = RunInProcess({"verify", made});
    EXPECT_EQ(again.exitCode, 0) << again.out;
    EXPECT_EQ(again.err.find("velscore: 2 records, "), 0u) << again.err;
}

struct Refused {
    Texts arguments;
    int exitCode;
    std::string told;
};

TEST_F(Verify, RefusesWhatHasNoMeaning)
{
    const Refused kRefused[] = {
        {{plain_}, 2, "ModelVerification"},
        {{plain_, "-o", "x.pmml"}, 1, "-o has a meaning with --emit alone"},
        {{"-", "--emit", cases_}, 1, "--emit reads the document twice; name its file"},
        {{plain_, "--emit", cases_, "--json"}, 1, "--emit has no report to write as JSON"},
        {{plain_, "--emit", cases_, "-o", plain_}, 1, "itself; write to another file"},
        {{plain_, "--emit", cases_, "-o", cases_}, 1, "itself; write to another file"},
        {{plain_, "--emit", folder_.Path("none.csv")}, 3, "none.csv can't be read"},
        {{plain_, "--emit", cases_, "-o", folder_.Path("no/m.pmml")}, 4, "can't be written"},
    };
    for (const Refused& refused : kRefused) {
        Texts arguments{"verify"};
        arguments.insert(arguments.end(), refused.arguments.begin(), refused.arguments.end());
        const Answered run = RunInProcess(arguments);
        EXPECT_EQ(run.exitCode, refused.exitCode);
        EXPECT_EQ(run.out, "");
        EXPECT_NE(run.err.find(refused.told), std::string::npos) << run.err;
    }
    EXPECT_EQ(ReadFile(cases_), "x,sex\n1,f\n2,m\n,f\n");
}

}  // namespace
}  // namespace MCVelscore_850

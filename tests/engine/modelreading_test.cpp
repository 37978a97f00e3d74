// Documents whose model the reader doesn't know, and those that no reader can see right.

#include "engine/documents/modelreading.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "engine/documents/documentloader.h"
#include "engine/documents/plugin.h"
#include "host/messages/messages.h"
#include "host/messages/vsexception.h"
#include "host/model/scoremodel.h"

namespace MCVelscore_850 {
namespace {

// A segment of a MiningModel with a model in it.
std::string Segment(const std::string& model)
{
    return "<Segment><True/><" + model + "/></Segment>";
}

std::string Segmented(const std::string& segments)
{
    return "<MiningModel><MiningSchema/><Segmentation>" + segments +
           "</Segmentation></MiningModel>";
}

struct Refusal {
    const char* name;
    std::string model;
    int code;
    std::vector<std::string> arguments;
};

const Refusal kRefusals[] = {
    {"Tree", "<TreeModel/>", kOtherModel, {"TreeModel"}},
    {"TreeWithPrefix", "<p:TreeModel xmlns:p='urn:p'/>", kOtherModel, {"TreeModel"}},
    {"FirstOfTwo", "<TreeModel/><NeuralNetwork/>", kOtherModel, {"TreeModel"}},
    {"NoSegment", Segmented(""), kOtherModel, {"MiningModel"}},
    {"OneSegment",
     Segmented(Segment("RegressionModel")),
     kOtherModel,
     {"MiningModel of 1 RegressionModel segment"}},
    {"SegmentsOfTwoKinds",
     Segmented(Segment("TreeModel") + Segment("RegressionModel") + Segment("TreeModel")),
     kOtherModel,
     {"MiningModel of 1 RegressionModel and 2 TreeModel segments"}},
    {"UndeclaredPrefix",
     "<p:GeneralRegressionModel/>",
     kUndeclaredPrefix,
     {"p", "p:GeneralRegressionModel"}},
};

class ModelReading : public testing::TestWithParam<Refusal> {};

TEST_P(ModelReading, RefusesWithThePlace)
{
    const Refusal& row = GetParam();
    const Document document =
        LoadDocumentText("<PMML version='4.4'>\n" + row.model + "</PMML>", "m.pmml");
    try {
        ReadModel(Plugin(VELSCORE_PLUGIN), document);
        FAIL() << "read";
    } catch (const VSException& refusal) {
        EXPECT_EQ(refusal.GetErrorCode(), row.code) << refusal.GetText();
        EXPECT_EQ(refusal.GetPlace().line, 2u) << refusal.GetText();
        EXPECT_EQ(refusal.GetArguments(), row.arguments) << refusal.GetText();
    }
}

INSTANTIATE_TEST_SUITE_P(All, ModelReading, testing::ValuesIn(kRefusals),
                         [](const auto& each) { return each.param.name; });

}  // namespace
}  // namespace MCVelscore_850

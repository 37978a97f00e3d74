#include "tests/readers/readdocument.h"

#include <gtest/gtest.h>

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/util/PlatformUtils.hpp>

#include "host/messages/scoringlog.h"
#include "readers/generalregressiontranslator.h"

namespace MCVelscore_850::testing {

const std::string kGeneralLinearDocument = R"xml(<PMML version="4.2">
<DataDictionary>
 <DataField name="y" optype="continuous" dataType="double"/>
 <DataField name="f" optype="categorical" dataType="string"><Value value="a"/><Value value="b"/></DataField>
 <DataField name="x" optype="continuous" dataType="double"/>
 <DataField name="w" optype="continuous" dataType="double"/>
</DataDictionary>
<GeneralRegressionModel modelType="generalLinear" functionName="regression" modelDF="5">
 <MiningSchema>
  <MiningField name="y" usageType="target"/>
  <MiningField name="f"/>
  <MiningField name="x"/>
  <MiningField name="w"/>
 </MiningSchema>
 <ParameterList>
  <Parameter name="p0" label="Intercept"/>
  <Parameter name="p1"/>
  <Parameter name="p2"/>
  <Parameter name="p3"/>
 </ParameterList>
 <FactorList><Predictor name="f"/></FactorList>
 <CovariateList><Predictor name="x"/><Predictor name="w"/></CovariateList>
 <PPMatrix>
  <PPCell value="b" predictorName="f" parameterName="p1"/>
  <PPCell value="2" predictorName="x" parameterName="p2"/>
  <PPCell value="b" predictorName="f" parameterName="p3"/>
  <PPCell value="1" predictorName="w" parameterName="p3"/>
 </PPMatrix>
 <PCovMatrix>
  <PCovCell pRow="p0" pCol="p0" value="1"/>
  <PCovCell pRow="p1" pCol="p0" value="0.5"/>
  <PCovCell pRow="p1" pCol="p1" value="4"/>
 </PCovMatrix>
 <ParamMatrix>
  <PCell parameterName="p0" beta="1" df="1"/>
  <PCell parameterName="p1" beta="2" df="1"/>
  <PCell parameterName="p2" beta="3" df="1"/>
  <PCell parameterName="p3" beta="0.5" df="1"/>
 </ParamMatrix>
</GeneralRegressionModel>
</PMML>)xml";

const std::string kLinearDocument = R"xml(<PMML version="4.2">
<DataDictionary>
 <DataField name="y" optype="continuous" dataType="double"/>
 <DataField name="x" optype="continuous" dataType="double"/>
 <DataField name="w" optype="continuous" dataType="double"/>
</DataDictionary>
<GeneralRegressionModel modelType="regression" functionName="regression" modelDF="5">
 <MiningSchema>
  <MiningField name="y" usageType="target"/>
  <MiningField name="x"/>
  <MiningField name="w"/>
 </MiningSchema>
 <ParameterList>
  <Parameter name="(Constant)" label="lost"/>
  <Parameter name="bx"/>
  <Parameter name="bw"/>
 </ParameterList>
 <CovariateList><Predictor name="x"/><Predictor name="w"/></CovariateList>
 <PPMatrix/>
 <PCovMatrix>
  <PCovCell pRow="(Constant)" pCol="(Constant)" value="9"/>
 </PCovMatrix>
 <ParamMatrix>
  <PCell parameterName="(Constant)" beta="1" df="1"/>
  <PCell parameterName="bx" beta="2" df="1"/>
  <PCell parameterName="bw" beta="3" df="1"/>
 </ParamMatrix>
</GeneralRegressionModel>
</PMML>)xml";

namespace {
struct Platform {
    Platform() { xercesc::XMLPlatformUtils::Initialize(); }
    ~Platform() { xercesc::XMLPlatformUtils::Terminate(); }
};
}  // namespace

ParsedText::ParsedText(const std::string& text)
{
    static const Platform platform;
    parser_ = std::make_unique<xercesc::XercesDOMParser>();
    const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()),
                                            text.size(), "test");
    parser_->parse(source);
    EXPECT_EQ(parser_->getErrorCount(), 0u);
}

ParsedText::~ParsedText() = default;

std::unique_ptr<RegressionModel> ReadModel(const std::string& document)
{
    ParsedText text(document);
    GeneralRegressionTranslator reader;
    return std::unique_ptr<RegressionModel>(
        static_cast<RegressionModel*>(reader.ParseFromTree(text.Get(), "")));
}

VSException RefusalOf(const std::string& document)
{
    try {
        ReadModel(document);
    } catch (const VSException& refusal) {
        return refusal;
    }
    return VSException(nullptr);
}

std::vector<std::string> TraceOf(const std::string& document, int level)
{
    std::vector<std::string> lines;
    ScoringLog* log = ScoringLog::GetInstance();
    log->SetSink([&](int, std::string_view line) { lines.emplace_back(line); });
    log->SetLevel(level);
    RefusalOf(document);
    log->SetLevel(0);
    log->SetSink(nullptr);
    return lines;
}

std::string With(const std::string& text, const std::string& from, const std::string& to)
{
    const size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    std::string changed = text;
    if (at != std::string::npos) changed.replace(at, from.size(), to);
    return changed;
}

}  // namespace MCVelscore_850::testing

#ifndef VELSCORE_TESTS_SYSTEM_TESTMODEL_H
#define VELSCORE_TESTS_SYSTEM_TESTMODEL_H

#include <string>

namespace MCVelscore_850 {

/// Pieces of a general linear model document, y = 1 + 2 x + 10 [sex = m], so that a test can change
/// the one it is about. The covariance matrix is zero but for the intercept's variance 4.
struct TestModel {
    std::string sexField = R"(<DataField name="sex" optype="categorical" dataType="string">
      <Value value="f"/><Value value="m"/></DataField>)";
    std::string xMining = R"(<MiningField name="x" usageType="active"/>)";
    std::string sexMining = R"(<MiningField name="sex" usageType="active"/>)";
    std::string modelHead = R"(modelType="generalLinear" functionName="regression" modelDF="8")";
    std::string xBeta = "2";
    std::string afterSchema;  ///< Output, Targets, LocalTransformations
    std::string atEnd;        ///< ModelVerification
    std::string parameterList = R"(<ParameterList><Parameter name="p0" label="Intercept"/>
      <Parameter name="p1" label="x"/><Parameter name="p2" label="[sex=m]"/></ParameterList>)";

    std::string Text() const
    {
        return R"(<?xml version="1.0" encoding="UTF-8"?>
<PMML xmlns="http://www.dmg.org/PMML-4_4" version="4.4">
  <Header/>
  <DataDictionary>
    <DataField name="y" optype="continuous" dataType="double"/>
    <DataField name="x" optype="continuous" dataType="double"/>
    )" + sexField +
               R"(
  </DataDictionary>
  <GeneralRegressionModel )" +
               modelHead + R"(>
    <MiningSchema>
      <MiningField name="y" usageType="target"/>
      )" + xMining +
               "\n      " + sexMining + R"(
    </MiningSchema>
    )" + afterSchema +
               parameterList +
               R"(
    <FactorList><Predictor name="sex"/></FactorList>
    <CovariateList><Predictor name="x"/></CovariateList>
    <PPMatrix>
      <PPCell value="1" predictorName="x" parameterName="p1"/>
      <PPCell value="m" predictorName="sex" parameterName="p2"/>
    </PPMatrix>
    <PCovMatrix type="model">
      <PCovCell pRow="p0" pCol="p0" value="4"/>
      <PCovCell pRow="p1" pCol="p0" value="0"/>
      <PCovCell pRow="p1" pCol="p1" value="0"/>
      <PCovCell pRow="p2" pCol="p0" value="0"/>
      <PCovCell pRow="p2" pCol="p1" value="0"/>
      <PCovCell pRow="p2" pCol="p2" value="0"/>
    </PCovMatrix>
    <ParamMatrix>
      <PCell parameterName="p0" beta="1" df="1"/>
      <PCell parameterName="p1" beta=")" +
               xBeta + R"(" df="1"/>
      <PCell parameterName="p2" beta="10" df="1"/>
    </ParamMatrix>
    )" + atEnd +
               R"(
  </GeneralRegressionModel>
</PMML>
)";
    }
};

}  // namespace MCVelscore_850

#endif

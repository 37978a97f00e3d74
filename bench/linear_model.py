"""The document that the benches of Python score by: a linear model of ten numbers."""

NAMES = [f"x{i}" for i in range(10)]


def document() -> bytes:
    def each(form: str) -> str:
        return "".join(form.format(i=i) for i in range(10))

    return f"""<PMML version="4.4"><Header/><DataDictionary>
      {each('<DataField name="x{i}" optype="continuous" dataType="double"/>')}
      <DataField name="y" optype="continuous" dataType="double"/></DataDictionary>
    <GeneralRegressionModel modelType="regression" functionName="regression" modelDF="100"><MiningSchema>
      {each('<MiningField name="x{i}"/>')}<MiningField name="y" usageType="target"/></MiningSchema>
      <ParameterList>{each('<Parameter name="p{i}"/>')}<Parameter name="p10"/></ParameterList>
      <FactorList/><CovariateList>{each('<Predictor name="x{i}"/>')}</CovariateList>
      <PPMatrix>{each('<PPCell value="1" predictorName="x{i}" parameterName="p{i}"/>')}</PPMatrix>
      <ParamMatrix>{each('<PCell parameterName="p{i}" beta="{i}.5" df="1"/>')}
        <PCell parameterName="p10" beta="1" df="1"/></ParamMatrix>
    </GeneralRegressionModel></PMML>""".encode()

#ifndef VELSCORE_TESTS_ENGINE_AUDITEDFIELDS_H
#define VELSCORE_TESTS_ENGINE_AUDITEDFIELDS_H

#include <algorithm>
#include <ostream>
#include <span>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "tests/engine/audited.h"

namespace MCVelscore_850 {

// A sound general linear model with a field of each kind and the expressions that compare values.
inline constexpr std::string_view kFieldsDocument = R"(<PMML version="4.4">
<DataDictionary>
<DataField name="y" optype="continuous" dataType="double"/>
<DataField name="x" optype="continuous" dataType="double">
<Interval closure="closedOpen" leftMargin="0" rightMargin="5"/>
<Interval closure="closedClosed" leftMargin="6" rightMargin="9"/>
</DataField>
<DataField name="f" optype="categorical" dataType="string">
<Value value="red"/>
<Value value="green"/>
<Value value="blue"/>
<Value value="?" property="missing"/>
</DataField>
<DataField name="n" optype="categorical" dataType="integer"><Value value="1"/><Value value="2"/></DataField>
<DataField name="t" optype="categorical" dataType="boolean"><Value value="true"/><Value value="false"/></DataField>
<DataField name="s" optype="categorical" dataType="string"/>
<DataField name="z" optype="continuous" dataType="double"/>
<DataField name="when" optype="continuous" dataType="date"><Interval closure="closedOpen" leftMargin="2020-01-01" rightMargin="2021-01-01"/></DataField>
</DataDictionary>
<GeneralRegressionModel modelType="generalLinear" functionName="regression">
<MiningSchema>
<MiningField name="y" usageType="target"/>
<MiningField name="x" lowValue="1" highValue="9" outliers="asExtremeValues"/>
<MiningField name="f"/>
<MiningField name="n"/>
<MiningField name="t"/>
<MiningField name="s" usageType="supplementary"/>
</MiningSchema>
<LocalTransformations>
<DerivedField name="d" optype="continuous" dataType="double">
<NormDiscrete field="f" value="green"/>
</DerivedField>
<DerivedField name="m" optype="continuous" dataType="double">
<MapValues outputColumn="out" dataType="double" defaultValue="0"><FieldColumnPair field="f" column="in"/><InlineTable>
<row><in>red</in><out>1</out></row>
<row><in>green</in><out>2</out></row>
<row><in>blue</in><out>3</out></row>
</InlineTable></MapValues>
</DerivedField>
<DerivedField name="g" optype="categorical" dataType="string">
<Discretize field="x">
<DiscretizeBin binValue="low"><Interval closure="closedOpen" leftMargin="0" rightMargin="5"/></DiscretizeBin>
<DiscretizeBin binValue="high"><Interval closure="closedClosed" leftMargin="5" rightMargin="10"/></DiscretizeBin>
</Discretize>
</DerivedField>
<DerivedField name="e" optype="continuous" dataType="double">
<Apply function="if"><Apply function="equal"><FieldRef field="f"/>
<Constant>red</Constant>
</Apply><Constant>1</Constant><Constant>0</Constant></Apply>
</DerivedField>
</LocalTransformations>
<ParameterList><Parameter name="p0"/><Parameter name="px"/><Parameter name="pf"/><Parameter name="pn"/><Parameter name="pt"/><Parameter name="pd"/><Parameter name="pm"/><Parameter name="pg"/><Parameter name="pe"/></ParameterList>
<FactorList><Predictor name="f"/><Predictor name="n"/><Predictor name="t"/><Predictor name="g"/></FactorList>
<CovariateList><Predictor name="x"/><Predictor name="d"/><Predictor name="m"/><Predictor name="e"/></CovariateList>
<PPMatrix>
<PPCell parameterName="px" predictorName="x" value="1"/>
<PPCell parameterName="pf" predictorName="f" value="red"/>
<PPCell parameterName="pn" predictorName="n" value="1"/>
<PPCell parameterName="pt" predictorName="t" value="true"/>
<PPCell parameterName="pd" predictorName="d" value="1"/>
<PPCell parameterName="pm" predictorName="m" value="1"/>
<PPCell parameterName="pg" predictorName="g" value="low"/>
<PPCell parameterName="pe" predictorName="e" value="1"/>
</PPMatrix>
<ParamMatrix><PCell parameterName="p0" beta="1"/><PCell parameterName="px" beta="2"/><PCell parameterName="pf" beta="3"/><PCell parameterName="pn" beta="4"/><PCell parameterName="pt" beta="5"/><PCell parameterName="pd" beta="6"/><PCell parameterName="pm" beta="7"/><PCell parameterName="pg" beta="8"/><PCell parameterName="pe" beta="9"/></ParamMatrix>
</GeneralRegressionModel>
</PMML>
)";

// One change of a document.
struct Edit {
    std::string_view from;
    std::string_view to;
};

inline std::string Edited(std::string_view document, const Edit& edit)
{
    std::string text(document);
    const size_t place = text.find(edit.from);
    if (place == std::string::npos) {
        ADD_FAILURE() << "not in the document: " << edit.from;
        return text;
    }
    return text.replace(place, edit.from.size(), edit.to);
}

// A change, and the one finding that it makes.
struct FaultRow {
    Edit edit;
    std::string_view rule;
    Answer answer;
    std::string_view at;  // how the document goes on from the place of the finding
    std::string_view attribute;
    std::string_view found;
    std::string_view nearWord = {};
};

inline void PrintTo(const FaultRow& row, std::ostream* out) { *out << row.edit.to; }
inline void PrintTo(const Edit& edit, std::ostream* out) { *out << edit.to; }

// How many findings are of the rules of a table, other rules being of no interest.
inline size_t CountOf(const Audited& audited, std::span<const AuditRule> rules)
{
    size_t count = 0;
    for (const AuditRule& rule : rules) count += audited.findings.CountOf(rule.rule.name);
    return count;
}

inline void ExpectFault(std::string_view document, const FaultRow& row,
                        std::span<const AuditRule> rules)
{
    const std::string text = Edited(document, row.edit);
    const Audited audited(text);
    EXPECT_EQ(CountOf(audited, rules), 1u) << audited.Rules();
    ASSERT_TRUE(audited.Has(row.rule)) << audited.Rules();
    const Finding finding = audited.Of(row.rule);
    EXPECT_EQ(finding.answer, row.answer);
    const size_t place = text.find(row.at);
    ASSERT_NE(place, std::string::npos) << row.at;
    const size_t lineStart = text.rfind('\n', place) + 1;  // npos + 1 is 0
    EXPECT_EQ(finding.place.line,
              1 + std::ranges::count(std::string_view(text).substr(0, place), '\n'));
    EXPECT_EQ(finding.place.column, 1 + place - lineStart);
    EXPECT_EQ(finding.attribute, row.attribute);
    EXPECT_EQ(finding.found, row.found);
    EXPECT_EQ(finding.nearWord, row.nearWord);
    // a text and a remedy without a place left open
    EXPECT_EQ((finding.text + finding.remedy).find_first_of("{}"), std::string::npos);
}

inline void ExpectSilence(std::string_view document, const Edit& edit,
                          std::span<const AuditRule> rules)
{
    const Audited audited(Edited(document, edit));
    EXPECT_EQ(CountOf(audited, rules), 0u) << audited.Rules();
}

}  // namespace MCVelscore_850

#endif

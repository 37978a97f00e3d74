// Extensions: the system's own that are misspelt or out of place, and those of other makers, which
// stand wherever they like and change nothing.

#include <bit>
#include <filesystem>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "engine/documents/element.h"
#include "engine/documents/loadedmodel.h"
#include "engine/documents/ownextensions.h"
#include "engine/documents/treewriting.h"
#include "engine/scoring/tablescorer.h"
#include "engine/tables/bytesource.h"
#include "engine/tables/rowreader.h"
#include "tests/engine/adapted.h"
#include "tests/engine/auditedfields.h"
#include "tests/engine/auditrows.h"
#include "tests/scratchfolder.h"

namespace MCVelscore_850 {
namespace {

// A sound document of each family that has Extensions of its own.
constexpr std::string_view kLinear = R"(<PMML version="4.4">
<DataDictionary>
<DataField name="y" optype="continuous" dataType="double"/>
<DataField name="x" optype="continuous" dataType="double"/>
<DataField name="f" optype="categorical" dataType="string">
<Extension extender="velscore" name="unlistedCategories" value="accept"/>
<Value value="u"/><Value value="v"/></DataField>
</DataDictionary>
<GeneralRegressionModel modelType="generalLinear" functionName="regression">
<Extension extender="velscore" name="modelDF" value="17"/>
<Extension name="allowMissingFactors" value="true"/>
<Extension name="sigma" value="1.5"/>
<MiningSchema>
<MiningField name="y" usageType="target"/><MiningField name="x"/><MiningField name="f"/>
<Extension extender="velscore" name="derivedField"><MiningField name="d"/></Extension>
</MiningSchema>
<LocalTransformations><DerivedField name="d" optype="continuous" dataType="double"><FieldRef field="x"/></DerivedField></LocalTransformations>
<ParameterList><Parameter name="p0"/><Parameter name="px"/><Parameter name="pf"/><Parameter name="pd"/></ParameterList>
<FactorList><Predictor name="f"/></FactorList>
<CovariateList><Predictor name="x"/><Predictor name="d"/></CovariateList>
<PPMatrix><PPCell parameterName="px" predictorName="x" value="1"/><PPCell parameterName="pf" predictorName="f" value="u"/><PPCell parameterName="pd" predictorName="d" value="1"/></PPMatrix>
<ParamMatrix><PCell parameterName="p0" beta="1"/><PCell parameterName="px" beta="2"/><PCell parameterName="pf" beta="3"/><PCell parameterName="pd" beta="4"/></ParamMatrix>
</GeneralRegressionModel>
</PMML>
)";

constexpr std::string_view kCoxDocument = R"(<PMML version="3.2">
<DataDictionary>
<DataField name="event" optype="categorical" dataType="integer"><Value value="0"/><Value value="1"/></DataField>
<DataField name="time" optype="continuous" dataType="double"/>
<DataField name="x" optype="continuous" dataType="double"/>
</DataDictionary>
<GeneralRegressionModel modelType="generalLinear" modelName="Cox" functionName="regression" targetVariableName="event">
<Extension extender="velscore" name="endTimeVariable" value="time"/>
<Extension extender="velscore" name="referencePoint">
<X-BasePoint parameterName="px" value="0.5"/>
</Extension>
<Extension extender="velscore" name="X-BaseCumHazardTables">
<X-BaseMaxTime value="10"/>
<X-BaseCumHazardTable>
<X-Baseline time="5" cumHazard="0.1"/>
</X-BaseCumHazardTable>
</Extension>
<MiningSchema>
<MiningField name="event" usageType="predicted"><Extension extender="velscore" name="values"><X-Stratum name="status"><Value value="1"/></X-Stratum></Extension></MiningField>
<MiningField name="time"/><MiningField name="x"/>
</MiningSchema>
<ParameterList><Parameter name="px"/></ParameterList>
<CovariateList><Predictor name="x"/></CovariateList>
<PPMatrix><PPCell parameterName="px" predictorName="x" value="1"/></PPMatrix>
<ParamMatrix><PCell parameterName="px" beta="2"/></ParamMatrix>
</GeneralRegressionModel>
</PMML>
)";

class ExtensionFault : public testing::TestWithParam<FaultRow> {};

TEST_P(ExtensionFault, IsToldWithItsPlace) { ExpectFault(kLinear, GetParam(), ExtensionRules()); }

const FaultRow kFaults[] = {
    {{"name=\"modelDF\"", "name=\"modelDf\""},
     "unknown-extension",
     Answer::Fault,
     R"(<Extension extender="velscore" name="modelDf")",
     "name",
     "modelDf",
     "modelDF"},
    {{"name=\"modelDF\"", "name=\"shrinkage\""},
     "unknown-extension",
     Answer::Fault,
     R"(<Extension extender="velscore" name="shrinkage")",
     "name",
     "shrinkage"},
    {{"name=\"allowMissingFactors\"", "name=\"allowMissingFactor\""},
     "unknown-extension",
     Answer::Fault,
     R"(<Extension name="allowMissingFactor")",
     "name",
     "allowMissingFactor",
     "allowMissingFactors"},
    {{"name=\"allowMissingFactors\"", "name=\" allowMissingFactors\""},
     "unknown-extension",
     Answer::Fault,
     R"(<Extension name=" allowMissingFactors")",
     "name",
     " allowMissingFactors",
     "allowMissingFactors"},
    {{"name=\"unlistedCategories\"", "name=\"unlistedCategory\""},
     "unknown-extension",
     Answer::Fault,
     R"(<Extension extender="velscore" name="unlistedCategory")",
     "name",
     "unlistedCategory"},
    {{"name=\"derivedField\"", "name=\"derivedFields\""},
     "unknown-extension",
     Answer::Fault,
     R"(<Extension extender="velscore" name="derivedFields")",
     "name",
     "derivedFields",
     "derivedField"},
    // a known name where nothing reads it
    {{"<DataDictionary>",
      "<DataDictionary><Extension extender=\"velscore\" name=\"sigma\" value=\"2\"/>"},
     "unknown-extension",
     Answer::Fault,
     R"(<Extension extender="velscore" name="sigma")",
     "name",
     "sigma"},
    {{"<ParameterList>",
      "<ParameterList><Extension extender=\"velscore\" name=\"modelDF\" value=\"2\"/>"},
     "unknown-extension",
     Answer::Fault,
     R"(<Extension extender="velscore" name="modelDF" value="2")",
     "name",
     "modelDF"},
    {{"extender=\"velscore\" name=\"modelDF\"", "extender=\"Velscore\" name=\"modelDF\""},
     "unknown-extender",
     Answer::Fault,
     R"(<Extension extender="Velscore")",
     "extender",
     "Velscore",
     "velscore"},
    {{"extender=\"velscore\" name=\"unlistedCategories\"", "name=\"unlistedCategories\""},
     "unsigned-extension",
     Answer::Notice,
     R"(<Extension name="unlistedCategories")",
     "extender",
     ""},
    {{"</MiningSchema>", "</MiningSchema><Extension name=\"percentile\" value=\"2\"/>"},
     "late-extension",
     Answer::Fault,
     R"(<Extension name="percentile")",
     "name",
     "percentile"},
    {{"<MiningSchema>", "<Extension name=\"cutoff\" value=\"0.5\"/><MiningSchema>"},
     "extension-of-another-family",
     Answer::Notice,
     R"(<Extension name="cutoff")",
     "name",
     "cutoff"},
    {{"<MiningSchema>", "<Extension name=\"sigma\" value=\"2\"/><MiningSchema>"},
     "repeated-extension",
     Answer::Fault,
     R"(<Extension name="sigma" value="2")",
     "name",
     "sigma"},
    {{"name=\"allowMissingFactors\" value=\"true\"", "name=\"allowMissingFactors\" value=\"TRUE\""},
     "extension-value",
     Answer::Fault,
     R"(<Extension name="allowMissingFactors" value="TRUE")",
     "value",
     "TRUE"},
    {{"value=\"accept\"", "value=\"accpet\""},
     "extension-value",
     Answer::Fault,
     R"(<Extension extender="velscore" name="unlistedCategories")",
     "value",
     "accpet"},
    {{"name=\"modelDF\" value=\"17\"", "name=\"modelDF\""},
     "extension-value",
     Answer::Fault,
     R"(<Extension extender="velscore" name="modelDF")",
     "value",
     ""},
    {{"name=\"sigma\" value=\"1.5\"", "name=\"sigma\" value=\"-1.5\""},
     "extension-value",
     Answer::Fault,
     R"(<Extension name="sigma" value="-1.5")",
     "value",
     "-1.5"},
};

INSTANTIATE_TEST_SUITE_P(Extensions, ExtensionFault, testing::ValuesIn(kFaults));

class CoxExtensionFault : public testing::TestWithParam<FaultRow> {};

TEST_P(CoxExtensionFault, IsToldWithItsPlace)
{
    ExpectFault(kCoxDocument, GetParam(), ExtensionRules());
}

const FaultRow kCoxFaults[] = {
    {{"X-BasePoint", "X-Basepoint"},
     "extension-content",
     Answer::Fault,
     R"(<X-Basepoint)",
     "",
     "X-Basepoint",
     "X-BasePoint"},
    {{"<X-BaseMaxTime value=\"10\"/>", "<X-MaxTime value=\"10\"/>"},
     "extension-content",
     Answer::Fault,
     R"(<X-MaxTime)",
     "",
     "X-MaxTime"},
    {{"<X-BaseMaxTime value=\"10\"/>",
      "<X-Stratum value=\"1\"><X-BaseMaxTime value=\"10\"/><X-Stratum value=\"2\"/></X-Stratum>"},
     "extension-content",
     Answer::Fault,
     R"(<X-Stratum value="2")",
     "",
     "X-Stratum"},
    {{"<X-BaseMaxTime value=\"10\"/>", "<X-BaseMaxTime value=\"10\" varname=\"x\"/>"},
     "extension-content",
     Answer::Fault,
     R"(<X-BaseMaxTime)",
     "varname",
     "varname"},
    {{"time=\"5\" cumHazard", "time=\"5\" cumHazards=\"1\" cumHazard"},
     "extension-content",
     Answer::Fault,
     R"(<X-Baseline time)",
     "cumHazards",
     "cumHazards",
     "cumHazard"},
    {{"name=\"endTimeVariable\"", "name=\"endtimeVariable\""},
     "unknown-extension",
     Answer::Fault,
     R"(<Extension extender="velscore" name="endtimeVariable")",
     "name",
     "endtimeVariable",
     "endTimeVariable"},
};

INSTANTIATE_TEST_SUITE_P(Extensions, CoxExtensionFault, testing::ValuesIn(kCoxFaults));

class SoundExtension : public testing::TestWithParam<Edit> {};

TEST_P(SoundExtension, IsPassedOver) { ExpectSilence(kLinear, GetParam(), ExtensionRules()); }

const Edit kSound[] = {
    {"<PMML", "<PMML"},
    // another maker's, of whatever name and place
    {"<MiningSchema>", "<Extension extender=\"acme\" name=\"modelDf\"/><MiningSchema>"},
    {"<MiningSchema>", "<Extension name=\"shrinkage\" value=\"2\"/><MiningSchema>"},
    {"<MiningSchema>", "<Extension name=\"model\" value=\"2\"/><MiningSchema>"},
    {"<MiningSchema>", "<Extension/><MiningSchema>"},
    {"</MiningSchema>", "</MiningSchema><Extension extender=\"acme\" name=\"sigma\"/>"},
    {"<ParameterList>", "<ParameterList><Extension name=\"modelDf\" value=\"2\"/>"},
    {"<Value value=\"u\"/>",
     "<Extension extender=\"acme\" name=\"unlistedCategories\"/><Value value=\"u\"/>"},
    // the same again says nothing new
    {"<MiningSchema>", "<Extension name=\"sigma\" value=\"1.5\"/><MiningSchema>"},
    {"name=\"allowMissingFactors\" value=\"true\"", "name=\"allowMissingFactors\" value=\"false\""},
    {"name=\"sigma\" value=\"1.5\"", "name=\"sigma\" value=\"0\""},
};

INSTANTIATE_TEST_SUITE_P(Extensions, SoundExtension, testing::ValuesIn(kSound));

TEST(ExtensionFaults, TellTheNamesThatTheirElementHas)
{
    const std::string unknown = "<Extension extender=\"velscore\" name=\"shrinkage\"/>";
    const auto expected = [&](const std::string& place) {
        const Audited audited(Edited(kLinear, {place, place + unknown}));
        return audited.Of("unknown-extension").expected;
    };
    EXPECT_EQ(expected("<PPMatrix>"), "none");
    const std::string ofModel = expected(
        "<GeneralRegressionModel modelType=\"generalLinear\" functionName=\"regression\">");
    EXPECT_TRUE(ofModel.starts_with("one of ")) << ofModel;
    EXPECT_NE(ofModel.find("modelDF"), std::string::npos) << ofModel;
}

TEST(ExtensionFaults, AreNoneInACoxModelsOwn)
{
    EXPECT_EQ(Audited(std::string(kCoxDocument)).Rules(), "");
}

TEST(ForeignExtension, OfANameThatIsObeyedIsLeftOutAndTold)
{
    struct Row {
        std::string_view document;
        Edit edit;
        std::string_view change;
    };
    const Row rows[] = {
        {kLinear,
         {"extender=\"velscore\" name=\"modelDF\"", "extender=\"acme\" name=\"modelDF\""},
         "Extension \"modelDF\" of extender \"acme\" isn't velscore's and is left out"},
        {kLinear,
         {"<Extension name=\"sigma\"", "<Extension extender=\"acme\" name=\"sigma\""},
         "Extension \"sigma\" of extender \"acme\" isn't velscore's and is left out"},
        {kCoxDocument,
         {"extender=\"velscore\" name=\"values\"", "extender=\"acme\" name=\"values\""},
         "Extension \"status\" of extender \"acme\" isn't velscore's and is left out"},
    };
    for (const Row& row : rows) {
        const Adapted adapted(Edited(row.document, row.edit));
        ASSERT_EQ(adapted.Rules(), "foreign-extension") << row.edit.to;
        EXPECT_EQ(adapted.adaptations[0].change, row.change);
        EXPECT_TRUE(adapted.adaptations[0].rule->strict);
        EXPECT_FALSE(adapted.Has("acme"));
    }
}

// Wherever children are counted a foreign one is gone: behind it stands what is read.
TEST(ForeignExtension, IsLeftOutOfListsAndMatrices)
{
    const std::string foreign = "<Extension extender='acme' name='y'/>";
    const std::string contrasts = CaseText("blr-birthwt-cutoff");
    for (const char* place : {"<ParameterList>", "<FactorList>", "<CovariateList>", "<PPMatrix>",
                              "<Categories>", "<Matrix nbRows=\"3\" nbCols=\"2\">"}) {
        const Adapted adapted(Edited(contrasts, {place, std::string(place) + foreign}));
        EXPECT_FALSE(adapted.Has("acme")) << place;
        EXPECT_EQ(adapted.after, Adapted(contrasts).after) << place;
    }
}

// A predictor's contrasts are heeded where a binary model has them.
TEST(ForeignExtension, OfAPredictorIsToldWhereItsNameIsHeeded)
{
    const auto rules = [](const std::string& name) {
        const std::string predictor = "contrastMatrixType=\"mixed\">";
        const std::string foreign = "<Extension extender='acme' name='" + name + "'/>";
        const Adapted adapted(
            Edited(CaseText("blr-birthwt-cutoff"), {predictor, predictor + foreign}));
        EXPECT_FALSE(adapted.Has("acme"));
        return adapted.Rules();
    };
    EXPECT_EQ(rules("contrastMatrix"), "foreign-extension");
    EXPECT_EQ(rules("sigma"), "");
}

TEST(ForeignExtension, ThatIsObeyedByNobodyIsNotTold)
{
    // Of another family's name, behind another child, of a name of its own.
    for (const char* edit :
         {"<Extension extender='acme' name='cutoff' value='0.5'/><MiningSchema>",
          "<Extension extender='acme' name='shrinkage' value='0.5'/><MiningSchema>"}) {
        EXPECT_EQ(Adapted(Edited(kLinear, {"<MiningSchema>", edit})).Rules(), "") << edit;
    }
    EXPECT_EQ(Adapted(Edited(kLinear, {"</MiningSchema>",
                                       "</MiningSchema><Extension extender='acme' "
                                       "name='sigma' value='2'/>"}))
                  .Rules(),
              "");
}

TEST(ForeignExtension, OfAFieldDoesntKeepItFromTakingValuesAsTheyAre)
{
    const std::string asIs = Edited(
        kLinear,
        {"<MiningField name=\"f\"/>", "<MiningField name=\"f\" invalidValueTreatment=\"asIs\"/>"});
    const Adapted adapted(
        Edited(asIs, {"extender=\"velscore\" name=\"unlistedCategories\" value=\"accept\"",
                      "extender=\"acme\" name=\"unlistedCategories\" value=\"accept\""}));
    EXPECT_EQ(adapted.Rules(), "values-as-is");
}

// Where the standard lets an Extension stand: in every element but those of texts, numbers and free
// columns.
bool MayHoldExtension(Element element)
{
    static const std::set<std::string> kNone = {"Constant",  "Array",          "Matrix", "MatCell",
                                                "Extension", "ParameterField", "row"};
    return !kNone.contains(element.Tag());
}

void CollectHolders(Element element, std::vector<Element>& holders)
{
    if (element.Is("Extension") || element.Is("row")) return;
    if (MayHoldExtension(element)) holders.push_back(element);
    for (const Element child : element.Children()) CollectHolders(child, holders);
}

enum class Position { First, Middle, Last };

void Insert(Element parent, const xercesc::DOMElement* extension, Position position)
{
    xercesc::DOMElement* dom = parent.Dom();
    std::vector<Element> children;
    for (const Element child : parent.Children()) children.push_back(child);
    xercesc::DOMNode* before = nullptr;
    if (!children.empty() && position == Position::First) before = children.front().Dom();
    if (!children.empty() && position == Position::Middle) {
        before = children[children.size() / 2].Dom();
    }
    dom->insertBefore(dom->getOwnerDocument()->importNode(extension, true), before);
}

constexpr std::string_view kForeign[] = {
    "<Extension extender='acme' name='note' value='1'/>",
    "<Extension name='note' value='1'>free text 5</Extension>",
    // what other makers hold looks like anything
    "<Extension extender='acme'><Value value='zz'/><Parameter name='q'/>"
    "<MiningField name='q'/><BaselineStratum value='9' maxTime='1'/>"
    "<BaselineCell time='0.5' cumHazard='9'/><Array n='2'>1 2</Array><acme:any "
    "xmlns:acme='urn:acme' x='2'>5</acme:any></Extension>",
};

// The document with the Extension in all elements, or in those of one tag.
std::string WithExtensions(const std::string& path, std::string_view extension, Position position,
                           const std::string& tag = {})
{
    const Document document = LoadDocument(path);
    const Document source =
        LoadDocumentText("<PMML>" + std::string(extension) + "</PMML>", "extension");
    const Element root(document.GetTree().dom->getDocumentElement());
    const auto* node = source.GetTree().dom->getDocumentElement()->getFirstElementChild();
    std::vector<Element> holders;
    CollectHolders(root, holders);
    for (const Element holder : holders) {
        if (tag.empty() || holder.Is(tag)) Insert(holder, node, position);
    }
    return TreeText(*document.GetTree().dom);
}

// All that a model tells and scores, numbers by their bits.
std::string WhatItTells(const std::string& file, const std::string& table)
{
    const LoadedModel model(file, std::make_shared<Plugin>(VELSCORE_PLUGIN));
    std::ostringstream text;
    model.Display(text);
    for (const std::string& line : model.Adaptations()) {
        text << line.substr(line.find(": ") + 2) << '\n';  // without the place
    }
    InputFile source(table);
    RowReader reader(source);
    const std::vector<std::string> header = reader.Header();
    std::vector<std::string> cells;
    std::span<const std::string_view> fields;
    while (reader.Next(fields)) cells.insert(cells.end(), fields.begin(), fields.end());
    const std::vector<std::string_view> views(cells.begin(), cells.end());
    TableScorer scorer(model, header, "input.csv", {});
    ResultBlock results(scorer.Schema());
    TextRows rows(header.size());
    scorer.Score(rows.Block(std::span(views).first(
                     std::min(views.size(), TableScorer::kRows * header.size()))),
                 results);
    for (size_t row = 0; row < results.rows; ++row) {
        text << results.StatusOf(row).code << ' ' << results.StatusOf(row).FieldName();
        for (const ResultBlock::Column& column : results.columns) {
            text << ' ';
            if (!HasRow(column.present, row)) continue;
            if (column.codes.empty()) {
                text << std::bit_cast<uint64_t>(column.numbers[row]);
            } else {
                text << column.codes[row];
            }
        }
        text << '\n';
    }
    return text.str();
}

std::vector<std::string> CaseFolders()
{
    std::vector<std::string> folders;
    for (const auto& entry : std::filesystem::directory_iterator("tests/data/cases")) {
        const std::string name = entry.path().filename().string();
        if (std::filesystem::exists(entry.path() / "model.pmml") && !name.starts_with("legacy")) {
            folders.push_back(name);
        }
    }
    std::sort(folders.begin(), folders.end());
    return folders;
}

class ForeignExtensions : public testing::TestWithParam<std::string> {
protected:
    std::string Model() const { return "tests/data/cases/" + GetParam() + "/model.pmml"; }
    std::string Table() const { return "tests/data/cases/" + GetParam() + "/input.csv"; }
    ScratchFolder folder_;
};

INSTANTIATE_TEST_SUITE_P(Cases, ForeignExtensions, testing::ValuesIn(CaseFolders()),
                         [](const auto& folder) {
                             std::string name = folder.param;
                             for (char& c : name) {
                                 if (std::isalnum(static_cast<unsigned char>(c)) == 0) c = '_';
                             }
                             return name;
                         });

TEST_P(ForeignExtensions, InEveryElementChangeNothing)
{
    const std::string expected = WhatItTells(Model(), Table());
    for (const Position position : {Position::First, Position::Middle, Position::Last}) {
        for (const std::string_view extension : kForeign) {
            SCOPED_TRACE(std::string(extension) + " at " +
                         std::to_string(static_cast<int>(position)));
            const std::string file =
                folder_.Write("m.pmml", WithExtensions(Model(), extension, position));
            try {
                EXPECT_EQ(WhatItTells(file, Table()), expected);
            } catch (const Failure& failure) {
                ADD_FAILURE() << failure.what();
            }
        }
    }
}

// One element's Extension could hide what another one's does.
TEST_P(ForeignExtensions, InOneKindOfElementChangeNothing)
{
    const std::string expected = WhatItTells(Model(), Table());
    const Document document = LoadDocument(Model());
    std::vector<Element> holders;
    CollectHolders(Element(document.GetTree().dom->getDocumentElement()), holders);
    std::set<std::string> tags;
    for (const Element holder : holders) tags.insert(holder.Tag());
    for (const std::string& tag : tags) {
        SCOPED_TRACE(tag);
        const std::string file =
            folder_.Write("m.pmml", WithExtensions(Model(), kForeign[2], Position::First, tag));
        try {
            EXPECT_EQ(WhatItTells(file, Table()), expected);
        } catch (const Failure& failure) {
            ADD_FAILURE() << failure.what();
        }
    }
}

}  // namespace
}  // namespace MCVelscore_850

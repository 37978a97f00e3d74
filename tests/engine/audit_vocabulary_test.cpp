#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "engine/documents/audit/documentaudit.h"
#include "engine/documents/documentloader.h"
#include "engine/documents/documenttree.h"
#include "engine/documents/vocabulary.h"
#include "tests/engine/audited.h"

namespace MCVelscore_850 {

namespace {

// What the walk tells of a document as it stands, a line a finding: the rule, the element's tag,
// the attribute, the text found, the near word.
std::string ToldOf(const std::string& text)
{
    const Document document = LoadDocumentText(text, "m.pmml");
    const Element root(document.GetTree().dom->getDocumentElement());
    std::string told;
    LookAtVocabulary(root, [&](const Rule& rule, const Detail& detail) {
        told += fmt::format("{}{} {} {} {} {}", told.empty() ? "" : "\n", rule.name,
                            detail.element.Tag(), detail.attribute, detail.found, detail.nearWord);
    });
    return told;
}

// The elements of one form, each with the opening tags that lead to it.
class Form {
public:
    explicit Form(bool older) : root_(older ? "zelt-ml version='1.0'" : "PMML version='4.4'")
    {
        for (const ElementWord* word : Vocabulary(older)) words_.emplace(word->tag, word);
        Reach(older ? "zelt-ml" : "PMML", {});
        if (!older) paths_.emplace("Extension", std::vector<std::string>{"PMML"});
    }

    const std::map<std::string_view, const ElementWord*>& Words() const { return words_; }
    bool Has(std::string_view tag) const { return words_.contains(tag); }
    const std::vector<std::string>& PathOf(std::string_view tag) const { return paths_.at(tag); }
    bool Reaches(std::string_view tag) const { return paths_.contains(tag); }

    // A document with that element, of whose tag this is all behind the name, and what it holds.
    std::string With(std::string_view tag, std::string_view attributes,
                     std::string_view content = "") const
    {
        std::string open, close;
        for (const std::string& name : PathOf(tag)) {
            open += "<" + (open.empty() ? root_ : name) + ">";
            close.insert(0, "</" + name + ">");
        }
        const std::string name = open.empty() ? root_ : std::string(tag);
        return fmt::format("{}<{} {}>{}</{}>{}", open, name, attributes, content, tag, close);
    }

private:
    void Reach(std::string_view tag, std::vector<std::string> path)
    {
        if (!paths_.emplace(tag, path).second) return;
        path.emplace_back(tag);
        for (const ChildWord& child : words_.at(tag)->children) Reach(child.tag, path);
    }

    std::string root_;
    std::map<std::string_view, const ElementWord*> words_;
    std::map<std::string_view, std::vector<std::string>> paths_;
};

std::string WithOtherCase(std::string_view word)
{
    std::string other(word);
    const auto c = static_cast<unsigned char>(other.front());
    other.front() = static_cast<char>(std::isupper(c) != 0 ? std::tolower(c) : std::toupper(c));
    return other;
}

// What a hand or a program may make of a name.
std::vector<std::string> MisspellingsOf(std::string_view name)
{
    std::vector<std::string> names = {WithOtherCase(name), std::string(name) + name.back()};
    if (name.size() > 2) names.emplace_back(name.substr(0, name.size() - 1));
    return names;
}

class EveryForm : public testing::TestWithParam<bool> {
protected:
    const XercesSession session;  // else each document starts and ends the library
    const Form form{GetParam()};
};

}  // namespace

TEST_P(EveryForm, HasARowForEachElementAndReachesIt)
{
    EXPECT_EQ(form.Words().size(), Vocabulary(GetParam()).size()) << "a tag has two rows";
    for (const auto& [tag, word] : form.Words()) {
        EXPECT_TRUE(form.Reaches(tag)) << tag;
        std::set<std::string_view> names;
        for (const AttributeWord& attribute : word->attributes) {
            EXPECT_TRUE(names.insert(attribute.name).second) << tag << " " << attribute.name;
        }
        names.clear();
        for (const ChildWord& child : word->children) {
            EXPECT_TRUE(form.Has(child.tag)) << tag << " " << child.tag;
            EXPECT_TRUE(names.insert(child.tag).second) << tag << " " << child.tag;
        }
    }
}

TEST_P(EveryForm, TellsEachMisspeltAttributeWithTheNameThatIsMeant)
{
    for (const auto& [tag, word] : form.Words()) {
        for (const AttributeWord& attribute : word->attributes) {
            for (const std::string& name : MisspellingsOf(attribute.name)) {
                const bool matters = attribute.effect != Effect::None;
                EXPECT_EQ(ToldOf(form.With(tag, name + "=''")),
                          fmt::format("{} {} {}  {}",
                                      matters ? "misspelt-attribute" : "unknown-attribute", tag,
                                      name, attribute.name));
            }
        }
    }
}

TEST_P(EveryForm, TakesEachWordOfAnAttributeAndTellsOneInAnotherCase)
{
    for (const auto& entry : form.Words()) {
        const std::string_view tag = entry.first;
        const ElementWord* word = entry.second;
        for (const AttributeWord& attribute : word->attributes) {
            for (const std::string_view text : attribute.words) {
                const auto with = [&](std::string_view value) {
                    return ToldOf(form.With(tag, fmt::format("{}='{}'", attribute.name, value)));
                };
                EXPECT_EQ(with(text), "");
                const std::string other = WithOtherCase(text);
                if (other == text) continue;  // a digit
                const bool matters = attribute.effect != Effect::None;
                EXPECT_EQ(with(other),
                          fmt::format("{} {} {} {} {}", matters ? "unknown-word" : "odd-word", tag,
                                      attribute.name, other, text));
            }
        }
    }
}

TEST_P(EveryForm, TellsEachMisspeltElementWithTheNameThatIsMeant)
{
    for (const auto& [tag, word] : form.Words()) {
        for (const ChildWord& child : word->children) {
            for (const std::string& name : MisspellingsOf(child.tag)) {
                if (form.Has(name)) continue;  // another element's own name
                const bool matters = form.Words().at(child.tag)->effect != Effect::None;
                EXPECT_EQ(
                    ToldOf(form.With(tag, "", "<" + name + "/>")),
                    fmt::format("{} {}   {}", matters ? "misspelt-element" : "unknown-element",
                                name, child.tag))
                    << "in " << tag;
            }
        }
    }
}

TEST_P(EveryForm, TellsASecondElementWhereOneIsAllowedAndTwoWhereManyAre)
{
    for (const auto& [tag, word] : form.Words()) {
        for (const ChildWord& child : word->children) {
            const std::string one = fmt::format("<{0}/>", child.tag);
            EXPECT_EQ(ToldOf(form.With(tag, "", one)), "") << tag;
            const bool matters = form.Words().at(child.tag)->effect != Effect::None;
            const std::string told = ToldOf(form.With(tag, "", one + one));
            const std::string rule = told.substr(0, told.find(' '));
            switch (child.count) {
                case ChildWord::One: EXPECT_EQ(rule, matters ? "repeated-element" : ""); break;
                case ChildWord::Each:
                case ChildWord::Expression: EXPECT_EQ(rule, "repeated-element"); break;
                case ChildWord::Model: EXPECT_EQ(rule, "second-model"); break;
                case ChildWord::Many:
                    EXPECT_EQ(rule, child.key.empty() ? "" : "repeated-name");
                    break;
            }
        }
    }
}

TEST_P(EveryForm, TellsAnElementThatStandsWhereItIsNotRead)
{
    const std::string root = GetParam() ? "zelt-ml" : "PMML";
    for (const auto& [tag, word] : form.Words()) {
        if (form.PathOf(tag).size() < 2) continue;  // at home in the root
        const bool matters = word->effect != Effect::None;
        EXPECT_EQ(ToldOf(form.With(root, "", fmt::format("<{}/>", tag))),
                  fmt::format("{} {}   ", matters ? "misplaced-element" : "unknown-element", tag));
    }
}

INSTANTIATE_TEST_SUITE_P(Vocabulary, EveryForm, testing::Bool(),
                         [](const auto& row) { return row.param ? "Older" : "Published"; });

TEST(VocabularyWords, AreKnownByElementAndAttribute)
{
    const auto outliers = WordsOf("MiningField", "outliers");
    EXPECT_EQ(std::vector<std::string_view>(outliers.begin(), outliers.end()),
              (std::vector<std::string_view>{"asIs", "asMissingValues", "asExtremeValues"}));
    EXPECT_EQ(WordsOf("variable", "storage-type").size(), 2u);
    EXPECT_TRUE(WordsOf("MiningField", "name").empty());
    EXPECT_TRUE(WordsOf("MiningField", "nosuch").empty());
    EXPECT_TRUE(WordsOf("Nosuch", "name").empty());
}

namespace {

// A change to a document, and what is told of it.
struct FaultRow {
    const char* name;
    const char* from;
    const char* to;
    const char* rule;
    Answer answer;
    unsigned long line;
    const char* element;
    const char* attribute;
    const char* found;
    const char* text;
};

// One element a line, so that a finding's line tells its place.
constexpr const char* kSound = R"(<PMML version="4.4" xmlns="http://www.dmg.org/PMML-4_4">
<Header copyright="nobody"/>
<DataDictionary>
<DataField name="y" optype="continuous" dataType="double"/>
<DataField name="a" optype="continuous" dataType="double"><Interval closure="openOpen"/></DataField>
<DataField name="off" optype="continuous" dataType="double"/>
</DataDictionary>
<GeneralRegressionModel modelType="generalizedLinear" algorithmName="GZLM" functionName="regression"
  distribution="poisson" linkFunction="log" offsetVariable="off">
<MiningSchema>
<MiningField name="y" usageType="target"/>
<MiningField name="a"/>
<MiningField name="off"/>
</MiningSchema>
<Targets><Target field="y" min="0"/></Targets>
<LocalTransformations>
<DerivedField name="d" optype="continuous" dataType="double"><Constant dataType="integer">2</Constant></DerivedField>
</LocalTransformations>
<ParameterList><Parameter name="p0"/><Parameter name="p1"/></ParameterList>
<FactorList/>
<CovariateList><Predictor name="a"/></CovariateList>
<PPMatrix>
<PPCell parameterName="p1" predictorName="a" value="1"/>
</PPMatrix>
<ParamMatrix>
<PCell parameterName="p0" beta="3" df="1"/>
<PCell parameterName="p1" beta="1" df="1"/>
</ParamMatrix>
</GeneralRegressionModel>
</PMML>
)";

std::string Changed(const char* from, const char* to)
{
    std::string text = kSound;
    const size_t place = text.find(from);
    EXPECT_NE(place, std::string::npos) << from;
    return text.replace(place, std::string(from).size(), to);
}

constexpr Answer kFault = Answer::Fault;
constexpr Answer kNotice = Answer::Notice;

constexpr FaultRow kFaults[] = {
    {"ForeignNamespace", "http://www.dmg.org/PMML-4_4", "http://example.com/PMML",
     "foreign-namespace", kFault, 1, "PMML", "xmlns", "http://example.com/PMML",
     "the root stands in the namespace \"http://example.com/PMML\", which isn't PMML's"},
    {"UnknownVersion", "\"4.4\"", "\"4.7\"", "unknown-version", kFault, 1, "PMML", "version", "4.7",
     "version \"4.7\" of PMML is none that is read: 3.0 to 4.4"},
    {"VersionOfAnotherNamespace", "version=\"4.4\"", "version=\"4.3\"", "version-against-namespace",
     kNotice, 1, "PMML", "version", "4.3",
     "version \"4.3\" of PMML isn't that of its namespace, 4.4, and the version counts"},
    {"VersionBeforeTheFirst", "\"4.4\"", "\"2.1\"", "unknown-version", kFault, 1, "PMML", "version",
     "2.1", "version \"2.1\" of PMML is none that is read: 3.0 to 4.4"},
    {"AttributeInAnotherCase", "offsetVariable", "offsetvariable", "misspelt-attribute", kFault, 8,
     "GeneralRegressionModel", "offsetvariable", "off",
     "GeneralRegressionModel has no attribute \"offsetvariable\"; did you mean "
     "\"offsetVariable\"?"},
    {"AttributeNobodyKnows", "<MiningField name=\"a\"", "<MiningField name=\"a\" colour=\"red\"",
     "unknown-attribute", kNotice, 12, "MiningField", "colour", "red",
     "MiningField has no attribute \"colour\", which is passed over"},
    {"AttributeOfAnElementThatHasNone", "<FactorList/>", "<FactorList odd=\"1\"/>",
     "unknown-attribute", kNotice, 20, "FactorList", "odd", "1",
     "FactorList has no attribute \"odd\", which is passed over"},
    {"AttributeBesideTheOneThatItComesNearTo", "beta=\"3\"", "beta=\"3\" Beta=\"4\"",
     "misspelt-attribute", kFault, 26, "PCell", "Beta", "4",
     "PCell has no attribute \"Beta\"; did you mean \"beta\"?"},
    {"AttributeThatTheAdapterAdded", "algorithmName", "algorithmNam", "misspelt-attribute", kFault,
     8, "GeneralRegressionModel", "algorithmNam", "GZLM",
     "GeneralRegressionModel has no attribute \"algorithmNam\"; did you mean \"algorithmName\"?"},
    {"ElementInAnotherCase", "<Targets><Target field=\"y\" min=\"0\"/></Targets>",
     "<targets><Target field=\"y\" min=\"0\"/></targets>", "misspelt-element", kFault, 15,
     "targets", "", "",
     "GeneralRegressionModel has no element \"targets\"; did you mean \"Targets\"?"},
    {"ElementNobodyKnows", "<FactorList/>", "<Colour/><FactorList/>", "unknown-element", kNotice,
     20, "Colour", "", "",
     "GeneralRegressionModel has no element \"Colour\", which is passed over"},
    {"ElementInTheWrongPlace", "</GeneralRegressionModel>", "</GeneralRegressionModel>\n<Targets/>",
     "misplaced-element", kFault, 30, "Targets", "", "",
     "Targets isn't read in PMML: it belongs in \"GeneralRegressionModel\", "
     "\"RegressionModel\""},
    {"WordInAnotherCase", "\"poisson\"", "\"Poisson\"", "unknown-word", kFault, 8,
     "GeneralRegressionModel", "distribution", "Poisson",
     "distribution of GeneralRegressionModel is \"Poisson\", which is none of its words; did you "
     "mean \"poisson\"?"},
    {"WordWithABlank", "\"target\"", "\"target \"", "unknown-word", kFault, 11, "MiningField",
     "usageType", "target ",
     "usageType of MiningField is \"target \", which is none of its words; did you mean "
     "\"target\"?"},
    {"WordOfWhichNothingDepends", "<MiningField name=\"a\"",
     "<MiningField name=\"a\" optype=\"nosuch\"", "odd-word", kNotice, 12, "MiningField", "optype",
     "nosuch", "optype of MiningField is \"nosuch\", which is none of its words"},
    {"WordOfAnOutputThatItsMakerAdded", "<Targets>",
     "<Output><OutputField name=\"o\" feature=\"x-own\"/></Output>\n<Targets>", "odd-word", kNotice,
     15, "OutputField", "feature", "x-own",
     "feature of OutputField is \"x-own\", which is none of its words"},
    {"WordThatAScoreDependsOnThoughItsMakerAddedIt", "\"log\"", "\"x-own\"", "unknown-word", kFault,
     8, "GeneralRegressionModel", "linkFunction", "x-own",
     "linkFunction of GeneralRegressionModel is \"x-own\", which is none of its words"},
    {"EmptyWord", "<MiningField name=\"a\"", "<MiningField name=\"a\" outliers=\"\"", "empty-word",
     kNotice, 12, "MiningField", "outliers", "",
     "outliers of MiningField is empty, which counts as absent"},
    {"FractionOfAnInteger", ">2</Constant>", ">1.5</Constant>", "fraction-of-integer", kFault, 17,
     "Constant", "", "1.5",
     "Constant has the dataType \"integer\" and is \"1.5\", which is no whole number"},
    {"SecondSection", "<ParamMatrix>", "<ParamMatrix/>\n<ParamMatrix>", "repeated-element", kFault,
     26, "ParamMatrix", "", "", "ParamMatrix stands a second time in GeneralRegressionModel"},
    {"SecondTargetOfAField", "min=\"0\"/>", "min=\"0\"/>\n<Target field=\"y\" min=\"1\"/>",
     "repeated-element", kFault, 16, "Target", "field", "y",
     "Target stands a second time in Targets with field \"y\""},
    {"SecondExpression", "</Constant>", "</Constant>\n<FieldRef field=\"a\"/>", "repeated-element",
     kFault, 18, "FieldRef", "", "", "FieldRef stands a second time in DerivedField"},
    {"SecondParameterOfAName", "<Parameter name=\"p0\"/>",
     "<Parameter name=\"p0\"/>\n<Parameter name=\"p0\"/>", "repeated-name", kNotice, 20,
     "Parameter", "name", "p0",
     "Parameter stands a second time in ParameterList with name \"p0\", and the first counts"},
    {"SecondModel", "</GeneralRegressionModel>",
     "</GeneralRegressionModel>\n<TreeModel anything=\"goes\"/>", "second-model", kFault, 30,
     "TreeModel", "", "", "TreeModel is a second model beside GeneralRegressionModel"},
    {"NotScorable", "offsetVariable", "isScorable=\"0\" offsetVariable", "not-scorable", kFault, 8,
     "GeneralRegressionModel", "isScorable", "0",
     "isScorable of GeneralRegressionModel is \"0\": the model isn't meant to be scored"},
};

// Notices of other rules of the audit aren't this test's.
std::string VocabularyRulesOf(const Findings& findings)
{
    std::string names;
    for (const AuditRule& rule : VocabularyRules()) {
        if (findings.CountOf(rule.rule.name) > 0) names += " " + std::string(rule.rule.name);
    }
    return names;
}

}  // namespace

class VocabularyFault : public testing::TestWithParam<FaultRow> {};

TEST_P(VocabularyFault, IsToldWithPlaceAndTextAndNothingElseIs)
{
    const FaultRow& row = GetParam();
    const Audited audited(Changed(row.from, row.to));
    EXPECT_EQ(VocabularyRulesOf(audited.findings), std::string(" ") + row.rule);
    EXPECT_EQ(audited.findings.CountOf(row.rule), 1u);
    const Finding finding = audited.Of(row.rule);
    EXPECT_EQ(finding.answer, row.answer);
    EXPECT_EQ(finding.place.line, row.line);
    EXPECT_EQ(finding.element, row.element);
    EXPECT_EQ(finding.attribute, row.attribute);
    EXPECT_EQ(finding.found, row.found);
    EXPECT_EQ(finding.text, row.text);
    EXPECT_FALSE(finding.remedy.empty());
}

INSTANTIATE_TEST_SUITE_P(Vocabulary, VocabularyFault, testing::ValuesIn(kFaults),
                         [](const auto& row) { return row.param.name; });

namespace {

struct SoundRow {
    const char* name;
    const char* from;
    const char* to;
};

constexpr SoundRow kSoundChanges[] = {
    {"Nothing", "</PMML>", "</PMML>"},
    {"NoNamespace", " xmlns=\"http://www.dmg.org/PMML-4_4\"", ""},
    {"NamespaceOfNoVersion", "http://www.dmg.org/PMML-4_4", "http://www.dmg.org/PMML"},
    {"FirstVersion", "version=\"4.4\" xmlns=\"http://www.dmg.org/PMML-4_4\"",
     "version=\"3.0\" xmlns=\"http://www.dmg.org/PMML-3_0\""},
    {"AttributesOfAnother", "<MiningField name=\"a\"",
     "<MiningField name=\"a\" x-colour=\"red\" v:colour=\"red\" xmlns:v=\"urn:v\""},
    {"PlaceOfTheSchema", "<PMML", "<PMML schemaLocation=\"a b\""},
    {"ElementOfAnotherPrefix", "<FactorList/>",
     "<v:Colour xmlns:v=\"urn:v\"><v:Red/></v:Colour><FactorList/>"},
    {"ElementOfAnotherNamespace", "<FactorList/>",
     "<Colour xmlns=\"urn:v\"><Red/></Colour><FactorList/>"},
    {"WhateverStandsInAnExtension", "<FactorList/>",
     "<Extension extender=\"v\" name=\"colour\"><Red hue=\"1\"/><pcell/></Extension><FactorList/>"},
    {"ColumnsOfATable", "<Constant dataType=\"integer\">2</Constant>",
     "<MapValues outputColumn=\"out\"><FieldColumnPair field=\"a\" "
     "column=\"in\"/><InlineTable><row>"
     "<in>1</in><out>2</out></row></InlineTable></MapValues>"},
    {"RecordsOfAVerification", "</ParamMatrix>",
     "</ParamMatrix><ModelVerification><VerificationFields><VerificationField field=\"a\" "
     "column=\"beta\"/></VerificationFields><InlineTable><row><beta>1</beta></row></InlineTable>"
     "</ModelVerification>"},
    {"Statistics", "<Targets>",
     "<ModelStats><UnivariateStats field=\"a\"/></ModelStats><ModelExplanation/><Targets>"},
    {"WholeConstantWrittenAsADouble", ">2</Constant>", ">2.0</Constant>"},
    {"FractionOfADouble", "dataType=\"integer\">2<", "dataType=\"double\">1.5<"},
    {"TargetsOfTwoFields", "min=\"0\"/>", "min=\"0\"/><Target field=\"a\"/>"},
    {"SecondHeader", "<DataDictionary>", "<Header/><DataDictionary>"},
    {"Scorable", "offsetVariable", "isScorable=\"1\" offsetVariable"},
    {"ArgumentsOfAFunction", "<Constant dataType=\"integer\">2</Constant>",
     "<Apply function=\"+\"><FieldRef field=\"a\"/><FieldRef field=\"a\"/></Apply>"},
};

}  // namespace

class VocabularySound : public testing::TestWithParam<SoundRow> {};

TEST_P(VocabularySound, IsPassedInSilence)
{
    const Audited audited(Changed(GetParam().from, GetParam().to));
    EXPECT_EQ(VocabularyRulesOf(audited.findings), "");
}

INSTANTIATE_TEST_SUITE_P(Vocabulary, VocabularySound, testing::ValuesIn(kSoundChanges),
                         [](const auto& row) { return row.param.name; });

TEST(Vocabulary, OfALaterVersionIsTold)
{
    const auto document = [](const char* version) {
        return fmt::format(
            "<PMML version='{}'><GeneralRegressionModel targetReferenceCategory='a'>"
            "<ModelExplanation/></GeneralRegressionModel></PMML>",
            version);
    };
    EXPECT_EQ(ToldOf(document("4.0")), "");
    EXPECT_EQ(ToldOf(document("3.2")),
              "later-version GeneralRegressionModel targetReferenceCategory 3.2 \n"
              "later-version ModelExplanation  3.2 ");
}

TEST(Vocabulary, OfARootWhosePrefixIsAnothersIsForeign)
{
    const Audited audited("<v:PMML version='4.4' xmlns:v='urn:v'><v:Header/></v:PMML>");
    EXPECT_EQ(audited.Rules(), "foreign-namespace");
    EXPECT_EQ(audited.Of("foreign-namespace").found, "urn:v");
}

TEST(Vocabulary, ManyElementsOfOneMisspellingAreEachTold)
{
    std::string cells;
    for (int i = 0; i < 250; ++i) {
        cells += "<PPCell parameterName='b'/><PPCell parametername='b'/><PPCell parameter='b'/>";
    }
    const Audited audited("<PMML version='4.4'><GeneralRegressionModel><PPMatrix>" + cells +
                          "</PPMatrix></GeneralRegressionModel></PMML>");
    EXPECT_EQ(audited.findings.CountOf("misspelt-attribute"), 250u);
    EXPECT_EQ(audited.findings.CountOf("unknown-attribute"), 250u);
}

TEST(Vocabulary, HoldsWhatPublishedDocumentsAndOurOwnSay)
{
    namespace fs = std::filesystem;
    size_t documents = 0;
    for (const char* folder : {"tests/data/cases", "tests/data/published", "examples"}) {
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            if (entry.path().extension() != ".pmml") continue;
            std::ifstream file(entry.path());
            std::stringstream text;
            text << file.rdbuf();
            EXPECT_EQ(VocabularyRulesOf(Audited(text.str()).findings), "") << entry.path();
            ++documents;
        }
    }
    EXPECT_GT(documents, 80u);
}

}  // namespace MCVelscore_850

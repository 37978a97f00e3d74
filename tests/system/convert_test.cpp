// Documents of the older form through convert: the result scores every case to the same last bit,
// needs no adaptation, and is the same model to inspect.

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/readers/legacyparts.h"
#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"
#include "tests/system/testmodel.h"

namespace MCVelscore_850 {
namespace {

using Json = nlohmann::json;

bool Has(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

// What inspect says of a document, without its file and version; the older form has no labels.
Json Inspected(const std::string& document)
{
    Json about = Json::parse(RunVelscore({"inspect", "--json", document}).out);
    about.erase("document");
    about.erase("version");
    about.erase("notices");  // their places differ
    for (Json& equation : about["equations"]) {
        for (Json& term : equation["terms"]) term.erase("label");
    }
    for (Json& row : about["coefficients"]["rows"]) row.erase("label");
    return about;
}

// The plain text of inspect without its first line, which names the file, and its notices.
std::string PlainText(const std::string& document)
{
    std::istringstream out(RunVelscore({"inspect", document}).out);
    std::string text;
    std::string line;
    std::getline(out, line);
    while (std::getline(out, line)) {
        if (!line.starts_with("notice ")) text += line + "\n";
    }
    return text;
}

// What is other in the published form: what convert tells, a line each that starts so, and the
// constant of 0 that a linear regression without one gets.
struct Changes {
    std::vector<std::string> told;
    bool constantAdded = false;
};

// Converts a document and compares both forms; answers the scores.
std::string ExpectTheSame(const ScratchFolder& folder, const std::string& old,
                          const std::string& table, const Changes& changes = {})
{
    const std::string published = folder.Path("new.pmml");
    const Finished convert = RunVelscore({"convert", old, "-o", published});
    EXPECT_EQ(convert.exitCode, 0) << convert.err;
    EXPECT_EQ(convert.out, "");
    EXPECT_EQ(static_cast<size_t>(std::ranges::count(convert.err, '\n')), changes.told.size())
        << convert.err;
    for (const std::string& what : changes.told) {
        EXPECT_TRUE(Has(convert.err, "velscore: " + old + ": " + what)) << convert.err;
    }
    const Finished check = RunVelscore({"check", published});
    EXPECT_EQ(check.exitCode, 0) << check.out;
    EXPECT_TRUE(Has(check.out, published + ": OK")) << check.out;
    EXPECT_FALSE(Has(check.out, "adapted")) << check.out;
    const Finished before = RunVelscore({"score", old, table});
    const Finished after = RunVelscore({"score", published, table});
    EXPECT_EQ(before.exitCode, 0) << before.err;
    EXPECT_EQ(after.exitCode, before.exitCode);
    EXPECT_EQ(after.out, before.out);
    Json about = Inspected(old);
    std::string plainBefore = PlainText(old);
    if (changes.constantAdded) {
        about["equations"][0]["terms"].push_back(
            {{"parameter", "(Constant)"}, {"beta", 0.0}, {"factors", Json::array()}});
        plainBefore.insert(plainBefore.find("columns of the output"), "    + 0\n");
    }
    Json aboutPublished = Inspected(published);
    if (changes.constantAdded) {
        // It is one more estimate.
        about.erase("coefficients");
        aboutPublished.erase("coefficients");
    }
    EXPECT_EQ(aboutPublished, about);
    EXPECT_EQ(PlainText(published), plainBefore);
    return before.out;
}

std::vector<std::string> LegacyCases()
{
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(DataFile("cases"))) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with("legacy-")) names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    return names;
}

TEST(Convert, RealModelsScoreTheSame)
{
    const std::vector<std::string> names = LegacyCases();
    ASSERT_GE(names.size(), 2u);
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        const ScratchFolder folder;
        const std::string path = DataFile("cases/" + name + "/");
        const std::string scores = ExpectTheSame(folder, path + "model.pmml", path + "input.csv");
        EXPECT_GT(ParseCsv(scores).rows.size(), 20u);
    }
}

struct Form {
    const char* name;
    LegacyParts parts;
    const char* table;
    std::vector<std::string> statuses;  // of the rows, by hand
    Changes changes = {};
};

void PrintTo(const Form& form, std::ostream* out) { *out << form.name; }

LegacyParts WithVariable(LegacyParts parts, const std::string& name, const std::string& variable)
{
    const size_t from = parts.variables.find("<variable name='" + name + "'");
    const std::string end = "</variable>\n";
    parts.variables.replace(from, parts.variables.find(end, from) + end.size() - from, variable);
    return parts;
}

LegacyParts WithCovariances(LegacyParts parts, const std::string& covariances)
{
    parts.covariances = covariances;
    return parts;
}

LegacyParts WithCells(LegacyParts parts, const std::string& cells)
{
    parts.cells = cells;
    return parts;
}

LegacyParts NumericTarget()
{
    LegacyParts parts = MultinomialParts();
    for (std::string* text : {&parts.betas, &parts.variables}) {
        for (const auto& [letter, number] :
             {std::pair{"'a'", "'3'"}, {"'b'", "'1.0'"}, {"'d'", "'2'"}}) {
            for (size_t at = 0; (at = text->find(letter, at)) != std::string::npos;) {
                text->replace(at, 3, number);
            }
        }
    }
    return WithVariable(parts, "c",
                        OldVariable("c", "NUMERIC", "ORDINAL", OldCategories({"3", "1", "2.00"})));
}

std::vector<Form> Forms()
{
    const std::string ranges =
        "<missing-values><range minimum='LOWEST' maximum='-5'/><value value='4'/>"
        "<range minimum='7' maximum='8'/></missing-values>";
    const std::string cov =
        "<pcov-cell p-row='(Constant)' p-col='(Constant)' value='0.3'/>"
        "<pcov-cell p-row='bx' p-col='(Constant)' value='-0.17'/>"
        "<pcov-cell p-row='bx' p-col='bx' value='0.9'/>"
        "<pcov-cell p-row='bw' p-col='bx' value='0.11'/>"
        "<pcov-cell p-row='bw' p-col='bw' value='1.7'/>";
    const std::string missing9 = "<missing-values><value value='9'/></missing-values>";
    LegacyParts unnamed;
    unnamed.parameters = "<parameter/><parameter name='bw'/><parameter name='(Constant)'/>";
    unnamed.betas =
        "<p-cell parameter-name='(Constant)' beta='1'/><p-cell beta='2'/>"
        "<p-cell parameter-name='bw' beta='3'/>";
    unnamed.covariances = "<pcov-cell value='0.5'/>";
    LegacyParts withoutConstant;
    withoutConstant.parameters = "<parameter name='bx'/><parameter name='bw'/>";
    withoutConstant.covariances =
        "<pcov-cell p-row='bx' p-col='bw' value='0.3'/>"
        "<pcov-cell p-row='bx' p-col='bx' value='0.5'/>"
        "<pcov-cell p-row='bw' p-col='bw' value='0.25'/>"
        "<pcov-cell p-row='(Constant)' p-col='bw' value='7'/>";
    const char* const numbers =
        "x,w\n0.1,3\n-5,1\n-4.99,1\n4,1\n6.999,0\n7,0\n7.5,0\n8,0\n8.01,-2e3\n,1\n1,NA\n";
    const char* const groups = "f,x\nu,1.5\nv,-0.25\nv,0\nw,1\nt,2\n,1\nNA,1\nv,\nu,1e200\nu,-7\n";
    return {
        {"Linear",
         WithCovariances({}, cov),
         numbers,
         {"0", "0", "0", "0", "0", "0", "0", "0", "0", "90029", "90029"}},
        {"LinearWithMissingRanges",
         WithVariable(WithCovariances({}, cov), "x",
                      OldVariable("x", "NUMERIC", "CONTINUOUS", ranges)),
         numbers,
         {"0", "90029", "0", "90029", "0", "90029", "90029", "90029", "0", "90029", "90029"}},
        {"LinearWithAListedCovariate",
         WithVariable(WithCovariances({}, cov), "x",
                      OldVariable("x", "NUMERIC", "NOMINAL", OldCategories({"0.1", "8"}))),
         numbers,
         {"0", "90029", "90029", "90029", "90029", "90029", "90029", "0", "90029", "90029",
          "90029"}},
        {"LinearWithMeans",
         WithVariable({}, "x",
                      OldVariable("x", "NUMERIC", "CONTINUOUS",
                                  "<var-stats minimum='-INF' maximum='1' mean='2'/>")),
         numbers,
         {"0", "0", "0", "0", "0", "0", "0", "0", "0", "90029", "90029"},
         {.told = {"left out the means of var-stats"}}},
        {"LinearWithCellsOfAnotherOrder",
         WithCells({}, "<pp-cell parameter-name='bx' predictor-name='w' value='3'/>"),
         numbers,
         {"0", "0", "0", "0", "0", "0", "0", "0", "0", "90029", "90029"},
         {.told = {"the pp-matrix doesn't say what the model computes"}}},
        {"Multinomial",
         MultinomialParts(),
         groups,
         {"0", "0", "0", "90029", "90029", "90029", "90029", "90029", "0", "0"}},
        {"MultinomialOfNumbers",
         NumericTarget(),
         groups,
         {"0", "0", "0", "90029", "90029", "90029", "90029", "90029", "0", "0"}},
        {"MultinomialWithACategoryOfACell",
         WithCells(MultinomialParts(), MultinomialParts().cells +
                                           "<pp-cell parameter-name='ghost' predictor-name='f' "
                                           "value='t'/>"),
         groups,
         {"0", "0", "0", "90029", "0", "90029", "90029", "90029", "0", "0"},
         {.told = {"left out 1 cell of the pp-matrix"}}},
        {"MultinomialWithMissingValues",
         WithVariable(WithVariable(MultinomialParts(), "f",
                                   OldVariable("f", "STRING", "ORDINAL",
                                               "<missing-values><value value='u'/>"
                                               "</missing-values>" +
                                                   OldCategories({"u", "v", "NA"}))),
                      "x", OldVariable("x", "NUMERIC", "UNKNOWN", ranges)),
         groups,
         {"90029", "0", "0", "90029", "90029", "90029", "0", "90029", "90029", "90029"}},
        {"MultinomialWithAnOpenFactorOfNumbers",
         WithCells(WithVariable(MultinomialParts(), "f", OldVariable("f", "NUMERIC", "NOMINAL")),
                   "<pp-cell parameter-name='pf' predictor-name='f' value='2.0'/>"
                   "<pp-cell parameter-name='px' predictor-name='x' value='1'/>"
                   "<pp-cell parameter-name='pfx' predictor-name='x' value='0.5'/>"),
         "f,x\n2,1\n3,1\n,1\n-1.5,4\n",
         {"0", "0", "90029", "0"}},
        {"Conditional",
         ConditionalParts(),
         "g,x\n1,2\n2,-3.5\n3,1\n,1\n1,\n2,1000\n1,-1000\n",
         {"0", "0", "90029", "90029", "90029", "0", "0"}},
        {"ConditionalWithAContinuousFactor",
         WithVariable(ConditionalParts(), "g",
                      OldVariable("g", "NUMERIC", "CONTINUOUS",
                                  "<missing-values><value value='9'/></missing-values>")),
         "g,x\n1,2\n2,-3.5\n3,1\n9,1\n,1\n",
         {"0", "0", "0", "90029", "90029"}},
        {"ConditionalWithAFactorWithoutAList",
         WithCells(WithVariable(ConditionalParts(), "g", OldVariable("g", "STRING", "UNKNOWN")),
                   "<pp-cell parameter-name='px' predictor-name='x' value='1'/>"
                   "<pp-cell parameter-name='pg' predictor-name='g' value='n&amp;&#10;s'/>"),
         "g,x\n\"n&\ns\",2\nn,2\nNA,1\n,1\n",
         {"0", "0", "90029", "90029"}},
        {"ConditionalWithMissingValuesAndNoList",
         WithCells(
             WithVariable(ConditionalParts(), "g", OldVariable("g", "STRING", "NOMINAL", missing9)),
             "<pp-cell parameter-name='px' predictor-name='x' value='1'/>"
             "<pp-cell parameter-name='pg' predictor-name='g' value='2'/>"),
         "g,x\n2,2\nother,2\n9,1\n,1\n",
         {"0", "0", "90029", "90029"}},
        {"ConditionalWithAnOpenFactorOfNumbersAndMissingValues",
         WithVariable(ConditionalParts(), "g", OldVariable("g", "NUMERIC", "ORDINAL", missing9)),
         "g,x\n2,2\n-1.5,2\n9,1\n,1\n",
         {"0", "0", "90029", "90029"}},
        {"MultinomialWithAnOpenFactorOfNumbersAndMissingValues",
         WithCells(WithVariable(MultinomialParts(), "f",
                                OldVariable("f", "NUMERIC", "NOMINAL", missing9)),
                   "<pp-cell parameter-name='pf' predictor-name='f' value='2.0'/>"
                   "<pp-cell parameter-name='px' predictor-name='x' value='1'/>"
                   "<pp-cell parameter-name='pfx' predictor-name='x' value='0.5'/>"),
         "f,x\n2,1\n3,1\n9,1\n-1.5,4\n",
         {"0", "0", "90029", "0"}},
        {"MultinomialWithACovariateThatIsNominalAndHasMissingValues",
         WithVariable(MultinomialParts(), "x", OldVariable("x", "NUMERIC", "NOMINAL", missing9)),
         "f,x\nu,1\nv,3.5\nv,9\n",
         {"0", "0", "90029"}},
        {"LinearWithoutAConstant",
         withoutConstant,
         "x,w\n0,0\n0.1,-3\n7,1e-9\n",
         {"0", "0", "0"},
         {.told = {"left out 1 cell of the p-table", "left out 1 cell of the pcov-matrix"},
          .constantAdded = true}},
        {"LinearWithAParameterWithoutAName",
         unnamed,
         numbers,
         {"0", "0", "0", "0", "0", "0", "0", "0", "0", "90029", "90029"},
         {.told = {"the pp-matrix doesn't say what the model computes"}}},
    };
}

class ConvertedForm : public testing::TestWithParam<Form> {};

TEST_P(ConvertedForm, ScoresTheSameToTheLastBit)
{
    const ScratchFolder folder;
    const std::string old = folder.Write("old.xml", GetParam().parts.Text());
    const std::string table = folder.Write("cases.csv", GetParam().table);
    const std::string scores = ExpectTheSame(folder, old, table, GetParam().changes);
    EXPECT_EQ(ParseCsv(scores).Texts("status"), GetParam().statuses);
}

INSTANTIATE_TEST_SUITE_P(Families, ConvertedForm, testing::ValuesIn(Forms()),
                         [](const auto& each) { return each.param.name; });

TEST(Convert, WritesToStandardOutputAndReadsStandardInput)
{
    const ScratchFolder folder;
    const std::string text = ConditionalParts().Text();
    const std::string old = folder.Write("old.xml", text);
    ASSERT_EQ(RunVelscore({"convert", old, "-o", folder.Path("new.pmml")}).exitCode, 0);
    const std::string published = ReadFile(folder.Path("new.pmml"));
    EXPECT_TRUE(published.starts_with("<?xml version=\"1.0\" encoding=\"UTF-8\"")) << published;
    EXPECT_EQ(RunVelscore({"convert", old}).out, published);
    EXPECT_EQ(RunVelscore({"convert", "-"}, text).out, published);
    EXPECT_EQ(RunVelscore({"convert", "-", "-o", "-"}, text).out, published);
}

TEST(Convert, RefusedDocumentsEndWithTwoAndLeaveTheOutputAlone)
{
    LegacyParts bad;
    bad.betas = "<p-cell parameter-name='bx' beta='two'/>";
    LegacyParts constant = ConditionalParts();
    constant.parameters += "<parameter name='(Constant)'/>";
    const struct {
        std::string text;
        const char* message;
    } kRows[] = {
        {bad.Text(), "'two' is not a number [269001]"},
        {constant.Text(), "the parameter (Constant) is a constant"},
        {TestModel().Text(), "is a PMML document already [269030]"},
        {"<html/>", "no model document"},
        {"", "is empty"},
    };
    for (const auto& row : kRows) {
        const ScratchFolder folder;
        const std::string old = folder.Write("old.xml", row.text);
        const std::string out = folder.Write("new.pmml", "precious\n");
        const Finished run = RunVelscore({"convert", old, "-o", out});
        EXPECT_EQ(run.exitCode, 2) << run.err;
        EXPECT_EQ(run.out, "");
        EXPECT_TRUE(Has(run.err, row.message)) << run.err;
        EXPECT_TRUE(Has(run.err, old)) << run.err;
        EXPECT_TRUE(Has(run.err, "what to do: ")) << run.err;
        EXPECT_EQ(ReadFile(out), "precious\n");
        EXPECT_EQ(RunVelscore({"convert", old, "-o", folder.Path("none.pmml")}).exitCode, 2);
        EXPECT_FALSE(std::filesystem::exists(folder.Path("none.pmml")));
    }
}

TEST(Convert, TheDocumentItselfIsNoOutput)
{
    const ScratchFolder folder;
    const std::string text = LegacyParts().Text();
    const std::string old = folder.Write("old.xml", text);
    std::filesystem::create_symlink(old, folder.Path("link.xml"));
    for (const std::string& out : {old, folder.Path("link.xml"), folder.Path("./old.xml")}) {
        const Finished run = RunVelscore({"convert", old, "-o", out});
        EXPECT_EQ(run.exitCode, 1) << out;
        EXPECT_TRUE(Has(run.err, "the output is the input")) << run.err;
    }
    const Finished redirected =
        RunProgram({"/bin/sh", "-c", "\"$0\" convert - < \"$1\" >> \"$1\"", VELSCORE_COMMAND, old});
    EXPECT_EQ(redirected.exitCode, 1);
    EXPECT_EQ(ReadFile(old), text);
}

TEST(Convert, NoHalfDocumentRemains)
{
    // The shell's limit on the size of files stands for a full disk: 512 bytes.
    const ScratchFolder folder;
    const std::string old = folder.Write("old.xml", LegacyParts().Text());
    const std::string out = folder.Path("new.pmml");
    const auto run = [&](const char* script) {
        return RunProgram({"/bin/sh", "-c", script, VELSCORE_COMMAND, old, out});
    };
    const char* const toFile = "ulimit -f 1; exec \"$0\" convert \"$1\" -o \"$2\"";
    const Finished fresh = run(toFile);
    EXPECT_EQ(fresh.exitCode, 4) << fresh.err;
    EXPECT_TRUE(Has(fresh.err, out)) << fresh.err;
    EXPECT_FALSE(std::filesystem::exists(out));
    folder.Write("new.pmml", "precious\n");
    EXPECT_EQ(run(toFile).exitCode, 4);
    EXPECT_EQ(ReadFile(out), "precious\n");
    EXPECT_EQ(run("ulimit -f 1; exec \"$0\" convert \"$1\" >> \"$2\"").exitCode, 4);
    EXPECT_EQ(ReadFile(out), "precious\n");
    const auto files = std::distance(std::filesystem::directory_iterator(folder.Path(".")),
                                     std::filesystem::directory_iterator());
    EXPECT_EQ(files, 2);  // nothing beside the two
    EXPECT_EQ(run("\"$0\" convert \"$1\" > /dev/full").exitCode, 4);
    EXPECT_EQ(RunVelscore({"convert", old, "-o", "/dev/full"}).exitCode, 4);
}

TEST(Convert, ReaderOfThePipeMayGoAway)
{
    const ScratchFolder folder;
    LegacyParts parts;
    for (int i = 0; i < 20000; ++i) {  // more than a pipe holds
        parts.variables += OldVariable("unused" + std::to_string(i), "NUMERIC", "CONTINUOUS");
    }
    const std::string old = folder.Write("old.xml", parts.Text());
    RunningVelscore running({"convert", old});
    EXPECT_TRUE(running.ReadOutput(10).starts_with("<?xml"));
    running.CloseOutput();
    const Finished run = running.Finish();
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.err, "");
}

TEST(Convert, UsageIsTold)
{
    EXPECT_EQ(RunVelscore({"convert"}).exitCode, 1);
    EXPECT_EQ(RunVelscore({"convert", "a.xml", "b.pmml"}).exitCode, 1);
    const Finished missing = RunVelscore({"convert", "/nowhere/at/all.xml"});
    EXPECT_EQ(missing.exitCode, 2);
    EXPECT_TRUE(Has(missing.err, "/nowhere/at/all.xml"));
    EXPECT_EQ(RunVelscore({"convert", "/nowhere/at/all.xml", "--plugin", "/none.so"}).exitCode, 7);
    EXPECT_TRUE(Has(RunVelscore({"judge"}).err, "convert"));
}

}  // namespace
}  // namespace MCVelscore_850

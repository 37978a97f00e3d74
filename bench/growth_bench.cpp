// Questions: does what grows with a table or a document take time in proportion? Each row does the
// same with 10 times as many; the time of one of them is to stay as it is, but for what the caches
// don't hold any more. A walk from the first one for each takes 10 times as long for each.
//
//   kept columns     naming the columns of an output that keeps 100,000 and 1,000,000 of the input
//   derived fields   reading a document whose derivedField extension lists 3,000 and 30,000 fields
//
// The growth is the figure to keep, the median over the rounds.
//
//   growth_bench [ROUNDS]

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "bench/timing.h"
#include "engine/documents/documentloader.h"
#include "engine/documents/documenttree.h"
#include "engine/scoring/outputshaper.h"
#include "engine/scoring/resultschema.h"
#include "host/model/modeldescription.h"
#include "host/model/scoremodel.h"
#include "host/model/scoreresult.h"
#include "readers/generalregressiontranslator.h"

using namespace MCVelscore_850;
using namespace MCVelscore_850::bench;

namespace {

template <class Work>
double Nanoseconds(const Work& work)
{
    const auto begin = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double, std::nano> time = std::chrono::steady_clock::now() - begin;
    return time.count();
}

double TimeOfKeptColumns(size_t count)
{
    std::vector<std::string> header;
    for (size_t i = 0; i < count; ++i) header.push_back("a long name " + std::to_string(i));
    const ResultSchema schema{ModelDescription()};
    size_t columns = 0;
    const double time = Nanoseconds([&] {
        columns = OutputShaper(schema, header, "cases.csv", {.keepAll = true}).Columns().size();
    });
    if (columns < count) std::exit(1);
    return time;
}

double TimeOfDerivedFields(size_t count)
{
    std::string fields;
    std::string schema;
    for (size_t i = 0; i < count; ++i) {
        const std::string name = "z" + std::to_string(i);
        fields += "<DataField name='" + name + "' optype='continuous' dataType='double'/>";
        schema += "<MiningField name='" + name + "'/>";
    }
    const std::string text =
        "<PMML version='4.2'><DataDictionary>"
        "<DataField name='y' optype='continuous' dataType='double'/>"
        "<DataField name='x' optype='continuous' dataType='double'/>" +
        fields +
        "</DataDictionary><TransformationDictionary><DerivedField name='d' optype='continuous' "
        "dataType='double'><FieldRef field='x'/></DerivedField></TransformationDictionary>"
        "<GeneralRegressionModel modelType='regression' functionName='regression'><MiningSchema>"
        "<MiningField name='y' usageType='target'/><MiningField name='x'/>"
        "<Extension extender='velscore' name='derivedField'>" +
        schema +
        "</Extension></MiningSchema><ParameterList><Parameter name='(Constant)'/>"
        "<Parameter name='px'/></ParameterList><CovariateList><Predictor name='x'/></CovariateList>"
        "<PPMatrix/><ParamMatrix><PCell parameterName='(Constant)' beta='1'/>"
        "<PCell parameterName='px' beta='2'/></ParamMatrix></GeneralRegressionModel></PMML>";
    const Document document = LoadDocumentText(text, "bench");
    std::unique_ptr<ScoreModel> model;
    return Nanoseconds([&] {
        model.reset(
            GeneralRegressionTranslator().ParseFromTree(document.GetTree().dom.get(), "UTF-8"));
    });
}

struct Row {
    const char* name;
    size_t few;
    double (*timeOf)(size_t count);
};

constexpr size_t kTimes = 10;
constexpr Row kRows[] = {
    {"kept columns", 100'000, TimeOfKeptColumns},
    {"derived fields", 3'000, TimeOfDerivedFields},
};

}  // namespace

int main(int argc, char** argv)
{
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 9;
    if (rounds < 1) {
        std::fprintf(stderr, "usage: growth_bench [ROUNDS]\n");
        return 1;
    }
    std::printf("%s, compiler %s\n", Cpu().c_str(), __VERSION__);
    std::printf("%-16s %10s %12s %12s %8s\n", "", "of many", "ns each", "ns of few", "growth");
    for (const Row& row : kRows) {
        std::vector<double> few, many, growth;
        row.timeOf(row.few / kTimes);  // what the first one alone pays for
        for (int round = 0; round < rounds; ++round) {
            few.push_back(row.timeOf(row.few) / static_cast<double>(row.few));
            many.push_back(row.timeOf(row.few * kTimes) / static_cast<double>(row.few * kTimes));
            growth.push_back(many.back() / few.back());
        }
        for (auto* times : {&few, &many, &growth}) std::sort(times->begin(), times->end());
        std::printf("%-16s %10zu %12.1f %12.1f %8.2f\n", row.name, row.few * kTimes, At(many, 0.5),
                    At(few, 0.5), At(growth, 0.5));
    }
    return 0;
}

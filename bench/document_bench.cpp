// Questions, all about one document in one run, so that the ratios hold on any machine:
//   tree     how long the XML library takes to build the tree: the yardstick
//   guard    what the pass over the bytes before it costs; meant to stay within 0.25 of the tree
//   places   what noting line and column on every element adds to the tree; within 0.10
//   adapter  what looking for something to rewrite costs in a document that needs nothing
//   audit    what looking for faults costs in a document that has none; meant to stay within 0.1
//   reader   from the tree to the finished model; meant to stay within 0.5 of the tree
//
// The document is a general linear model of 1,000 parameters with the lower triangle of its
// covariance matrix, half a million cells. Stages take turns, round by round, and the medians are
// compared: a machine that slows down for a while slows them all.
//
//   document_bench [ROUNDS [PARAMETERS]]

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "engine/documents/audit/documentaudit.h"
#include "engine/documents/documentadapter.h"
#include "engine/documents/documentguard.h"
#include "engine/documents/documentloader.h"
#include "engine/documents/documenttree.h"
#include "host/model/scoremodel.h"
#include "readers/generalregressiontranslator.h"

using namespace MCVelscore_850;

namespace {

// As an exporter writes it: one cell a line, indented. Covariate i has parameter b_i.
std::string MakeDocument(int parameters)
{
    std::mt19937_64 random(850);
    std::uniform_real_distribution<> number(-1.0, 1.0);
    std::string fields, mining, list, covariates, cells, betas, covariances;
    const auto add = [](std::string& out, const char* format, const auto&... arguments) {
        fmt::format_to(std::back_inserter(out), fmt::runtime(format), arguments...);
    };
    for (int i = 0; i < parameters; ++i) {
        add(fields, "    <DataField name=\"x{}\" optype=\"continuous\" dataType=\"double\"/>\n", i);
        add(mining, "      <MiningField name=\"x{}\" usageType=\"active\"/>\n", i);
        add(list, "      <Parameter name=\"b{0}\" label=\"x{0}\"/>\n", i);
        add(covariates, "      <Predictor name=\"x{}\"/>\n", i);
        add(cells, "      <PPCell value=\"1\" predictorName=\"x{0}\" parameterName=\"b{0}\"/>\n",
            i);
        add(betas, "      <PCell parameterName=\"b{}\" df=\"1\" beta=\"{:.17g}\"/>\n", i,
            number(random));
        for (int j = 0; j <= i; ++j) {
            add(covariances, "      <PCovCell pRow=\"b{}\" pCol=\"b{}\" value=\"{:.17g}\"/>\n", i,
                j, i == j ? 1.0 : number(random));  // a variance isn't below 0
        }
    }
    std::string document;
    add(document,
        R"(<?xml version="1.0" encoding="UTF-8"?>
<PMML xmlns="http://www.dmg.org/PMML-4_4" version="4.4">
  <Header/>
  <DataDictionary>
    <DataField name="y" optype="continuous" dataType="double"/>
{}  </DataDictionary>
  <GeneralRegressionModel modelType="generalLinear" functionName="regression" modelDF="100">
    <MiningSchema>
      <MiningField name="y" usageType="target"/>
{}    </MiningSchema>
    <ParameterList>
{}    </ParameterList>
    <CovariateList>
{}    </CovariateList>
    <PPMatrix>
{}    </PPMatrix>
    <PCovMatrix>
{}    </PCovMatrix>
    <ParamMatrix>
{}    </ParamMatrix>
  </GeneralRegressionModel>
</PMML>
)",
        fields, mining, list, covariates, cells, covariances, betas);
    return document;
}

template <class Work>
double Milliseconds(const Work& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
        .count();
}

double Median(std::vector<double> times)
{
    std::nth_element(times.begin(), times.begin() + static_cast<long>(times.size() / 2),
                     times.end());
    return times[times.size() / 2];
}

}  // namespace

int main(int argc, char** argv)
{
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 8;
    const int parameters = argc > 2 ? std::atoi(argv[2]) : 1000;
    if (rounds < 1 || parameters < 1) {
        std::fprintf(stderr, "usage: document_bench [ROUNDS [PARAMETERS]]\n");
        return 1;
    }
#ifdef __OPTIMIZE__
    std::printf("compiler %s\n", __VERSION__);
#else
    std::printf("compiler %s, without optimisation: figures mean nothing\n", __VERSION__);
#endif
    const std::string bytes = MakeDocument(parameters);
    const std::vector<ElementPlace> noPlaces;
    const XercesSession session;

    std::vector<double> tree, guard, places, adapter, audit, reader;
    size_t elements = 0;
    size_t changes = 0;
    size_t found = 0;
    for (int round = 0; round < rounds; ++round) {
        DocumentGuard watch("bench");
        guard.push_back(Milliseconds([&] {
            watch.Feed(bytes);
            watch.Finish();
        }));
        elements = watch.Places().size();

        // The second tree of a round is slower than the first, whichever it is: they take turns.
        OwnedTree built;
        const auto build = [&](const std::vector<ElementPlace>& noted, std::vector<double>& times) {
            built.reset();
            times.push_back(Milliseconds([&] { built = BuildTree(bytes, "bench", noted); }));
        };
        if (round % 2 == 0) build(noPlaces, tree);
        build(watch.Places(), places);
        if (round % 2 == 1) build(noPlaces, tree);

        auto owner = std::make_unique<Document::Tree>();
        owner->dom = std::move(built);
        Document document("bench", std::move(owner));
        adapter.push_back(Milliseconds([&] { changes += AdaptDocument(document).size(); }));
        Findings findings;
        audit.push_back(Milliseconds([&] { DocumentAudit(document, {}, findings).LookAtTree(); }));
        found += findings.Kept().size();
        std::unique_ptr<ScoreModel> model;
        reader.push_back(Milliseconds([&] {
            model.reset(
                GeneralRegressionTranslator().ParseFromTree(document.GetTree().dom.get(), "UTF-8"));
        }));
    }
    if (changes != 0) {
        std::fprintf(stderr, "the document was meant to need no rewriting\n");
        return 1;
    }

    if (found != 0) {
        std::fprintf(stderr, "the document was meant to have nothing to tell\n");
        return 1;
    }

    const double yardstick = Median(tree);
    std::printf("%d parameters, %zu elements, %.1f MB, %d rounds\n\n", parameters, elements,
                static_cast<double>(bytes.size()) / 1e6, rounds);
    std::printf("%-10s %10s %10s\n", "stage", "ms", "of tree");
    const auto print = [yardstick](const char* stage, double time) {
        std::printf("%-10s %10.1f %10.3f\n", stage, time, time / yardstick);
    };
    print("tree", yardstick);
    print("guard", Median(guard));
    print("places", Median(places) - yardstick);
    print("adapter", Median(adapter));
    print("audit", Median(audit));
    print("reader", Median(reader));
    return 0;
}

// Writes docs/accuracy.md from the scores of the folders of real models, or checks that it still
// tells the truth.
//
//   models_accuracy_page --write FILE
//   models_accuracy_page --check FILE    0 if the page stands, 1 and the first difference if it's
//   stale
//
// The check wants every word as it is, and every measured error within a factor of 3, those below
// 1e-15 counting as that: the last bits of exp and log differ between C libraries.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "tests/system/csvtext.h"
#include "tests/system/runcommand.h"

using namespace MCVelscore_850;

namespace {

constexpr double kNoise = 3.0;
constexpr double kLastBits = 1e-15;

// One column of the page: the columns of the output that it sums up.
struct Kind {
    const char* title;
    bool (*holds)(const std::string& column);
};

const Kind kPredictions{"Predictions", [](const std::string& c) { return c == "prediction"; }};
const Kind kSurvival{"Survival", kPredictions.holds};
const Kind kProbabilities{"Probabilities",
                          [](const std::string& c) { return c.starts_with("probability("); }};
const Kind kErrors{"Standard errors", [](const std::string& c) { return c == "std_dev"; }};
const Kind kLimits{"Limits", [](const std::string& c) { return c.starts_with("ci_"); }};
const Kind kHazards{"Cumulative hazard", [](const std::string& c) { return c == "cum_hazard"; }};

// A row of the page: the folders that `key` picks out.
struct Group {
    std::string key;
    std::string title;
};

struct Measured {
    size_t folders = 0;
    size_t rows = 0;
    std::map<std::string, double> errors;  // the largest, by output column

    // The largest of a kind; below 0 when there is no such number.
    double Largest(const Kind& kind) const
    {
        double largest = -1.0;
        for (const auto& [column, error] : errors) {
            if (kind.holds(column)) largest = std::max(largest, error);
        }
        return largest;
    }
};

double RelativeError(const std::string& found, double expected)
{
    if (found.empty()) return INFINITY;
    const double score = std::stod(found);
    return score == expected ? 0.0 : std::fabs(score - expected) / std::fabs(expected);
}

bool IsNumber(const std::string& text)
{
    char* end = nullptr;
    std::strtod(text.c_str(), &end);
    return !text.empty() && *end == '\0';
}

void Measure(const std::string& folder, Measured& measured)
{
    const Finished run = RunVelscore({"score", folder + "/model.pmml", folder + "/input.csv"});
    if (run.exitCode != 0) throw std::runtime_error(folder + ": " + run.err);
    const CsvText scores = ParseCsv(run.out);
    const CsvText expected = ParseCsv(ReadFile(folder + "/expected.csv"));
    if (scores.rows.size() != expected.rows.size()) throw std::runtime_error(folder + ": rows");
    ++measured.folders;
    measured.rows += expected.rows.size();
    const bool classifies = std::ranges::any_of(expected.header, kProbabilities.holds);
    for (const std::string& column : expected.header) {
        if (classifies && kPredictions.holds(column))
            continue;  // a category, even when it is a number
        const std::vector<std::string> found = scores.Texts(column);
        const std::vector<std::string> wanted = expected.Texts(column);
        if (found.size() != wanted.size())
            throw std::runtime_error((folder + ": no ").append(column));
        for (size_t row = 0; row < wanted.size(); ++row) {
            if (!IsNumber(wanted[row])) continue;  // there is no such number
            double& largest = measured.errors.try_emplace(column, 0.0).first->second;
            largest = std::max(largest, RelativeError(found[row], std::stod(wanted[row])));
        }
    }
}

// Of tests/data/FOLDER, what `key` makes of each folder's name and description.
using KeyOf = std::string (*)(const std::string& name, const nlohmann::json& about);

std::map<std::string, Measured> MeasureAll(const std::string& folder, KeyOf key)
{
    std::map<std::string, Measured> groups;
    for (const auto& entry : std::filesystem::directory_iterator(DataFile(folder))) {
        if (!entry.is_directory()) continue;
        const std::string path = entry.path().string();
        const auto about = nlohmann::json::parse(ReadFile(path + "/case.json"));
        Measure(path, groups[key(entry.path().filename().string(), about)]);
    }
    return groups;
}

std::string Text(double error)
{
    if (error < 0.0) return "";
    if (error == 0.0) return "0";
    char text[32];
    std::snprintf(text, sizeof text, "%.1e", error);
    return text;
}

// Takes each group that it shows out of `measured`, so that what is left was forgotten.
std::string Table(std::map<std::string, Measured>& measured, const std::string& of,
                  const std::vector<Group>& groups, const std::vector<Kind>& kinds)
{
    std::string head = "\n| " + of + " | Folders | Rows |";
    std::string rule = "\n| --- | --- | --- |";
    for (const Kind& kind : kinds) {
        head += std::string(" ") + kind.title + " |";
        rule += " --- |";
    }
    std::string text = head + rule + "\n";
    for (const Group& group : groups) {
        const auto node = measured.extract(group.key);
        if (node.empty()) throw std::runtime_error("no folder of " + group.key);
        const Measured& one = node.mapped();
        text += "| " + group.title + " | " + std::to_string(one.folders) + " | " +
                std::to_string(one.rows) + " |";
        for (const Kind& kind : kinds) text += " " + Text(one.Largest(kind)) + " |";
        text += "\n";
    }
    return text;
}

void RefuseRest(const std::map<std::string, Measured>& measured)
{
    if (!measured.empty())
        throw std::runtime_error("no row of the page shows " + measured.begin()->first);
}

std::string MakePage()
{
    std::string page = R"(# Models beside the programs that fitted them

This page is made by `models_accuracy_page` from the folders of real models in tests/data; the test
`models_accuracy_page_is_fresh` fails when it no longer agrees with them. Write it anew with

    build/release/bin/models_accuracy_page --write docs/accuracy.md

Each error is the largest relative one, |score - expected| / |expected|, over all rows and columns of
the folders; 0 means that every digit is the same, an empty cell that there is no such number.

## Beside R

The documents of [tests/data/cases](../tests/data/cases/README.md), whose expected numbers are R's
(`predict`, `vcov`, `survfit`, `qt`), written by
[scripts that anyone can run](../tests/data/generator/README.md). Documents that R's package pmml wrote
hold coefficients of 15 digits, ours those of 17.
)";
    std::map<std::string, Measured> cases =
        MeasureAll("cases", [](const std::string&, const nlohmann::json& about) {
            return about.at("family").get<std::string>();
        });
    page += Table(cases, "Family",
                  {{"lm", "linear"}, {"glm", "general linear"}, {"glz", "generalized linear"}},
                  {kPredictions, kProbabilities, kErrors, kLimits});
    page += Table(cases, "Family",
                  {{"blr", "binary logistic with contrasts"},
                   {"clr", "conditional logistic"},
                   {"mlr", "multinomial logistic"},
                   {"ordinal", "ordinal"}},
                  {kPredictions, kProbabilities});
    page += Table(cases, "Family", {{"cox", "Cox"}}, {kSurvival, kHazards});
    RefuseRest(cases);
    page += R"(
The limits of linear and general linear models above 10 degrees of freedom rest on an approximation of
the t quantile that is up to 1.6e-7 off ([the output](command.md#the-output)); where a limit lies close
to 0, that is more of it. `--level` takes the exact quantile. The largest error of a standard error is
that of `lm-longley`, whose predictors are nearly collinear: its variance is a small difference of large
numbers. The largest of probabilities are those of categories that are hardly possible, as differences of
cumulative probabilities near 1.

What else R says of these models the tests hold to within 1e-10 of it, relatively: the estimates, standard errors,
t and z values, p values, limits, odds and hazard ratios of `inspect --coefficients`
([tests/data/coefficients](../tests/data/coefficients)), the standard errors of probabilities of binary, multinomial and
ordinal models ([tests/data/probability-errors](../tests/data/probability-errors)) and those of linear predictors of
binary and Cox models ([tests/data/predictor-errors](../tests/data/predictor-errors)); and within 1e-12 survival at given
times, medians and risks ([tests/data/survival](../tests/data/survival)).

## RegressionModel documents

Those of [tests/data/regression](../tests/data/regression/README.md).
)";
    std::map<std::string, Measured> regression =
        MeasureAll("regression", [](const std::string& name, const nlohmann::json&) {
            return name.substr(0, name.find('-'));
        });
    page += Table(regression, "Expected numbers",
                  {{"r", "R's predictions"},
                   {"sk", "scikit-learn's predictions"},
                   {"ny", "scikit-learn's predictions, Nyoka's documents"},
                   {"sm", "statsmodels' predictions"},
                   {"hand", "the standard's formulas at 50 digits"}},
                  {kPredictions, kProbabilities});
    RefuseRest(regression);
    return page;
}

// A line as its words and its measured errors, in order.
struct Line {
    std::string words;
    std::vector<double> errors;
};

Line Split(const std::string& text)
{
    static const std::regex form(R"((\d\.\de[+-]\d+|\binf\b|\b0)(?= \|))");
    Line line;
    line.words = std::regex_replace(text, form, "#");
    for (std::sregex_iterator each(text.begin(), text.end(), form), end; each != end; ++each)
        line.errors.push_back(std::stod(each->str()));
    return line;
}

bool Close(double one, double other)
{
    const auto [less, more] = std::minmax(std::max(one, kLastBits), std::max(other, kLastBits));
    return more == less || more <= kNoise * less;
}

bool Agrees(const std::string& line, const std::string& measured)
{
    const Line one = Split(line);
    const Line other = Split(measured);
    return one.words == other.words && std::equal(one.errors.begin(), one.errors.end(),
                                                  other.errors.begin(), other.errors.end(), Close);
}

int Check(const char* path)
{
    std::istringstream page(ReadFile(path));
    std::istringstream fresh(MakePage());
    for (size_t number = 1;; ++number) {
        std::string line;
        std::string measured;
        const bool more = !std::getline(page, line).fail();
        const bool wanted = !std::getline(fresh, measured).fail();
        if (!more && !wanted) return 0;
        if (more == wanted && Agrees(line, measured)) continue;
        std::cerr << path << ":" << number
                  << ": stale\n  page:     " << (more ? line : "(ends here)")
                  << "\n  measured: " << (wanted ? measured : "(ends here)") << '\n';
        return 1;
    }
}

int Run(int argc, char** argv)
{
    const std::string mode = argc == 3 ? argv[1] : "";
    if (mode == "--check") return Check(argv[2]);
    if (mode == "--write") {
        std::ofstream file(argv[2]);
        file << MakePage();
        return file ? 0 : 1;
    }
    std::cerr << "usage: models_accuracy_page --write FILE | --check FILE\n";
    return 2;
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        std::cerr << "models_accuracy_page: " << error.what() << '\n';
        return 1;
    }
}

#include <memory>
#include <optional>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "cli/commands.h"
#include "cli/confinement.h"
#include "cli/console.h"
#include "cli/exitcode.h"
#include "cli/scoringarguments.h"
#include "engine/comparison/comparisonjson.h"
#include "engine/documents/loadedmodel.h"

namespace MCVelscore_850 {

namespace {

std::string Shown(const std::optional<std::string>& text) { return text.value_or("none"); }

std::string DifferenceText(const ModelDifference& difference)
{
    std::string text = difference.subject;
    if (!difference.name.empty()) text += " " + difference.name;
    text += fmt::format(": {} -> {}", Shown(difference.first), Shown(difference.second));
    if (difference.size) text += fmt::format(" (by {})", *difference.size);
    return text + "\n";
}

std::string ColumnText(const ScoreComparison::Column& column)
{
    std::string text;
    if (column.oneAlone > 0) {
        text += fmt::format("{}: {} rows in which one alone has a value\n", column.name,
                            column.oneAlone);
    }
    if (column.different == 0) return text;
    text += fmt::format("{}: {} of {} rows differ", column.name, column.different, column.compared);
    if (column.isCategory) {
        return text + fmt::format(", first row {}: {} -> {}\n", column.worstRow, column.first,
                                  column.second);
    }
    return text + fmt::format(", by {} at most (row {}: {} -> {}), by {} in the mean\n",
                              column.largest, column.worstRow, column.first, column.second,
                              column.Mean());
}

std::string ScoresText(const ScoreComparison& scores)
{
    std::string text;
    for (const auto& [names, whose] :
         {std::pair(&scores.ofFirst, "first"), std::pair(&scores.ofSecond, "second")}) {
        if (names->empty()) continue;
        text += fmt::format("columns of the {} alone: {}\n", whose, fmt::join(*names, ", "));
    }
    if (scores.firstAlone > 0) {
        text += fmt::format("rows scored by the first alone: {}\n", scores.firstAlone);
    }
    if (scores.secondAlone > 0) {
        text += fmt::format("rows scored by the second alone: {}\n", scores.secondAlone);
    }
    for (const ScoreComparison::Column& column : scores.columns) text += ColumnText(column);
    return text;
}

void RefuseStandardInputTwice(const DiffArguments& arguments)
{
    int count = 0;
    for (const std::string& each : {arguments.first, arguments.second, arguments.cases}) {
        count += each == "-" ? 1 : 0;
    }
    if (count > 1) throw UsageError("only one input can come from standard input; name the others");
}

// What says how a table is read, without one.
void RefuseWithoutCases(const DiffArguments& arguments)
{
    if (!arguments.cases.empty()) return;
    const TableArguments& table = arguments.table;
    const std::pair<const char*, bool> given[] = {{"--delimiter", table.delimiter.has_value()},
                                                  {"--decimal", table.decimal != "."},
                                                  {"--na", !table.missingTexts.empty()},
                                                  {"--map", !table.mappings.empty()},
                                                  {"--no-header", table.noHeader}};
    for (const auto& [name, isGiven] : given) {
        if (!isGiven) continue;
        throw UsageError(fmt::format("{} has a meaning with a table of cases alone", name));
    }
}

}  // namespace

int RunDiff(const DiffArguments& arguments, Console& console)
{
    RefuseStandardInputTwice(arguments);
    const ScoringOptions table = OptionsOf(arguments.table);
    RefuseWithoutCases(arguments);
    const auto plugin = ConfinedPlugin(arguments.document,
                                       {{arguments.first, arguments.second, arguments.cases}, {}});
    const LoadOptions options = LoadOptionsOf(arguments.document);
    const LoadedModel first(arguments.first, plugin, options);
    const LoadedModel second(arguments.second, plugin, options);
    const std::vector<ModelDifference> differences = CompareModels(first, second);
    std::optional<ScoreComparison> scores;
    if (!arguments.cases.empty()) {
        scores = CompareScores(first, second, arguments.cases, table);
    }
    if (arguments.json) {
        PrintOut(ComparisonJson(first, second, differences, scores));
    } else {
        for (const ModelDifference& each : differences) PrintOut(DifferenceText(each));
        if (scores) PrintOut(ScoresText(*scores));
    }
    std::string line = differences.empty() ? "the models are the same"
                                           : fmt::format("{} differences", differences.size());
    if (scores) {
        line += fmt::format("; {} of {} cases scored by both, {}", scores->both, scores->rows,
                            scores->Differ() ? "with differences" : "all alike");
    }
    console.Say(line);
    const bool areSame = differences.empty() && !(scores && scores->Differ());
    return areSame ? kExitDone : kExitDifferences;
}

}  // namespace MCVelscore_850

#include "engine/comparison/scorecomparison.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string_view>

#include "engine/documents/loadedmodel.h"
#include "engine/messages/failure.h"
#include "engine/messages/shorttext.h"
#include "engine/messages/suggestions.h"
#include "engine/scoring/scoringsession.h"
#include "engine/scoring/tablescorer.h"
#include "engine/scoring/texttables.h"
#include "host/messages/messages.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

using Columns = std::map<std::string, std::string>;  // by the names of fields

bool Reads(const std::vector<std::string>& names, const std::string& name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

// What is told of fields that the model reads.
Columns OfModel(const LoadedModel& model, const Columns& columnOf)
{
    const std::vector<std::string> names = model.Columns();
    Columns own;
    for (const auto& each : columnOf) {
        if (Reads(names, each.first)) own.insert(each);
    }
    return own;
}

Columns ColumnsOf(const LoadedModel& first, const LoadedModel& second, const TableReader& reader,
                  const ScoringOptions& options)
{
    if (options.columnOf.empty() && !options.dialect.hasHeader) {
        return ColumnsInOrder(reader, first, true);
    }
    std::vector<std::string> names = first.Columns();
    for (std::string& name : second.Columns()) {
        if (!Reads(names, name)) names.push_back(std::move(name));
    }
    for (const auto& [name, column] : options.columnOf) {
        if (Reads(names, name)) continue;
        throw Failure(FailureKind::Usage, kUnknownMappedName, {name, JoinNames(names, ", ")},
                      SuggestWord(name, names));
    }
    return options.columnOf;
}

// One of the models, and its results of the block at hand.
struct Side {
    Side(const LoadedModel& model, TextTables& tables, const Columns& columnOf)
        : scorer(model, tables.Reader().Header(), tables.Reader().NameOf(0),
                 tables.OptionsFor(OfModel(model, columnOf))),
          results(scorer.Schema())
    {}

    std::string TextAt(size_t column, size_t row) const
    {
        const ResultBlock::Column& values = results.columns[column];
        if (values.codes.empty()) {
            std::string text;
            AppendNumber(values.numbers[row], text);
            return text;
        }
        return results.categories[static_cast<size_t>(values.codes[row])].text;
    }

    TableScorer scorer;
    ResultBlock results;
};

// A column of both.
struct Pair {
    size_t first;
    size_t second;
};

void CompareValues(const Side& first, const Side& second, Pair pair, size_t row, int64_t number,
                   ScoreComparison::Column& column)
{
    const ResultBlock::Column& one = first.results.columns[pair.first];
    const ResultBlock::Column& other = second.results.columns[pair.second];
    if (HasRow(one.present, row) != HasRow(other.present, row)) ++column.oneAlone;
    if (!HasRow(one.present, row) || !HasRow(other.present, row)) return;
    ++column.compared;
    double apart = 0.0;
    if (column.isCategory) {
        apart = first.TextAt(pair.first, row) == second.TextAt(pair.second, row) ? 0.0 : 1.0;
    } else if (one.numbers[row] != other.numbers[row]) {
        apart = std::fabs(one.numbers[row] - other.numbers[row]);
    }
    if (apart == 0.0) return;  // exact: the same number
    ++column.different;
    column.sum += apart;
    if (!(apart > column.largest)) return;
    column.largest = apart;
    column.worstRow = number;
    column.first = first.TextAt(pair.first, row);
    column.second = second.TextAt(pair.second, row);
}

void CompareRow(const Side& first, const Side& second, const std::vector<Pair>& pairs, size_t row,
                ScoreComparison& comparison)
{
    ++comparison.rows;
    const bool isOfFirst = first.results.status[row] == 0;
    const bool isOfSecond = second.results.status[row] == 0;
    if (isOfFirst && !isOfSecond) ++comparison.firstAlone;
    if (isOfSecond && !isOfFirst) ++comparison.secondAlone;
    if (!isOfFirst || !isOfSecond) return;
    ++comparison.both;
    for (size_t i = 0; i < pairs.size(); ++i) {
        CompareValues(first, second, pairs[i], row, comparison.rows, comparison.columns[i]);
    }
}

std::vector<Pair> FindColumns(const ResultSchema& first, const ResultSchema& second,
                              ScoreComparison& comparison)
{
    std::vector<Pair> pairs;
    const auto ones = first.ValueColumns();
    const auto others = second.ValueColumns();
    for (size_t i = 0; i < ones.size(); ++i) {
        const auto other = std::find_if(others.begin(), others.end(), [&](const auto& each) {
            return each.name == ones[i].name && each.kind == ones[i].kind;
        });
        if (other == others.end()) {
            comparison.ofFirst.push_back(ones[i].name);
            continue;
        }
        pairs.push_back({i, static_cast<size_t>(other - others.begin())});
        ScoreComparison::Column& column = comparison.columns.emplace_back();
        column.name = ones[i].name;
        column.isCategory = ones[i].kind == ResultKind::Category;
    }
    for (const ResultColumn& each : others) {
        const bool isOfBoth = std::any_of(ones.begin(), ones.end(), [&](const auto& one) {
            return one.name == each.name && one.kind == each.kind;
        });
        if (!isOfBoth) comparison.ofSecond.push_back(each.name);
    }
    return pairs;
}

}  // namespace

bool ScoreComparison::Differ() const
{
    return firstAlone > 0 || secondAlone > 0 || !ofFirst.empty() || !ofSecond.empty() ||
           std::any_of(columns.begin(), columns.end(), [](const Column& column) {
               return column.different > 0 || column.oneAlone > 0;
           });
}

ScoreComparison CompareScores(const LoadedModel& first, const LoadedModel& second,
                              const std::string& table, const ScoringOptions& options)
{
    TextTables tables({table}, options);
    const Columns columnOf = ColumnsOf(first, second, tables.Reader(), options);
    Side one(first, tables, columnOf);
    Side other(second, tables, columnOf);
    ScoreComparison comparison;
    const std::vector<Pair> pairs =
        FindColumns(one.scorer.Schema(), other.scorer.Schema(), comparison);
    const TableScorer* const scorers[] = {&one.scorer, &other.scorer};
    tables.Visit(scorers, [&](const ColumnBlock& block, int64_t) {
        one.scorer.Score(block, one.results);
        other.scorer.Score(block, other.results);
        for (size_t row = 0; row < block.rows; ++row)
            CompareRow(one, other, pairs, row, comparison);
        return true;
    });
    return comparison;
}

}  // namespace MCVelscore_850

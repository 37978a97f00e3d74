#ifndef VELSCORE_ENGINE_SCORING_ARROWEXPLANATIONS_H
#define VELSCORE_ENGINE_SCORING_ARROWEXPLANATIONS_H

#include <cstdint>
#include <functional>
#include <vector>

#include "engine/scoring/arrowscorer.h"
#include "engine/scoring/explanationlines.h"
#include "engine/scoring/tablescorer.h"
#include "engine/tables/arrowarrays.h"
#include "engine/tables/arrowcolumns.h"
#include "engine/tables/arrowdata.h"
#include "host/model/caseexplanation.h"

namespace MCVelscore_850 {

/// The cases of tables in Arrow's form, explained one after the other.
///
/// Order, errors, owner, threads as ArrowScorer's; `strict` isn't heeded.
class ArrowExplainedCases {
public:
    /// Told a case's row, from 1 in all tables; false ends the visit.
    using Visitor = std::function<bool(int64_t row, const CaseStatus& status,
                                       const CaseExplanation& explanation)>;

    ArrowExplainedCases(const LoadedModel& model, const ArrowSchema& schema,
                        const ArrowOptions& options);

    int64_t Begin(ArrowOwner<ArrowArray> table);
    /// Some of the table's rows, at most TableScorer::kRows. Answers whether the visitor goes on.
    bool Visit(int64_t first, size_t rows, const Visitor& visitor);
    void End();

private:
    ArrowColumns columns_;
    TableScorer scorer_;
    ArrowOwner<ArrowArray> table_;
    int64_t rowsBefore_ = 0;
};

/// Explanations of the rows of tables in Arrow's form, in long form: ExplanationShaper's columns,
/// row as int64, equation and term as dictionaries of utf8, value and contribution as float64. A
/// case without a score has one line of nulls but for row; with `strict` it ends the table.
///
/// Order, errors, owner, threads as ArrowScorer's.
class ArrowExplanations {
public:
    ArrowExplanations(const LoadedModel& model, const ArrowSchema& schema,
                      const ArrowOptions& options, ExplanationOptions explanations = {});
    ArrowExplanations(const ArrowExplanations&) = delete;
    ArrowExplanations& operator=(const ArrowExplanations&) = delete;

    static ArrowOwner<ArrowSchema> Schema();
    /// The most lines that a row gives.
    size_t MostLines() const;

    int64_t Begin(ArrowOwner<ArrowArray> table);
    /// The explanations of some of the table's rows, at most TableScorer::kRows.
    ArrowOwner<ArrowArray> Explain(int64_t first, size_t rows);
    void End();

private:
    /// Of a term or an equation: its place among the texts of a dictionary; -1 for none.
    using Code = int32_t;
    void MakeTexts();
    void AddCase(int64_t row, const CaseExplanation& explanation);
    void AddLine(int64_t row, Code equation, Code term, double value, double contribution);

    const ExplanationOutline outline_;
    const ExplanationOptions explanations_;
    ExplanationLines lines_;
    std::vector<Code> equationCodes_;           ///< by equation
    std::vector<std::vector<Code>> termCodes_;  ///< by equation and term
    Code otherTerms_ = -1;
    ArrowTextBytes equationTexts_;
    ArrowTextBytes termTexts_;
    ArrowExplainedCases cases_;
    bool strict_;
    std::vector<int64_t> rows_;
    std::vector<Code> equations_;
    std::vector<Code> terms_;
    std::vector<double> values_;
    std::vector<double> contributions_;
};

}  // namespace MCVelscore_850

#endif

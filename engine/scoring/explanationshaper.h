#ifndef VELSCORE_ENGINE_SCORING_EXPLANATIONSHAPER_H
#define VELSCORE_ENGINE_SCORING_EXPLANATIONSHAPER_H

#include <cstdint>
#include <string>
#include <vector>

#include "engine/scoring/explanationlines.h"
#include "host/model/caseexplanation.h"

namespace MCVelscore_850 {

class RowText;
class ScoreModel;

/// What a model's explanations list: no equation of a model that can't explain its cases.
ExplanationOutline OutlineOf(const ScoreModel& model);

/// Writes explanations in long form: a line for each term of each equation of each case.
///
/// Columns  row, equation, term, value, contribution; row counts the cases of all tables, from 1.
/// Rows     A case without a score has one line, all but row empty; so is a number that doesn't
///          exist, and the equation's name of a model with one that has none.
/// Threads  one.
class ExplanationShaper {
public:
    ExplanationShaper(const ScoreModel& model, ExplanationOptions options);
    ExplanationShaper(const ExplanationShaper&) = delete;
    ExplanationShaper& operator=(const ExplanationShaper&) = delete;

    static const std::vector<std::string>& Columns();
    void WriteCase(RowText& rows, int64_t row, const CaseExplanation& explanation);
    static void WriteNoCase(RowText& rows, int64_t row);

private:
    const ExplanationOutline outline_;
    ExplanationLines lines_;
};

}  // namespace MCVelscore_850

#endif

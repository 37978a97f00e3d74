#ifndef VELSCORE_ENGINE_SCORING_RESULTREADER_H
#define VELSCORE_ENGINE_SCORING_RESULTREADER_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "engine/scoring/resultblock.h"
#include "engine/scoring/resultschema.h"

namespace MCVelscore_850 {

class ScoreClsResult;
class ScoreDictVar;
class ScoreResult;
class ScoreValue;
class ScoringState;
struct TargetDeclaration;

/// Reads the result objects of a model, one at a time, into rows of a block of results.
///
/// Owner  schema and target outlive the reader.
class ResultReader {
public:
    ResultReader(const ResultSchema& schema, const ScoreDictVar* target);

    /// `result` is of the schema's type; the state that it was scored in holds the rest.
    void Read(const ScoreResult& result, const ScoringState& state, size_t row,
              ResultBlock& results);
    /// A predicted number as the document means it. Not a missing one.
    double Predicted(double number) const;
    /// What becomes of predicted numbers; null leaves them as they are.
    bool ChangesPredictions() const { return declaration_ != nullptr; }
    /// The schema's categories, then what else a result named.
    std::span<const ResultCategory> Categories() const { return categories_; }

private:
    void SetNumber(size_t column, double number, size_t row, ResultBlock& results) const;
    void SetPrediction(const ScoreValue* value, size_t row, ResultBlock& results);
    int32_t CodeOf(const ScoreValue& value);
    void FindPercents(const ScoreClsResult& result);

    const ResultSchema& schema_;
    const TargetDeclaration* declaration_;
    std::vector<ResultCategory> categories_;
    size_t lastCode_ = 0;
    std::vector<size_t> percentOfCategory_;  // where in a result a category's percent stands
};

}  // namespace MCVelscore_850

#endif

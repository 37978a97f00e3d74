#ifndef VELSCORE_ENGINE_SCORING_OUTPUTEVALUATOR_H
#define VELSCORE_ENGINE_SCORING_OUTPUTEVALUATOR_H

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "engine/documents/outputfield.h"
#include "host/expressions/expressionscratch.h"

namespace MCVelscore_850 {

class LRResult;
class ScoreCaseRecord;
class ScoreDictVar;
class ScoreModel;
class ScoreResult;
struct ModelDescription;
struct TargetDeclaration;

/// One value of an output row: nothing, a number or a text.
struct OutputCell {
    enum Kind { Missing, Number, Text } kind = Missing;
    double number = 0.0;
    bool isLabel = false;  ///< the number names a category
    std::string text;

    void SetMissing() { kind = Missing; }
    /// The system-missing number and NaN are nothing.
    void SetNumber(double value);
    void SetText(std::string_view value)
    {
        kind = Text;
        text.assign(value);
    }
};

/// The numbers beside the prediction of a linear result, system-missing where there are none: the
/// result holds some even where the document has no covariances to compute them from.
class ErrorAndLimits {
public:
    explicit ErrorAndLimits(const ModelDescription& description);
    double StdDev(const LRResult& result) const;
    double Lower(const LRResult& result) const;
    double Upper(const LRResult& result) const;

private:
    bool lacksStdDev_;
    bool lacksLower_;
    bool lacksUpper_;
};

/// What a model predicts, as a document means it: after its Target, and in a Cox model the
/// cumulative hazard.
OutputCell PredictedValue(const ScoreResult& result, const TargetDeclaration* target);
/// The Target of a variable; null when the document has none.
const TargetDeclaration* TargetOf(const ScoreDictVar* var);

/// Fills the fields of a document's Output section, case by case.
///
///     predictedValue         PredictedValue
///     predictedDisplayValue  the predicted category as people read it
///     probability            of the field's category, else of the predicted one
///     standardError, confidenceIntervalLower, confidenceIntervalUpper
///     residual               observed minus predicted; for a category 1 or 0, as it was observed
///                            or not, minus its probability
///     expressions            of the fields before them, and of the case
///
/// A case without a score has the Target's default: its number, or the category of the largest
/// prior probability with the priors; everything else is nothing.
///
/// Owner   section and model outlive the evaluator.
class OutputEvaluator {
public:
    OutputEvaluator(const OutputSection& section, const ScoreModel& model,
                    const ModelDescription& description);
    ~OutputEvaluator();

    /// The fields' values for a scored case, in the section's order; they stand until the next
    /// call.
    std::span<const OutputCell> Evaluate(const ScoreCaseRecord& record, const ScoreResult& result);
    /// The same for a case without a score.
    std::span<const OutputCell> EvaluateDefaults();

private:
    class FieldsRecord;

    void FillResidual(const OutputField& field, const ScoreCaseRecord& record,
                      const ScoreResult& result, OutputCell& cell) const;
    /// A number of the results that have standard errors.
    void FillLinear(const ScoreResult& result, double (ErrorAndLimits::*get)(const LRResult&) const,
                    OutputCell& cell) const;
    void FillDisplay(const OutputCell& predicted, OutputCell& cell) const;

    ExpressionScratch expressions_;
    const OutputSection& section_;
    const ScoreDictVar* target_;
    const TargetDeclaration* declaration_;
    ErrorAndLimits errorAndLimits_;
    bool predictsCategory_;
    std::vector<OutputCell> cells_;
    std::unique_ptr<FieldsRecord> fields_;
};

}  // namespace MCVelscore_850

#endif

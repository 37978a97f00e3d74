#ifndef VELSCORE_ENGINE_SCORING_OUTPUTSHAPER_H
#define VELSCORE_ENGINE_SCORING_OUTPUTSHAPER_H

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/scoring/outputevaluator.h"
#include "host/model/modeldescription.h"

namespace MCVelscore_850 {

class CsvWriter;
class ScoreClsResult;
class ScoreCaseRecord;
class ScoreResult;
struct OutputSection;
struct TargetDeclaration;

/// Which columns an output row has.
struct OutputOptions {
    /// Columns of the input to repeat, in this order; with keepAll every one in its own order.
    std::vector<std::string> keep{};
    bool keepAll = false;
    bool predictionOnly = false;
};

/// What the document says of the output.
struct DocumentOutput {
    /// What becomes of a predicted number; null leaves it as it is.
    const TargetDeclaration* target = nullptr;
    /// Fills the columns in place of the model's own; null for these.
    OutputEvaluator* fields = nullptr;
    const OutputSection* section = nullptr;  ///< of `fields`
};

/// Names and fills the columns of the output: the kept ones, what the model's result holds, then
/// status and status_field.
///
/// Columns  by the kind of the model's result:
///              LRResult      prediction, std_dev, ci_lower, ci_upper
///              MLRResult     prediction, probability(CATEGORY) for each target category
///              CLRResult     prediction
///              CoxRegResult  prediction, cum_hazard
///          or those of the document's Output section. A kept column of the same name gets the
///          prefix "input.".
/// Rows     A status other than 0 leaves the result's columns empty, but for defaults that the
///          document gives its output fields; so does a number that doesn't exist, as
///          ErrorAndLimits has it.
/// Errors   kUnknownKeptColumn (usage), kDuplicateColumn (cases) from the constructor.
class OutputShaper {
public:
    OutputShaper(const ModelDescription& description, std::span<const std::string> header,
                 const std::string& tableName, const OutputOptions& options,
                 const DocumentOutput& document = {});

    const std::vector<std::string>& Columns() const { return columns_; }
    void WriteHeader(CsvWriter& writer) const;

    /// The row of a scored case; `result` is of the type that the description tells.
    void WriteScored(CsvWriter& writer, std::span<const std::string_view> fields,
                     const ScoreCaseRecord& record, const ScoreResult& result);
    /// The row of a case without a score. `field` may be empty.
    void WriteNotScored(CsvWriter& writer, std::span<const std::string_view> fields, long code,
                        std::string_view field) const;

private:
    void WriteOwnColumns(CsvWriter& writer, const ScoreResult& result);
    void WriteKept(CsvWriter& writer, std::span<const std::string_view> fields) const;
    void WritePercents(CsvWriter& writer, const ScoreClsResult& result);

    int resultType_;
    bool predictionOnly_;
    DocumentOutput document_;
    ErrorAndLimits errorAndLimits_;
    std::vector<std::string> categories_;  ///< the target's, a column each
    std::vector<size_t> kept_;             ///< positions in the input
    size_t resultColumns_ = 0;
    std::vector<std::string> columns_;
    std::vector<size_t> percentOfCategory_;  ///< where in a result a category's percent stands
};

}  // namespace MCVelscore_850

#endif

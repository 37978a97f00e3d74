#ifndef VELSCORE_ENGINE_SCORING_OUTPUTSHAPER_H
#define VELSCORE_ENGINE_SCORING_OUTPUTSHAPER_H

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/scoring/keptcolumns.h"
#include "engine/scoring/outputevaluator.h"
#include "engine/scoring/resultblock.h"
#include "engine/scoring/resultschema.h"

namespace MCVelscore_850 {

class RowText;
struct OutputSection;

/// Names and fills the columns of the output: those that are kept, then those of a ResultSchema, or
/// of the document's Output section, then status and status_field.
///
/// Rows     What a case has no value for is an empty field. A status other than 0 leaves all empty,
///          but for defaults that the document gives its output fields.
/// Errors   what KeptColumns refuses, kUnknownResultColumn, kResultColumnTwice (usage) from the
///          constructor.
class OutputShaper {
public:
    /// With a `document` section its fields are written in place of the schema's values.
    OutputShaper(const ResultSchema& schema, std::span<const std::string> header,
                 const std::string& tableName, const OutputOptions& options,
                 const OutputSection* document = nullptr);

    const std::vector<std::string>& Columns() const { return columns_; }
    /// The positions in the input of the columns that are kept.
    std::span<const size_t> Kept() const { return kept_->Positions(); }
    /// The positions in the schema of the results that are wanted.
    std::span<const size_t> Results() const { return results_; }

    /// The row of the schema's values.
    void WriteRow(RowText& rows, const InputRow& input, const ResultBlock& results,
                  size_t row) const;
    /// The row of the document's fields.
    void WriteRow(RowText& rows, const InputRow& input, std::span<const OutputCell> cells,
                  const CaseStatus& status) const;
    /// The row of one that can't be read: its status, and no other value.
    void WriteTorn(RowText& rows, std::string_view table, long code) const;

private:
    std::optional<KeptColumns> kept_;
    std::vector<size_t> results_;    ///< positions in the schema
    std::vector<ResultKind> kinds_;  ///< of these
    std::vector<std::string> columns_;
};

}  // namespace MCVelscore_850

#endif

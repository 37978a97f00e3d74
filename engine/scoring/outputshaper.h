#ifndef VELSCORE_ENGINE_SCORING_OUTPUTSHAPER_H
#define VELSCORE_ENGINE_SCORING_OUTPUTSHAPER_H

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/scoring/outputevaluator.h"
#include "engine/scoring/resultblock.h"
#include "engine/scoring/resultschema.h"

namespace MCVelscore_850 {

class RowText;
struct OutputSection;

/// Which columns an output row has.
struct OutputOptions {
    /// Columns of the input to repeat, in this order; with keepAll every one in its own order.
    std::vector<std::string> keep{};
    bool keepAll = false;
    /// Result columns by name, in this order, `probabilities` for every category's; empty for all
    /// of the schema but linear_predictor.
    std::vector<std::string> columns{};
    /// The name of a first column that tells each row's table; empty for none.
    std::string tableColumn{};
};

/// A row of a table as it was read.
struct InputRow {
    std::span<const std::string_view> fields;
    std::string_view table{};  ///< how messages call its table
    /// As BlockSplitter::JsonValues().
    std::span<const std::string_view> jsonValues{};
};

/// Names and fills the columns of the output: the table's name, the kept ones, then those of a
/// ResultSchema, or of the document's Output section, then status and status_field. A kept column
/// of the same name gets the prefix "input.".
///
/// Kept     values are texts; as JSON they stay what they were in JSON.
/// Rows     What a case has no value for is an empty field. A status other than 0 leaves all empty,
///          but for defaults that the document gives its output fields.
/// Errors   kUnknownKeptColumn, kUnknownResultColumn, kResultColumnTwice (usage), kDuplicateColumn
///          (cases) from the constructor.
class OutputShaper {
public:
    /// With a `document` section its fields are written in place of the schema's values.
    OutputShaper(const ResultSchema& schema, std::span<const std::string> header,
                 const std::string& tableName, const OutputOptions& options,
                 const OutputSection* document = nullptr);

    const std::vector<std::string>& Columns() const { return columns_; }
    /// The positions in the input of the columns that are kept.
    std::span<const size_t> Kept() const { return kept_; }
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
    void WriteKept(RowText& rows, const InputRow& input) const;

    bool tellsTable_;
    std::vector<size_t> kept_;       ///< positions in the input
    std::vector<size_t> results_;    ///< positions in the schema
    std::vector<ResultKind> kinds_;  ///< of these
    std::vector<std::string> columns_;
};

}  // namespace MCVelscore_850

#endif

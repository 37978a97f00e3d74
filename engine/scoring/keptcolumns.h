#ifndef VELSCORE_ENGINE_SCORING_KEPTCOLUMNS_H
#define VELSCORE_ENGINE_SCORING_KEPTCOLUMNS_H

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace MCVelscore_850 {

class RowText;

/// Which columns an output row has.
struct OutputOptions {
    /// Columns of the input to repeat, in this order; with keepAll every one in its own order.
    std::vector<std::string> keep{};
    bool keepAll = false;
    /// Result columns by name, in this order, `probabilities` for every category's; empty for all
    /// of the schema but linear_predictor. Not of curves.
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

/// The first columns of an output: the table's name, and what is kept of the input. A kept column
/// that is called like one of the results behind them gets the prefix "input.".
///
/// Kept     values are texts; as JSON they stay what they were in JSON.
/// Errors   kUnknownKeptColumn, kTableColumnTaken (usage), kDuplicateColumn (cases) from the
///          constructor.
class KeptColumns {
public:
    KeptColumns(const OutputOptions& options, std::span<const std::string> header,
                const std::string& tableName, std::span<const std::string> results);

    /// What they are called in the output, the table's name first.
    const std::vector<std::string>& Names() const { return names_; }
    /// The positions in the input of those that are kept.
    std::span<const size_t> Positions() const { return positions_; }

    void Write(RowText& rows, const InputRow& input) const;
    /// Those of a row that can't be read: its table, and nothing else.
    void WriteTorn(RowText& rows, std::string_view table) const;

private:
    bool tellsTable_;
    std::vector<size_t> positions_;
    std::vector<std::string> names_;
};

}  // namespace MCVelscore_850

#endif

#ifndef VELSCORE_TESTS_MODELS_DRAWNROWS_H
#define VELSCORE_TESTS_MODELS_DRAWNROWS_H

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/model/batchscorer.h"
#include "host/values/datetimetext.h"
#include "host/values/datetimevalue.h"
#include "host/values/numericvalue.h"
#include "host/values/stringvalue.h"
#include "host/variables/caserecord.h"
#include "tests/models/modelfixture.h"
#include "tests/models/randommodels.h"

// Rows for drawn models: blocks of them, the odd ones among them, and each as a case.

namespace MCVelscore_850::testing {

inline constexpr size_t kRows = BatchScorer::kRows;
inline constexpr double kInfinity = std::numeric_limits<double>::infinity();
inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

inline bool SameBits(double a, double b)
{
    return std::bit_cast<uint64_t>(a) == std::bit_cast<uint64_t>(b) ||
           (std::isnan(a) && std::isnan(b));
}

// Numbers at which arithmetic turns. The last of them no variable takes.
inline constexpr double kTurns[] = {
    0.0,   -0.0,   1.0,         -1.0,        1e300,  -1e300,  1e-300,    -1e-300,   5e-324, 2.0,
    0.5,   709.0,  745.2,       20.0,        -708.5, 1e10,    50.5,      -2.0,      710.0,  1e154,
    1e-10, -100.0, 1.0 + 5e-13, 1.0 + 5e-12, kNaN,   kSysmis, kInfinity, -kInfinity};
inline constexpr size_t kBadTurns = 4;
inline constexpr double kWholeTurns[] = {
    0.0, -0.0, 1.0, -1.0, 9007199254740992.0, 4503599627370497.0};

// How the cells of a block are drawn: of a hundred cells so many are odd, or bad.
struct Mixture {
    size_t odd;
    size_t bad;
};

// The cells of one input over the rows of a block.
struct Cells {
    alignas(64) double numbers[kRows];
    alignas(64) int32_t codes[kRows];
    uint8_t present[kRows / 8];
    bool lacksSome;

    bool IsPresent(size_t row) const { return ((present[row / 8] >> (row % 8)) & 1) != 0; }
};

// The texts that the codes of a column stand for: the good ones, then some that few variables take.
inline std::vector<std::string> TextsOf(const DrawnColumn& column)
{
    std::vector<std::string> texts = column.texts;
    texts.insert(texts.end(), {"zz", "", "B"});
    return texts;
}

inline bool HasTexts(const ScoreDictVar& var) { return var.GetValueType() == ScoreDictVar::STRING; }

// A block of cases, by column.
class Block {
public:
    explicit Block(const DrawnModel& drawn) : drawn_(drawn)
    {
        for (size_t i = 0; i < drawn.columns.size(); ++i) {
            cells_.push_back(std::make_unique<Cells>());
            texts_.push_back(TextsOf(drawn.columns[i]));
        }
    }

    size_t rows = 0;
    const Cells& Of(size_t column) const { return *cells_[column]; }
    const std::vector<std::string>& Texts(size_t column) const { return texts_[column]; }

    void Fill(Draw& draw, size_t count, Mixture mixture)
    {
        rows = count;
        for (size_t i = 0; i < cells_.size(); ++i) {
            const DrawnColumn& column = drawn_.columns[i];
            Cells& cells = *cells_[i];
            cells.lacksSome = false;
            std::fill_n(cells.present, sizeof cells.present, uint8_t{255});
            for (size_t row = 0; row < rows; ++row) {
                const size_t chance = draw.Below(100);
                const bool isBad = chance < mixture.bad;
                const bool isOdd = !isBad && chance < mixture.bad + mixture.odd;
                if (HasTexts(*column.var)) {
                    cells.codes[row] = DrawCode(draw, i, isBad);
                } else {
                    cells.numbers[row] = DrawNumber(draw, column, isOdd, isBad);
                }
                if (isBad && draw.Once(2)) TakeAway(cells, row);
            }
            // What stands beyond the rows means nothing.
            for (size_t row = rows; row < kRows; ++row) {
                cells.numbers[row] = kTurns[row % std::size(kTurns)];
                cells.codes[row] = row % 2 == 0 ? -7 : 1 << 30;
                if (row % 3 == 0)
                    cells.present[row / 8] &= static_cast<uint8_t>(~(1U << (row % 8)));
            }
        }
    }
    // Takes a value away from so many of a hundred rows.
    void TakeAway(Draw& draw, size_t percent)
    {
        for (size_t row = 0; row < rows; ++row) {
            if (draw.Below(100) < percent) TakeAway(*cells_[draw.Below(cells_.size())], row);
        }
    }
    // Takes another order for the texts of every column.
    void TurnTexts()
    {
        for (auto& texts : texts_) std::rotate(texts.begin(), texts.begin() + 1, texts.end());
    }

private:
    static void TakeAway(Cells& cells, size_t row)
    {
        cells.present[row / 8] &= static_cast<uint8_t>(~(1U << (row % 8)));
        cells.lacksSome = true;
    }
    int32_t DrawCode(Draw& draw, size_t column, bool isBad) const
    {
        const std::vector<std::string>& texts = texts_[column];
        if (isBad && draw.Once(4)) return draw.Once(2) ? -1 : static_cast<int32_t>(texts.size());
        if (isBad) return static_cast<int32_t>(draw.Below(texts.size()));
        const std::string& text = draw.Of(drawn_.columns[column].texts);
        return static_cast<int32_t>(std::find(texts.begin(), texts.end(), text) - texts.begin());
    }
    static double DrawNumber(Draw& draw, const DrawnColumn& column, bool isOdd, bool isBad)
    {
        if (isBad) return kTurns[std::size(kTurns) - 1 - draw.Below(kBadTurns + 3)];
        if (isOdd && column.values == DrawnColumn::Whole) return draw.Of(kWholeTurns);
        if (isOdd && column.values != DrawnColumn::Listed) {
            return kTurns[draw.Below(std::size(kTurns) - kBadTurns)];
        }
        switch (column.values) {
            case DrawnColumn::Whole: return std::round(draw.Normal(5.0));
            case DrawnColumn::Listed: return draw.Of(column.numbers);
            case DrawnColumn::Partly:
                if (draw.Once(2)) return draw.Of(column.numbers);
                break;
            case DrawnColumn::Any: break;
        }
        return draw.Normal(1.5);
    }

    const DrawnModel& drawn_;
    std::vector<std::unique_ptr<Cells>> cells_;
    std::vector<std::vector<std::string>> texts_;
};

// A record that takes the values of one row after another.
class RowRecord {
public:
    explicit RowRecord(const DrawnModel& drawn) : drawn_(drawn), record_(NamesOf(drawn))
    {
        for (size_t i = 0; i < drawn.columns.size(); ++i) {
            const ScoreDictVar& var = *drawn.columns[i].var;
            values_.push_back({NumericValue(0.0), DateTimeValue(0.0), StringValue("")});
            shifts_.push_back(OriginShift(var.GetDateTimeType()));
            types_.push_back(var.GetValueType());
        }
    }
    const CaseRecord& Get() const { return record_; }

    /// False when some value isn't accepted by its variable, or isn't what its number says.
    bool Take(const Block& block, size_t row)
    {
        bool good = true;
        for (size_t i = 0; i < values_.size(); ++i) {
            ScoreValue* value = TakeCell(block, i, row, good);
            record_.Point(static_cast<int>(i), value);
            good = good && drawn_.columns[i].var->Accepts(value);
        }
        return good;
    }

private:
    struct Values {
        NumericValue number;
        DateTimeValue date;
        StringValue text;
    };

    static std::vector<std::string> NamesOf(const DrawnModel& drawn)
    {
        std::vector<std::string> names;
        for (const DrawnColumn& column : drawn.columns) names.push_back(column.var->GetName());
        return names;
    }
    ScoreValue* TakeCell(const Block& block, size_t column, size_t row, bool& good)
    {
        const Cells& cells = block.Of(column);
        Values& values = values_[column];
        const bool present = cells.IsPresent(row);
        if (!present && row % 2 == 0) return nullptr;
        const double number = present ? cells.numbers[row] : kSysmis;
        switch (types_[column]) {
            case ScoreDictVar::STRING: {
                const auto code = static_cast<size_t>(cells.codes[row]);
                const std::vector<std::string>& texts = block.Texts(column);
                const bool known = code < texts.size();
                values.text.Assign(known ? std::string_view(texts[code]) : "not bound");
                if (!present) values.text.SetMissing();
                good = good && known;
                return &values.text;
            }
            case ScoreDictVar::DATETIME:
                values.date.SetNumber(number - shifts_[column]);
                good = good && (number - shifts_[column]) + shifts_[column] == number;
                return &values.date;
            default: break;
        }
        values.number.SetDoubleValue(number);
        return &values.number;
    }

    const DrawnModel& drawn_;
    CaseRecord record_;
    std::vector<Values> values_;
    std::vector<double> shifts_;
    std::vector<int> types_;
};

}  // namespace MCVelscore_850::testing

#endif

#ifndef VELSCORE_ENGINE_SCORING_CASEFIELD_H
#define VELSCORE_ENGINE_SCORING_CASEFIELD_H

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/documents/miningtreatment.h"
#include "engine/scoring/resultblock.h"
#include "engine/scoring/unlistedvalues.h"
#include "engine/tables/columnblock.h"
#include "engine/tables/plainnumber.h"
#include "host/variables/dictvar.h"

namespace MCVelscore_850 {

class DateTimeValue;
class NumericValue;
class StringValue;

/// How a table writes its numbers and its missing values, and whether these are replaced.
struct CaseOptions {
    char decimal = '.';
    /// False leaves invalid and missing values unreplaced, whatever the document says.
    bool substitutes = true;
    /// Texts that mean missing in every column of texts, beside the empty field.
    std::vector<std::string> missingTexts{};
    /// Variables to prepare beside those that the model reads. A table may lack their columns, and
    /// text that can't be read is a missing value in them.
    std::vector<std::string> alsoRead{};
    /// Variables whose list of categories may lack their reference category.
    std::vector<std::string> withoutReference{};
    /// By variable, the table's column where it isn't called as the variable is.
    std::map<std::string, std::string> columnOf{};
    /// What else is to do where the header lacks a column: a sentence, or empty.
    std::string headerRemedy{};

    const std::string& ColumnOf(const std::string& variable) const
    {
        const auto found = columnOf.find(variable);
        return found == columnOf.end() ? variable : found->second;
    }
};

/// What the mining schema leaves to the host to do with one field, of a certain model.
struct FieldTreatment {
    const MiningFieldTreatment& schema;
    bool isFactor = false;  ///< of the model's equations
    bool hasContrasts = false;
    bool modelReplacesMissing = false;
};

/// One data variable that cases are read for: its column, and its value of the case at hand, which
/// it makes of what stands in the table and of what the mining schema says. CasePreparer tells in
/// which order.
///
/// Owner   variable and options outlive the field; the value belongs to the case's record.
class CaseField {
public:
    enum class Kind { Number, Text, DateTime };

    CaseField(const ScoreDictVar& var, const CaseOptions& options, bool optional);

    const ScoreDictVar& Var() const { return *var_; }
    const std::string& Name() const { return var_->GetName(); }
    Kind ValueKind() const { return kind_; }
    /// The table may lack its column.
    bool IsOptional() const { return optional_; }
    size_t Column() const { return column_; }
    void SetColumn(size_t column) { column_ = column; }
    void SetTreatment(const FieldTreatment& treatment);

    /// The value object, once, for the record to own.
    std::unique_ptr<ScoreValue> MakeValue();
    const ScoreValue& Value() const { return *value_; }

    /// Sets the value to what stands in a row of the field's column, treated; `unlisted` tells that
    /// it is to be counted. The code of the refusal, where there is one.
    long Set(const TableColumn& column, size_t row, bool& unlisted)
    {
        unlisted = false;
        // What nearly every field is.
        if (kind_ == Kind::Number && column.texts != nullptr &&
            SetSurely(column, column.texts[row * column.stride])) {
            return 0;
        }
        return SetAndTreat(column, row, unlisted);
    }
    void SetMissing();

    /// Reads a number in the easiest way: true where Set() would make the value this number, accept
    /// it and count nothing. False says nothing. Only of a field of numbers, and a text of that
    /// column.
    bool ReadSurely(const TableColumn& column, std::string_view text, double& number) const
    {
        const bool isPlain = column.textsHaveRoom
                                 ? ReadPlainNumberInRoom(text, options_->decimal, number)
                                 : ReadPlainNumber(text, options_->decimal, number);
        return isPlain && IsSure(number) && !IsNamedMissing(text);
    }
    /// The same of a column of texts: the bit of each row whose number isn't read so is set.
    void ReadSurely(const TableColumn& column, size_t rows, double* numbers, RowBits& unsure) const;
    bool IsSure(double number) const
    {
        return number >= low_ && number <= high_ && (!treated_ || var_->SurelyAccepts(number)) &&
               !countsUnlisted_;
    }
    /// True where Set() leaves whatever number stands in a column as it is.
    bool TakesNumbersAsTheyAre() const { return kind_ == Kind::Number && !treated_ && !extremes_; }

    bool IsMissingText(std::string_view text) const;
    /// The text as a document writes it: empty for a missing value, numbers with a decimal point.
    std::string DocumentText(std::string_view text) const;

    /// The count of its unlisted values, before the first.
    UnlistedValues NoneUnlisted() const;

private:
    enum class Invalid { LeaveToModel, AsIs, AsMissing, AsValue, Refuse };

    bool SetSurely(const TableColumn& column, std::string_view text);
    long SetAndTreat(const TableColumn& column, size_t row, bool& unlisted);
    bool IsNamedMissing(std::string_view text) const
    {
        return hasMissingWords_ && IsMissingWord(text);
    }
    bool IsMissingWord(std::string_view text) const;
    long SetText(std::string_view text);
    void SetNumber(double number);
    long Treat(bool& unlisted);
    bool ReadDecimal(std::string_view text, double& number);
    void TakeExtreme();
    bool SetReplacement(const std::string& text);
    void AssignText(std::string_view text);
    /// Not for a text.
    void SetPlainNumber(double number);

    const ScoreDictVar* var_;
    const DictVar* dictVar_;  // the same, null when it is of another class
    const CaseOptions* options_;
    Kind kind_;
    bool optional_;
    size_t column_ = 0;
    ScoreValue* value_ = nullptr;
    NumericValue* number_ = nullptr;  // the same, as the one of these three that the kind says
    StringValue* text_ = nullptr;
    DateTimeValue* dateTime_ = nullptr;
    bool naIsMissing_ = true;
    bool hasMissingWords_ = false;
    bool spells_ = false;                      // a boolean, whose declared spelling is taken
    std::optional<DictVar::Limits> extremes_;  // of outliers that count as the limits
    double low_;                               // the same limits, else the widest ones
    double high_;
    bool treated_ = false;  // some member below says something
    Invalid invalid_ = Invalid::LeaveToModel;
    bool refusesMissing_ = false;
    bool countsUnlisted_ = false;
    bool isFactor_ = false;
    bool hasContrasts_ = false;
    std::optional<std::string> invalidReplacement_;
    std::optional<std::string> missingReplacement_;
    std::string scratch_;
};

}  // namespace MCVelscore_850

#endif

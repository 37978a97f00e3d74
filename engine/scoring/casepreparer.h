#ifndef VELSCORE_ENGINE_SCORING_CASEPREPARER_H
#define VELSCORE_ENGINE_SCORING_CASEPREPARER_H

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "engine/documents/miningtreatment.h"
#include "host/model/modeldescription.h"
#include "host/variables/caserecord.h"
#include "host/variables/dictvar.h"

namespace MCVelscore_850 {

class DateTimeValue;
class NumericValue;
class ScoreDictVar;
class ScoreDictionary;
class ScoreModel;
class StringValue;
class TransformVar;

/// How a table writes its numbers and its missing values, and whether these are replaced.
struct CaseOptions {
    char decimal = '.';
    /// False leaves invalid and missing values unreplaced, whatever the document says.
    bool substitutes = true;
    /// Texts that mean missing in every column, beside the empty field.
    std::vector<std::string> missingTexts{};
    /// Variables to prepare beside those that the model reads. A table may lack their columns, and
    /// text that can't be read is a missing value in them.
    std::vector<std::string> alsoRead{};
    /// Variables whose list of categories may lack their reference category.
    std::vector<std::string> withoutReference{};
};

/// Whether a row became a case.
struct CaseStatus {
    long code = 0;                           ///< 0, or the code that refuses the row
    const std::string* field = nullptr;      ///< the field at fault, when there is one
    std::optional<std::string_view> text{};  ///< what stood in it; none of a derived field

    bool IsOK() const { return code == 0; }
    /// Empty when no single field is at fault.
    std::string_view FieldName() const { return field == nullptr ? std::string_view() : *field; }
};

/// Values of one column that its variable accepts without listing them: often a typing error.
struct UnlistedValues {
    static constexpr size_t kShown = 3;

    std::string column;
    int64_t count = 0;
    std::vector<std::string> first;  ///< the first different ones, at most kShown
    /// One different value may be the reference category, which the list lacks. The first one
    /// isn't counted then; which of them it is nobody knows.
    bool oneMayBeReference = false;
};

/// Turns the rows of a table into cases for one model: typed values in one record, overwritten
/// row by row.
///
/// Columns   are found by name; those that the model needs must be there, each once: the
///           variables that its description names, and for derived ones the fields that their
///           expressions read.
/// Values    An empty field is a missing value, and so is NA unless the variable declares a
///           category of that name. Every value is set anew for each row, since a model may write
///           its replacements into the record.
/// Treatment What the mining schema leaves to the host, in this order: outliers that count as the
///           limits, missing values apart; invalid values as they are, as missing, as another value
///           or as a refusal; missing values by their replacement, but for continuous fields that
///           the model alone reads, since it replaces them itself. What the schema puts in, or
///           wants as it is, is valid whatever the variable lists; where a factor's contrasts have
///           a row for each category alone, its variable judges it all the same.
/// Derived   values stand in the same record: GetScore is told that they are there.
/// Errors    kMissingColumn, kDuplicateColumn (Failure) from the constructor; a row that can't be
///           a case answers its code.
/// Owner     the model and its dictionaries outlive the preparer.
class CasePreparer {
public:
    CasePreparer(const ScoreModel& model, const ModelDescription& description,
                 const std::vector<MiningFieldTreatment>& treatments,
                 std::span<const std::string> header, const std::string& tableName,
                 CaseOptions options = {});
    CasePreparer(const CasePreparer&) = delete;
    CasePreparer& operator=(const CasePreparer&) = delete;
    ~CasePreparer();

    /// Makes the row the record's case. `fields` has a field for each column of the header; what
    /// the status views stands as long as `fields`.
    CaseStatus Prepare(std::span<const std::string_view> fields);

    const CaseRecord& Record() const { return *record_; }

    /// The model's variable of that name, data or derived; null when it has none.
    const ScoreDictVar* FindVar(const std::string& name) const;
    /// The status of a prepared row that the model failed with a code for a variable, null when it
    /// blames none. A derived variable hands the blame on to its first input that is missing or
    /// not valid, or to its only one: the table has no field of its own name.
    CaseStatus Refusal(long code, const ScoreDictVar* failed,
                       std::span<const std::string_view> fields) const;

    /// The data variables that are read, in the order of their values in the record.
    std::vector<std::string> InputNames() const;
    /// A row's texts of these variables as a document writes them: a missing value is empty, and
    /// numbers have a decimal point.
    std::vector<std::string> InputTexts(std::span<const std::string_view> fields) const;

    /// The columns that met unlisted values, in the order of the variables.
    std::vector<UnlistedValues> Unlisted() const;

private:
    enum class Kind { Number, Text, DateTime };
    enum class Invalid { LeaveToModel, AsIs, AsMissing, AsValue, Refuse };

    /// One data variable: its column, its value in the record, and what to do with the value.
    struct Binding {
        const ScoreDictVar* var = nullptr;
        const DictVar* dictVar = nullptr;  ///< the same, null when it is of another class
        size_t column = 0;
        Kind kind = Kind::Number;
        NumericValue* number = nullptr;  ///< the one of these three that `kind` says
        StringValue* text = nullptr;
        DateTimeValue* dateTime = nullptr;
        bool optional = false;  ///< of CaseOptions::alsoRead
        bool naIsMissing = true;
        bool spells = false;                      ///< a boolean, whose declared spelling is taken
        std::optional<DictVar::Limits> extremes;  ///< of outliers that count as the limits
        bool treated = false;                     ///< some member below says something
        Invalid invalid = Invalid::LeaveToModel;
        bool refusesMissing = false;
        bool countsUnlisted = false;
        bool isFactor = false;  ///< of the model's equations
        bool hasContrasts = false;
        std::optional<std::string> invalidReplacement;
        std::optional<std::string> missingReplacement;
        UnlistedValues unlisted;
    };
    struct Derived {
        const TransformVar* var;
        int position;
    };

    /// `columns` are the table's, for variables that it may lack; null when it may not.
    void AddVariable(const ScoreDictVar& var, std::vector<std::string>& names,
                     const std::span<const std::string>* columns = nullptr);
    void BindColumns(std::span<const std::string> header, const std::string& tableName);
    void ApplyTreatment(Binding& binding, const MiningFieldTreatment& treatment,
                        const ModelDescription& description) const;
    bool LeavesReplacementToModel(const ScoreDictVar& var,
                                  const ModelDescription& description) const;
    bool IsMissingText(const Binding& binding, std::string_view text) const;
    long SetValue(Binding& binding, std::string_view text);
    long Treat(Binding& binding, std::string_view text);
    bool ReadDecimal(std::string_view text, double& number);
    static void TakeExtreme(Binding& binding);
    static void SetMissing(Binding& binding);
    /// Not for a text.
    static void SetPlainNumber(const Binding& binding, double number);
    static ScoreValue& ValueOf(const Binding& binding);
    static bool SetReplacement(const Binding& binding, const std::string& text);
    static void CountUnlisted(Binding& binding, std::string_view text);

    CaseOptions options_;
    const ScoreDictionary* dictionary_;
    const ScoreDictionary* transformations_;
    bool modelSubstitutes_;
    std::vector<Binding> bindings_;
    std::vector<Derived> derived_;  ///< inputs before what reads them
    std::unordered_set<const ScoreDictVar*> seen_;
    std::unique_ptr<CaseRecord> record_;
    std::string decimalText_;  // scratch of ReadDecimal
};

}  // namespace MCVelscore_850

#endif

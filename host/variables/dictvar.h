#ifndef VELSCORE_HOST_VARIABLES_DICTVAR_H
#define VELSCORE_HOST_VARIABLES_DICTVAR_H

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "host/variables/catencoder.h"
#include "host/variables/scoredictvar.h"
#include "host/variables/valueset.h"

namespace MCVelscore_850 {

struct TargetDeclaration;

/// The truth that a word spells: true, TRUE, True, T, 1, 1.0 or false, FALSE, False, F, 0, 0.0;
/// nothing for other texts.
VELHOST_API std::optional<bool> TruthOf(std::string_view text);

/// The type of a variable, as its declaration tells it.
struct DictVarType {
    std::string name;
    ScoreDictVar::MeasureLevel level = ScoreDictVar::CONTINUOUS;
    ScoreDictVar::ValueType valueType = ScoreDictVar::NUMERIC;
    ScoreDictVar::DateTimeType dateTimeType = ScoreDictVar::NOT_DATETIME;
    bool boolean = false;  ///< a string variable of truth values
    std::string dataType;  ///< as the document spells it, for messages
};

/// The variable of a data dictionary, in memory.
///
/// Categories  A categorical variable is open while nothing was declared for it and it knows no
///             category; declared values, and AddCategory(), close it.
class VELHOST_API DictVar : public ScoreDictVar {
public:
    explicit DictVar(DictVarType type);
    DictVar(const DictVar& other);
    DictVar& operator=(const DictVar&) = delete;
    ~DictVar() override;

    ScoreDictVar* Clone() const override;
    bool IsMissing(const ScoreValue* value) const override;
    bool IsValid(const ScoreValue* value) const override;
    const std::string& GetName() const override { return type_.name; }
    int GetValueType() const override { return type_.valueType; }
    MeasureLevel GetMeasureLevel() const override { return type_.level; }
    VarStats* GetVarStats() const override { return stats_.get(); }
    void SetVarStats(VarStats* stats) override;
    const ValueSet* GetValueSet() const override;
    ScoreValue* MakeValue(const std::string& text) const override;
    int GetNumCategories() const override;
    void SetDictIndex(int position) const override { dictIndex_ = position; }
    int GetDictIndex() const override { return dictIndex_; }
    bool IsDerived() const override { return false; }
    DateTimeType GetDateTimeType() const override { return type_.dateTimeType; }
    const CatEncoder* GetCatEncoder() const override { return encoder_.get(); }
    CatEncoder* GetCatEncoderForUpdate() override { return encoder_.get(); }
    bool HasOpenCategories() const override;
    void AddCategory(ScoreValue* value, const std::string& text) override;
    void SetOutlierTreatment(int treatment) override;
    int GetOutlierTreatment() const override { return outlierTreatment_; }
    bool Accepts(const ScoreValue* value) const override;
    bool AcceptsUnlisted() const override { return acceptsUnlisted_; }

    const DictVarType& Type() const { return type_; }

    /// What the document says of predictions of this variable; null when it says nothing.
    const TargetDeclaration* GetTargetDeclaration() const { return target_.get(); }
    void SetTargetDeclaration(TargetDeclaration target);

    /// Gives the variable its encoder, once; later calls do nothing.
    void SetUpCatEncoder();
    /// The position of a category in the order of the value set, -1 for none.
    int FindCategory(const ScoreValue& value) const;
    int FindCategoryText(std::string_view text) const;

    // Declarations, made while the dictionary is read; EndDeclarations() follows the last one.

    enum class Property { Valid, Invalid, Missing };
    /// One value of the declaration. A second one of the same value is dropped, whatever its
    /// property.
    void DeclareValue(std::unique_ptr<ScoreValue> value, const std::string& text,
                      Property property);
    /// An interval of valid numbers; several add up. Infinite ends are no bound.
    struct Interval {
        double low;
        double high;
        bool lowClosed;
        bool highClosed;
    };
    void DeclareInterval(const Interval& interval);
    /// A value that is missing, which says nothing of those that are valid: an open variable stays
    /// open. Dropped when the value was declared before.
    void DeclareMissingValue(std::unique_ptr<ScoreValue> value);
    /// The limits beyond which a value is an outlier, as plain numbers of the variable's values;
    /// infinite where there is none.
    struct Limits {
        double low;
        double high;
    };
    Limits OutlierLimits() const;
    /// Numbers from low to high, both included, are missing; several ranges add up.
    void DeclareMissingRange(double low, double high);
    /// Finds what SurelyAccepts() is sure of, in one look at all that was declared: each
    /// declaration by itself leaves it sure of nothing.
    void EndDeclarations();
    void SetAcceptsUnlisted(bool accepts) { acceptsUnlisted_ = accepts; }
    /// A text that stands for a missing value and is none of the variable's type: "." in a field of
    /// numbers. No value of a case can be it; who reads texts asks IsMissingWord().
    void DeclareMissingWord(const std::string& text) { missingWords_.insert(text); }
    bool HasMissingWords() const { return !missingWords_.empty(); }
    bool IsMissingWord(std::string_view text) const
    {
        return !missingWords_.empty() && missingWords_.contains(text);
    }

    /// The spelling that a text takes in this variable: a boolean's declared word for the same
    /// truth, any other text as it stands. The view lives as long as `text` and the variable.
    std::string_view Spelling(std::string_view text) const;

private:
    class Encoder;
    struct TextHash {
        using is_transparent = void;
        size_t operator()(std::string_view text) const
        {
            return std::hash<std::string_view>{}(text);
        }
    };
    /// Values in order, each with its position, found by text or by number without allocating.
    struct Listing {
        std::vector<std::unique_ptr<ScoreValue>> values;
        std::unordered_map<std::string, int, TextHash, std::equal_to<>> byText;
        std::unordered_map<double, int> byNumber;
        int Find(const ScoreValue& value) const;
        int FindText(std::string_view text) const;
        bool Add(std::unique_ptr<ScoreValue> value);
        Listing() = default;
        Listing(const Listing& other);
    };

    bool HasOwnKind(const ScoreValue& value) const;
    bool IsOutlier(double number) const;
    bool IsInMissingRange(double number) const;
    bool IsDeclared(const ScoreValue& value) const;
    /// Takes a category over unless it is there already.
    void Append(std::unique_ptr<ScoreValue> category);
    bool IsValidNumber(double number) const;
    /// True for a fraction in a continuous variable of whole numbers. The limits that outliers are
    /// set to are the document's own and may have one.
    bool RefusesFraction(double number) const;
    /// What is sure: of a continuous variable the numbers between what is declared, the widest
    /// interval alone where there are several.
    void FindSureRange();
    void ForgetSureRange() { SetSureRange(1.0, 0.0); }

    DictVarType type_;
    bool whole_;  // a continuous variable of whole numbers
    Listing categories_;
    Listing missing_;
    Listing invalid_;
    ValueSet valueSet_;
    std::vector<Interval> intervals_;
    std::map<double, double> missingRanges_;  // low to high, none overlapping another
    std::set<std::string, std::less<>> missingWords_;
    std::unique_ptr<VarStats> stats_;
    std::unique_ptr<CatEncoder> encoder_;
    std::shared_ptr<const TargetDeclaration> target_;
    int outlierTreatment_ = AS_IS;
    int spellings_[2] = {-1, -1};  // of a boolean's false and true: the positions of their words
    bool declared_ = false;        // DeclareValue() was called
    bool acceptsUnlisted_ = false;
    mutable int dictIndex_ = -1;
};

}  // namespace MCVelscore_850

#endif

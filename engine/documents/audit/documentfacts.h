#ifndef VELSCORE_ENGINE_DOCUMENTS_AUDIT_DOCUMENTFACTS_H
#define VELSCORE_ENGINE_DOCUMENTS_AUDIT_DOCUMENTFACTS_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/documents/audit/repeatedcells.h"
#include "engine/documents/element.h"
#include "host/model/modelfamilies.h"

namespace MCVelscore_850 {

class CovarianceCells;
class Document;

/// A list of names, each with its number from 0. A name that comes again keeps its first number.
/// Looking one up allocates nothing.
class NameIndex {
public:
    static constexpr uint32_t kNone = UINT32_MAX;

    NameIndex() = default;
    NameIndex(NameIndex&&) = default;
    NameIndex& operator=(NameIndex&&) = default;

    /// The name's number, a new one when it wasn't there.
    uint32_t Add(Element::RawText name);
    uint32_t Find(Element::RawText name) const;
    uint32_t Find(std::string_view name) const;
    bool Has(std::string_view name) const { return Find(name) != kNone; }
    const std::string& NameAt(uint32_t number) const { return names_[number]; }
    Element::RawText RawNameAt(uint32_t number) const { return *rawNames_[number]; }
    const std::vector<std::string>& Names() const { return names_; }
    size_t Size() const { return names_.size(); }

private:
    struct HashOfText {
        using is_transparent = void;
        size_t operator()(Element::RawText text) const
        {
            return std::hash<Element::RawText>()(text);
        }
    };
    std::unordered_map<std::basic_string<XMLCh>, uint32_t, HashOfText, std::equal_to<>> numbers_;
    std::vector<const std::basic_string<XMLCh>*> rawNames_;  // the keys of numbers_
    std::vector<std::string> names_;
};

/// What a document of either form holds, read once for the checks of the audit. Texts are as they
/// are written. Numbers that aren't numbers are absent, as are names that aren't in their list
/// (NameIndex::kNone): there are checks for each of these.
struct DocumentFacts {
    struct Field {
        Element element;
        std::string name;
        std::string label;     ///< for people
        std::string optype;    ///< continuous, categorical, ordinal; of the older form too
        std::string dataType;  ///< as in the published form; of the older form string or double
        bool derived = false;
        /// The valid values that it lists, and a key each under which equal categories meet.
        std::vector<std::string> categories;
        std::vector<std::string> categoryKeys;
        /// True where it names valid values: no other is one of its categories.
        bool IsClosed() const { return !categories.empty(); }
        /// True for a text that means one of those categories; goes through them all.
        bool HasCategory(const std::string& text) const;
    };
    struct Parameter {
        Element element;
        std::string name;
        std::string label;
        /// The constant that a linear regression has without being told; its element is the list.
        bool implied = false;
    };
    struct Predictor {
        Element element;
        std::string name;
        bool isFactor = false;
        uint32_t field = NameIndex::kNone;  ///< of `fields`
    };
    /// A PPCell: this predictor takes part in this parameter.
    struct Design {
        Element element;
        uint32_t parameter = NameIndex::kNone;
        uint32_t predictor = NameIndex::kNone;
        std::string value;
        std::string targetCategory;
    };
    /// A PCell.
    struct Estimate {
        Element element;
        uint32_t parameter = NameIndex::kNone;
        std::string targetCategory;
        std::optional<double> beta;
        std::optional<double> df;
    };
    /// A PCovCell. Categories are numbers of `covarianceCategories`.
    struct Covariance {
        Element element;
        uint32_t row = NameIndex::kNone;
        uint32_t column = NameIndex::kNone;
        uint32_t rowCategory = NameIndex::kNone;
        uint32_t columnCategory = NameIndex::kNone;
        std::optional<double> value;
    };

    /// What stands beside the model's tables: one of its leading extensions, which alone are read,
    /// or one of its attributes that isn't empty.
    struct Option {
        Element element;  ///< the extension, or the model
        std::string name;
        std::string value;
        bool isExtension = false;
        /// The attribute that holds the value.
        std::string Attribute() const { return isExtension ? "value" : name; }
    };
    /// A time of a baseline with its cumulative hazard.
    struct HazardCell {
        Element element;
        std::optional<double> time;
        std::optional<double> hazard;
    };
    /// The baseline of one stratum, or the only one of a model without strata.
    struct Stratum {
        Element element;
        std::string value;
        std::string variable;           ///< the stratum's varName
        std::vector<Element> tables;    ///< that hold cells
        std::vector<Element> maxTimes;  ///< that tell the last time
        std::optional<double> maxTime;
        std::vector<HazardCell> cells;  ///< of the first table
    };
    /// BaseCumHazardTables, or the extension that says the same.
    struct Baseline {
        Element element;
        bool isExtension = false;
        bool isStratified = false;
        std::vector<Stratum> strata;  ///< one where it isn't stratified
    };
    /// The value at which a Cox model is centred.
    struct BasePoint {
        Element element;  ///< an X-BasePoint, or the Parameter
        std::string parameter;
        std::string value;
    };

    Element root;
    Element model;  ///< the one that is read; null where there is none
    bool older = false;
    double version = 0.0;
    /// What the reader will choose; nothing for an unknown type.
    std::optional<FamilyCode> family;

    std::vector<Field> fields;  ///< of the dictionary, then the derived ones
    NameIndex fieldNames;
    const Field* target = nullptr;
    std::vector<Parameter> parameters;  ///< each name once, as numbered in parameterNames
    NameIndex parameterNames;
    std::vector<Predictor> predictors;  ///< factors, then covariates
    NameIndex predictorNames;
    std::vector<Design> designs;
    std::vector<bool> hasDesign;  ///< by parameter
    std::vector<Estimate> estimates;
    std::vector<Covariance> covariances;
    NameIndex covarianceCategories;
    /// Attributes of the model whose names were told as misspelt, by the name that is meant.
    std::vector<std::string> misspeltOptions;
    std::vector<Option> options;      ///< extensions, then attributes, in order
    std::vector<Baseline> baselines;  ///< of a Cox model, in the order in which they are read
    std::vector<BasePoint>
        basePoints;  ///< of a Cox model; of two for one parameter the first counts

    bool IsAmong(FamilySet families) const { return family && Has(families, *family); }
    /// By section: cells that stand for a place which an earlier one has.
    std::vector<RepeatedCell> repeatedDesigns;
    std::vector<RepeatedCell> repeatedEstimates;
    std::vector<RepeatedCell> repeatedCovariances;

    bool Is(FamilyCode code) const { return family == code; }
    bool IsMultinomial() const
    {
        return Is(kMultinomial) || Is(kMultinomialGeneralized) || Is(kNormalized);
    }
    bool IsOrdinal() const { return Is(kOrdinal) || Is(kOrdinalGeneralized); }
    bool IsCox() const { return Is(kCox) || Is(kCoxComplexSamples); }
    /// True where a beta belongs to a category of the target.
    bool HasEquations() const;
    /// True where a PPCell names the parameter, whatever else it says.
    bool HasDesign(uint32_t parameter) const { return hasDesign[parameter]; }
    /// An option of the model, as attribute or as the value of an Extension; else empty.
    std::string OptionText(std::string_view name) const;
    const Field* FieldOf(const Predictor& predictor) const
    {
        return predictor.field == NameIndex::kNone ? nullptr : &fields[predictor.field];
    }
};

/// A key under which equal categories of the field meet; without a field the text itself.
std::string KeyOf(const DocumentFacts::Field* field, const std::string& category);

/// Reads the facts of a document's tree. Its covariance cells are taken from `cells`, which reads
/// them unless it has.
DocumentFacts GatherFacts(const Document& document, CovarianceCells& cells);

}  // namespace MCVelscore_850

#endif

#ifndef VELSCORE_ENGINE_DOCUMENTS_REGRESSIONPREDICTORS_H
#define VELSCORE_ENGINE_DOCUMENTS_REGRESSIONPREDICTORS_H

#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/documents/element.h"
#include "engine/documents/regressiontables.h"

namespace MCVelscore_850 {

/// A key that two texts share when they are the same category of a DataField: the same number or
/// truth value, else the same text.
std::string CategoryKeyOf(Element field, const std::string& text);

/// The fields of a RegressionModel's terms as predictors of the general form. A category is a
/// factor where the family counts a missing one as 0, as this model means it, and the field lists
/// its categories or takes any text; else a covariate of 0 and 1 that is derived from the field. A
/// power that isn't a whole number from 1 on is a derived covariate too.
///
/// It changes the tree on the way: derived fields are added to LocalTransformations, and a field of
/// numbers that is multiplied becomes continuous.
///
/// Owner   the tree outlives it.
/// Errors  VSException with the place: kUnknownTermField, kTextInEquation.
class RegressionPredictors {
public:
    /// `model` has the mining schema and the transformations; `tables` are those that are read.
    RegressionPredictors(Element root, Element model, const std::vector<RegressionTable>& tables,
                         bool takesFactors);

    /// A predictor of a term: the exponent of a covariate, or the category of a factor.
    struct Cell {
        std::string predictor;
        std::string value;
        bool isFactor = false;
    };
    /// A term's cells, each predictor once. Nothing for a term that is 0 in every case, since its
    /// field doesn't list the category and takes no other.
    std::optional<std::vector<Cell>> CellsOf(const RegressionTerm& term);

    /// A predictor with the element that named it first.
    struct Predictor {
        std::string name;
        Element element;
    };
    const std::vector<Predictor>& Factors() const { return factors_; }
    const std::vector<Predictor>& Covariates() const { return covariates_; }
    /// The categories of terms that are 0 in every case: 'field "value"'.
    const std::vector<std::string>& NeverMet() const { return neverMet_; }

private:
    struct Field {
        Element element;
        bool derived = false;
        std::string dataType;
        std::unordered_map<std::string, std::string> categories{};  // that it lists, by key
        bool takenAsIs = false;  // values that it doesn't list are scored
        bool isNumber = false;   // in some term

        std::optional<std::string> Listed(const std::string& category) const;
    };

    void ReadFields(Element root);
    void AddDerivedOf(Element section);
    Field& FieldOf(const std::string& name, Element element);
    bool IsFactor(const Field& field) const;
    std::optional<Cell> CategoryCell(const std::string& name, const std::string& category,
                                     Element element);
    std::string NumberPredictor(const TermFactor& factor, Element element);
    std::string Covariate(const std::string& name, Element element);
    /// The derived field of that name, made by `make` in an Expression's place when it is new.
    template <class Make>
    std::string Derived(const std::string& wanted, Element element, Make make);

    Element model_;
    bool takesFactors_;
    std::unordered_map<std::string, Field> fields_;
    std::map<std::string, std::string> derived_;  // by the name that was wanted
    std::set<std::string> listed_;                // predictors that have their place in a list
    std::vector<Predictor> factors_;
    std::vector<Predictor> covariates_;
    std::vector<std::string> neverMet_;
};

}  // namespace MCVelscore_850

#endif

#ifndef VELSCORE_ENGINE_DOCUMENTS_REGRESSIONTARGET_H
#define VELSCORE_ENGINE_DOCUMENTS_REGRESSIONTARGET_H

#include <string>
#include <unordered_map>
#include <vector>

#include "engine/documents/element.h"
#include "engine/documents/regressionforms.h"
#include "engine/documents/regressiontables.h"

namespace MCVelscore_850 {

/// The target of a RegressionModel, and which of its categories each table belongs to.
///
/// Order   MatchTables() before anything is asked but MiningField() and Name().
/// Owner   the tree outlives it.
class RegressionTarget {
public:
    /// Finds the target's fields. Where the model alone names it, the mining schema gets it.
    ///
    /// Errors  VSException with the place: kNoTargetField, kTargetFieldsDiffer, kUnknownTermField.
    RegressionTarget(Element root, Element model);

    /// Gives each table its category as the target lists it; of a number there is one table. The
    /// field's optype becomes the one that the tables mean, and a field that lists no categories
    /// gets those of the tables, in their order.
    ///
    /// Errors  VSException with the place: kUnknownFunctionName, kTableCount to kTablesMissing.
    void MatchTables(std::vector<RegressionTable>& tables);

    Element MiningField() const { return miningField_; }
    const std::string& Name() const { return name_; }
    RegressionShape Shape() const;
    /// In the field's order; none of a number.
    const std::vector<std::string>& Categories() const { return categories_; }
    /// A category as the general form's reader compares it: numbers in their own spelling.
    std::string TextOf(const std::string& category) const;

private:
    bool Classifies(const std::vector<RegressionTable>& tables) const;
    void ExpectOneTable(const std::vector<RegressionTable>& tables) const;
    void SettleCategories(const std::vector<RegressionTable>& tables);
    void ListCategories(const std::vector<RegressionTable>& tables) const;
    void NameTables(std::vector<RegressionTable>& tables) const;

    Element model_;
    Element miningField_;
    Element field_;  // DataField
    std::string name_;
    std::vector<std::string> categories_;
};

}  // namespace MCVelscore_850

#endif

// The covariances of the parameter estimates.

#include "host/documents/pmmlmodeltags.h"
#include "readers/cellreading.h"
#include "readers/codes.h"
#include "readers/generalregressiontranslator.h"
#include "readers/parse.h"
#include "readers/tablelimit.h"

namespace MCVelscore_850 {

using xercesc::DOMElement;
using Tags = PMMLModelTags;

namespace {

// One PCovCell.
struct CovarianceCell {
    std::string pcol;
    std::string prow;
    std::string tcol;  // target categories, empty when absent
    std::string trow;
    double value;
};

using Action = bool (*)(PCovMatrix& matrix, const CovarianceCell& cell,
                        const std::string& modelType);

bool TwoParameters(PCovMatrix& m, const CovarianceCell& c, const std::string&)
{
    return m.SetCell(c.pcol, c.prow, c.value);
}
bool ThresholdOfColumn(PCovMatrix& m, const CovarianceCell& c, const std::string&)
{
    return m.SetCell(c.pcol, c.prow, c.tcol, false, c.value);
}
bool ThresholdOfRow(PCovMatrix& m, const CovarianceCell& c, const std::string&)
{
    return m.SetCell(c.pcol, c.prow, c.trow, true, c.value);
}
bool TwoCategories(PCovMatrix& m, const CovarianceCell& c, const std::string&)
{
    return m.SetCell(c.pcol, c.prow, c.trow, c.tcol, c.value);
}
bool RefuseNoCategory(PCovMatrix&, const CovarianceCell&, const std::string& modelType)
{
    Refuse(kCovarianceWithoutCategories, Tags::XML_ATT_PCC_TCol.c_str(),
           Tags::XML_ATT_PCC_TROW.c_str(), modelType.c_str());
}
bool RefuseColumnCategory(PCovMatrix&, const CovarianceCell&, const std::string& modelType)
{
    Refuse(kCovarianceCategory, Tags::XML_ATT_PCC_TCol.c_str(), modelType.c_str());
}
bool RefuseRowCategory(PCovMatrix&, const CovarianceCell&, const std::string& modelType)
{
    Refuse(kCovarianceCategory, Tags::XML_ATT_PCC_TROW.c_str(), modelType.c_str());
}

// What a cell means, by the categories that it names and the family; the first row that fits.
struct CovarianceRow {
    bool hasColumnCategory;
    bool hasRowCategory;
    FamilySet families;
    Action act;
};

constexpr FamilySet kByCategory =
    Family(kMultinomial) | Family(kMultinomialGeneralized) | Family(kNormalized) | kOrdinalFamilies;
constexpr FamilySet kCategoriesIgnored =
    Family(kConditional) | Family(kBinary) | Family(kGeneralizedLinear);

constexpr CovarianceRow kCovarianceRows[] = {
    {false, false, Family(kMultinomial) | Family(kNormalized), RefuseNoCategory},
    {false, false, kAllFamilies, TwoParameters},
    {true, false, kOrdinalFamilies, ThresholdOfColumn},
    {true, false, kAllFamilies, RefuseColumnCategory},
    {false, true, kOrdinalFamilies, ThresholdOfRow},
    {false, true, kAllFamilies, RefuseRowCategory},
    {true, true, kByCategory, TwoCategories},
    {true, true, kCategoriesIgnored, TwoParameters},
    {true, true, kAllFamilies, RefuseColumnCategory},
};

const CovarianceRow& FindCovarianceRow(const CovarianceCell& cell, FamilyCode code)
{
    for (const CovarianceRow& row : kCovarianceRows) {
        if (row.hasColumnCategory == !cell.tcol.empty() &&
            row.hasRowCategory == !cell.trow.empty() && Has(row.families, code)) {
            return row;
        }
    }
    return kCovarianceRows[1];  // not reached: every combination ends with a row for all
}

}  // namespace

void GeneralRegressionTranslator::ReadPCovMatrix(Parse& parse)
{
    DOMElement* section = GetChildByTag(parse.modelElement, Tags::XML_ELE_PCOV_MATRIX);
    if (section == nullptr) return;
    PCovMatrix& matrix = *parse.model->CreatePCovMatrix();
    for (DOMElement* child = GetFirstChildElt(section); child != nullptr;
         child = GetNextSiblingElt(child)) {
        if (IsEqual(child->getTagName(), Tags::XML_ELE_EXTENSION)) continue;
        ExpectTag(*this, child, Tags::XML_ELE_PCOV_CELL, Tags::XML_ELE_PCOV_MATRIX,
                  kUnexpectedElement);
        CovarianceCell cell;
        cell.pcol = ForcedText(child, Tags::XML_ATT_PCC_PCOL);
        cell.prow = ForcedText(child, Tags::XML_ATT_PCC_PROW);
        cell.value = VerifyDouble(GetAttributeForced(child, Tags::XML_ATT_PCC_VALUE));
        cell.tcol = AttributeText(child, Tags::XML_ATT_PCC_TCol);
        cell.trow = AttributeText(child, Tags::XML_ATT_PCC_TROW);
        ExpectTableFits(Tags::XML_ELE_PCOV_MATRIX, matrix.GetDimension(), matrix.GetDimension());
        const CovarianceRow& row = FindCovarianceRow(cell, parse.choice.code);
        if (!row.act(matrix, cell, parse.modelType)) {
            Refuse(kCellNotTaken, cell.pcol.c_str(), Tags::XML_ATT_PCC_PCOL.c_str(),
                   cell.prow.c_str(), Tags::XML_ATT_PCC_PROW.c_str(),
                   Tags::XML_ELE_PCOV_CELL.c_str());
        }
    }
}

}  // namespace MCVelscore_850

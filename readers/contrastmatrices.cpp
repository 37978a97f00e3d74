// The contrast matrix of a factor: a row for each of its categories, a column for each contrast.
// It hangs below the factor's Predictor, in one of four forms.

#include <limits>
#include <memory>
#include <utility>

#include "host/documents/pmmlmodeltags.h"
#include "host/messages/messages.h"
#include "host/values/datetimevalue.h"
#include "host/variables/catencoder.h"
#include "host/variables/scoredictvar.h"
#include "host/variables/valueset.h"
#include "models/blrmodel.h"
#include "models/coxregrmodel.h"
#include "readers/cellreading.h"
#include "readers/codes.h"
#include "readers/contrastmatrix.h"
#include "readers/generalregressiontranslator.h"
#include "readers/parse.h"
#include "readers/tablelimit.h"

namespace MCVelscore_850 {

using xercesc::DOMElement;
using Tags = PMMLModelTags;

namespace {

// Every form's row count has to be the number of the variable's categories.
void ExpectRowPerCategory(int rows, const std::string& rowsTag, const ScoreDictVar& variable)
{
    const int categories = variable.GetNumCategories();
    if (rows == categories) return;
    Refuse(kContrastRowsOfVariable, std::to_string(rows).c_str(), rowsTag.c_str(),
           std::to_string(categories).c_str(), variable.GetName().c_str());
}

using Rows = std::vector<std::vector<double>>;
using Values = std::vector<ScoreValue*>;

void Size(Rows& contrastRows, Values& contrastValues, int rows, int columns,
          const std::string& columnsTag)
{
    if (columns < 0) {
        Refuse(kNotAnInteger, std::to_string(columns).c_str(), columnsTag.c_str());
    }
    ExpectTableFits(Tags::XML_ELE_MATRIX, static_cast<size_t>(rows), static_cast<size_t>(columns));
    contrastRows.assign(static_cast<size_t>(rows),
                        std::vector<double>(static_cast<size_t>(columns)));
    contrastValues.resize(static_cast<size_t>(rows));
}

void ExpectRowDeclared(size_t row, const Rows& contrastRows, const ScoreDictVar& variable)
{
    if (row < contrastRows.size()) return;
    Refuse(kTooManyContrastRows, static_cast<int>(row + 1), static_cast<int>(contrastRows.size()),
           variable.GetName().c_str());
}

// The number by which a binary model finds a category. One that the document has no row for
// equals no number.
double CategoryNumber(const ScoreDictVar& variable, const ScoreValue* category)
{
    if (category == nullptr) return std::numeric_limits<double>::quiet_NaN();
    switch (variable.GetValueType()) {
        case ScoreDictVar::STRING: {
            const CatEncoder* encoder = variable.GetCatEncoder();
            return encoder == nullptr ? -1.0 : encoder->EncodeValue(category);
        }
        case ScoreDictVar::NUMERIC: return category->GetDouble();
        case ScoreDictVar::DATETIME:
            return static_cast<const DateTimeValue*>(category)->GetDoubleValue(
                variable.GetDateTimeType());
        default: return -1.0;
    }
}

}  // namespace

// The form is chosen by the family and the contrast type, never by the version.
void GeneralRegressionTranslator::ReadContrastMatrix(Parse& parse, DOMElement* predictor,
                                                     ScoreDictVar* variable)
{
    const bool typed = !IsBlank(GetAttribute(predictor, Tags::XML_ELE_GRM_CONTRASTMATRIXTYPE));
    DOMElement* child = GetFirstChildElt(predictor);  // the only one that is looked at
    if (child == nullptr) {
        if (typed) {
            Refuse(kAbsent, Tags::XML_ELE_XBASIS.c_str(), Tags::XML_ELE_PREDICTOR.c_str());
        }
        return;
    }
    const bool cox = parse.IsAmong(kCoxFamilies);
    const bool binary = parse.Is(kBinary);
    ContrastMatrix contrast;
    if (typed) {
        // Read in every family, so that it can refuse; used by those that take contrasts.
        HandleContrastMatrix41(predictor, contrast.rows, contrast.categories, variable);
        TakeContrastMatrix(parse, contrast, variable, Tags::XML_ELE_MATRIX);
    } else if (IsEqual(child->getTagName(), Tags::XML_ELE_XBASIS)) {
        if (!binary) {
            Refuse(kNoContrasts, Tags::XML_ELE_XBASIS.c_str(), parse.modelType.c_str());
        }
        HandleContrastMatrix(child, contrast.rows, contrast.categories, variable);
        TakeContrastMatrix(parse, contrast, variable, Tags::XML_ELE_XBASIS);
    } else if (IsEqual(child->getTagName(), Tags::XML_ELE_EXTENSION) && (binary || cox)) {
        if (ForcedText(child, Tags::XML_ATT_EXT_NAME) != Tags::XML_EXT_NAME_COXREG_CONTRASTMATRIX) {
            return;
        }
        // A Cox model takes the extension's first child whatever its tag.
        DOMElement* matrix = GetFirstChildElt(child);
        if (matrix == nullptr ||
            (binary && !IsEqual(matrix->getTagName(), Tags::XML_ELE_UPERXBASIS))) {
            return;
        }
        HandleContrastMatrix(matrix, contrast.rows, contrast.categories, variable);
        TakeContrastMatrix(parse, contrast, variable,
                           binary ? Tags::XML_ELE_UPERXBASIS : Tags::XML_ELE_XBASIS);
    } else if (IsEqual(child->getTagName(), Tags::XML_ELE_MATRIX) && cox) {
        HandleContrastMatrixEx(child, contrast.rows, contrast.categories, variable);
        TakeContrastMatrix(parse, contrast, variable, Tags::XML_ELE_MATRIX);
    }
}

void GeneralRegressionTranslator::HandleContrastMatrix(
    DOMElement* element, std::vector<std::vector<double>>& contrastRows,
    std::vector<ScoreValue*>& contrastValues, const ScoreDictVar* variable)
{
    const int rows = VerifyInt(GetAttributeForced(element, Tags::XML_ATT_XBASIS_NROW));
    ExpectRowPerCategory(rows, Tags::XML_ATT_XBASIS_NROW, *variable);
    const int columns = VerifyInt(GetAttributeForced(element, Tags::XML_ATT_XBASIS_NCOL));
    Size(contrastRows, contrastValues, rows, columns, Tags::XML_ATT_XBASIS_NCOL);
    size_t row = 0;
    for (DOMElement* child = GetFirstChildElt(element); child != nullptr;
         child = GetNextSiblingElt(child), ++row) {
        const std::string text = ForcedText(child, Tags::XML_ATT_VALUE_VALUE);
        std::unique_ptr<ScoreValue> category(CarefullyMakeVarValue(variable, text));
        if (!variable->IsValid(category.get())) {
            Refuse(kInvalidValue, text.c_str(), variable->GetName().c_str());
        }
        ExpectRowDeclared(row, contrastRows, *variable);
        contrastValues[row] = category.release();
        contrastRows[row] = VerifyDoubleArray(child, columns);
    }
}

void GeneralRegressionTranslator::HandleContrastMatrixEx(
    DOMElement* matrix, std::vector<std::vector<double>>& contrastRows,
    std::vector<ScoreValue*>& contrastValues, const ScoreDictVar* variable)
{
    const int rows = VerifyInt(GetAttributeForced(matrix, Tags::XML_ELE_MATRIX_NBROWS));
    ExpectRowPerCategory(rows, Tags::XML_ELE_MATRIX_NBROWS, *variable);
    const int columns = VerifyInt(GetAttributeForced(matrix, Tags::XML_ELE_MATRIX_NBCOLS));
    Size(contrastRows, contrastValues, rows, columns, Tags::XML_ELE_MATRIX_NBCOLS);
    std::vector<ValueSetEntry> entries;
    if (const ValueSet* values = variable->GetValueSet()) entries = values->GetEntries();
    size_t row = 0;
    for (DOMElement* child = GetFirstChildElt(matrix); child != nullptr;
         child = GetNextSiblingElt(child), ++row) {
        // The rows carry no category: they follow the variable's own order.
        if (row >= entries.size()) {
            Refuse(kContrastRowBeyondValues, std::to_string(row).c_str(),
                   variable->GetName().c_str());
        }
        contrastValues[row] = entries[row].GetEntryValue()->Clone();
        contrastRows[row] = VerifyDoubleArray(child, columns);
    }
}

void GeneralRegressionTranslator::HandleContrastMatrix41(
    DOMElement* predictor, std::vector<std::vector<double>>& contrastRows,
    std::vector<ScoreValue*>& contrastValues, const ScoreDictVar* variable)
{
    DOMElement* first = GetFirstChildElt(predictor);
    if (first == nullptr || !IsEqual(first->getTagName(), Tags::XML_ELE_GRM_CATEGORIES)) {
        DOMElement* matrix = first;
        while (matrix != nullptr && !IsEqual(matrix->getTagName(), Tags::XML_ELE_MATRIX)) {
            matrix = GetNextSiblingElt(matrix);
        }
        if (matrix == nullptr) {
            Refuse(kAbsent, Tags::XML_ELE_MATRIX.c_str(), Tags::XML_ELE_XBASIS.c_str());
        }
        HandleContrastMatrixEx(matrix, contrastRows, contrastValues, variable);
        return;
    }

    ReadContrastCategories(first, contrastValues, variable);
    DOMElement* matrix = GetNextSiblingElt(first);
    if (matrix == nullptr || !IsEqual(matrix->getTagName(), Tags::XML_ELE_MATRIX)) {
        Refuse(kAbsent, Tags::XML_ELE_MATRIX.c_str(), Tags::XML_ELE_PREDICTOR.c_str());
    }
    const int rows = VerifyInt(GetAttributeForced(matrix, Tags::XML_ELE_MATRIX_NBROWS));
    ExpectRowPerCategory(rows, Tags::XML_ELE_MATRIX_NBROWS, *variable);
    if (static_cast<size_t>(rows) != contrastValues.size()) {
        Refuse(kContrastRowsOfList, std::to_string(rows).c_str(),
               Tags::XML_ELE_MATRIX_NBROWS.c_str(), std::to_string(contrastValues.size()).c_str(),
               Tags::XML_ELE_GRM_CATEGORY.c_str(), Tags::XML_ELE_GRM_CATEGORIES.c_str());
    }
    const int columns = VerifyInt(GetAttributeForced(matrix, Tags::XML_ELE_MATRIX_NBCOLS));
    Size(contrastRows, contrastValues, rows, columns, Tags::XML_ELE_MATRIX_NBCOLS);
    size_t row = 0;
    for (DOMElement* child = GetFirstChildElt(matrix); child != nullptr;
         child = GetNextSiblingElt(child), ++row) {
        const XMLCh* length = GetAttribute(child, Tags::XML_ATT_ARRAY_N);
        if (!IsBlank(length) && VerifyInt(length) != columns) {
            Refuse(kContrastRowLength, ToString(length).c_str(), Tags::XML_ATT_ARRAY_N.c_str(),
                   Tags::XML_ELE_MATRIX.c_str(), std::to_string(columns).c_str(),
                   Tags::XML_ELE_MATRIX_NBCOLS.c_str(), Tags::XML_ELE_MATRIX.c_str());
        }
        ExpectRowDeclared(row, contrastRows, *variable);
        contrastRows[row] = VerifyDoubleArray(child, columns);
    }
}

void GeneralRegressionTranslator::ReadContrastCategories(DOMElement* list,
                                                         std::vector<ScoreValue*>& contrastValues,
                                                         const ScoreDictVar* variable)
{
    // Asked once: the first category added would close the variable.
    const bool open = variable->HasOpenCategories();
    for (DOMElement* child = GetFirstChildElt(list); child != nullptr;
         child = GetNextSiblingElt(child)) {
        ExpectTag(*this, child, Tags::XML_ELE_GRM_CATEGORY, Tags::XML_ELE_GRM_CATEGORIES,
                  kUnexpectedElement);
        const std::string text = ForcedText(child, Tags::XML_ATT_VALUE_VALUE);
        std::unique_ptr<ScoreValue> category(CarefullyMakeVarValue(variable, text));
        // An open variable takes its categories from here, on purpose the other way round than
        // from the cells of the predictor-to-parameter matrix.
        if (open && category != nullptr && !text.empty()) {
            const_cast<ScoreDictVar*>(variable)->AddCategory(category->Clone(), text);
        }
        if (!variable->IsValid(category.get())) {
            Refuse(kInvalidValue, text.c_str(), variable->GetName().c_str());
        }
        contrastValues.push_back(category.release());
    }
}

void GeneralRegressionTranslator::TakeContrastMatrix(Parse& parse, ContrastMatrix& contrast,
                                                     const ScoreDictVar* variable,
                                                     const std::string& element)
{
    const std::string& name = variable->GetName();
    bool taken = true;  // by a family that takes none it is dropped
    if (parse.Is(kBinary)) {
        std::vector<double> numbers;
        for (const ScoreValue* category : contrast.categories) {
            numbers.push_back(CategoryNumber(*variable, category));
        }
        taken =
            static_cast<BLRModel&>(*parse.model).SetContrastMatrix(name, contrast.rows, numbers);
    } else if (parse.IsAmong(kCoxFamilies)) {
        // The categories are the model's, whatever it answers.
        taken = static_cast<CoxRegModel&>(*parse.model)
                    .SetContrastMatrix(name, contrast.rows, std::exchange(contrast.categories, {}));
    }
    if (!taken) Refuse(kContrastRefused, element.c_str(), name.c_str());
}

}  // namespace MCVelscore_850

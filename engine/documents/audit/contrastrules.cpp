// Contrast matrices: a row for each category of the factor, a column for each category that a cell
// names. In the families that don't take them the adapter made covariates of those that it could,
// and the reader passes over what is left: the same rules hold there.

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include <fmt/format.h>

#include "engine/documents/audit/documentaudit.h"
#include "engine/documents/audit/nearnames.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

constexpr FamilySet kTakesContrasts = Family(kBinary) | kCoxFamilies;

// What a factor's Predictor says of contrasts.
struct Contrasts {
    const DocumentFacts::Predictor* predictor = nullptr;
    const DocumentFacts::Field* field = nullptr;
    bool isTyped = false;
    bool labelsRows = false;  // each row names its category; else Categories or the field does
    Element matrix;           // null without one
    Element list;             // Categories

    bool AreThere() const { return isTyped || matrix; }
};

// The matrix of the forms in which each row names its category; null for any other.
Element MatrixOfLabelledRows(Element predictor)
{
    const Element first = *predictor.Children().begin();
    if (first.Is(Tags::XML_ELE_XBASIS)) return first;
    const bool isExtension =
        first.Is(Tags::XML_ELE_EXTENSION) &&
        first.Text(Tags::XML_ATT_EXT_NAME) == Tags::XML_EXT_NAME_COXREG_CONTRASTMATRIX;
    return isExtension ? *first.Children().begin() : Element();
}

Contrasts ContrastsOf(const DocumentFacts& facts, const DocumentFacts::Predictor& predictor)
{
    const Element element = predictor.element;
    Contrasts contrasts;
    contrasts.predictor = &predictor;
    contrasts.field = facts.FieldOf(predictor);
    contrasts.isTyped = !element.Text(Tags::XML_ELE_GRM_CONTRASTMATRIXTYPE).empty();
    contrasts.matrix = element.Child(Tags::XML_ELE_MATRIX);
    contrasts.list = element.Child(Tags::XML_ELE_GRM_CATEGORIES);
    if (!contrasts.isTyped && !contrasts.matrix) {
        contrasts.matrix = MatrixOfLabelledRows(element);
        contrasts.labelsRows = static_cast<bool>(contrasts.matrix);
    }
    return contrasts;
}

template <class Look>
void ForEachFactor(const DocumentFacts& facts, Look look)
{
    for (const DocumentFacts::Predictor& predictor : facts.predictors) {
        if (predictor.isFactor) look(ContrastsOf(facts, predictor));
    }
}

// The rows of a matrix and the entries of Categories, without what extends them.
std::vector<Element> Entries(Element list)
{
    std::vector<Element> entries;
    for (const Element child : list.Children()) {
        if (!child.Is(Tags::XML_ELE_EXTENSION)) entries.push_back(child);
    }
    return entries;
}

std::vector<std::string> CategoriesOfRows(const Contrasts& contrasts)
{
    if (!contrasts.labelsRows && !contrasts.list) {
        return contrasts.field == nullptr ? std::vector<std::string>()
                                          : contrasts.field->categories;
    }
    std::vector<std::string> categories;
    for (const Element entry : Entries(contrasts.labelsRows ? contrasts.matrix : contrasts.list)) {
        categories.push_back(entry.Text(Tags::XML_ATT_VALUE));
    }
    return categories;
}

// Whether the reader looks at the matrix: a Cox model reads a bare one too.
bool IsRead(const DocumentFacts& facts, const Contrasts& contrasts)
{
    if (contrasts.isTyped || contrasts.labelsRows) return true;
    return facts.IsAmong(kCoxFamilies) &&
           *contrasts.predictor->element.Children().begin() == contrasts.matrix;
}

void TypeWithoutMatrix(const DocumentFacts& facts, RuleReport& report)
{
    ForEachFactor(facts, [&](const Contrasts& contrasts) {
        if (!contrasts.isTyped || contrasts.matrix) return;
        const std::string& attribute = Tags::XML_ELE_GRM_CONTRASTMATRIXTYPE;
        report({.element = contrasts.predictor->element,
                .attribute = attribute,
                .found = contrasts.predictor->element.Text(attribute),
                .what = contrasts.predictor->name});
    });
}

void MatrixWithoutType(const DocumentFacts& facts, RuleReport& report)
{
    if (!facts.IsAmong(kTakesContrasts)) return;
    ForEachFactor(facts, [&](const Contrasts& contrasts) {
        if (!contrasts.matrix || IsRead(facts, contrasts)) return;
        report({.element = contrasts.predictor->element,
                .attribute = Tags::XML_ELE_GRM_CONTRASTMATRIXTYPE,
                .what = contrasts.predictor->name});
    });
}

// The families that take no contrasts pass over what isn't in the published form.
void ExtensionNotRead(const DocumentFacts& facts, RuleReport& report)
{
    if (!facts.family || facts.IsAmong(kTakesContrasts)) return;
    ForEachFactor(facts, [&](const Contrasts& contrasts) {
        const Element first = *contrasts.predictor->element.Children().begin();
        if (!contrasts.labelsRows || !first.Is(Tags::XML_ELE_EXTENSION)) return;
        report({.element = first,
                .attribute = Tags::XML_ATT_EXT_NAME,
                .found = first.Text(Tags::XML_ATT_EXT_NAME),
                .expected = FamilyOf(*facts.family).name,
                .what = contrasts.predictor->name});
    });
}

// How many numbers a row has; nothing where some are none.
std::optional<size_t> CountNumbers(Element row)
{
    const std::string text = row.Content();
    std::string_view left = TrimBlanks(text);
    size_t count = 0;
    while (!left.empty()) {
        const size_t end = std::min(left.find_first_of(" \t\r\n"), left.size());
        double number = 0.0;
        if (ReadNumber(left.substr(0, end), number) != NumberText::Number) return std::nullopt;
        left = TrimBlanks(left.substr(end));
        ++count;
    }
    return count;
}

// A matrix that the reader looks at is refused by it; of the others the adapter leaves those that
// it can't make covariates of.
void RaggedMatrix(const DocumentFacts& facts, RuleReport& report)
{
    ForEachFactor(facts, [&](const Contrasts& contrasts) {
        if (!contrasts.matrix || IsRead(facts, contrasts)) return;
        const auto columns = contrasts.matrix.Number(Tags::XML_ELE_MATRIX_NBCOLS);
        for (const Element row : Entries(contrasts.matrix)) {
            const auto count = CountNumbers(row);
            if (count && (!columns || static_cast<double>(*count) == *columns)) continue;
            report({.element = row,
                    .found = row.Content(),
                    .expected = contrasts.matrix.Text(Tags::XML_ELE_MATRIX_NBCOLS),
                    .what = contrasts.predictor->name});
        }
    });
}

// The reader believes nbRows and takes each Array for a row, whatever the kind says.
void MatrixOfOtherShape(const DocumentFacts& facts, RuleReport& report)
{
    ForEachFactor(facts, [&](const Contrasts& contrasts) {
        if (!contrasts.matrix || contrasts.labelsRows) return;
        const size_t rows = Entries(contrasts.matrix).size();
        const auto declared = contrasts.matrix.Number(Tags::XML_ELE_MATRIX_NBROWS);
        // Too few are told as the categories that have none.
        const bool isWhole = rows >= CategoriesOfRows(contrasts).size();
        if (declared && isWhole && *declared != static_cast<double>(rows)) {
            report({.element = contrasts.matrix,
                    .attribute = Tags::XML_ELE_MATRIX_NBROWS,
                    .found = contrasts.matrix.Text(Tags::XML_ELE_MATRIX_NBROWS),
                    .expected = fmt::format("{}", rows),
                    .what = contrasts.predictor->name,
                    .note = fmt::format("has {} rows", rows)});
        }
        const std::string kind = contrasts.matrix.Text("kind");
        if (kind != "diagonal" && kind != "symmetric") return;
        report({.element = contrasts.matrix,
                .attribute = "kind",
                .found = kind,
                .expected = "any",
                .what = contrasts.predictor->name,
                .note = "is read row by row"});
    });
}

// A category that the matrix lists and its closed field doesn't have.
void UnknownContrastCategory(const DocumentFacts& facts, RuleReport& report)
{
    ForEachFactor(facts, [&](const Contrasts& contrasts) {
        if (contrasts.field == nullptr || !contrasts.field->IsClosed()) return;
        NearNames names(report);
        for (const Element entry :
             Entries(contrasts.labelsRows ? contrasts.matrix : contrasts.list)) {
            const std::string category = entry.Text(Tags::XML_ATT_VALUE);
            if (contrasts.field->HasCategory(category)) continue;
            names.Tell({.element = entry,
                        .attribute = Tags::XML_ATT_VALUE,
                        .found = category,
                        .what = contrasts.predictor->name},
                       contrasts.field->categories);
        }
    });
}

// A binary model wants contrasts of every factor, a Cox model of every one or of none.
void FactorWithoutContrasts(const DocumentFacts& facts, RuleReport& report)
{
    if (!facts.IsAmong(kTakesContrasts)) return;
    bool isWanted = facts.Is(kBinary);
    std::vector<const DocumentFacts::Predictor*> without;
    ForEachFactor(facts, [&](const Contrasts& contrasts) {
        if (contrasts.AreThere()) {
            isWanted = true;
        } else {
            without.push_back(contrasts.predictor);
        }
    });
    if (!isWanted) return;
    for (const auto* predictor : without) {
        report({.element = predictor->element, .what = predictor->name});
    }
}

bool ListsUnknownCategory(const Contrasts& contrasts)
{
    if (contrasts.field == nullptr || !contrasts.field->IsClosed()) return false;
    const std::vector<Element> entries =
        Entries(contrasts.labelsRows ? contrasts.matrix : contrasts.list);
    return std::any_of(entries.begin(), entries.end(), [&](Element entry) {
        return !contrasts.field->HasCategory(entry.Text(Tags::XML_ATT_VALUE));
    });
}

// Counted by the reader are the rows that the matrix declares, not those that it has.
void CategoryWithoutRow(const DocumentFacts& facts, RuleReport& report)
{
    ForEachFactor(facts, [&](const Contrasts& contrasts) {
        if (!contrasts.matrix) return;
        std::unordered_set<std::string> keys;
        std::vector<std::string> categories = CategoriesOfRows(contrasts);
        const size_t labelled = std::min(Entries(contrasts.matrix).size(), categories.size());
        for (size_t i = 0; i < labelled; ++i) keys.insert(KeyOf(contrasts.field, categories[i]));
        // The field's own categories have to have one, and those that the matrix lists.
        if (contrasts.field != nullptr) {
            categories.insert(categories.end(), contrasts.field->categories.begin(),
                              contrasts.field->categories.end());
        }
        for (const std::string& category : categories) {
            if (!keys.insert(KeyOf(contrasts.field, category)).second) continue;
            // It is most likely the one that is misspelt, which is told there.
            if (ListsUnknownCategory(contrasts)) continue;
            report({.element = contrasts.matrix,
                    .found = category,
                    .what = contrasts.predictor->name});
        }
    });
}

// Parameters whose betas aren't all 0: the others meet no contrast.
std::unordered_set<uint32_t> ParametersThatCount(const DocumentFacts& facts)
{
    std::unordered_set<uint32_t> parameters;
    for (const DocumentFacts::Estimate& estimate : facts.estimates) {
        if (estimate.beta != 0.0) parameters.insert(estimate.parameter);
    }
    return parameters;
}

// The categories that a factor's matrix has rows for, and whether a column belongs to them too.
struct ContrastColumns {
    Contrasts contrasts;
    std::unordered_map<std::string, bool> hasColumn;

    // One that the field doesn't have is told by the rules of cells.
    bool Lacks(const std::string& category) const
    {
        const auto found = hasColumn.find(KeyOf(contrasts.field, category));
        if (found != hasColumn.end()) return !found->second;
        return contrasts.field == nullptr || !contrasts.field->IsClosed();
    }
};

std::unordered_map<uint32_t, ContrastColumns> ColumnsByFactor(const DocumentFacts& facts)
{
    std::unordered_map<uint32_t, ContrastColumns> columns;
    ForEachFactor(facts, [&](const Contrasts& contrasts) {
        const auto count = contrasts.matrix.Number(Tags::XML_ELE_MATRIX_NBCOLS);
        if (!count) return;
        ContrastColumns& of =
            columns[facts.predictorNames.Find(std::string_view(contrasts.predictor->name))];
        of.contrasts = contrasts;
        double column = 0.0;
        for (const std::string& category : CategoriesOfRows(contrasts)) {
            of.hasColumn.emplace(KeyOf(contrasts.field, category), column < *count);
            column += 1.0;
        }
    });
    return columns;
}

void CategoryWithoutColumn(const DocumentFacts& facts, RuleReport& report)
{
    const auto columns = ColumnsByFactor(facts);
    if (columns.empty()) return;
    const std::unordered_set<uint32_t> counting = ParametersThatCount(facts);
    for (const DocumentFacts::Design& design : facts.designs) {
        const auto found = columns.find(design.predictor);
        if (found == columns.end() || !counting.contains(design.parameter)) continue;
        if (!found->second.Lacks(design.value)) continue;
        const Contrasts& contrasts = found->second.contrasts;
        report({.element = design.element,
                .attribute = Tags::XML_ATT_PPC_VALUE,
                .found = design.value,
                .expected = contrasts.matrix.Text(Tags::XML_ELE_MATRIX_NBCOLS),
                .what = contrasts.predictor->name});
    }
}

constexpr bool kStrict = true;

constexpr AuditRule kRules[] = {
    {{"contrast-type-without-matrix", Answer::Fault, kStrict,
      "the type of a contrast matrix without the matrix",
      "factor {what} has {attribute} {found} and no Matrix",
      "Write the factor's contrast matrix, a row for each of its categories, or take {attribute} "
      "out."},
     TypeWithoutMatrix},
    {{"contrast-matrix-without-type", Answer::Fault, kStrict,
      "a contrast matrix without its type, which would be passed over",
      "factor {what} has a contrast matrix and no {attribute}: the matrix would be passed over",
      "Write {attribute}, with the name of the contrasts."},
     MatrixWithoutType},
    {{"contrast-extension-not-read", Answer::Fault, kStrict,
      "an extension of a contrast that isn't read in the family",
      "{element} {found} of factor {what} isn't read in a model that is read as {expected}",
      "Write the matrix in the published form, as Categories and Matrix with a "
      "contrastMatrixType."},
     ExtensionNotRead},
    {{"ragged-contrast-matrix", Answer::Fault, kStrict,
      "a row of a contrast matrix that isn't as long as the others",
      "{element} {found} of factor {what} isn't a row of {expected} numbers",
      "Write as many numbers in each row as nbCols says."},
     RaggedMatrix},
    {{"contrast-matrix-shape", Answer::Fault, kStrict,
      "a contrast matrix of other rows than it declares, or of a kind that isn't read",
      "{attribute} of the contrast matrix of factor {what} is {found}, and the matrix {note}",
      "Write {attribute}=\"{expected}\", or correct the rows."},
     MatrixOfOtherShape},
    {{"unknown-contrast-category", Answer::Fault, kStrict,
      "a category of a contrast matrix that the factor doesn't have",
      "{element} {found} of the contrast matrix is no category of factor {what}, which has "
      "{expected}{meant}",
      "Write the category as the field lists it."},
     UnknownContrastCategory},
    {{"factor-without-contrasts", Answer::Fault, kStrict,
      "a factor without a contrast matrix where each has one",
      "factor {what} has no contrast matrix, which the model wants of each of its factors",
      "Write the factor's contrast matrix, for dummy variables one of 0 and 1; or, where no factor "
      "needs one, choose a family without contrasts."},
     FactorWithoutContrasts},
    {{"category-without-contrast-row", Answer::Fault, kStrict,
      "a category without a row in its contrast matrix",
      "category {found} of factor {what} has no row in its contrast matrix",
      "Give the matrix a row for each category, in their order."},
     CategoryWithoutRow},
    {{"category-without-contrast-column", Answer::Fault, kStrict,
      "a cell of a category to which no column belongs",
      "{element} names category {found} of factor {what}, which is none of the first {expected}, "
      "to "
      "which the columns of its contrast matrix belong",
      "Name the category that stands for the contrast: that of the first column is the factor's "
      "first, and so on."},
     CategoryWithoutColumn},
};

}  // namespace

std::span<const AuditRule> ContrastRules() { return kRules; }

}  // namespace MCVelscore_850

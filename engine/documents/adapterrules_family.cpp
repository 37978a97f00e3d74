#include <algorithm>
#include <functional>
#include <string>

#include <fmt/format.h>

#include "engine/documents/adapterrules.h"
#include "engine/documents/modelelement.h"
#include "engine/documents/treefields.h"
#include "host/documents/pmmlmodeltags.h"
#include "host/model/modelfamilies.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

// The model element of a multinomial model with selectors; null for any other.
Element MultinomialModel(Element root)
{
    const Element model = ModelElement(root);
    const bool multinomial = VersionOf(root) >= kSelectorVersion &&
                             model.Text(Tags::XML_ATT_RM_MODEL_TYPE) == Tags::XML_VAL_MT_MLR;
    return multinomial ? model : Element();
}

// A predictor with a matrix in one of the forms that the reader of a binary model takes.
bool HasContrasts(Element predictor)
{
    const Element child = predictor.Children().First();
    if (!child) return false;
    if (!predictor.Text(Tags::XML_ELE_GRM_CONTRASTMATRIXTYPE).empty()) return true;
    if (child.Is(Tags::XML_ELE_XBASIS)) return true;
    return child.Is(Tags::XML_ELE_EXTENSION) &&
           child.Text(Tags::XML_ATT_EXT_NAME) == Tags::XML_EXT_NAME_COXREG_CONTRASTMATRIX;
}

// The binary model wants contrasts of every factor. Where some have them alone, all in the
// published form, the document is left to the rule that makes covariates of them.
bool AreOfSome(ElementRange factors)
{
    return !std::all_of(factors.begin(), factors.end(), HasContrasts) &&
           std::none_of(factors.begin(), factors.end(), [](Element factor) {
               return HasContrasts(factor) && !factor.Child(Tags::XML_ELE_MATRIX);
           });
}

}  // namespace

std::optional<Change> SelectGeneralizedLinear(Element root)
{
    const Element model = ModelElement(root);
    if (model.Text(Tags::XML_ATT_RM_MODEL_TYPE) != Tags::XML_VAL_MT_GDLIN) return std::nullopt;
    const std::string selector = SelectorOf(model);
    if (IsSelector(Tags::XML_VAL_MT_GDLIN, selector)) return std::nullopt;
    const std::string before = model.Text(Tags::XML_ATT_MODELALGO);
    model.SetText(Tags::XML_ATT_MODELALGO, Tags::XML_VAL_MN_GZLM);
    const std::string found =
        before.empty() ? "without algorithmName" : "with algorithmName \"" + before + "\"";
    return Change{model.Place(), "generalizedLinear " + found + " is read as algorithmName \"" +
                                     Tags::XML_VAL_MN_GZLM + "\""};
}

std::optional<Change> TakeLinkFromCumulativeLink(Element root)
{
    const Element model = ModelElement(root);
    if (model.Text(Tags::XML_ATT_RM_MODEL_TYPE) != Tags::XML_VAL_MT_ORDINAL ||
        SelectorOf(model) == Tags::XML_VAL_MN_GZLM) {  // that family reads cumulativeLink
        return std::nullopt;
    }
    const std::string link = model.Text(Tags::XML_ATT_RM_NAME_CUMULATIVELINK);
    if (link.empty() || !model.Text(Tags::XML_ATT_LINKFUNCTION).empty()) {
        return std::nullopt;
    }
    model.SetText(Tags::XML_ATT_LINKFUNCTION, link);
    return Change{model.Place(), "cumulativeLink \"" + link + "\" is read as linkFunction"};
}

std::optional<Change> ClassifyCategoricalTarget(Element root)
{
    const Element model = ModelElement(root);
    if (model.Text(Tags::XML_ATT_RM_MODEL_TYPE) != Tags::XML_VAL_MT_GDLIN ||
        FindFamily(Tags::XML_VAL_MT_GDLIN, kSelectorVersion, SelectorOf(model)) !=
            kGeneralizedLinear ||
        model.Text(Tags::XML_VAL_RM_EXT_NAME_DISTRIBUTION) !=
            Tags::XML_VAL_RM_EXT_VALUE_DIST_BINOMIAL) {
        return std::nullopt;
    }
    const std::string function = model.Text(Tags::XML_ATT_RM_FUNC_NAME);
    const Element target = TargetDataField(root);
    if (function == Tags::XML_VAL_RM_FUNC_NAME_C || ValidValues(target).size() != 2 ||
        target.Text(Tags::XML_ATT_DATAFIELD_OPTYPE) == Tags::XML_VAL_OT_CONTINUOUS) {
        return std::nullopt;
    }
    model.SetText(Tags::XML_ATT_RM_FUNC_NAME, Tags::XML_VAL_RM_FUNC_NAME_C);
    return Change{model.Place(), "functionName \"" + function +
                                     "\" of a binomial model with a target of two categories is "
                                     "read as \"" +
                                     Tags::XML_VAL_RM_FUNC_NAME_C + "\""};
}

std::optional<Change> NameCategoryOfBetas(Element root)
{
    const Element model = ModelElement(root);
    const std::string type = model.Text(Tags::XML_ATT_RM_MODEL_TYPE);
    const bool classifies = model.Text(Tags::XML_ATT_RM_FUNC_NAME) == Tags::XML_VAL_RM_FUNC_NAME_C;
    if (type != Tags::XML_VAL_MT_MLR && (type != Tags::XML_VAL_MT_GDLIN || !classifies)) {
        return std::nullopt;
    }
    const Element target = TargetDataField(root);
    const Elements values = ValidValues(target);
    const ElementRange cells =
        model.Child(Tags::XML_ELE_PARAM_MATRIX).Children(Tags::XML_ELE_PCELL);
    const auto namesNone = [](Element cell) {
        return cell.Text(Tags::XML_ATT_PC_TARGET_CAT).empty();
    };
    if (values.size() != 2 || cells.Empty() ||
        !std::all_of(cells.begin(), cells.end(), namesNone)) {
        return std::nullopt;
    }
    const std::string reference = model.Text(Tags::XML_ATT_TARGETREFCATEGORY);
    for (size_t i = 0; i < 2; ++i) {
        if (CategoryKey(target, values[i].Text(Tags::XML_ATT_VALUE)) !=
            CategoryKey(target, reference)) {
            continue;
        }
        const std::string other = values[1 - i].Text(Tags::XML_ATT_VALUE);
        if (other.empty()) continue;  // cells that name it would still name none
        for (const Element cell : cells) cell.SetText(Tags::XML_ATT_PC_TARGET_CAT, other);
        return Change{cells.First().Place(),
                      fmt::format("the cells name no category: the betas are those of \"{}\", the "
                                  "reference being \"{}\"",
                                  other, reference)};
    }
    return std::nullopt;
}

std::optional<Change> SpellCategoriesOfBetas(Element root)
{
    const Element model = ModelElement(root);
    if (!model) return std::nullopt;
    const auto family = FamilyOfModel(root, model);
    const Element target = TargetDataField(root);
    if ((family != kGeneralizedLinear && family != kMultinomialGeneralized) ||
        !IsNumericType(target.Text("dataType"))) {
        return std::nullopt;
    }
    std::optional<Change> change;
    for (const Element cell :
         model.Child(Tags::XML_ELE_PARAM_MATRIX).Children(Tags::XML_ELE_PCELL)) {
        const std::string category = cell.Text(Tags::XML_ATT_PC_TARGET_CAT);
        double number = 0.0;
        if (ReadNumber(category, number) != NumberText::Number) continue;
        std::string spelled;
        AppendNumber(number, spelled);
        if (spelled == category) continue;
        cell.SetText(Tags::XML_ATT_PC_TARGET_CAT, spelled);
        if (change) continue;
        change = Change{cell.Place(), fmt::format("targetCategory \"{}\" is read as the number {}",
                                                  category, spelled)};
    }
    return change;
}

std::optional<Change> SelectContrastLogistic(Element root)
{
    const Element model = MultinomialModel(root);
    if (!model || IsSelector(Tags::XML_VAL_MT_MLR, SelectorOf(model))) return std::nullopt;
    const ElementRange factors = Predictors(root, Tags::XML_ELE_FAC_LIST);
    if (std::none_of(factors.begin(), factors.end(), HasContrasts) || AreOfSome(factors) ||
        ValidValues(TargetDataField(root)).size() != 2) {
        return std::nullopt;
    }
    model.SetText(Tags::XML_ATT_MODELALGO, Tags::XML_VAL_MT_XCONLOG);
    return Change{model.Place(),
                  "multinomialLogistic of two categories with contrast matrices is "
                  "read as algorithmName \"" +
                      Tags::XML_VAL_MT_XCONLOG + "\""};
}

std::optional<Change> DeclareBetaCategoryLast(Element root)
{
    const Element model = MultinomialModel(root);
    if (SelectorOf(model) != Tags::XML_VAL_MT_XCONLOG) return std::nullopt;
    const ElementRange cells =
        model.Child(Tags::XML_ELE_PARAM_MATRIX).Children(Tags::XML_ELE_PCELL);
    const Element field = TargetDataField(root);
    const Elements values = ValidValues(field);
    if (cells.Empty() || values.size() != 2) return std::nullopt;
    const std::string category = cells.First().Text(Tags::XML_ATT_PC_TARGET_CAT);
    const auto isOfBetas = [&](Element value) {
        return CategoryKey(field, value.Text(Tags::XML_ATT_VALUE)) == CategoryKey(field, category);
    };
    // A category that stands twice would be first again, however often it is moved.
    if (!isOfBetas(values.front()) || isOfBetas(values.back())) return std::nullopt;
    const DocumentPlace place = field.Place();
    field.Insert(values.front(), values.back().NextSibling());
    return Change{place,
                  "the target's category \"" + category +
                      "\", which has the betas, is declared last; of two equal probabilities the "
                      "other category's is now predicted",
                  true};
}

std::optional<Change> DropCovariancesWithoutCategories(Element root)
{
    const Element model = ModelElement(root);
    if (model.Text(Tags::XML_ATT_RM_MODEL_TYPE) != Tags::XML_VAL_MT_MLR) {
        return std::nullopt;
    }
    // With a selector it is another family, which takes such covariances.
    if (VersionOf(root) >= kSelectorVersion &&
        IsSelector(Tags::XML_VAL_MT_MLR, SelectorOf(model))) {
        return std::nullopt;
    }
    Element matrix = model.Child(Tags::XML_ELE_PCOV_MATRIX);
    const ElementRange cells = matrix.Children(Tags::XML_ELE_PCOV_CELL);
    const auto namesNone = [](Element cell) {
        return cell.Text(Tags::XML_ATT_PCC_TROW).empty() &&
               cell.Text(Tags::XML_ATT_PCC_TCol).empty();
    };
    if (cells.Empty() || !std::all_of(cells.begin(), cells.end(), namesNone)) return std::nullopt;
    const DocumentPlace place = matrix.Place();
    matrix.Erase();
    return Change{place, "the covariances name no target categories and are dropped"};
}

}  // namespace MCVelscore_850

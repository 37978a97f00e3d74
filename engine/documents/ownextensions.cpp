#include "engine/documents/ownextensions.h"

#include <algorithm>

#include "host/documents/pmmlmodeltags.h"
#include "host/messages/nearword.h"
#include "host/values/numbertext.h"

namespace MCVelscore_850 {

namespace {

using Tags = PMMLModelTags;

constexpr unsigned Of(FamilyCode code) { return 1U << code; }

constexpr unsigned kAll = ~0U;
// A generalized multinomial model with another link than logit becomes a generalized linear one.
constexpr unsigned kGeneralized =
    Of(kGeneralizedLinear) | Of(kOrdinalGeneralized) | Of(kMultinomialGeneralized);
constexpr unsigned kSurvival = Of(kCox) | Of(kCoxComplexSamples);

std::string NameOf(Element extension) { return extension.Text(Tags::XML_ATT_EXT_NAME); }

}  // namespace

// Made at the first call: the tags are texts of the host, which are made at the program's start.
std::span<const OwnExtension> OwnExtensions()
{
    const std::string& model = Tags::XML_ELE_REGRESSMODEL;
    static const OwnExtension rows[] = {
        {model, Tags::XML_VAL_NAME_MODELDF, kAll, false},
        {model, Tags::XML_ATT_RM_EXT_NAME_ALLMISSINGFACTORS, kAll, false},
        {model, Tags::XML_VAL_RM_EXT_NAME_TRIALVAR, kGeneralized, false},
        {model, Tags::XML_VAL_RM_EXT_NAME_OFFSETVAR, kGeneralized, false},
        {model, Tags::XML_ATT_RM_EXT_NAME_TRIALS_VALUE, kGeneralized, false},
        {model, Tags::XML_ATT_RM_EXT_NAME_OFFSET_VALUE, kGeneralized, false},
        {model, Tags::XML_VAL_RM_EXT_NAME_LINK, kGeneralized, false},
        {model, Tags::XML_ATT_RM_EXT_NAME_LINK_PARAM, kGeneralized, false},
        {model, Tags::XML_VAL_RM_EXT_NAME_DISTRIBUTION, kGeneralized, false},
        {model, Tags::XML_EXT_NAME_COXREG_ENDTIMEVARIABLE, kSurvival, false},
        {model, Tags::XML_EXT_NAME_COXREG_STARTTIMEVARIABLE, kSurvival, false},
        {model, Tags::XML_EXT_NAME_COXREG_SUBJECT_VARIABLE, kSurvival, false},
        {model, Tags::XML_EXT_NAME_COXREG_REFERENCEPOINT, kSurvival, false},
        {model, Tags::XML_EXT_NAME_COXREG_XBASE_CUMHAZARD_TABLES, kSurvival, false},
        {model, Tags::XML_ATT_RM_EXT_NAME_CUTOFF, Of(kBinary), false},
        {model, Tags::XML_ATT_RM_EXT_NAME_NORMALIZATION, Of(kNormalized), false},
        {model, Tags::XML_ATT_RM_EXT_NAME_REMAINDER, Of(kNormalized), false},
        {model, Tags::XML_ATT_RM_EXT_NAME_ORDERED, Of(kNormalized), false},
        {model, Tags::XML_ATT_RM_EXT_NAME_SIGMA, Of(kGeneralLinear), false},
        {model, Tags::XML_ATT_RM_EXT_NAME_PERCENTILE, Of(kGeneralLinear), false},
        {Tags::XML_ELE_PREDICTOR, Tags::XML_EXT_NAME_COXREG_CONTRASTMATRIX, Of(kBinary) | kSurvival,
         false},
        {Tags::XML_ELE_MININGSCHEMA, Tags::XML_ATT_TRAN_EXT_NAME_DERIVEDFIELD, kAll, true},
        {"DataField", "unlistedCategories", kAll, true},
        {"DerivedField", "unlistedCategories", kAll, true},
    };
    return rows;
}

const OwnExtension* FindOwnExtension(Element extension)
{
    const Element parent = extension.Parent();
    const std::string name = NameOf(extension);
    for (const OwnExtension& row : OwnExtensions()) {
        if (name == row.name && parent.Is(row.parent)) return &row;
    }
    return nullptr;
}

std::vector<std::string> OwnExtensionNames(Element parent)
{
    std::vector<std::string> names;
    for (const OwnExtension& row : OwnExtensions()) {
        if (parent.Is(row.parent)) names.emplace_back(row.name);
    }
    return names;
}

std::string NearOwnName(Element extension)
{
    const std::vector<std::string> names = OwnExtensionNames(extension.Parent());
    const std::string name = NameOf(extension);
    const std::string trimmed(TrimBlanks(name));
    const bool isOwn = std::find(names.begin(), names.end(), trimmed) != names.end();
    if (isOwn) return trimmed == name ? std::string() : trimmed;
    const std::string near = NearWord(trimmed, names);
    // Another maker may have a name of its own that is merely alike.
    const bool isSure = ExtenderOf(extension) != Extender::None || WordDistance(trimmed, near) <= 1;
    return isSure ? near : std::string();
}

Extender ExtenderOf(Element extension)
{
    const std::string& own = Tags::XML_VAL_EXTENSION_EXTENDER;
    const std::string extender = extension.Text(Tags::XML_ATT_EXTENSION_EXTENDER);
    const std::string trimmed(TrimBlanks(extender));
    if (extender == own) return Extender::Own;
    if (trimmed.empty()) return Extender::None;
    const bool isNear = trimmed == own || !NearWord(trimmed, {&own, 1}).empty();
    return isNear ? Extender::Misspelt : Extender::Another;
}

bool IsLeading(Element extension)
{
    Element before = extension.PreviousSibling();
    while (before && before.Is(Tags::XML_ELE_EXTENSION)) before = before.PreviousSibling();
    return !before;
}

}  // namespace MCVelscore_850

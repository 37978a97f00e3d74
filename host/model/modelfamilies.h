#ifndef VELSCORE_HOST_MODEL_MODELFAMILIES_H
#define VELSCORE_HOST_MODEL_MODELFAMILIES_H

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/export.h"

namespace MCVelscore_850 {

struct ModelDescription;

/// The families of models, by the code that the trace prints.
enum FamilyCode {
    kMultinomial = 0,
    /// A multinomial model written by a generalized procedure; differs from 0 in its covariance
    /// cells only.
    kMultinomialGeneralized = 1,
    kGeneralLinear = 2,
    kLinear = 3,
    kConditional = 5,
    kBinary = 6,
    kOrdinal = 7,
    kGeneralizedLinear = 8,
    kOrdinalGeneralized = 9,
    kCox = 10,
    kCoxComplexSamples = 11,
    kNormalized = 12
};

/// A set of families, a bit each.
using FamilySet = unsigned;
constexpr FamilySet Family(FamilyCode code) { return 1U << code; }
constexpr bool Has(FamilySet set, FamilyCode code) { return (set & Family(code)) != 0; }
inline constexpr FamilySet kCoxFamilies = Family(kCox) | Family(kCoxComplexSamples);
inline constexpr FamilySet kOrdinalFamilies = Family(kOrdinal) | Family(kOrdinalGeneralized);
/// The families whose prediction is a category of the target, whatever the target's level.
inline constexpr FamilySet kCategoryFamilies =
    Family(kMultinomial) | Family(kMultinomialGeneralized) | Family(kNormalized) | Family(kBinary) |
    kOrdinalFamilies;
inline constexpr FamilySet kAllFamilies = ~0U;

/// What a family is, apart from its arithmetic.
struct ModelFamily {
    const char* name;       ///< in the field's words
    const char* className;  ///< of its model
    FamilyCode code;
    /// Of its results (ScoreResult::ResultType), and the same where its target has categories.
    int resultType;
    int classifyingResultType;
    bool takesContrasts;   ///< factors may have contrast matrices
    bool takesStatusOnly;  ///< ScoreModel::MV_STATUS_ONLY has a meaning for it
};

VELHOST_API std::span<const ModelFamily> ModelFamilies();
VELHOST_API const ModelFamily& FamilyOf(FamilyCode code);
/// Writes the family's facts into a description that has its target's categories.
VELHOST_API void DescribeFamily(FamilyCode code, ModelDescription& description);

/// From this version on a document's selector, its algorithm name or else its model name, is looked
/// at.
inline constexpr double kSelectorVersion = 3.1;

/// One way in which a document asks for a family.
struct FamilySelection {
    using Words = std::vector<std::reference_wrapper<const std::string>>;
    Words modelTypes;
    enum { AnyVersion, BelowSelectors, FromSelectors } versions;
    Words selectors;  ///< one of them; any for none
    FamilyCode code;
};

/// The first selection whose model type, version and selector all match decides.
VELHOST_API std::span<const FamilySelection> FamilySelections();
/// Nothing for an unknown model type.
VELHOST_API std::optional<FamilyCode> FindFamily(const std::string& modelType, double version,
                                                 const std::string& selector);
/// What the model element's distribution and linkFunction make of a selected family: a multinomial
/// model with a generalized selector is a generalized linear one where its distribution is binomial
/// and its link another than logit. A binomial logit model stays multinomial, on purpose.
VELHOST_API FamilyCode FamilyUnderLink(FamilyCode code, const std::string& distribution,
                                       const std::string& link);
/// True for a word that selects a family among those of a model type.
VELHOST_API bool IsSelector(const std::string& modelType, const std::string& word);

}  // namespace MCVelscore_850

#endif

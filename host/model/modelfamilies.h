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
/// True for a word that selects a family among those of a model type.
VELHOST_API bool IsSelector(const std::string& modelType, const std::string& word);

}  // namespace MCVelscore_850

#endif

#ifndef VELSCORE_ENGINE_DOCUMENTS_VOCABULARYWORDS_H
#define VELSCORE_ENGINE_DOCUMENTS_VOCABULARYWORDS_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

#include "engine/documents/vocabulary.h"

// What several elements of the published form share: lists of words, and the expressions.
namespace MCVelscore_850::vocabulary {

inline constexpr std::string_view kOptypes[] = {"categorical", "ordinal", "continuous"};
inline constexpr std::string_view kDataTypes[] = {
    "string",
    "integer",
    "float",
    "double",
    "boolean",
    "date",
    "time",
    "dateTime",
    "dateDaysSince[0]",
    "dateDaysSince[1960]",
    "dateDaysSince[1970]",
    "dateDaysSince[1980]",
    "timeSeconds",
    "dateTimeSecondsSince[0]",
    "dateTimeSecondsSince[1960]",
    "dateTimeSecondsSince[1970]",
    "dateTimeSecondsSince[1980]",
};
inline constexpr std::string_view kOutliers[] = {"asIs", "asMissingValues", "asExtremeValues"};
inline constexpr std::string_view kInvalidTreatments[] = {"returnInvalid", "asIs", "asMissing",
                                                          "asValue"};
inline constexpr std::string_view kTruths[] = {"true", "false", "1", "0"};

/// The children of what has one expression.
inline constexpr ChildWord kOneExpression[] = {
    {"Constant", ChildWord::Expression},       {"FieldRef", ChildWord::Expression},
    {"NormContinuous", ChildWord::Expression}, {"NormDiscrete", ChildWord::Expression},
    {"Discretize", ChildWord::Expression},     {"MapValues", ChildWord::Expression},
    {"Apply", ChildWord::Expression},          {"TextIndex", ChildWord::Expression},
    {"Aggregate", ChildWord::Expression},      {"Lag", ChildWord::Expression},
};

/// Those and others.
template <size_t n>
constexpr auto OneExpressionAnd(const ChildWord (&others)[n])
{
    std::array<ChildWord, std::size(kOneExpression) + n> children{};
    auto* end = std::copy(std::begin(kOneExpression), std::end(kOneExpression), children.data());
    std::copy(std::begin(others), std::end(others), end);
    return children;
}

}  // namespace MCVelscore_850::vocabulary

#endif

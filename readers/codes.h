#ifndef VELSCORE_READERS_CODES_H
#define VELSCORE_READERS_CODES_H

#include "host/messages/messages.h"
#include "host/messages/vsexception.h"

namespace MCVelscore_850 {

// The codes with which the readers refuse a document; behind each its arguments, in order. The
// texts are the message catalogue's. Those that the host refuses with too stand in
// host/messages/messages.h.

inline constexpr int kLowValueNeeded = 260117;          // low-value tag, mining-field tag
inline constexpr int kHighValueNeeded = 260118;         // high-value tag, mining-field tag
inline constexpr int kNoEndTime = 260120;               // end-time tag, model tag
inline constexpr int kNoHazardTables = 260121;          // hazard-tables, extension, model tags
inline constexpr int kNotInDictionary = 260124;         // name, dictionary tag
inline constexpr int kRoleOrCategories = 260126;        // name
inline constexpr int kNoTarget = 260133;                // none
inline constexpr int kNoPredictorRole = 260155;         // name
inline constexpr int kNotAPredictor = 260161;           // name
inline constexpr int kContrastRefused = 260162;         // tag, name
inline constexpr int kUnexpectedElement = 260178;       // text, tag, tag
inline constexpr int kOffsetNotContinuous = 260179;     // level, optype tag, name, continuous tag
inline constexpr int kCovariateNotContinuous = 260180;  // continuous tag, optype tag, name
inline constexpr int kTargetNotTwoCategories = 260181;  // value tag, name
inline constexpr int kTargetNotContinuous = 260184;     // continuous tag, optype tag, name
inline constexpr int kCovarianceWithoutCategories = 260188;  // two category tags, model type
inline constexpr int kCovarianceCategory = 260191;           // category tag, model type
inline constexpr int kConditionalIntercept = 260192;         // intercept tag, label tag, model type
inline constexpr int kTargetsDiffer = 260202;                // name, dictionary tag
inline constexpr int kSecondTarget = 260204;                 // name
inline constexpr int kContrastRowLength = 260214;            // length, two tags, columns, two tags
inline constexpr int kVariableRefused = 260223;              // trials tag, name
inline constexpr int kRoleRefused = 260227;                  // mining-field tag, name
inline constexpr int kContrastRowsOfList = 260246;           // rows, tag, values, two tags
inline constexpr int kContrastRowsOfVariable = 260249;       // rows, tag, categories, name
inline constexpr int kReferencePointCount = 260251;          // count, two tags, count, two tags
inline constexpr int kCellNotTaken = 260258;                 // name, tag, name, tag, tag
inline constexpr int kNotScorable = 260281;                  // scorable tag, document tag
inline constexpr int kNoParameters = 260283;                 // parameter-list tag
inline constexpr int kContrastRowBeyondValues = 260292;      // row index, name
inline constexpr int kNoContrasts = 260302;                  // contrast tag, model type
inline constexpr int kSetupFailed = 260304;                  // none

}  // namespace MCVelscore_850

#endif

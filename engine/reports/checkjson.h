#ifndef VELSCORE_ENGINE_REPORTS_CHECKJSON_H
#define VELSCORE_ENGINE_REPORTS_CHECKJSON_H

#include <string>

#include "engine/reports/jsontext.h"

namespace MCVelscore_850 {

class Failure;
class LoadedModel;

/// What `check` says of a document that can be read: its family, and what was found and adapted in
/// it. `file` is the name that the caller knows it by.
JsonValue AcceptedJson(const std::string& file, const LoadedModel& model);

/// What it says of one that was refused: where, why, what to do, and all that was found.
JsonValue RefusedJson(const std::string& file, const Failure& failure);

}  // namespace MCVelscore_850

#endif

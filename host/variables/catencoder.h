#ifndef VELSCORE_HOST_VARIABLES_CATENCODER_H
#define VELSCORE_HOST_VARIABLES_CATENCODER_H

#include <string>

#include "host/export.h"

namespace MCVelscore_850 {

class ScoreValue;

/// The position of a category among its variable's: 0 for the first, -1 for what has none and
/// for whatever is missing. It is live: a category added later has its position at once.
class VELHOST_API CatEncoder {
public:
    virtual ~CatEncoder();
    virtual int EncodeValue(const ScoreValue* value) const = 0;
    virtual int EncodeString(const std::string& text) const = 0;
};

}  // namespace MCVelscore_850

#endif

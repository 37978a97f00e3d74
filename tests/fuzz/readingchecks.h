#ifndef VELSCORE_TESTS_FUZZ_READINGCHECKS_H
#define VELSCORE_TESTS_FUZZ_READINGCHECKS_H

#include <string_view>

#include "engine/tables/blockreader.h"

// What holds for the reading of every table, whatever its bytes. Each check ends the program where
// it doesn't.
namespace MCVelscore_850::fuzz {

/// A table, packed or not, has the same rows, torn rows and failure however its bytes come and its
/// blocks are cut, and from the end of any block on. The careful reading of a record finds the
/// fields that the fast one has; numbers are read to the same bits by both ways and by the standard
/// library.
void CheckReading(std::string_view table, const RecordForm& form);

}  // namespace MCVelscore_850::fuzz

#endif

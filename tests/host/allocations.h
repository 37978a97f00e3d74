#ifndef VELSCORE_TESTS_HOST_ALLOCATIONS_H
#define VELSCORE_TESTS_HOST_ALLOCATIONS_H

namespace MCVelscore_850 {

/// The allocations of this program so far, those of the library under test too.
long Allocations();

}  // namespace MCVelscore_850

#endif

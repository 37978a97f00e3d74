#ifndef VELSCORE_TESTS_MODELS_ALLOCATIONCOUNTER_H
#define VELSCORE_TESTS_MODELS_ALLOCATIONCOUNTER_H

namespace MCVelscore_850::testing {

/// How often this process has allocated through operator new.
long AllocationCount();

}  // namespace MCVelscore_850::testing

#endif

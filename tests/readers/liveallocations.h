#ifndef VELSCORE_TESTS_READERS_LIVEALLOCATIONS_H
#define VELSCORE_TESTS_READERS_LIVEALLOCATIONS_H

namespace MCVelscore_850::testing {

/// How many objects of operator new this process holds now.
long LiveAllocations();

}  // namespace MCVelscore_850::testing

#endif

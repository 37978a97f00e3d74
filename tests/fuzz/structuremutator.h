#ifndef VELSCORE_TESTS_FUZZ_STRUCTUREMUTATOR_H
#define VELSCORE_TESTS_FUZZ_STRUCTUREMUTATOR_H

#include <string>
#include <string_view>

namespace MCVelscore_850::fuzz {

/// A value that readers of numbers, names and words may stumble over.
std::string_view OddValue(unsigned draw);

/// Changes a document in one to four places, mostly in one, as an exporter or a hand might:
/// attributes get other names, words, numbers or values that stand elsewhere; elements are left
/// out, doubled, moved, and put where the vocabulary lets them stand, words of texts change. Tags
/// stay paired where they were. The same seed makes the same of a document.
std::string MutateStructure(std::string_view document, unsigned seed);

/// Puts an element of another document into a document, mostly in the place of one of the same tag.
std::string CrossStructures(std::string_view document, std::string_view other, unsigned seed);

}  // namespace MCVelscore_850::fuzz

#endif

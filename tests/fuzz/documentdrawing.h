#ifndef VELSCORE_TESTS_FUZZ_DOCUMENTDRAWING_H
#define VELSCORE_TESTS_FUZZ_DOCUMENTDRAWING_H

#include <string>

namespace MCVelscore_850::fuzz {

/// A whole document, mostly a sound one: of any family and form, over fields of any type, with
/// treatments, transformations, targets, covariances, baselines and options that are drawn. The
/// same seed makes the same document. Half of them are what `convert` takes.
std::string DrawDocument(unsigned seed);

/// A table of the fields that drawn documents may have, as CSV: values that they list, and odd
/// ones.
std::string DrawTable(unsigned seed);

}  // namespace MCVelscore_850::fuzz

#endif

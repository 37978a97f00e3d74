#ifndef VELSCORE_TESTS_FUZZ_ARROWDRAWING_H
#define VELSCORE_TESTS_FUZZ_ARROWDRAWING_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tests/capi/madetables.h"
#include "tests/fuzz/fuzztarget.h"

// Tables in Arrow's form, drawn from an input, right and wrong ones. The interface tells no sizes
// of buffers and of arrays of pointers: those are always as large as formats, lengths and offsets
// say, to the byte, where these can be true at all. Everything else may be wrong.
namespace MCVelscore_850::fuzz {

using velscore_tests::MadeArray;

/// Names, formats, children and dictionaries of a table for TestModel; nothing is in its arrays.
MadeArray DrawShape(Choices& choices);

/// A table of that shape, with rows.
MadeArray DrawTable(Choices& choices, const MadeArray& shape);

/// One change of a structure that was exported: what to do to one of its parts.
template <class Structure>
struct Spoiling {
    size_t column;      ///< the part: a column, or beyond the last the table itself
    bool ofDictionary;  ///< of the column, where it has one
    size_t what;        ///< which change, and with what number
    size_t which;
};
std::vector<Spoiling<ArrowSchema>> DrawSchemaSpoilings(Choices& choices);
std::vector<Spoiling<ArrowArray>> DrawArraySpoilings(Choices& choices);

/// Exported and spoilt; the caller's to release, also where the release is one of the changes.
ArrowSchema ExportSpoilt(const MadeArray& made, const std::vector<Spoiling<ArrowSchema>>& changes);
ArrowArray ExportSpoilt(const MadeArray& made, const std::vector<Spoiling<ArrowArray>>& changes);

}  // namespace MCVelscore_850::fuzz

#endif

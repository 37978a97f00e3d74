#ifndef VELSCORE_TESTS_FUZZ_EXPRESSIONDRAWING_H
#define VELSCORE_TESTS_FUZZ_EXPRESSIONDRAWING_H

#include <string>
#include <utility>
#include <vector>

#include "tests/fuzz/fuzztarget.h"

// Derived fields drawn from an input: functions, built-in and defined ones, over fields of every
// type, in elements that are mostly well formed.
namespace MCVelscore_850::fuzz {

/// An element of a document: either children or a text.
struct Node {
    std::string tag;
    std::vector<std::pair<std::string, std::string>> attributes{};
    std::vector<Node> children{};
    std::string text{};
};

/// The element as a document has it.
std::string XmlOf(const Node& node);

/// A field that drawn expressions read, beside the numbers x and the texts sex of TestModel.
struct DrawnField {
    const char* name;
    const char* optype;
    const char* dataType;
    std::vector<const char*> values;  ///< that it declares
    std::vector<const char*> cells;   ///< of some cases, for each field as many
};
const std::vector<DrawnField>& DrawnFields();

/// The DataField element of a field.
Node DataFieldOf(const DrawnField& field);

/// Some DerivedFields in a section, d among them, and a function that they may call.
Node DrawSection(Choices& choices);

}  // namespace MCVelscore_850::fuzz

#endif

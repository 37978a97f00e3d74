#ifndef VELSCORE_HOST_DOCUMENTS_TAG_H
#define VELSCORE_HOST_DOCUMENTS_TAG_H

#include <string>

/// Declares a text of a document's language as a static member. It is filled before all that stands
/// at namespace scope without a priority, so that tables there may name it, in whatever file: what
/// is inline has no place in the order of a file, and Clang fills the file's tables first.
#define VELSCORE_TAG(name, text) \
    static inline const std::string name [[gnu::init_priority(150)]] = (text)

#endif  // VELSCORE_HOST_DOCUMENTS_TAG_H

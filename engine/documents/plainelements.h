#ifndef VELSCORE_ENGINE_DOCUMENTS_PLAINELEMENTS_H
#define VELSCORE_ENGINE_DOCUMENTS_PLAINELEMENTS_H

#include <cstddef>
#include <string_view>
#include <vector>

#include "engine/documents/documentguard.h"

namespace MCVelscore_850 {

/// How far a run of plain elements goes.
struct PlainRun {
    size_t bytes = 0;
    ElementPlace end;
};

/// Reads the plain elements that `bytes` begins with, and the blanks between them: empty elements
/// such as <PCovCell pRow="p0" pCol="p0" value="1"/>, in ASCII, whose values hold no markup and no
/// reference. A large document is little else, and nothing of XML but this one form has to be known
/// to be sure that they are well-formed, which takes a fraction of the parser's time.
///
/// Where the bytes are anything else, well-formed or not, where an element goes beyond a limit of
/// its own, or where no more elements are allowed, the run ends before it: that is for the parser.
///
/// `start` is the place of the first byte, which must stand in an element's content, after a tag;
/// the bytes must be in an encoding that has ASCII in it. Each element's place is appended to
/// `places`.
PlainRun ReadPlainElements(std::string_view bytes, ElementPlace start, const DocumentLimits& limits,
                           std::vector<ElementPlace>& places);

}  // namespace MCVelscore_850

#endif

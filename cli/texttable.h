#ifndef VELSCORE_CLI_TEXTTABLE_H
#define VELSCORE_CLI_TEXTTABLE_H

#include <string>
#include <vector>

namespace MCVelscore_850 {

/// A table for people: the first column to the left, the others to the right, two blanks between
/// them; a column that is empty in every row is left out. Lines begin with two blanks and end
/// without any.
std::string AlignedText(const std::vector<std::vector<std::string>>& rows);

}  // namespace MCVelscore_850

#endif

#ifndef VELSCORE_CLI_SOURCELINES_H
#define VELSCORE_CLI_SOURCELINES_H

#include <string>
#include <string_view>
#include <vector>

namespace MCVelscore_850 {

/// The lines of a document in UTF-8, to show one with a mark under a place of it.
class SourceLines {
public:
    /// Takes lines to end as XML has it: with LF, CR LF or CR.
    explicit SourceLines(std::string text);

    /// A line of the document as it can be shown, and what marks the place below it.
    struct Excerpt {
        std::string line;   ///< without what a terminal would obey; a tabulator is one blank
        std::string marks;  ///< '^' under the place, '~' under the attribute
    };
    /// Number of the line and column from 1, the column in characters. Of a long line the part
    /// around the place. `attribute` is looked for in the tag that begins at the place; empty for
    /// none. All empty where there is no such place.
    Excerpt At(size_t number, size_t column, std::string_view attribute) const;

private:
    std::string_view Line(size_t number) const;

    std::string text_;
    std::vector<size_t> begins_;
};

}  // namespace MCVelscore_850

#endif

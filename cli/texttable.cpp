#include "cli/texttable.h"

#include <algorithm>

namespace MCVelscore_850 {

namespace {

// In characters: the bytes of UTF-8 that begin one.
size_t WidthOf(const std::string& text)
{
    return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
    }));
}

}  // namespace

std::string AlignedText(const std::vector<std::vector<std::string>>& rows)
{
    std::vector<size_t> widths;
    for (const std::vector<std::string>& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], WidthOf(row[i]));
    }
    std::string text;
    for (const std::vector<std::string>& row : rows) {
        std::string line = "  ";
        for (size_t i = 0; i < row.size(); ++i) {
            if (widths[i] == 0) continue;
            const std::string blanks(widths[i] - WidthOf(row[i]), ' ');
            line += i == 0 ? row[i] + blanks : "  " + blanks + row[i];
        }
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + "\n";
    }
    return text;
}

}  // namespace MCVelscore_850

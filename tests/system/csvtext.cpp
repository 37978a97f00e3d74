#include "tests/system/csvtext.h"

#include <algorithm>
#include <cmath>

namespace MCVelscore_850 {

int CsvText::Column(const std::string& name) const
{
    const auto found = std::find(header.begin(), header.end(), name);
    return found == header.end() ? -1 : static_cast<int>(found - header.begin());
}

std::vector<std::string> CsvText::Texts(const std::string& column) const
{
    std::vector<std::string> texts;
    const int position = Column(column);
    if (position < 0) return texts;
    for (const auto& row : rows) texts.push_back(row.at(static_cast<size_t>(position)));
    return texts;
}

CsvText ParseCsv(const std::string& text, char delimiter)
{
    std::vector<std::vector<std::string>> lines;
    std::vector<std::string> line(1);
    bool quoted = false;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (quoted) {
            if (c != '"') {
                line.back() += c;
            } else if (i + 1 < text.size() && text[i + 1] == '"') {
                line.back() += text[++i];
            } else {
                quoted = false;
            }
        } else if (c == '"') {
            quoted = true;
        } else if (c == delimiter) {
            line.emplace_back();
        } else if (c == '\n') {
            lines.push_back(std::move(line));
            line.assign(1, "");
        } else if (c != '\r') {
            line.back() += c;
        }
    }
    CsvText table;
    if (lines.empty()) return table;
    table.header = lines.front();
    table.rows.assign(lines.begin() + 1, lines.end());
    return table;
}

bool Agrees(double found, double expected, double tolerance)
{
    const double difference = std::fabs(found - expected);
    return difference <= tolerance * std::max(std::fabs(expected), 1e-12) ||
           difference <= tolerance / 1000.0;
}

}  // namespace MCVelscore_850

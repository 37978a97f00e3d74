#ifndef VELSCORE_TESTS_SYSTEM_CSVTEXT_H
#define VELSCORE_TESTS_SYSTEM_CSVTEXT_H

#include <string>
#include <vector>

namespace MCVelscore_850 {

/// A table as text, read by a plain reader of the tests' own so that the engine's isn't its own
/// judge.
struct CsvText {
    std::vector<std::string> header;
    std::vector<std::vector<std::string>> rows;

    /// The column of that name, -1 for none.
    int Column(const std::string& name) const;
    /// The texts of a column; none when there is no such column.
    std::vector<std::string> Texts(const std::string& column) const;
};

CsvText ParseCsv(const std::string& text, char delimiter = ',');

/// The rule of tests/data/cases/README.md.
bool Agrees(double found, double expected, double tolerance);

}  // namespace MCVelscore_850

#endif

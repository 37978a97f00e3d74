#include "tests/stats/support/reference.h"

#include <cstdlib>
#include <fstream>
#include <stdexcept>

#include "stats/mcmissingvalue.h"

namespace reference {

namespace {

std::vector<std::string> Split(const std::string& text, char separator)
{
    std::vector<std::string> parts;
    std::size_t from = 0;
    for (;;) {
        const std::size_t to = text.find(separator, from);
        parts.push_back(text.substr(from, to == std::string::npos ? to : to - from));
        if (to == std::string::npos) return parts;
        from = to + 1;
    }
}

double Number(const std::string& text)
{
    if (text == "missing") return MCCommon_850::MCMV::Missing();
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);  // takes nan and inf too
    if (text.empty() || *end != '\0') throw std::runtime_error("not a number: '" + text + "'");
    return value;
}

// Mednci's level has no truth where it was not wanted; that element counts as missing.
std::vector<double> Numbers(const std::string& text)
{
    std::vector<double> values;
    if (text.empty()) return values;
    for (const std::string& part : Split(text, ';'))
        values.push_back(Number(part.empty() ? "missing" : part));
    return values;
}

}  // namespace

double Args::operator[](std::size_t i) const { return Number(fields_.at(i)); }

std::vector<double> Args::List(std::size_t i) const { return Numbers(fields_.at(i)); }

std::string Args::Text() const
{
    std::string text;
    for (const std::string& field : fields_) text += (text.empty() ? "" : ", ") + field;
    return text;
}

std::string Folder() { return VELSTATS_REFERENCE_FOLDER; }

std::vector<Row> ReadFile(const std::string& path)
{
    std::ifstream file(path);
    std::string line;
    if (!std::getline(file, line)) throw std::runtime_error("can't read " + path);
    const std::size_t columns = Split(line, ',').size();
    std::vector<Row> rows;
    for (std::size_t number = 2; std::getline(file, line); ++number) {
        std::vector<std::string> fields = Split(line, ',');
        if (fields.size() != columns)
            throw std::runtime_error(path + ":" + std::to_string(number) +
                                     ": wrong number of columns");
        const std::string code = fields[columns - 1];
        const std::vector<double> algorithm = Numbers(fields[columns - 2]);
        const std::vector<double> truth = Numbers(fields[columns - 3]);
        fields.resize(columns - 3);
        rows.push_back({Args(std::move(fields)), truth, algorithm,
                        code.empty() ? std::nullopt : std::optional<long>(std::stol(code)),
                        number});
    }
    return rows;
}

std::vector<Row> Read(const std::string& function)
{
    return ReadFile(Folder() + "/" + function + ".csv");
}

}  // namespace reference

#ifndef VELSCORE_TESTS_STATS_SUPPORT_REFERENCE_H
#define VELSCORE_TESTS_STATS_SUPPORT_REFERENCE_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// The reference values under tests/data/stats: a file a function, a line a point. The README
/// there tells the columns, TOLERANCES.md the agreement to expect.
namespace reference {

/// The arguments of one point, as written; a number, a truth value or a list each.
class Args {
public:
    explicit Args(std::vector<std::string> fields) : fields_(std::move(fields)) {}

    double operator[](std::size_t i) const;  ///< the i-th argument as a number
    std::vector<double> List(std::size_t i) const;
    std::size_t Count() const { return fields_.size(); }
    std::string Text() const;  ///< all of them, for a message

private:
    std::vector<std::string> fields_;
};

/// One point. Values are lists, since Mednci answers three; a missing value is the library's own.
struct Row {
    Args args;
    std::vector<double> truth;  ///< empty: there is none
    std::vector<double> algorithm;
    std::optional<long> code;
    std::size_t line;
};

/// Where the reference files lie.
std::string Folder();

/// The points of `function`, in file order. Throws std::runtime_error if the file can't be read or
/// a line has not the columns of its header.
std::vector<Row> Read(const std::string& function);

/// The points of a file of the same form at `path`.
std::vector<Row> ReadFile(const std::string& path);

}  // namespace reference

#endif

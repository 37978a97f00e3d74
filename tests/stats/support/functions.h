#ifndef VELSCORE_TESTS_STATS_SUPPORT_FUNCTIONS_H
#define VELSCORE_TESTS_STATS_SUPPORT_FUNCTIONS_H

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tests/stats/support/reference.h"

/// Every public function of the statistics library as a row of one table, callable with arguments
/// from a reference file. The tests, the accuracy page and the bench walk it.
namespace reference {

struct Outcome {
    std::vector<double> values;  ///< what it returns and what it writes through double&
    std::optional<long> code;    ///< the code or status, if it has one
};

/// Passes when |x - w| <= rel * |w| + abs.
struct Tolerance {
    double rel;
    double abs;
};

using Call = std::function<Outcome(const Args&)>;
using Limit = Tolerance (*)(const Args&, double wanted);

struct Function {
    std::string name;
    Call call;
    Limit truth;      ///< against the exact value
    Limit algorithm;  ///< against the library's algorithm
};

std::span<const Function> Functions();
const Function& Find(const std::string& name);

}  // namespace reference

#endif

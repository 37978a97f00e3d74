#ifndef VELSCORE_TESTS_MODELS_RANDOMMODELS_H
#define VELSCORE_TESTS_MODELS_RANDOMMODELS_H

#include <iterator>
#include <memory>
#include <ostream>
#include <random>
#include <span>
#include <string>
#include <vector>

#include "host/variables/scoredictvar.h"
#include "models/regressionmodel.h"

namespace MCVelscore_850::testing {

/// Numbers and choices that a seed settles.
class Draw {
public:
    explicit Draw(uint64_t seed) : random_(seed) {}
    size_t Below(size_t end) { return random_() % end; }
    /// True once in so many times.
    bool Once(size_t of) { return Below(of) == 0; }
    double Normal(double spread = 1.0) { return spread * normal_(random_); }
    template <class List>
    const auto& Of(const List& list)
    {
        return list[Below(std::size(list))];
    }

private:
    std::mt19937_64 random_;
    std::normal_distribution<> normal_;
};

/// One input of a drawn model, and the good values that its cells hold.
struct DrawnColumn {
    enum Values {
        Any,     ///< every number
        Whole,   ///< whole ones
        Listed,  ///< of `numbers` or `texts` alone
        Partly   ///< of `numbers` half the time
    };
    const ScoreDictVar* var;
    Values values;
    std::vector<double> numbers;  ///< from the variable's origin
    std::vector<std::string> texts;
};

/// A model that is ready to score, and its inputs.
class DrawnModel {
public:
    virtual ~DrawnModel();
    virtual RegressionModel& Get() = 0;

    std::vector<DrawnColumn> columns;
    /// Blocks may leave rows although every value of theirs is good and ScoreRow scores them.
    bool leavesGoodRows = false;
    /// The model may have no block scorer.
    bool mayLackBlocks = false;
};

/// A family, of those with links one link of it.
struct DrawnFamily {
    const char* name;
    /// A plain model has nothing but numbers, texts and categories, and scores every row of good
    /// values.
    std::unique_ptr<DrawnModel> (*make)(Draw& draw, bool plain, int link);
    int link;

    friend void PrintTo(const DrawnFamily& family, std::ostream* out) { *out << family.name; }
};
std::span<const DrawnFamily> DrawnFamilies();

}  // namespace MCVelscore_850::testing

#endif

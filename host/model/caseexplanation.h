#ifndef VELSCORE_HOST_MODEL_CASEEXPLANATION_H
#define VELSCORE_HOST_MODEL_CASEEXPLANATION_H

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace MCVelscore_850 {

/// What the explanations of a model's cases list, the same for every case: filled by
/// ScoreModel::OutlineExplanations.
struct ExplanationOutline {
    /// One addend of a linear predictor, in the order in which it is added.
    struct Term {
        enum class Kind {
            Parameter,       ///< beta times the design value
            Offset,          ///< the case's, or the document's constant
            Threshold,       ///< of a boundary of an ordinal scale
            LinearPredictor  ///< the first equation's sum, in the equation of a boundary
        };
        std::string name;
        Kind kind = Kind::Parameter;
        double beta = 1.0;  ///< what multiplies the value
        /// What is taken off the value before beta multiplies it, of a model that is centred. The
        /// contribution is value * beta - referencePoint * beta.
        std::optional<double> referencePoint{};
    };
    /// Models with one equation name no category.
    struct Equation {
        std::string category;
        bool isCumulative = false;  ///< of the category and of all before it
        std::vector<Term> terms;
    };
    std::vector<Equation> equations;
};

/// How the linear predictors of one case came about. Keeps its memory from case to case.
class CaseExplanation {
public:
    struct Addend {
        double value;  ///< the design value; NaN where a term without a beta has none
        double contribution;
    };
    /// One linear predictor: the contributions added up from the first to the last, each by one
    /// addition of doubles, are it to the last bit, the sign of a zero apart.
    struct Sum {
        size_t equation = 0;  ///< of the outline
        double linearPredictor = 0.0;
        std::vector<Addend> addends;  ///< one for each of the equation's terms

        /// A contribution of -0 is told as 0.
        void Add(double value, double contribution)
        {
            addends.push_back({value, contribution + 0.0});
        }
    };

    void Clear() { count_ = 0; }
    /// The next linear predictor, without addends. The reference stands until the next call.
    Sum& Begin(size_t equation)
    {
        if (count_ == sums_.size()) sums_.emplace_back();
        Sum& sum = sums_[count_++];
        sum.equation = equation;
        sum.addends.clear();
        return sum;
    }
    std::span<const Sum> Sums() const { return {sums_.data(), count_}; }

private:
    std::vector<Sum> sums_;
    size_t count_ = 0;
};

}  // namespace MCVelscore_850

#endif

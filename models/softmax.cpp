#include "models/softmax.h"

#include <cmath>

namespace MCVelscore_850 {

size_t IndexOfLargest(std::span<const double> linearPredictors)
{
    size_t largest = 0;
    for (size_t c = 1; c < linearPredictors.size(); ++c) {
        if (linearPredictors[c] > linearPredictors[largest]) largest = c;
    }
    return largest;
}

double Exponentials(std::span<double> linearPredictors, double largest,
                    std::span<double> exponentials)
{
    const bool shift = largest > kLargestExponent;  // strictly: the limit itself stays
    double sum = 0.0;
    for (size_t c = 0; c < linearPredictors.size(); ++c) {
        double& lp = linearPredictors[c];
        if (shift) lp -= largest;
        exponentials[c] = lp < -kLargestExponent ? 0.0 : std::exp(lp);
        sum += exponentials[c];
    }
    return sum;
}

}  // namespace MCVelscore_850

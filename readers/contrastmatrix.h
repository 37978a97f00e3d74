#ifndef VELSCORE_READERS_CONTRASTMATRIX_H
#define VELSCORE_READERS_CONTRASTMATRIX_H

#include <memory>
#include <vector>

#include "host/scorevalue.h"

namespace MCVelscore_850 {

/// The contrast matrix of a factor, as a document gives it: a row of numbers for each category.
struct ContrastMatrix {
    std::vector<std::vector<double>> rows;
    /// The category of each row; null for a row that the document declares and doesn't have.
    std::vector<std::unique_ptr<ScoreValue>> categories;
};

}  // namespace MCVelscore_850

#endif

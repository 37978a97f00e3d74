#ifndef VELSCORE_READERS_CONTRASTMATRIX_H
#define VELSCORE_READERS_CONTRASTMATRIX_H

#include <vector>

#include "host/values/scorevalue.h"

namespace MCVelscore_850 {

/// The contrast matrix of a factor, as its readers fill it: a row of numbers for each category.
/// Owns the categories that nobody has taken.
struct ContrastMatrix {
    ContrastMatrix() = default;
    ContrastMatrix(const ContrastMatrix&) = delete;
    ContrastMatrix& operator=(const ContrastMatrix&) = delete;
    ~ContrastMatrix()
    {
        for (const ScoreValue* category : categories) delete category;
    }

    std::vector<std::vector<double>> rows;
    /// The category of each row; null for a row that the document declares and doesn't have.
    std::vector<ScoreValue*> categories;
};

}  // namespace MCVelscore_850

#endif

#ifndef VELSCORE_KERNELS_CELLS_H
#define VELSCORE_KERNELS_CELLS_H

#include "kernels/lane.h"

namespace MCVelscore_850::kernels {
inline namespace VELSCORE_LANES {

/// The predictors of one case: a number each, and of a factor the code of its category.
struct CaseCells {
    using Lane = double;

    const double* numbers;
    const int32_t* codes;

    VELSCORE_LANE double Number(const CaseCells& cells, int32_t predictor)
    {
        return cells.numbers[predictor];
    }
    VELSCORE_LANE bool IsCategory(const CaseCells& cells, int32_t predictor, int32_t code)
    {
        return cells.codes[predictor] == code;
    }
    VELSCORE_LANE double Contrast(const CaseCells& cells, int32_t predictor, const double* column)
    {
        return column[cells.codes[predictor]];
    }
};

/// The same of the rows of a block from `row` on: a column a predictor, null where it has none of
/// the kind.
struct BlockCells {
    using Lane = VectorLane;

    const double* const* numbers;
    const int32_t* const* codes;
    size_t row;

    VELSCORE_LANE VectorLane Number(const BlockCells& cells, int32_t predictor)
    {
        return Load<VectorLane>(cells.numbers[predictor] + cells.row);
    }
    VELSCORE_LANE VectorMask IsCategory(const BlockCells& cells, int32_t predictor, int32_t code)
    {
        VectorCodes codes;
        memcpy(&codes, cells.codes[predictor] + cells.row, sizeof codes);
        return __builtin_convertvector(codes == code, VectorMask);
    }
    VELSCORE_LANE VectorLane Contrast(const BlockCells& cells, int32_t predictor,
                                      const double* column)
    {
        const int32_t* const codes = cells.codes[predictor] + cells.row;
        VectorLane contrast;
        for (size_t i = 0; i < kWidth<VectorLane>; ++i) contrast[i] = column[codes[i]];
        return contrast;
    }
};

}  // namespace VELSCORE_LANES
}  // namespace MCVelscore_850::kernels

#endif

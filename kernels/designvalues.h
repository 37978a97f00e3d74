#ifndef VELSCORE_KERNELS_DESIGNVALUES_H
#define VELSCORE_KERNELS_DESIGNVALUES_H

#include "kernels/cells.h"
#include "kernels/terms.h"

namespace MCVelscore_850::kernels {
inline namespace VELSCORE_LANES {

/// The product of a term's parts, and where it still stands.
template <class Lane>
struct DesignValue {
    Lane value;         ///< anything where the term has ended
    Mask<Lane> stands;  ///< no part has ended it
};

/// What ends a term beside a number of 0 and another category.
enum class Ends {
    Alone,          ///< nothing: a product of 0 is multiplied on, so that 0 times infinity is NaN
    AtZeroProduct,  ///< a product of 0, as from underflow: the term is 0
    AtZeroContrast  ///< that too, and a contrast of 0: the product stays what it is then, NaN after
                    ///< an infinite one
};

/// pow of every place.
template <class Lane>
VELSCORE_LANE Lane Power(Lane x, double exponent)
{
    return Each(x, [exponent](double each) { return __builtin_pow(each, exponent); });
}

/// Where x is the number, or as close to it as TermPart::Near has it.
template <class Lane>
VELSCORE_LANE Mask<Lane> IsNear(Lane x, double number)
{
    constexpr double kRelative = 1e-12;
    const auto size = [](Lane of) { return Select(of < 0.0, -of, of); };
    const double most = __builtin_fabs(number);
    if (!(most <= __DBL_MAX__)) return x == number;
    const Lane sizeX = size(x);
    const Lane larger = Select(sizeX > most, sizeX, All<Lane>(most));
    const Mask<Lane> close = size(x - number) <= kRelative * larger;
    return Either(x == number, Both(sizeX <= __DBL_MAX__, close));
}

/// The design value of parameter p: the product of its parts from the first to the last.
template <Ends kEnds, class Cells>
VELSCORE_LANE DesignValue<typename Cells::Lane> DesignValueOf(const Terms& terms, size_t p,
                                                              const Cells& cells)
{
    using Lane = typename Cells::Lane;
    Lane d = All<Lane>(1.0);
    Mask<Lane> stands = Always<Lane>();
    Mask<Lane> open = Always<Lane>();  // whose product later parts still change or end
    const auto multiply = [&](Lane by) {
        if constexpr (kEnds == Ends::AtZeroContrast) {
            d = Select(open, d * by, d);
        } else {
            d *= by;
        }
        if constexpr (kEnds != Ends::Alone) stands = Both(stands, Either(d != 0.0, Not(open)));
    };
    const auto require = [&](Mask<Lane> met) { stands = Both(stands, Either(met, Not(open))); };
    const TermPart* const end = terms.parts + terms.begin[p + 1];
    for (const TermPart* part = terms.parts + terms.begin[p]; part != end; ++part) {
        if (IsDone(Both(stands, open))) break;
        switch (part->kind) {
            case TermPart::Category:
                require(Cells::IsCategory(cells, part->predictor, part->code));
                break;
            case TermPart::Equal:
                require(Cells::Number(cells, part->predictor) == part->number);
                break;
            case TermPart::Near:
                require(IsNear(Cells::Number(cells, part->predictor), part->number));
                break;
            case TermPart::Contrast: {
                const Lane contrast = Cells::Contrast(cells, part->predictor, part->column);
                multiply(contrast);
                if constexpr (kEnds == Ends::AtZeroContrast) open = Both(open, contrast != 0.0);
                break;
            }
            case TermPart::Dummies: {
                const Lane beta = Cells::Contrast(cells, part->predictor, part->column);
                require(beta != 0.0);
                multiply(beta);
                break;
            }
            case TermPart::Times: {
                const Lane x = Cells::Number(cells, part->predictor);
                require(x != 0.0);
                for (int32_t i = 0; i < part->times; ++i) multiply(x);
                break;
            }
            case TermPart::Power: {
                const Lane x = Cells::Number(cells, part->predictor);
                require(x != 0.0);
                if (IsDone(stands)) break;  // before a power is taken for nothing
                multiply(Power(x, part->number));
                break;
            }
        }
    }
    return {d, stands};
}

}  // namespace VELSCORE_LANES
}  // namespace MCVelscore_850::kernels

#endif

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
        if (part->kind == TermPart::Category) {
            require(Cells::IsCategory(cells, part->predictor, part->code));
        } else if (part->kind == TermPart::Contrast) {
            const Lane contrast = Cells::Contrast(cells, part->predictor, part->column);
            multiply(contrast);
            if constexpr (kEnds == Ends::AtZeroContrast) open = Both(open, contrast != 0.0);
        } else {
            const Lane x = Cells::Number(cells, part->predictor);
            require(x != 0.0);
            if (IsDone(stands)) break;  // before a power is taken for nothing
            if (part->kind == TermPart::Power) {
                multiply(Power(x, part->exponent));
            } else {
                for (int32_t i = 0; i < part->times; ++i) multiply(x);
            }
        }
    }
    return {d, stands};
}

}  // namespace VELSCORE_LANES
}  // namespace MCVelscore_850::kernels

#endif

// Compiled once for each instruction set, with VELSCORE_KERNELS_NAME and VELSCORE_KERNELS_TABLE
// naming it. Nothing here may be shared with another file: see lane.h.
#include "kernels/blocks.h"

#include "kernels/linearpredictor.h"
#include "kernels/softmax.h"
#include "kernels/standarderror.h"
#include "kernels/survival.h"

namespace MCVelscore_850::kernels {
namespace {

using Lane = VectorLane;
constexpr size_t kStep = sizeof(Lane) / sizeof(double);

// Calls step(row) for every vector that holds some of the rows.
template <class Step>
VELSCORE_LANE void ForRows(size_t rows, Step step)
{
    for (size_t row = 0; row < rows; row += kStep) step(row);
}

VELSCORE_LANE Lane StartOf(const double* start, size_t row)
{
    return start == nullptr ? Lane{} : Load<Lane>(start + row);
}

void ExpOf(const double* x, double* y, size_t rows)
{
    ForRows(rows, [&](size_t row) { Store(y + row, Exp(Load<Lane>(x + row))); });
}

void Slopes(const BlockColumns& columns, double constant, const double* betas, size_t count,
            double* lp)
{
    ForRows(columns.rows, [&](size_t row) {
        const BlockCells cells{columns.numbers, columns.codes, row};
        Store(lp + row, SumOfSlopes(constant, betas, count, cells));
    });
}

template <Ends kEnds, Adds kAdds>
void Sum(const BlockColumns& columns, const double* start, const Terms& terms, const double* betas,
         size_t first, double* lp, double* design)
{
    ForRows(columns.rows, [&](size_t row) {
        const BlockCells cells{columns.numbers, columns.codes, row};
        const auto keep = [&](size_t p, Lane d) {
            if (design != nullptr) Store(design + p * kBlockRows + row, d);
        };
        Store(lp + row,
              SumOfTerms<kEnds, kAdds>(StartOf(start, row), terms, betas, first, cells, keep));
    });
}

void Centred(const BlockColumns& columns, const Terms& terms, const double* betas,
             const double* references, double* lp)
{
    ForRows(columns.rows, [&](size_t row) {
        const BlockCells cells{columns.numbers, columns.codes, row};
        Store(lp + row, CentredSumOfTerms<Ends::AtZeroContrast>(terms, betas, references, cells,
                                                                [](size_t, Lane) {}));
    });
}

void Equations(const BlockColumns& columns, const double* start, const Terms& terms,
               const double* const* betas, size_t categories, double* lp)
{
    ForRows(columns.rows, [&](size_t row) {
        const BlockCells cells{columns.numbers, columns.codes, row};
        const Lane from = StartOf(start, row);
        for (size_t c = 0; c < categories; ++c) Store(lp + c * kBlockRows + row, from);
        ForTerms<Ends::Alone>(terms, cells, [&](size_t p, Lane d) {
            const Mask<Lane> met = d != 0.0;
            for (size_t c = 0; c < categories; ++c) {
                const double beta = betas[c][p];
                if (beta == 0.0) continue;
                double* const sum = lp + c * kBlockRows + row;
                const Lane before = Load<Lane>(sum);
                Store(sum, Select(met, before + d * beta, before));
            }
        });
    });
}

void StandardErrors(const double* design, const double* covariances, size_t stride, size_t count,
                    double* errors, size_t rows)
{
    ForRows(rows, [&](size_t row) {
        Store(errors + row, StandardErrorOfSum<Lane>(covariances, stride, count, [&](size_t p) {
                  return Load<Lane>(design + p * kBlockRows + row);
              }));
    });
}

template <Link kLink>
void Means(const double* eta, double k, double* mean, size_t rows)
{
    ForRows(rows, [&](size_t row) { Store(mean + row, MeanOf<kLink>(Load<Lane>(eta + row), k)); });
}

template <CumulativeLink kLink>
void Cumulative(const double* x, double* probability, size_t rows)
{
    ForRows(rows, [&](size_t row) {
        Store(probability + row, CumulativeProbability<kLink>(Load<Lane>(x + row)));
    });
}

void Softmax(double* lp, size_t categories, double* largest, size_t rows)
{
    ForRows(rows, [&](size_t row) {
        const auto at = [&](size_t c) { return lp + c * kBlockRows + row; };
        Largest<Lane> found{Load<Lane>(at(0)), Lane{}};
        for (size_t c = 1; c < categories; ++c) found = LargerOf(found, Load<Lane>(at(c)), c);
        Store(largest + row, found.index);
        Lane sum{};
        for (size_t c = 0; c < categories; ++c) {
            const Lane e = ExponentialOf(Load<Lane>(at(c)), found.value);
            Store(at(c), e);
            sum += e;
        }
        for (size_t c = 0; c < categories; ++c) Store(at(c), Load<Lane>(at(c)) / sum);
    });
}

void Survivals(const double* lp, const double* baseline, double* hazard, double* survival,
               size_t rows)
{
    ForRows(rows, [&](size_t row) {
        const Lane h = CumulativeHazard(Load<Lane>(lp + row), Load<Lane>(baseline + row));
        Store(hazard + row, h);
        Store(survival + row, Survival(h));
    });
}

}  // namespace

extern const BlockKernels VELSCORE_KERNELS_TABLE;
const BlockKernels VELSCORE_KERNELS_TABLE = {
    .name = VELSCORE_KERNELS_NAME,
    .exp = ExpOf,
    .slopes = Slopes,
    .sums = {Sum<Ends::Alone, Adds::StandingTerms>, Sum<Ends::Alone, Adds::NonzeroTerms>,
             Sum<Ends::AtZeroProduct, Adds::NonzeroTerms>},
    .centred = Centred,
    .equations = Equations,
    .standardErrors = StandardErrors,
    .means = {Means<Link::Identity>, Means<Link::ComplementaryLogLog>, Means<Link::Log>,
              Means<Link::LogComplement>, Means<Link::Logit>, Means<Link::NegativeBinomial>,
              Means<Link::NegativeLogLog>, Means<Link::OddsPower>, Means<Link::Power>,
              Means<Link::Probit>},
    .cumulative = {Cumulative<CumulativeLink::Logit>, Cumulative<CumulativeLink::Cauchit>,
                   Cumulative<CumulativeLink::ComplementaryLogLog>,
                   Cumulative<CumulativeLink::NegativeLogLog>, Cumulative<CumulativeLink::Probit>},
    .softmax = Softmax,
    .survival = Survivals,
};

}  // namespace MCVelscore_850::kernels

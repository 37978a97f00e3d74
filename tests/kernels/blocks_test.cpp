// Over a block every row has the bits that the arithmetic over one case gives, whatever the
// instruction set: each kernel beside its function over a lane of one double, on numbers that are
// drawn, the odd ones among them.

#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "kernels/instructionset.h"
#include "kernels/linearpredictor.h"
#include "kernels/softmax.h"
#include "kernels/standarderror.h"
#include "kernels/survival.h"
#include "kernels/timegrid.h"
#include "tests/instructionsets.h"

namespace MCVelscore_850::kernels {
namespace {

constexpr size_t kBlocks = 200;
constexpr double kInf = std::numeric_limits<double>::infinity();

bool SameBits(double a, double b)
{
    return std::bit_cast<uint64_t>(a) == std::bit_cast<uint64_t>(b) ||
           (std::isnan(a) && std::isnan(b));
}

class Numbers {
public:
    /// An ordinary number four times of five; else one at which arithmetic turns.
    double Draw(double spread = 3.0)
    {
        static constexpr double kTurns[] = {
            0.0,    -0.0,    1.0,    -1.0,   0.5,    2.0,
            1e-300, -1e-300, 1e300,  -1e300, kInf,   -kInf,
            5e-324, 709.0,   -708.0, 709.8,  -745.2, std::numeric_limits<double>::quiet_NaN()};
        constexpr size_t kCalmTurns = 8;
        if (Below(5) > 0) return std::normal_distribution<>(0.0, spread)(random_);
        return kTurns[Below(calm ? kCalmTurns : std::size(kTurns))];
    }
    /// Draws no number at which products overflow.
    bool calm = false;
    size_t Below(size_t end) { return random_() % end; }
    std::vector<double> Column(double spread = 3.0)
    {
        std::vector<double> column(kBlockRows);
        for (double& x : column) x = Draw(spread);
        return column;
    }
    std::vector<double> Betas(size_t count)
    {
        std::vector<double> betas(count);
        for (double& b : betas) b = Below(5) == 0 ? 0.0 : Draw(1.0);
        return betas;
    }

private:
    std::mt19937_64 random_{20261122};
};

/// Predictors of numbers first, then factors, and a list of terms over them.
struct Model {
    static constexpr size_t kNumbers = 4;
    static constexpr size_t kFactors = 2;
    static constexpr int32_t kCategories = 3;
    static constexpr size_t kTerms = 12;

    explicit Model(Numbers& draw)
    {
        for (std::vector<double>& column : contrasts) {
            for (int32_t c = 0; c < kCategories; ++c) {
                column.push_back(draw.Below(3) == 0 ? 0.0 : draw.Draw(1.0));
            }
        }
        begin.push_back(0);
        for (size_t p = 0; p < kTerms; ++p) {
            for (size_t k = 0; k < kNumbers + kFactors; ++k) {
                if (draw.Below(3) == 0) AddPart(draw, k);
            }
            begin.push_back(static_cast<uint32_t>(parts.size()));
        }
    }
    void AddPart(Numbers& draw, size_t predictor)
    {
        static constexpr double kExponents[] = {2.0, 0.5, -1.0, 3.7};
        static constexpr double kCompared[] = {0.0, 1.0, 1.0 + 5e-13, -1e300, kInf};
        TermPart part{};
        part.predictor = static_cast<int32_t>(predictor);
        if (predictor < kNumbers) {
            static constexpr TermPart::Kind kKinds[] = {
                TermPart::Times, TermPart::Times, TermPart::Power, TermPart::Equal, TermPart::Near};
            part.kind = kKinds[draw.Below(std::size(kKinds))];
            part.times = static_cast<int32_t>(draw.Below(4));
            const bool compares = part.kind == TermPart::Equal || part.kind == TermPart::Near;
            part.number =
                compares ? kCompared[draw.Below(std::size(kCompared))] : kExponents[draw.Below(4)];
        } else {
            static constexpr TermPart::Kind kKinds[] = {TermPart::Category, TermPart::Contrast,
                                                        TermPart::Dummies};
            part.kind = kKinds[draw.Below(std::size(kKinds))];
            part.code = static_cast<int32_t>(draw.Below(kCategories));
            part.column = contrasts[draw.Below(std::size(contrasts))].data();
        }
        parts.push_back(part);
    }
    Terms View() const { return {parts.data(), begin.data(), kTerms}; }

    std::vector<double> contrasts[4];
    std::vector<TermPart> parts;
    std::vector<uint32_t> begin;
};

/// The columns of a block, and each row as one case.
struct Block {
    Block(Numbers& draw)
    {
        for (std::vector<double>& column : numbers) column = draw.Column();
        for (std::vector<int32_t>& column : codes) {
            for (size_t i = 0; i < kBlockRows; ++i) {
                column.push_back(static_cast<int32_t>(draw.Below(Model::kCategories)));
            }
        }
        for (size_t k = 0; k < Model::kNumbers; ++k) numberColumns[k] = numbers[k].data();
        for (size_t k = 0; k < Model::kFactors; ++k) {
            codeColumns[Model::kNumbers + k] = codes[k].data();
        }
    }
    BlockColumns View() const { return {numberColumns, codeColumns, kBlockRows}; }
    CaseCells Row(size_t row)
    {
        for (size_t k = 0; k < Model::kNumbers; ++k) rowNumbers[k] = numbers[k][row];
        for (size_t k = 0; k < Model::kFactors; ++k) {
            rowCodes[Model::kNumbers + k] = codes[k][row];
        }
        return {rowNumbers, rowCodes};
    }

    std::vector<double> numbers[Model::kNumbers];
    std::vector<int32_t> codes[Model::kFactors];
    const double* numberColumns[Model::kNumbers + Model::kFactors] = {};
    const int32_t* codeColumns[Model::kNumbers + Model::kFactors] = {};
    double rowNumbers[Model::kNumbers + Model::kFactors] = {};
    int32_t rowCodes[Model::kNumbers + Model::kFactors] = {};
};

class Blocks : public ::testing::TestWithParam<const char*> {
protected:
    const BlockKernels* const kernels = KernelsOf(GetParam());
    Numbers draw;
    std::vector<double> out = std::vector<double>(kBlockRows);
};
INSTANTIATE_TEST_SUITE_P(InstructionSets, Blocks, ::testing::ValuesIn(SetsOfThisProcessor()),
                         [](const auto& set) { return std::string(set.param); });

TEST_P(Blocks, ExpHasTheBitsOfTheLibrary)
{
    EXPECT_STREQ(kernels->name, GetParam());
    EXPECT_TRUE(AgreesWithLibrary(*kernels));
    std::mt19937_64 random(1);
    std::vector<double> x(kBlockRows);
    const auto expectSame = [&] {
        kernels->exp(x.data(), out.data(), kBlockRows);
        for (size_t i = 0; i < kBlockRows; ++i) {
            ASSERT_TRUE(SameBits(out[i], std::exp(x[i]))) << std::hexfloat << x[i];
        }
    };
    // VELSCORE_TEST_VALUES says over how many values in all.
    const char* const asked = std::getenv("VELSCORE_TEST_VALUES");
    const size_t values = asked == nullptr ? 10'000'000 : std::strtoull(asked, nullptr, 10);
    const size_t rounds = values / kBlockRows / 3 / std::size(kInstructionSets) + 1;
    for (size_t round = 0; round < rounds; ++round) {
        for (double& each : x) each = std::bit_cast<double>(random());
        ASSERT_NO_FATAL_FAILURE(expectSame());
        for (double& each : x) each = std::uniform_real_distribution<>(-746.0, 711.0)(random);
        ASSERT_NO_FATAL_FAILURE(expectSame());
        for (double& each : x) {
            each = std::ldexp(std::uniform_real_distribution<>(-2.0, 2.0)(random),
                              -static_cast<int>(random() % 70));
        }
        ASSERT_NO_FATAL_FAILURE(expectSame());
    }
}

TEST_P(Blocks, SlopesSumAsOfOneCase)
{
    for (size_t round = 0; round < kBlocks; ++round) {
        Block block(draw);
        const std::vector<double> betas = draw.Betas(Model::kNumbers);
        const double constant = draw.Draw();
        kernels->slopes(block.View(), constant, betas.data(), betas.size(), out.data());
        for (size_t row = 0; row < kBlockRows; ++row) {
            ASSERT_TRUE(SameBits(
                out[row], SumOfSlopes(constant, betas.data(), betas.size(), block.Row(row))));
        }
    }
}

TEST_P(Blocks, ErrorsOfSlopesAreThoseOfOneCase)
{
    constexpr size_t n = Model::kNumbers;
    for (size_t round = 0; round < kBlocks; ++round) {
        Block block(draw);
        const std::vector<double> covariances = draw.Betas((n + 1) * (n + 1));
        const bool hasConstant = round % 2 == 0;
        kernels->slopeErrors(block.View(), covariances.data(), n + 1, n, hasConstant, out.data());
        for (size_t row = 0; row < kBlockRows; ++row) {
            const auto x = [&](size_t i) { return block.numbers[i][row]; };
            // The sum in its own words: the constant's row, then every other.
            double v = hasConstant ? covariances[n * (n + 1) + n] : 0.0;
            for (size_t j = 0; j < n && hasConstant; ++j) {
                const double c = covariances[n * (n + 1) + j];
                if (c != 0.0 && x(j) != 0.0) v += (2.0 * c) * x(j);
            }
            for (size_t i = 0; i < n; ++i) {
                for (size_t j = 0; j < n; ++j) {
                    const double c = covariances[i * (n + 1) + j];
                    if (c != 0.0 && x(i) != 0.0 && x(j) != 0.0) v += (x(i) * c) * x(j);
                }
            }
            ASSERT_TRUE(SameBits(out[row], v < 0.0 ? 0.0 : std::sqrt(v))) << out[row] << " " << v;
        }
    }
}

// A sum that begins as -0 stays so where nothing is met; products of 0 would make it 0.
TEST_P(Blocks, ErrorOfAConstantOfMinusZeroIsMinusZeroWhereNoNumberIsMet)
{
    const std::vector<double> zeros(kBlockRows, 0.0);
    const double* const columns[] = {zeros.data()};
    const int32_t* const codes[] = {nullptr};
    for (const double constant : {-0.0, 0.0, 1.0}) {
        const double covariances[] = {2.0, 3.0, 3.0, constant};
        kernels->slopeErrors({columns, codes, kBlockRows}, covariances, 2, 1, true, out.data());
        for (size_t row = 0; row < kBlockRows; ++row) ASSERT_TRUE(SameBits(out[row], constant));
    }
}

template <Ends kEnds, Adds kAdds>
void ExpectSums(const BlockKernels& kernels, SumRule rule, Numbers& draw)
{
    std::vector<double> lp(kBlockRows);
    std::vector<double> design(Model::kTerms * kBlockRows);
    std::vector<double> errors(kBlockRows);
    std::vector<double> alone(kBlockRows);
    for (size_t round = 0; round < kBlocks; ++round) {
        draw.calm = round % 2 == 0;
        Block block(draw);
        const Model model(draw);
        const std::vector<double> betas = draw.Betas(Model::kTerms);
        const size_t first = round % 3 == 0 ? 1 : 0;
        const std::vector<double> covariances = draw.Betas(Model::kTerms * Model::kTerms);
        const auto sums = kernels.sums[static_cast<int>(rule)];
        sums(block.View(), model.View(), betas.data(), first, lp.data(), design.data());
        sums(block.View(), model.View(), betas.data(), first, alone.data(), nullptr);
        std::vector<uint32_t> met;
        for (uint32_t p = 0; p < Model::kTerms; ++p) {
            if (p >= first && betas[p] != 0.0) met.push_back(p);
        }
        kernels.standardErrors(design.data(), covariances.data(), Model::kTerms, met.data(),
                               met.size(), errors.data(), kBlockRows);
        for (size_t row = 0; row < kBlockRows; ++row) {
            double d[Model::kTerms] = {};
            const double sum =
                SumOfTerms<kEnds, kAdds>(0.0, model.View(), betas.data(), first, block.Row(row),
                                         [&](size_t p, double value) { d[p] = value; });
            ASSERT_TRUE(SameBits(lp[row], sum)) << lp[row] << " " << sum;
            ASSERT_TRUE(SameBits(alone[row], sum)) << alone[row] << " " << sum;
            for (size_t p = first; p < Model::kTerms; ++p) {
                ASSERT_TRUE(SameBits(design[p * kBlockRows + row], d[p]));
            }
            std::vector<uint32_t> metHere;  // a case drops what it doesn't meet
            for (const uint32_t p : met) {
                if (d[p] != 0.0) metHere.push_back(p);
            }
            ASSERT_TRUE(SameBits(errors[row], StandardErrorOfSum<double>(
                                                  covariances.data(), Model::kTerms, metHere.data(),
                                                  metHere.size(), [&](size_t p) { return d[p]; })));
        }
    }
    draw.calm = false;
}

TEST_P(Blocks, TermsAndStandardErrorsSumAsOfOneCase)
{
    ExpectSums<Ends::Alone, Adds::StandingTerms>(*kernels, SumRule::GeneralLinear, draw);
    ExpectSums<Ends::Alone, Adds::NonzeroTerms>(*kernels, SumRule::Logistic, draw);
    ExpectSums<Ends::AtZeroProduct, Adds::NonzeroTerms>(*kernels, SumRule::Generalized, draw);
}

TEST_P(Blocks, CentredTermsSumAsOfOneCase)
{
    for (size_t round = 0; round < kBlocks; ++round) {
        Block block(draw);
        const Model model(draw);
        const std::vector<double> betas = draw.Betas(Model::kTerms);
        const std::vector<double> references = draw.Betas(Model::kTerms);
        std::vector<double> kept(kBlockRows);
        std::vector<double> design(Model::kTerms * kBlockRows);
        kernels->centred(block.View(), model.View(), betas.data(), references.data(), out.data(),
                         nullptr);
        kernels->centred(block.View(), model.View(), betas.data(), references.data(), kept.data(),
                         design.data());
        for (size_t row = 0; row < kBlockRows; ++row) {
            const double sum = CentredSumOfTerms<Ends::AtZeroContrast>(
                model.View(), betas.data(), references.data(), block.Row(row),
                [&](size_t p, double d) {
                    EXPECT_TRUE(SameBits(design[p * kBlockRows + row], d)) << p;
                });
            ASSERT_TRUE(SameBits(out[row], sum)) << out[row] << " " << sum;
            ASSERT_TRUE(SameBits(kept[row], sum)) << kept[row] << " " << sum;
        }
    }
}

TEST_P(Blocks, EquationsAndTheirProbabilitiesAreThoseOfOneCase)
{
    constexpr size_t kEquations = 3;
    std::vector<double> lp(kEquations * kBlockRows);
    for (size_t round = 0; round < kBlocks; ++round) {
        Block block(draw);
        const Model model(draw);
        const std::vector<double> start = draw.Column();
        const std::vector<double> betas[] = {draw.Betas(Model::kTerms), draw.Betas(Model::kTerms),
                                             std::vector<double>(Model::kTerms, 0.0)};
        std::vector<double> byParameter;
        for (size_t p = 0; p < Model::kTerms; ++p) {
            for (const auto& row : betas) byParameter.push_back(row[p]);
        }
        kernels->equations(block.View(), start.data(), model.View(), byParameter.data(), kEquations,
                           lp.data());
        const std::vector<double> sums = lp;
        kernels->softmax(lp.data(), kEquations, out.data(), kBlockRows);
        for (size_t row = 0; row < kBlockRows; ++row) {
            double eta[] = {start[row], start[row], start[row]};
            for (size_t p = 0; p < Model::kTerms; ++p) {
                const auto design = DesignValueOf<Ends::Alone>(model.View(), p, block.Row(row));
                if (!design.stands || design.value == 0.0) continue;
                for (size_t c = 0; c < kEquations; ++c) {
                    if (betas[c][p] != 0.0) eta[c] += design.value * betas[c][p];
                }
            }
            constexpr size_t kStride = 2;
            double apart[kEquations * kStride];
            SumsOfTerms<Ends::Alone>(start[row], model.View(), byParameter.data(), kEquations,
                                     block.Row(row), apart, kStride);
            const Largest<double> largest = LargestOf(eta, kEquations);
            double e[kEquations];
            const double sum = Exponentials(eta, kEquations, largest.value, e);
            ASSERT_EQ(out[row], largest.index);
            for (size_t c = 0; c < kEquations; ++c) {
                ASSERT_TRUE(SameBits(sums[c * kBlockRows + row], eta[c]));
                ASSERT_TRUE(SameBits(apart[c * kStride], eta[c]));
                ASSERT_TRUE(SameBits(lp[c * kBlockRows + row], e[c] / sum));
            }
        }
    }
}

TEST_P(Blocks, MeansOfEveryLinkAreThoseOfOneCase)
{
    for (int link = 0; link < kLinks; ++link) {
        for (const double k : {-2.0, 0.0, 0.5, 1.0, 2.0, 3.0}) {
            for (size_t round = 0; round < 10; ++round) {
                const std::vector<double> eta = draw.Column();
                kernels->means[link](eta.data(), k, out.data(), kBlockRows);
                for (size_t row = 0; row < kBlockRows; ++row) {
                    ASSERT_TRUE(SameBits(out[row], Mean(static_cast<Link>(link), eta[row], k)))
                        << "link " << link << ", k " << k << ", eta " << eta[row];
                }
            }
        }
    }
}

TEST_P(Blocks, CumulativeProbabilitiesAreThoseOfOneCase)
{
    for (int link = 0; link < kCumulativeLinks; ++link) {
        for (size_t round = 0; round < kBlocks; ++round) {
            std::vector<double> x = draw.Column();
            x[0] = kNone;
            kernels->cumulative[link](x.data(), out.data(), kBlockRows);
            for (size_t row = 0; row < kBlockRows; ++row) {
                ASSERT_TRUE(
                    SameBits(out[row], ProbabilityOf(static_cast<CumulativeLink>(link), x[row])))
                    << "link " << link << ", x " << x[row];
            }
        }
    }
}

TEST_P(Blocks, BaselinesAreLookedUpAsOfOneCase)
{
    constexpr size_t kCells[] = {0, 1, 2, 3, 10, 17, 100, 1000, 300, 300, 300, 40, 40};
    // By place: evenly spread; the last far away; ever denser, and ever further apart; denormal;
    // with an infinite span.
    const auto timeAt = [](size_t place, size_t cells, size_t i) {
        const auto even = static_cast<double>(2 * i);
        switch (place) {
            case 8: return i + 1 == cells ? 1e12 : even;
            case 9: return std::sqrt(even);
            case 10: return std::exp(even);
            case 11: return even * std::numeric_limits<double>::denorm_min();
            case 12: return (even - 40.0) * 4e306;
            default: return even;
        }
    };
    std::vector<std::vector<double>> times, hazards, counts(std::size(kCells));
    std::vector<TimeGrid> grids;
    for (const size_t cells : kCells) {
        std::vector<double>& time = times.emplace_back();
        std::vector<double>& hazard = hazards.emplace_back();
        for (size_t i = 0; i < cells; ++i) {
            time.push_back(timeAt(times.size() - 1, cells, i));
            hazard.push_back(draw.Below(4) == 0 ? kNone : draw.Draw());
        }
        grids.push_back(MakeTimeGrid(time.data(), cells, counts[grids.size()]));
    }
    std::vector<Baseline> strata;
    for (size_t i = 0; i < times.size(); ++i) {
        const auto last = static_cast<double>(2 * kCells[i]);
        for (const double maxTime : {last, last / 2, std::numeric_limits<double>::quiet_NaN()}) {
            for (const double minTime : {0.0, 1.0, -kInf}) {
                strata.push_back(
                    {times[i].data(), hazards[i].data(), kCells[i], minTime, maxTime, grids[i]});
            }
        }
    }
    std::vector<int32_t> stratum(kBlockRows);
    std::vector<double> t(kBlockRows);
    for (size_t round = 0; round < std::max(4 * kBlocks, 2 * strata.size()); ++round) {
        for (size_t row = 0; row < kBlockRows; ++row) {
            // Every other block is of one stratum, each in turn.
            stratum[row] = static_cast<int32_t>(round % 2 == 0 ? round / 2 % strata.size()
                                                               : draw.Below(strata.size()));
            const Baseline& of = strata[static_cast<size_t>(stratum[row])];
            auto at = static_cast<double>(draw.Below(2 * of.count + 3)) - 1.0;
            if (of.count > 0 && draw.Below(2) == 0) {
                // A time of the table itself, or beside it.
                const double time = of.times[draw.Below(of.count)];
                const double beside[] = {time, std::nextafter(time, -kInf),
                                         std::nextafter(time, kInf)};
                at = beside[draw.Below(3)];
            }
            t[row] = draw.Below(20) == 0 ? draw.Draw() : at;
        }
        kernels->baselines(strata.data(), stratum.data(), t.data(), out.data(), kBlockRows);
        for (size_t row = 0; row < kBlockRows; ++row) {
            const Baseline& of = strata[static_cast<size_t>(stratum[row])];
            const size_t after =
                std::isnan(t[row])
                    ? 0
                    : static_cast<size_t>(std::upper_bound(of.times, of.times + of.count, t[row]) -
                                          of.times);
            if (!std::isnan(t[row])) {
                ASSERT_EQ(CountTimesUpTo(of, t[row]), after);
            }
            ASSERT_TRUE(SameBits(out[row], HazardAfter(of, after, t[row], kNone)))
                << out[row] << " at " << t[row] << " of " << of.count;
        }
    }
}

TEST_P(Blocks, OrdinalCategoriesAreThoseOfOneCase)
{
    constexpr size_t kBoundaries = 3;
    for (const double margin : {0.0, 1e-14}) {
        for (size_t round = 0; round < kBlocks; ++round) {
            std::vector<double> cumulative((kBoundaries + 1) * kBlockRows);
            for (double& f : cumulative) {
                f = draw.Below(8) == 0 ? kNone : static_cast<double>(draw.Below(11)) / 10.0;
            }
            const std::vector<double> given = cumulative;
            kernels->scale(cumulative.data(), kBoundaries, margin, out.data(), kBlockRows);
            for (size_t row = 0; row < kBlockRows; ++row) {
                double before = 0.0, best = 0.0;
                size_t predicted = 0;
                for (size_t c = 0; c <= kBoundaries; ++c) {
                    const double f = c < kBoundaries ? given[c * kBlockRows + row] : 1.0;
                    const bool counts = f != kNone && !(before > f);
                    const double p = counts ? f - before : 0.0;
                    if (counts) before = f;
                    if (c == 0 || p - best > margin) {
                        best = p;
                        predicted = c;
                    }
                    ASSERT_EQ(cumulative[c * kBlockRows + row], p);
                }
                ASSERT_EQ(out[row], static_cast<double>(predicted));
            }
        }
    }
}

TEST_P(Blocks, TheLargestLinearPredictorIsFoundAsBySoftmax)
{
    std::vector<double> lp = draw.Column();
    const std::vector<double> second = draw.Column();
    lp.insert(lp.end(), second.begin(), second.end());
    std::vector<double> largest(kBlockRows);
    kernels->largest(lp.data(), 2, largest.data(), kBlockRows);
    for (size_t row = 0; row < kBlockRows; ++row) {
        EXPECT_EQ(largest[row], lp[kBlockRows + row] > lp[row] ? 1.0 : 0.0);
    }
}

TEST_P(Blocks, LimitsShiftsAndBoundariesAreTheirFormulas)
{
    const std::vector<double> x = draw.Column();
    const std::vector<double> e = draw.Column();
    std::vector<double> lower(kBlockRows), upper(kBlockRows), by = x, to = x;
    kernels->shift(by.data(), e.data(), 7.0, kBlockRows);
    kernels->shift(to.data(), nullptr, 7.0, kBlockRows);
    kernels->boundary(x.data(), 0.25, -1.0, out.data(), kBlockRows);
    kernels->limits(x.data(), e.data(), 1.5, lower.data(), upper.data(), kBlockRows);
    for (size_t row = 0; row < kBlockRows; ++row) {
        ASSERT_TRUE(SameBits(by[row], x[row] + e[row]));
        ASSERT_TRUE(SameBits(to[row], x[row] + 7.0));
        ASSERT_TRUE(SameBits(out[row], 0.25 + -1.0 * x[row]));
        ASSERT_TRUE(SameBits(lower[row], x[row] - e[row] * 1.5));
        ASSERT_TRUE(SameBits(upper[row], x[row] + e[row] * 1.5));
    }
    kernels->limits(x.data(), nullptr, 1.5, lower.data(), upper.data(), kBlockRows);
    for (size_t row = 0; row < kBlockRows; ++row) {
        ASSERT_TRUE(SameBits(lower[row], x[row] - 1.5));
        ASSERT_TRUE(SameBits(upper[row], x[row] + 1.5));
    }
}

TEST_P(Blocks, RangesAreJudgedToTheLastRowAndNoFurther)
{
    std::vector<double> x(kBlockRows, 3.0);
    for (const size_t rows : {1U, 7U, 8U, 9U, 511U, 512U}) {
        EXPECT_TRUE(kernels->within(x.data(), 0.0, 3.0, true, rows));
        EXPECT_TRUE(kernels->within(x.data(), 3.0, 4.0, true, rows));  // both ends belong to it
        for (const double odd : {3.5, -1.0, kInf, std::numeric_limits<double>::quiet_NaN()}) {
            for (const size_t at : {size_t{0}, rows / 2, rows - 1}) {
                x[at] = odd;
                EXPECT_FALSE(kernels->within(x.data(), 0.0, 3.0, false, rows)) << odd;
                x[at] = 3.0;
            }
            if (rows < kBlockRows) {
                x[rows] = odd;
                EXPECT_TRUE(kernels->within(x.data(), 0.0, 3.0, false, rows)) << odd;
                x[rows] = 3.0;
            }
        }
        x[rows - 1] = 1.5;
        EXPECT_TRUE(kernels->within(x.data(), 0.0, 3.0, false, rows));
        EXPECT_FALSE(kernels->within(x.data(), 0.0, 3.0, true, rows));
        x[rows - 1] = 3.0;
    }
    // A fraction of a number so large is lost in sums with larger ones: nothing is said of it.
    x[0] = 4503599627370497.0;
    EXPECT_FALSE(kernels->within(x.data(), 0.0, 1e17, true, kBlockRows));
    EXPECT_TRUE(kernels->within(x.data(), 0.0, 1e17, false, kBlockRows));
    // Nor of a whole one beyond 2^51.
    for (const size_t rows : {1U, 512U}) {
        for (const double sign : {1.0, -1.0}) {
            x[0] = sign * 0x1p51;
            EXPECT_TRUE(kernels->within(x.data(), -1e17, 1e17, true, rows)) << sign;
            x[0] = sign * (0x1p51 + 2.0);
            EXPECT_FALSE(kernels->within(x.data(), -1e17, 1e17, true, rows)) << sign;
            EXPECT_TRUE(kernels->within(x.data(), -1e17, 1e17, false, rows)) << sign;
        }
    }
}

TEST_P(Blocks, CodesAreMappedAndOthersSaid)
{
    const std::vector<int32_t> table{5, 0, 2};
    std::vector<int32_t> codes(kBlockRows, 1), mapped(kBlockRows);
    EXPECT_TRUE(kernels->mapCodes(codes.data(), table.data(), 3, -1, mapped.data(), kBlockRows));
    EXPECT_EQ(mapped, std::vector<int32_t>(kBlockRows, 0));
    for (const int32_t other : {3, -1, std::numeric_limits<int32_t>::min()}) {
        codes[kBlockRows - 1] = other;
        EXPECT_FALSE(
            kernels->mapCodes(codes.data(), table.data(), 3, -1, mapped.data(), kBlockRows));
        EXPECT_EQ(mapped.back(), -1);
        EXPECT_EQ(mapped.front(), 0);
    }
}

TEST_P(Blocks, SurvivalIsThatOfOneCase)
{
    std::vector<double> survival(kBlockRows);
    for (size_t round = 0; round < kBlocks; ++round) {
        const std::vector<double> lp = draw.Column();
        std::vector<double> baseline = draw.Column();
        baseline[round] = kNone;
        kernels->survival(lp.data(), baseline.data(), out.data(), survival.data(), kBlockRows);
        for (size_t row = 0; row < kBlockRows; ++row) {
            const bool none = baseline[row] == kNone;
            const double hazard = none ? kNone : std::exp(lp[row]) * baseline[row];
            ASSERT_TRUE(SameBits(out[row], hazard));
            ASSERT_TRUE(SameBits(survival[row], none ? kNone : 1.0 / std::exp(hazard)));
        }
    }
}

TEST(InstructionSet, UnknownNamesHaveNoKernels)
{
    EXPECT_EQ(KernelsOf("v5"), nullptr);
    EXPECT_EQ(KernelsOf(""), nullptr);
    EXPECT_NE(KernelsOf("portable"), nullptr);
}

TEST(InstructionSet, ExpThatDepartsFromTheLibraryIsNoticed)
{
    BlockKernels wrong = *KernelsOf("portable");
    wrong.exp = [](const double* x, double* y, size_t rows) {
        for (size_t i = 0; i < rows; ++i) y[i] = std::exp(x[i]);
        y[rows - 1] = std::nextafter(y[rows - 1], 1.0);
    };
    EXPECT_FALSE(AgreesWithLibrary(wrong));
    // Nor does it pass where it departs in a narrow span alone.
    wrong.exp = [](const double* x, double* y, size_t rows) {
        for (size_t i = 0; i < rows; ++i) {
            const bool departs = x[i] > 10.0 && x[i] < 10.4;
            y[i] = departs ? std::nextafter(std::exp(x[i]), 0.0) : std::exp(x[i]);
        }
    };
    EXPECT_FALSE(AgreesWithLibrary(wrong));
}

// A process chooses once, so each of these asks a process of its own.
TEST(InstructionSet, EnvironmentHoldsTheChoiceDown)
{
    for (const char* name : kInstructionSets) {
        if (KernelsOf(name) == nullptr) continue;
        EXPECT_EXIT(
            {
                setenv("VELSCORE_INSTRUCTION_SET", name, 1);
                _exit(std::string(ChosenKernels().name) == name ? 0 : 1);
            },
            ::testing::ExitedWithCode(0), "")
            << name;
    }
}

}  // namespace
}  // namespace MCVelscore_850::kernels

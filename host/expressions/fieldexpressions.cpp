// Expressions that turn one field into another scale: NormContinuous, NormDiscrete, Discretize.

#include <algorithm>

#include "host/expressions/expression.h"
#include "host/variables/scoredictvar.h"

namespace MCVelscore_850 {

namespace {

class NormContinuous final : public FieldExpression {
public:
    NormContinuous(FieldSource source, std::vector<NormPoint> points, int outliers,
                   Replacement mapMissingTo)
        : FieldExpression(source, std::move(mapMissingTo)),
          points_(std::move(points)),
          outliers_(outliers)
    {}
    void Evaluate(const ExpressionCase& c, ExpressionValue& value) const override
    {
        if (!ReadSource(c, value)) return;
        double x = 0.0;
        if (!AsNumber(value, x)) {
            value.SetInvalid();
            return mapMissingTo_.ApplyToField(value);
        }
        const NormPoint& first = points_.front();
        const NormPoint& last = points_.back();
        if (x < first.orig || x > last.orig) {
            if (outliers_ == ScoreDictVar::AS_MISSING) return value.SetMissing();
            if (outliers_ == ScoreDictVar::AS_EXTREME) {
                return value.SetNumber(x < first.orig ? first.norm : last.norm);
            }
        }
        // The segment that holds x; beyond the ends the outer one goes on.
        const auto above =
            std::upper_bound(points_.begin() + 1, points_.end() - 1, x,
                             [](double v, const NormPoint& p) { return v < p.orig; });
        const NormPoint& right = *above;
        const NormPoint& left = *(above - 1);
        value.SetNumber(left.norm +
                        (x - left.orig) / (right.orig - left.orig) * (right.norm - left.norm));
    }

private:
    std::vector<NormPoint> points_;
    int outliers_;
};

class NormDiscrete final : public FieldExpression {
public:
    NormDiscrete(FieldSource source, ExpressionValue wanted, Replacement mapMissingTo)
        : FieldExpression(source, std::move(mapMissingTo)), wanted_(std::move(wanted))
    {}
    void Evaluate(const ExpressionCase& c, ExpressionValue& value) const override
    {
        if (!ReadSource(c, value)) return;
        value.SetNumber(Compare(value, wanted_) == Ordering::Equal ? 1.0 : 0.0);
    }
    bool CollectOutcomes(Outcomes& outcomes) const override
    {
        outcomes.mayLackValue = true;
        ExpressionValue value;
        for (const double number : {0.0, 1.0}) {
            value.SetNumber(number);
            if (!outcomes.Add(value)) return false;
        }
        return !mapMissingTo_.given || outcomes.Add(mapMissingTo_.value);
    }

private:
    ExpressionValue wanted_;
};

bool Holds(const DictVar::Interval& i, double x)
{
    return (i.lowClosed ? x >= i.low : x > i.low) && (i.highClosed ? x <= i.high : x < i.high);
}

class Discretize final : public FieldExpression {
public:
    Discretize(FieldSource source, std::vector<Bin> bins, Replacement mapMissingTo,
               Replacement defaultValue)
        : FieldExpression(source, std::move(mapMissingTo)),
          bins_(std::move(bins)),
          defaultValue_(std::move(defaultValue))
    {}
    void Evaluate(const ExpressionCase& c, ExpressionValue& value) const override
    {
        if (!ReadSource(c, value)) return;
        double x = 0.0;
        if (!AsNumber(value, x)) {
            value.SetInvalid();
            return mapMissingTo_.ApplyToField(value);
        }
        for (const Bin& bin : bins_) {
            if (!Holds(bin.interval, x)) continue;
            value = bin.value;
            return;
        }
        value.SetMissing();
        defaultValue_.Apply(value);
    }
    // Bins are tried one by one.
    double Steps() const override { return 1.0 + static_cast<double>(bins_.size()); }
    bool CollectOutcomes(Outcomes& outcomes) const override
    {
        outcomes.mayLackValue = true;
        for (const Bin& bin : bins_) {
            if (!outcomes.Add(bin.value)) return false;
        }
        return (!defaultValue_.given || outcomes.Add(defaultValue_.value)) &&
               (!mapMissingTo_.given || outcomes.Add(mapMissingTo_.value));
    }

private:
    std::vector<Bin> bins_;
    Replacement defaultValue_;
};

}  // namespace

std::unique_ptr<Expression> MakeNormContinuous(FieldSource source, std::vector<NormPoint> points,
                                               int outliers, Replacement mapMissingTo)
{
    return std::make_unique<NormContinuous>(source, std::move(points), outliers,
                                            std::move(mapMissingTo));
}

std::unique_ptr<Expression> MakeNormDiscrete(FieldSource source, ExpressionValue wanted,
                                             Replacement mapMissingTo)
{
    return std::make_unique<NormDiscrete>(source, std::move(wanted), std::move(mapMissingTo));
}

std::unique_ptr<Expression> MakeDiscretize(FieldSource source, std::vector<Bin> bins,
                                           Replacement mapMissingTo, Replacement defaultValue)
{
    return std::make_unique<Discretize>(source, std::move(bins), std::move(mapMissingTo),
                                        std::move(defaultValue));
}

}  // namespace MCVelscore_850

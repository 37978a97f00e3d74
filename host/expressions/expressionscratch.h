#ifndef VELSCORE_HOST_EXPRESSIONS_EXPRESSIONSCRATCH_H
#define VELSCORE_HOST_EXPRESSIONS_EXPRESSIONSCRATCH_H

#include <memory>
#include <unordered_map>

#include "host/export.h"

namespace MCVelscore_850 {

/// What evaluating expressions writes: arguments on their way, derived values, compiled patterns. A
/// thread has its own, so that the expressions themselves are only read; kept from case to case, it
/// allocates nothing after the first.
class VELHOST_API ExpressionScratch {
public:
    /// What one expression or derived variable keeps.
    class VELHOST_API Part {
    public:
        virtual ~Part();
    };

    ExpressionScratch();
    ExpressionScratch(ExpressionScratch&&) noexcept;
    ExpressionScratch& operator=(ExpressionScratch&&) noexcept;
    ~ExpressionScratch();

    /// The part of its owner, who always asks for the same type and outlives this.
    template <class Kept>
    Kept& Of(const void* owner)
    {
        std::unique_ptr<Part>& part = parts_[owner];
        if (part == nullptr) part = std::make_unique<Kept>();
        return static_cast<Kept&>(*part);
    }

    /// A number that no evaluation with this scratch had before; never 0.
    unsigned long NextEvaluation() { return ++lastEvaluation_; }

private:
    std::unordered_map<const void*, std::unique_ptr<Part>> parts_;
    unsigned long lastEvaluation_ = 0;
};

}  // namespace MCVelscore_850

#endif

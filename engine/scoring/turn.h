#ifndef VELSCORE_ENGINE_SCORING_TURN_H
#define VELSCORE_ENGINE_SCORING_TURN_H

#include <atomic>
#include <cstdint>

namespace MCVelscore_850 {

/// What threads do one after the other, because something else puts them in order: who takes the
/// turn sees what was done before it was passed on. Nobody waits for it.
class Turn {
public:
    void Take() const { static_cast<void>(passed_.load(std::memory_order_acquire)); }
    void Pass() { passed_.fetch_add(1, std::memory_order_release); }

    /// Takes the turn, and passes it on at its end.
    class Holder {
    public:
        explicit Holder(Turn& turn) : turn_(turn) { turn_.Take(); }
        Holder(const Holder&) = delete;
        Holder& operator=(const Holder&) = delete;
        ~Holder() { turn_.Pass(); }

    private:
        Turn& turn_;
    };

private:
    std::atomic<uint32_t> passed_{0};
};

}  // namespace MCVelscore_850

#endif

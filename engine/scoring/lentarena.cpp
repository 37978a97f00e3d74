#include "engine/scoring/lentarena.h"

#include <algorithm>
#include <mutex>

namespace MCVelscore_850 {

struct LentArena::Idle {
    std::mutex mutex;
    std::list<Kept> arenas;
};

LentArena::Idle& LentArena::IdleOnes()
{
    static Idle idle;
    return idle;
}

LentArena::LentArena(size_t threads)
{
    Idle& idle = IdleOnes();
    {
        const std::lock_guard lock(idle.mutex);
        const auto found = std::find_if(idle.arenas.begin(), idle.arenas.end(),
                                        [&](const Kept& kept) { return kept.threads == threads; });
        if (found != idle.arenas.end()) lent_.splice(lent_.begin(), idle.arenas, found);
    }
    if (lent_.empty()) lent_.emplace_back(threads);
}

LentArena::~LentArena()
{
    Idle& idle = IdleOnes();
    const std::lock_guard lock(idle.mutex);
    idle.arenas.splice(idle.arenas.begin(), lent_);
}

}  // namespace MCVelscore_850

#ifndef VELSCORE_ENGINE_SCORING_LENTARENA_H
#define VELSCORE_ENGINE_SCORING_LENTARENA_H

#include <cstddef>
#include <list>

#include <oneapi/tbb/task_arena.h>

namespace MCVelscore_850 {

/// The threads of one run, which are lent to the next one behind it: of each arena that a pipeline
/// ran in, oneTBB 2021.8 keeps some 13 KB once it is gone, so that a program of many runs would
/// grow. There are as many as runs at a time.
///
/// Errors  std::bad_alloc from the constructor.
/// Threads any; those that lend at the same time have arenas of their own.
class LentArena {
public:
    explicit LentArena(size_t threads);
    LentArena(const LentArena&) = delete;
    LentArena& operator=(const LentArena&) = delete;
    ~LentArena();

    oneapi::tbb::task_arena& Get() { return lent_.front().arena; }

private:
    struct Kept {
        explicit Kept(size_t count) : threads(count), arena(static_cast<int>(count)) {}
        size_t threads;
        oneapi::tbb::task_arena arena;
    };
    struct Idle;
    static Idle& IdleOnes();

    std::list<Kept> lent_;  ///< the one; a list, since it goes back without taking memory
};

}  // namespace MCVelscore_850

#endif

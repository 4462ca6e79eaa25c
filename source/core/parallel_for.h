// The dynamic parallel loop that runs dispatches.
#pragma once

#include <atomic>

#include <norvi/host/result.h>

namespace norvi {

/// What a loop does with a run of iterations.
struct LoopBody {
    /// Runs iterations `from` to `to` - 1 in order and returns the first failure. A body that runs them one
    /// by one tests `cancelled` before each and stops, with success, when it is set.
    /// @param worker index of the current worker, below JobQueue::GetThreadCount
    using Function = Result<void> (*)(const void* closure, Int worker, UInt32 from, UInt32 to,
                                      const std::atomic<bool>& cancelled);

    Function run;
    const void* closure;
};

/// Makes a LoopBody of a callable with the arguments of LoopBody::Function less the first; it must outlive
/// the loop.
template <typename Callable>
LoopBody MakeLoopBody(const Callable& callable) {
    return {[](const void* closure, Int worker, UInt32 from, UInt32 to, const std::atomic<bool>& cancelled) {
                return (*static_cast<const Callable*>(closure))(worker, from, to, cancelled);
            },
            &callable};
}

/// Runs iterations `from` to `to` - 1 on the default queue and returns when all are done, or when one failed
/// and no other is running any more; of several failures one is returned. Allocates nothing; the job
/// library keeps a pool for its tasks.
///
/// The loop begins on the caller's thread. Only when what is left would take longer than waking others is
/// worth (a few microseconds) does it go to the workers, in chunks of at least `granularity` iterations: each
/// worker empties its own partition first and then takes chunks of those after it.
Result<void> ParallelFor(UInt32 from, UInt32 to, Int granularity, const LoopBody& body);

/// For tests and measurements.
struct LoopTuning {
    UInt32 chunkSize = 0;             ///< iterations taken at a time; 0 leaves it to the loop
    bool beginOnCallersThread = true; ///< false: all iterations go to the workers
    bool useRanges = true; ///< false: kernels run invocation by invocation even where they offer ranges
};
LoopTuning GetLoopTuning();
void SetLoopTuning(const LoopTuning& tuning);

} // namespace norvi

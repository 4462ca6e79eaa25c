// Jobs on oneTBB. A task arena lets the waiting thread take part and numbers all threads in it from 0.
//
// This file is built without ThreadSanitizer, which does not see how the job system hands work over and
// reports its insides. The annotations state the two hand-overs there are: what the caller wrote before a
// group starts is seen by its jobs, and what a job wrote is seen by the caller after the wait. Races inside
// jobs are still found.
#include <norvi/host/thread_services.h>

#include <algorithm>
#include <optional>
#include <utility>

#include <tbb/global_control.h>
#include <tbb/info.h>
#include <tbb/task_arena.h>
#include <tbb/task_group.h>

extern "C" {
[[gnu::weak]] void __tsan_acquire(void* address);
[[gnu::weak]] void __tsan_release(void* address);
}

namespace norvi {

namespace {

void Publish(void* address) {
    if (__tsan_release)
        __tsan_release(address);
}

void Observe(void* address) {
    if (__tsan_acquire)
        __tsan_acquire(address);
}

struct Workers {
    Int count = 0;
    // More workers than cores need the library's own limit raised first.
    std::optional<tbb::global_control> limit;
    std::optional<tbb::task_arena> arena;

    void Start(Int requested) {
        count = requested > 0 ? requested : tbb::info::default_concurrency();
        arena.reset();
        limit.reset();
        limit.emplace(tbb::global_control::max_allowed_parallelism, static_cast<std::size_t>(count));
        arena.emplace(static_cast<int>(count));
    }
};

Workers& TheWorkers() {
    // Never destroyed: worker threads may outlive the static objects of this library.
    static auto* workers = [] {
        auto* made = new Workers;
        made->Start(0);
        return made;
    }();
    return *workers;
}

// The current thread runs the jobs of a group one by one, in whatever arena of the application it may be.
thread_local bool t_isAlone = false;

// A partition is handed out in about this many chunks: more would balance better, and cost more.
constexpr UInt32 ChunksPerPartition = 16;

UInt32 ChunkSizeFor(UInt32 partitionSize, UInt32 granularity) {
    return std::max({granularity, partitionSize / ChunksPerPartition, 1u});
}

} // namespace

Int JobQueue::GetThreadCount() noexcept {
    return TheWorkers().count;
}

void JobQueue::SetThreadCount(Int count) noexcept {
    TheWorkers().Start(count);
}

JobGroup ThreadServices::CreateGroupForQueue(Int, Int jobSize, void* buffer, Int capacity) noexcept {
    return JobGroup(buffer, capacity, jobSize);
}

Partitions ThreadServices::CalculatePartitions(UInt32 length, Int threadCount, Int granularity) noexcept {
    const auto grain = static_cast<UInt32>(std::clamp<Int>(granularity, 1, std::max<UInt32>(length, 1)));
    const Int workers = std::min<Int>(threadCount > 0 ? threadCount : JobQueue::GetThreadCount(), INT16_MAX);
    const auto count = static_cast<UInt32>(std::clamp<Int>(length / grain, 1, workers));
    // The first `longer` partitions take one iteration more, so that all lengths add up.
    const UInt32 size = length / count;
    const UInt32 longer = length % count;
    Partitions partitions;
    partitions.count = count;
    partitions.partitionSize[0] = size;
    partitions.partitionSize[1] = size + 1;
    partitions.chunkSize[0] = ChunkSizeFor(size, grain);
    partitions.chunkSize[1] = ChunkSizeFor(size + 1, grain);
    partitions.specialFirst = 0;
    partitions.specialLast = static_cast<Int16>(static_cast<Int>(longer) - 1);
    return partitions;
}

void* ThreadServices::GetStaticJobBuffer(JobGroup& group, Int& capacity) noexcept {
    capacity = group.capacity_;
    return group.buffer_;
}

void ThreadServices::GroupBatchAdd(JobGroup& group, Int first, Int count, JobFunction function) noexcept {
    group.firstJob_ = first;
    group.jobCount_ = count;
    group.function_ = function;
}

void ThreadServices::EnqueueGroupAndWait(JobGroup& group) noexcept {
    char done = 0;
    const auto job = [&group](Int index) {
        return static_cast<std::byte*>(group.buffer_) + (group.firstJob_ + index) * group.jobSize_;
    };
    if (group.jobCount_ < 1)
        return;
    if (JobQueue::GetThreadCount() == 1) {
        // An arena for one thread was seen to number a second caller 1.
        RunAlone(group);
        return;
    }
    Publish(&group);
    TheWorkers().arena->execute([&] {
        // A full arena hands this to another thread.
        Observe(&group);
        tbb::task_group tasks;
        Int queued = 1;
        try {
            for (; queued < group.jobCount_; ++queued)
                tasks.run([&group, &done, slot = job(queued)] {
                    if (group.finished_.load(std::memory_order_relaxed))
                        return;
                    Observe(&group);
                    group.function_(slot);
                    Publish(&done);
                });
        } catch (const std::bad_alloc&) {
            // The library has no memory for its tasks: what could not be queued runs here.
        }
        group.function_(job(0));
        for (Int index = queued; index < group.jobCount_; ++index)
            group.function_(job(index));
        tasks.wait();
        Publish(&done);
    });
    Observe(&done);
}

void ThreadServices::GroupMarkAsFinished(JobGroup& group) noexcept {
    group.finished_.store(true, std::memory_order_relaxed);
}

void ThreadServices::RunAlone(JobGroup& group) noexcept {
    const bool wasAlone = std::exchange(t_isAlone, true);
    for (Int index = 0; index < group.jobCount_ && !group.finished_.load(std::memory_order_relaxed); ++index)
        group.function_(static_cast<std::byte*>(group.buffer_) + (group.firstJob_ + index) * group.jobSize_);
    t_isAlone = wasAlone;
}

Int ThreadServices::GetCurrentWorkerThreadIndex() noexcept {
    return t_isAlone ? 0 : std::max(0, tbb::this_task_arena::current_thread_index());
}

} // namespace norvi

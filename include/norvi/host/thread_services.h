// Jobs: work spread over the processor's cores.
#pragma once

#include <atomic>

#include <norvi/host/result.h>

namespace norvi {

/// The default queue's workers.
class JobQueue {
  public:
    /// How many threads work on the queue, the caller included; at least 1. Worker indices lie below it.
    static Int GetThreadCount() noexcept;
    /// Sets the number of workers; 0 stands for the number of processor cores that this process may use. May
    /// be called while no jobs run.
    static void SetThreadCount(Int count) noexcept;
};

/// What a group runs: a function over one slot of its job buffer.
using JobFunction = void (*)(void* job) noexcept;

/// A set of jobs that are run and waited for together. Lives on the stack of the thread that waits, with the
/// jobs in a buffer of the caller's; the job library keeps a pool for its tasks.
class JobGroup {
  public:
    JobGroup(const JobGroup&) = delete;
    JobGroup& operator=(const JobGroup&) = delete;

  private:
    friend class ThreadServices;
    JobGroup(void* buffer, Int capacity, Int jobSize)
        : buffer_(buffer), capacity_(capacity), jobSize_(jobSize) {}

    void* buffer_;
    Int capacity_;
    Int jobSize_;
    Int firstJob_ = 0;
    Int jobCount_ = 0;
    JobFunction function_ = nullptr;
    std::atomic<bool> finished_{false};
};

/// Partition and chunk sizes of a parallel loop: the first of each pair normally, the second for the
/// partitions with index in [specialFirst, specialLast].
struct Partitions {
    Int count = 0;
    UInt32 partitionSize[2]{};
    UInt32 chunkSize[2]{};
    Int16 specialFirst = 0;
    Int16 specialLast = -1;
};

class ThreadServices {
  public:
    static constexpr Int DefaultQueue = -1;

    /// A group whose jobs, of `jobSize` bytes each, will stand in `buffer`, which has room for `capacity` of
    /// them and outlives the group. Only the default queue exists.
    static JobGroup CreateGroupForQueue(Int queue, Int jobSize, void* buffer, Int capacity) noexcept;

    /// Divides `length` iterations among `threadCount` workers (0: all). Every partition holds at least
    /// `granularity` iterations, as far as there are as many, and so does every chunk, of which there are
    /// enough in a partition for workers that finish early to take some over.
    static Partitions CalculatePartitions(UInt32 length, Int threadCount, Int granularity) noexcept;

    static void* GetStaticJobBuffer(JobGroup& group, Int& capacity) noexcept;
    /// Makes the `count` jobs from slot `first` on the group's jobs, which `function` will run.
    static void GroupBatchAdd(JobGroup& group, Int first, Int count, JobFunction function) noexcept;
    /// Runs all jobs; the caller waits, and as a rule takes part. Returns when all have run, or when the
    /// group was marked as finished and none is running any more.
    static void EnqueueGroupAndWait(JobGroup& group) noexcept;
    /// Jobs that have not begun are passed over. Called by a job of the group.
    static void GroupMarkAsFinished(JobGroup& group) noexcept;

    /// Index of the current worker, below JobQueue::GetThreadCount; 0 outside of jobs. Jobs that run at the
    /// same time have different ones, but with a single worker every caller is number 0.
    static Int GetCurrentWorkerThreadIndex() noexcept;

  private:
    static void RunAlone(JobGroup& group) noexcept;
};

} // namespace norvi

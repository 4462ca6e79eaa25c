#include "core/parallel_for.h"

#include <algorithm>
#include <chrono>
#include <new>

#include <norvi/host/log.h>
#include <norvi/host/thread_services.h>

namespace norvi {

namespace {

LoopTuning g_tuning;

// Shared by all jobs of one loop.
struct ParallelForContext {
    std::atomic<Int> remaining; ///< iterations not yet accounted for
    Int partitionCount;
    struct ParallelForJob* partitions;
    Partitions sizes;
    std::atomic<bool> cancelled{false};
    const LoopBody* body;
    JobGroup* group;

    Bool IsSpecial(Int index) const { return index >= sizes.specialFirst && index <= sizes.specialLast; }
};

// One job for each partition. `next` stands on a cache line of its own, away from the fields that all workers
// read.
struct alignas(64) ParallelForJob {
    ParallelForContext* context;
    UInt32 start;
    UInt32 end;
    Int partitionIndex;
    Int workerIndex = 0;
    Result<void> error;
    alignas(64) std::atomic<UInt64> next;

    void Run(Int worker) noexcept;

  private:
    UInt32 EmptyPartition(ParallelForJob& partition, UInt32 chunk);
    void RunChunk(UInt64 take, UInt64 limit);
};

// As many partitions as workers are used; a machine with more leaves some idle.
constexpr Int MaxJobs = 128;

/// Takes chunks of `partition` until none is left or the loop is cancelled; gives the number of iterations
/// taken.
UInt32 ParallelForJob::EmptyPartition(ParallelForJob& partition, UInt32 chunk) {
    UInt64 processed = 0;
    while (!context->cancelled.load(std::memory_order_relaxed) &&
           partition.next.load(std::memory_order_relaxed) < partition.end) {
        const UInt64 take = partition.next.fetch_add(chunk, std::memory_order_relaxed);
        const UInt64 limit = std::min<UInt64>(take + chunk, partition.end);
        if (take < partition.start || limit <= take)
            break;
        RunChunk(take, limit);
        processed += limit - take;
    }
    return static_cast<UInt32>(processed);
}

void ParallelForJob::RunChunk(UInt64 take, UInt64 limit) {
    const LoopBody& body = *context->body;
    Result<void> result = CatchOutOfMemory([&] {
        return body.run(body.closure, workerIndex, static_cast<UInt32>(take), static_cast<UInt32>(limit),
                        context->cancelled);
    });
    if (!result) [[unlikely]] {
        if (error)
            error = std::move(result);
        context->cancelled.store(true, std::memory_order_relaxed);
    }
}

void ParallelForJob::Run(Int worker) noexcept {
    workerIndex = worker;
    const Int count = context->partitionCount;
    Int index = partitionIndex;
    for (Int visited = 0; visited < count && context->remaining.load(std::memory_order_relaxed) != 0;
         ++visited) {
        if (index == count)
            index = 0;
        ParallelForJob& partition = context->partitions[index];
        const Int processed = EmptyPartition(partition, context->sizes.chunkSize[context->IsSpecial(index)]);
        ++index;
        if (processed == 0)
            continue;
        const Int before = context->remaining.fetch_sub(processed, std::memory_order_acq_rel);
        if (before > processed)
            continue;
        // This job has finished the loop. The balance can only be off if a partition was processed twice or
        // `remaining` was written from outside.
        if (before != processed)
            LogCritical("Assertion failed: Someone has broken ParallelFor.", {"parallelfordynamic", 177});
        if (context->group && !context->cancelled.load(std::memory_order_relaxed))
            ThreadServices::GroupMarkAsFinished(*context->group);
        return;
    }
}

void LayOutJobs(ParallelForContext& context, ParallelForJob* jobs, UInt32 from, UInt32 to) {
    context.partitions = jobs;
    UInt32 start = from;
    for (Int index = 0; index < context.partitionCount; ++index) {
        const UInt32 length = context.sizes.partitionSize[context.IsSpecial(index)];
        const UInt32 end = index == context.partitionCount - 1 ? to : start + length;
        auto* job = new (&jobs[index]) ParallelForJob{.context = &context,
                                                      .start = start,
                                                      .end = end,
                                                      .partitionIndex = index,
                                                      .workerIndex = 0,
                                                      .error = {},
                                                      .next = start};
        start = job->end;
    }
}

/// Destroys the jobs in reverse order and gives the first error of the first job that has one.
Result<void> TakeErrors(ParallelForJob* jobs, Int count) {
    Result<void> result;
    for (Int index = count - 1; index >= 0; --index) {
        if (!jobs[index].error)
            result = std::move(jobs[index].error);
        jobs[index].~ParallelForJob();
    }
    return result;
}

Partitions PartitionsFor(UInt32 length, Int granularity, UInt32 chunkSize) {
    Partitions partitions = ThreadServices::CalculatePartitions(
        length, std::min(JobQueue::GetThreadCount(), MaxJobs), granularity);
    if (chunkSize > 0)
        partitions.chunkSize[0] = partitions.chunkSize[1] = chunkSize;
    return partitions;
}

Result<void> RunOnWorkers(UInt32 from, UInt32 to, Int granularity, UInt32 chunkSize, const LoopBody& body) {
    // Uninitialised on purpose: only the jobs that are laid out cost anything.
    alignas(ParallelForJob) std::byte buffer[MaxJobs * sizeof(ParallelForJob)];
    JobGroup group = ThreadServices::CreateGroupForQueue(ThreadServices::DefaultQueue, sizeof(ParallelForJob),
                                                         buffer, MaxJobs);
    ParallelForContext context{.remaining = Int{to} - from,
                               .partitionCount = 0,
                               .partitions = nullptr,
                               .sizes = PartitionsFor(to - from, granularity, chunkSize),
                               .body = &body,
                               .group = &group};
    Int capacity = 0;
    auto* jobs = static_cast<ParallelForJob*>(ThreadServices::GetStaticJobBuffer(group, capacity));
    context.partitionCount = std::min(capacity, context.sizes.count);
    LayOutJobs(context, jobs, from, to);
    if (context.partitionCount > 1) {
        ThreadServices::GroupBatchAdd(group, 0, context.partitionCount, [](void* job) noexcept {
            static_cast<ParallelForJob*>(job)->Run(ThreadServices::GetCurrentWorkerThreadIndex());
        });
        ThreadServices::EnqueueGroupAndWait(group);
    } else {
        jobs[0].Run(0);
    }
    return TakeErrors(jobs, context.partitionCount);
}

// Work that is left goes to the workers if it would take the caller longer than this. Waking a worker costs
// about 5 microseconds when it is awake and up to 100 when it sleeps: a lower value slows small dispatches
// down, a higher one leaves medium ones on a single core.
constexpr double WorthSharingNanoseconds = 6000;
// Below this the time per iteration is too uncertain to conclude from.
constexpr double TrustedNanoseconds = 100;
// A chunk lasts about as long as this, so that taking it costs next to nothing.
constexpr double ChunkNanoseconds = 20000;

struct Lead {
    UInt32 done = 0;
    double nanosecondsPerIteration = 0;
};

/// Runs iterations from `from` on, in growing runs, until all are done or the rest is worth sharing. The
/// first run also fills caches and maps pages, so it counts only where it is long by any measure.
Result<void> RunLead(UInt32 from, UInt32 to, UInt32 granularity, const LoopBody& body, Lead& lead) {
    using Clock = std::chrono::steady_clock;
    const std::atomic<bool> never{false};
    const UInt32 length = to - from;
    auto start = Clock::now();
    UInt32 measuredFrom = 0;
    for (UInt32 run = granularity;;) {
        const UInt32 count = std::min(run, length - lead.done);
        NORVI_TRY(body.run(body.closure, 0, from + lead.done, from + lead.done + count, never));
        lead.done += count;
        if (lead.done == length)
            return OK;
        const auto now = Clock::now();
        const double elapsed = std::chrono::duration<double, std::nano>(now - start).count();
        run = lead.done * 3;
        if (measuredFrom == 0 && elapsed < ChunkNanoseconds) {
            measuredFrom = lead.done;
            start = now;
            continue;
        }
        lead.nanosecondsPerIteration = elapsed / (lead.done - measuredFrom);
        if (elapsed < TrustedNanoseconds)
            continue;
        if (lead.nanosecondsPerIteration * (length - lead.done) > WorthSharingNanoseconds)
            return OK;
        run = length;
    }
}

UInt32 ChunkSizeFor(UInt32 length, UInt32 granularity, double nanosecondsPerIteration) {
    // At least four chunks for each worker, so that none waits long for another at the end.
    const auto largest = static_cast<double>(length / (4 * JobQueue::GetThreadCount()) + 1);
    const double wanted = std::min(ChunkNanoseconds / nanosecondsPerIteration, largest);
    return std::max(granularity, static_cast<UInt32>(wanted) / granularity * granularity);
}

} // namespace

LoopTuning GetLoopTuning() {
    return g_tuning;
}

void SetLoopTuning(const LoopTuning& tuning) {
    g_tuning = tuning;
}

Result<void> ParallelFor(UInt32 from, UInt32 to, Int granularity, const LoopBody& body) {
    if (to <= from)
        return OK;
    const auto grain = static_cast<UInt32>(std::clamp<Int>(granularity, 1, to - from));
    Lead lead;
    UInt32 chunkSize = g_tuning.chunkSize;
    if (g_tuning.beginOnCallersThread) {
        NORVI_TRY(RunLead(from, to, grain, body, lead));
        from += lead.done;
        if (from == to)
            return OK;
        if (chunkSize == 0)
            chunkSize = ChunkSizeFor(to - from, grain, lead.nanosecondsPerIteration);
    }
    return RunOnWorkers(from, to, grain, chunkSize, body);
}

} // namespace norvi

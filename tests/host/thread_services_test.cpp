#include <algorithm>
#include <chrono>
#include <limits>
#include <thread>

#include <sched.h>

#include <gtest/gtest.h>

#include <norvi/host/thread_services.h>

namespace norvi {
namespace {

class ThreadServicesTest : public testing::Test {
  protected:
    ~ThreadServicesTest() override { JobQueue::SetThreadCount(0); }
};

/// What is wrong with the partitions of a loop; empty if nothing is.
String FindFault(UInt32 length, Int threads, Int granularity) {
    const Partitions p = ThreadServices::CalculatePartitions(length, threads, granularity);
    const Int special = Int{p.specialLast} - p.specialFirst + 1, normal = p.count - special;
    if (p.count < 1 || p.count > (threads > 0 ? threads : JobQueue::GetThreadCount()))
        return "count";
    if (special < 0 || normal < 0 || (special > 0 && (p.specialFirst < 0 || p.specialLast >= p.count)))
        return "range of special partitions";
    if (normal * p.partitionSize[0] + special * p.partitionSize[1] != length)
        return "sum";
    const Int least = std::min<Int>(length, std::max<Int>(granularity, 1));
    for (int kind : {0, 1}) {
        const UInt32 size = p.partitionSize[kind], chunk = p.chunkSize[kind];
        if ((kind ? special : normal) == 0)
            continue;
        if (size < least)
            return "partition below the granularity";
        if (chunk < std::max<Int>(least, 1))
            return "chunk below the granularity";
        if (length > 0 && size >= 32 * least && size / chunk < 8)
            return "too few chunks for others to take some over";
    }
    return "";
}

TEST_F(ThreadServicesTest, PartitionsCoverTheLengthExactly) {
    constexpr UInt32 Longest = std::numeric_limits<UInt32>::max();
    constexpr Int Coarsest = std::numeric_limits<Int>::max();
    for (UInt32 length : {0u, 1u, 2u, 3u, 7u, 64u, 1000u, 65537u, 139999u, Longest - 1, Longest})
        for (Int threads : {-1, 0, 1, 2, 3, 7, 64, 1000, 32767, 32768, 70000})
            for (Int granularity :
                 {Int{-5}, Int{0}, Int{1}, Int{2}, Int{7}, Int{1000}, Int{1} << 31, Coarsest})
                EXPECT_EQ(FindFault(length, threads, granularity), "")
                    << length << " iterations, " << threads << " threads, granularity " << granularity;
}

TEST_F(ThreadServicesTest, DefaultThreadCountIsThatOfTheUsableCores) {
    cpu_set_t cores;
    ASSERT_EQ(sched_getaffinity(0, sizeof cores, &cores), 0);
    JobQueue::SetThreadCount(5);
    EXPECT_EQ(JobQueue::GetThreadCount(), 5);
    JobQueue::SetThreadCount(0);
    EXPECT_EQ(JobQueue::GetThreadCount(), CPU_COUNT(&cores));
    EXPECT_EQ(ThreadServices::GetCurrentWorkerThreadIndex(), 0);
}

/// Which workers are inside a job.
struct Workers {
    std::atomic<bool> isBusy[16]{};
    std::atomic<Int> sharedIndices{0};
};

struct Job {
    Workers* workers = nullptr;
    JobGroup* groupToFinish = nullptr;
    Int input = 0;
    Int runs = 0; // plain: whoever waits must see what the job wrote
    Int output = 0;
    Int worker = -1;
    std::thread::id thread{};

    static void Run(void* slot) noexcept {
        Job& job = *static_cast<Job*>(slot);
        job.worker = ThreadServices::GetCurrentWorkerThreadIndex();
        job.thread = std::this_thread::get_id();
        if (job.worker < 0 || job.worker >= 16)
            return;
        if (job.workers->isBusy[job.worker].exchange(true))
            ++job.workers->sharedIndices;
        std::this_thread::sleep_for(std::chrono::microseconds(200)); // long enough for others to begin
        ++job.runs;
        job.output = job.input * 2;
        if (job.groupToFinish)
            ThreadServices::GroupMarkAsFinished(*job.groupToFinish);
        job.workers->isBusy[job.worker] = false;
    }
};

/// Runs the slots [first, first + count) of `jobs` and checks that each ran once.
void RunAndCheck(Workers& workers, BaseArray<Job>& jobs, Int first, Int count) {
    for (Int i = 0; i < std::ssize(jobs); ++i)
        jobs[i] = {.workers = &workers, .input = i};
    JobGroup group = ThreadServices::CreateGroupForQueue(ThreadServices::DefaultQueue, sizeof(Job),
                                                         jobs.data(), std::ssize(jobs));
    Int capacity = 0;
    EXPECT_EQ(ThreadServices::GetStaticJobBuffer(group, capacity), jobs.data());
    EXPECT_EQ(capacity, std::ssize(jobs));
    ThreadServices::GroupBatchAdd(group, first, count, &Job::Run);
    ThreadServices::EnqueueGroupAndWait(group);
    for (Int i = 0; i < std::ssize(jobs); ++i) {
        const bool added = i >= first && i < first + count;
        EXPECT_EQ(jobs[i].runs, added) << i;
        EXPECT_EQ(jobs[i].output, added ? 2 * i : 0) << i;
        EXPECT_LT(jobs[i].worker, added ? JobQueue::GetThreadCount() : 0) << i;
    }
    // A single worker is each caller by itself, and its index is 0 for all of them.
    if (JobQueue::GetThreadCount() > 1) {
        EXPECT_EQ(workers.sharedIndices, 0);
    }
}

TEST_F(ThreadServicesTest, GroupRunsEachJobOnceAndTheCallerTheFirst) {
    for (Int threads : {1, 2, 3, 7}) {
        SCOPED_TRACE(threads);
        JobQueue::SetThreadCount(threads);
        for (Int count : {0, 1, 2, 7, 200}) {
            Workers workers;
            BaseArray<Job> jobs(static_cast<std::size_t>(count) + 5);
            RunAndCheck(workers, jobs, 3, count);
            if (count > 0) {
                EXPECT_EQ(jobs[3].thread, std::this_thread::get_id());
            }
        }
    }
}

TEST_F(ThreadServicesTest, GroupsOfSeveralThreadsRunAtTheSameTime) {
    for (Int threads : {1, 2, 3, 7}) {
        SCOPED_TRACE(threads);
        JobQueue::SetThreadCount(threads);
        Workers workers;
        std::vector<std::thread> callers;
        for (int caller = 0; caller < 3; ++caller)
            callers.emplace_back([&workers] {
                for (int round = 0; round < 5; ++round) {
                    BaseArray<Job> jobs(20);
                    RunAndCheck(workers, jobs, 0, 20);
                }
            });
        for (std::thread& caller : callers)
            caller.join();
    }
}

TEST_F(ThreadServicesTest, FinishedGroupPassesOverJobsThatHaveNotBegun) {
    for (Int threads : {1, 3}) {
        JobQueue::SetThreadCount(threads);
        Workers workers;
        Job jobs[500];
        JobGroup group =
            ThreadServices::CreateGroupForQueue(ThreadServices::DefaultQueue, sizeof(Job), jobs, 500);
        for (Job& job : jobs)
            job = {.workers = &workers, .groupToFinish = &group};
        ThreadServices::GroupBatchAdd(group, 0, 500, &Job::Run);
        ThreadServices::EnqueueGroupAndWait(group);
        Int runs = 0;
        for (const Job& job : jobs)
            runs += job.runs;
        EXPECT_EQ(jobs[0].runs, 1);
        EXPECT_LE(runs, threads); // each worker may have been inside one
    }
}

} // namespace
} // namespace norvi

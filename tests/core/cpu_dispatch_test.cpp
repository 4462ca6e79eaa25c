// Which invocations a dispatch runs, with which ids, in which runs.
#include "support/test_kernels.h"

namespace norvi {
namespace {

struct GridRow {
    Vec3<UInt32> counts;
    Vec3<UInt32> group;
    Vec3<UInt32> expected; ///< the grid that the kernel sees
};

const GridRow grids[] = {
    {{0, 1, 1}, {64, 1, 1}, {0, 1, 1}},
    {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}},
    {{1, 1, 1}, {64, 1, 1}, {1, 1, 1}},
    {{63, 1, 1}, {64, 1, 1}, {63, 1, 1}},
    {{64, 1, 1}, {64, 1, 1}, {64, 1, 1}},
    {{100, 1, 1}, {64, 1, 1}, {100, 1, 1}},
    {{1000, 1, 1}, {7, 1, 1}, {1000, 1, 1}},
    // Only the first component of the group counts in one dimension.
    {{100, 1, 1}, {3, 5, 7}, {100, 1, 1}},
    {{100, 2, 1}, {64, 1, 1}, {100, 2, 1}},
    {{100, 2, 1}, {128, 1, 1}, {128, 2, 1}},
    {{0, 2, 1}, {1, 1, 1}, {1, 2, 1}},
    {{5, 1, 0}, {1, 1, 1}, {5, 1, 1}},
    {{0, 0, 0}, {3, 2, 5}, {3, 2, 5}},
    {{9, 4, 1}, {8, 8, 1}, {9, 8, 1}},
    {{5, 3, 2}, {2, 2, 2}, {5, 3, 2}},
    {{7, 1, 30}, {4, 4, 4}, {7, 4, 30}},
    {{65536, 65536, 1}, {1, 1, 1}, {0, 0, 0}}, // the total wraps to 0
};

/// By three nested loops.
BaseArray<Invocation> Reference(const Vec3<UInt32>& grid, const Vec3<UInt32>& g) {
    BaseArray<Invocation> invocations;
    for (UInt32 z = 0; z < grid.z; ++z)
        for (UInt32 y = 0; y < grid.y; ++y)
            for (UInt32 x = 0; x < grid.x; ++x)
                invocations.push_back(
                    {{x, y, z}, {x % g.x, y % g.y, z % g.z}, {x / g.x, y / g.y, z / g.z}, 1});
    return invocations;
}

class DispatchTest : public ProgramTest {
  protected:
    DispatchTest() {
        classes.Enter<Recorder>("recorder");
        classes.Enter<RangeRecorder>("range");
        classes.Enter<Doubler>("doubler");
        g_sizes = {};
    }

    /// Starts the program anew with a recorder for a grid of `grid`.
    void Prepare(const char* kernel, const Vec3<UInt32>& grid, const KernelSizes& sizes) {
        g_sizes = sizes;
        RangeRecorder::lengths.clear();
        ASSERT_OK(program->Reset());
        AddKernel(kernel);
        StoreAndBind("seen", BaseArray<Invocation>(std::max(grid.x * grid.y * grid.z, 1u)));
        ASSERT_OK(program->SetUniform("gridX", grid.x));
        ASSERT_OK(program->SetUniform("gridY", grid.y));
        ASSERT_OK(program->UpdateUniforms());
    }
    void ExpectSeen(const Vec3<UInt32>& grid, const Vec3<UInt32>& group) {
        BaseArray<Invocation> expected = Reference(grid, group);
        if (expected.empty())
            expected.resize(1);
        EXPECT_TRUE(Read<Invocation>("seen") == expected);
    }
    void ExpectDispatch(const char* kernel, const GridRow& row, const KernelSizes& sizes) {
        Prepare(kernel, row.expected, sizes);
        ASSERT_OK(program->DispatchKernel(row.counts.x, row.counts.y, row.counts.z, false));
        ExpectSeen(row.expected, row.group);
    }
};

TEST_F(DispatchTest, EachInvocationRunsOnceWhateverTheWorkersAndChunks) {
    for (const Int workers : {1, 2, 3, 7}) {
        const UseWorkers use(workers);
        for (const UInt32 chunkSize : {0u, 1u, 5u, 1000u}) {
            const ShareAllWork share(chunkSize);
            for (const char* kernel : {"recorder", "range"})
                for (const GridRow& row : grids) {
                    SCOPED_TRACE(Format("@ workers, chunks of @, @, @ @ @", workers, chunkSize, kernel,
                                        row.counts.x, row.counts.y, row.counts.z));
                    ExpectDispatch(kernel, row, {.group = row.group});
                }
        }
    }
}

TEST_F(DispatchTest, EachInvocationRunsOnceAsTheLoopIsTuned) {
    for (const Int granularity : {Int{1}, Int{16}, Int{100000}, Int{-1}})
        for (const Int threshold : {Int{0}, Int{99}, Int{100000}})
            for (const char* kernel : {"recorder", "range"})
                for (const GridRow& row : grids)
                    ExpectDispatch(kernel, row,
                                   {.group = row.group, .granularity = granularity, .threshold = threshold});
}

TEST_F(DispatchTest, CountUpToTheThresholdStaysOnTheCallersThread) {
    const UseWorkers use(3);
    const ShareAllWork share(1);
    for (const UInt32 count : {1u, 39u, 40u, 41u}) {
        Prepare("range", {count, 1, 1}, {.threshold = 40});
        ASSERT_OK(program->DispatchKernel(count, 1, 1, false));
        EXPECT_EQ(RangeRecorder::lengths,
                  count <= 40 ? BaseArray<UInt32>{count} : BaseArray<UInt32>(count, 1));
    }
    // The threshold is of no account in three dimensions.
    Prepare("range", {5, 2, 1}, {.threshold = 40});
    ASSERT_OK(program->DispatchKernel(5, 2, 1, false));
    EXPECT_EQ(RangeRecorder::lengths, BaseArray<UInt32>(10, 1));
}

TEST_F(DispatchTest, RunsAreAtLeastAsLongAsTheGranularity) {
    const UseWorkers use(3);
    const ShareAllWork share;
    const struct {
        Vec3<UInt32> grid;
        Int granularity;
        UInt32 least;
    } rows[] = {{{10000, 1, 1}, 100, 100},
                {{10000, 1, 1}, 1, 1},
                {{50, 1, 1}, 100, 50},
                // Three dimensions have a granularity of their own.
                {{100, 100, 1}, 1, 64},
                {{100, 100, 1}, 5000, 64}};
    for (const auto& row : rows) {
        Prepare("range", row.grid, {.granularity = row.granularity});
        ASSERT_OK(program->DispatchKernel(row.grid.x, row.grid.y, row.grid.z, false));
        // The last run of a partition may be shorter.
        const auto& lengths = RangeRecorder::lengths;
        EXPECT_LE(std::count_if(lengths.begin(), lengths.end(), [&](UInt32 l) { return l < row.least; }), 3);
        EXPECT_LE(*std::max_element(lengths.begin(), lengths.end()), 5000u);
    }
}

TEST_F(DispatchTest, IndirectDispatchReadsGroupsFromABuffer) {
    using Groups = Vec3<UInt32>;
    const struct {
        Groups groups;
        Vec3<UInt32> group;
        Vec3<UInt32> expected;
        Int threshold;
        BaseArray<UInt32> lengths; ///< of the runs; empty: any
    } rows[] = {{{0, 5, 5}, {8, 1, 1}, {0, 1, 1}, 0, {}},
                {{5, 0, 5}, {8, 1, 1}, {0, 1, 1}, 0, {}},
                {{5, 5, 0}, {8, 1, 1}, {0, 1, 1}, 0, {}},
                {{3, 1, 1}, {8, 1, 1}, {24, 1, 1}, 24, {24}},
                {{3, 1, 1}, {8, 1, 1}, {24, 1, 1}, 23, BaseArray<UInt32>(24, 1)},
                {{2, 3, 1}, {8, 1, 1}, {16, 3, 1}, 0, {}},
                {{1, 1, 1}, {8, 8, 1}, {8, 8, 1}, 0, {}},
                {{1, 2, 3}, {3, 2, 1}, {3, 4, 3}, 0, {}},
                // Numbers of the upper half count as 1.
                {{0x80000000, 1, 0xffffffff}, {8, 1, 1}, {8, 1, 1}, 0, {}}};
    const ShareAllWork share(1);
    for (const auto& row : rows) {
        Prepare("range", row.expected, {.group = row.group, .threshold = row.threshold});
        Store("groups", BaseArray<Groups>{{9, 9, 9}, row.groups});
        ASSERT_OK(program->DispatchIndirectKernel("groups", 1, false));
        ExpectSeen(row.expected, row.group);
        if (!row.lengths.empty()) {
            EXPECT_EQ(RangeRecorder::lengths, row.lengths);
        }
    }
    Store("numbers", BaseArray<Vec3<Int32>>(1));
    const char* const kind = errorkind::IllegalArgument;
    ExpectFailures(*program,
                   {{"no buffer", [](auto& p) { return p.DispatchIndirectKernel("none", 9, false); }, kind,
                     "buffer for update could not be found"},
                    {"type", [](auto& p) { return p.DispatchIndirectKernel("numbers", 9, false); }, kind,
                     "buffer is not of the correct type for dispatch indirect"},
                    {"offset", [](auto& p) { return p.DispatchIndirectKernel("groups", 2, false); }, kind,
                     "dispatch offset out of buffer range"}});
}

TEST_F(DispatchTest, KernelsWithoutSizeDoNotRun) {
    for (const Vec3<UInt32>& group : {Vec3<UInt32>{0, 1, 1}, {1, 0, 1}, {1, 1, 0}}) {
        Prepare("recorder", {1, 1, 1}, {.group = group});
        for (const UInt32 y : {1u, 2u})
            EXPECT_TRUE(FailsWith(program->DispatchKernel(1, y, 1, false), errorkind::IllegalState,
                                  "the active kernel has a work group size of 0"));
    }
}

TEST_F(DispatchTest, KernelWithoutObjectIsANullPointer) {
    bool mayCreate = true;
    static bool* allowed;
    allowed = &mayCreate;
    classes.Enter("rare",
                  []() -> ObjectRef { return *allowed ? MakeObject<Doubler>() : throw std::bad_alloc(); });
    AddKernel("rare");
    mayCreate = false;
    EXPECT_TRUE(
        FailsWith(program->CopyKernel("k", "copy", false, {}), errorkind::OutOfMemory, "Out of memory"));
    program->SetActiveKernel("copy");
    Store("groups", BaseArray<Vec3<UInt32>>{{1, 1, 1}});
    const char* const message = "the active kernel has no kernel object";
    ExpectFailures(
        *program,
        {{"1-D", [](auto& p) { return p.DispatchKernel(1, 1, 1, false); }, errorkind::NullPtr, message},
         {"3-D", [](auto& p) { return p.DispatchKernel(1, 2, 1, false); }, errorkind::NullPtr, message},
         {"indirect", [](auto& p) { return p.DispatchIndirectKernel("groups", 0, false); },
          errorkind::NullPtr, message},
         {"update", [](auto& p) { return p.UpdateUniforms(); }, errorkind::NullPtr, message}});
}

} // namespace
} // namespace norvi

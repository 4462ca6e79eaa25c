// Kernels written with the macros, through the program: what each word does.
#include <algorithm>
#include <array>

#include <norvi/host/module.h>
#include <norvi/host/noise.h>
#include <norvi/host/registry.h>

#include "support/program_test.h"

namespace norvi {

/// The record of words.kernel.
struct Pair {
    Vector32 first;
    Float32 second = 0;
    bool operator==(const Pair&) const = default;
};

namespace {

class MacroKernelTest : public ProgramTest {
  protected:
    MacroKernelTest() { EXPECT_OK(loader.Load(NORVI_TEST_KERNELS)); }
    ~MacroKernelTest() override { program.reset(); }

    static Kernel::KernelRef MakeKernel(const char* name) {
        Result<Kernel::KernelRef> kernel =
            Kernel::KernelRef::Create(Registry::Get(registryid::KernelClasses).FindEntryValue(name));
        EXPECT_OK(kernel);
        EXPECT_OK((*kernel)->Init());
        return *kernel;
    }
    /// "name: type" of all parameters, sorted.
    static BaseArray<String> ParametersOf(KernelInterface& kernel) {
        BaseArray<String> parameters;
        for (const auto& [name, parameter] : kernel.GetKernelParameterMap())
            parameters.push_back(Format("@: @", name, parameter.type));
        std::sort(parameters.begin(), parameters.end());
        return parameters;
    }
    void Run(UInt32 count) {
        ASSERT_OK(program->UpdateUniforms());
        ASSERT_OK(program->DispatchKernel(count, 1, 1, false));
    }
    void Set(const char* name, const Data& value) { ASSERT_OK(program->SetUniform(name, value)); }

    ModuleLoader loader;
};

TEST_F(MacroKernelTest, SizesAndParametersAreWhatTheTextSays) {
    const struct {
        const char* name;
        Vec3<UInt32> group;
        Int granularity, threshold;
        BaseArray<String> parameters;
    } rows[] = {
        {"defaults.kernel", {256, 1, 1}, 16, 0, {"places: Block<Vec3<UInt32>>"}},
        {"sizes.kernel", {2, 3, 5}, 5, 77, {"places: Block<Vec3<UInt32>>", "scale: uint32"}},
        {"out_of_range.kernel",
         {1, 1, 1},
         16,
         100,
         {"readDistance: int32", "source: Block<uint32>", "target: Block<uint32>", "writeDistance: int32"}},
        {"counters.kernel",
         {64, 1, 1},
         1,
         0,
         {"cells: Block<uint32>", "counter: AtomicUInt32*", "largest: AtomicUInt32*",
          "signedCells: Block<int32>", "tickets: Block<uint32>"}},
        {"ramp_vec3_T_.kernel", {16, 1, 1}, 16, 0, {"data: Block<Vector32>", "factor: Vector32"}},
        {"ramp_half_T_.kernel", {16, 1, 1}, 16, 0, {"data: Block<HalfFloat>", "factor: HalfFloat"}},
    };
    for (const auto& row : rows) {
        const Kernel::KernelRef kernel = MakeKernel(row.name);
        EXPECT_EQ(kernel->GetKernelWorkGroupSize(), row.group) << row.name;
        EXPECT_EQ(kernel->GetGranularity(), row.granularity) << row.name;
        EXPECT_EQ(kernel->GetSingleThreadedThreshold(), row.threshold) << row.name;
        EXPECT_EQ(ParametersOf(*kernel), row.parameters) << row.name;
    }
    EXPECT_EQ(Registry::Get(registryid::KernelClasses).FindEntryValue("ramp.kernel"), nullptr);
}

TEST_F(MacroKernelTest, PositionsReachTheBodyInBothForms) {
    AddKernel("defaults.kernel");
    StoreAndBind("places", BaseArray<Vec3<UInt32>>(1000));
    Run(1000);
    BaseArray<Vec3<UInt32>> expected;
    for (UInt32 i = 0; i < 1000; ++i)
        expected.push_back({i % 256, i / 256, 256});
    EXPECT_EQ(Read<Vec3<UInt32>>("places"), expected);
    ASSERT_OK(program->AddKernel("sizes", "sizes.kernel", false, {}));
    Store("grid", BaseArray<Vec3<UInt32>>(24));
    ASSERT_OK(program->SetBufferToActiveKernel("grid", "places"));
    Set("scale", UInt32{10});
    Set("hidden", "cannot be set");
    ASSERT_OK(program->UpdateUniforms());
    ASSERT_OK(program->DispatchKernel(4, 6, 1, false));
    expected.clear();
    for (UInt32 i = 0; i < 24; ++i)
        expected.push_back({i % 4 % 2 * 10, i / 4 % 3 * 10, 3});
    EXPECT_EQ(Read<Vec3<UInt32>>("grid"), expected);
}

TEST_F(MacroKernelTest, SingleInvocationAndCopyWorkLikeTheRange) {
    const Kernel::KernelRef kernel = MakeKernel("ramp_float_T_.kernel");
    Float32 values[4] = {-1, -1, -1, -1};
    const Block<Float32> block(values, 4);
    const Float32 two = 2, three = 3;
    EXPECT_OK(kernel->Set("data", &block));
    EXPECT_OK(kernel->Set("factor", &two));
    EXPECT_OK(kernel->Set("unknown", nullptr));
    Result<ObjectRef> object = kernel->CopyInstance();
    ASSERT_OK(object);
    const Kernel::KernelRef copy = *Kernel::KernelRef::Of(*object);
    EXPECT_OK(copy->Set("factor", &three));
    EXPECT_OK(kernel->Kernel({2, 0, 0}, {2, 0, 0}, {}));
    EXPECT_OK(copy->Kernel({1, 0, 0}, {1, 0, 0}, {}));
    auto* range = static_cast<KernelRangeInterface*>(copy->QueryInterface(KernelRangeInterface::InterfaceId));
    ASSERT_NE(range, nullptr);
    EXPECT_OK(range->KernelRange(3, 4, 4, 1));
    EXPECT_EQ(BaseArray<Float32>(values, values + 4), (BaseArray<Float32>{-1, 3, 4, 9}));
    EXPECT_EQ(copy->GetKernelWorkGroupSize(), (Vec3<UInt32>{16, 1, 1}));
}

TEST_F(MacroKernelTest, TemplateIsCompiledForEachOfItsTypes) {
    const auto run = [&](const char* kernel, const Data& factor, auto elements) {
        ASSERT_OK(program->Reset());
        AddKernel(kernel);
        using Element = typename decltype(elements)::value_type;
        StoreAndBind("data", BaseArray<Element>(elements.size()));
        Set("factor", factor);
        Run(static_cast<UInt32>(elements.size()));
        EXPECT_EQ(Read<Element>("data"), elements) << kernel;
    };
    run("ramp_float_T_.kernel", 0.5f, BaseArray<Float32>{0, 0.5f, 1, 1.5f});
    run("ramp_int_T_.kernel", 3, BaseArray<Int32>{0, 3, 6, 9});
    run("ramp_half_T_.kernel", 0.25f,
        BaseArray<HalfFloat>{HalfFloat(0.0f), HalfFloat(0.25f), HalfFloat(0.5f)});
    run("ramp_vec3_T_.kernel", Vector32{1, 2, 3}, BaseArray<Vector32>{{0, 0, 0}, {1, 2, 3}, {2, 4, 6}});
}

TEST_F(MacroKernelTest, FunctionsSharedMemoryAndStatements) {
    AddKernel("words.kernel");
    constexpr int count = 20;
    BaseArray<Float32> values;
    for (int i = 0; i < count + 3; ++i)
        values.push_back(static_cast<Float32>(i * i));
    StoreAndBind("values", values);
    StoreAndBind("sums", BaseArray<Vector2d32>(count));
    StoreAndBind("pairs", BaseArray<Pair>(count));
    StoreAndBind("kinds", BaseArray<Int32>(count));
    StoreAndBind("noises", BaseArray<Vector2d32>(count, {9, 9}));
    SquareMatrix4d32 matrix;
    matrix.columns[0].w = 0.5f;
    matrix.columns[1].w = 1;
    matrix.columns[2].w = 2;
    Set("matrix", matrix);
    Set("count", count);
    Run(count + 5);
    BaseArray<Vector2d32> sums;
    BaseArray<Pair> pairs;
    BaseArray<Int32> kinds;
    for (int i = 0; i < count; ++i) {
        const auto n = static_cast<std::size_t>(i);
        const Float32 sum = values[n] + values[n + 1] + values[n + 2];
        sums.push_back({sum, sum});
        pairs.push_back({{0.5f, 1, 2}, static_cast<Float32>(i) + 3.5f});
        kinds.push_back(std::array{11, 10, 100, 0}[n % 4]);
    }
    EXPECT_EQ(Read<Vector2d32>("sums"), sums);
    EXPECT_EQ(Read<Pair>("pairs"), pairs);
    EXPECT_EQ(Read<Int32>("kinds"), kinds);
    EXPECT_EQ(Read<Vector2d32>("noises"), (BaseArray<Vector2d32>(count, {0, 0}))) << "none was chosen";

    Set("noiseMode_0", 5);
    Set("noiseSeed_0", 33);
    Run(count);
    Result<NoiseRef> noise = NoiseRef::Create(noiseclassid::Box);
    ASSERT_OK(noise);
    ASSERT_OK((*noise)->Init(33, 10, {}));
    BaseArray<Vector2d32> noises;
    for (int i = 0; i < count; ++i)
        noises.push_back({(*noise)->Noise({static_cast<Float32>(i), 0.5f, 0}, 0), 0});
    EXPECT_EQ(Read<Vector2d32>("noises"), noises);
    EXPECT_NE(noises[1].x, noises[2].x);
}

TEST_F(MacroKernelTest, AtomicOperationsOfManyWorkers) {
    const UseWorkers use(3);
    const ShareAllWork share(1);
    constexpr UInt32 count = 1000;
    AddKernel("counters.kernel");
    StoreAndBind("cells", BaseArray<UInt32>{0, 0, 0xffffffff, 5, 0, 0xffffffff, 1, 0, 0});
    StoreAndBind("signedCells", BaseArray<Int32>{-2000, 2000});
    StoreAndBind("tickets", BaseArray<UInt32>(count));
    ASSERT_OK(program->AddAtomicCounter("counter", {}));
    ASSERT_OK(program->SetAtomicCounterToActiveKernel("counter"));
    Run(count); // `largest` is not bound
    ASSERT_OK(program->AddAtomicCounter("largest", {}));
    ASSERT_OK(program->SetAtomicCounterToActiveKernel("largest"));
    EXPECT_EQ(*program->GetAtomicCounter("counter"), 2 * count);
    EXPECT_EQ(*program->GetAtomicCounter("largest"), 0u);
    BaseArray<UInt32> tickets = Read<UInt32>("tickets");
    std::sort(tickets.begin(), tickets.end());
    for (UInt32 i = 0; i < count; ++i)
        EXPECT_EQ(tickets[i], 2 * i);
    BaseArray<UInt32> cells = Read<UInt32>("cells");
    EXPECT_TRUE(cells[7] >= 1 && cells[7] <= count);
    cells[7] = 0;
    EXPECT_EQ(cells,
              (BaseArray<UInt32>{count * (count - 1) / 2, 0xffffffff, 0xffff0000, 5, count - 1, 0, 7, 0, 1}));
    EXPECT_EQ(Read<Int32>("signedCells"), (BaseArray<Int32>{50, 50 - 999}));
    Run(count);
    EXPECT_EQ(*program->GetAtomicCounter("largest"), count - 1);
}

TEST_F(MacroKernelTest, FormulasGiveTheSameTogetherAndOneByOne) {
    const struct {
        const char* inner;
        const char* outer;
        Float32 (*expectedInner)(int index);
        Float32 (*expectedOuter)(Float32 value, int index);
    } rows[] = {
        {"", "", [](int i) { return Float32(i); }, [](Float32 v, int) { return v; }},
        {"value * 2", "", [](int i) { return Float32(2 * i); }, [](Float32 v, int) { return v; }},
        {"", "value + 1.5", [](int i) { return Float32(i); }, [](Float32 v, int) { return v + 1.0f; }},
        {"value + seed", "value * 3 - seed", [](int i) { return Float32(6 * i); },
         [](Float32 v, int i) { return 3 * v - Float32(5 * i); }},
    };
    for (const auto& row : rows)
        for (const Int workers : {1, 2})
            for (const UInt32 chunkSize : {0u, 1u, 255u, 256u, 600u})
                for (const char* file : {"formulas_first.kernel", "formulas_direct.kernel"}) {
                    const UseWorkers use(workers);
                    const ShareAllWork share(chunkSize);
                    ASSERT_OK(program->Reset());
                    AddKernel(file);
                    constexpr int count = 1000;
                    StoreAndBind("result", BaseArray<Float32>(count));
                    Set("count", count);
                    ASSERT_OK(program->SetFormula("inner", row.inner));
                    ASSERT_OK(program->SetFormula("outer", row.outer));
                    Run(count + 9);
                    BaseArray<Float32> expected;
                    for (int i = 0; i < count; ++i)
                        expected.push_back(i % 7 == 3   ? -1
                                           : i % 2 == 1 ? row.expectedOuter(row.expectedInner(i), i)
                                                        : row.expectedInner(i));
                    EXPECT_EQ(Read<Float32>("result"), expected)
                        << file << " " << row.inner << " " << row.outer;
                }
}

TEST_F(MacroKernelTest, UnboundBufferEndsTheDispatch) {
    AddKernel("counters.kernel");
    StoreAndBind("cells", BaseArray<UInt32>(9));
    StoreAndBind("tickets", BaseArray<UInt32>(9));
    ASSERT_OK(program->UpdateUniforms());
    for (const UInt32 y : {1u, 2u})
        EXPECT_TRUE(FailsWith(program->DispatchKernel(1, y, 1, false), errorkind::IllegalState,
                              "the buffer parameter 'signedCells' of kernel 'counters.kernel' is not bound"));
    EXPECT_EQ(Read<UInt32>("cells"), BaseArray<UInt32>(9));
}

TEST_F(MacroKernelTest, WrongIndexIsNamedAndTouchesNothing) {
    const struct {
        Int32 readDistance, writeDistance;
        const char* message; ///< null: none
    } rows[] = {
        {0, 0, nullptr},
        {2, -3,
         "index -3 of parameter 'target' of kernel 'out_of_range.kernel' is out of range, the buffer has 4 "
         "elements"},
        {1, 0, nullptr},
        {2, 0,
         "index 5 of parameter 'source' of kernel 'out_of_range.kernel' is out of range, the buffer has 5 "
         "elements"},
        {-1, 0,
         "index -1 of parameter 'source' of kernel 'out_of_range.kernel' is out of range, the buffer has 5 "
         "elements"},
        {0, 1,
         "index 4 of parameter 'target' of kernel 'out_of_range.kernel' is out of range, the buffer has 4 "
         "elements"},
        {0, 0x7ffffff0,
         "index 2147483632 of parameter 'target' of kernel 'out_of_range.kernel' is out of range, the buffer "
         "has 4 elements"},
    };
    for (const auto& row : rows) {
        ASSERT_OK(program->Reset());
        AddKernel("out_of_range.kernel");
        StoreAndBind("source", BaseArray<UInt32>{1, 2, 3, 4, 5});
        StoreAndBind("target", BaseArray<UInt32>(4, 77));
        Set("readDistance", row.readDistance);
        Set("writeDistance", row.writeDistance);
        ASSERT_OK(program->UpdateUniforms());
        const Result<void> result = program->DispatchKernel(4, 1, 1, false);
        if (row.message) {
            EXPECT_TRUE(FailsWith(result, errorkind::IllegalState, row.message));
        } else {
            EXPECT_OK(result);
        }
        EXPECT_EQ(Read<UInt32>("source"), (BaseArray<UInt32>{1, 2, 3, 4, 5}));
    }
}

} // namespace
} // namespace norvi

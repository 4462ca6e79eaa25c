// Uniforms, atomic counters and noise: what UpdateUniforms writes into the kernel object.
#include <norvi/host/noise.h>

#include "support/test_kernels.h"

namespace norvi {
namespace {

/// A kernel with a parameter of each kind, which tests look into.
class Typed final : public DeclaredKernel<Typed> {
  public:
    void Declare() {
        latest = this;
        AddParameter("u", u);
        AddParameter("i", i);
        AddParameter("f", f);
        AddParameter("flag", flag);
        AddParameter("vector", vector);
        AddParameter("text", text);
        AddParameter("data", data);
        AddParameter("counter", counter);
        AddParameter("formula", formula);
        AddParameter("noiseData", noiseData);
        SetWorkGroupSize({1, 1, 1});
    }
    Result<void> Kernel(const Vec3<UInt32>&, const Vec3<UInt32>&, const Vec3<UInt32>&) override {
        if (counter)
            ++*counter;
        for (const NoiseRef& noise : noiseData)
            noiseValue = noise->Noise({0.3f, 0.4f, 0.5f}, 0.0f);
        return OK;
    }

    static inline Typed* latest = nullptr;
    UInt32 u = 0;
    Int32 i = 0;
    Float32 f = 0;
    Bool flag = false;
    Vector32 vector;
    String text;
    Block<UInt32> data;
    AtomicUInt32* counter = nullptr;
    FormulaData* formula = nullptr;
    Block<NoiseRef> noiseData;
    Float32 noiseValue = 0;
};

class UniformTest : public ProgramTest {
  protected:
    UniformTest() {
        classes.Enter<Typed>("typed");
        classes.Enter<Doubler>("doubler");
        AddKernel("typed");
    }
    BaseArray<String> NoiseClasses() {
        BaseArray<String> ids;
        for (const NoiseRef& noise : Typed::latest->noiseData)
            ids.push_back(noise->GetClass()->GetId().ToString());
        return ids;
    }
    void SetNoise(int index, const Data& mode, const Data& seed) {
        ASSERT_OK(program->SetUniform(Format("noiseMode_@", index), mode));
        ASSERT_OK(program->SetUniform(Format("noiseSeed_@", index), seed));
    }
};

TEST_F(UniformTest, ValuesReachTheMembersOfTheirNames) {
    EXPECT_OK(program->UpdateUniforms());
    const std::pair<const char*, Data> values[] = {{"u", Float64{7}},
                                                   {"i", Int64{-3}},
                                                   {"f", UChar{5}},
                                                   {"flag", true},
                                                   {"vector", Vector32{1, 2, 3}},
                                                   {"text", "words"},
                                                   {"unknown", "anything"},
                                                   {"U", "names are exact"}};
    for (const auto& [name, value] : values)
        ASSERT_OK(program->SetUniform(name, value));
    EXPECT_EQ(Typed::latest->u, 0u) << "nothing is seen before UpdateUniforms";
    ASSERT_OK(program->UpdateUniforms());
    EXPECT_EQ(Typed::latest->u, 7u);
    EXPECT_EQ(Typed::latest->i, -3);
    EXPECT_EQ(Typed::latest->f, 5.0f);
    EXPECT_TRUE(Typed::latest->flag);
    EXPECT_EQ(Typed::latest->vector, (Vector32{1, 2, 3}));
    EXPECT_EQ(Typed::latest->text, "words");
}

TEST_F(UniformTest, WhatDoesNotSuitTheMemberIsRefused) {
    const struct {
        const char* name;
        Data value;
        const char* message;
    } rows[] = {
        {"u", Int32{-1},
         "uniform 'u' is -1 of type int32, which does not fit the kernel's parameter of type uint32 exactly"},
        {"i", Float32{0.5f},
         "uniform 'i' is 0.5 of type float32, which does not fit the kernel's parameter of type int32 "
         "exactly"},
        {"f", Int32{16777217},
         "uniform 'f' is 16777217 of type int32, which does not fit the kernel's parameter of type float32 "
         "exactly"},
        {"u", true, "uniform 'u' is of type bool, but the kernel's parameter is of type uint32"},
        {"u", "2", "uniform 'u' is of type String, but the kernel's parameter is of type uint32"},
        {"u", Data(), "uniform 'u' is of type , but the kernel's parameter is of type uint32"},
        {"flag", Int32{1}, "uniform 'flag' is of type int32, but the kernel's parameter is of type bool"},
        {"vector", Vec3<Int32>{},
         "uniform 'vector' is of type Vec3<Int32>, but the kernel's parameter is of type Vector32"},
        {"data", UInt32{1},
         "uniform 'data' is of type uint32, but the kernel's parameter is of type Block<uint32>"},
        {"counter", static_cast<AtomicUInt32*>(nullptr),
         "uniform 'counter' is of type AtomicUInt32*, but the kernel's parameter is of type AtomicUInt32*"},
    };
    for (const auto& row : rows) {
        ASSERT_OK(program->Reset());
        AddKernel("typed");
        ASSERT_OK(program->SetUniform(row.name, row.value));
        EXPECT_TRUE(FailsWith(program->UpdateUniforms(), errorkind::IllegalState, row.message));
    }
    // What was set before the failure stays set, and a better value mends it.
    ASSERT_OK(program->Reset());
    AddKernel("typed");
    ASSERT_OK(program->SetUniform("f", 2.0f));
    ASSERT_OK(program->SetUniform("u", Int32{-1}));
    EXPECT_FALSE(program->UpdateUniforms().IsOk());
    EXPECT_EQ(Typed::latest->f, 2.0f);
    ASSERT_OK(program->SetUniform("u", Int32{1}));
    EXPECT_OK(program->UpdateUniforms());
}

TEST_F(UniformTest, BuffersOfOtherElementsOrNoneAreRefused) {
    const char* const message =
        "buffer with elements '@' is of type @, but the kernel's parameter is of type @";
    Store<Vector32>("vectors", {{}});
    Store<Float32>("floats", {1});
    Store<Vector4d32>("wide", {{}});
    const struct {
        const char* buffer;
        const char* parameter;
        String message;
    } rows[] = {
        {"vectors", "data", Format(message, "data", "Vector32", "Block<uint32>")},
        {"floats", "f", Format(message, "f", "float32", "float32")},
        {"floats", "counter", Format(message, "counter", "float32", "AtomicUInt32*")},
        // A noise reference has the size of such a vector.
        {"wide", "noiseData", Format(message, "noiseData", "Vector4d32", DataType::Of<Block<NoiseRef>>())}};
    for (const auto& row : rows) {
        ASSERT_OK(program->SetBufferToActiveKernel(row.buffer, row.parameter));
        EXPECT_TRUE(FailsWith(program->UpdateUniforms(), errorkind::IllegalState, row.message));
        EXPECT_TRUE(FailsWith(program->DispatchKernel(1, 1, 1, false), errorkind::IllegalState, row.message));
        ASSERT_OK(program->AddKernel(Format("after @", row.parameter), "typed", false, {}));
    }
    ASSERT_OK(program->CreateUniformBuffer("empty", DataType::Of<UInt32>(), 0));
    ASSERT_OK(program->SetBufferToActiveKernel("empty", "data"));
    EXPECT_TRUE(
        FailsWith(program->UpdateUniforms(), errorkind::IllegalState, "stored data block has size 0"));
    // Elements of the same size are taken as what the kernel says, and unknown parameters passed over.
    ASSERT_OK(program->SetBufferToActiveKernel("floats", "data"));
    ASSERT_OK(program->SetBufferToActiveKernel("vectors", "unknown"));
    ASSERT_OK(program->UpdateUniforms());
    EXPECT_EQ(Typed::latest->data[0], 0x3f800000u);
}

TEST_F(UniformTest, AtomicCountersCountOverDispatches) {
    ASSERT_OK(program->AddAtomicCounter("counter", UInt32{99}));
    EXPECT_EQ(*program->GetAtomicCounter("counter"), 0u);
    ASSERT_OK(program->SetAtomicCounterToActiveKernel("counter"));
    ASSERT_OK(program->UpdateUniforms());
    ASSERT_OK(program->DispatchKernel(1000, 1, 1, false));
    ASSERT_OK(program->DispatchKernel(10, 10, 1, false));
    EXPECT_EQ(*program->GetAtomicCounter("counter"), 1100u);
    ASSERT_OK(program->SetAtomicCounter("counter", 0xffffffff));
    ASSERT_OK(program->DispatchKernel(2, 1, 1, false));
    EXPECT_EQ(*program->GetAtomicCounter("counter"), 1u);
    // Another one under the id starts at 0; the kernel keeps the old one until it is bound again.
    ASSERT_OK(program->AddAtomicCounter("counter", {}));
    ASSERT_OK(program->DispatchKernel(2, 1, 1, false));
    EXPECT_EQ(*program->GetAtomicCounter("counter"), 0u);
    ExpectFailures(*program,
                   {{"set", [](auto& p) { return p.SetAtomicCounter("none", 1); }, errorkind::IllegalArgument,
                     "atomic identifier not found"},
                    {"get", [](auto& p) { return WithoutValue(p.GetAtomicCounter("none")); },
                     errorkind::IllegalArgument, "atomic identifier not found"},
                    {"bind", [](auto& p) { return p.SetAtomicCounterToActiveKernel("none"); },
                     errorkind::NotFound, "no entry for key 'none'"},
                    {"type",
                     [](auto& p) -> Result<void> {
                         NORVI_TRY(p.AddAtomicCounter("data", {}));
                         NORVI_TRY(p.SetAtomicCounterToActiveKernel("data"));
                         return p.UpdateUniforms();
                     },
                     errorkind::IllegalState,
                     "what is bound to 'data' is of type AtomicUInt32*, but the kernel's parameter is of "
                     "type Block<uint32>"}});
}

TEST_F(UniformTest, NoiseHasTheClassOfItsModeAndItsSeed) {
    const BaseArray<int> modes{0, 1, 5, 24, 25, -1};
    BaseArray<String> expected;
    for (int index = 0; index < 6; ++index) {
        SetNoise(index, modes[static_cast<std::size_t>(index)], index * 7);
        expected.push_back(NoiseClassIdOfMode(static_cast<UInt32>(modes[static_cast<std::size_t>(index)])));
    }
    ASSERT_OK(program->UpdateUniforms());
    EXPECT_EQ(NoiseClasses(), expected);
    // The kernel evaluates the last one.
    const auto value = [&](int seed) {
        SetNoise(5, 0, seed);
        EXPECT_OK(program->UpdateUniforms());
        EXPECT_OK(program->DispatchKernel(1, 1, 1, false));
        return Typed::latest->noiseValue;
    };
    const Float32 first = value(1);
    EXPECT_NE(value(2), first);
    EXPECT_EQ(value(1), first);
}

TEST_F(UniformTest, NoiseListEndsAtTheFirstMissingMode) {
    SetNoise(0, 5, 1);
    SetNoise(2, 3, 1);
    ASSERT_OK(program->UpdateUniforms());
    EXPECT_EQ(NoiseClasses(), BaseArray<String>{"net.norvi.render.rendernoiseclass.box"});
    // Ids beyond the 128th are nobody's, however often the program was initialised.
    ASSERT_OK(program->Init({}, {}, 0, false));
    for (int index = 0; index < 130; ++index)
        SetNoise(index, 0, index);
    ASSERT_OK(program->UpdateUniforms());
    EXPECT_EQ(NoiseClasses().size(), 128u);
}

TEST_F(UniformTest, FaultyNoiseIsReportedAndTheKernelKeepsWhatItHad) {
    SetNoise(0, 5, 1);
    ASSERT_OK(program->UpdateUniforms());
    const struct {
        const char* id;
        Data value;
        const char* kind;
        const char* message;
    } rows[] = {
        {"noiseMode_1", Int32{0}, errorkind::NotFound, "no entry for key 'noiseSeed_1'"},
        {"noiseSeed_1", UInt32{1}, errorkind::IllegalState, "Data holds uint32, but int32 is needed."},
        {"noiseMode_0", 1.0f, errorkind::IllegalState, "Data holds float32, but int32 is needed."}};
    for (const auto& row : rows) {
        ASSERT_OK(program->SetUniform(row.id, row.value));
        EXPECT_TRUE(FailsWith(program->UpdateUniforms(), row.kind, row.message));
        EXPECT_EQ(NoiseClasses(), BaseArray<String>{"net.norvi.render.rendernoiseclass.box"});
        EXPECT_OK(program->DispatchKernel(1, 1, 1, false));
    }
}

TEST_F(UniformTest, BuffersThatMoveAfterAFailedUpdateAreNotUsed) {
    // "u" stops UpdateUniforms before the buffers are looked at.
    Store<UInt32>("data", {1});
    ASSERT_OK(program->AddKernel("d", "doubler", false, {}));
    ASSERT_OK(program->SetBufferToActiveKernelSameId("data"));
    ASSERT_OK(program->UpdateUniforms());
    ASSERT_OK(program->SetUniform("scale", "wrong"));
    EXPECT_FALSE(program->UpdateUniforms().IsOk());
    ASSERT_OK(program->CreateUniformBuffer("data", DataType::Of<UInt32>(), 100000));
    ASSERT_OK(program->DispatchKernel(100000, 1, 1, false));
    EXPECT_EQ(Read<UInt32>("data")[99999], 0u);
}

} // namespace
} // namespace norvi

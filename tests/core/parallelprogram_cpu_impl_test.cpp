// The whole road of a kernel, the kernel table, and what does nothing on the processor.
#include <norvi/host/module.h>

#include "support/test_kernels.h"

namespace norvi {
namespace {

/// Fails where `failure` says.
class Fragile final : public KernelOf<Fragile> {
  public:
    Result<void> Init() noexcept override {
        return fails ? Result<void>(IllegalStateError("Init fails")) : Result<void>();
    }
    Result<void> Kernel(const Vec3<UInt32>&, const Vec3<UInt32>&, const Vec3<UInt32>&) override { return OK; }
    static inline bool fails = false;
};

ObjectRef FailToAllocate() {
    throw std::bad_alloc();
}

class KernelTableTest : public ProgramTest {
  protected:
    KernelTableTest() {
        classes.Enter<Doubler>("doubler");
        classes.Enter<Recorder>("recorder.kernel");
        classes.Enter<Fragile>("fragile");
        Fragile::fails = false;
    }

    /// Dispatches the active kernel over "data" of `count` elements with the value `scale`.
    BaseArray<UInt32> Double(UInt32 count, UInt32 scale) {
        EXPECT_OK(program->SetUniform("scale", scale));
        EXPECT_OK(program->UpdateUniforms());
        EXPECT_OK(program->DispatchKernel(count, 1, 1, false));
        EXPECT_OK(program->Execute(true));
        return Elements<UInt32>(program->GetKernelBufferData("data"));
    }
};

BaseArray<UInt32> Multiples(UInt32 count, UInt32 scale) {
    BaseArray<UInt32> multiples(count);
    for (UInt32 i = 0; i < count; ++i)
        multiples[i] = i * scale;
    return multiples;
}

TEST_F(KernelTableTest, WholeRoadWithAClassWrittenByHandAndWithAShippedKernel) {
    ModuleLoader loader;
    ASSERT_OK(loader.Load(NORVI_MODULE_DIR "/norvi-kernels.so"));
    for (const char* file : {"doubler", "doubler.kernel", "relative:kernels/doubler.kernel"}) {
        ASSERT_OK(program->AddKernel("k", file, false, {})) << file;
        ASSERT_OK(program->CreateUniformBuffer("data", DataType::Of<UInt32>(), 100));
        ASSERT_OK(program->SetBufferToActiveKernelSameId("data"));
        EXPECT_EQ(Double(100, 2), Multiples(100, 2)) << file;
        EXPECT_EQ(Read<UInt32>("data"), Multiples(100, 2)) << file;
        ASSERT_OK(program->Reset());
    }
}

TEST_F(KernelTableTest, FailuresNameTheirCause) {
    classes.Enter("greedy", &FailToAllocate);
    classes.Enter("no_kernel", []() -> ObjectRef { return std::make_shared<ParallelProgramCPUImpl>(); });
    AddKernel("doubler");
    Fragile::fails = true;
    ExpectFailures(
        *program,
        {{"id in use", [](auto& p) { return p.AddKernel("k", "recorder.kernel", false, {}); },
          errorkind::IllegalArgument, "Kernel id is already used"},
         {"id in use goes before the class", [](auto& p) { return p.AddKernel("k", "none", false, {}); },
          errorkind::IllegalArgument, "Kernel id is already used"},
         {"no class", [](auto& p) { return p.AddKernel("new", "a/none", false, {}); }, errorkind::NullPtr,
          "no kernel class 'none' is registered"},
         {"suffix belongs to the name", [](auto& p) { return p.AddKernel("new", "recorder", false, {}); },
          errorkind::NullPtr, "no kernel class 'recorder' is registered"},
         {"empty file", [](auto& p) { return p.AddKernel("new", {}, false, {}); }, errorkind::NullPtr,
          "no kernel class '' is registered"},
         {"Init", [](auto& p) { return p.AddKernel("new", "fragile", false, {}); }, errorkind::IllegalState,
          "Init fails"},
         {"creation", [](auto& p) { return p.AddKernel("new", "greedy", false, {}); }, errorkind::OutOfMemory,
          "Out of memory"},
         {"no kernel", [](auto& p) { return p.AddKernel("new", "no_kernel", false, {}); }, errorkind::NullPtr,
          "the object does not implement the interface 'net.norvi.interface.kernelinterface'"},
         {"copy of none", [](auto& p) { return p.CopyKernel("none", "k", false, {}); },
          errorkind::IllegalArgument, "source kernel could not be found"},
         {"copy to used id",
          [](auto& p) -> Result<void> {
              Fragile::fails = false;
              NORVI_TRY(p.AddKernel("f", "fragile", false, {}));
              return p.CopyKernel("k", "f", false, {});
          },
          errorkind::IllegalArgument, "Kernel id is already used"}});
    EXPECT_FALSE(program->HasKernel("new"));
    EXPECT_EQ(program->GetActiveKernelId(), InternedId("f"));
    // A copy that fails leaves an entry that cannot run.
    Fragile::fails = true;
    EXPECT_TRUE(
        FailsWith(program->CopyKernel("f", "copy", false, {}), errorkind::IllegalState, "Init fails"));
    program->SetActiveKernel("copy");
    EXPECT_TRUE(FailsWith(program->DispatchKernel(1, 1, 1, false), errorkind::IllegalState,
                          "the active kernel has a work group size of 0"));
    EXPECT_EQ(program->GetProgramCount("doubler"), 1);
    EXPECT_EQ(program->GetProgramCount("recorder.kernel"), 0);
}

TEST_F(KernelTableTest, ActiveKernelIsTheOneAddedLastOrChosen) {
    EXPECT_TRUE(program->GetActiveKernelId().IsEmpty());
    program->SetActiveKernel("a");
    EXPECT_TRUE(program->GetActiveKernelId().IsEmpty());
    ASSERT_OK(program->AddKernel("a", "doubler", true, {}));
    EXPECT_EQ(program->GetActiveKernelId(), InternedId("a"));
    ASSERT_OK(program->AddKernel("b", "some/where/doubler", true, {}));
    ASSERT_OK(program->CopyKernel("b", "c", true, {}));
    EXPECT_EQ(program->GetActiveKernelId(), InternedId("b"));
    ASSERT_OK(program->CopyKernel("none", "none", true, {}));
    EXPECT_FALSE(program->HasKernel("none"));
    program->SetActiveKernel("none");
    EXPECT_EQ(program->GetActiveKernelId(), InternedId("b"));
    program->SetActiveKernel("c");
    EXPECT_EQ(program->GetActiveKernelId(), InternedId("c"));
    const std::pair<const char*, Int> counts[] = {
        {"doubler", 2}, {"", 0}, {"Doubler", 0}, {"double", 0}, {"doubler.kernel", 0}};
    for (const auto& [name, count] : counts)
        EXPECT_EQ(program->GetProgramCount(name), count) << name;
}

TEST_F(KernelTableTest, CopiesShareBindingsAndThenGoTheirOwnWays) {
    AddKernel("doubler");
    StoreAndBind<UInt32>("data", {7, 7, 7});
    ASSERT_OK(program->SetUniform("scale", UInt32{3}));
    ASSERT_OK(program->CopyKernel("k", "copy", false, {}));
    program->SetActiveKernel("copy");
    ASSERT_OK(program->UpdateUniforms());
    ASSERT_OK(program->DispatchKernel(3, 1, 1, false));
    EXPECT_EQ(Read<UInt32>("data"), Multiples(3, 3));
    Store<UInt32>("other", {0, 0});
    ASSERT_OK(program->SetBufferToActiveKernel("other", "data"));
    EXPECT_EQ(Double(2, 5), Multiples(2, 5));
    program->SetActiveKernel("k");
    ASSERT_OK(program->UpdateUniforms());
    ASSERT_OK(program->DispatchKernel(3, 1, 1, false));
    EXPECT_EQ(Read<UInt32>("data"), Multiples(3, 3));
    EXPECT_EQ(Read<UInt32>("other"), Multiples(2, 5));
}

TEST_F(KernelTableTest, ResetEmptiesTheProgramForAnotherUse) {
    ASSERT_OK(program->Reset());
    for (int round = 0; round < 2; ++round) {
        AddKernel("doubler");
        StoreAndBind<UInt32>("data", {1, 2});
        ASSERT_OK(program->AddAtomicCounter("counter", {}));
        EXPECT_EQ(Double(2, 4), Multiples(2, 4));
        ASSERT_OK(program->Reset());
        EXPECT_FALSE(program->HasKernel("k"));
        EXPECT_FALSE(program->HasBuffer("data"));
        EXPECT_TRUE(program->GetActiveKernelId().IsEmpty());
        EXPECT_EQ(program->GetProgramCount("doubler"), 0);
        EXPECT_TRUE(FailsWith(program->GetAtomicCounter("counter"), errorkind::IllegalArgument,
                              "atomic identifier not found"));
    }
}

TEST_F(KernelTableTest, WithoutActiveKernelItsOperationsFail) {
    Store<UInt32>("data", {1});
    ASSERT_OK(program->AddAtomicCounter("counter", {}));
    const Data link = *program->GetGlobalBufferLink("data");
    const char* const none = "no active kernel set";
    const auto row = [none](const char* name, std::function<Result<void>(ParallelProgramInterface&)> call) {
        return FailingCall{name, std::move(call), errorkind::IllegalState, none};
    };
    ExpectFailures(
        *program,
        {row("SwapBuffers", [](auto& p) { return p.SwapBuffers("a", "b"); }),
         row("SetKernelBufferLink", [&](auto& p) { return p.SetKernelBufferLink("data", link); }),
         row("SetKernelBufferLink of no link", [](auto& p) { return p.SetKernelBufferLink("data", 1); }),
         row("GetKernelBufferLink", [](auto& p) { return WithoutValue(p.GetKernelBufferLink("data")); }),
         row("GetKernelBufferData", [](auto& p) { return WithoutValue(p.GetKernelBufferData("data")); }),
         row("SetKernelTextureLink", [](auto& p) { return p.SetKernelTextureLink("t", {}); }),
         row("SetAtomicCounter", [](auto& p) { return p.SetAtomicCounterToActiveKernel("counter"); }),
         row("SetUniform", [](auto& p) { return p.SetUniform("scale", 1); }),
         row("SetFormula", [](auto& p) { return p.SetFormula("formula", 1); }),
         row("UpdateUniforms", [](auto& p) { return p.UpdateUniforms(); }),
         row("DispatchKernel", [](auto& p) { return p.DispatchKernel(0, 1, 1, false); }),
         row("DispatchKernel 3-D", [](auto& p) { return p.DispatchKernel(0, 0, 0, false); }),
         row("DispatchIndirectKernel", [](auto& p) { return p.DispatchIndirectKernel("none", 9, false); }),
         row("UpdateColorConversion",
             [](auto& p) { return p.UpdateColorConversionActiveKernel({}, {}, "f", "g"); }),
         row("SameId", [](auto& p) { return p.SetBufferToActiveKernelSameId("data"); }),
         row("SetBuffer", [](auto& p) { return p.SetBufferToActiveKernel("data", "x"); }),
         // A lookup that fails is reported first.
         {"SameId of none", [](auto& p) { return p.SetBufferToActiveKernelSameId("none"); },
          errorkind::NotFound, "no entry for key 'none'"},
         {"SetBuffer of none", [](auto& p) { return p.SetBufferToActiveKernel("none", "x"); },
          errorkind::NotFound, "no entry for key 'none'"},
         {"counter of none", [](auto& p) { return p.SetAtomicCounterToActiveKernel("none"); },
          errorkind::NotFound, "no entry for key 'none'"}});
}

TEST_F(KernelTableTest, WhatOnlyACardNeedsSucceeds) {
    program->WaitForKernelCompile();
    program->ReloadKernels();
    EXPECT_OK(program->Execute(false));
    EXPECT_OK(program->WaitForKernelCompileError());
    EXPECT_OK(program->SetTextureOutOfCoreDeleteOrder({"t"}));
    EXPECT_OK(program->SetOutOfCoreState(true));
    EXPECT_FALSE(program->GetOutOfCoreState());
    EXPECT_OK(program->AddMemoryBarrier());
    EXPECT_OK(program->AddTextureMemoryBarrier());
    EXPECT_OK(program->CheckActiveKernelForUpdatedShaders());
    EXPECT_OK(program->UpdateDrawportContext({}));
    EXPECT_EQ(program->GetTextureSamplerHandle("t")->value + program->GetTextureHandle("t")->value, 0u);
    EXPECT_EQ(*program->GetTextureSamplerCacheRef("t"), nullptr);
    EXPECT_EQ(*program->GetTextureCacheRef("t"), nullptr);
    Int free = 0, total = 0;
    EXPECT_TRUE(program->GetMemoryInformation(free, total));
    EXPECT_EQ(std::pair(free, total), std::pair(Int{-1}, Int{-1}));
    EXPECT_EQ(program->GetAvailableAndTotalVRAMBudget(), std::pair(1099511627776, 1099511627776));
    Bool with16 = true, with8 = false;
    program->GetSupportReadWritePixelFormats(with16, with8);
    EXPECT_FALSE(with16);
    EXPECT_TRUE(with8);
}

} // namespace
} // namespace norvi

// Kernel classes written out by hand.
#pragma once

#include <mutex>

#include <norvi/host/registry.h>
#include <norvi/kernel/calls.h>
#include <norvi/kernel/kernel_base.h>
#include <norvi/kernel/texture.h>

#include "support/program_test.h"

namespace norvi {

/// Sizes that the test kernels take over at their Init.
struct KernelSizes {
    Vec3<UInt32> group{1, 1, 1};
    Int granularity = 1;
    Int threshold = 0;
};
inline KernelSizes g_sizes;

/// A kernel whose parameters and sizes its Declare tells.
template <typename Derived>
class DeclaredKernel : public KernelOf<Derived> {
  public:
    Result<void> Init() noexcept override {
        return CatchOutOfMemory([&]() -> Result<void> {
            static_cast<Derived*>(this)->Declare();
            return OK;
        });
    }

  protected:
    void TakeSizes() {
        this->SetWorkGroupSize(g_sizes.group);
        this->SetGranularity(g_sizes.granularity);
        this->SetSingleThreadedThreshold(g_sizes.threshold);
    }
};

/// Writes scale * x to data[x], in the first row of the grid.
class Doubler final : public DeclaredKernel<Doubler> {
  public:
    void Declare() {
        AddParameter("data", data_);
        AddParameter("scale", scale_);
        SetWorkGroupSize({64, 1, 1});
    }
    Result<void> Kernel(const Vec3<UInt32>& global, const Vec3<UInt32>&, const Vec3<UInt32>&) override {
        if (global.x >= data_.GetCount() || global.y > 0)
            return OK;
        data_[global.x] = scale_ * global.x;
        return OK;
    }

  private:
    Block<UInt32> data_;
    UInt32 scale_ = 0;
};

/// Writes the first channel of the texture's texel x to data[x].
class TexelReader final : public DeclaredKernel<TexelReader> {
  public:
    void Declare() {
        AddParameter("data", data_);
        AddParameter("texture", texture_);
        SetWorkGroupSize({1, 1, 1});
    }
    Result<void> Kernel(const Vec3<UInt32>& global, const Vec3<UInt32>&, const Vec3<UInt32>&) override {
        if (global.x < data_.GetCount())
            data_[global.x] = kernel::LoadTexture(texture_, static_cast<int>(global.x)).x;
        return OK;
    }

  private:
    Block<Float32> data_;
    TextureSamplerObj_1D_R_F32_LINEAR texture_;
};

/// Converts the one colour in data, there and back.
class ColorConverter final : public DeclaredKernel<ColorConverter> {
  public:
    void Declare() {
        AddParameter("data", data_);
        AddParameter("there", there_);
        AddParameter("back", back_);
        SetWorkGroupSize({1, 1, 1});
    }
    Result<void> Kernel(const Vec3<UInt32>&, const Vec3<UInt32>&, const Vec3<UInt32>&) override {
        const auto there = there_(&data_[0]);
        const auto back = back_(there.rgb);
        std::copy_n(there.rgb, 3, &data_[3]);
        std::copy_n(back.rgb, 3, &data_[6]);
        return OK;
    }

  private:
    Block<Float32> data_;
    ColorConversionFunction there_;
    ColorConversionFunction back_;
};

/// What one invocation saw.
struct Invocation {
    Vec3<UInt32> global, local, group;
    UInt32 times = 0;
    bool operator==(const Invocation&) const = default;
};

/// Records its invocations in `seen`, at their place in a grid of `gridX` x `gridY`, and fails where `fails`
/// says so.
template <typename Derived>
class RecorderBase : public DeclaredKernel<Derived> {
  public:
    void Declare() {
        this->AddParameter("seen", seen_);
        this->AddParameter("fails", fails_);
        this->AddParameter("gridX", gridX_);
        this->AddParameter("gridY", gridY_);
        this->TakeSizes();
    }
    Result<void> Kernel(const Vec3<UInt32>& global, const Vec3<UInt32>& local,
                        const Vec3<UInt32>& group) override {
        const UInt32 index = global.x + gridX_ * (global.y + gridY_ * global.z);
        if (index >= seen_.GetCount())
            return IllegalStateError(Format("invocation @ is outside", index));
        Invocation& seen = seen_[index];
        std::atomic_ref(seen.times).fetch_add(1, std::memory_order_relaxed);
        seen.global = global;
        seen.local = local;
        seen.group = group;
        if (index < fails_.GetCount() && fails_[index])
            return IllegalStateError(Format("invocation @ fails", index));
        return OK;
    }

  private:
    Block<Invocation> seen_;
    Block<UChar> fails_;
    UInt32 gridX_ = 1;
    UInt32 gridY_ = 1;
};

class Recorder final : public RecorderBase<Recorder> {};

/// The same in ranges, whose lengths are noted.
class RangeRecorder final : public RecorderBase<RangeRecorder>, public KernelRangeInterface {
  public:
    Result<void> KernelRange(UInt32 first, UInt32 last, UInt32 gridX, UInt32 gridY) override {
        {
            const std::lock_guard lock(mutex);
            lengths.push_back(last - first);
        }
        const Vec3<UInt32> g = GetKernelWorkGroupSize();
        for (UInt32 i = first; i < last; ++i) {
            const UInt32 x = i % gridX, y = i / gridX % gridY, z = i / gridX / gridY;
            NORVI_TRY(Kernel({x, y, z}, {x % g.x, y % g.y, z % g.z}, {x / g.x, y / g.y, z / g.z}));
        }
        return OK;
    }

    static inline std::mutex mutex;
    static inline BaseArray<UInt32> lengths;
};

/// Evaluates a formula for each index of the first row: data[x] = scale * formula(value x, seed 1000 + x).
class FormulaKernel final : public DeclaredKernel<FormulaKernel> {
  public:
    void Declare() {
        AddParameter("data", data_);
        AddParameter("scale", scale_);
        AddParameter("formulaOfTheElements", formula_);
        TakeSizes();
    }
    Result<void> Kernel(const Vec3<UInt32>& global, const Vec3<UInt32>&, const Vec3<UInt32>&) override {
        if (global.x >= data_.GetCount() || global.y > 0)
            return OK;
        int seed = 1000 + static_cast<int>(global.x);
        data_[global.x] = scale_ * kernel::EvaluateFormula(formula_, static_cast<float>(global.x), seed);
        return OK;
    }

  private:
    Block<Float32> data_;
    Float32 scale_ = 1;
    FormulaData* formula_ = nullptr;
};

} // namespace norvi

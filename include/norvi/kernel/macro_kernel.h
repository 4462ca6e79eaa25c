// The kernel class behind a kernel written with the entry macros.
#pragma once

#include <algorithm>
#include <limits>

#include <norvi/host/module.h>
#include <norvi/kernel/formula_access.h>
#include <norvi/kernel/kernel_base.h>

#if defined(__clang__)
#define NORVI_INDEPENDENT_ITERATIONS _Pragma("clang loop vectorize(assume_safety)")
#else
#define NORVI_INDEPENDENT_ITERATIONS _Pragma("GCC ivdep")
#endif

namespace norvi::kernel {

namespace detail {

template <typename T>
struct BlockElement {
    static constexpr bool IsBlock = false;
};
template <typename T>
struct BlockElement<Block<T>> {
    static constexpr bool IsBlock = true;
    using Type = StorageOf<std::remove_const_t<T>>;
};

} // namespace detail

/// Makes a kernel class of `Body`, a plain struct of the kernel's parameters with
/// - `Result<void> Run(uvec3 global, uvec3 local, uvec3 group, Formulas&) const`, one invocation, inlined,
/// - `FormulaCount` and `FormulasComeFirst()`: may formulas be evaluated for many invocations together,
/// - `VisitParameters(visitor)`, which calls `visitor("name", member)` for each parameter,
/// - `GroupSize()`, `Granularity()`, `SingleThreadedThreshold()` and `KernelName()`, all static.
template <typename Body>
class MacroKernel final : public KernelOf<MacroKernel<Body>>, public KernelRangeInterface {
  public:
    Result<void> Init() noexcept override {
        return CatchOutOfMemory([&]() -> Result<void> {
            body_.VisitParameters([this](const char* name, auto& member) { Enter(name, member); });
            this->SetWorkGroupSize(Body::GroupSize());
            this->SetGranularity(Body::Granularity());
            this->SetSingleThreadedThreshold(Body::SingleThreadedThreshold());
            return OK;
        });
    }

    Result<void> Kernel(const norvi::Vec3<UInt32>& global, const norvi::Vec3<UInt32>& local,
                        const norvi::Vec3<UInt32>& group) override {
        NORVI_TRY(CheckBound());
        DirectFormulas formulas;
        return CheckIndices(body_.Run(uvec3(global.x, global.y, global.z), uvec3(local.x, local.y, local.z),
                                      uvec3(group.x, group.y, group.z), formulas));
    }

    Result<void> KernelRange(UInt32 first, UInt32 last, UInt32 gridX, UInt32 gridY) override {
        NORVI_TRY(CheckBound());
        // A copy that nobody else can point to: what the body stores cannot change the parameters, so they
        // stay in registers and the loop over a row can be vectorised.
        const Body body = body_;
        UInt32 x = first % gridX;
        UInt32 y = first / gridX % gridY;
        UInt32 z = first / gridX / gridY;
        for (UInt32 remaining = last - first; remaining > 0;) {
            const UInt32 count = std::min(remaining, gridX - x);
            NORVI_TRY(RunRow(body, x, count, y, z));
            remaining -= count;
            x = 0;
            if (++y == gridY) {
                y = 0;
                ++z;
            }
        }
        return OK;
    }

  private:
    static constexpr norvi::Vec3<UInt32> Group = Body::GroupSize();
    static_assert(Group.x > 0 && Group.y > 0 && Group.z > 0,
                  "GROUPSIZE must be at least 1 in each dimension");

    // All the way to the body everything is inlined, or else the copy of the parameters would not stay in
    // registers.
    [[gnu::always_inline]] static Result<void> RunRow(const Body& body, UInt32 firstX, UInt32 count, UInt32 y,
                                                      UInt32 z) {
        // Signed counting tells the compiler that indices computed from x do not wrap round; the few
        // positions beyond the signed range are counted from an offset.
        constexpr UInt32 signedEnd = std::numeric_limits<Int32>::max();
        if (firstX > signedEnd || count > signedEnd - firstX)
            return RunFarRow(body, firstX, count, y, z);
        const int begin = static_cast<int>(firstX);
        const int end = begin + static_cast<int>(count);
        if constexpr (Body::FormulaCount > 0 && Body::FormulasComeFirst())
            return RunRowInBlocks(body, begin, end, y, z);
        NORVI_INDEPENDENT_ITERATIONS
        for (int x = begin; x < end; ++x) {
            DirectFormulas formulas;
            NORVI_TRY(RunOne(body, static_cast<UInt32>(x), y, z, formulas));
        }
        return OK;
    }

    static Result<void> RunFarRow(const Body& body, UInt32 firstX, UInt32 count, UInt32 y, UInt32 z) {
        DirectFormulas formulas;
        for (UInt32 i = 0; i < count; ++i)
            NORVI_TRY(RunOne(body, firstX + i, y, z, formulas));
        return OK;
    }

    using Formulas = FormulaBlock<Body::FormulaCount>;

    [[gnu::always_inline]] static Result<void> RunRowInBlocks(const Body& body, int begin, int end, UInt32 y,
                                                              UInt32 z) {
        Formulas formulas;
        for (int x = begin; x < end; x += Formulas::Size) {
            const int count = std::min(end - x, Formulas::Size);
            NORVI_TRY(RunBlock<0>(body, x, count, y, z, formulas));
        }
        return OK;
    }

    /// Gathers and evaluates formula `Run` and those behind it, then completes the block. An invocation that
    /// ended without coming to a formula is finished, and not run again.
    template <int Run>
    [[gnu::always_inline]] static Result<void> RunBlock(const Body& body, int firstX, int count, UInt32 y,
                                                        UInt32 z, Formulas& formulas) {
        const int end = firstX + count;
        if (Run == 0 || formulas.AreAllUnfinished(count)) {
            // Without a test for each invocation the loop can be vectorised.
            NORVI_INDEPENDENT_ITERATIONS
            for (int x = firstX; x < end; ++x)
                NORVI_TRY(RunOneOfBlock<Run>(body, firstX, x, y, z, formulas));
        } else {
            for (int x = firstX; x < end; ++x)
                if (formulas.IsUnfinished(x - firstX))
                    NORVI_TRY(RunOneOfBlock<Run>(body, firstX, x, y, z, formulas));
        }
        if constexpr (Run < Body::FormulaCount) {
            formulas.template EvaluateRun<Run>(count);
            return RunBlock<Run + 1>(body, firstX, count, y, z, formulas);
        } else {
            return OK;
        }
    }

    template <int Run>
    [[gnu::always_inline]] static Result<void> RunOneOfBlock(const Body& body, int firstX, int x, UInt32 y,
                                                             UInt32 z, Formulas& formulas) {
        typename Formulas::template Access<Run> access{formulas, x - firstX};
        NORVI_TRY(RunOne(body, static_cast<UInt32>(x), y, z, access));
        if constexpr (Run < Body::FormulaCount)
            formulas.SetUnfinished(x - firstX, access.isUnfinished);
        return OK;
    }

    template <typename FormulaAccess>
    [[gnu::always_inline]] static Result<void> RunOne(const Body& body, UInt32 x, UInt32 y, UInt32 z,
                                                      FormulaAccess& formulas) {
        return CheckIndices(body.Run(uvec3(x, y, z), uvec3(x % Group.x, y % Group.y, z % Group.z),
                                     uvec3(x / Group.x, y / Group.y, z / Group.z), formulas));
    }

    /// The result of an invocation, or the wrong index that it met, which goes first.
    [[gnu::always_inline]] static Result<void> CheckIndices(Result<void> result) {
#if NORVI_CHECK_INDICES
        NORVI_TRY(TakeIndexFault(Body::KernelName()));
#endif
        return result;
    }

    /// A buffer that was never bound has no memory to work on.
    Result<void> CheckBound() {
        const char* unbound = nullptr;
        body_.VisitParameters([&](const char* name, auto& member) {
            using Member = std::remove_cvref_t<decltype(member)>;
            if constexpr (detail::BlockElement<Member>::IsBlock && !std::is_same_v<Member, Block<NoiseRef>>)
                if (!member.IsBound()) [[unlikely]]
                    unbound = name;
        });
        if (unbound) [[unlikely]]
            return IllegalStateError(
                Format("the buffer parameter '@' of kernel '@' is not bound", unbound, Body::KernelName()));
        return OK;
    }

    template <typename Member>
    void Enter(const char* name, Member& member) {
        if constexpr (detail::BlockElement<Member>::IsBlock) {
            member.SetName(name);
            using Element = typename detail::BlockElement<Member>::Type;
            this->AddParameter(name, DataType::Of<norvi::Block<Element>>(), &member.GetView());
        } else {
            // Textures that a kernel only reads are const members; what they are bound to is mutable.
            using Plain = std::remove_const_t<Member>;
            this->AddParameter(name, DataType::Of<StorageOf<Plain>>(), const_cast<Plain*>(&member));
        }
    }

    Body body_;
};

} // namespace norvi::kernel

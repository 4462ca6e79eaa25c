// The macro vocabulary of kernel text, in its meaning on the processor. docs/kernel_language.md describes
// each word; the reader that makes shader text of the same files gives them their other meaning.
#pragma once

#include <norvi/kernel/macro_kernel.h>

// Calls MACRO on each item of a list, separated by blanks.
#define NORVI_EXPAND(...) NORVI_EXPAND_3(NORVI_EXPAND_3(NORVI_EXPAND_3(NORVI_EXPAND_3(__VA_ARGS__))))
#define NORVI_EXPAND_3(...) NORVI_EXPAND_2(NORVI_EXPAND_2(NORVI_EXPAND_2(NORVI_EXPAND_2(__VA_ARGS__))))
#define NORVI_EXPAND_2(...) NORVI_EXPAND_1(NORVI_EXPAND_1(NORVI_EXPAND_1(NORVI_EXPAND_1(__VA_ARGS__))))
#define NORVI_EXPAND_1(...) __VA_ARGS__
#define NORVI_PARENS ()
#define NORVI_FOR_EACH(MACRO, ...) __VA_OPT__(NORVI_EXPAND(NORVI_FOR_EACH_STEP(MACRO, __VA_ARGS__)))
#define NORVI_FOR_EACH_STEP(MACRO, item, ...)                                                                \
    MACRO(item) __VA_OPT__(NORVI_FOR_EACH_AGAIN NORVI_PARENS(MACRO, __VA_ARGS__))
#define NORVI_FOR_EACH_AGAIN() NORVI_FOR_EACH_STEP

// Takes "(Type) name" apart.
#define NORVI_UNWRAP(...) __VA_ARGS__
#define NORVI_DROP(...)
#define NORVI_MEMBER(item) NORVI_UNWRAP item{};
#define NORVI_VISIT_NAMED(name) NORVI_VISIT_NAMED_2(name)
#define NORVI_VISIT_NAMED_2(name) visitor(#name, name);
#define NORVI_VISIT_MEMBER(item) NORVI_VISIT_NAMED(NORVI_DROP item)

namespace norvi::kernel {

// Defaults. A kernel's own declarations stand in an inner namespace and hide them.
inline constexpr norvi::Vec3<norvi::UInt32> NorviGroupSize{256, 1, 1};
inline constexpr norvi::Int NorviGranularity = 16;
inline constexpr norvi::Int NorviSingleThreadedThreshold = 0;
inline constexpr bool NorviFormulasComeFirst = false;

} // namespace norvi::kernel

#define GROUPSIZE(x, y, z) constexpr norvi::Vec3<norvi::UInt32> NorviGroupSize{x, y, z};
#define CPU_GRANULARITY(count) constexpr norvi::Int NorviGranularity = count;
#define CPU_SINGLETHREADEDTHRESHOLD(count) constexpr norvi::Int NorviSingleThreadedThreshold = count;

// A promise: the body writes nothing before its last formula and comes to each formula at most once. Formulas
// are then evaluated for many invocations together, which is several times faster.
#define CPU_FORMULAS_FIRST constexpr bool NorviFormulasComeFirst = true;

// A kernel whose parameters are listed in KERNELINPUTS, as "(Type) name, ...".
#define NORVI_PARALLEL_KERNEL(Name)                                                                          \
    struct Name;                                                                                             \
    using NorviKernelBody = Name;                                                                            \
    struct Name {                                                                                            \
        NORVI_FOR_EACH(NORVI_MEMBER, KERNELINPUTS)                                                           \
        template <typename Visitor>                                                                          \
        void VisitParameters([[maybe_unused]] Visitor&& visitor){                                            \
            NORVI_FOR_EACH(NORVI_VISIT_MEMBER, KERNELINPUTS)} NORVI_KERNEL_BODY
#define NORVI_PARALLEL_KERNEL_END NORVI_KERNEL_BODY_END
#define NORVI_TEMPLATED_PARALLEL_KERNEL(Name) NORVI_PARALLEL_KERNEL(Name)
#define NORVI_TEMPLATED_PARALLEL_KERNEL_END NORVI_KERNEL_BODY_END

// A kernel whose parameters are the members of `struct KernelInput`; those that callers may set are named
// again.
#define FP_KERNEL(Name, ...)                                                                                 \
    struct Name;                                                                                             \
    using NorviKernelBody = Name;                                                                            \
    struct Name : KernelInput {                                                                              \
        template <typename Visitor>                                                                          \
        void VisitParameters([[maybe_unused]] Visitor&& visitor){                                            \
            NORVI_FOR_EACH(NORVI_VISIT_NAMED, __VA_ARGS__)} NORVI_KERNEL_BODY
#define FP_KERNEL_END NORVI_KERNEL_BODY_END

#define NORVI_KERNEL_BODY                                                                                    \
    static constexpr norvi::Vec3<norvi::UInt32> GroupSize() {                                                \
        return NorviGroupSize;                                                                               \
    }                                                                                                        \
    static constexpr norvi::Int Granularity() {                                                              \
        return NorviGranularity;                                                                             \
    }                                                                                                        \
    static constexpr norvi::Int SingleThreadedThreshold() {                                                  \
        return NorviSingleThreadedThreshold;                                                                 \
    }                                                                                                        \
    static const char* KernelName() {                                                                        \
        return NORVI_KERNEL_NAME;                                                                            \
    }                                                                                                        \
    static constexpr bool FormulasComeFirst() {                                                              \
        return NorviFormulasComeFirst;                                                                       \
    }                                                                                                        \
    static constexpr int FirstFormula = __COUNTER__ + 1;                                                     \
    template <typename Formulas>                                                                             \
    [[gnu::always_inline]] inline norvi::Result<void> Run(                                                   \
        [[maybe_unused]] uvec3 InGlobalInvocationID, [[maybe_unused]] uvec3 InLocalInvocationID,             \
        [[maybe_unused]] uvec3 InWorkGroupID, [[maybe_unused]] Formulas& norviFormulas) const {              \
        [[maybe_unused]] const uvec3 InWorkGroupSize(GroupSize().x, GroupSize().y, GroupSize().z);
#define NORVI_KERNEL_BODY_END                                                                                \
    return norvi::OK;                                                                                        \
    }                                                                                                        \
    static constexpr int FormulaCount = __COUNTER__ - FirstFormula;                                          \
    }                                                                                                        \
    ;                                                                                                        \
    NORVI_REGISTER_KERNEL(norvi::kernel::MacroKernel<NorviKernelBody>)

// Enters a kernel class under the name of the file that is being compiled.
#define NORVI_REGISTER_KERNEL(KernelClass)                                                                   \
    static norvi::ClassDeclaration norviKernelDeclaration(                                                   \
        g_norvi, NORVI_KERNEL_NAME, &norvi::MakeObject<KernelClass>, norvi::registryid::KernelClasses);

// A kernel class written out by hand: its operation, and what only one side reads.
#define NORVI_METHOD
#define CPU_SCOPE_START
#define CPU_SCOPE_END
#define IGNORE_VARIABLE_GPU

// Access to parameters.
#define UNIFORM(name) name
#define UNIFORM_BUFFER(name) name
#define GetAtomicCounter(name) norvi::kernel::Counter(name)

// Signatures and calls of functions.
#define CPU_CONSTREF(Type) const Type&
#define CPU_PASS_BUFFER(name) name
#define INOUT(Type) Type&
#define ATOMIC

// Group shared memory. The card copies a stretch of a buffer to it; the processor reads the buffer itself.
#define GROUPSHAREDMEM(Type, name, size)
#define MAKELOCAL(name, count, mapper)
#define LOCALDATA(name, localIndex, globalIndex) name[globalIndex]
#define groupSharedBarrier

// Formulas and noise. Without a formula the input itself is converted.
#define FORMULAPARSE(name, input, seedVariable, dataType)                                                    \
    float name##Value = input;                                                                               \
    if (!norviFormulas.template Evaluate<__COUNTER__ - FirstFormula>(name, name##Value, seedVariable))       \
        return norvi::OK;                                                                                    \
    dataType name##Result = dataType(name##Value);
#define ADDNOISECALL
#define NOISE(index, position, time) norvi::kernel::SampleNoise(noiseData, index, position, time)

// Statements.
#define KERNEL_RETURN_NO_ERROR norvi::Result<void>()
#define NORVI_SWITCH_FALLTHROUGH [[fallthrough]]
#define NORVI_WARN_MUTE_FUNCTION_LENGTH
#define ONLY_USE_FIRST_MSAA_SAMPLE
#define matoff(matrix) vec3(matrix.v0.w, matrix.v1.w, matrix.v2.w)

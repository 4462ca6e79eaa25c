// Formulas, and the dispatch of kernels that have some: each worker has a kernel object and parsed formulas
// of its own, since evaluating a formula writes its variables.
#include "core/cpu_yield.h"
#include <norvi/host/thread_services.h>

#include "core/dispatch_kernel.h"
#include "core/parallelprogram_cpu_impl.h"

namespace norvi {

namespace {

/// The cells that a formula reads, on a cache line of their own since every evaluation writes them.
struct alignas(64) FormulaCells {
    Float value = 0;
    Int32 seed = 0;
};

Result<void> ParseFormula(FormulaData& data, const String& text) {
    const auto cells = std::make_shared<FormulaCells>();
    data.value = {cells, &cells->value};
    data.seed = {cells, &cells->seed};
    NORVI_TRY_VALUE(parser, FormulaParser::Alloc());
    NORVI_TRY(parser->AddFloatVariable("value", data.value.get(), 1));
    NORVI_TRY(parser->AddIntVariable("seed", data.seed.get(), 1));
    NORVI_TRY(parser->CalculateParserCache(data.cache, text, 0, 1, 10, false));
    data.parser = std::move(parser);
    return OK;
}

/// Initialises `data` once and makes the kernel point to it.
Result<void> BindFormula(KernelInterface& kernel, const InternedId& name, FormulaData& data,
                         const String& text) {
    const auto parse = [&] { return CatchOutOfMemory([&] { return ParseFormula(data, text); }); };
    NORVI_TRY(data.initState.Run(parse, CpuYield()));
    return SetTypedParameter(kernel, name, DataType::Of<FormulaData*>(), &data);
}

} // namespace

Result<void> ParallelProgramCPUImpl::SetFormula(const InternedId& attr, const Data& data) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY(CheckActiveKernel());
        KernelData& kernel = *activeKernel_;
        if (const auto state = kernel.formulaStates.find(attr); state != kernel.formulaStates.end()) {
            NORVI_TRY(ForgetFormulas());
            state->second.clear();
        }
        NORVI_TRY_VALUE(text, data.GetAs<String>());
        if (text.empty()) {
            kernel.formulas.Erase(attr);
            return OK;
        }
        NORVI_TRY_VALUE(seeded, InjectSeed(text, "seed"));
        kernel.formulas.Set(attr, std::move(seeded));
        return OK;
    });
}

/// Takes the formulas from the kernel object, which would otherwise point to states that are gone, or that
/// several workers would write.
Result<void> ParallelProgramCPUImpl::ForgetFormulas() {
    if (!activeKernel_->kernel)
        return OK;
    KernelInterface& kernel = *activeKernel_->kernel;
    const KernelParameterMap& parameters = kernel.GetKernelParameterMap();
    for (const auto& [name, states] : activeKernel_->formulaStates) {
        // A formula for a parameter of another kind was never bound.
        const auto found = parameters.find(name.ToString());
        if (found != parameters.end() && found->second.type == DataType::Of<FormulaData*>())
            NORVI_TRY(kernel.Set(name.ToString(), nullptr));
    }
    return OK;
}

/// Makes room for one state of each formula and worker.
Result<void> ParallelProgramCPUImpl::PrepareFormulaStates(Int workers) {
    for (const auto& [key, text] : activeKernel_->formulas) {
        NORVI_TRY_VALUE(name, key.GetAs<InternedId>());
        NORVI_TRY(text.GetAs<String>());
        auto& states = activeKernel_->formulaStates[name];
        if (static_cast<Int>(states.size()) != workers)
            states = BaseArray<FormulaData>(static_cast<std::size_t>(workers));
    }
    return OK;
}

Result<void> ParallelProgramCPUImpl::BindFormulas(KernelInterface& kernel, Int worker) {
    for (const auto& [key, text] : activeKernel_->formulas) {
        const InternedId& name = *key.Get<InternedId>();
        FormulaData& data = activeKernel_->formulaStates.find(name)->second[static_cast<std::size_t>(worker)];
        NORVI_TRY(BindFormula(kernel, name, data, *text.Get<String>()));
    }
    return OK;
}

Result<void> ParallelProgramCPUImpl::DispatchFormulas(UInt32 count) {
    KernelData& data = *activeKernel_;
    const DispatchedKernel kernel(data.kernel.get(), data.range);
    NORVI_TRY(kernel.Check());
    const Grid grid = Grid::Linear(count);
    const Bool isAlone = kernel->GetSingleThreadedThreshold() >= Int{count};
    NORVI_TRY(PrepareFormulaStates(isAlone ? 1 : JobQueue::GetThreadCount()));
    if (isAlone) {
        NORVI_TRY(BindFormulas(*data.kernel, 0));
        return kernel.RunAlone(grid, count);
    }
    NORVI_TRY(CloneWorkerKernels());
    const auto body = [&](Int worker, UInt32 from, UInt32 to,
                          const std::atomic<bool>& cancelled) -> Result<void> {
        WorkerKernel& clone = data.workerKernels[static_cast<std::size_t>(worker)];
        if (!clone.areFormulasBound) {
            NORVI_TRY(BindFormulas(*clone.kernel, worker));
            clone.areFormulasBound = true;
        }
        return DispatchedKernel(clone.kernel.get(), clone.range).Run(grid, from, to, cancelled);
    };
    return ParallelFor(0, count, kernel->GetGranularity(), MakeLoopBody(body));
}

/// One copy of the kernel with all that is set so far for each worker.
Result<void> ParallelProgramCPUImpl::CloneWorkerKernels() {
    auto& clones = activeKernel_->workerKernels;
    clones.clear();
    clones.resize(static_cast<std::size_t>(JobQueue::GetThreadCount()));
    for (WorkerKernel& clone : clones) {
        NORVI_TRY_VALUE(object, activeKernel_->kernel->CopyInstance());
        NORVI_TRY_VALUE(copy, Kernel::KernelRef::Of(object));
        clone.kernel = copy;
        clone.range = FindRangeInterface(*clone.kernel);
    }
    return OK;
}

} // namespace norvi

#include "norvi/kernel_run.h"

#include <algorithm>
#include <chrono>
#include <optional>

#include <fmt/format.h>

#include <norvi/host/thread_services.h>

#include "norvi/fault_guard.h"
#include "norvi/output_file.h"
#include "norvi/progress.h"
#include "norvi/texture_contents.h"

namespace norvi {

namespace {

constexpr double LongRunSeconds = 1;

void PrintLine(const char* name, const String& value) {
    fmt::print("{:<12} {}\n", name, value);
}

} // namespace

Result<void> KernelRun::Run() {
    if (!isQuiet_)
        for (const String& warning : plan_.warnings)
            fmt::print(stderr, "norvi: warning: {}\n", warning);
    NORVI_TRY_VALUE(program, ParallelProgramRef::Create(programid::CpuProgram));
    program_ = program;
    NORVI_TRY(program_->Init({}, {}, 0, false));
    NORVI_TRY(program_->AddKernel("kernel", plan_.kernel.name, true, {}));
    program_->SetActiveKernel("kernel");
    NORVI_TRY(CreateBuffers());
    NORVI_TRY(CreateTextures());
    NORVI_TRY(CheckOutputs());
    NORVI_TRY(BindAll());
    NORVI_TRY(RunSteps());
    NORVI_TRY(PrintCounters());
    if (!isQuiet_)
        PrintSummary();
    return OK;
}

Result<void> KernelRun::CreateBuffers() {
    for (const PlannedBuffer& planned : plan_.buffers) {
        NORVI_TRY_VALUE(contents, LoadBufferContents(planned, plan_.invocations));
        const String& name = planned.argument.name;
        NORVI_TRY(program_->StoreUniformBufferData(name, planned.type, std::move(contents.elements)));
        // The storage keeps its size: the margin stays behind the last element.
        NORVI_TRY(program_->ResizeUniformBuffer(name, contents.count, false));
        buffers_.push_back({name, planned.type, contents.count, contents.margin, contents.shape});
    }
    return OK;
}

Result<void> KernelRun::CreateTextures() {
    for (const PlannedTexture& planned : plan_.textures) {
        NORVI_TRY_VALUE(contents, LoadTextureContents(planned));
        NORVI_TRY(program_->StoreTextureBindData(planned.argument.name, contents.description, false));
        textureBytes_ += contents.description._size;
    }
    return OK;
}

Result<std::shared_ptr<SamplingData>> KernelRun::ReadTexture(const String& name) {
    NORVI_TRY_VALUE(data, program_->GetTextureData(name, {}, {}));
    return data.GetAs<std::shared_ptr<SamplingData>>();
}

const KernelRun::Buffer& KernelRun::OutputBuffer(const OutputArgument& output) {
    const NamePair* binding = plan_.FindBinding(output.name);
    const String& name = binding ? binding->second : output.name;
    return *std::find_if(buffers_.begin(), buffers_.end(),
                         [&](const Buffer& buffer) { return buffer.name == name; });
}

Result<void> KernelRun::CheckOutputs() {
    for (const OutputArgument& output : plan_.outputs) {
        if (plan_.FindTexture(output.name)) {
            NORVI_TRY_VALUE(texture, ReadTexture(output.name));
            NORVI_TRY(CheckOutput(output, TextureElementType(*texture), TextureShape(*texture)));
            continue;
        }
        const Buffer& buffer = OutputBuffer(output);
        NORVI_TRY(CheckOutput(output, buffer.type, buffer.shape));
    }
    return OK;
}

Result<void> KernelRun::BindAll() {
    for (const PlannedTexture& texture : plan_.textures)
        NORVI_TRY(program_->SetTextureToActiveKernelSameId(texture.argument.name, false));
    for (const NamePair& binding : plan_.bindings)
        NORVI_TRY(program_->SetBufferToActiveKernel(binding.second, binding.first));
    for (const PlannedUniform& uniform : plan_.uniforms)
        NORVI_TRY(program_->SetUniform(uniform.name, uniform.value));
    for (const Assignment& formula : plan_.formulas)
        NORVI_TRY(program_->SetFormula(formula.name, formula.value));
    for (const CounterArgument& counter : plan_.counters) {
        NORVI_TRY(program_->AddAtomicCounter(counter.name, {}));
        NORVI_TRY(program_->SetAtomicCounter(counter.name, counter.start));
        NORVI_TRY(program_->SetAtomicCounterToActiveKernel(counter.name));
    }
    for (std::size_t i = 0; i < plan_.noises.size(); ++i) {
        NORVI_TRY(program_->SetUniform(fmt::format("noiseMode_{}", i), plan_.noises[i].mode));
        NORVI_TRY(program_->SetUniform(fmt::format("noiseSeed_{}", i), plan_.noises[i].seed));
    }
    return program_->UpdateUniforms();
}

Result<void> KernelRun::RunSteps() {
    using Clock = std::chrono::steady_clock;
    std::optional<Progress> progress;
    for (Int step = 1; step <= plan_.steps; ++step) {
        const auto start = Clock::now();
        {
            const FaultGuard guard(plan_.kernel.name);
            NORVI_TRY(program_->DispatchKernel(plan_.grid.x, plan_.grid.y, plan_.grid.z, false));
            NORVI_TRY(program_->Execute(true));
        }
        seconds_ += std::chrono::duration<double>(Clock::now() - start).count();
        const Bool isLast = step == plan_.steps;
        if (isLast || (plan_.outputEvery > 0 && step % plan_.outputEvery == 0)) {
            NORVI_TRY(CheckMargins());
            NORVI_TRY(WriteOutputs(step, isLast));
        }
        if (!isLast)
            NORVI_TRY(Swap());
        // What will be over in a moment needs no progress.
        if (step == 1 && seconds_ * static_cast<double>(plan_.steps) > LongRunSeconds)
            progress.emplace(plan_.kernel.name, plan_.steps, "steps", isQuiet_);
        if (progress)
            progress->Update(step);
    }
    return OK;
}

Result<void> KernelRun::Swap() {
    for (const NamePair& swap : plan_.swaps) {
        if (plan_.FindTexture(swap.first)) {
            NORVI_TRY(program_->SwapTextures(swap.first, swap.second));
            // A kernel keeps the texture that it was given, whatever its name is now.
            NORVI_TRY(program_->SetTextureToActiveKernelSameId(swap.first, false));
            NORVI_TRY(program_->SetTextureToActiveKernelSameId(swap.second, false));
            continue;
        }
        NORVI_TRY(program_->SwapBuffers(swap.first, swap.second));
        std::swap(plan_.FindBinding(swap.first)->second, plan_.FindBinding(swap.second)->second);
    }
    return plan_.swaps.empty() ? OK : program_->UpdateUniforms();
}

Result<void> KernelRun::CheckMargins() {
    for (const Buffer& buffer : buffers_)
        NORVI_TRY(CheckMargin(buffer));
    return OK;
}

/// Growing by what the storage has room for anyway shows the margin.
Result<void> KernelRun::CheckMargin(const Buffer& buffer) {
    NORVI_TRY(program_->ResizeUniformBuffer(buffer.name, buffer.count + buffer.margin, false));
    auto data = program_->GetGlobalBufferData(buffer.name, buffer.count, buffer.margin);
    NORVI_TRY(program_->ResizeUniformBuffer(buffer.name, buffer.count, false));
    NORVI_TRY(data);
    NORVI_TRY_VALUE(margin, data->GetAs<ArrayRef>());
    const auto* first = static_cast<const std::byte*>(margin->GetElement(0));
    if (std::all_of(first, first + margin->GetByteCount(), [](std::byte b) { return b == MarginByte; }))
        return OK;
    return IllegalStateError(
        Format("kernel '@' wrote behind the end of buffer '@', which has @ elements; the grid has "
               "@ invocations",
               plan_.kernel.name, buffer.name, buffer.count, plan_.invocations));
}

Result<void> KernelRun::WriteOutputs(Int step, Bool isLast) {
    for (const OutputArgument& output : plan_.outputs) {
        if (!isLast && !output.HasStep())
            continue;
        if (plan_.FindTexture(output.name)) {
            NORVI_TRY_VALUE(texture, ReadTexture(output.name));
            NORVI_TRY(WriteOutput(output, step, TextureElementType(*texture), TextureShape(*texture),
                                  texture->_data));
            continue;
        }
        const Buffer& buffer = OutputBuffer(output);
        NORVI_TRY_VALUE(data, program_->GetGlobalBufferData(buffer.name));
        NORVI_TRY_VALUE(array, data.GetAs<ArrayRef>());
        NORVI_TRY(WriteOutput(output, step, buffer.type, buffer.shape, array->GetElement(0)));
    }
    return OK;
}

Result<void> KernelRun::PrintCounters() {
    for (const CounterArgument& counter : plan_.counters) {
        NORVI_TRY_VALUE(value, program_->GetAtomicCounter(counter.name));
        PrintLine(counter.name.c_str(), ToText(value));
    }
    return OK;
}

Int KernelRun::GetBoundBytes() const {
    Int bytes = textureBytes_;
    // Every buffer is bound to a parameter, some to several.
    for (const Buffer& buffer : buffers_)
        bytes += buffer.count * buffer.type->size;
    return bytes;
}

void KernelRun::PrintSummary() const {
    const auto steps = static_cast<double>(plan_.steps);
    const Int bytes = GetBoundBytes();
    // Clocks have steps; a run shorter than one took no less than that.
    const double seconds = std::max(seconds_, 1e-9);
    PrintLine("kernel", plan_.kernel.name);
    PrintLine("invocations", fmt::format("{} in {} step{}", plan_.invocations * plan_.steps, plan_.steps,
                                         plan_.steps == 1 ? "" : "s"));
    PrintLine("time", fmt::format("{:.3f} ms", seconds * 1e3));
    PrintLine("rate", fmt::format("{:.4g} million invocations/s",
                                  static_cast<double>(plan_.invocations) * steps / seconds * 1e-6));
    PrintLine("memory", fmt::format("{:.4g} GB/s, {} bytes of buffers and textures once a step",
                                    static_cast<double>(bytes) * steps / seconds * 1e-9, bytes));
    PrintLine("workers", ToText(JobQueue::GetThreadCount()));
}

} // namespace norvi

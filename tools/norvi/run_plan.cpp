#include "norvi/run_plan.h"

#include <algorithm>
#include <limits>

#include "norvi/uniform_value.h"

namespace norvi {

namespace {

constexpr Int MostSteps = 1'000'000'000;

/// Turns the options into a plan one group after the other.
class PlanMaker {
  public:
    explicit PlanMaker(const RunOptions& options) : options_(options) {}

    Result<RunPlan> Make() {
        NORVI_TRY_VALUE(name, ResolveKernelName(options_.kernel));
        NORVI_TRY_VALUE(kernel, DescribeKernel(name));
        plan_.kernel = std::move(kernel);
        NORVI_TRY(PlanGrid());
        NORVI_TRY(PlanSteps());
        NORVI_TRY(PlanBuffers());
        NORVI_TRY(PlanTextures());
        NORVI_TRY(PlanBindings());
        NORVI_TRY(PlanBufferTypes());
        NORVI_TRY(PlanInitialValues());
        NORVI_TRY(PlanUniforms());
        NORVI_TRY(PlanFormulas());
        NORVI_TRY(PlanCounters());
        NORVI_TRY(PlanNoises());
        NORVI_TRY(CheckCompleteness());
        NORVI_TRY(PlanSwaps());
        NORVI_TRY(PlanOutputs());
        return std::move(plan_);
    }

  private:
    Result<void> PlanGrid();
    Result<void> PlanSteps();
    Result<void> PlanBuffers();
    Result<void> PlanTextures();
    Result<void> PlanBindings();
    Result<void> PlanBufferTypes();
    Result<void> PlanInitialValues();
    Result<void> PlanUniforms();
    Result<void> PlanFormulas();
    Result<void> PlanCounters();
    Result<void> PlanNoises();
    Result<void> PlanSwaps();
    Result<void> PlanOutputs();
    Result<void> CheckCompleteness();
    Result<void> CheckGiven(const KernelParameterInfo& parameter);

    /// The parameter `name`, if it has the role.
    Result<const KernelParameterInfo*> Find(const char* option, const String& text, const String& name,
                                            ParameterRole role) const;
    BaseArray<String> BufferNames() const;

    const RunOptions& options_;
    RunPlan plan_;
};

template <typename Items, typename Matches>
Bool Contains(const Items& items, Matches&& matches) {
    return std::any_of(items.begin(), items.end(), matches);
}

Result<const KernelParameterInfo*> PlanMaker::Find(const char* option, const String& text, const String& name,
                                                   ParameterRole role) const {
    const KernelParameterInfo* parameter = plan_.kernel.FindParameter(name);
    if (!parameter)
        return ArgumentError(option, text,
                             Format("kernel '@' has no parameter '@'@", plan_.kernel.name, name,
                                    SuggestText(name, plan_.kernel.GetParameterNames())));
    if (parameter->role == role)
        return parameter;
    const char* other = RoleOption(parameter->role);
    return ArgumentError(option, text,
                         Format("parameter '@' of kernel '@' is of type @@", name, plan_.kernel.name,
                                parameter->GetTypeText(), other ? String("; use ") + other : String()));
}

BaseArray<String> PlanMaker::BufferNames() const {
    BaseArray<String> names;
    for (const PlannedBuffer& buffer : plan_.buffers)
        names.push_back(buffer.argument.name);
    return names;
}

Result<void> PlanMaker::PlanGrid() {
    NORVI_TRY_VALUE(grid, ParseGrid(options_.grid));
    plan_.grid = grid;
    plan_.invocations = grid.x;
    if (grid.y == 1 && grid.z == 1)
        return OK;
    // Grids of several dimensions are raised to the size of a work group, and must still be counted by 32
    // bits.
    const Vec3<UInt32>& group = plan_.kernel.workGroupSize;
    const Int rows = Int{std::max(grid.x, group.x)} * Int{std::max(grid.y, group.y)};
    if (__builtin_mul_overflow(rows, Int{std::max(grid.z, group.z)}, &plan_.invocations) ||
        plan_.invocations > std::numeric_limits<UInt32>::max())
        return ArgumentError(
            "--grid", options_.grid,
            Format("raised to the work group size @x@x@ of kernel '@' it has more than 4294967295 "
                   "invocations",
                   group.x, group.y, group.z, plan_.kernel.name));
    return OK;
}

Result<void> PlanMaker::PlanSteps() {
    if (options_.steps < 1 || options_.steps > MostSteps)
        return ArgumentError("--steps", ToText(options_.steps), Format("expected 1 to @", MostSteps));
    if (options_.outputEvery < 0 || options_.outputEvery > options_.steps)
        return ArgumentError("--output-every", ToText(options_.outputEvery),
                             Format("expected 1 to the number of steps, @", options_.steps));
    plan_.steps = options_.steps;
    plan_.outputEvery = options_.outputEvery;
    return OK;
}

Result<void> PlanMaker::PlanBuffers() {
    for (const String& text : options_.buffers) {
        NORVI_TRY_VALUE(argument, ParseBuffer(text));
        if (plan_.FindBuffer(argument.name))
            return ArgumentError("--buffer", text, Format("buffer '@' was given before", argument.name));
        plan_.buffers.push_back({argument, text, {}, {}});
    }
    return OK;
}

Result<void> PlanMaker::PlanTextures() {
    for (const String& text : options_.textures) {
        NORVI_TRY_VALUE(argument, ParseTexture(text));
        NORVI_TRY_VALUE(parameter, Find("--texture", text, argument.name, ParameterRole::Texture));
        if (plan_.FindTexture(argument.name))
            return ArgumentError("--texture", text, Format("parameter '@' was given before", argument.name));
        const TextureKind* kind = FindTextureKind(parameter->type);
        if (kind->format != TextureFormat::F32 && kind->format != TextureFormat::U8)
            return ArgumentError("--texture", text,
                                 Format("parameter '@' of kernel '@' is of type @, which is not supported; "
                                        "textures are of F32 or U8",
                                        argument.name, plan_.kernel.name, parameter->GetTypeText()));
        plan_.textures.push_back({argument, text, kind});
    }
    return OK;
}

Result<void> PlanMaker::PlanBindings() {
    for (const String& text : options_.bindings) {
        NORVI_TRY_VALUE(binding, ParseAssignment("--bind", text));
        NORVI_TRY(Find("--bind", text, binding.name, ParameterRole::Buffer));
        if (!plan_.FindBuffer(binding.value))
            return ArgumentError(
                "--bind", text,
                Format("there is no buffer '@'@", binding.value, SuggestText(binding.value, BufferNames())));
        if (plan_.FindBinding(binding.name))
            return ArgumentError("--bind", text, Format("parameter '@' was bound before", binding.name));
        plan_.bindings.push_back({binding.name, binding.value});
    }
    for (const KernelParameterInfo& parameter : plan_.kernel.parameters)
        if (parameter.role == ParameterRole::Buffer && !plan_.FindBinding(parameter.name) &&
            plan_.FindBuffer(parameter.name))
            plan_.bindings.push_back({parameter.name, parameter.name});
    return OK;
}

Result<void> PlanMaker::PlanBufferTypes() {
    for (const NamePair& binding : plan_.bindings) {
        PlannedBuffer& buffer = *plan_.FindBuffer(binding.second);
        const DataType wanted = plan_.kernel.FindParameter(binding.first)->type.GetElementType();
        if (!buffer.type)
            buffer.type = buffer.argument.type ? buffer.argument.type->type : wanted;
        if (buffer.type != wanted)
            return ArgumentError("--buffer", buffer.text,
                                 Format("the elements are of type @, but parameter '@' of kernel '@' takes @",
                                        ElementTypeName(buffer.type), binding.first, plan_.kernel.name,
                                        ElementTypeName(wanted)));
    }
    for (const PlannedBuffer& buffer : plan_.buffers) {
        if (buffer.type)
            continue;
        NORVI_TRY(Find("--buffer", buffer.text, buffer.argument.name, ParameterRole::Buffer));
        return ArgumentError("--buffer", buffer.text,
                             Format("no parameter of kernel '@' is bound to it", plan_.kernel.name));
    }
    return OK;
}

Result<void> PlanMaker::PlanInitialValues() {
    const std::pair<InitialValues, const BaseArray<String>*> groups[] = {
        {InitialValues::Fill, &options_.fills},
        {InitialValues::Ramp, &options_.ramps},
        {InitialValues::Random, &options_.randoms}};
    for (const auto& [kind, texts] : groups)
        for (const String& text : *texts) {
            NORVI_TRY_VALUE(initial, ParseInitial(kind, text));
            const char* option = InitialOption(kind);
            PlannedBuffer* buffer = plan_.FindBuffer(initial.name);
            if (!buffer)
                return ArgumentError(option, text,
                                     Format("there is no buffer '@'@", initial.name,
                                            SuggestText(initial.name, BufferNames())));
            if (buffer->initial || !buffer->argument.file.empty())
                return ArgumentError(option, text, "the buffer has its values from another argument");
            const ElementType* type = FindElementType(buffer->type);
            if (!type)
                return ArgumentError(
                    option, text,
                    Format("elements of type @ can only be zero, or read from a file", buffer->type));
            const auto count = static_cast<Int>(initial.values.size());
            if (kind == InitialValues::Fill && count != 1 && count != type->components)
                return ArgumentError(option, text,
                                     Format("@ takes 1 or @ numbers", type->name, type->components));
            if (kind != InitialValues::Random)
                for (Number value : initial.values)
                    if (!type->scalar->holds(value))
                        return ArgumentError(
                            option, text, Format("@ cannot hold @", type->name, static_cast<Float64>(value)));
            buffer->initial = initial;
        }
    return OK;
}

Result<void> PlanMaker::PlanUniforms() {
    for (const String& text : options_.uniforms) {
        NORVI_TRY_VALUE(assignment, ParseAssignment("--uniform", text));
        NORVI_TRY_VALUE(parameter, Find("--uniform", text, assignment.name, ParameterRole::Uniform));
        if (Contains(plan_.uniforms, [&](const auto& other) { return other.name == assignment.name; }))
            return ArgumentError("--uniform", text,
                                 Format("parameter '@' was given before", assignment.name));
        const auto value = ParseUniform(*FindElementType(parameter->type), assignment.value);
        if (!value)
            return ArgumentError("--uniform", text,
                                 Format("parameter '@' of kernel '@': @", assignment.name, plan_.kernel.name,
                                        value.GetError().GetMessage()));
        plan_.uniforms.push_back({assignment.name, *value});
    }
    return OK;
}

Result<void> PlanMaker::PlanFormulas() {
    for (const String& text : options_.formulas) {
        NORVI_TRY_VALUE(assignment, ParseAssignment("--formula", text));
        NORVI_TRY(Find("--formula", text, assignment.name, ParameterRole::Formula));
        if (Contains(plan_.formulas, [&](const auto& other) { return other.name == assignment.name; }))
            return ArgumentError("--formula", text,
                                 Format("parameter '@' was given before", assignment.name));
        if (plan_.grid.y > 1 || plan_.grid.z > 1)
            return ArgumentError("--formula", text,
                                 "formulas need a grid of one dimension; in others they are not evaluated");
        plan_.formulas.push_back(assignment);
    }
    return OK;
}

Result<void> PlanMaker::PlanCounters() {
    for (const String& text : options_.counters) {
        NORVI_TRY_VALUE(counter, ParseCounter(text));
        NORVI_TRY(Find("--counter", text, counter.name, ParameterRole::Counter));
        if (Contains(plan_.counters, [&](const auto& other) { return other.name == counter.name; }))
            return ArgumentError("--counter", text, Format("parameter '@' was given before", counter.name));
        plan_.counters.push_back(counter);
    }
    return OK;
}

Result<void> PlanMaker::PlanNoises() {
    for (const String& text : options_.noises) {
        NORVI_TRY_VALUE(noise, ParseNoise(text));
        plan_.noises.push_back(noise);
    }
    const Bool takesNoise = Contains(plan_.kernel.parameters, [](const auto& parameter) {
        return parameter.role == ParameterRole::Noise;
    });
    if (!plan_.noises.empty() && !takesNoise)
        return ArgumentError("--noise", options_.noises[0],
                             Format("kernel '@' has no noise parameter", plan_.kernel.name));
    return OK;
}

Result<void> PlanMaker::PlanSwaps() {
    for (const String& text : options_.swaps) {
        NORVI_TRY_VALUE(swap, ParseSwap(text));
        const auto role = plan_.FindTexture(swap.first) ? ParameterRole::Texture : ParameterRole::Buffer;
        NORVI_TRY_VALUE(first, Find("--swap", text, swap.first, role));
        NORVI_TRY_VALUE(second, Find("--swap", text, swap.second, role));
        if (first->type != second->type)
            return ArgumentError("--swap", text,
                                 Format("'@' is of type @, '@' of type @", swap.first, first->GetTypeText(),
                                        swap.second, second->GetTypeText()));
        plan_.swaps.push_back(swap);
    }
    return OK;
}

Result<void> PlanMaker::PlanOutputs() {
    Bool hasStep = false;
    for (const String& text : options_.outputs) {
        NORVI_TRY_VALUE(output, ParseOutput(text));
        // The name of a buffer that goes by another name than the parameter will do.
        if (!plan_.FindBuffer(output.name) && !plan_.FindTexture(output.name))
            NORVI_TRY(Find("--output", text, output.name, ParameterRole::Buffer));
        hasStep = hasStep || output.HasStep();
        plan_.outputs.push_back(output);
    }
    if (plan_.outputEvery > 0 && !hasStep)
        return ArgumentError("--output-every", ToText(plan_.outputEvery),
                             "no --output has {step} in the name of its file");
    return OK;
}

Result<void> PlanMaker::CheckCompleteness() {
    for (const KernelParameterInfo& parameter : plan_.kernel.parameters)
        NORVI_TRY(CheckGiven(parameter));
    return OK;
}

Result<void> PlanMaker::CheckGiven(const KernelParameterInfo& parameter) {
    const auto isNamed = [&](const auto& other) { return other.name == parameter.name; };
    const String which =
        Format("@ parameter '@' of kernel '@'", RoleName(parameter.role), parameter.name, plan_.kernel.name);
    switch (parameter.role) {
    case ParameterRole::Buffer: {
        const DataType element = parameter.type.GetElementType();
        if (!plan_.FindBinding(parameter.name))
            return IllegalArgumentError(
                Format("@ was not given; add --buffer @=@:COUNT", which, parameter.name,
                       FindElementType(element) ? ElementTypeName(element) : "kernel"));
        break;
    }
    case ParameterRole::Texture:
        if (!plan_.FindTexture(parameter.name))
            return IllegalArgumentError(Format("@ was not given; add --texture @=PICTURE or --texture @=@",
                                               which, parameter.name, parameter.name,
                                               FindTextureKind(parameter.type)->GetSizeForm()));
        break;
    case ParameterRole::Counter:
        if (!Contains(plan_.counters, isNamed))
            return IllegalArgumentError(Format("@ was not given; add --counter @", which, parameter.name));
        break;
    case ParameterRole::Uniform:
        if (!Contains(plan_.uniforms, isNamed))
            plan_.warnings.push_back(Format("@ was not given and is zero", which));
        break;
    case ParameterRole::Noise:
        if (plan_.noises.empty())
            plan_.warnings.push_back(Format("@ was not given and is zero; add --noise MODE:SEED", which));
        break;
    case ParameterRole::Formula:
        break;
    case ParameterRole::Unsupported:
        return IllegalArgumentError(
            Format("@ is of type @, which no argument can give", which, parameter.type));
    }
    return OK;
}

} // namespace

PlannedBuffer* RunPlan::FindBuffer(const String& name) {
    const auto found = std::find_if(buffers.begin(), buffers.end(), [&](const PlannedBuffer& buffer) {
        return buffer.argument.name == name;
    });
    return found == buffers.end() ? nullptr : &*found;
}

const PlannedTexture* RunPlan::FindTexture(const String& name) const {
    const auto found = std::find_if(textures.begin(), textures.end(), [&](const PlannedTexture& texture) {
        return texture.argument.name == name;
    });
    return found == textures.end() ? nullptr : &*found;
}

NamePair* RunPlan::FindBinding(const String& parameter) {
    const auto found = std::find_if(bindings.begin(), bindings.end(),
                                    [&](const NamePair& binding) { return binding.first == parameter; });
    return found == bindings.end() ? nullptr : &*found;
}

Result<RunPlan> MakeRunPlan(const RunOptions& options) {
    return PlanMaker(options).Make();
}

} // namespace norvi

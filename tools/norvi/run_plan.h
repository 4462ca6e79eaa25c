// What `norvi run` is going to do: its arguments, checked against the kernel.
#pragma once

#include <norvi/host/data.h>

#include "norvi/kernel_catalog.h"
#include "norvi/run_arguments.h"
#include "norvi/texture_argument.h"
#include "norvi/texture_kind.h"

namespace norvi {

/// The arguments as they stand on the command line; docs/tool.md describes each.
struct RunOptions {
    String kernel;
    String grid;
    Int steps = 1;
    Int outputEvery = 0; ///< 0: after the last step only
    BaseArray<String> buffers, textures, bindings, fills, ramps, randoms, outputs;
    BaseArray<String> uniforms, formulas, counters, noises, swaps;
};

struct PlannedBuffer {
    BufferArgument argument;
    String text; ///< of the argument, for errors
    DataType type;
    std::optional<InitialArgument> initial;
};

struct PlannedTexture {
    TextureArgument argument;
    String text;             ///< of the argument, for errors
    const TextureKind* kind; ///< of the parameter of this name
};

struct PlannedUniform {
    String name;
    Data value;
};

struct RunPlan {
    KernelInfo kernel;
    Vec3<UInt32> grid;
    Int invocations = 0; ///< of one step, as many as the dispatch really makes
    Int steps = 1;
    Int outputEvery = 0;
    BaseArray<PlannedBuffer> buffers;
    BaseArray<PlannedTexture> textures;
    BaseArray<NamePair> bindings; ///< parameter and buffer; each buffer parameter once
    BaseArray<PlannedUniform> uniforms;
    BaseArray<Assignment> formulas;
    BaseArray<CounterArgument> counters;
    BaseArray<NoiseArgument> noises;
    BaseArray<NamePair> swaps; ///< of buffers, or of textures
    BaseArray<OutputArgument> outputs;
    BaseArray<String> warnings; ///< what was left out, but need not be given

    PlannedBuffer* FindBuffer(const String& name);
    const PlannedTexture* FindTexture(const String& name) const;
    NamePair* FindBinding(const String& parameter);
};

/// Needs the kernel's module to be loaded. Opens no files.
Result<RunPlan> MakeRunPlan(const RunOptions& options);

} // namespace norvi

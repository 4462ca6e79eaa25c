// The kernels of all loaded modules, and what their parameters are for.
#pragma once

#include <norvi/kernelinterface.h>

namespace norvi {

/// What a parameter takes.
enum class ParameterRole { Buffer, Texture, Uniform, Formula, Counter, Noise, Unsupported };

/// "buffer", "uniform" and so on.
const char* RoleName(ParameterRole role);
/// The option of `norvi run` that gives a parameter its value: "--buffer"; null where there is none.
const char* RoleOption(ParameterRole role);

struct KernelParameterInfo {
    String name;
    DataType type;
    ParameterRole role;

    /// "float32"; for buffers "buffer of float32"; for textures "texture 2D_RGBA_F32_LINEAR".
    String GetTypeText() const;
};

struct KernelInfo {
    String name;
    BaseArray<KernelParameterInfo> parameters; ///< in the order of declaration
    Vec3<UInt32> workGroupSize;
    Int granularity = 0;
    Int singleThreadedThreshold = 0;

    const KernelParameterInfo* FindParameter(const String& parameter) const;
    BaseArray<String> GetParameterNames() const;
};

/// The names of all kernels, sorted.
BaseArray<String> KernelNames();

/// The registered name that is meant by `text`: that name, or the part before its last dot if only one kernel
/// has it. Else an error that suggests near names.
Result<String> ResolveKernelName(const String& text);

/// Makes an object of the kernel to find out.
Result<KernelInfo> DescribeKernel(const String& name);

} // namespace norvi

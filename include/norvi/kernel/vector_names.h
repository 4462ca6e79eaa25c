// Other names of the kernel language's types: the framework's own and the HLSL-like ones.
//
// They hide the storage types of the same names inside kernels: there `Vector32` has operators and swizzles.
#pragma once

#include "norvi/kernel/vector_matrix.h"
#include "norvi/kernel/vector_types.h"

namespace norvi::kernel {

using Float32 = float;
using Int32 = int;
using UInt32 = uint;
using HalfFloat = half;
using Vector2d32 = vec2;
using Vector32 = vec3;
using Vector4d32 = vec4;
using IntVector4d32 = ivec4;
using SquareMatrix32 = mat3;
using SquareMatrix4d32 = mat4;
using Matrix32 = mat4;
using sqmat = mat3;

using float2 = vec2;
using float3 = vec3;
using float4 = vec4;
using int4 = ivec4;
using uint4 = uvec4;

template <typename X>
inline auto Sqrt(const X& x) -> decltype(sqrt(x)) {
    return sqrt(x);
}

} // namespace norvi::kernel

// Which type holds a value of a kernel type in buffers and parameters.
#pragma once

#include <cstddef>

#include "norvi/host/types.h"
#include "norvi/kernel/vector_matrix.h"
#include "norvi/kernel/vector_types.h"

namespace norvi::kernel {

template <typename T>
struct StorageTypeOf {
    using Type = T;
};

/// The storage type of a kernel type: vec3 gives norvi::Vector32, mat4 norvi::SquareMatrix4d32, and a type
/// that is none of the kernel language's vectors and matrices itself. Both have the same size, alignment and
/// layout, so a pointer to one may be reinterpreted as a pointer to the other; values convert implicitly from
/// storage to kernel type and explicitly back.
template <typename T>
using StorageOf = typename StorageTypeOf<T>::Type;

template <typename Kernel, typename Storage>
inline constexpr bool haveSameLayout = sizeof(Kernel) == sizeof(Storage) &&
                                       alignof(Kernel) == alignof(Storage) &&
                                       std::is_standard_layout_v<Kernel>&& std::is_standard_layout_v<Storage>;

#define NORVI_STORAGE(Kernel, Storage)                                                                       \
    template <>                                                                                              \
    struct StorageTypeOf<Kernel> {                                                                           \
        using Type = Storage;                                                                                \
    };                                                                                                       \
    static_assert(haveSameLayout<Kernel, Storage>);

NORVI_STORAGE(vec2, norvi::Vector2d32)
NORVI_STORAGE(vec3, norvi::Vector32)
NORVI_STORAGE(vec4, norvi::Vector4d32)
NORVI_STORAGE(ivec2, norvi::Vec2<norvi::Int32>)
NORVI_STORAGE(ivec3, norvi::Vec3<norvi::Int32>)
NORVI_STORAGE(ivec4, norvi::IntVector4d32)
NORVI_STORAGE(uvec2, norvi::Vec2<norvi::UInt32>)
NORVI_STORAGE(uvec3, norvi::Vec3<norvi::UInt32>)
NORVI_STORAGE(uvec4, norvi::Vec4<norvi::UInt32>)
NORVI_STORAGE(mat3, norvi::SquareMatrix32)
NORVI_STORAGE(mat4, norvi::SquareMatrix4d32)

static_assert(offsetof(vec4, y) == 4 && offsetof(vec4, z) == 8 && offsetof(vec4, w) == 12);
static_assert(offsetof(mat3, v1) == 12 && offsetof(mat3, v2) == 24);
static_assert(offsetof(mat4, v1) == 16 && offsetof(mat4, v2) == 32 && offsetof(mat4, v3) == 48);

} // namespace norvi::kernel

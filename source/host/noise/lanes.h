// The words of the kernel language that noise text uses, on the compiler's vector types: four lattice points
// are computed at a time, where the optimizer would not find the lanes in plain structures.
//
// Only what the text uses is here, with the meaning that the kernel language gives it.
#pragma once

#include <bit>
#include <cmath>

namespace norvi::noise {

using uint = unsigned int;
using std::abs;
using std::sqrt;

inline float min(float a, float b) {
    return b < a ? b : a;
}
inline float max(float a, float b) {
    return a < b ? b : a;
}

/// Four numbers in one register. `V` is the vector type that derives from it.
template <typename V, typename T>
struct Lanes {
    using Register __attribute__((vector_size(16))) = T;
    union {
        Register lanes;
        struct {
            T x, y, z, w;
        };
    };

    explicit Lanes(Register values) : lanes(values) {}
    friend V operator+(V a, V b) { return V(a.lanes + b.lanes); }
    friend V operator-(V a, V b) { return V(a.lanes - b.lanes); }
    friend V operator*(V a, V b) { return V(a.lanes * b.lanes); }
    friend V operator/(V a, V b) { return V(a.lanes / b.lanes); }
    friend V operator+(V a, T b) { return V(a.lanes + b); }
    friend V operator-(V a, T b) { return V(a.lanes - b); }
    friend V operator*(V a, T b) { return V(a.lanes * b); }
};

template <typename V>
struct UnsignedLanes : Lanes<V, uint> {
    using Lanes<V, uint>::Lanes;
    friend V operator^(V a, V b) { return V(a.lanes ^ b.lanes); }
    friend V operator|(V a, V b) { return V(a.lanes | b.lanes); }
    friend V operator^(V a, uint b) { return V(a.lanes ^ b); }
    friend V operator&(V a, uint b) { return V(a.lanes & b); }
    friend V operator<<(V a, uint b) { return V(a.lanes << b); }
    friend V operator>>(V a, uint b) { return V(a.lanes >> b); }
};

struct uvec4 : UnsignedLanes<uvec4> {
    using UnsignedLanes::UnsignedLanes;
    uvec4(uint a, uint b, uint c, uint d) : UnsignedLanes(Register{a, b, c, d}) {}
};

struct ivec4 : Lanes<ivec4, int> {
    using Lanes::Lanes;
    explicit ivec4(uvec4 values) : Lanes((Register)values.lanes) {}
    friend ivec4 operator>>(ivec4 a, int b) { return ivec4(a.lanes >> b); }
};

struct vec4 : Lanes<vec4, float> {
    using Lanes::Lanes;
    vec4(float a, float b, float c, float d) : Lanes(Register{a, b, c, d}) {}
    explicit vec4(ivec4 values) : Lanes(__builtin_convertvector(values.lanes, Register)) {}
};

// Vectors of three are held in four lanes as well, so that they are passed in one register.

struct vec3 : Lanes<vec3, float> {
    using Lanes::Lanes;
    vec3(float a, float b, float c) : Lanes(Register{a, b, c, 0}) {}
};

struct ivec3 : Lanes<ivec3, int> {
    using Lanes::Lanes;
    ivec3(int a, int b, int c) : Lanes(Register{a, b, c, 0}) {}
    explicit ivec3(vec3 values) : Lanes(__builtin_convertvector(values.lanes, Register)) {}
};

struct uvec3 : UnsignedLanes<uvec3> {
    using UnsignedLanes::UnsignedLanes;
    uvec3(uint a, uint b, uint c) : UnsignedLanes(Register{a, b, c, 0}) {}
    explicit uvec3(ivec3 values) : UnsignedLanes((Register)values.lanes) {}
};

/// Requires components below 2^31.
inline vec3 floor(vec3 v) {
    const ivec3 whole(v);
    const vec3::Register rounded = __builtin_convertvector(whole.lanes, vec3::Register);
    // A comparison that holds is -1.
    return vec3(__builtin_convertvector(whole.lanes + (v.lanes < rounded), vec3::Register));
}

inline uint floatBitsToUint(float x) {
    return std::bit_cast<uint>(x);
}
inline uvec4 floatBitsToUint(vec4 v) {
    return uvec4((uvec4::Register)v.lanes);
}
inline vec4 uintBitsToFloat(uvec4 v) {
    return vec4((vec4::Register)v.lanes);
}
inline vec4 abs(vec4 v) {
    return uintBitsToFloat(floatBitsToUint(v) & 0x7fffffffu);
}
inline vec4 min(vec4 a, vec4 b) {
    return vec4(b.lanes < a.lanes ? b.lanes : a.lanes);
}
inline vec4 max(vec4 a, vec4 b) {
    return vec4(a.lanes < b.lanes ? b.lanes : a.lanes);
}

} // namespace norvi::noise

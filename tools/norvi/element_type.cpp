#include "norvi/element_type.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace norvi {

namespace {

template <typename T>
Number Load(const void* source) {
    T value;
    std::memcpy(&value, source, sizeof(T));
    return static_cast<Number>(value);
}

template <typename T>
void Store(void* target, Number number) {
    const T value = static_cast<T>(number);
    std::memcpy(target, &value, sizeof(T));
}

template <typename T>
Bool Holds(Number value) {
    using Limits = std::numeric_limits<T>;
    if constexpr (Limits::is_integer)
        return value == std::floor(value) && value >= static_cast<Number>(Limits::lowest()) &&
               value <= static_cast<Number>(Limits::max());
    else
        return !std::isfinite(value) || std::isfinite(static_cast<Float64>(static_cast<T>(value)));
}

template <typename T>
ScalarType MakeScalar(const char* fileCode) {
    using Limits = std::numeric_limits<T>;
    return {fileCode,
            sizeof(T),
            Limits::is_integer,
            static_cast<Number>(Limits::lowest()),
            static_cast<Number>(Limits::max()),
            &Load<T>,
            &Store<T>,
            &Holds<T>};
}

enum Scalar { F4, F2, F8, I1, U1, I2, U2, I4, U4, I8, U8, B1 };

template <typename T>
ElementType MakeElement(const char* name, const char* kernelName, Scalar scalar) {
    const ScalarType& type = ScalarTypes()[scalar];
    return {name, kernelName, DataType::Of<T>(), &type, static_cast<Int>(sizeof(T)) / type.size};
}

} // namespace

const BaseArray<ScalarType>& ScalarTypes() {
    static const BaseArray<ScalarType> types = {
        MakeScalar<Float32>("<f4"),     MakeScalar<HalfFloat>("<f2"), MakeScalar<Float64>("<f8"),
        MakeScalar<std::int8_t>("|i1"), MakeScalar<UChar>("|u1"),     MakeScalar<Int16>("<i2"),
        MakeScalar<UInt16>("<u2"),      MakeScalar<Int32>("<i4"),     MakeScalar<UInt32>("<u4"),
        MakeScalar<Int64>("<i8"),       MakeScalar<UInt64>("<u8"),    MakeScalar<Bool>("|b1"),
    };
    return types;
}

const BaseArray<ElementType>& ElementTypes() {
    static const BaseArray<ElementType> types = {
        MakeElement<Float32>("float32", "float", F4),
        MakeElement<HalfFloat>("half", "half", F2),
        MakeElement<Float64>("float64", "double", F8),
        MakeElement<std::int8_t>("char", "int8", I1),
        MakeElement<UChar>("uchar", "uint8", U1),
        MakeElement<Int16>("int16", "int16", I2),
        MakeElement<UInt16>("uint16", "uint16", U2),
        MakeElement<Int32>("int32", "int", I4),
        MakeElement<UInt32>("uint32", "uint", U4),
        MakeElement<Int64>("int64", "int64", I8),
        MakeElement<UInt64>("uint64", "uint64", U8),
        MakeElement<Bool>("bool", "bool", B1),
        MakeElement<Vector2d32>("vec2", "float2", F4),
        MakeElement<Vector32>("vec3", "float3", F4),
        MakeElement<Vector4d32>("vec4", "float4", F4),
        MakeElement<Vec2<Int32>>("ivec2", "int2", I4),
        MakeElement<Vec3<Int32>>("ivec3", "int3", I4),
        MakeElement<Vec4<Int32>>("ivec4", "int4", I4),
        MakeElement<Vec2<UInt32>>("uvec2", "uint2", U4),
        MakeElement<Vec3<UInt32>>("uvec3", "uint3", U4),
        MakeElement<Vec4<UInt32>>("uvec4", "uint4", U4),
        MakeElement<Vec2<HalfFloat>>("half2", "half2", F2),
        MakeElement<Vec3<HalfFloat>>("half3", "half3", F2),
        MakeElement<Vec4<HalfFloat>>("half4", "half4", F2),
        MakeElement<SquareMatrix32>("mat3", "mat3", F4),
        MakeElement<SquareMatrix4d32>("mat4", "mat4", F4),
    };
    return types;
}

Result<const ElementType*> FindElementType(const String& name) {
    BaseArray<String> names;
    for (const ElementType& element : ElementTypes()) {
        if (name == element.name || name == element.kernelName || name == element.type.ToString())
            return &element;
        names.push_back(element.name);
    }
    return IllegalArgumentError(Format("'@' is no element type@", name, SuggestText(name, names)));
}

const ElementType* FindElementType(DataType type) {
    for (const ElementType& element : ElementTypes())
        if (element.type == type)
            return &element;
    return nullptr;
}

String ElementTypeName(DataType type) {
    const ElementType* element = FindElementType(type);
    return element ? element->name : type.ToString();
}

} // namespace norvi

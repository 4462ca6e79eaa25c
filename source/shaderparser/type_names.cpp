#include "type_names.h"

#include <initializer_list>

#include "shader_pieces.h"

namespace norvi {

namespace {

struct TypeRow {
    DataType type;
    std::initializer_list<std::string_view> sourceNames;
    const char* shaderName;
    const char* metalName = shaderName; ///< where Metal has a name of its own
};

const auto& GetTypes() {
    // clang-format off
    static const TypeRow types[] = {
        {DataType::Of<Float32>(), {"Float32", "float"}, "float"},
        {DataType::Of<Vector2d32>(), {"Vector2d32", "vec2", "float2"}, "vec2"},
        {DataType::Of<Vector32>(), {"Vector32", "vec3", "float3"}, "vec3"},
        {DataType::Of<Vector4d32>(), {"Vector4d32", "vec4", "float4"}, "vec4"},
        {DataType::Of<SquareMatrix4d32>(), {"Matrix32", "mat4", "SquareMatrix4d32"}, "mat4"},
        {DataType::Of<SquareMatrix32>(), {"SquareMatrix32", "mat3"}, "mat3"},
        {DataType::Of<UInt32>(), {"UInt32", "uint"}, "uint"},
        {DataType::Of<Int32>(), {"Int32", "int"}, "int"},
        {DataType::Of<Vec4<UInt32>>(), {"Vec4<UInt32>", "uint4"}, "uint4"},
        {DataType::Of<Vec4<Int32>>(), {"Vec4<Int32>", "IntVector4d32", "int4"}, "int4"},
        {DataType::Of<AtomicUInt32>(), {"AtomicUInt32*", "AtomicUInt32"}, "uint", "atomic_uint"},
        {DataType::Of<GradientRenderData>(), {"GradientRenderData*", "GradientRenderData"}, "GradientRenderData"},
        {DataType::Of<HalfFloat>(), {"HalfFloat", "half"}, "half"},
        {DataType::Of<Vec2<HalfFloat>>(), {"Vec2<HalfFloat>", "half2"}, "half2"},
        {DataType::Of<Vec3<HalfFloat>>(), {"Vec3<HalfFloat>", "half3"}, "half3"},
        {DataType::Of<Vec4<HalfFloat>>(), {"Vec4<HalfFloat>", "half4"}, "half4"},
    };
    // clang-format on
    return types;
}

} // namespace

DataType MapTypeName(std::string_view name) {
    for (const TypeRow& row : GetTypes())
        for (std::string_view sourceName : row.sourceNames)
            if (name == sourceName)
                return row.type;
    return {};
}

CString MapDataTypeToShaderName(DataType type, const CString& fallback, const Id& language) {
    for (const TypeRow& row : GetTypes())
        if (type == row.type)
            return language == shaderlanguage::Metal ? row.metalName : row.shaderName;
    return fallback;
}

} // namespace norvi

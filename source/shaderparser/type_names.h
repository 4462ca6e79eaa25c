// Type names of kernel source, framework types and the names that shaders know.
#pragma once

#include <norvi/host/datatype.h>

namespace norvi {

/// A colour gradient. Its data are the renderer's.
struct GradientRenderData {};
NORVI_DATATYPE_NAME(GradientRenderData, "GradientRenderData");

/// The type that a name in kernel source means, such as `Vector32` or `vec3`; no type for an unknown name.
DataType MapTypeName(std::string_view name);

/// The name of `type` in a shader of the given language, or `fallback` for any other type and for no type.
CString MapDataTypeToShaderName(DataType type, const CString& fallback, const Id& language);

} // namespace norvi

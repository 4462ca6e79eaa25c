// Writes inline functions for a target language.
#include <norvi/host/id.h>
#include <norvi/host/text.h>

#include "signature.h"

namespace norvi {

namespace {

enum class FunctionLanguage { Glsl, Hlsl, Metal, Other };

FunctionLanguage LanguageOf(UInt64 hash) {
    if (hash == Id::Hash("GLSL") || hash == Id::Hash("GLSLES"))
        return FunctionLanguage::Glsl;
    if (hash == Id::Hash("HLSL"))
        return FunctionLanguage::Hlsl;
    return hash == Id::Hash("METAL") ? FunctionLanguage::Metal : FunctionLanguage::Other;
}

/// Types that differ between languages in more than their name: the renderer's prologue defines a macro for
/// each, which declares a parameter.
struct OpaqueType {
    std::string_view type;
    std::string_view macro;
};

// clang-format off
constexpr OpaqueType opaqueTypes[] = {
    {"FramebufferLayerTypedef", "FRAMEBUFFER_LAYER_TYPEDEF("},
    {"FramebufferLayerDepthTypedef", "FRAMEBUFFER_LAYER_DEPTH_TYPEDEF("},
    {"FramebufferLayerIntTypedef", "FRAMEBUFFER_LAYER_INT_TYPEDEF("},
    {"FramebufferLayerUintTypedef", "FRAMEBUFFER_LAYER_UINT_TYPEDEF("},
    {"FramebufferLayerCubeTypedef", "FRAMEBUFFER_LAYER_CUBE_TYPEDEF("},
    {"FramebufferLayerCubeIntTypedef", "FRAMEBUFFER_LAYER_CUBE_INT_TYPEDEF("},
    {"FramebufferLayerCubeUintTypedef", "FRAMEBUFFER_LAYER_CUBE_UINT_TYPEDEF("},
    {"FramebufferLayerMultisampleTypedef", "FRAMEBUFFER_LAYER_MULTISAMPLE_TYPEDEF("},
    {"FramebufferLayerMultisampleDepthTypedef", "FRAMEBUFFER_LAYER_MULTISAMPLE_DEPTH_TYPEDEF("},
    {"FramebufferLayerMultisampleIntTypedef", "FRAMEBUFFER_LAYER_MULTISAMPLE_INT_TYPEDEF("},
    {"FramebufferLayerMultisampleUintTypedef", "FRAMEBUFFER_LAYER_MULTISAMPLE_UINT_TYPEDEF("},
    {"FramebufferLayerMultisampleCubeTypedef", "FRAMEBUFFER_LAYER_MULTISAMPLE_CUBE_TYPEDEF("},
    {"FramebufferLayerMultisampleCubeIntTypedef", "FRAMEBUFFER_LAYER_MULTISAMPLE_CUBE_INT_TYPEDEF("},
    {"FramebufferLayerMultisampleCubeUintTypedef", "FRAMEBUFFER_LAYER_MULTISAMPLE_CUBE_UINT_TYPEDEF("},
    {"sampler1dTypedef", "SAMPLER1D_TYPEDEF("},
    {"sampler2dTypedef", "SAMPLER2D_TYPEDEF("},
    {"sampler3dTypedef", "SAMPLER3D_TYPEDEF("},
    {"sampler1dArrayTypedef", "SAMPLER1D_ARRAY_TYPEDEF("},
    {"sampler2dArrayTypedef", "SAMPLER2D_ARRAY_TYPEDEF("},
    {"sampler2dDepthArrayTypedef", "SAMPLER2D_DEPTH_ARRAY_TYPEDEF("},
    {"isampler1dTypedef", "ISAMPLER1D_TYPEDEF("},
    {"isampler2dTypedef", "ISAMPLER2D_TYPEDEF("},
    {"isampler3dTypedef", "ISAMPLER3D_TYPEDEF("},
    {"isampler1dArrayTypedef", "ISAMPLER1D_ARRAY_TYPEDEF("},
    {"isampler2dArrayTypedef", "ISAMPLER2D_ARRAY_TYPEDEF("},
    {"usampler1dTypedef", "USAMPLER1D_TYPEDEF("},
    {"usampler2dTypedef", "USAMPLER2D_TYPEDEF("},
    {"usampler3dTypedef", "USAMPLER3D_TYPEDEF("},
    {"usampler1dArrayTypedef", "USAMPLER1D_ARRAY_TYPEDEF("},
    {"usampler2dArrayTypedef", "USAMPLER2D_ARRAY_TYPEDEF("},
};
// clang-format on

const OpaqueType* FindOpaqueType(std::string_view type) {
    for (const OpaqueType& row : opaqueTypes)
        if (row.type == type)
            return &row;
    return nullptr;
}

/// Type and name of a parameter that the function reads.
String InText(const FunctionParameterEntry& parameter, FunctionLanguage language) {
    if (const OpaqueType* opaque = FindOpaqueType(parameter.type))
        return Format("@@)", opaque->macro, parameter.name);
    const bool isConstant =
        language == FunctionLanguage::Metal && parameter.addressSpace == FunctionParameterEntry::Constant;
    return Format("@@ @", isConstant ? "constant " : "", parameter.type, parameter.name);
}

/// Type and name of a parameter that the function writes.
String OutText(const FunctionParameterEntry& parameter, FunctionLanguage language) {
    const char* before = "";
    const char* behindType = "";
    if (language == FunctionLanguage::Metal) {
        before = parameter.addressSpace == FunctionParameterEntry::Thread ? "thread " : "constant ";
        behindType = parameter.arraySize == FunctionParameterEntry::NoArray ? "&" : "";
    } else if (language != FunctionLanguage::Other) {
        before = parameter.direction == FunctionParameterEntry::Out ? "out " : "inout ";
    }
    return Format("@@@ @", before, parameter.type, behindType, parameter.name);
}

String ArrayText(const FunctionParameterEntry& parameter) {
    if (parameter.arraySize == FunctionParameterEntry::UnsizedArray)
        return "[]";
    return parameter.arraySize > 0 ? Format("[@]", parameter.arraySize) : String();
}

} // namespace

Result<CString> BuildFunctionText(const CString& name, const CString& returnType,
                                  const BaseArray<FunctionParameterEntry>& parameters, std::string_view body,
                                  UInt64 language) noexcept {
    return CatchOutOfMemory([&]() -> Result<CString> {
        const FunctionLanguage target = LanguageOf(language);
        String text = Format("@ @(", returnType, name);
        const char* separator = "";
        for (const FunctionParameterEntry& parameter : parameters) {
            const bool isIn = parameter.direction == FunctionParameterEntry::In;
            text += separator + (isIn ? InText(parameter, target) : OutText(parameter, target)) +
                    ArrayText(parameter);
            separator = ", ";
        }
        return text.append(")\n").append(body).append("\n");
    });
}

} // namespace norvi

// What one source file yields for one target language.
#pragma once

#include <unordered_map>

#include <norvi/host/datatype.h>
#include <norvi/host/id.h>

#include "mapped_text.h"

namespace norvi {

/// Ids of the target languages.
namespace shaderlanguage {
inline constexpr const char* Glsl = "GLSL";
inline constexpr const char* Hlsl = "HLSL";
inline constexpr const char* Metal = "METAL";
} // namespace shaderlanguage

/// A uniform or a buffer. A buffer has no type, and an element type name.
struct KernelParameterEntry {
    static constexpr UInt32 Const = 1, Varying = 2, Out = 4, Attribute = 8; ///< qualifiers

    DataType type;
    CString elementTypeName; ///< the T of `BaseArray<T>` and `Block<T>`
    CString name;
    UInt32 qualifier = 0;
    LineOrigin origin;
};

struct KernelTextureEntry {
    UInt32 textureKind = 0; ///< 1, 6 or 10 for one, two or three dimensions
    DataType pixelFormat;
    CString name;
    UChar isLinear = 0;
    UChar isConst = 0; ///< 1: read only, a sampler; 0: a storage image
    LineOrigin origin;
};

struct InlineFunctionEntry {
    String signature; ///< the line without `inline `
    MappedText text;  ///< the body
    LineOrigin origin;
};

struct StructEntry {
    CString name;
    BaseArray<String> lines; ///< the members between two entries "\n"
    BaseArray<LineOrigin> lineOrigins;
};

struct ShaderPieces {
    static constexpr UInt32 UnsetGroupSize = 0xFFFFFFFF;

    Id language;
    Int noiseCallCount = 0; ///< lines `ADDNOISECALL`
    BaseArray<InlineFunctionEntry> inlineFunctions;
    BaseArray<MappedText> globalBlocks;
    MappedText kernelText;
    BaseArray<KernelParameterEntry> parameters;
    BaseArray<KernelTextureEntry> textures;
    BaseArray<StructEntry> structs;
    BaseArray<MappedText> defines; ///< one line each
    Vec3<UInt32> groupSize{UnsetGroupSize, UnsetGroupSize, UnsetGroupSize};
    BaseArray<MappedText> groupSharedDeclarations;
    std::unordered_map<String, String> formulas; ///< text by name
    Int32 bufferCount = 0;
    Int32 uavTextureCount = 0;
    BaseArray<SourceFile> sourceFiles; ///< that the origins of lines refer to
};

} // namespace norvi

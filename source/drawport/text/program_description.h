// One compute shader before it is written: what is declared, and the texts, each with the origin of its
// lines.
#pragma once

#include <norvi/host/result.h>

#include "shaderparser/mapped_text.h"

namespace norvi {

class ShaderParser;

/// What a type or a member is called in shaders ("vec3", "Body"), and the name in kernel text.
struct ShaderVariable {
    CString type;
    CString name;
};

struct ShaderBuffer {
    CString elementType;
    CString name;
    bool isReadOnly = false;
};

/// Channels are stored as 32-bit or 16-bit floats, or as whole numbers without or with sign.
struct ShaderTexture {
    CString name;
    UInt32 dimensions = 2;
    UInt32 channelCount = 4;
    CString format;       ///< "f32", "f16", "u8", "u16", "u32" or "s32"
    bool isImage = false; ///< written by the shader
};

struct ShaderGroupShared {
    CString type;
    CString name;
    CString size;
    LineOrigin origin;
};

struct ProgramDescription {
    BaseArray<MappedText> code; ///< of the caller, in front of all that comes from the kernel
    BaseArray<MappedText> defines;
    BaseArray<MappedText> structs;
    BaseArray<ShaderVariable> uniforms;
    BaseArray<ShaderBuffer> buffers;
    BaseArray<CString> counters; ///< atomic counters
    BaseArray<ShaderTexture> textures;
    bool hasNoise = false; ///< the code above defines norviNoise then, see language_table.h
    BaseArray<MappedText> functions;
    BaseArray<ShaderGroupShared> groupShared;
    BaseArray<MappedText> globals;
    MappedText body;
    Vec3<UInt32> groupSize{256, 1, 1};
};

/// What a parsed kernel asks for, in the parser's language. Fails for an inline function that the language
/// cannot take, with the function's place.
Result<ProgramDescription> DescribeProgram(const ShaderParser& parser);

} // namespace norvi

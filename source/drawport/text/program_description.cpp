#include "program_description.h"

#include <algorithm>

#include <norvi/host/text.h>

#include "shaderparser/shaderparser.h"
#include "shaderparser/signature.h"
#include "shaderparser/texture_type.h"
#include "shaderparser/type_names.h"

namespace norvi {

namespace {

MappedText DescribeStruct(const StructEntry& entry) {
    MappedText text;
    text.text = Format("struct @ { ", entry.name);
    text.lines.push_back(entry.lineOrigins.front());
    for (size_t i = 0; i < entry.lines.size(); ++i) {
        text.text += i > 0 ? "\n" + entry.lines[i] : entry.lines[i];
        text.lines.push_back(entry.lineOrigins[i]);
    }
    text.text += " };\n";
    text.lines.push_back(entry.lineOrigins.back());
    return text;
}

/// The marks of noise must not reach a compiler.
String WithoutNoiseMarks(const String& text) {
    static constexpr std::string_view mark = "ADDNOISECALL";
    String result;
    size_t begin = 0;
    for (size_t found; (found = text.find(mark, begin)) != String::npos; begin = found + mark.size())
        result.append(text, begin, found - begin);
    return result.append(text, begin);
}

Result<MappedText> DescribeFunction(const InlineFunctionEntry& function, const ShaderParser& parser) {
    CString name, returnType;
    BaseArray<FunctionParameterEntry> parameters;
    NORVI_TRY(ParseSignature(function.signature, name, returnType, parameters));
    NORVI_TRY_VALUE(text,
                    BuildFunctionText(name, returnType, parameters, WithoutNoiseMarks(function.text.text),
                                      parser.GetLanguage().GetHashCode()));
    MappedText mapped;
    mapped.text = std::move(text);
    mapped.lines.push_back(function.origin);
    mapped.lines.insert(mapped.lines.end(), function.text.lines.begin(), function.text.lines.end());
    return mapped;
}

Result<void> DescribeFunctions(const ShaderParser& parser, ProgramDescription& program) {
    for (const InlineFunctionEntry& function : parser.GetInlineFunctions()) {
        auto text = DescribeFunction(function, parser);
        if (!text)
            return AtPlace(Failure(text.TakeError()),
                           parser.GetSourceFiles()[function.origin.file].url.ToString(),
                           function.origin.line);
        program.functions.push_back(std::move(*text));
    }
    return OK;
}

void DescribeParameter(const KernelParameterEntry& entry, const Id& language, ProgramDescription& program) {
    if (entry.type == DataType::Of<AtomicUInt32>()) {
        program.counters.push_back(entry.name);
    } else if (entry.type) {
        program.uniforms.push_back(
            {MapDataTypeToShaderName(entry.type, entry.elementTypeName, language), entry.name});
    } else {
        const CString element =
            MapDataTypeToShaderName(MapTypeName(entry.elementTypeName), entry.elementTypeName, language);
        program.buffers.push_back(
            {element, entry.name, (entry.qualifier & KernelParameterEntry::Const) != 0});
    }
}

/// "net.norvi.image.pixelformat.dynamic.redgreenf32" has two channels of the format "f32".
ShaderTexture DescribeTexture(const KernelTextureEntry& entry) {
    ShaderTexture texture;
    texture.name = entry.name;
    texture.dimensions = entry.textureKind == 1 ? 1 : entry.textureKind == 6 ? 2 : 3;
    texture.isImage = entry.isConst == 0;
    const PixelFormatParts parts = GetPixelFormatParts(entry.pixelFormat);
    texture.channelCount = parts.channelCount;
    texture.format = parts.format;
    return texture;
}

/// Takes "groupSharedMemory TYPE NAME[SIZE]; \n" apart.
ShaderGroupShared DescribeGroupShared(const MappedText& declaration) {
    const String& text = declaration.text;
    const size_t type = text.find(' ') + 1;
    const size_t size = text.find('[') + 1;
    const size_t name = text.rfind(' ', size) + 1;
    ShaderGroupShared shared;
    shared.type = text.substr(type, name - 1 - type);
    shared.name = text.substr(name, size - 1 - name);
    shared.size = text.substr(size, text.find(']', size) - size);
    shared.origin = declaration.lines.front();
    return shared;
}

} // namespace

Result<ProgramDescription> DescribeProgram(const ShaderParser& parser) {
    return CatchOutOfMemory([&]() -> Result<ProgramDescription> {
        ProgramDescription program;
        program.defines = parser.GetDefines();
        for (const StructEntry& entry : parser.GetStructs())
            program.structs.push_back(DescribeStruct(entry));
        for (const KernelParameterEntry& entry : parser.GetParameters())
            DescribeParameter(entry, parser.GetLanguage(), program);
        for (const KernelTextureEntry& entry : parser.GetTextures())
            program.textures.push_back(DescribeTexture(entry));
        program.hasNoise = parser.GetNoiseCallCount() > 0;
        NORVI_TRY(DescribeFunctions(parser, program));
        for (const MappedText& declaration : parser.GetGroupSharedDeclarations())
            program.groupShared.push_back(DescribeGroupShared(declaration));
        program.globals = parser.GetGlobalBlocks();
        program.body = parser.GetKernelText();
        program.body.text = WithoutNoiseMarks(program.body.text);
        program.groupSize = parser.GetWorkGroupSize();
        return program;
    });
}

} // namespace norvi

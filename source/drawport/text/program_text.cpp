#include "program_text.h"

#include <algorithm>

#include <norvi/host/text.h>

namespace norvi {

namespace {

struct PatternValue {
    std::string_view key;
    String value;
};

using Values = std::initializer_list<PatternValue>;

String Fill(std::string_view pattern, Values values) {
    String text;
    for (size_t mark = pattern.find('$'); mark != pattern.npos; mark = pattern.find('$')) {
        text += pattern.substr(0, mark);
        const size_t end = pattern.find('$', mark + 1);
        const std::string_view key = pattern.substr(mark + 1, end - mark - 1);
        const auto value = std::find_if(values.begin(), values.end(),
                                        [&](const PatternValue& row) { return row.key == key; });
        text += value->value;
        pattern.remove_prefix(end + 1);
    }
    return text.append(pattern);
}

/// Where the words for the texels of a texture come from.
struct TexelKind {
    char format;              ///< first letter of the format
    const char* kind;         ///< type of a component
    const char* kindLetter;   ///< in front of vec4
    const char* layoutLetter; ///< behind rgba8
};
constexpr TexelKind texelKinds[] = {
    {'f', "float", "", "f"}, {'u', "uint", "u", "ui"}, {'s', "int", "i", "i"}};

/// Textures with three channels are stored with four.
struct TexelChannels {
    const char* layout;
    const char* stored;
    const char* components;
};
constexpr TexelChannels texelChannels[] = {
    {"r", "", ".x, 0, 0, 0"}, {"rg", "2", ".xy, 0, 0"}, {"rgba", "4", ".xyz, 0"}, {"rgba", "4", ""}};

class ProgramWriter {
  public:
    ProgramWriter(const ProgramDescription& program, const ShaderLanguage& language)
        : program_(program), language_(language) {}

    MappedText Write() {
        Write(PrologueOf(language_));
        WriteSized(language_.groupSize);
        WriteBlocks(program_.code);
        WriteBlocks(program_.defines);
        WriteStored();
        WriteBlocks(program_.functions);
        for (const ShaderGroupShared& shared : program_.groupShared)
            WriteGroupShared(shared);
        WriteBlocks(program_.globals);
        WriteSized(language_.bodyBegin);
        WriteBlock(program_.body);
        Write(Fill(language_.bodyEnd,
                   {{"parameters", parameters_}, {"arguments", arguments_}, {"locals", locals_}}));
        return std::move(result_);
    }

  private:
    void WriteSized(const char* pattern) {
        Write(Fill(pattern, {{"x", ToText(program_.groupSize.x)},
                             {"y", ToText(program_.groupSize.y)},
                             {"z", ToText(program_.groupSize.z)}}));
    }

    /// All that says how values lie in memory.
    void WriteStored() {
        const String types = StoredTypes();
        const auto isUsed = [&](const ShaderWord& row) { return types.find(row.word) != String::npos; };
        for (const ShaderWord& row : language_.storageWords)
            if (isUsed(row))
                Write(Format("#undef @\n#define @ @\n", row.word, row.word, row.meaning));
        WriteBlocks(program_.structs);
        Write(language_.programBegin);
        WriteDeclarations();
        for (const ShaderWord& row : language_.storageWords)
            if (isUsed(row))
                RestoreWord(row.word);
    }

    String StoredTypes() const {
        String types;
        for (const MappedText& text : program_.structs)
            types += text.text;
        for (const ShaderVariable& uniform : program_.uniforms)
            types += uniform.type + " ";
        for (const ShaderBuffer& buffer : program_.buffers)
            types += buffer.elementType + " ";
        return types;
    }

    /// Behind a storage word: the word may stand in the table as a macro with arguments.
    void RestoreWord(std::string_view word) {
        Write(Format("#undef @\n", word));
        for (const ShaderWord& row : language_.words)
            if (row.word.starts_with(String(word) + "("))
                Write(Format("#define @ @\n", row.word, row.meaning));
    }

    void WriteDeclarations() {
        WriteUniforms();
        for (const ShaderBuffer& buffer : program_.buffers)
            WriteDeclaration(
                buffer.isReadOnly ? language_.readOnlyBuffer : language_.buffer,
                {{"binding", NextBinding()}, {"type", buffer.elementType}, {"name", buffer.name}});
        for (const CString& counter : program_.counters)
            WriteDeclaration(language_.counter, {{"binding", NextBinding()}, {"name", counter}});
        UInt32 index = 0;
        for (const ShaderTexture& texture : program_.textures)
            WriteTexture(texture, index++);
    }

    void WriteUniforms() {
        if (program_.uniforms.empty() && !program_.hasNoise)
            return;
        const String binding = NextBinding();
        Write(Fill(language_.uniformsBegin, {{"binding", binding}}));
        for (const ShaderVariable& uniform : program_.uniforms)
            Write(Format("@ norvi_@;\n", uniform.type, uniform.name));
        if (program_.hasNoise)
            Write(Format("int norviNoiseModes[@];\nint norviNoiseSeeds[@];\n", NoiseUniformCount,
                         NoiseUniformCount));
        WriteDeclaration(language_.uniformsEnd, {{"binding", binding}});
    }

    void WriteTexture(const ShaderTexture& texture, UInt32 index) {
        const auto kind = std::find_if(std::begin(texelKinds), std::end(texelKinds),
                                       [&](const TexelKind& row) { return row.format == texture.format[0]; });
        const TexelChannels& channels = texelChannels[texture.channelCount - 1];
        WriteDeclaration(texture.isImage ? language_.image : language_.texture,
                         {{"binding", NextBinding()},
                          {"index", ToText(index)},
                          {"name", texture.name},
                          {"dimensions", ToText(texture.dimensions)},
                          {"kind", kind->kind},
                          {"class", kind->kindLetter},
                          {"layout", channels.layout + texture.format.substr(1) + kind->layoutLetter},
                          {"stored", channels.stored},
                          {"components", channels.components}});
    }

    void WriteGroupShared(const ShaderGroupShared& shared) {
        const Values values = {{"type", shared.type}, {"name", shared.name}, {"size", shared.size}};
        const size_t begin = result_.lines.size();
        WriteDeclaration(language_.groupShared, values);
        std::fill(result_.lines.begin() + static_cast<Int>(begin), result_.lines.end(), shared.origin);
        locals_ += Fill(language_.groupSharedLocal, values);
    }

    void WriteDeclaration(const ShaderDeclaration& declaration, Values values) {
        Write(Fill(declaration.text, values));
        parameters_ += Fill(declaration.parameter, values);
        arguments_ += Fill(declaration.argument, values);
    }

    String NextBinding() { return ToText(binding_++); }

    void WriteBlocks(const BaseArray<MappedText>& blocks) {
        for (const MappedText& block : blocks)
            WriteBlock(block);
    }

    /// Each line of the result has exactly one origin, and ends with a line break.
    void WriteBlock(const MappedText& block) {
        result_.text += block.text;
        if (!block.text.ends_with('\n'))
            result_.text += '\n';
        const auto lineCount = static_cast<size_t>(std::count(block.text.begin(), block.text.end(), '\n')) +
                               size_t{!block.text.ends_with('\n')};
        for (size_t i = 0; i < lineCount; ++i)
            result_.lines.push_back(i < block.lines.size() ? block.lines[i] : LineOrigin());
    }

    void Write(std::string_view text) {
        result_.text += text;
        result_.lines.resize(result_.lines.size() +
                             static_cast<size_t>(std::count(text.begin(), text.end(), '\n')));
    }

    const ProgramDescription& program_;
    const ShaderLanguage& language_;
    MappedText result_;
    String parameters_, arguments_, locals_; ///< of the entry
    UInt32 binding_ = 0;
};

} // namespace

String PrologueOf(const ShaderLanguage& language) {
    String text = language.head;
    for (const ShaderWord& word : language.words)
        text += Format("#define @ @\n", word.word, word.meaning);
    return text + language.prologue;
}

Result<MappedText> WriteProgram(const ProgramDescription& program, const ShaderLanguage& language) {
    return CatchOutOfMemory([&]() -> Result<MappedText> { return ProgramWriter(program, language).Write(); });
}

} // namespace norvi

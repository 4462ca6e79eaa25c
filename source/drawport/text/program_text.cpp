#include "program_text.h"

#include <algorithm>

#include <norvi/host/text.h>

namespace norvi {

namespace {

struct PatternValue {
    std::string_view key;
    String value;
};

String Fill(std::string_view pattern, std::initializer_list<PatternValue> values) {
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

/// Whether a name stands for a type of 16-bit floats.
bool IsHalf(const CString& type) {
    return type.starts_with("half") || type == "HalfFloat";
}

class ProgramWriter {
  public:
    ProgramWriter(const ProgramDescription& program, const ShaderLanguage& language)
        : program_(program), language_(language) {}

    MappedText Write() {
        WritePrologue();
        WriteBlocks(program_.code);
        WriteBlocks(program_.defines);
        WriteBlocks(program_.structs);
        WriteUniforms();
        for (const ShaderBuffer& buffer : program_.buffers)
            Write(Fill(buffer.isReadOnly ? language_.readOnlyBuffer : language_.buffer,
                       {{"binding", NextBinding()}, {"type", buffer.elementType}, {"name", buffer.name}}));
        for (const CString& counter : program_.counters)
            Write(Fill(language_.counter, {{"binding", NextBinding()}, {"name", counter}}));
        for (const ShaderTexture& texture : program_.textures)
            WriteTexture(texture);
        WriteBlocks(program_.functions);
        WriteBlocks(program_.groupShared);
        WriteBlocks(program_.globals);
        Write(language_.bodyBegin);
        WriteBlock(program_.body);
        Write(language_.bodyEnd);
        return std::move(result_);
    }

  private:
    void WritePrologue() {
        Write(language_.head);
        if (UsesHalf())
            Write(language_.halfHead);
        Write(Fill(language_.groupSize, {{"x", ToText(program_.groupSize.x)},
                                         {"y", ToText(program_.groupSize.y)},
                                         {"z", ToText(program_.groupSize.z)}}));
        for (const ShaderWord& word : language_.words)
            Write(Format("#define @ @\n", word.word, word.meaning));
        Write(language_.prologue);
    }

    bool UsesHalf() const {
        return std::any_of(program_.uniforms.begin(), program_.uniforms.end(),
                           [](const ShaderVariable& uniform) { return IsHalf(uniform.type); }) ||
               std::any_of(program_.buffers.begin(), program_.buffers.end(),
                           [](const ShaderBuffer& buffer) { return IsHalf(buffer.elementType); });
    }

    void WriteUniforms() {
        if (program_.uniforms.empty() && !program_.hasNoise)
            return;
        Write(Fill(language_.uniformsBegin, {{"binding", NextBinding()}}));
        for (const ShaderVariable& uniform : program_.uniforms)
            Write(Fill(language_.uniform, {{"type", uniform.type}, {"name", uniform.name}}));
        if (program_.hasNoise)
            Write(Fill(language_.noiseUniforms, {{"count", ToText(NoiseUniformCount)}}));
        Write(language_.uniformsEnd);
    }

    void WriteTexture(const ShaderTexture& texture) {
        Write(Fill(texture.isImage ? language_.image : language_.texture,
                   {{"binding", NextBinding()},
                    {"name", texture.name},
                    {"dimensions", ToText(texture.dimensions)},
                    {"class", String(language_.classOf(texture.format[0]))},
                    {"layout", language_.layoutOf(texture.channelCount, texture.format)}}));
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
    UInt32 binding_ = 0;
};

} // namespace

Result<MappedText> WriteProgram(const ProgramDescription& program, const ShaderLanguage& language) {
    return CatchOutOfMemory([&]() -> Result<MappedText> { return ProgramWriter(program, language).Write(); });
}

String DescribeAtOrigin(const MappedText& program, const BaseArray<SourceFile>& files, Int line,
                        std::string_view message) {
    const auto index = static_cast<size_t>(line - 1);
    if (line < 1 || index >= program.lines.size() || program.lines[index].line == 0)
        return String(message);
    const LineOrigin origin = program.lines[index];
    const String text = GetOriginText(files, origin);
    return Format("@(@): @", files[origin.file].url, origin.line, message) +
           (text.empty() ? "" : "\n" + text);
}

} // namespace norvi

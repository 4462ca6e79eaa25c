#include "norvi/shader_check.h"

#include <charconv>
#include <optional>

#include <norvi/host/text.h>

#include "norvi/child_process.h"
#include "shaderparser/author_text.h"
#include "shaderparser/text_lines.h"

namespace norvi {

namespace {

/// A command that compiles what comes through its standard input.
struct Compiler {
    const char* language;
    BaseArray<String> command;
};

const BaseArray<Compiler>& GetCompilers() {
    static const BaseArray<Compiler> compilers = {
        {shaderlanguage::Glsl,
         {"glslangValidator", "--stdin", "-S", "comp", "-V", "--target-env", "vulkan1.2", "-o", "/dev/null"}},
        {shaderlanguage::Hlsl,
         {"glslangValidator", "--stdin", "-S", "comp", "-D", "-V", "--target-env", "vulkan1.2", "-e", "main",
          "-o", "/dev/null"}},
        {shaderlanguage::Metal,
         {"xcrun", "-sdk", "macosx", "metal", "-x", "metal", "-c", "-", "-o", "/dev/null"}},
        {shaderlanguage::Metal, {"metal", "-x", "metal", "-c", "-", "-o", "/dev/null"}},
    };
    return compilers;
}

struct PlacedMessage {
    Int line;
    std::string_view text;
};

/// Takes "ERROR: name:LINE: text" and "name:LINE:COLUMN: error: text" apart.
std::optional<PlacedMessage> ReadMessage(std::string_view line) {
    if (line.find("rror") == line.npos && line.find("ERROR") == line.npos)
        return std::nullopt;
    for (size_t colon = line.find(':'); colon != line.npos; colon = line.find(':', colon + 1)) {
        PlacedMessage message{};
        const char* const end = line.data() + line.size();
        const auto [stop, error] = std::from_chars(line.data() + colon + 1, end, message.line);
        if (error != std::errc() || stop == end || *stop != ':')
            continue;
        std::string_view text = line.substr(static_cast<size_t>(stop + 1 - line.data()));
        text.remove_prefix(std::min(text.find_first_not_of("0123456789:"), text.size()));
        message.text = Trim(text);
        return message;
    }
    return std::nullopt;
}

} // namespace

String CompilerMessages(const MappedText& program, const BaseArray<SourceFile>& files,
                        std::string_view output) {
    String placed, all;
    LineReader lines(output);
    while (lines.Next()) {
        const std::string_view line = lines.GetLine();
        if (line.empty())
            continue;
        const auto message = ReadMessage(line);
        String& text = message ? placed : all;
        text.append(text.empty() ? "" : "\n");
        text.append(message ? DescribeForAuthor(program, files, message->line, message->text)
                            : DescribeForAuthor(program, files, 0, line));
    }
    return placed.empty() ? all : placed;
}

Result<void> CheckProgram(const MappedText& program, const ShaderParser& parser) {
    String missing;
    for (const Compiler& compiler : GetCompilers()) {
        if (parser.GetLanguage() != compiler.language)
            continue;
        auto run = RunWithInput(compiler.command, program.text);
        if (!run && run.GetError().Is(errorkind::NotFound)) {
            missing.append(missing.empty() ? "" : " or ").append(compiler.command.front());
            continue;
        }
        NORVI_TRY(run);
        if (run->status == 0)
            return OK;
        const String messages = CompilerMessages(program, parser.GetSourceFiles(), run->output);
        return IllegalArgumentError(!messages.empty()
                                        ? messages
                                        : Format("@ ended with the status @ and without a message",
                                                 compiler.command.front(), Int{run->status}));
    }
    return NotFoundError(
        Format("there is no compiler at hand for @: install @", parser.GetLanguage(), missing));
}

} // namespace norvi

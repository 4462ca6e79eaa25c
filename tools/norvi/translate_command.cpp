#include "norvi/translate_command.h"

#include <fmt/format.h>

#include <norvi/host/text.h>

#include "norvi/shader_check.h"
#include "norvi/shader_pieces_report.h"
#include "norvi/whole_file.h"
#include "shaderparser/author_text.h"

namespace norvi {

namespace {

constexpr Int32 MostSamples = 64;

void AddOptions(CLI::App& command, TranslateOptions& options) {
    TranslationOptions& translation = options.translation;
    command.add_option("KERNEL", translation.kernel, "A kernel file, or an installed kernel by its name")
        ->required();
    command.add_option("--language", translation.language, "Language of the program")
        ->check(CLI::IsMember(LanguageNames()))
        ->capture_default_str();
    command.add_option("--template", translation.templateArgument, "What replaces TYPE in the kernel")
        ->type_name("TYPE");
    command.add_option("--formula", translation.formulas, "A formula; may be given again")
        ->type_name("NAME=TEXT")
        ->allow_extra_args(false);
    command.add_option("--multisampling", translation.multisampling, "Samples of a pixel, in shaders")
        ->type_name("N")
        ->check(CLI::Range(Int32{0}, MostSamples));
    command.add_option("-o,--output", options.output, "Writes a file instead of the standard output")
        ->type_name("FILE");
    CLI::Option* pieces =
        command.add_flag("--pieces", options.showPieces, "Shows what was understood instead of the program");
    command.add_flag("--json", options.isJson, "Shows it as JSON")->needs(pieces);
    command.add_flag("--check", options.check, "Has a compiler judge the program instead")->excludes(pieces);
}

} // namespace

void AddTranslateCommand(CLI::App& app, CommandContext& context) {
    const auto options = std::make_shared<TranslateOptions>();
    CLI::App* command = app.add_subcommand("translate", "Show a kernel as GLSL, HLSL or Metal");
    AddOptions(*command, *options);
    command->footer(ExamplesText({
        "norvi translate saxpy",
        "norvi translate fill --template half --output fill.comp",
        "norvi translate n_body --pieces",
        "norvi translate n_body --pieces --json --language metal",
        "norvi translate apply_formula --formula \"formula=sin(value) * 2\" --check",
    }));
    command->callback([options, &context] {
        context.action = [options](CommandContext&) -> Result<void> {
            NORVI_TRY_VALUE(text, TranslateText(*options));
            if (!options->output.empty())
                return WriteWholeFile(options->output, text);
            fmt::print("{}", text);
            return OK;
        };
    });
}

Result<String> TranslateText(const TranslateOptions& options) {
    const String& languageName = options.translation.language;
    ShaderParser parser(LanguageId(languageName));
    NORVI_TRY(ParseKernel(parser, options.translation));
    if (options.showPieces)
        return options.isJson ? PiecesJsonText(parser) : PiecesText(parser);
    NORVI_TRY_VALUE(language, RequireLanguage(languageName));
    NORVI_TRY_VALUE(program, TranslateParsed(parser, *language));
    if (options.check) {
        NORVI_TRY(CheckProgram(program, parser));
        return Format("@ compiles as @\n", parser.GetSourceFiles().back().url, languageName);
    }
    if (HoldEncodedText(parser.GetSourceFiles()))
        return IllegalArgumentError(
            Format("the program of @ holds text of encoded files, which is not shown; --check works",
                   options.translation.kernel));
    return program.text;
}

} // namespace norvi

#include "norvi/translation.h"

#include <algorithm>

#include <norvi/host/text.h>

#include "drawport/text/program_text.h"
#include "norvi/kernel_file.h"
#include "shaderparser/author_text.h"
#include "shaderparser/text_lines.h"

namespace norvi {

namespace {

struct LanguageName {
    const char* name;
    const char* id;
};

constexpr LanguageName languageNames[] = {
    {"glsl", shaderlanguage::Glsl}, {"hlsl", shaderlanguage::Hlsl}, {"metal", shaderlanguage::Metal}};

/// Names of the kernel's parameters that are colour conversions.
BaseArray<String> ColorConversions(std::string_view text) {
    static constexpr std::string_view parameter = "(IGNORE_VARIABLE_GPU ColorConversionFunction) ";
    BaseArray<String> names;
    for (size_t found = text.find(parameter); found != text.npos; found = text.find(parameter)) {
        text.remove_prefix(found + parameter.size());
        names.emplace_back(text.substr(0, text.find_first_of(",\\ \r\n")));
    }
    return names;
}

/// What a host program puts in front of the kernel's own text.
MappedText StandIns(const ProgramDescription& program, const String& kernelText) {
    MappedText code;
    if (program.hasNoise)
        code.AppendLines("// stands in for noise, which a host program supplies\n"
                         "float norviNoise(int mode, int seed, vec3 place, float time)\n"
                         "{\n"
                         "return 0.0;\n"
                         "}",
                         {});
    for (const String& name : ColorConversions(kernelText))
        code.AppendLines(Format("// stands in for the colour conversion of a host program\n"
                                "#define @(color) (color)",
                                name),
                         {});
    return code;
}

Result<void> Parse(ShaderParser& parser, const TranslationOptions& options) {
    for (const String& text : options.formulas) {
        NORVI_TRY_VALUE(formula, ParseAssignment("--formula", text));
        NORVI_TRY(parser.AddFormula(formula.name, formula.value));
    }
    DataDictionary settings;
    settings.Set(Id(shaderparseroption::TemplateArgument), options.templateArgument);
    if (options.multisampling >= 0)
        settings.Set(Id(shaderparseroption::Multisampling), options.multisampling);
    NORVI_TRY_VALUE(file, FindKernelFile(options.kernel));
    return parser.ParseFile(Url(file), settings);
}

/// The failure with a message for the author of the text.
Failure ForAuthor(Failure failure, const ShaderParser& parser) {
    const Result<void> result = std::move(failure);
    const Error& error = result.GetError();
    return MakeError(error.GetKind(), DescribeForAuthor(error, parser.GetSourceFiles()), error.GetLocation(),
                     error.GetNativeCode());
}

} // namespace

BaseArray<String> LanguageNames() {
    BaseArray<String> names;
    for (const LanguageName& row : languageNames)
        names.emplace_back(row.name);
    return names;
}

Id LanguageId(const String& name) {
    const auto row = std::find_if(std::begin(languageNames), std::end(languageNames),
                                  [&](const LanguageName& candidate) { return name == candidate.name; });
    return Id(row == std::end(languageNames) ? name.c_str() : row->id);
}

Result<const ShaderLanguage*> RequireLanguage(const String& name) {
    if (const ShaderLanguage* language = FindShaderLanguage(LanguageId(name)))
        return language;
    return NotFoundError(Format("programs cannot be written in @", name));
}

Result<void> ParseKernel(ShaderParser& parser, const TranslationOptions& options) {
    if (Result<void> result = Parse(parser, options); !result)
        return ForAuthor(Failure(result.TakeError()), parser);
    return OK;
}

Result<MappedText> TranslateParsed(const ShaderParser& parser, const ShaderLanguage& language) {
    auto program = DescribeProgram(parser);
    if (!program)
        return ForAuthor(Failure(program.TakeError()), parser);
    const SourceFile& kernel = parser.GetSourceFiles().back();
    if (MappedText code = StandIns(*program, kernel.text ? *kernel.text : ""); !code.IsEmpty())
        program->code.push_back(std::move(code));
    return WriteProgram(*program, language);
}

} // namespace norvi

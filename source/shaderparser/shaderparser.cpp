#include "shaderparser.h"

#include <norvi/host/formula.h>

#include "encoded_file.h"
#include "include_file.h"
#include "line_walk.h"

namespace norvi {

namespace {

Result<MacroContext> ReadOptions(ShaderPieces& shader, const DataDictionary& options) {
    MacroContext context(shader);
    if (const Data* argument = options.Find(Id(shaderparseroption::TemplateArgument))) {
        NORVI_TRY_VALUE(text, argument->GetAs<String>());
        context.templateArgument = text;
    }
    if (const Data* multisampling = options.Find(Id(shaderparseroption::Multisampling))) {
        NORVI_TRY_VALUE(samples, multisampling->GetAs<Int32>());
        context.multisampling = samples;
    }
    return context;
}

Result<void> ReadHeaders(ShaderPieces& shader, const Url& file, SourceAccess sources,
                         const MacroLists& macros, MacroContext& context) {
    NORVI_TRY_VALUE(headers, IncludeReader(shader, sources).ReadIncludes(file));
    for (const IncludeFileEntry& header : headers)
        NORVI_TRY(ReadIncludeFile(shader, header, sources.files, macros.signature, context));
    return OK;
}

Result<void> ReadKernelFile(ShaderPieces& shader, const Url& file, SourceAccess sources,
                            const MacroLists& macros, MacroContext& context) {
    NORVI_TRY_VALUE(bytes, sources.files.Read(file));
    const auto text = std::make_shared<String>(std::move(bytes));
    const bool isEncoded = HasEncodedMagic(*text);
    // What cannot be decoded is taken as it stands.
    (void)DecodeShaderFile(*text);
    const auto index = static_cast<UInt32>(shader.sourceFiles.size());
    shader.sourceFiles.push_back({file, isEncoded, isEncoded ? nullptr : text});
    const DecodedText decoded(*text);
    return LineWalk(shader, decoded.Get(), index, macros, context).Run();
}

} // namespace

Result<void> ShaderParser::AddFormula(const String& name, const String& expression) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY_VALUE(seeded, InjectSeed(expression, "seed"));
        pieces_.formulas.insert_or_assign(name, std::move(seeded));
        return OK;
    });
}

Result<void> ShaderParser::ParseFile(const Url& file, const DataDictionary& options) noexcept {
    return ParseFile(file, options, GetProcessSources());
}

Result<void> ShaderParser::ParseFile(const Url& file, const DataDictionary& options,
                                     SourceAccess sources) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        if (!sources.files.IsFile(file))
            return IllegalArgumentError(
                "Illegal argument: Condition file.IoDetect() == IODETECT::FILE not fulfilled. ");
        return ParseOnce([&]() { return Parse(file, options, sources); });
    });
}

/// Whoever finds no parse done and none going on runs `parse`; others wait for its end.
template <typename Operation>
Result<void> ShaderParser::ParseOnce(Operation&& parse) {
    for (UInt32 state = NotParsed; !parseOnce_.compare_exchange_strong(state, Parsing); state = NotParsed) {
        if (state == Parsed)
            return OK;
        parseOnce_.wait(Parsing);
    }
    Result<void> result = CatchOutOfMemory(parse);
    parseOnce_.store(result ? Parsed : NotParsed);
    parseOnce_.notify_all();
    return result;
}

Result<void> ShaderParser::Parse(const Url& file, const DataDictionary& options, SourceAccess sources) {
    NORVI_TRY_VALUE(context, ReadOptions(pieces_, options));
    const MacroLists macros(context);
    NORVI_TRY(ReadHeaders(pieces_, file, sources, macros, context));
    return ReadKernelFile(pieces_, file, sources, macros, context);
}

Vec3<UInt32> ShaderParser::GetWorkGroupSize() const {
    return pieces_.groupSize.x == ShaderPieces::UnsetGroupSize ? Vec3<UInt32>{256, 1, 1} : pieces_.groupSize;
}

} // namespace norvi

// Whole kernel files with headers. The input is cut at lines "=====": the kernel, its companion header, then
// headers that these may include as "a.h" and "b.h".
#include <algorithm>

#include <norvi/host/log.h>

#include "check.h"
#include "shaderparser/memory_files.h"
#include "shaderparser/signature.h"
#include "shaderparser/text_lines.h"

namespace norvi {
namespace {

void CheckLineMap(const ShaderParser& parser, const MappedText& text) {
    const auto breaks = static_cast<size_t>(std::count(text.text.begin(), text.text.end(), '\n'));
    FUZZ_CHECK(text.lines.size() <= breaks + 1 && text.lines.size() + 1 >= breaks);
    for (LineOrigin origin : text.lines)
        FUZZ_CHECK(origin.line == 0 || origin.file < parser.GetSourceFiles().size());
}

void CheckPieces(const ShaderParser& parser) {
    CheckLineMap(parser, parser.GetKernelText());
    for (const auto* texts :
         {&parser.GetGlobalBlocks(), &parser.GetDefines(), &parser.GetGroupSharedDeclarations()})
        for (const MappedText& text : *texts)
            CheckLineMap(parser, text);
    for (const StructEntry& entry : parser.GetStructs())
        FUZZ_CHECK(entry.lines.size() == entry.lineOrigins.size());
    for (const InlineFunctionEntry& function : parser.GetInlineFunctions()) {
        CheckLineMap(parser, function.text);
        CString name, returnType;
        BaseArray<FunctionParameterEntry> parameters;
        if (ParseSignature(function.signature, name, returnType, parameters))
            FUZZ_CHECK(BuildFunctionText(name, returnType, parameters, function.text.text,
                                         parser.GetLanguage().GetHashCode()));
    }
}

} // namespace
} // namespace norvi

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace norvi;
    static const LogSink quiet = SetLogSink([](LogLevel, const String&) {});
    const String input(reinterpret_cast<const char*>(data), size);
    MemorySources sources({});
    const char* names[] = {"k.kernel", "k_header", "a_header", "b_header"};
    const Words texts = SplitAt(input, "\n=====\n");
    for (size_t i = 0; i < std::min(texts.size(), std::size(names)); ++i)
        sources.files.texts[names[i]] = texts[i];
    const char* languages[] = {"GLSL", "HLSL", "METAL"};
    for (size_t i = 0; i < std::size(languages); ++i) {
        ShaderParser parser{Id(languages[i])};
        FUZZ_CHECK(parser.AddFormula("f", "value * 2 + rnd(value)"));
        const Result<void> result = parser.ParseFile("k.kernel",
                                                     ParseOptions(i == 0   ? "float"
                                                                  : i == 1 ? "T"
                                                                           : "",
                                                                  static_cast<Int32>(i)),
                                                     sources.Get());
        if (!result && !result.GetError().Is(errorkind::OutOfMemory))
            FUZZ_CHECK(!result.GetError().GetMessage().empty());
        CheckPieces(parser);
    }
    return 0;
}

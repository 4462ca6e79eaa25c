// Single lines through each macro list.
#include "check.h"
#include "shaderparser/macro_list.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace norvi;
    const String line(reinterpret_cast<const char*>(data), size);
    for (const char* language : {"GLSL", "HLSL", "METAL"}) {
        ShaderPieces shader;
        shader.language = Id(language);
        shader.formulas["f"] = "value + 1";
        MacroContext context(shader);
        context.templateArgument = size % 2 ? "float" : "TYP";
        context.multisampling = static_cast<Int32>(size % 4) - 1;
        const MacroLists lists(context);
        for (const MacroList* list : {&lists.signature, &lists.global, &lists.text}) {
            bool holdsKey = false;
            for (const MacroEntry& entry : list->GetEntries())
                holdsKey |= line.find(entry.key) != String::npos;
            FUZZ_CHECK(list->Concerns(line) == holdsKey);
            String rewritten = line;
            const bool isDone = list->Apply(rewritten).IsOk();
            FUZZ_CHECK(!isDone || holdsKey || rewritten == line);
        }
    }
    return 0;
}

// Headers of functions.
#include <norvi/host/id.h>

#include "check.h"
#include "shaderparser/signature.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace norvi;
    CString name, returnType;
    BaseArray<FunctionParameterEntry> parameters;
    const bool isGood =
        ParseSignature({reinterpret_cast<const char*>(data), size}, name, returnType, parameters).IsOk();
    FUZZ_CHECK(!isGood || (!name.empty() && !returnType.empty()));
    for (const char* language : {"GLSL", "HLSL", "METAL", "OTHER"}) {
        const auto text = BuildFunctionText(name, returnType, parameters, "{}", Id(language).GetHashCode());
        FUZZ_CHECK(text.IsOk() && text->ends_with(")\n{}\n"));
    }
    return 0;
}

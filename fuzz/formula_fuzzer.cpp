// Formulas: seeding, compiling, evaluating in both forms, and shader text.
#include <cstring>

#include <norvi/host/formula.h>

#include "check.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace norvi;
    const auto seeded = InjectSeed(String(reinterpret_cast<const char*>(data), size), "seed");
    FUZZ_CHECK(seeded.IsOk());
    const auto parser = FormulaParser::Alloc();
    const Float value = 0.75f;
    const Int32 seed = 5;
    FUZZ_CHECK((*parser)->AddFloatVariable("value", &value, 1) &&
               (*parser)->AddIntVariable("seed", &seed, 1));
    FormulaParserCacheRef cache;
    if (!(*parser)->CalculateParserCache(cache, *seeded, 0, size % 2, 10, false))
        return 0;
    const Float single = cache->Evaluate();
    Float batch[3] = {value, value, value};
    cache->Evaluate(batch, nullptr, batch, 3);
    for (Float result : batch)
        FUZZ_CHECK(std::memcmp(&result, &single, sizeof single) == 0 ||
                   (result != result && single != single));
    String text;
    FUZZ_CHECK((*parser)->GenerateShaderCode(*cache, "result", text) && text.find('$') == String::npos);
    return 0;
}

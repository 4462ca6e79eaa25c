// Colour conversion in kernels.
#include "core/parallelprogram_cpu_impl.h"

namespace norvi {

/// One conversion of a kernel, in the array under `ColorConversionKey` of its settings.
struct ColorConversionData {
    UInt64 forwardHash = 0;     ///< key of the conversion from the input space to the output space
    UInt64 inverseHash = 0;     ///< key of the opposite conversion
    String functionName;        ///< parameter that receives the forward conversion
    String functionNameInverse; ///< parameter that receives the inverse conversion

    bool operator==(const ColorConversionData&) const = default;
};

NORVI_DATATYPE_NAME(ColorConversionData, "norvi::ColorConversionData");

namespace {

using ColorConversions = BaseArray<ColorConversionData>;

constexpr const char* ColorConversionKey = "net.norvi.parallelprogram.settings.colorconversiondata";
constexpr UInt64 HashFactor = 0xBF58476D1CE4E5B9;

Result<ColorProfileConvertRef> MakeColorConverter(const ColorProfileRef& source,
                                                  const ColorProfileRef& target) {
    auto converter = std::make_shared<ColorProfileConvert>();
    NORVI_TRY(converter->Init(pixelformat::RgbF32, source, pixelformat::RgbF32, target, 0, 0));
    return converter;
}

} // namespace

void ParallelProgramCPUImpl::SetRenderSpace(const ColorProfileRef& renderingSpace) noexcept {
    renderSpace_ = renderingSpace;
}

Result<void> ParallelProgramCPUImpl::UpdateColorConversionActiveKernel(
    const ColorProfileRef& inputSpace, const ColorProfileRef& outputSpace, const String& functionName,
    const String& functionNameInverse) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY(CheckActiveKernel());
        const ColorProfileRef& source = inputSpace && !inputSpace->IsEmpty() ? inputSpace : renderSpace_;
        if (!source || !outputSpace)
            return OK;
        const UInt64 s = source->GetHashCode();
        const UInt64 o = outputSpace->GetHashCode();
        const UInt64 forwardHash = (s * HashFactor + o) * HashFactor + HashFactor + 1;
        const UInt64 inverseHash = (o * HashFactor + s + 1) * HashFactor + 2;
        if (!colorConverters_.contains(forwardHash)) {
            NORVI_TRY_VALUE(forward, MakeColorConverter(source, outputSpace));
            NORVI_TRY_VALUE(inverse, MakeColorConverter(outputSpace, source));
            // The one that is looked for comes last, so that a failure leaves no half of a pair to be found.
            EnterColorConverter(inverseHash, inverse);
            EnterColorConverter(forwardHash, forward);
        }
        ColorConversions conversions;
        if (const Data* stored = activeKernel_->extra.Find(String(ColorConversionKey)))
            if (const auto* array = stored->Get<ColorConversions>())
                conversions = *array;
        if (!conversions.empty() && conversions.front().forwardHash == forwardHash)
            return OK;
        // One conversion for each kernel: another pair of spaces takes the place of the first.
        conversions.resize(std::max<std::size_t>(conversions.size(), 1));
        conversions.front() = {forwardHash, inverseHash, functionName, functionNameInverse};
        activeKernel_->extra.Set(String(ColorConversionKey), std::move(conversions));
        return OK;
    });
}

void ParallelProgramCPUImpl::EnterColorConverter(UInt64 hash, const ColorProfileConvertRef& converter) {
    colorFunctions_.insert_or_assign(hash, ColorConversionFunction(converter));
    colorConverters_.insert_or_assign(hash, converter);
}

Result<void> ParallelProgramCPUImpl::UpdateColorConversion() {
    const Data* stored = activeKernel_->extra.Find(String(ColorConversionKey));
    const auto* conversions = stored ? stored->Get<ColorConversions>() : nullptr;
    if (!conversions)
        return OK;
    const auto set = [&](UInt64 hash, const String& functionName) -> Result<void> {
        const auto found = colorFunctions_.find(hash);
        if (found == colorFunctions_.end())
            return OK;
        NORVI_TRY_VALUE(name, InternedId::Create(functionName));
        return SetTypedParameter(*activeKernel_->kernel, name, DataType::Of<ColorConversionFunction>(),
                                 &found->second);
    };
    for (const ColorConversionData& conversion : *conversions) {
        NORVI_TRY(set(conversion.forwardHash, conversion.functionName));
        NORVI_TRY(set(conversion.inverseHash, conversion.functionNameInverse));
    }
    return OK;
}

} // namespace norvi

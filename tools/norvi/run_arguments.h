// The arguments of `norvi run`, taken apart. Nothing here looks at kernels or files. Errors are illegal
// arguments that quote the option and its text.
#pragma once

#include "norvi/argument_text.h"
#include "norvi/element_type.h"

namespace norvi {

enum class PictureChannels { AsParameter, Luminance, Rgb };

/// --buffer: zeros, or the contents of a file.
struct BufferArgument {
    String name;
    String file; ///< empty: zeros
    PictureChannels channels = PictureChannels::AsParameter;
    const ElementType* type = nullptr; ///< of zeros; null for the type of the kernel's parameter
    BaseArray<Int> shape;              ///< of zeros: {count} or {height, width}

    Bool IsPicture() const;
    Int GetCount() const;
};

/// --output
struct OutputArgument {
    String name;
    String file; ///< with "{step}" where the number of the step goes
    Int width = 0;
    Int height = 0; ///< both 0: as the buffer was created
    std::optional<Number> black;
    std::optional<Number> white;

    Bool IsPicture() const;
    Bool HasStep() const;
    /// The file's name for a step.
    String FileOfStep(Int step) const;
};

enum class InitialValues { Fill, Ramp, Random };

/// --fill, --ramp and --random
struct InitialArgument {
    InitialValues kind;
    String name;
    BaseArray<Number> values; ///< fill: one, or one for each component; ramp: two; random: the seed
};

struct NamePair {
    String first;
    String second;
};

struct CounterArgument {
    String name;
    UInt32 start = 0;
};

struct NoiseArgument {
    Int32 mode = 0;
    Int32 seed = 0;
};

Result<BufferArgument> ParseBuffer(const String& text);
Result<OutputArgument> ParseOutput(const String& text);
Result<InitialArgument> ParseInitial(InitialValues kind, const String& text);
Result<CounterArgument> ParseCounter(const String& text);
/// MODE:SEED; the mode is a number or the last part of a noise's class id.
Result<NoiseArgument> ParseNoise(const String& text);
/// A,B
Result<NamePair> ParseSwap(const String& text);
/// X, XxY or XxYxZ, also with commas.
Result<Vec3<UInt32>> ParseGrid(const String& text);

/// Has the file's name a suffix of pictures?
Bool IsPictureName(std::string_view file);
/// "100" or "40x30"; nothing unless all sizes are positive and their product is a number of elements that can
/// be.
std::optional<BaseArray<Int>> ParseSizes(std::string_view text, char separator);

/// The option of a kind: "--fill".
const char* InitialOption(InitialValues kind);

} // namespace norvi

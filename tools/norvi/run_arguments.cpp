#include "norvi/run_arguments.h"

#include <algorithm>
#include <limits>

#include <fmt/format.h>

#include <norvi/host/noise.h>

namespace norvi {

namespace {

constexpr std::string_view StepPlaceholder = "{step}";
constexpr std::string_view ArraySuffix = ".npy";
constexpr std::string_view pictureSuffixes[] = {".png", ".jpg", ".jpeg", ".exr", ".tif", ".tiff",
                                                ".bmp", ".tga", ".hdr",  ".ppm", ".pgm", ".webp"};
constexpr Int MostElements = Int{1} << 40;

struct ChannelName {
    std::string_view name;
    PictureChannels channels;
};
constexpr ChannelName channelNames[] = {{"luminance", PictureChannels::Luminance},
                                        {"rgb", PictureChannels::Rgb}};

constexpr const char* initialOptions[] = {"--fill", "--ramp", "--random"};

String LowerSuffix(std::string_view file) {
    const auto dot = file.rfind('.');
    String suffix(dot == file.npos ? std::string_view() : file.substr(dot));
    std::transform(suffix.begin(), suffix.end(), suffix.begin(),
                   [](UChar c) { return static_cast<char>(std::tolower(c)); });
    return suffix;
}

Bool IsFileName(std::string_view text) {
    return LowerSuffix(text) == ArraySuffix || IsPictureName(text);
}

String FileKinds() {
    String text = "names of files end in .npy";
    for (std::string_view suffix : pictureSuffixes)
        text += (suffix == std::end(pictureSuffixes)[-1] ? " or " : ", ") + String(suffix);
    return text;
}

Result<void> ParseFileSource(const String& text, const String& value, BufferArgument& buffer) {
    const auto parts = SplitText(value, ':');
    buffer.file = parts[0];
    if (parts.size() == 1)
        return OK;
    const auto* known = std::find_if(std::begin(channelNames), std::end(channelNames),
                                     [&](const ChannelName& name) { return name.name == parts[1]; });
    if (parts.size() > 2 || known == std::end(channelNames) || !IsPictureName(parts[0]))
        return ArgumentError(
            "--buffer", text,
            "only :rgb or :luminance may follow the name of a picture, nothing that of an array");
    buffer.channels = known->channels;
    return OK;
}

Result<void> ParseZeroSource(const String& text, const String& value, BufferArgument& buffer) {
    const auto colon = value.rfind(':');
    if (colon == value.npos)
        return ArgumentError("--buffer", text, "expected TYPE:COUNT, kernel:COUNT or a file; " + FileKinds());
    const String type = value.substr(0, colon);
    if (type != "kernel") {
        const auto found = FindElementType(type);
        if (!found)
            return ArgumentError("--buffer", text, found.GetError().GetMessage());
        buffer.type = *found;
    }
    const auto sizes = ParseSizes(value.substr(colon + 1), 'x');
    if (!sizes || sizes->size() > 2)
        return ArgumentError(
            "--buffer", text,
            Format("'@' is no count of elements; expected N or WxH, at least 1", value.substr(colon + 1)));
    buffer.shape.assign(sizes->rbegin(), sizes->rend());
    return OK;
}

} // namespace

Bool IsPictureName(std::string_view file) {
    const String suffix = LowerSuffix(file);
    return std::find(std::begin(pictureSuffixes), std::end(pictureSuffixes), suffix) !=
           std::end(pictureSuffixes);
}

std::optional<BaseArray<Int>> ParseSizes(std::string_view text, char separator) {
    BaseArray<Int> sizes;
    Int product = 1;
    for (const String& part : SplitText(text, separator)) {
        const auto size = ParseInt(part);
        if (!size || *size < 1 || *size > MostElements / product)
            return std::nullopt;
        product *= *size;
        sizes.push_back(*size);
    }
    return sizes;
}

Bool BufferArgument::IsPicture() const {
    return IsPictureName(file);
}

Int BufferArgument::GetCount() const {
    Int count = 1;
    for (Int size : shape)
        count *= size;
    return count;
}

Bool OutputArgument::IsPicture() const {
    return IsPictureName(file);
}

Bool OutputArgument::HasStep() const {
    return file.find(StepPlaceholder) != file.npos;
}

String OutputArgument::FileOfStep(Int step) const {
    String numbered = file;
    if (HasStep())
        numbered.replace(numbered.find(StepPlaceholder), StepPlaceholder.size(), fmt::format("{:04}", step));
    return numbered;
}

Result<BufferArgument> ParseBuffer(const String& text) {
    NORVI_TRY_VALUE(assignment, ParseAssignment("--buffer", text));
    BufferArgument buffer;
    buffer.name = assignment.name;
    if (IsFileName(SplitText(assignment.value, ':')[0]))
        NORVI_TRY(ParseFileSource(text, assignment.value, buffer));
    else
        NORVI_TRY(ParseZeroSource(text, assignment.value, buffer));
    return buffer;
}

Result<OutputArgument> ParseOutput(const String& text) {
    NORVI_TRY_VALUE(assignment, ParseAssignment("--output", text));
    const auto parts = SplitText(assignment.value, ':');
    OutputArgument output;
    output.name = assignment.name;
    output.file = parts[0];
    if (!IsFileName(output.file))
        return ArgumentError("--output", text, FileKinds());
    if (parts.size() == 1)
        return output;
    if (!output.IsPicture())
        return ArgumentError("--output", text, "only the name of a picture can be followed by a size");
    const auto sizes = ParseSizes(parts[1], 'x');
    if (!sizes || sizes->size() != 2 || (parts.size() != 2 && parts.size() != 4))
        return ArgumentError("--output", text, "expected FILE:WxH or FILE:WxH:BLACK:WHITE");
    output.width = (*sizes)[0];
    output.height = (*sizes)[1];
    if (parts.size() == 2)
        return output;
    output.black = ParseNumber(parts[2]);
    output.white = ParseNumber(parts[3]);
    // Written so that "nan" is refused too.
    if (!output.black || !output.white ||
        !(*output.white - *output.black > 0 || *output.white < *output.black))
        return ArgumentError("--output", text, "black and white must be two different numbers");
    return output;
}

const char* InitialOption(InitialValues kind) {
    return initialOptions[static_cast<std::size_t>(kind)];
}

Result<InitialArgument> ParseInitial(InitialValues kind, const String& text) {
    const char* option = InitialOption(kind);
    NORVI_TRY_VALUE(assignment, ParseAssignment(option, text));
    InitialArgument initial{kind, assignment.name, {}};
    for (const String& part : SplitText(assignment.value, kind == InitialValues::Ramp ? ':' : ',')) {
        const auto value = ParseNumber(part);
        if (!value)
            return ArgumentError(option, text, Format("'@' is no number", part));
        initial.values.push_back(*value);
    }
    if (kind == InitialValues::Ramp && initial.values.size() != 2)
        return ArgumentError(option, text, "expected NAME=FROM:TO");
    if (kind == InitialValues::Random && (initial.values.size() != 1 || !ParseInt(assignment.value)))
        return ArgumentError(option, text, "expected NAME=SEED, a whole number");
    return initial;
}

Result<CounterArgument> ParseCounter(const String& text) {
    if (!text.empty() && text.find('=') == text.npos)
        return CounterArgument{text, 0};
    NORVI_TRY_VALUE(assignment, ParseAssignment("--counter", text));
    const auto start = ParseInt(assignment.value);
    if (!start || *start < 0 || *start > std::numeric_limits<UInt32>::max())
        return ArgumentError("--counter", text, "a counter starts at 0 to 4294967295");
    return CounterArgument{assignment.name, static_cast<UInt32>(*start)};
}

Result<NoiseArgument> ParseNoise(const String& text) {
    const auto parts = SplitText(text, ':');
    const auto seed = parts.size() == 2 ? ParseInt(parts[1]) : std::nullopt;
    if (!seed || *seed != static_cast<Int32>(*seed))
        return ArgumentError("--noise", text, "expected MODE:SEED, where the seed is a 32-bit integer");
    BaseArray<String> names;
    for (UInt32 mode = 0; mode < NoiseModeCount; ++mode) {
        const std::string_view id = NoiseClassIdOfMode(mode);
        const String name(id.substr(id.rfind('.') + 1));
        if (parts[0] == name || parts[0] == ToText(mode))
            return NoiseArgument{static_cast<Int32>(mode), static_cast<Int32>(*seed)};
        // Two modes are the same noise.
        if (std::find(names.begin(), names.end(), name) == names.end())
            names.push_back(name);
    }
    return ArgumentError(
        "--noise", text,
        Format("modes are the numbers 0 to @, and names@", NoiseModeCount - 1, SuggestText(parts[0], names)));
}

Result<NamePair> ParseSwap(const String& text) {
    const auto parts = SplitText(text, ',');
    if (parts.size() != 2 || parts[0].empty() || parts[1].empty() || parts[0] == parts[1])
        return ArgumentError("--swap", text, "expected the names of two parameters, A,B");
    return NamePair{parts[0], parts[1]};
}

Result<Vec3<UInt32>> ParseGrid(const String& text) {
    const auto sizes = ParseSizes(text, text.find(',') == text.npos ? 'x' : ',');
    constexpr Int most = std::numeric_limits<UInt32>::max();
    Int product = 1;
    if (sizes)
        for (const Int size : *sizes)
            product *= size;
    if (!sizes || sizes->size() > 3 || product > most)
        return ArgumentError(
            "--grid", text,
            "expected X, XxY or XxYxZ invocations, each at least 1, at most 4294967295 together");
    Vec3<UInt32> grid{1, 1, 1};
    UInt32* const components[] = {&grid.x, &grid.y, &grid.z};
    for (std::size_t i = 0; i < sizes->size(); ++i)
        *components[i] = static_cast<UInt32>((*sizes)[i]);
    return grid;
}

} // namespace norvi

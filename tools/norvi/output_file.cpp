#include "norvi/output_file.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <numeric>

#include <unistd.h>

#include "norvi/npy_file.h"
#include "norvi/picture.h"

namespace norvi {

namespace {

Failure OutputError(const OutputArgument& output, const String& reason,
                    SourceLocation at = SourceLocation::Current()) {
    return ArgumentError("--output", output.name + "=" + output.file, reason, at);
}

/// Tried for real: permissions alone do not tell of folders without room for files.
Bool CanCreateFile(const String& folder) {
    const String probe = Format("@/.norvi-@", folder, Int{getpid()});
    std::FILE* file = std::fopen(probe.c_str(), "wb");
    return file && std::fclose(file) == 0 && std::remove(probe.c_str()) == 0;
}

Int CountElements(const BaseArray<Int>& shape) {
    return std::accumulate(shape.begin(), shape.end(), Int{1}, std::multiplies<Int>());
}

/// Size and number of channels, without pixels: the size that was asked for, or that of the buffer.
Result<Picture> PictureFrame(const OutputArgument& output, DataType type, const BaseArray<Int>& shape) {
    const ElementType* element = FindElementType(type);
    if (!element)
        return OutputError(output, Format("elements of type @ make no picture", type));
    Picture picture{output.width, output.height, 0, {}};
    if (picture.width == 0 && shape.size() < 2)
        return OutputError(output, "the buffer has one dimension; add :WxH to the file's name");
    if (picture.width == 0) {
        picture.width = shape[1];
        picture.height = shape[0];
    }
    const Int numbers = CountElements(shape) * element->components;
    const Int pixels = picture.width * picture.height;
    picture.channels = numbers / pixels;
    if (numbers % pixels != 0 || picture.channels < 1 || picture.channels > 4)
        return OutputError(output, Format("the buffer has @ numbers, which are no picture of @x@ pixels",
                                          numbers, picture.width, picture.height));
    return picture;
}

/// The values that become black and white: as asked for, else 0 and 1, and for integers 0 and the type's or,
/// where that is far more than a picture shows, the buffer's largest.
std::pair<Number, Number> PictureRange(const OutputArgument& output, const ScalarType& scalar,
                                       const std::byte* first, Int count) {
    if (output.black)
        return {*output.black, *output.white};
    if (!scalar.isInteger)
        return {0, 1};
    if (scalar.size == 1)
        return {0, scalar.highest};
    Number largest = 1;
    for (Int i = 0; i < count; ++i)
        largest = std::max(largest, scalar.load(first + i * scalar.size));
    return {0, largest};
}

Result<void> WritePictureOutput(const OutputArgument& output, const String& file, DataType type,
                                const BaseArray<Int>& shape, const void* elements) {
    NORVI_TRY_VALUE(picture, PictureFrame(output, type, shape));
    const ScalarType& scalar = *FindElementType(type)->scalar;
    const auto* first = static_cast<const std::byte*>(elements);
    const Int count = picture.width * picture.height * picture.channels;
    const auto [black, white] = PictureRange(output, scalar, first, count);
    picture.pixels.reserve(static_cast<std::size_t>(count));
    for (Int i = 0; i < count; ++i)
        picture.pixels.push_back(
            static_cast<Float32>((scalar.load(first + i * scalar.size) - black) / (white - black)));
    return WritePicture(file, picture);
}

} // namespace

Result<void> CheckOutput(const OutputArgument& output, DataType type, const BaseArray<Int>& shape) {
    const std::filesystem::path file = output.FileOfStep(0);
    const String folder = file.has_parent_path() ? file.parent_path().string() : ".";
    std::error_code ignored;
    if (!std::filesystem::is_directory(folder, ignored))
        return OutputError(output, Format("there is no folder \"@\"", folder));
    if (!CanCreateFile(folder))
        return OutputError(output, Format("the folder \"@\" cannot be written to", folder));
    if (std::filesystem::is_directory(file, ignored))
        return OutputError(output, "there is a folder of this name");
    if (!output.IsPicture())
        return OK;
    NORVI_TRY(PictureFrame(output, type, shape));
    return OK;
}

Result<void> WriteOutput(const OutputArgument& output, Int step, DataType type, const BaseArray<Int>& shape,
                         const void* elements) {
    const String file = output.FileOfStep(step);
    if (output.IsPicture())
        return WritePictureOutput(output, file, type, shape, elements);
    const ElementType* element = FindElementType(type);
    BaseArray<Int> fileShape = shape;
    if (!element)
        fileShape.push_back(type->size);
    else if (element->components > 1)
        fileShape.push_back(element->components);
    const ScalarType& scalar = *(element ? element : FindElementType(DataType::Of<UChar>()))->scalar;
    return WriteNpy(file, scalar, fileShape, elements);
}

} // namespace norvi

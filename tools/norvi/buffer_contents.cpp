#include "norvi/buffer_contents.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <unistd.h>

#include "norvi/npy_file.h"
#include "norvi/picture.h"

namespace norvi {

namespace {

// Kernels that look at no size are off by a few elements at their end, or by the rest of the grid. A margin
// of more than this costs memory for mistakes that are caught otherwise.
constexpr Int LeastMargin = 64;
constexpr Int MostMargin = Int{1} << 22;

/// Memory for `shape`, with the margin filled.
Result<BufferContents> Allocate(DataType type, const BaseArray<Int>& shape, Int invocations) {
    BufferContents contents;
    contents.shape = shape;
    contents.count = 1;
    for (Int size : shape)
        contents.count *= size;
    contents.margin = std::clamp(invocations - contents.count + LeastMargin, LeastMargin, MostMargin);
    const Int total = contents.count + contents.margin;
    const Int memory = sysconf(_SC_PHYS_PAGES) * sysconf(_SC_PAGESIZE);
    // The system would promise more than there is, and end the program later.
    if (total > memory / type->size)
        return IllegalArgumentError(
            Format("@ elements of @ bytes do not fit into this machine's memory of @ bytes", contents.count,
                   type->size, memory));
    NORVI_TRY_VALUE(elements, UntypedArray::New(type->size, total));
    auto* first = static_cast<std::byte*>(elements.GetFirst());
    const Int size = contents.count * type->size;
    std::fill(first + size, first + total * type->size, MarginByte);
    contents.elements = std::move(elements);
    return contents;
}

std::byte* BytesOf(BufferContents& contents) {
    return static_cast<std::byte*>(contents.elements.GetFirst());
}

/// splitmix64: S. Vigna, prng.di.unimi.it. Any index can be asked for.
UInt64 RandomBits(UInt64 seed, UInt64 index) {
    UInt64 bits = seed + (index + 1) * 0x9e3779b97f4a7c15u;
    bits = (bits ^ (bits >> 30)) * 0xbf58476d1ce4e5b9u;
    bits = (bits ^ (bits >> 27)) * 0x94d049bb133111ebu;
    return bits ^ (bits >> 31);
}

/// Floating point in [0, 1), integers over their whole range.
Number RandomNumber(const ScalarType& scalar, UInt64 bits) {
    if (scalar.isInteger)
        return scalar.lowest +
               std::floor((scalar.highest - scalar.lowest + 1) * std::ldexp(Number(bits >> 1), -63));
    // As many digits as a half or a float has: more would be rounded up to 1.
    const int digits = scalar.size == 2 ? 11 : 24;
    return std::ldexp(Number(bits >> (64 - digits)), -digits);
}

void WriteInitialValues(const InitialArgument& initial, const ElementType& type, BufferContents& contents) {
    const ScalarType& scalar = *type.scalar;
    for (Int i = 0; i < contents.count; ++i) {
        for (Int c = 0; c < type.components; ++c) {
            Number value = 0;
            if (initial.kind == InitialValues::Fill)
                value = initial.values[initial.values.size() == 1 ? 0 : static_cast<std::size_t>(c)];
            else if (initial.kind == InitialValues::Random)
                value =
                    RandomNumber(scalar, RandomBits(static_cast<UInt64>(static_cast<Int>(initial.values[0])),
                                                    static_cast<UInt64>(i * type.components + c)));
            else
                value = initial.values[0] + (initial.values[1] - initial.values[0]) * Number(i) /
                                                Number(std::max<Int>(contents.count - 1, 1));
            const Int place = (i * type.components + c) * scalar.size;
            scalar.store(BytesOf(contents) + place, scalar.isInteger ? std::round(value) : value);
        }
    }
}

Result<BufferContents> MakeZeros(const PlannedBuffer& buffer, Int invocations) {
    NORVI_TRY_VALUE(contents, Allocate(buffer.type, buffer.argument.shape, invocations));
    std::fill_n(BytesOf(contents), contents.count * buffer.type->size, std::byte{0});
    if (buffer.initial)
        WriteInitialValues(*buffer.initial, *FindElementType(buffer.type), contents);
    return std::move(contents);
}

/// The shape of the elements in an array: its last dimension, or for matrices its last two, are their inside.
Result<BaseArray<Int>> ElementShape(const NpyArray& array, Int scalarsInside, const String& typeName) {
    BaseArray<Int> shape = array.shape;
    Int inside = 1;
    while (inside < scalarsInside && !shape.empty()) {
        inside *= shape.back();
        shape.pop_back();
    }
    if (inside != scalarsInside)
        return IllegalArgumentError(Format(
            "the last dimension of the array must be @ to make elements of type @", scalarsInside, typeName));
    if (array.bytes.empty())
        return IllegalArgumentError("the array has no elements");
    if (shape.empty())
        shape.push_back(1);
    return shape;
}

Result<void> ConvertNumbers(const NpyArray& array, const ElementType& type, std::byte* target) {
    const ScalarType& from = *array.scalar;
    const ScalarType& to = *type.scalar;
    if (&from == &to) {
        std::memcpy(target, array.bytes.data(), array.bytes.size());
        return OK;
    }
    if (!from.isInteger && to.isInteger)
        return IllegalArgumentError(
            Format("the array's numbers are floating point ('@'), @ is not", from.fileCode, type.name));
    for (Int i = 0; i < array.GetCount(); ++i) {
        const Number value = from.load(array.bytes.data() + i * from.size);
        if (!to.holds(value))
            return IllegalArgumentError(Format("number @ of the array is @, which @ cannot hold", i,
                                               static_cast<Float64>(value), type.name));
        to.store(target + i * to.size, value);
    }
    return OK;
}

Result<BufferContents> LoadArray(const PlannedBuffer& buffer, Int invocations) {
    NORVI_TRY_VALUE(array, ReadNpy(buffer.argument.file));
    const ElementType* type = FindElementType(buffer.type);
    // The bytes of a struct stand in the file as they are in memory.
    const Int scalarsInside = type ? type->components : buffer.type->size / array.scalar->size;
    NORVI_TRY_VALUE(shape, ElementShape(array, scalarsInside, ElementTypeName(buffer.type)));
    NORVI_TRY_VALUE(contents, Allocate(buffer.type, shape, invocations));
    if (type)
        NORVI_TRY(ConvertNumbers(array, *type, BytesOf(contents)));
    else if (static_cast<Int>(array.bytes.size()) == contents.count * buffer.type->size)
        std::memcpy(BytesOf(contents), array.bytes.data(), array.bytes.size());
    else
        return IllegalArgumentError(
            Format("an element of type @ has @ bytes, which are no whole number of '@'", buffer.type,
                   buffer.type->size, array.scalar->fileCode));
    return std::move(contents);
}

Picture WithChannels(const Picture& picture, Int channels) {
    if (channels == 1)
        return ToLuminance(picture);
    Picture result{picture.width, picture.height, channels, {}};
    result.pixels.reserve(static_cast<std::size_t>(picture.width * picture.height * channels));
    for (Int i = 0; i < picture.width * picture.height; ++i)
        for (Int c = 0; c < channels; ++c)
            result.pixels.push_back(ChannelValue(
                &picture.pixels[static_cast<std::size_t>(i * picture.channels)], picture.channels, c));
    return result;
}

Result<BufferContents> LoadPicture(const PlannedBuffer& buffer, Int invocations) {
    const ElementType* type = FindElementType(buffer.type);
    const Bool isByte = type && type->scalar->isInteger;
    if (!type || type->components == 2 || type->components > 4 || (isByte && type->name != String("uchar")))
        return IllegalArgumentError(
            Format("a picture cannot be made elements of type @", ElementTypeName(buffer.type)));
    const Int channels = buffer.argument.channels == PictureChannels::AsParameter ? type->components
                         : buffer.argument.channels == PictureChannels::Rgb       ? 3
                                                                                  : 1;
    if (type->components != 1 && type->components != channels)
        return IllegalArgumentError(Format("@ has @ components", type->name, type->components));
    NORVI_TRY_VALUE(picture, ReadPicture(buffer.argument.file));
    const Picture wanted = WithChannels(picture, channels);
    BaseArray<Int> shape{wanted.height, wanted.width};
    if (channels != type->components)
        shape.push_back(channels);
    NORVI_TRY_VALUE(contents, Allocate(buffer.type, shape, invocations));
    std::byte* target = BytesOf(contents);
    for (Float32 value : wanted.pixels) {
        // Written so that a pixel that is no number becomes 0.
        type->scalar->store(target, isByte ? std::round(value > 0 ? std::min(value, 1.0f) * 255 : 0) : value);
        target += type->scalar->size;
    }
    return std::move(contents);
}

} // namespace

Result<BufferContents> LoadBufferContents(const PlannedBuffer& buffer, Int invocations) {
    const auto load = buffer.argument.file.empty()  ? &MakeZeros
                      : buffer.argument.IsPicture() ? &LoadPicture
                                                    : &LoadArray;
    auto contents = load(buffer, invocations);
    if (!contents && contents.GetError().Is(errorkind::IllegalArgument))
        return ArgumentError("--buffer", buffer.text, contents.GetError().GetMessage());
    return contents;
}

} // namespace norvi

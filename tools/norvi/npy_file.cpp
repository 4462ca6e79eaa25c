#include "norvi/npy_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

#include <unistd.h>

#include "norvi/npy_header.h"

namespace norvi {

namespace {

constexpr std::string_view Magic = "\x93NUMPY";
constexpr std::size_t ElementAlignment = 64; // of the first element in the file

std::size_t LittleEndian(std::string_view bytes) {
    std::size_t value = 0;
    for (std::size_t i = bytes.size(); i-- > 0;)
        value = value << 8 | static_cast<UChar>(bytes[i]);
    return value;
}

/// Cuts the header's text from the front of a file's bytes.
Result<std::string_view> TakeHeader(std::string_view& bytes) {
    if (!bytes.starts_with(Magic))
        return IllegalArgumentError("it is no .npy file");
    if (bytes.size() < Magic.size() + 2)
        return IllegalArgumentError("it ends inside its header");
    const int version = static_cast<UChar>(bytes[Magic.size()]);
    const int minorVersion = static_cast<UChar>(bytes[Magic.size() + 1]);
    bytes.remove_prefix(Magic.size() + 2);
    if ((version != 1 && version != 2) || minorVersion != 0)
        return IllegalArgumentError(
            Format("version @.@ of the format is not supported", Int{version}, Int{minorVersion}));
    const std::size_t lengthSize = version == 1 ? 2 : 4;
    const std::size_t length = LittleEndian(bytes.substr(0, lengthSize));
    if (bytes.size() < lengthSize || bytes.size() - lengthSize < length)
        return IllegalArgumentError("it ends inside its header");
    const auto header = bytes.substr(lengthSize, length);
    bytes.remove_prefix(lengthSize + length);
    return header;
}

Result<const ScalarType*> FindScalarType(const String& code) {
    if (code.starts_with('>'))
        return IllegalArgumentError("its numbers are big-endian; save it in the order of this machine");
    for (const ScalarType& scalar : ScalarTypes())
        if (code == scalar.fileCode)
            return &scalar;
    return IllegalArgumentError(Format("elements of type '@' are not supported", code));
}

/// The number of bytes of all elements; an error beyond 63 bits.
Result<Int> CountBytes(const ScalarType& scalar, const BaseArray<Int>& shape) {
    Int bytes = scalar.size;
    for (Int size : shape)
        if (size < 0 || __builtin_mul_overflow(bytes, size, &bytes))
            return IllegalArgumentError("its shape is larger than any memory");
    return bytes;
}

Result<String> ReadBytes(const String& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status))
        return IllegalArgumentError("there is no such file");
    // Opening a pipe would wait for somebody to write to it.
    if (!std::filesystem::is_regular_file(status))
        return IllegalArgumentError("it is no regular file");
    std::ifstream file(path, std::ios::binary);
    const auto size = std::filesystem::file_size(path, error);
    if (!file || error)
        return IllegalArgumentError("it cannot be read");
    String bytes(size, '\0');
    if (!file.read(bytes.data(), static_cast<std::streamsize>(size)))
        return IllegalArgumentError("it cannot be read to its end");
    return bytes;
}

/// Everything in front of the elements.
String FileHead(const ScalarType& scalar, const BaseArray<Int>& shape) {
    String header = NpyHeaderText({scalar.fileCode, false, shape});
    const std::size_t fixed = Magic.size() + 4;
    while ((fixed + header.size() + 1) % ElementAlignment != 0)
        header += ' ';
    header += '\n';
    String head(Magic);
    head += {'\x01', '\x00', static_cast<char>(header.size() & 0xff), static_cast<char>(header.size() >> 8)};
    return head + header;
}

Bool WriteBytes(const String& path, std::string_view head, const void* elements, std::size_t size) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file)
        return false;
    Bool isWritten = std::fwrite(head.data(), 1, head.size(), file) == head.size();
    isWritten = isWritten && std::fwrite(elements, 1, size, file) == size;
    return std::fclose(file) == 0 && isWritten;
}

} // namespace

Int NpyArray::GetCount() const {
    return static_cast<Int>(bytes.size()) / scalar->size;
}

Result<NpyArray> ParseNpy(std::string_view bytes) noexcept {
    return CatchOutOfMemory([&]() -> Result<NpyArray> {
        NORVI_TRY_VALUE(headerText, TakeHeader(bytes));
        NORVI_TRY_VALUE(header, ParseNpyHeader(headerText));
        if (header.isFortranOrder)
            return IllegalArgumentError(
                "its elements are in Fortran order; save it with numpy.ascontiguousarray");
        NORVI_TRY_VALUE(scalar, FindScalarType(header.elementCode));
        NORVI_TRY_VALUE(size, CountBytes(*scalar, header.shape));
        if (size != static_cast<Int>(bytes.size()))
            return IllegalArgumentError(
                Format("its header tells of @ bytes of elements, but @ follow", size, UInt{bytes.size()}));
        const auto* first = reinterpret_cast<const std::byte*>(bytes.data());
        return NpyArray{scalar, header.shape, {first, first + bytes.size()}};
    });
}

Result<NpyArray> ReadNpy(const String& path) noexcept {
    return CatchOutOfMemory([&]() -> Result<NpyArray> {
        auto bytes = ReadBytes(path);
        auto array = bytes ? ParseNpy(*bytes) : Result<NpyArray>(Failure(bytes.TakeError()));
        if (!array && array.GetError().Is(errorkind::IllegalArgument))
            return IllegalArgumentError(Format("cannot read \"@\": @", path, array.GetError().GetMessage()));
        return array;
    });
}

Result<void> WriteNpy(const String& path, const ScalarType& scalar, const BaseArray<Int>& shape,
                      const void* elements) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY_VALUE(size, CountBytes(scalar, shape));
        const String temporary = Format("@.@.part", path, Int{getpid()});
        const Bool isWritten =
            WriteBytes(temporary, FileHead(scalar, shape), elements, static_cast<std::size_t>(size)) &&
            std::rename(temporary.c_str(), path.c_str()) == 0;
        if (isWritten)
            return OK;
        const int error = errno;
        std::remove(temporary.c_str());
        return SystemError(Format("cannot write \"@\"", path), error);
    });
}

} // namespace norvi

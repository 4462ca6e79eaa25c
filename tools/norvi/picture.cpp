#include "norvi/picture.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>

#include <OpenImageIO/imagebuf.h>
#include <OpenImageIO/imagebufalgo.h>
#include <OpenImageIO/imageio.h>
#include <fmt/format.h>
#include <unistd.h>

#include <norvi/host/text.h>

namespace norvi {

namespace {

// A header can claim any size: 1 GiB of floats holds 8192 x 8192 pixels with four channels.
constexpr Int MaxValues = Int{1} << 28;
constexpr Int MaxSide = 1 << 20;

Failure ReadError(const String& path, const String& reason, SourceLocation at = SourceLocation::Current()) {
    return IllegalArgumentError(Format("cannot read picture \"@\": @", path, reason), at);
}

Failure WriteError(const String& path, const String& reason, SourceLocation at = SourceLocation::Current()) {
    return IllegalArgumentError(Format("cannot write picture \"@\": @", path, reason), at);
}

/// The library's texts end in line breaks at times.
String FirstLine(const String& text) {
    return text.substr(0, text.find_first_of("\r\n"));
}

Result<Int> CountValues(Int width, Int height, Int channels) {
    const Bool isSound = width > 0 && height > 0 && channels > 0 && width <= MaxSide && height <= MaxSide;
    if (!isSound || channels > MaxValues / (width * height))
        return IllegalArgumentError(
            Format("@ x @ pixels with @ channels are not a size that is supported", width, height, channels));
    return width * height * channels;
}

/// A file that is deleted unless it was moved to where it belongs.
class TemporaryFile {
  public:
    /// Beside `target` and with its suffix, which tells the format.
    explicit TemporaryFile(const std::filesystem::path& target) : target_(target) {
        path_ = target;
        path_.replace_filename(
            fmt::format(".{}.{}{}", target.stem().string(), getpid(), target.extension().string()));
    }
    ~TemporaryFile() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    String GetPath() const { return path_.string(); }
    std::error_code MoveToTarget() const {
        std::error_code error;
        std::filesystem::rename(path_, target_, error);
        return error;
    }

  private:
    std::filesystem::path target_;
    std::filesystem::path path_;
};

OIIO::ImageSpec SpecOf(const Picture& picture, OIIO::TypeDesc type) {
    return OIIO::ImageSpec(static_cast<int>(picture.width), static_cast<int>(picture.height),
                           static_cast<int>(picture.channels), type);
}

} // namespace

Bool HoldsFloats(const String& path) {
    String suffix = std::filesystem::path(path).extension().string();
    std::transform(suffix.begin(), suffix.end(), suffix.begin(),
                   [](unsigned char c) { return std::tolower(c); });
    static constexpr const char* floatSuffixes[] = {".exr", ".hdr", ".rgbe"};
    return std::find(std::begin(floatSuffixes), std::end(floatSuffixes), suffix) != std::end(floatSuffixes);
}

Result<Picture> ReadPicture(const String& path) {
    return CatchOutOfMemory([&]() -> Result<Picture> {
        std::error_code error;
        const auto status = std::filesystem::status(path, error);
        if (!std::filesystem::exists(status))
            return ReadError(path, "there is no such file");
        // Opening a pipe would wait for somebody to write to it.
        if (!std::filesystem::is_regular_file(status))
            return ReadError(path, "it is no regular file");
        const auto input = OIIO::ImageInput::open(path);
        if (!input)
            return ReadError(path, FirstLine(OIIO::geterror()));
        const OIIO::ImageSpec& spec = input->spec();
        const auto count = CountValues(spec.width, spec.height, spec.nchannels);
        if (!count)
            return ReadError(path, count.GetError().GetMessage());
        if (spec.deep || spec.depth > 1)
            return ReadError(path, "it is no flat picture");
        Picture picture{spec.width, spec.height, spec.nchannels, {}};
        picture.pixels.resize(static_cast<std::size_t>(*count));
        if (!input->read_image(0, 0, 0, -1, OIIO::TypeDesc::FLOAT, picture.pixels.data()))
            return ReadError(path, FirstLine(input->geterror()));
        return picture;
    });
}

Result<void> WritePicture(const String& path, const Picture& picture) {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY_VALUE(count, CountValues(picture.width, picture.height, picture.channels));
        if (count != static_cast<Int>(picture.pixels.size()))
            return WriteError(path, Format("@ values are needed, not @", count, picture.pixels.size()));
        const TemporaryFile file(path);
        const auto output = OIIO::ImageOutput::create(path);
        if (!output)
            return WriteError(path, FirstLine(OIIO::geterror()));
        const auto type = HoldsFloats(path) ? OIIO::TypeDesc::FLOAT : OIIO::TypeDesc::UINT8;
        if (!output->open(file.GetPath(), SpecOf(picture, type)))
            return WriteError(path, FirstLine(output->geterror()));
        if (!output->write_image(OIIO::TypeDesc::FLOAT, picture.pixels.data()) || !output->close())
            return WriteError(path, FirstLine(output->geterror()));
        if (const auto error = file.MoveToTarget())
            return WriteError(path, error.message());
        return OK;
    });
}

Result<Picture> ResizePicture(const Picture& picture, Int width, Int height) {
    return CatchOutOfMemory([&]() -> Result<Picture> {
        NORVI_TRY_VALUE(count, CountValues(width, height, picture.channels));
        Picture resized{width, height, picture.channels, BaseArray<Float32>(static_cast<std::size_t>(count))};
        const OIIO::ImageBuf source(SpecOf(picture, OIIO::TypeDesc::FLOAT),
                                    const_cast<Float32*>(picture.pixels.data()));
        OIIO::ImageBuf target(SpecOf(resized, OIIO::TypeDesc::FLOAT), resized.pixels.data());
        if (!OIIO::ImageBufAlgo::resize(target, source))
            return IllegalArgumentError(Format("cannot resize a picture: @", FirstLine(target.geterror())));
        return resized;
    });
}

Picture ToLuminance(const Picture& picture) {
    Picture result{picture.width, picture.height, 1, {}};
    const auto channels = static_cast<std::size_t>(picture.channels);
    result.pixels.reserve(picture.pixels.size() / channels);
    for (std::size_t i = 0; i < picture.pixels.size(); i += channels) {
        const Float32* pixel = &picture.pixels[i];
        result.pixels.push_back(channels < 3 ? pixel[0]
                                             : 0.2126f * pixel[0] + 0.7152f * pixel[1] + 0.0722f * pixel[2]);
    }
    return result;
}

Float32 ChannelValue(const Float32* pixel, Int channels, Int channel) {
    if (channel == 3)
        return channels == 4 || channels == 2 ? pixel[channels - 1] : 1;
    return channels >= 3 ? pixel[channel] : pixel[0];
}

} // namespace norvi

#include "noise_gallery.h"

#include <norvi/host/noise.h>
#include <norvi/host/registry.h>

#include "gallery_page.h"
#include "picture.h"

namespace norvi {

namespace {

constexpr Float cellsAcross = 6;
// Off the whole numbers, where gradient noise has less to show.
constexpr Float depth = 0.37f, time = 0.25f;
constexpr Int32 seed = 1, permutationTablePower = 10;

/// The last part of a class id.
String NameOf(const NoiseInfo& info) {
    const std::string_view id = info.id;
    return String(id.substr(id.rfind('.') + 1));
}

Result<Picture> Draw(const NoiseInfo& info, Int32 size) {
    NORVI_TRY_VALUE(noise, NoiseRef::Create(Registry::Get(registryid::NoiseClasses).FindEntryValue(info.id)));
    NORVI_TRY(noise->Init(seed, permutationTablePower, DataDictionary()));
    const Float pixel = cellsAcross / static_cast<Float>(size);
    Picture picture{.width = size, .height = size, .channels = 1, .pixels = {}};
    for (Int32 y = 0; y < size; ++y) {
        for (Int32 x = 0; x < size; ++x) {
            const Vector32 position{(static_cast<Float>(x) + 0.5f) * pixel,
                                    (static_cast<Float>(y) + 0.5f) * pixel, depth};
            picture.pixels.push_back((noise->Noise(position, time) - info.minimum) /
                                     (info.maximum - info.minimum));
        }
    }
    return picture;
}

/// The modes of a class as text: "1, 2".
String ModesOf(const NoiseInfo& info) {
    String modes;
    for (UInt32 mode = 0; mode < NoiseModeCount; ++mode) {
        if (std::string_view(NoiseClassIdOfMode(mode)) == info.id)
            modes += (modes.empty() ? "" : ", ") + ToText(mode);
    }
    return modes;
}

String Row(const NoiseInfo& info) {
    return GalleryRow(NameOf(info),
                      Format("<b>@</b><br>mode @<br>@ to @, @<br>@", info.id, ModesOf(info), info.minimum,
                             info.maximum, info.isContinuous ? "continuous" : "with jumps",
                             info.description));
}

} // namespace

Result<void> WriteNoiseGallery(const String& directory, Int32 size) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY_VALUE(folder, PrepareGallery(directory, size));
        String rows;
        for (UInt32 mode = 0; mode < NoiseModeCount; ++mode) {
            const NoiseInfo& info = *FindNoiseInfo(NoiseClassIdOfMode(mode));
            if (mode > 0 && std::string_view(NoiseClassIdOfMode(mode - 1)) == info.id)
                continue;
            NORVI_TRY_VALUE(picture, Draw(info, size));
            NORVI_TRY(WritePicture((folder / (NameOf(info) + ".png")).string(), picture));
            rows += Row(info);
        }
        return WriteGalleryPage(folder, "Noises", rows);
    });
}

} // namespace norvi

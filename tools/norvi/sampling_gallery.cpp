#include "sampling_gallery.h"

#include <cmath>

#include <norvi/parallelprogram.h>

#include "gallery_page.h"
#include "picture.h"

namespace norvi {

namespace {

enum class Motif { Letter, Ramp };

/// A texture, and the positions that its picture shows.
struct View {
    const char* name;
    const char* description;
    Vector2d32 first, last;
    Motif motif = Motif::Letter;
    UInt32 wrap = WRAP_CLAMP;
    Bool isFiltered = true;
    Bool isNormalized = false;
    Bool isSrgb = false;
};

constexpr Int32 LetterExtent = 8, RampWidth = 16, RampHeight = 2;
constexpr Float32 BorderColor[4] = {1.0f, 0.5f, 0.0f, 1.0f};

constexpr Vector2d32 AroundFirst{-8, -8}, AroundLast{16, 16}, EdgeFirst{-1.5f, -1.5f}, EdgeLast{2.5f, 2.5f};
// Off the negative multiples of the extent, which have a rule of their own.
constexpr Vector2d32 UnitFirst{-1.51f, -1.51f}, UnitLast{2.49f, 2.49f};
constexpr Vector2d32 WholeLetter{LetterExtent, LetterExtent}, WholeRamp{RampWidth, RampHeight};

const View views[] = {
    {"wrap_repeat", "repeat: the texture again", AroundFirst, AroundLast, Motif::Letter, WRAP_REPEAT},
    {"wrap_clamp", "clamp: the texel at the edge", AroundFirst, AroundLast, Motif::Letter, WRAP_CLAMP},
    {"wrap_border", "border: one colour", AroundFirst, AroundLast, Motif::Letter, WRAP_BORDER},
    {"wrap_none", "none: what stands there in memory", AroundFirst, AroundLast, Motif::Letter, WRAP_NONE},
    {"edge_repeat", "a corner, repeat: mixed with the texels at the other end", EdgeFirst, EdgeLast,
     Motif::Letter, WRAP_REPEAT},
    {"edge_clamp", "a corner, clamp: mixed with themselves", EdgeFirst, EdgeLast, Motif::Letter, WRAP_CLAMP},
    {"edge_border", "a corner, border: mixed with the border's colour", EdgeFirst, EdgeLast, Motif::Letter,
     WRAP_BORDER},
    {"filter_point",
     "point: the texel that the position lies in",
     {},
     WholeLetter,
     Motif::Letter,
     WRAP_CLAMP,
     false},
    {"filter_linear", "linear: a mixture of the nearest ones", {}, WholeLetter, Motif::Letter},
    {"coordinates_normalized", "positions from -1.51 to 2.49, normalised", UnitFirst, UnitLast, Motif::Letter,
     WRAP_REPEAT, true, true},
    {"coordinates_texels", "the same positions, in texels", UnitFirst, UnitLast, Motif::Letter, WRAP_REPEAT},
    {"srgb_off", "stored numbers as they are", {}, WholeRamp, Motif::Ramp},
    {"srgb_on", "the same, decoded: light", {}, WholeRamp, Motif::Ramp, WRAP_CLAMP, true, false, true},
};

/// A letter, which tells left from right and up from down, on colours that tell one texel from another.
BaseArray<Float32> DrawLetter() {
    constexpr const char* rows[LetterExtent] = {"        ", " #####  ", " #      ", " #      ",
                                                " ####   ", " #      ", " #      ", "        "};
    BaseArray<Float32> texels;
    for (Int32 y = 0; y < LetterExtent; ++y)
        for (Int32 x = 0; x < LetterExtent; ++x) {
            const bool isLetter = rows[y][x] == '#';
            const Float32 red = static_cast<Float32>(x) / (LetterExtent - 1);
            const Float32 green = static_cast<Float32>(y) / (LetterExtent - 1);
            for (const Float32 component : {red, green, 0.5f})
                texels.push_back(isLetter ? 1.0f : 0.1f + 0.6f * component);
            texels.push_back(1.0f);
        }
    return texels;
}

/// From black to white.
BaseArray<Float32> DrawRamp() {
    BaseArray<Float32> texels;
    for (Int32 i = 0; i < RampWidth * RampHeight; ++i) {
        const Float32 grey = static_cast<Float32>(i % RampWidth) / (RampWidth - 1);
        texels.insert(texels.end(), {grey, grey, grey, 1.0f});
    }
    return texels;
}

TextureBindData Describe(const View& view, const BaseArray<Float32>& texels) {
    TextureBindData texture;
    texture._data = reinterpret_cast<const UChar*>(texels.data());
    texture._size = static_cast<Int>(texels.size() * sizeof(Float32));
    texture._dimensions = view.motif == Motif::Letter ? Vec3<UInt32>{LetterExtent, LetterExtent, 1}
                                                      : Vec3<UInt32>{RampWidth, RampHeight, 1};
    texture._sampleLinear = 1;
    texture._normalizedCoordinates = view.isNormalized;
    texture._srgb = view.isSrgb;
    texture._wrapU = texture._wrapV = view.wrap;
    std::copy_n(BorderColor, 4, texture._borderColor);
    return texture;
}

/// Frames the texture itself where the picture shows more than that.
void DrawFrame(const View& view, Picture& picture) {
    const Float32 extent = view.isNormalized ? 1.0f : LetterExtent;
    const auto pixelOf = [&](Float32 position) {
        const Float32 part = (position - view.first.x) / (view.last.x - view.first.x);
        return static_cast<Int>(std::lround(part * static_cast<Float32>(picture.width)));
    };
    const Int begin = pixelOf(0), end = pixelOf(extent);
    const auto blacken = [&](Int x, Int y) {
        if (x >= 0 && y >= 0 && x < picture.width && y < picture.height)
            std::fill_n(&picture.pixels[static_cast<std::size_t>((y * picture.width + x) * 3)], 3, 0.0f);
    };
    for (Int i = begin; i <= end; ++i)
        for (const Int edge : {begin, end})
            blacken(i, edge), blacken(edge, i);
}

Result<Picture> Sample(const View& view, Int32 width, Int32 height) {
    NORVI_TRY_VALUE(program, ParallelProgramRef::Create(programid::CpuProgram));
    NORVI_TRY(program->Init({}, {}, 0, false));
    NORVI_TRY(program->AddKernel("window", "texture_window.kernel", false, {}));
    const BaseArray<Float32> texels = view.motif == Motif::Letter ? DrawLetter() : DrawRamp();
    NORVI_TRY(program->StoreTextureBindData("picture", Describe(view, texels), false));
    TextureBindData result;
    result._dimensions = {static_cast<UInt32>(width), static_cast<UInt32>(height), 1};
    result._sampleLinear = 1;
    result._size = Int{16} * width * height;
    NORVI_TRY(program->CreateTexture("result", result));
    for (const char* texture : {"picture", "result"})
        NORVI_TRY(program->SetTextureToActiveKernelSameId(texture, false));
    NORVI_TRY(program->SetUniform("first", view.first));
    NORVI_TRY(program->SetUniform("last", view.last));
    NORVI_TRY(program->SetUniform("isFiltered", Int32{view.isFiltered}));
    NORVI_TRY(program->UpdateUniforms());
    NORVI_TRY(program->DispatchKernel(result._dimensions.x, result._dimensions.y, 1, false));
    NORVI_TRY(program->Execute(true));

    NORVI_TRY_VALUE(data, program->GetTextureData("result", {}, {}));
    NORVI_TRY_VALUE(sampled, data.GetAs<std::shared_ptr<SamplingData>>());
    const auto* pixel = reinterpret_cast<const Float32*>(sampled->_data);
    Picture picture{width, height, 3, {}};
    for (Int i = 0; i < Int{width} * height; ++i, pixel += 4)
        picture.pixels.insert(picture.pixels.end(), pixel, pixel + 3);
    return picture;
}

Result<Picture> Draw(const View& view, Int32 size) {
    if (view.motif == Motif::Ramp)
        // Of at least two rows, as a texture of two dimensions must have.
        return Sample(view, std::max(size, 2), std::max(size / 4, 2));
    NORVI_TRY_VALUE(picture, Sample(view, std::max(size, 2), std::max(size, 2)));
    if (view.first.x < 0)
        DrawFrame(view, picture);
    return picture;
}

} // namespace

Result<void> WriteSamplingGallery(const String& directory, Int32 size) noexcept {
    return CatchOutOfMemory([&]() -> Result<void> {
        NORVI_TRY_VALUE(folder, PrepareGallery(directory, size));
        String rows;
        for (const View& view : views) {
            NORVI_TRY_VALUE(picture, Draw(view, size));
            NORVI_TRY(WritePicture((folder / (String(view.name) + ".png")).string(), picture));
            rows += GalleryRow(view.name, view.description);
        }
        return WriteGalleryPage(folder, "Sampling", rows);
    });
}

} // namespace norvi

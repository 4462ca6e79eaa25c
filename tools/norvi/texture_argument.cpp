#include "norvi/texture_argument.h"

#include <algorithm>

#include "norvi/run_arguments.h"

namespace norvi {

namespace {

struct TextureOption {
    const char* name;
    void (*apply)(TextureArgument& texture);
};

constexpr TextureOption textureOptions[] = {
    {"wrap=repeat", [](TextureArgument& texture) { texture.wrap = WRAP_REPEAT; }},
    {"wrap=clamp", [](TextureArgument& texture) { texture.wrap = WRAP_CLAMP; }},
    {"wrap=border", [](TextureArgument& texture) { texture.wrap = WRAP_BORDER; }},
    {"wrap=none", [](TextureArgument& texture) { texture.wrap = WRAP_NONE; }},
    {"filter=point", [](TextureArgument& texture) { texture.isLinear = false; }},
    {"filter=linear", [](TextureArgument& texture) { texture.isLinear = true; }},
    {"normalized", [](TextureArgument& texture) { texture.isNormalized = true; }},
    {"srgb", [](TextureArgument& texture) { texture.isSrgb = true; }},
};

Result<void> ApplyOption(const String& text, const String& name, TextureArgument& texture) {
    BaseArray<String> names;
    for (const TextureOption& option : textureOptions) {
        if (option.name == name) {
            option.apply(texture);
            return OK;
        }
        names.push_back(option.name);
    }
    return ArgumentError("--texture", text,
                         Format("there is no option '@'@", name, SuggestText(name, names)));
}

} // namespace

Result<TextureArgument> ParseTexture(const String& text) {
    NORVI_TRY_VALUE(assignment, ParseAssignment("--texture", text));
    TextureArgument texture;
    texture.name = assignment.name;
    const auto parts = SplitText(assignment.value, ':');
    const auto extents = ParseSizes(parts[0], 'x');
    if (extents && extents->size() <= 3)
        texture.extents = *extents;
    else if (IsPictureName(parts[0]))
        texture.file = parts[0];
    else
        return ArgumentError("--texture", text, "expected WxH or the name of a picture, such as picture.png");
    if (parts.size() > 2)
        return ArgumentError("--texture", text, "options stand behind one ':', with ',' between them");
    if (parts.size() == 2)
        for (const String& name : SplitText(parts[1], ','))
            NORVI_TRY(ApplyOption(text, name, texture));
    return texture;
}

} // namespace norvi

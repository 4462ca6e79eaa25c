// What differs between the languages that programs are written in: one table each.
#pragma once

#include <span>

#include <norvi/host/id.h>

namespace norvi {

/// A word of kernel text and what stands for it.
struct ShaderWord {
    std::string_view word;
    std::string_view meaning;
};

/// Patterns in which "$key$" stands for a value.
struct ShaderLanguage {
    const char* id;
    const char* head;      ///< what stands first
    const char* halfHead;  ///< behind it, for programs with 16-bit floats
    const char* groupSize; ///< $x$, $y$, $z$: size of a work group
    std::span<const ShaderWord> words;
    const char* prologue; ///< macros and functions behind the words

    const char* uniformsBegin; ///< $binding$
    const char* uniform;       ///< $type$, $name$
    const char* noiseUniforms; ///< kinds and seeds of noise number 0 to $count$ - 1
    const char* uniformsEnd;
    const char* buffer; ///< $binding$, $type$, $name$
    const char* readOnlyBuffer;
    const char* counter; ///< $binding$, $name$
    const char*
        texture;       ///< $binding$, $name$, $dimensions$, $class$: letter before the names of texture types
    const char* image; ///< also $layout$: of a texel

    const char* bodyBegin;
    const char* bodyEnd;

    /// The letter of textures of whole numbers, for the first letter of a format.
    std::string_view (*classOf)(char format);
    /// What $layout$ stands for.
    String (*layoutOf)(UInt32 channelCount, std::string_view format);
};

/// How often noise can be used in a kernel: with the numbers 0 to NoiseUniformCount - 1.
inline constexpr UInt32 NoiseUniformCount = 128;

/// The table of a language, or null.
const ShaderLanguage* FindShaderLanguage(const Id& language);

extern const ShaderLanguage glslLanguage;

} // namespace norvi

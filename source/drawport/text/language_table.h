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

/// Something that a program declares. Where it is not global, the entry has a parameter for it, written
/// behind others, and hands it on to the program as an argument, written in front of others.
struct ShaderDeclaration {
    const char* text = "";
    const char* parameter = "";
    const char* argument = "";
};

/// Patterns in which "$key$" stands for a value. Every declaration knows $name$ and $binding$, which counts
/// all of them but group shared memory.
struct ShaderLanguage {
    const char* id;
    const char* head; ///< what stands first
    std::span<const ShaderWord> words;
    const char* prologue; ///< types, macros and functions behind the words; all up to here is the same for
                          ///< every program

    const char* groupSize;    ///< $x$, $y$, $z$: size of a work group
    const char* programBegin; ///< between structs and declarations
    /// What words of types stand for in structs and declarations, where that is not what one computes with.
    std::span<const ShaderWord> storageWords;

    const char* uniformsBegin;
    ShaderDeclaration uniformsEnd;
    ShaderDeclaration buffer; ///< $type$
    ShaderDeclaration readOnlyBuffer;
    ShaderDeclaration counter;
    /// Also $index$, which counts textures, $dimensions$, and what a texel is: $kind$ float, int or uint;
    /// $class$ the letter of that kind in words such as ivec4; $layout$ as in rgba16f; $stored$ the number of
    /// components in memory, none for 1; $components$ what takes those that the texture has, and zeros, from
    /// a vector of four.
    ShaderDeclaration texture;
    ShaderDeclaration image;
    ShaderDeclaration groupShared; ///< $type$, $name$, $size$
    const char* groupSharedLocal;  ///< of the entry

    const char* bodyBegin; ///< $x$, $y$, $z$
    const char* bodyEnd;   ///< $parameters$, $arguments$, $locals$ of the entry
};

/// How often noise can be used in a kernel: with the numbers 0 to NoiseUniformCount - 1.
inline constexpr UInt32 NoiseUniformCount = 128;

/// The table of a language, or null.
const ShaderLanguage* FindShaderLanguage(const Id& language);

extern const ShaderLanguage glslLanguage;
extern const ShaderLanguage hlslLanguage;
extern const ShaderLanguage metalLanguage;

} // namespace norvi

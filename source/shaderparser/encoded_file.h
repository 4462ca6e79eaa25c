// Shader files in encoded form, whose text can neither be read nor changed without the program's key.
//
// Layout: the magic "encoded"; the authentication tag, 32 bytes, of all bytes behind it; the nonce, 16 bytes;
// the cipher text. The key is made from a constant of the program and the nonce, so this keeps honest people
// honest and accidents out; it is no protection from who looks into the program.
#pragma once

#include <span>

#include <norvi/host/result.h>

namespace norvi {

/// Whether the bytes begin as an encoded file does.
bool HasEncodedMagic(std::string_view bytes);

/// Turns the bytes of an encoded file into the text in it; other bytes stay as they are.
///
/// A wrong tag, or a file too short to have one, is an illegal-state error, "hmac different", and cipher text
/// that is no multiple of a block an illegal-argument error; the bytes then stay as they were. Padding longer
/// than the text is the out-of-memory error; the bytes are then the deciphered text with its padding still
/// on.
Result<void> DecodeShaderFile(String& bytes) noexcept;

/// The encoded form of `text`.
/// @param nonce 16 bytes that no other text was encoded with.
Result<String> EncodeShaderFile(std::string_view text, std::span<const UChar> nonce) noexcept;

} // namespace norvi

#include "encoded_file.h"

#include <algorithm>

#include <norvi/host/stream_conversion.h>

namespace norvi {

namespace {

constexpr std::string_view Magic = "encoded", KeyText = "quillbasket";
constexpr size_t TagSize = 32, NonceSize = 16, KeySize = 16, CipherBlockSize = 16;
constexpr size_t TagOffset = Magic.size(), NonceOffset = TagOffset + TagSize,
                 TextOffset = NonceOffset + NonceSize;

using Bytes = BaseArray<UChar>;

std::span<const UChar> AsBytes(std::string_view text) {
    return {reinterpret_cast<const UChar*>(text.data()), text.size()};
}

std::string_view AsText(const Bytes& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

struct Keys {
    Bytes key; ///< of the tag and of the cipher
    Bytes vector;
};

Result<Keys> DeriveKeys(std::span<const UChar> nonce) {
    Bytes material(KeyText.begin(), KeyText.end());
    material.insert(material.end(), nonce.begin(), nonce.end());
    NORVI_TRY_VALUE(digest, ConvertStream(streamconversionid::HashSha256, {}, material));
    return Keys{Bytes(digest.begin(), digest.begin() + KeySize),
                Bytes(digest.begin() + KeySize, digest.end())};
}

/// The tag of what stands behind it in a file.
Result<Bytes> ComputeTag(const Keys& keys, std::string_view nonceAndText) {
    DataDictionary options;
    options.Set(Id(streamconversionoption::HmacBaseAlgorithm), Id(streamconversionid::HashSha256));
    options.Set(Id(streamconversionoption::HmacKey), keys.key);
    return ConvertStream(streamconversionid::HashHmac, options, AsBytes(nonceAndText));
}

Result<Bytes> Cipher(const char* conversion, const Keys& keys, std::string_view text) {
    DataDictionary options;
    options.Set(Id(streamconversionoption::CryptoKey), CryptoKey{.key = keys.key, .vector = keys.vector});
    return ConvertStream(conversion, options, AsBytes(text));
}

/// The last byte tells the number of bytes of padding.
Result<void> RemovePadding(String& text) {
    if (text.empty())
        return OK;
    const auto padding = static_cast<signed char>(text.back());
    if (padding < 0 || static_cast<size_t>(padding) > text.size())
        return OutOfMemoryError();
    text.erase(text.end() - padding, text.end());
    return OK;
}

Result<void> Decode(String& bytes) {
    if (bytes.size() < TextOffset)
        return IllegalStateError("hmac different");
    const std::string_view file = bytes;
    NORVI_TRY_VALUE(keys, DeriveKeys(AsBytes(file.substr(NonceOffset, NonceSize))));
    NORVI_TRY_VALUE(tag, ComputeTag(keys, file.substr(NonceOffset)));
    if (AsText(tag) != file.substr(TagOffset, TagSize))
        return IllegalStateError("hmac different");
    NORVI_TRY_VALUE(text, Cipher(streamconversionid::AesDecoder, keys, file.substr(TextOffset)));
    bytes = AsText(text);
    return RemovePadding(bytes);
}

Result<String> Encode(std::string_view text, std::span<const UChar> nonce) {
    if (nonce.size() != NonceSize)
        return IllegalArgumentError("the nonce of an encoded file has 16 bytes");
    NORVI_TRY_VALUE(keys, DeriveKeys(nonce));
    const size_t padding = CipherBlockSize - text.size() % CipherBlockSize;
    const String padded = String(text).append(padding, static_cast<char>(padding));
    NORVI_TRY_VALUE(cipherText, Cipher(streamconversionid::AesEncoder, keys, padded));
    const String body = String(nonce.begin(), nonce.end()).append(AsText(cipherText));
    NORVI_TRY_VALUE(tag, ComputeTag(keys, body));
    return String(Magic).append(AsText(tag)).append(body);
}

} // namespace

bool HasEncodedMagic(std::string_view bytes) {
    return bytes.starts_with(Magic);
}

Result<void> DecodeShaderFile(String& bytes) noexcept {
    if (!HasEncodedMagic(bytes))
        return OK;
    return CatchOutOfMemory([&]() { return Decode(bytes); });
}

Result<String> EncodeShaderFile(std::string_view text, std::span<const UChar> nonce) noexcept {
    return CatchOutOfMemory([&]() { return Encode(text, nonce); });
}

} // namespace norvi

// Conversions of streams of bytes, each known by its id: hashes, message authentication codes and ciphers.
#pragma once

#include <span>

#include <norvi/host/dictionary.h>

namespace norvi {

/// Ids of the conversions.
namespace streamconversionid {
/// SHA-256 (FIPS 180-4): any bytes become 32.
inline constexpr const char* HashSha256 = "net.norvi.streamconversion.hashsha256";
/// HMAC (RFC 2104): any bytes become the code that the base algorithm gives. Needs both `hmac` options.
inline constexpr const char* HashHmac = "net.norvi.streamconversion.hashhmac";
/// AES (FIPS 197) in cipher block chaining, without padding: as many bytes as before, a multiple of 16. Need
/// the option `CryptoKey`.
inline constexpr const char* AesEncoder = "net.norvi.streamconversion.aes.encoder";
inline constexpr const char* AesDecoder = "net.norvi.streamconversion.aes.decoder";
} // namespace streamconversionid

/// Keys of options; each is an Id.
namespace streamconversionoption {
/// Id of a hash, as an Id; only SHA-256 is supported.
inline constexpr const char* HmacBaseAlgorithm = "net.norvi.streamconversion.hmac.basealgorithm";
/// Bytes of the key, as a BaseArray<UChar>.
inline constexpr const char* HmacKey = "net.norvi.streamconversion.hmac.key";
/// A CryptoKey.
inline constexpr const char* CryptoKey = "net.norvi.streamconversion.cryptokey";
} // namespace streamconversionoption

/// What a cipher is driven with.
struct CryptoKey {
    static constexpr Int32 CipherBlockChaining = 1;

    Int32 blockSize = 128; ///< bits
    BaseArray<UChar> key;
    BaseArray<UChar> vector; ///< the block that the first one is chained to
    Int32 mode = CipherBlockChaining;
};

/// Passes `source` through the conversion with the given id, 64 KiB at a time.
///
/// An unknown id is a null-pointer error, "Factory is nullptr."; a source that is no multiple of what the
/// conversion works on an illegal-argument error, "source size @ must be a multiple of @."; so are options
/// that do not fit (a key of AES is 16 bytes, as is its vector). Missing options give the dictionary's
/// errors.
Result<BaseArray<UChar>> ConvertStream(const Id& conversion, const DataDictionary& options,
                                       std::span<const UChar> source) noexcept;

/// Fills `bytes` with random numbers fit for keys and nonces.
Result<void> FillWithRandomBytes(std::span<UChar> bytes) noexcept;

} // namespace norvi

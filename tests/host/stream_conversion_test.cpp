#include <norvi/host/stream_conversion.h>

#include <gtest/gtest.h>

#include "support/results.h"

namespace norvi {
namespace {

using Bytes = BaseArray<UChar>;

Bytes FromText(std::string_view text) {
    return {text.begin(), text.end()};
}

String ToHex(const Bytes& bytes) {
    static constexpr char digits[] = "0123456789abcdef";
    String text;
    for (UChar byte : bytes)
        text.append({digits[byte >> 4], digits[byte & 15]});
    return text;
}

DataDictionary HmacOptions(const Bytes& key, const char* base = streamconversionid::HashSha256) {
    DataDictionary options;
    options.Set(Id(streamconversionoption::HmacBaseAlgorithm), Id(base));
    options.Set(Id(streamconversionoption::HmacKey), key);
    return options;
}

DataDictionary AesOptions(CryptoKey key) {
    DataDictionary options;
    options.Set(Id(streamconversionoption::CryptoKey), std::move(key));
    return options;
}

// Vectors of FIPS 180-4, RFC 4231 (case 2) and SP 800-38A (F.2.1, first two blocks).
TEST(StreamConversion, GivesPublishedVectors) {
    Bytes key, vector;
    for (int i = 0; i < 16; ++i)
        vector.push_back(static_cast<UChar>(i));
    for (const int byte :
         {0x2b, 0x7e, 0x15, 0x16, 0x28, 0xae, 0xd2, 0xa6, 0xab, 0xf7, 0x15, 0x88, 0x09, 0xcf, 0x4f, 0x3c})
        key.push_back(static_cast<UChar>(byte));
    const Bytes plain = FromText("\x6b\xc1\xbe\xe2\x2e\x40\x9f\x96\xe9\x3d\x7e\x11\x73\x93\x17\x2a"
                                 "\xae\x2d\x8a\x57\x1e\x03\xac\x9c\x9e\xb7\x6f\xac\x45\xaf\x8e\x51");
    const DataDictionary aes = AesOptions({.key = key, .vector = vector});
    const struct {
        const char* id;
        DataDictionary options;
        Bytes source;
        const char* expected;
    } cases[] = {
        {streamconversionid::HashSha256,
         {},
         FromText("abc"),
         "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
        {streamconversionid::HashSha256,
         {},
         {},
         "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
        {streamconversionid::HashHmac, HmacOptions(FromText("Jefe")),
         FromText("what do ya want for nothing?"),
         "5bdcc146bf60754e6a042426089575c75a003f089d2739839dec58b964ec3843"},
        {streamconversionid::AesEncoder, aes, plain,
         "7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"},
    };
    for (const auto& test : cases) {
        const auto result = ConvertStream(test.id, test.options, test.source);
        ASSERT_OK(result);
        EXPECT_EQ(ToHex(*result), test.expected);
    }
    const auto cipherText = ConvertStream(streamconversionid::AesEncoder, aes, plain);
    const auto back = ConvertStream(streamconversionid::AesDecoder, aes, *cipherText);
    ASSERT_OK(back);
    EXPECT_EQ(*back, plain);
}

TEST(StreamConversion, RefusesWhatDoesNotFit) {
    const Bytes block(16);
    constexpr const char* wrongKey = "AES needs blocks, a key and a vector of 128 bits, and the mode 1";
    EXPECT_TRUE(FailsWith(ConvertStream("net.norvi.streamconversion.zip", {}, block), errorkind::NullPtr,
                          "Factory is nullptr."));
    EXPECT_TRUE(FailsWith(ConvertStream(streamconversionid::AesDecoder, {}, Bytes(17)),
                          errorkind::IllegalArgument, "source size 17 must be a multiple of 16."));
    EXPECT_TRUE(FailsWith(ConvertStream(streamconversionid::HashHmac, HmacOptions(block, "md5"), block),
                          errorkind::IllegalArgument, "'md5' is no base algorithm of HMAC"));
    for (const CryptoKey& key :
         {CryptoKey{.key = Bytes(32), .vector = block}, CryptoKey{.key = block, .vector = Bytes(8)},
          CryptoKey{.blockSize = 64, .key = block, .vector = block},
          CryptoKey{.key = block, .vector = block, .mode = 2}})
        EXPECT_TRUE(FailsWith(ConvertStream(streamconversionid::AesDecoder, AesOptions(key), block),
                              errorkind::IllegalArgument, wrongKey));
    EXPECT_FALSE(ConvertStream(streamconversionid::AesDecoder, {}, block).IsOk());
}

} // namespace
} // namespace norvi

#include "shaderparser/encoded_file.h"

#include <random>

#include <gtest/gtest.h>

#include "shaderparser/encoded_bytes.h"
#include "support/results.h"

namespace norvi {
namespace {

using Bytes = BaseArray<UChar>;

const Bytes nonce{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
constexpr size_t HeaderSize = 55;

String Encoded(std::string_view text) {
    auto bytes = EncodeShaderFile(text, nonce);
    EXPECT_OK(bytes);
    return *bytes;
}

TEST(EncodedFile, RoundTripsTextsOfAllLengths) {
    std::mt19937 random(1);
    BaseArray<size_t> sizes{65535, 65536, 65537, 3 << 20};
    for (size_t size = 0; size <= 100; ++size)
        sizes.push_back(size);
    for (const size_t size : sizes) {
        String text(size, ' ');
        for (char& c : text)
            c = static_cast<char>(random());
        String bytes = Encoded(text);
        EXPECT_EQ((bytes.size() - HeaderSize) % 16, 0u);
        EXPECT_TRUE(size < 4 || bytes.find(text.substr(0, 40)) == String::npos) << size;
        ASSERT_OK(DecodeShaderFile(bytes));
        EXPECT_TRUE(bytes == text) << size;
    }
}

TEST(EncodedFile, LeavesOtherBytesAlone) {
    for (const char* text : {"", "e", "encode", "Encoded text", "#include", " encoded"}) {
        String bytes = text;
        EXPECT_OK(DecodeShaderFile(bytes));
        EXPECT_EQ(bytes, text);
    }
}

TEST(EncodedFile, ChecksEveryByteOfTagNonceAndText) {
    const String good = Encoded("some text that is longer than a block");
    for (size_t i = 7; i < good.size(); ++i)
        for (const int bit : {1, 128}) {
            String bytes = good;
            bytes[i] = static_cast<char>(bytes[i] ^ bit);
            const String before = bytes;
            EXPECT_TRUE(FailsWith(DecodeShaderFile(bytes), errorkind::IllegalState, "hmac different")) << i;
            EXPECT_TRUE(bytes == before);
        }
}

TEST(EncodedFile, RefusesEveryTruncatedFile) {
    const String good = Encoded("some text that is longer than a block");
    for (size_t size = 7; size < good.size(); ++size) {
        String bytes = good.substr(0, size);
        EXPECT_TRUE(FailsWith(DecodeShaderFile(bytes), errorkind::IllegalState, "hmac different")) << size;
        EXPECT_TRUE(bytes == good.substr(0, size));
    }
    // A text that merely begins with the word.
    String text = "encoded by hand";
    EXPECT_TRUE(FailsWith(DecodeShaderFile(text), errorkind::IllegalState, "hmac different"));
    EXPECT_EQ(text, "encoded by hand");
}

TEST(EncodedFile, TakesEachPaddingValueAsTheNumberOfBytes) {
    for (int padding = 0; padding < 256; ++padding) {
        const String padded = String(31, 'x') + static_cast<char>(padding);
        String bytes = EncodedAsIs(padded);
        const auto result = DecodeShaderFile(bytes);
        if (padding <= 32) {
            EXPECT_OK(result);
            EXPECT_EQ(bytes, padded.substr(0, static_cast<size_t>(32 - padding)));
        } else {
            EXPECT_TRUE(FailsWith(result, errorkind::OutOfMemory, "Out of memory")) << padding;
            EXPECT_EQ(bytes, padded);
        }
    }
}

TEST(EncodedFile, DecodesAFileWithoutText) {
    String bytes = EncodedAsIs("");
    EXPECT_EQ(bytes.size(), HeaderSize);
    EXPECT_OK(DecodeShaderFile(bytes));
    EXPECT_EQ(bytes, "");
}

TEST(EncodedFile, RefusesCipherTextOfPartsOfBlocks) {
    String bytes = EncodedFileMaker().WithCipherText("17 bytes of text.");
    const String before = bytes;
    EXPECT_TRUE(FailsWith(DecodeShaderFile(bytes), errorkind::IllegalArgument,
                          "source size 17 must be a multiple of 16."));
    EXPECT_TRUE(bytes == before);
}

TEST(EncodedFile, NeedsANonceOfTheRightSize) {
    EXPECT_TRUE(FailsWith(EncodeShaderFile("text", Bytes(15)), errorkind::IllegalArgument,
                          "the nonce of an encoded file has 16 bytes"));
}

} // namespace
} // namespace norvi

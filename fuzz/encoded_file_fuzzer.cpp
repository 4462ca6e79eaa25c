// Bytes of files: as they come, behind the magic, as deciphered text with its padding, and there and back.
#include "check.h"
#include "shaderparser/encoded_bytes.h"
#include "shaderparser/encoded_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace norvi;
    const String text(reinterpret_cast<const char*>(data), size);
    for (const String& file : {text, "encoded" + text}) {
        String bytes = file;
        const bool isDecoded = DecodeShaderFile(bytes).IsOk();
        FUZZ_CHECK(bytes == file || isDecoded || bytes.size() + 55 == file.size());
    }
    String padded = EncodedAsIs(text.substr(0, size / 16 * 16));
    const bool isPadded = DecodeShaderFile(padded).IsOk();
    FUZZ_CHECK(padded.size() <= size && (isPadded || padded == text.substr(0, size / 16 * 16)));

    auto encoded = EncodeShaderFile(text, BaseArray<UChar>(16, 7));
    FUZZ_CHECK(encoded.IsOk() && DecodeShaderFile(*encoded).IsOk() && *encoded == text);
    return 0;
}

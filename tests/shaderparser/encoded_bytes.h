// Encoded files with a right tag round whatever bytes.
#pragma once

#include <cstdlib>

#include <norvi/host/stream_conversion.h>

namespace norvi {

inline BaseArray<UChar> ConvertOrAbort(const char* id, const DataDictionary& options, const String& source) {
    auto result = ConvertStream(id, options, {reinterpret_cast<const UChar*>(source.data()), source.size()});
    if (!result)
        std::abort();
    return *result;
}

struct EncodedFileMaker {
    const String nonce = "0123456789abcdef";
    const BaseArray<UChar> digest = ConvertOrAbort(streamconversionid::HashSha256, {}, "quillbasket" + nonce);

    /// A file with this cipher text.
    String WithCipherText(const String& cipherText) const {
        DataDictionary options;
        options.Set(Id(streamconversionoption::HmacBaseAlgorithm), Id(streamconversionid::HashSha256));
        options.Set(Id(streamconversionoption::HmacKey),
                    BaseArray<UChar>(digest.begin(), digest.begin() + 16));
        const auto tag = ConvertOrAbort(streamconversionid::HashHmac, options, nonce + cipherText);
        return "encoded" + String(tag.begin(), tag.end()) + nonce + cipherText;
    }

    /// A file whose deciphered bytes are exactly these; a multiple of 16.
    String WithPlainText(const String& padded) const {
        DataDictionary options;
        options.Set(Id(streamconversionoption::CryptoKey),
                    CryptoKey{.key = {digest.begin(), digest.begin() + 16},
                              .vector = {digest.begin() + 16, digest.end()}});
        const auto cipherText = ConvertOrAbort(streamconversionid::AesEncoder, options, padded);
        return WithCipherText(String(cipherText.begin(), cipherText.end()));
    }
};

inline String EncodedAsIs(const String& padded) {
    return EncodedFileMaker().WithPlainText(padded);
}

} // namespace norvi

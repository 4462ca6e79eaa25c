#include <norvi/host/stream_conversion.h>

#include <algorithm>
#include <memory>

#include <openssl/evp.h>
#include <openssl/rand.h>

namespace norvi {

namespace {

constexpr size_t BlockSize = 0x10000;
constexpr size_t CipherUnit = 16;

/// A conversion at work: takes the source piece by piece and appends what it yields to the result.
class Conversion {
  public:
    virtual ~Conversion() = default;
    virtual bool Update(std::span<const UChar> piece, BaseArray<UChar>& result) = 0;
    virtual bool Finish(BaseArray<UChar>& result) = 0;
};

using ConversionPointer = std::unique_ptr<Conversion>;

Failure LibraryError(const char* conversion) {
    return IllegalStateError(Format("the library refuses the conversion @", conversion));
}

/// A hash, and with a key a message authentication code.
class HashConversion final : public Conversion {
  public:
    bool Start() { return context_ && EVP_DigestInit_ex(context_.get(), EVP_sha256(), nullptr) == 1; }
    bool StartWithKey(const BaseArray<UChar>& key) {
        key_.reset(EVP_PKEY_new_raw_private_key(EVP_PKEY_HMAC, nullptr, key.data(), key.size()));
        return key_ && context_ &&
               EVP_DigestSignInit(context_.get(), nullptr, EVP_sha256(), nullptr, key_.get()) == 1;
    }
    bool Update(std::span<const UChar> piece, BaseArray<UChar>&) override {
        return (key_ ? EVP_DigestSignUpdate(context_.get(), piece.data(), piece.size())
                     : EVP_DigestUpdate(context_.get(), piece.data(), piece.size())) == 1;
    }
    bool Finish(BaseArray<UChar>& result) override {
        size_t length = EVP_MAX_MD_SIZE;
        result.resize(length);
        unsigned int hashLength = 0;
        const int done = key_ ? EVP_DigestSignFinal(context_.get(), result.data(), &length)
                              : EVP_DigestFinal_ex(context_.get(), result.data(), &hashLength);
        result.resize(key_ ? length : hashLength);
        return done == 1;
    }

  private:
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context_{EVP_MD_CTX_new(), EVP_MD_CTX_free};
    std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key_{nullptr, EVP_PKEY_free};
};

class CipherConversion final : public Conversion {
  public:
    bool Start(const CryptoKey& key, bool encode) {
        return context_ &&
               EVP_CipherInit_ex(context_.get(), EVP_aes_128_cbc(), nullptr, key.key.data(),
                                 key.vector.data(), encode) == 1 &&
               EVP_CIPHER_CTX_set_padding(context_.get(), 0) == 1;
    }
    bool Update(std::span<const UChar> piece, BaseArray<UChar>& result) override {
        const size_t before = result.size();
        result.resize(before + piece.size() + CipherUnit);
        int length = 0;
        const int done = EVP_CipherUpdate(context_.get(), result.data() + before, &length, piece.data(),
                                          static_cast<int>(piece.size()));
        result.resize(before + static_cast<size_t>(length));
        return done == 1;
    }
    bool Finish(BaseArray<UChar>&) override {
        UChar rest[CipherUnit];
        int length = 0;
        return EVP_CipherFinal_ex(context_.get(), rest, &length) == 1 && length == 0;
    }

  private:
    std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context_{EVP_CIPHER_CTX_new(),
                                                                             EVP_CIPHER_CTX_free};
};

Result<ConversionPointer> MakeSha256(const DataDictionary&) {
    auto conversion = std::make_unique<HashConversion>();
    if (!conversion->Start())
        return LibraryError(streamconversionid::HashSha256);
    return ConversionPointer(std::move(conversion));
}

Result<ConversionPointer> MakeHmac(const DataDictionary& options) {
    NORVI_TRY_VALUE(base, options.GetAs<Id>(Data(Id(streamconversionoption::HmacBaseAlgorithm))));
    NORVI_TRY_VALUE(key, options.GetAs<BaseArray<UChar>>(Data(Id(streamconversionoption::HmacKey))));
    if (base != Id(streamconversionid::HashSha256))
        return IllegalArgumentError(Format("'@' is no base algorithm of HMAC", base));
    auto conversion = std::make_unique<HashConversion>();
    if (!conversion->StartWithKey(key))
        return LibraryError(streamconversionid::HashHmac);
    return ConversionPointer(std::move(conversion));
}

Result<ConversionPointer> MakeAes(const DataDictionary& options, bool encode) {
    NORVI_TRY_VALUE(key, options.GetAs<CryptoKey>(Data(Id(streamconversionoption::CryptoKey))));
    if (key.blockSize != 128 || key.key.size() != CipherUnit || key.vector.size() != CipherUnit ||
        key.mode != CryptoKey::CipherBlockChaining)
        return IllegalArgumentError("AES needs blocks, a key and a vector of 128 bits, and the mode 1");
    auto conversion = std::make_unique<CipherConversion>();
    if (!conversion->Start(key, encode))
        return LibraryError(encode ? streamconversionid::AesEncoder : streamconversionid::AesDecoder);
    return ConversionPointer(std::move(conversion));
}

struct ConversionRow {
    const char* id;
    size_t unit; ///< the source is a multiple of so many bytes
    Result<ConversionPointer> (*make)(const DataDictionary& options);
};

constexpr ConversionRow conversions[] = {
    {streamconversionid::HashSha256, 1, MakeSha256},
    {streamconversionid::HashHmac, 1, MakeHmac},
    {streamconversionid::AesEncoder, CipherUnit,
     [](const DataDictionary& options) { return MakeAes(options, true); }},
    {streamconversionid::AesDecoder, CipherUnit,
     [](const DataDictionary& options) { return MakeAes(options, false); }},
};

Result<BaseArray<UChar>> Drive(const ConversionRow& row, const DataDictionary& options,
                               std::span<const UChar> source) {
    if (source.size() % row.unit != 0)
        return IllegalArgumentError(
            Format("source size @ must be a multiple of @.", UInt64{source.size()}, UInt64{row.unit}));
    NORVI_TRY_VALUE(conversion, row.make(options));
    BaseArray<UChar> result;
    while (!source.empty()) {
        const size_t size = std::min(source.size(), BlockSize);
        if (!conversion->Update(source.first(size), result))
            return LibraryError(row.id);
        source = source.subspan(size);
    }
    if (!conversion->Finish(result))
        return LibraryError(row.id);
    return result;
}

} // namespace

Result<BaseArray<UChar>> ConvertStream(const Id& conversion, const DataDictionary& options,
                                       std::span<const UChar> source) noexcept {
    return CatchOutOfMemory([&]() -> Result<BaseArray<UChar>> {
        for (const ConversionRow& row : conversions)
            if (conversion == Id(row.id))
                return Drive(row, options, source);
        return NullPtrError("Factory is nullptr.");
    });
}

Result<void> FillWithRandomBytes(std::span<UChar> bytes) noexcept {
    if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1)
        return IllegalStateError("the library has no random numbers");
    return OK;
}

} // namespace norvi

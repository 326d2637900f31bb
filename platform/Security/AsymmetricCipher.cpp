/// RSA with PKCS#1 padding.
#include <cstring>

#include <openssl/decoder.h>
#include <openssl/rsa.h>

#include "Context.h"

namespace cssm {
namespace {

constexpr int kMinBits = 512;
constexpr int kMaxBits = 16384;
constexpr size_t kPaddingSize = 11;  // 00 02, at least eight bytes, 00

/// The DER structure's name for OpenSSL, or null for a format that such keys don't have.
const char *structureOf(CSSM_KEYBLOB_FORMAT format, bool isPublic)
{
    switch (format) {
    case CSSM_KEYBLOB_RAW_FORMAT_NONE:
    case CSSM_KEYBLOB_RAW_FORMAT_PKCS1: return "type-specific";
    case CSSM_KEYBLOB_RAW_FORMAT_PKCS8: return isPublic ? nullptr : "PrivateKeyInfo";
    case CSSM_KEYBLOB_RAW_FORMAT_SPKI: return isPublic ? "SubjectPublicKeyInfo" : nullptr;
    default: return nullptr;
    }
}

OwnedKey decode(const SecureBytes &der, const char *structure, bool isPublic)
{
    EVP_PKEY *key = nullptr;
    const Owned<OSSL_DECODER_CTX, OSSL_DECODER_CTX_free> decoder(OSSL_DECODER_CTX_new_for_pkey(
        &key, "DER", structure, "RSA", isPublic ? EVP_PKEY_PUBLIC_KEY : EVP_PKEY_KEYPAIR, library::context(),
        nullptr));
    const unsigned char *data = der.data();
    size_t left = der.size();
    const bool decoded = decoder && OSSL_DECODER_from_data(decoder.get(), &data, &left) && left == 0;
    OwnedKey owned(key);
    return decoded ? std::move(owned) : nullptr;
}

CSSM_RETURN readKey(const std::optional<KeyCopy> &key, bool encrypting, OwnedKey &read)
{
    const CSSM_KEYCLASS keyClass = encrypting ? CSSM_KEYCLASS_PUBLIC_KEY : CSSM_KEYCLASS_PRIVATE_KEY;
    if (const CSSM_RETURN error = checkKeyHeader(key, CSSM_ALGID_RSA, keyClass, encrypting); error != CSSM_OK)
        return error;
    const char *structure = structureOf(key->header.Format, encrypting);
    if (!structure)
        return CSSMERR_CSP_UNSUPPORTED_KEY_FORMAT;
    read = decode(key->data, structure, encrypting);
    if (!read)
        return CSSMERR_CSP_INVALID_KEY;
    const int bits = EVP_PKEY_get_bits(read.get());
    return bits >= kMinBits && bits <= kMaxBits ? CSSM_OK : CSSMERR_CSP_UNSUPPORTED_KEY_SIZE;
}

/// Collects the message, which is at most the modulus long, and works at the end.
class RSARun : public CipherRun {
public:
    RSARun(OwnedKeyContext context, size_t modulus, bool encrypting)
        : context_(std::move(context)), modulus_(modulus), encrypting_(encrypting)
    {
    }

    size_t updateBound(size_t) const override { return 0; }
    size_t finishBound() const override { return modulus_; }

    CSSM_RETURN update(std::span<const uint8> input, uint8 *, size_t &written) override
    {
        written = 0;
        if (input.size() > longest() - message_.size())
            return CSSMERR_CSP_INPUT_LENGTH_ERROR;
        message_.insert(message_.end(), input.begin(), input.end());
        return CSSM_OK;
    }

    CSSM_RETURN finish(uint8 *output, size_t &written) override
    {
        QuietErrors quiet;
        if (!encrypting_ && message_.size() != modulus_)
            return CSSMERR_CSP_INPUT_LENGTH_ERROR;
        written = modulus_;
        static constexpr uint8 kNothing = 0;
        const uint8 *message = message_.empty() ? &kNothing : message_.data();
        if (encrypting_)
            return EVP_PKEY_encrypt(context_.get(), output, &written, message, message_.size()) > 0
                       ? CSSM_OK
                       : CSSMERR_CSP_FUNCTION_FAILED;
        return EVP_PKEY_decrypt(context_.get(), output, &written, message, message_.size()) > 0
                   ? CSSM_OK
                   : CSSMERR_CSP_INVALID_DATA;
    }

private:
    size_t longest() const { return encrypting_ ? modulus_ - kPaddingSize : modulus_; }

    OwnedKeyContext context_;
    size_t modulus_;
    bool encrypting_;
    SecureBytes message_;
};

}  // namespace

CSSM_RETURN startAsymmetric(CSSM_ALGORITHMS algorithm, const Attributes &attributes, bool encrypting,
                            std::unique_ptr<CipherRun> &run)
{
    if (algorithm != CSSM_ALGID_RSA)
        return CSSMERR_CSP_INVALID_ALGORITHM;
    if (attributes.padding != CSSM_PADDING_PKCS1)
        return CSSMERR_CSP_INVALID_ATTR_PADDING;
    QuietErrors quiet;
    OwnedKey key;
    if (const CSSM_RETURN status = readKey(attributes.key, encrypting, key))
        return status;

    OwnedKeyContext context(EVP_PKEY_CTX_new_from_pkey(library::context(), key.get(), nullptr));
    if (!context)
        return CSSMERR_CSP_MEMORY_ERROR;
    const int begun =
        encrypting ? EVP_PKEY_encrypt_init(context.get()) : EVP_PKEY_decrypt_init(context.get());
    if (begun <= 0 || EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING) <= 0)
        return CSSMERR_CSP_INVALID_KEY;
    run = std::make_unique<RSARun>(std::move(context), static_cast<size_t>(EVP_PKEY_get_size(key.get())),
                                   encrypting);
    return CSSM_OK;
}

}  // namespace cssm

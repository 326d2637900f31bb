/// Ciphers with one key: OpenSSL's, and RC5 with modes and padding of our own.
#include <algorithm>
#include <cstring>
#include <limits>

#include "Context.h"
#include "RC5.h"

namespace cssm {
namespace {

// --- What each algorithm takes

struct Traits {
    CSSM_ALGORITHMS algorithm;
    size_t block;                    // 1: a stream cipher
    size_t minKey, maxKey, keyStep;  // bytes
};
constexpr Traits kTraits[] = {
    {CSSM_ALGID_DES, 8, 8, 8, 8},   {CSSM_ALGID_3DES_3KEY_EDE, 8, 24, 24, 24},
    {CSSM_ALGID_RC2, 8, 1, 128, 1}, {CSSM_ALGID_RC5, 8, 0, RC5::kMaxKey, 1},
    {CSSM_ALGID_RC4, 1, 1, 256, 1}, {CSSM_ALGID_AES, 16, 16, 32, 8},
};
constexpr size_t kMaxBlock = 16;

const Traits *findTraits(CSSM_ALGORITHMS algorithm)
{
    const auto *found = std::ranges::find(kTraits, algorithm, &Traits::algorithm);
    return found == std::end(kTraits) ? nullptr : found;
}

struct ModeTraits {
    bool chained;
    bool padded;
};

std::optional<ModeTraits> findMode(CSSM_ENCRYPT_MODE mode)
{
    switch (mode) {
    case CSSM_ALGMODE_ECB: return ModeTraits{false, false};
    case CSSM_ALGMODE_ECBPad: return ModeTraits{false, true};
    case CSSM_ALGMODE_CBC_IV8: return ModeTraits{true, false};
    case CSSM_ALGMODE_CBCPadIV8: return ModeTraits{true, true};
    default: return std::nullopt;
    }
}

std::optional<CipherName> findCipher(CSSM_ALGORITHMS algorithm, bool chained, size_t keyLength)
{
    const auto either = [&](CipherName ecb, CipherName cbc) { return chained ? cbc : ecb; };
    switch (algorithm) {
    case CSSM_ALGID_DES: return either(CipherName::desECB, CipherName::desCBC);
    case CSSM_ALGID_3DES_3KEY_EDE: return either(CipherName::des3ECB, CipherName::des3CBC);
    case CSSM_ALGID_RC2: return either(CipherName::rc2ECB, CipherName::rc2CBC);
    case CSSM_ALGID_RC4: return CipherName::rc4;
    case CSSM_ALGID_AES:
        return keyLength == 16   ? either(CipherName::aes128ECB, CipherName::aes128CBC)
               : keyLength == 24 ? either(CipherName::aes192ECB, CipherName::aes192CBC)
                                 : either(CipherName::aes256ECB, CipherName::aes256CBC);
    default: return std::nullopt;
    }
}

// --- Checks

CSSM_RETURN checkKey(const Traits &traits, const std::optional<KeyCopy> &key, bool encrypting)
{
    if (const CSSM_RETURN error =
            checkKeyHeader(key, traits.algorithm, CSSM_KEYCLASS_SESSION_KEY, encrypting);
        error != CSSM_OK)
        return error;
    const CSSM_KEYBLOB_FORMAT format = key->header.Format;
    if (format != CSSM_KEYBLOB_RAW_FORMAT_NONE && format != CSSM_KEYBLOB_RAW_FORMAT_OCTET_STRING)
        return CSSMERR_CSP_UNSUPPORTED_KEY_FORMAT;
    return takesKeyOf(traits.algorithm, key->data.size()) ? CSSM_OK : CSSMERR_CSP_UNSUPPORTED_KEY_SIZE;
}

CSSM_RETURN checkMode(const Traits &traits, const Attributes &attributes, ModeTraits &mode)
{
    if (traits.block == 1) {
        if (attributes.mode != CSSM_ALGMODE_NONE)
            return CSSMERR_CSP_INVALID_ATTR_MODE;
        if (attributes.padding != CSSM_PADDING_NONE)
            return CSSMERR_CSP_INVALID_ATTR_PADDING;
        mode = {false, false};
        return CSSM_OK;
    }
    const auto found = findMode(attributes.mode);
    if (!found)
        return CSSMERR_CSP_INVALID_ATTR_MODE;
    const bool pads = attributes.padding == CSSM_PADDING_PKCS5 || attributes.padding == CSSM_PADDING_PKCS7;
    if (found->padded ? !pads : attributes.padding != CSSM_PADDING_NONE)
        return CSSMERR_CSP_INVALID_ATTR_PADDING;
    if (found->chained && !attributes.vector)
        return CSSMERR_CSP_MISSING_ATTR_INIT_VECTOR;
    if (found->chained && attributes.vector->size() < traits.block)
        return CSSMERR_CSP_INVALID_ATTR_INIT_VECTOR;
    mode = *found;
    return CSSM_OK;
}

// --- OpenSSL's ciphers

class LibraryRun : public CipherRun {
public:
    LibraryRun(OwnedCipherContext context, size_t block, bool encrypting)
        : context_(std::move(context)), block_(block), encrypting_(encrypting)
    {
    }

    size_t updateBound(size_t inputLength) const override { return inputLength + block_; }
    size_t finishBound() const override { return block_; }

    CSSM_RETURN update(std::span<const uint8> input, uint8 *output, size_t &written) override
    {
        QuietErrors quiet;
        written = 0;
        total_ += input.size();
        while (!input.empty()) {  // OpenSSL counts in int
            const size_t piece = std::min<size_t>(input.size(), 1u << 30);
            int count = 0;
            if (!EVP_CipherUpdate(context_.get(), output + written, &count, input.data(),
                                  static_cast<int>(piece)))
                return CSSMERR_CSP_INTERNAL_ERROR;
            written += static_cast<size_t>(count);
            input = input.subspan(piece);
        }
        return CSSM_OK;
    }

    CSSM_RETURN finish(uint8 *output, size_t &written) override
    {
        QuietErrors quiet;
        int count = 0;
        if (EVP_CipherFinal_ex(context_.get(), output, &count)) {
            written = static_cast<size_t>(count);
            return CSSM_OK;
        }
        if (total_ % block_ != 0 || total_ == 0)
            return CSSMERR_CSP_INPUT_LENGTH_ERROR;
        return encrypting_ ? CSSMERR_CSP_INTERNAL_ERROR : CSSMERR_CSP_INVALID_DATA;
    }

private:
    OwnedCipherContext context_;
    size_t block_;
    bool encrypting_;
    uint64 total_ = 0;
};

bool setEffectiveBits(EVP_CIPHER_CTX *context, uint32 bits)
{
    size_t value = bits;
    const OSSL_PARAM params[] = {OSSL_PARAM_construct_size_t("keybits", &value), OSSL_PARAM_construct_end()};
    return EVP_CIPHER_CTX_set_params(context, params);
}

CSSM_RETURN startLibrary(const Traits &traits, const Attributes &attributes, ModeTraits mode, bool encrypting,
                         std::unique_ptr<CipherRun> &run)
{
    const SecureBytes &key = attributes.key->data;
    const auto name = findCipher(traits.algorithm, mode.chained, key.size());
    const EVP_CIPHER *cipher = name ? library::cipher(*name) : nullptr;
    if (!cipher)
        return CSSMERR_CSP_INVALID_ALGORITHM;
    const uint32 effectiveBits = attributes.effectiveBits.value_or(static_cast<uint32>(8 * key.size()));
    if (traits.algorithm == CSSM_ALGID_RC2 && (effectiveBits < 1 || effectiveBits > 1024))
        return CSSMERR_CSP_INVALID_ATTR_EFFECTIVE_BITS;

    QuietErrors quiet;
    OwnedCipherContext context(EVP_CIPHER_CTX_new());
    if (!context)
        return CSSMERR_CSP_MEMORY_ERROR;
    const uint8 *vector = mode.chained ? attributes.vector->data() : nullptr;
    const bool ready =
        EVP_CipherInit_ex2(context.get(), cipher, nullptr, nullptr, encrypting, nullptr) &&
        EVP_CIPHER_CTX_set_key_length(context.get(), static_cast<int>(key.size())) &&
        (traits.algorithm != CSSM_ALGID_RC2 || setEffectiveBits(context.get(), effectiveBits)) &&
        EVP_CipherInit_ex2(context.get(), nullptr, key.data(), vector, encrypting, nullptr) &&
        EVP_CIPHER_CTX_set_padding(context.get(), mode.padded);
    if (!ready)
        return CSSMERR_CSP_INTERNAL_ERROR;
    run = std::make_unique<LibraryRun>(std::move(context), traits.block, encrypting);
    return CSSM_OK;
}

// --- RC5

/// RC5 in its modes: RC5-CBC-Pad of RFC 2040 when chained and padded. When decrypting padded data the last
/// whole block is held back until it is known whether more follows.
class RC5Run : public CipherRun {
public:
    RC5Run(const RC5 &cipher, const uint8 *vector, bool padded, bool encrypting)
        : cipher_(cipher), chained_(vector != nullptr), padded_(padded), encrypting_(encrypting)
    {
        if (vector)
            std::memcpy(chain_, vector, RC5::kBlock);
    }
    ~RC5Run() override
    {
        OPENSSL_cleanse(chain_, sizeof chain_);
        OPENSSL_cleanse(pending_, sizeof pending_);
    }

    size_t updateBound(size_t inputLength) const override { return inputLength + RC5::kBlock; }
    size_t finishBound() const override { return RC5::kBlock; }

    CSSM_RETURN update(std::span<const uint8> input, uint8 *output, size_t &written) override
    {
        written = 0;
        empty_ = empty_ && input.empty();
        while (!input.empty()) {
            uint8 ready[RC5::kBlock];
            const bool haveReady = held_ == RC5::kBlock;
            if (haveReady) {
                std::memcpy(ready, pending_, sizeof ready);
                held_ = 0;
            }
            const size_t piece = std::min(input.size(), RC5::kBlock - held_);
            std::memcpy(pending_ + held_, input.data(), piece);
            held_ += piece;
            input = input.subspan(piece);
            if (haveReady)
                written += transform(ready, output + written);
        }
        if (held_ == RC5::kBlock && !(padded_ && !encrypting_)) {
            written += transform(pending_, output + written);
            held_ = 0;
        }
        return CSSM_OK;
    }

    CSSM_RETURN finish(uint8 *output, size_t &written) override
    {
        written = 0;
        if (!padded_)
            return held_ == 0 ? CSSM_OK : CSSMERR_CSP_INPUT_LENGTH_ERROR;
        if (encrypting_) {
            const size_t padding = RC5::kBlock - held_;
            std::memset(pending_ + held_, static_cast<int>(padding), padding);
            written = transform(pending_, output);
            return CSSM_OK;
        }
        if (empty_ || held_ != RC5::kBlock)
            return CSSMERR_CSP_INPUT_LENGTH_ERROR;
        uint8 last[RC5::kBlock];
        transform(pending_, last);
        const size_t padding = last[RC5::kBlock - 1];
        const bool valid = padding >= 1 && padding <= RC5::kBlock &&
                           std::all_of(last + RC5::kBlock - padding, last + RC5::kBlock,
                                       [&](uint8 byte) { return byte == padding; });
        if (valid) {
            written = RC5::kBlock - padding;
            std::memcpy(output, last, written);
        }
        OPENSSL_cleanse(last, sizeof last);
        return valid ? CSSM_OK : CSSMERR_CSP_INVALID_DATA;
    }

private:
    size_t transform(const uint8 *input, uint8 *output)
    {
        uint8 block[RC5::kBlock];
        if (encrypting_) {
            std::memcpy(block, input, sizeof block);
            if (chained_)
                mix(block);
            cipher_.encrypt(block, output);
            if (chained_)
                std::memcpy(chain_, output, sizeof chain_);
        } else {
            cipher_.decrypt(input, block);
            if (chained_) {
                mix(block);
                std::memcpy(chain_, input, sizeof chain_);
            }
            std::memcpy(output, block, sizeof block);
        }
        return RC5::kBlock;
    }

    void mix(uint8 *block) const
    {
        for (size_t i = 0; i < RC5::kBlock; ++i)
            block[i] ^= chain_[i];
    }

    RC5 cipher_;
    bool chained_, padded_, encrypting_;
    bool empty_ = true;
    size_t held_ = 0;  // bytes in pending_
    uint8 pending_[RC5::kBlock];
    uint8 chain_[RC5::kBlock] = {};
};

CSSM_RETURN startRC5(const Attributes &attributes, ModeTraits mode, bool encrypting,
                     std::unique_ptr<CipherRun> &run)
{
    const uint32 rounds = attributes.rounds.value_or(RC5::kUsualRounds);
    if (rounds > RC5::kMaxRounds)
        return CSSMERR_CSP_INVALID_ATTR_ROUNDS;
    run =
        std::make_unique<RC5Run>(RC5(attributes.key->data, rounds),
                                 mode.chained ? attributes.vector->data() : nullptr, mode.padded, encrypting);
    return CSSM_OK;
}

}  // namespace

bool isSymmetric(CSSM_ALGORITHMS algorithm) { return findTraits(algorithm) != nullptr; }

bool takesKeyOf(CSSM_ALGORITHMS algorithm, size_t bytes)
{
    const Traits *traits = findTraits(algorithm);
    return !traits || (bytes >= traits->minKey && bytes <= traits->maxKey && bytes % traits->keyStep == 0);
}

CSSM_RETURN startSymmetric(CSSM_ALGORITHMS algorithm, const Attributes &attributes, bool encrypting,
                           std::unique_ptr<CipherRun> &run)
{
    const Traits *traits = findTraits(algorithm);
    if (!traits)
        return CSSMERR_CSP_INVALID_ALGORITHM;
    ModeTraits mode{};
    if (const CSSM_RETURN status = checkKey(*traits, attributes.key, encrypting))
        return status;
    if (const CSSM_RETURN status = checkMode(*traits, attributes, mode))
        return status;
    return algorithm == CSSM_ALGID_RC5 ? startRC5(attributes, mode, encrypting, run)
                                       : startLibrary(*traits, attributes, mode, encrypting, run);
}

}  // namespace cssm

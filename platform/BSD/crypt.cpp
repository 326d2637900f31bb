#include <BSD/crypt.h>

#include <algorithm>
#include <cstdint>

#include "../Security/OpenSSLLibrary.h"

using namespace cssm;

namespace {

constexpr size_t kBlock = 8;

void pack(const char *flags, uint8_t *bytes)
{
    for (size_t i = 0; i < kBlock; ++i) {
        bytes[i] = 0;
        for (size_t j = 0; j < 8; ++j)
            bytes[i] = static_cast<uint8_t>(bytes[i] << 1 | (flags[8 * i + j] & 1));
    }
}

void unpack(const uint8_t *bytes, char *flags)
{
    for (size_t i = 0; i < 8 * kBlock; ++i)
        flags[i] = static_cast<char>(bytes[i / 8] >> (7 - i % 8) & 1);
}

OwnedCipherContext makeSchedule(const uint8_t *key, bool encrypting)
{
    const EVP_CIPHER *cipher = library::cipher(CipherName::desECB);
    OwnedCipherContext made(cipher ? EVP_CIPHER_CTX_new() : nullptr);
    if (!made || !EVP_CipherInit_ex2(made.get(), cipher, key, nullptr, encrypting, nullptr) ||
        !EVP_CIPHER_CTX_set_padding(made.get(), 0))
        return nullptr;
    return made;
}

/// The process-wide key schedule, for both directions.
struct Schedules {
    OwnedCipherContext encrypting, decrypting;

    Schedules()
    {
        static constexpr uint8_t kZeroKey[kBlock] = {};
        encrypting = makeSchedule(kZeroKey, true);
        decrypting = makeSchedule(kZeroKey, false);
    }
    bool usable() const { return encrypting && decrypting; }

    static Schedules &shared()
    {
        static Schedules &made = *new Schedules;  // outlives the host's static destructors
        return made;
    }
};

bool rekey(EVP_CIPHER_CTX *context, const uint8_t *key)
{
    return EVP_CipherInit_ex2(context, nullptr, key, nullptr, -1, nullptr);
}

}  // namespace

int bsd_setkey(const char flags[64])
{
    QuietErrors quiet;
    Schedules &schedules = Schedules::shared();
    uint8_t key[kBlock];
    pack(flags, key);
    const bool set = schedules.usable() && rekey(schedules.encrypting.get(), key) &&
                     rekey(schedules.decrypting.get(), key);
    OPENSSL_cleanse(key, sizeof key);
    return set ? 0 : -1;
}

int bsd_encrypt(char flags[64], int direction)
{
    uint8_t block[kBlock];
    pack(flags, block);
    if (bsd_encrypt_blocks(block, 1, direction) != 0)
        return -1;
    unpack(block, flags);
    return 0;
}

int bsd_encrypt_blocks(void *blocks, size_t count, int direction)
{
    QuietErrors quiet;
    Schedules &schedules = Schedules::shared();
    if (!schedules.usable())
        return -1;
    EVP_CIPHER_CTX *context = (direction == 0 ? schedules.encrypting : schedules.decrypting).get();
    auto *bytes = static_cast<uint8_t *>(blocks);
    while (count > 0) {  // OpenSSL counts in int
        const size_t piece = std::min<size_t>(count, 1u << 24);
        int written = 0;
        if (!EVP_CipherUpdate(context, bytes, &written, bytes, static_cast<int>(piece * kBlock)))
            return -1;
        bytes += piece * kBlock;
        count -= piece;
    }
    return 0;
}

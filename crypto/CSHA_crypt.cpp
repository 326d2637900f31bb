#include <Tarvik/crypto/CSHA_crypt.h>

#include <algorithm>

#include "crypto/private/CryptService.h"

namespace {

constexpr size_t kDigestSize = 20;

bool digest(const unsigned char *data, size_t length, unsigned char *out)
{
    return tarvik::digestInto(CSSM_ALGID_SHA1, data, data ? length : 0, out, kDigestSize);
}

}  // namespace

void CSHA_crypt::EncodeSHA1(const unsigned char *data, unsigned char *out, size_t length)
{
    if (out && !digest(data, length, out))
        out[0] = 0;
}

void CSHA_crypt::CalculateDigest(const unsigned char *data, unsigned char *out, size_t length)
{
    EncodeSHA1(data, out, length);
}

bool CSHA_crypt::VerifyDigest(const unsigned char *expected, const unsigned char *data, size_t length)
{
    unsigned char actual[kDigestSize] = {};
    return expected && digest(data, length, actual) && std::equal(actual, actual + kDigestSize, expected);
}

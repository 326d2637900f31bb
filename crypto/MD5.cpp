#include <Tarvik/crypto/MD5.h>

#include <cstring>

#include "crypto/private/CryptService.h"

void MD5Calculate(const char *text, unsigned char *digest)
{
    constexpr size_t kDigestSize = 16;
    if (digest && !(text && tarvik::digestInto(CSSM_ALGID_MD5, text, std::strlen(text), digest, kDigestSize)))
        digest[0] = 0;
}

void EncodeMD5(const char *text, unsigned char *digest) { MD5Calculate(text, digest); }

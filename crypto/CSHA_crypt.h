/// \file
/// SHA-1 (FIPS 180) of bytes, with a provider attached and detached for each digest.
///
///     unsigned char digest[20];
///     const unsigned char text[] = "abc";
///     CSHA_crypt::EncodeSHA1(text, digest, 3);   // a9993e364706816a...
///
/// A failure shows only in digest[0], which is 0 then. SHA-1 tells files apart; it does not withstand an
/// attacker.
#pragma once
#ifdef __cplusplus
#include <cstddef>

class CSHA_crypt {
public:
    static unsigned GetDigestSize() { return 20; }

    /// Writes the 20 bytes of the digest. Null data counts as no bytes; a null `digest` as nothing to do.
    static void EncodeSHA1(const unsigned char *data, unsigned char *digest, size_t length);
    /// The same.
    static void CalculateDigest(const unsigned char *data, unsigned char *digest, size_t length);
    /// Whether the data has the expected digest, all 20 bytes of it.
    static bool VerifyDigest(const unsigned char *expected, const unsigned char *data, size_t length);
};
#endif

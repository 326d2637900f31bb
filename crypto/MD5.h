/// \file
/// MD5 (RFC 1321) of a text, with a provider attached and detached for each digest.
///
///     unsigned char digest[16];
///     MD5Calculate("abc", digest);   // 90 01 50 98 3c d2 4f b0 d6 96 3f 7d 28 e1 7f 72
///
/// A failure, a null text included, shows only in digest[0], which is 0 then. MD5 tells files apart; it does
/// not withstand an attacker.
#pragma once

#ifdef __cplusplus
extern "C" {
#endif

/// Writes the 16 bytes of the digest of the text without its terminating zero.
void MD5Calculate(const char *text, unsigned char *digest);
/// The same under a second name.
void EncodeMD5(const char *text, unsigned char *digest);

#ifdef __cplusplus
}
#endif

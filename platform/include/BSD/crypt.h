/// \file
/// DES as the BSD C library offers it: setkey(3) and encrypt(3), whose blocks and keys are arrays of 64
/// flags.
///
/// The names carry a prefix because glibc still declares a setkey of its own, with another result, and no
/// longer links either.
///
/// Flag 0 is the cipher's first bit (FIPS 46 calls it bit 1); of each flag the lowest bit counts. There is
/// one key schedule for the whole process, that of an all-zero key until a key is set: use from one thread at
/// a time.
#pragma once
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Sets the key for what follows. Flags 7, 15, ..., 63 are parity, which is not looked at. 0, or -1 when the
/// system has no DES (OpenSSL without its legacy provider).
int bsd_setkey(const char flags[64]);

/// Encrypts (0) or decrypts (anything else) one block of flags in place. 0 or -1.
int bsd_encrypt(char flags[64], int direction);

/// The same for blocks that are packed, eight flags a byte, the first flag in the highest bit: any number at
/// once, in electronic-codebook form. `blocks` holds 8 bytes for each. 0 or -1.
int bsd_encrypt_blocks(void *blocks, size_t count, int direction);

#ifdef __cplusplus
}
#endif

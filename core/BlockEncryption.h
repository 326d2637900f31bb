/// \file
/// DES in electronic-codebook form for small buffers, strings and data objects: each 8-byte block by itself,
/// zero padding, no header. For data that is already written this way; DES keeps no secrets today.
///
///     uint8_t key[8] = {1, 2, 3, 4, 5, 6, 7, 8};
///     void *copy; size_t length;
///     MemAllocateEncryptedCopy("hello", 5, &copy, &length, key);   -> 0, and A2 21 4F 27 F1 F5 A7 3B
///     MemDecrypt(copy, length, key);                               -> 0, and "hello\0\0\0"
///
/// - Bits: a byte becomes eight flags, the least significant bit first (BitFlags.h), and those are DES's bits
///   in their order. So the result is that of a textbook DES over the same key and data with the bits of
///   every byte reversed, in key, input and output.
/// - Key: 8 bytes. The most significant bit of each has no effect. There is one key schedule in the process:
///   use from one thread at a time.
/// - Result: 0; 1 or another number that is not 0 on failure, a null pointer included. Nothing is logged.
/// - The length of the plain text is not recorded: it comes back with its padding.
#pragma once
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/// Sets the key for the block functions.
int EncryptionSetKey(const void *key);
/// Encrypts (0) or decrypts (1) one block of 8 bytes in place, with the key last set.
int EncryptionEncryptCore(void *block, int direction);
int EncryptionEncrypt(void *block);
int EncryptionDecrypt(void *block);

/// Encrypts a copy of the source, padded with zero bytes to a multiple of 8 (nothing is added when the length
/// is one already). The caller frees `*copy` with free. Sets the key. Fails for a null pointer or a length of
/// 0, leaving the outputs alone; after any other failure they are null and 0.
int MemAllocateEncryptedCopy(const void *source, size_t length, void **copy, size_t *copyLength,
                             const void *key);

/// Decrypts in place. The length must be a multiple of 8: the last block is worked on whole, beyond the
/// length if need be. Fails for no buffer or a length of 0; after a failure the buffer may be decrypted in
/// part. Sets the key.
int MemDecrypt(void *buffer, size_t length, const void *key);

#ifdef __cplusplus
}
#endif

#pragma once
#ifdef __cplusplus
#include <Tarvik/crypto/WAKE_Base.h>

/// WAKE's key set-up, and the byte order of its key: words stand in it with their highest byte first.
class WAKE_Policy : public WAKE_Base {
public:
    /// Sets registers and table from the first 32 bytes of the key. The length is not looked at: a key has 32
    /// bytes at least. Does nothing when the key is null.
    void CipherSetKey(const uint8_t *key, uint32_t length);

    /// Four bytes, highest first, to a word: 11 22 33 44 gives 0x11223344; and back.
    static void copyByteEndian(const uint8_t *in, uint32_t &out);
    static void copyWord32Endian(uint32_t in, uint8_t *out);
};
#endif

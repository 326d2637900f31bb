#pragma once
#ifdef __cplusplus
#include <cstddef>
#include <cstdint>

/// The state of WAKE (Word Auto Key Encryption: D. J. Wheeler, "A Bulk Data Encryption Algorithm", Fast
/// Software Encryption, 1993) and its steps on words. Four registers go round through a table of 257 words
/// that the key makes.
///
/// Words are added modulo 2^32. Without a key all state is zero.
class WAKE_Base {
public:
    /// Builds the table from four words of the key. The registers stay as they are.
    void GenKey(uint32_t k0, uint32_t k1, uint32_t k2, uint32_t k3);

    /// The mixing function: (x + y) >> 8 exclusive-or t[(x + y) & 255].
    uint32_t M(uint32_t x, uint32_t y) const
    {
        const uint32_t sum = x + y;
        return sum >> 8 ^ t[sum & 0xFF];
    }

    /// The word with its four bytes in reverse order: 0x11223344 gives 0x44332211.
    static uint32_t reverseByteOrder(uint32_t word);

    /// One step of the keystream: `out` is `in` exclusive-or r6, then the registers advance. The three names
    /// are one computation; the latter two also return the low byte of its last sum.
    void wake_OFB(uint32_t in, uint32_t &out);
    uint8_t wake_CFB(uint32_t in, uint32_t &out);
    uint8_t wake_CTR(uint32_t in, uint32_t &out);

    /// As many steps of wake_OFB as there are words, on bytes in the processor's own order. `out` may be
    /// `in`; neither needs to be aligned.
    void wake_OFB(const uint8_t *in, uint8_t *out, size_t words);

protected:
    uint32_t r3 = 0, r4 = 0, r5 = 0, r6 = 0;
    uint32_t t[257] = {};  // the last one repeats the first of the table's making
};
#endif

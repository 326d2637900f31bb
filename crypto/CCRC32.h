#pragma once
#ifdef __cplusplus
#include <cstdint>

/// The 32-bit cyclic redundancy check of IEEE 802.3, as zip, gzip and PNG use it: polynomial 0x04C11DB7,
/// input and output reflected, register preset to all ones, result complemented. It finds accidental damage;
/// it protects against nobody.
///
///     CCRC32 crc;
///     crc.Calculate("123456789", 9);               // 0xCBF43926
///     crc.Verify("123456789", 9, 0xCBF43926);      // true
///     CCRC32::Reflect(1, 8);                       // 0x80
///
/// The work is done by the widest carry-less multiplier of the processor, found at run time, or by tables
/// where there is none; the result is the same.
///
/// Threads: the first operation of an object fills its table. After Initialize(), or any first operation, one
/// object may serve several threads at once.
class CCRC32 {
public:
    /// Fills the table, if that has not happened yet. Calculate() and Verify() see to it themselves.
    void Initialize();

    /// The check of `length` bytes at `data`; 0 for no bytes. Null data counts as no bytes.
    uint32_t Calculate(const void *data, uint32_t length);

    /// Whether the check of the data is `expected`; of no bytes, whether `expected` is 0.
    bool Verify(const void *data, uint32_t length, uint32_t expected);

    /// The low `bits` bits of `value` in reverse order, the higher bits of the result 0; 0 for a count of 0
    /// or less. Bits that a count above 32 would move beyond the word are lost.
    static uint32_t Reflect(uint32_t value, int8_t bits);

private:
    uint32_t mTable[256];       // the check's next register for each low byte
    bool mInitialized = false;  // whether the table is filled
};
#endif

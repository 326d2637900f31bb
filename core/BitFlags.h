/// \file
/// Bit flags, one per byte: 0 is clear, anything else set (written as 1).
///
///     MemCopyBitFlags("\x01\x80", 2, flags)    -> flags[0] and flags[15] are 1, the other fourteen 0
///
/// Flag 8i + j is bit j (value 1 << j) of byte i: least significant bit first, the reverse of the order in which the
/// C library's DES numbers its bits. Block encryption relies on it.
#pragma once
#include <CoreFoundation/CFBase.h>

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// The bit of the value at an index, 0 to 7.
Boolean CharGetBitFlagAtIndex(uint8_t value, uint8_t index);
/// Sets the bit at an index, 0 to 7; null is ignored.
void CharSetBitFlagAtIndex(uint8_t *value, uint8_t index);
/// Clears the bit at an index, 0 to 7; null is ignored.
void CharUnsetBitFlagAtIndex(uint8_t *value, uint8_t index);

/// Writes the value's 8 flags and returns 8. `flags` is not tested.
uint32_t CharCopyBitFlags(uint8_t value, uint8_t *flags);
/// The byte of 8 flags.
uint8_t CharFromBitFlags(const uint8_t *flags);

/// Writes 8 flags for each byte of the data; nothing for a null pointer or no bytes.
void MemCopyBitFlags(const void *data, size_t length, uint8_t *flags);
/// Packs 8 flags into each byte of the data; nothing for a null pointer or no bytes.
void MemSetBitFlags(void *data, size_t length, const uint8_t *flags);

#ifdef __cplusplus
}
#endif

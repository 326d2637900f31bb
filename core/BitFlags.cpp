#include <Tarvik/core/BitFlags.h>

namespace {
constexpr unsigned kFlagsPerByte = 8;
}

Boolean CharGetBitFlagAtIndex(uint8_t value, uint8_t index) { return (value >> index) & 1; }

void CharSetBitFlagAtIndex(uint8_t *value, uint8_t index)
{
    if (value)
        *value |= uint8_t(1u << index);
}

void CharUnsetBitFlagAtIndex(uint8_t *value, uint8_t index)
{
    if (value)
        *value &= uint8_t(~(1u << index));
}

uint32_t CharCopyBitFlags(uint8_t value, uint8_t *flags)
{
    for (unsigned i = 0; i < kFlagsPerByte; ++i)
        flags[i] = (value >> i) & 1;
    return kFlagsPerByte;
}

uint8_t CharFromBitFlags(const uint8_t *flags)
{
    unsigned value = 0;
    for (unsigned i = 0; i < kFlagsPerByte; ++i)
        value |= unsigned(flags[i] != 0) << i;
    return uint8_t(value);
}

void MemCopyBitFlags(const void *data, size_t length, uint8_t *flags)
{
    if (!data || !flags)
        return;
    const auto *bytes = static_cast<const uint8_t *>(data);
    for (size_t i = 0; i < length; ++i)
        flags += CharCopyBitFlags(bytes[i], flags);
}

void MemSetBitFlags(void *data, size_t length, const uint8_t *flags)
{
    if (!data || !flags)
        return;
    auto *bytes = static_cast<uint8_t *>(data);
    for (size_t i = 0; i < length; ++i, flags += kFlagsPerByte)
        bytes[i] = CharFromBitFlags(flags);
}

#include <Tarvik/crypto/WAKE_Policy.h>

void WAKE_Policy::CipherSetKey(const uint8_t *key, uint32_t)
{
    if (key == nullptr)
        return;
    uint32_t words[8];
    for (int i = 0; i < 8; ++i)
        copyByteEndian(key + 4 * i, words[i]);
    r3 = words[0];
    r4 = words[1];
    r5 = words[2];
    r6 = words[3];
    GenKey(words[4], words[5], words[6], words[7]);
}

void WAKE_Policy::copyByteEndian(const uint8_t *in, uint32_t &out)
{
    out = uint32_t{in[0]} << 24 | uint32_t{in[1]} << 16 | uint32_t{in[2]} << 8 | in[3];
}

void WAKE_Policy::copyWord32Endian(uint32_t in, uint8_t *out)
{
    out[0] = static_cast<uint8_t>(in >> 24);
    out[1] = static_cast<uint8_t>(in >> 16);
    out[2] = static_cast<uint8_t>(in >> 8);
    out[3] = static_cast<uint8_t>(in);
}

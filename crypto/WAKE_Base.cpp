#include <Tarvik/crypto/WAKE_Base.h>

#include <cstring>

namespace {

// The words that the published construction mixes into the table.
constexpr uint32_t kTableWords[8] = {0x726a8f3b, 0xe69a3b5c, 0xd3c71fe5, 0xab3c73d2,
                                     0x4d3a8eb3, 0x0396d6e8, 0x3d4c2f7a, 0x9ee27cf3};

}  // namespace

void WAKE_Base::GenKey(uint32_t k0, uint32_t k1, uint32_t k2, uint32_t k3)
{
    t[0] = k0;
    t[1] = k1;
    t[2] = k2;
    t[3] = k3;
    for (int p = 4; p < 256; ++p) {
        const uint32_t sum = t[p - 4] + t[p - 1];
        t[p] = static_cast<uint32_t>(static_cast<int32_t>(sum) >> 3) ^ kTableWords[sum & 7];
    }
    for (int p = 0; p < 23; ++p)
        t[p] += t[p + 89];

    // The high bytes of the table become a permutation.
    uint32_t x = t[33];
    const uint32_t z = (t[59] | 0x01000001) & 0xFF7FFFFF;
    for (int p = 0; p < 256; ++p) {
        x = (x & 0xFF7FFFFF) + z;
        t[p] = (t[p] & 0x00FFFFFF) ^ x;
    }

    t[256] = t[0];
    x &= 0xFF;
    for (int p = 0; p < 256; ++p) {
        x = (t[p ^ x] ^ x) & 0xFF;
        t[p] = t[x];
        t[x] = t[p + 1];
    }
}

uint32_t WAKE_Base::reverseByteOrder(uint32_t word)
{
    return word << 24 | (word & 0xFF00) << 8 | (word >> 8 & 0xFF00) | word >> 24;
}

void WAKE_Base::wake_OFB(uint32_t in, uint32_t &out) { wake_CTR(in, out); }

uint8_t WAKE_Base::wake_CFB(uint32_t in, uint32_t &out) { return wake_CTR(in, out); }

uint8_t WAKE_Base::wake_CTR(uint32_t in, uint32_t &out)
{
    out = in ^ r6;
    r3 = M(r3, r6);
    r4 = M(r4, r3);
    r5 = M(r5, r4);
    const uint32_t lastSum = r6 + r5;
    r6 = M(r6, r5);
    return static_cast<uint8_t>(lastSum);
}

void WAKE_Base::wake_OFB(const uint8_t *in, uint8_t *out, size_t words)
{
    // Each step waits for the one before, so the registers must not travel through memory.
    uint32_t a = r3, b = r4, c = r5, d = r6;
    for (; words > 0; --words, in += 4, out += 4) {
        uint32_t word;
        std::memcpy(&word, in, 4);
        word ^= d;
        std::memcpy(out, &word, 4);
        a = M(a, d);
        b = M(b, a);
        c = M(c, b);
        d = M(d, c);
    }
    r3 = a;
    r4 = b;
    r5 = c;
    r6 = d;
}

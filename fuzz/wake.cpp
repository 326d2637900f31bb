// WAKE under any sequence of calls with lengths that may be passed: what one object enciphers in place,
// another deciphers elsewhere, and neither touches a byte beside the data.
#include <Tarvik/crypto/WAKE_OFB.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

namespace {

struct Cipher : WAKE_OFB {
    // Whether the call comes back: what is left of a mask may make a good length a bad one.
    bool takes(uint32_t length) const
    {
        const uint32_t rest = length - std::min(length, mUnusedMask <= kMaskLength ? mUnusedMask : 0);
        return rest % 4 == 0 || rest < kMaskLength;
    }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::array<uint8_t, 32> key{};
    const size_t keyLength = std::min(size, key.size());
    std::copy_n(data, keyLength, key.begin());
    data += keyLength;
    size -= keyLength;

    Cipher enciphering, deciphering;
    enciphering.SetKey(key.data(), 32);
    deciphering.SetKey(key.data(), 32);
    for (; size > 0; ++data, --size) {
        // A byte says how long a call is: an odd one up to 255, an even one a multiple of 4.
        const uint32_t length = *data % 2 ? *data : uint32_t{*data} * 2;
        if (!enciphering.takes(length))
            continue;
        const std::vector<uint8_t> plain(length, uint8_t(size));
        std::vector<uint8_t> secret = plain, back(length + 1);
        enciphering.ProcessString(secret.data(), length);
        deciphering.ProcessString(back.data() + 1, secret.data(), length);
        if (!std::equal(plain.begin(), plain.end(), back.begin() + 1) || back[0] != 0)
            std::abort();
    }
    return 0;
}

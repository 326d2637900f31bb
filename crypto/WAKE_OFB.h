#pragma once
#ifdef __cplusplus
#include <Tarvik/crypto/WAKE_Policy.h>

#include <memory>

/// The stream cipher WAKE in output-feedback form, for small messages. Data is combined with the keystream by
/// exclusive-or, so the same call enciphers and deciphers. The key is read highest byte first, the keystream
/// applied lowest byte first.
///
///     WAKE_OFB cipher;                     // one object per message: the keystream goes on where it stopped
///     cipher.SetKey(key, 32);
///     cipher.ProcessString(message, 16);   // in place
///
/// Lengths. Give a message in calls whose lengths are multiples of 4, or in one call of fewer than 256 bytes:
/// both give what any WAKE-OFB gives. A length that is above 255 and no multiple of 4, once
/// the rest of a mask is taken off, must not be passed: the call never returns.
///
/// WAKE is an old cipher, kept for data that was enciphered with it. It is broken by chosen plaintext and
/// authenticates nothing. An object serves one thread at a time.
class WAKE_OFB {
public:
    virtual ~WAKE_OFB() = default;

    /// "WAKE-OFB-LE".
    static const char *StaticAlgorithmName();

    /// Starts the keystream anew from the first 32 bytes of the key, whatever the length. What is left of the
    /// mask stays.
    void SetKey(const uint8_t *key, uint32_t length);

    /// out = in exclusive-or keystream. `out` may be `in`. Does nothing for null or no bytes.
    ///
    /// Bytes come from the mask when an earlier call left some of it, then from the keystream itself when
    /// what remains is a multiple of 4, and from a new mask otherwise. A quirk that stays: after a call with
    /// n < 256 bytes from a new mask 4 - n mask bytes count as left, not 256 - n. So 3 bytes leave one, the
    /// last; from 5 on the count lies outside the mask, which then counts as used up.
    void ProcessString(uint8_t *out, const uint8_t *in, uint32_t length);
    void ProcessString(uint8_t *buffer, uint32_t length);

    /// A new mask: the next 64 words of the keystream.
    void CreateMask();

    /// out[i] = a[i] exclusive-or b[i], for 256 bytes at most.
    static void XorBuffer(uint8_t *out, const uint8_t *a, const uint8_t *b, uint32_t length);

protected:
    static constexpr uint32_t kMaskLength = 256;

    WAKE_Policy mPolicy;
    std::unique_ptr<uint8_t[]> mMask;  // null until first needed
    uint32_t mUnusedMask = 0;          // the count of mask bytes not yet used
};
#endif

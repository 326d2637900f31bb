#include <Tarvik/core/BitFlags.h>
#include <Tarvik/core/BlockEncryption.h>
#include <Tarvik/support/Owned.h>

#include <BSD/crypt.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace {

constexpr size_t kBlock = 8;
constexpr size_t kFlags = 8 * kBlock;

struct WipeAndFree {
    void operator()(uint8_t *flags) const
    {
        for (volatile uint8_t *flag = flags; flag < flags + kFlags; ++flag)
            *flag = 0;
        std::free(flags);
    }
};
using Flags = std::unique_ptr<uint8_t, WipeAndFree>;

/// The 64 flags of 8 bytes; null when memory is short.
Flags flagsOf(const void *bytes)
{
    Flags flags(static_cast<uint8_t *>(std::calloc(kFlags, 1)));
    if (flags)
        MemCopyBitFlags(bytes, kBlock, flags.get());
    return flags;
}

char *asText(const Flags &flags) { return reinterpret_cast<char *>(flags.get()); }

/// Sixteen bytes, for whatever vector unit the processor has.
using Lanes = uint64_t __attribute__((vector_size(16)));

/// The bits of every byte in reverse order: neighbours, pairs and nibbles change places.
template <class Word>
Word withReversedBits(Word word)
{
    word = (word >> 1 & 0x5555555555555555) | (word & 0x5555555555555555) << 1;
    word = (word >> 2 & 0x3333333333333333) | (word & 0x3333333333333333) << 2;
    return (word >> 4 & 0x0F0F0F0F0F0F0F0F) | (word & 0x0F0F0F0F0F0F0F0F) << 4;
}

template <class Word>
size_t reverseBitsBy(uint8_t *bytes, size_t length)
{
    size_t done = 0;
    for (; length - done >= sizeof(Word); done += sizeof(Word)) {
        Word word;
        std::memcpy(&word, bytes + done, sizeof word);
        word = withReversedBits(word);
        std::memcpy(bytes + done, &word, sizeof word);
    }
    return done;
}

/// `length` is a multiple of 8.
void reverseBits(uint8_t *bytes, size_t length)
{
    const size_t done = reverseBitsBy<Lanes>(bytes, length);
    reverseBitsBy<uint64_t>(bytes + done, length - done);
}

/// What EncryptionEncryptCore does to one block, for many: instead of going through flags, the bits of every
/// byte are reversed before and after.
int cryptBlocks(uint8_t *bytes, size_t count, int direction)
{
    constexpr size_t kPiece = 512;  // blocks: stays in the first-level cache between the passes
    while (count > 0) {
        const size_t piece = std::min(count, kPiece);
        reverseBits(bytes, piece * kBlock);
        const int status = bsd_encrypt_blocks(bytes, piece, direction);
        if (status != 0)
            return status;
        reverseBits(bytes, piece * kBlock);
        bytes += piece * kBlock;
        count -= piece;
    }
    return 0;
}

}  // namespace

int EncryptionSetKey(const void *key)
{
    const Flags flags = key ? flagsOf(key) : nullptr;
    return flags ? bsd_setkey(asText(flags)) : 1;
}

int EncryptionEncryptCore(void *block, int direction)
{
    const Flags flags = block ? flagsOf(block) : nullptr;
    if (!flags)
        return 1;
    const int status = bsd_encrypt(asText(flags), direction);
    if (status == 0)
        MemSetBitFlags(block, kBlock, flags.get());
    return status;
}

int EncryptionEncrypt(void *block) { return EncryptionEncryptCore(block, 0); }

int EncryptionDecrypt(void *block) { return EncryptionEncryptCore(block, 1); }

int MemAllocateEncryptedCopy(const void *source, size_t length, void **copy, size_t *copyLength,
                             const void *key)
{
    if (!source || length == 0 || !copy || !copyLength)
        return 1;
    *copy = nullptr;
    *copyLength = 0;

    const size_t blocks = length / kBlock + (length % kBlock != 0);
    tarvik::Owned<void, std::free> buffer(std::calloc(blocks, kBlock));
    if (!buffer)
        return 1;
    std::memcpy(buffer.get(), source, length);

    int status = EncryptionSetKey(key);
    if (status == 0)
        status = cryptBlocks(static_cast<uint8_t *>(buffer.get()), blocks, 0);
    if (status != 0)
        return status;
    *copy = buffer.release();
    *copyLength = blocks * kBlock;
    return 0;
}

int MemDecrypt(void *buffer, size_t length, const void *key)
{
    if (!buffer || length == 0)
        return 1;
    const int status = EncryptionSetKey(key);
    return status != 0
               ? status
               : cryptBlocks(static_cast<uint8_t *>(buffer), length / kBlock + (length % kBlock != 0), 1);
}

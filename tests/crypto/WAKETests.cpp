#include <Tarvik/crypto/WAKE_OFB.h>

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <numeric>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

// 00 01 02 ... 1f
Bytes countingKey()
{
    Bytes key(32);
    std::iota(key.begin(), key.end(), 0);
    return key;
}

// The cipher with its state in sight.
struct Cipher : WAKE_OFB {
    Cipher() { SetKey(countingKey().data(), 32); }

    Bytes process(Bytes data)
    {
        ProcessString(data.data(), static_cast<uint32_t>(data.size()));
        return data;
    }

    const uint8_t *mask() const { return mMask.get(); }
    uint32_t unused() const { return mUnusedMask; }
};

struct State : WAKE_Policy {
    State() { CipherSetKey(countingKey().data(), 32); }
    std::array<uint32_t, 4> registers() const { return {r3, r4, r5, r6}; }
    uint32_t table(size_t i) const { return t[i]; }
};

Bytes keystream(size_t length) { return Cipher().process(Bytes(length)); }

Bytes slice(const Bytes &bytes, size_t from, size_t length)
{
    return {bytes.begin() + static_cast<ptrdiff_t>(from),
            bytes.begin() + static_cast<ptrdiff_t>(from + length)};
}

}  // namespace

// The values come from a second implementation, in another language, of the published construction.
TEST(WAKE, KeystreamOfAKnownKey)
{
    const Bytes begin = {0x0f, 0x0e, 0x0d, 0x0c, 0x84, 0x02, 0x90, 0x6a, 0x80, 0xe8, 0x19,
                         0x08, 0x5b, 0x78, 0xc4, 0x0d, 0x95, 0x00, 0x00, 0x4f, 0x73, 0xe6,
                         0x00, 0x95, 0x78, 0x71, 0x60, 0xed, 0x7f, 0x4d, 0x85, 0x75};
    const Bytes end = {0x71, 0xf5, 0xa3, 0x31, 0x7b, 0xc1, 0x76, 0xc4,
                       0x8a, 0x4c, 0x15, 0xc3, 0x09, 0x54, 0x30, 0x0a};
    const Bytes stream = keystream(4096);
    EXPECT_EQ(slice(stream, 0, 32), begin);
    EXPECT_EQ(slice(stream, 4080, 16), end);

    WAKE_OFB shortLength;  // 32 bytes of the key are used whatever its length
    shortLength.SetKey(countingKey().data(), 5);
    Bytes data(32);
    shortLength.ProcessString(data.data(), 32);
    EXPECT_EQ(data, begin);
    EXPECT_STREQ(WAKE_OFB::StaticAlgorithmName(), "WAKE-OFB-LE");
}

TEST(WAKE, KeySetUp)
{
    State state;
    const std::array<uint32_t, 4> fromKey{0x00010203, 0x04050607, 0x08090a0b, 0x0c0d0e0f};
    EXPECT_EQ(state.registers(), fromKey);
    EXPECT_EQ(state.table(0), 0xe6dcae17u);
    EXPECT_EQ(state.table(255), 0xa2db7999u);
    EXPECT_EQ(state.table(256), 0x48a3c15eu);

    state.GenKey(1, 2, 3, 4);
    EXPECT_EQ(state.registers(), fromKey);
    EXPECT_NE(state.table(0), 0xe6dcae17u);
    state.CipherSetKey(nullptr, 32);
    EXPECT_EQ(state.registers(), fromKey);
}

TEST(WAKE, ThreeNamesOfOneStep)
{
    State ofb, cfb, ctr;
    for (uint32_t in = 0; in < 1000; ++in) {
        const auto before = cfb.registers();
        uint32_t fromOFB, fromCFB, fromCTR;
        ofb.wake_OFB(in, fromOFB);
        const uint8_t lowCFB = cfb.wake_CFB(in, fromCFB), lowCTR = ctr.wake_CTR(in, fromCTR);
        ASSERT_EQ(fromOFB, in ^ before[3]);
        ASSERT_TRUE(fromCFB == fromOFB && fromCTR == fromOFB);
        ASSERT_EQ(lowCFB, (before[3] + cfb.registers()[2]) & 0xFF);
        ASSERT_EQ(lowCTR, lowCFB);
        ASSERT_EQ(cfb.registers(), ofb.registers());
        ASSERT_EQ(ctr.registers(), ofb.registers());
    }
}

TEST(WAKE, ByteOrdersAndTheMaskLimit)
{
    const Bytes bytes = {0x11, 0x22, 0x33, 0x84};
    uint32_t word;
    WAKE_Policy::copyByteEndian(bytes.data(), word);
    EXPECT_EQ(word, 0x11223384u);
    EXPECT_EQ(WAKE_Base::reverseByteOrder(word), 0x84332211u);
    Bytes back(4), out(300);
    WAKE_Policy::copyWord32Endian(word, back.data());
    EXPECT_EQ(back, bytes);
    WAKE_OFB::XorBuffer(out.data(), Bytes(300, 0xF0).data(), Bytes(300, 0x3C).data(), 300);
    EXPECT_EQ(slice(out, 0, 256), Bytes(256, 0xCC));
    EXPECT_EQ(slice(out, 256, 44), Bytes(44));
}

TEST(WAKE, EnciphersAndDeciphers)
{
    for (size_t length : {1, 3, 4, 16, 255, 256, 4096}) {
        Bytes plain(length);
        std::iota(plain.begin(), plain.end(), 7);
        const Bytes secret = Cipher().process(plain);
        EXPECT_NE(secret, plain);
        EXPECT_EQ(Cipher().process(secret), plain);

        Bytes unaligned(length + 1), apart(length + 3);  // to another place, both odd
        std::copy(plain.begin(), plain.end(), unaligned.begin() + 1);
        Cipher().ProcessString(apart.data() + 3, unaligned.data() + 1, static_cast<uint32_t>(length));
        EXPECT_EQ(slice(apart, 3, length), secret);
    }
    Cipher inPieces;
    Bytes joined;
    for (size_t piece : {4, 4, 8, 256, 12}) {
        const Bytes part = inPieces.process(Bytes(piece));
        joined.insert(joined.end(), part.begin(), part.end());
    }
    EXPECT_EQ(joined, keystream(joined.size()));

    Cipher again;
    again.process(Bytes(100));
    again.SetKey(countingKey().data(), 32);
    EXPECT_EQ(again.process(Bytes(32)), keystream(32));
}

// A mask takes 64 words of the keystream, however few of its bytes are used. After n bytes 4 - n count as
// left of it: from 5 on that lies outside the mask, which then counts as used up, and nothing outside is
// read.
TEST(WAKE, WhatAShortCallLeavesOfTheMask)
{
    const Bytes stream = keystream(1024);
    for (uint32_t first = 1; first < 256; first += first % 4 == 3 ? 2 : 1) {
        const uint32_t left = first < 4 ? 4 - first : 0;
        Bytes expected = slice(stream, 256 - left, left);
        const Bytes fresh = slice(stream, 256, 9 - left);
        expected.insert(expected.end(), fresh.begin(), fresh.end());
        Cipher cipher;
        ASSERT_EQ(cipher.process(Bytes(first)), slice(stream, 0, first));
        ASSERT_EQ(cipher.unused(), 4 - first);
        ASSERT_EQ(cipher.process(Bytes(9)), expected) << first;
    }
}

TEST(WAKE, NothingToDoChangesNothing)
{
    Cipher cipher;
    cipher.process(Bytes(3));
    const Bytes mask(cipher.mask(), cipher.mask() + 256);
    uint8_t byte = 0x5A;
    cipher.ProcessString(&byte, &byte, 0);
    cipher.ProcessString(nullptr, &byte, 1);
    cipher.ProcessString(&byte, nullptr, 1);
    cipher.ProcessString(nullptr, 257);
    EXPECT_EQ(byte, 0x5A);
    EXPECT_EQ(cipher.unused(), 1u);
    EXPECT_EQ(Bytes(cipher.mask(), cipher.mask() + 256), mask);
}

// The lengths that must not be passed: the call works on the first 256 bytes for ever and touches no others.
TEST(WAKE, ForbiddenLengthsNeverReturn)
{
    const Bytes in(257);
    auto *shared = static_cast<uint8_t *>(
        mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    EXPECT_EXIT((ualarm(200'000, 0), Cipher().ProcessString(shared, in.data(), 257)),
                testing::KilledBySignal(SIGALRM), "");
    EXPECT_NE(Bytes(shared, shared + 256), Bytes(256));
    EXPECT_EQ(Bytes(shared + 256, shared + 4096), Bytes(4096 - 256));
    munmap(shared, 4096);
}

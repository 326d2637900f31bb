#include <Tarvik/core/BlockEncryption.h>
#import <Tarvik/core/NSData+BlockEncryption.h>
#import <Tarvik/core/NSString+BlockEncryption.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdio>

#include "tests/support/Hex.h"

namespace {

std::string reversed(std::string bytes)
{
    for (char &byte : bytes) {
        unsigned result = 0;
        for (int bit = 0; bit < 8; ++bit)
            result |= (static_cast<unsigned char>(byte) >> bit & 1u) << (7 - bit);
        byte = static_cast<char>(result);
    }
    return bytes;
}

std::string encrypted(const std::string &plain, const std::string &key)
{
    void *copy = nullptr;
    size_t length = 0;
    EXPECT_EQ(0, MemAllocateEncryptedCopy(plain.data(), plain.size(), &copy, &length, key.data()));
    const std::string result(static_cast<char *>(copy), length);
    free(copy);
    return result;
}

std::string decrypted(std::string bytes, const std::string &key)
{
    EXPECT_EQ(0, MemDecrypt(bytes.data(), bytes.size(), key.data()));
    return bytes;
}

std::string block(const std::string &bytes, int (*function)(void *))
{
    std::string result = bytes;
    EXPECT_EQ(0, function(result.data()));
    return result;
}

const std::string kKey("\x01\x23\x45\x67\x89\xAB\xCD\xEF", 8);

// FIPS 46 by way of SP 800-17's substitution table answers, with the bits of every byte reversed.
TEST(BlockEncryption, KnownAnswers)
{
    const char *cases[][3] = {
        {"7ca110454a1a6e57", "01a1d6d039776742", "690f5b0d9a26939b"},
        {"0131d9619dc1376e", "5cd54ca83def57da", "7a389d10354bd271"},
        {"07a1133e4a0b2686", "0248d43806f67172", "868ebb51cab4599a"},
        {"3849674c2602319e", "51454b582ddf440a", "7178876e01f19b2a"},
        {"04b915ba43feb5b6", "42fd443059577fa2", "af37fb421f8c4095"},
        {"0113b970fd34f2ce", "059b5e0851cf143a", "86a560f10ec6d85b"},
        {"0170f175468fb5e6", "0756d8e0774761d2", "0cd3da020021dc09"},
        {"0101010101010101", "8000000000000000", "95f8a5e5dd31d900"},
        {"8001010101010101", "0000000000000000", "95a8d72813daa94d"},
        {"0101010101010102", "0000000000000000", "869efd7f9f265a09"},
    };
    for (const auto &[keyText, plainText, cipherText] : cases) {
        const std::string key = reversed(fromHex(keyText)), plain = reversed(fromHex(plainText)),
                          cipher = reversed(fromHex(cipherText));
        ASSERT_EQ(0, EncryptionSetKey(key.data()));
        EXPECT_EQ(toHex(cipher), toHex(block(plain, EncryptionEncrypt)));
        EXPECT_EQ(toHex(plain), toHex(block(cipher, EncryptionDecrypt)));
        EXPECT_EQ(toHex(cipher), toHex(encrypted(plain, key)));
        EXPECT_EQ(toHex(plain), toHex(decrypted(cipher, key)));
    }
    std::printf("%zu known answers\n", 4 * std::size(cases));
}

// The C library's own setkey and encrypt, which can still be looked up though no longer linked against.
TEST(BlockEncryption, SameAsTheCLibrary)
{
    void *library = dlopen("libcrypt.so.1", RTLD_NOW);
    auto *setkey = library
                       ? reinterpret_cast<void (*)(const char *)>(dlvsym(library, "setkey", "GLIBC_2.2.5"))
                       : nullptr;
    auto *encrypt = library
                        ? reinterpret_cast<void (*)(char *, int)>(dlvsym(library, "encrypt", "GLIBC_2.2.5"))
                        : nullptr;
    if (!setkey || !encrypt)
        GTEST_SKIP() << "this C library has none any more";
    const auto flagsOf = [](const std::string &bytes) {
        std::string flags;
        for (unsigned char byte : bytes)
            for (int bit = 0; bit < 8; ++bit)
                flags += static_cast<char>(byte >> bit & 1);
        return flags;
    };
    RandomBytes random(1);
    for (int i = 0; i < 500; ++i) {
        const std::string key = random(8), plain = random(8);
        const int direction = i % 2;
        std::string flags = flagsOf(plain), actual = plain;
        setkey(flagsOf(key).data());
        encrypt(flags.data(), direction);
        ASSERT_EQ(0, EncryptionSetKey(key.data()));
        ASSERT_EQ(0, EncryptionEncryptCore(actual.data(), direction));
        ASSERT_EQ(toHex(flags), toHex(flagsOf(actual))) << toHex(key) << " " << toHex(plain);
    }
}

// Many blocks at once go another way than one by one: over the vector's tail, the piece's border, and
// unaligned.
TEST(BlockEncryption, BufferIsBlockByBlock)
{
    RandomBytes random(2);
    const std::string key = random(8);
    for (const size_t length : {1u, 5u, 8u, 9u, 16u, 17u, 24u, 4088u, 4096u, 4097u, 4104u, 12289u}) {
        const std::string plain = random(length + 1).substr(1);
        const std::string cipher = encrypted(plain, key);
        ASSERT_EQ((length + 7) / 8 * 8, cipher.size());
        std::string padded = plain;
        padded.resize(cipher.size());
        for (size_t offset = 0; offset < cipher.size(); offset += 8)
            ASSERT_EQ(toHex(block(padded.substr(offset, 8), EncryptionEncrypt)),
                      toHex(cipher.substr(offset, 8)));
        EXPECT_EQ(padded, decrypted(cipher, key));
    }
}

TEST(BlockEncryption, KeyAndCodebook)
{
    std::string otherParity = kKey;
    for (char &byte : otherParity)
        byte = static_cast<char>(byte ^ 0x80);
    const std::string cipher = encrypted("12345678abcdefgh12345678", kKey);
    EXPECT_EQ(cipher, encrypted("12345678abcdefgh12345678", otherParity));
    EXPECT_EQ(cipher.substr(0, 8), cipher.substr(16));
    EXPECT_NE(cipher.substr(0, 8), cipher.substr(8, 8));
    // The key last set stays in force.
    EXPECT_EQ(cipher.substr(0, 8), block("12345678", EncryptionEncrypt));
}

TEST(BlockEncryption, Failures)
{
    char bytes[8] = {};
    void *copy = bytes;
    size_t length = 3;
    EXPECT_NE(0, MemAllocateEncryptedCopy(nullptr, 8, &copy, &length, kKey.data()));
    EXPECT_NE(0, MemAllocateEncryptedCopy(bytes, 0, &copy, &length, kKey.data()));
    EXPECT_NE(0, MemAllocateEncryptedCopy(bytes, 8, nullptr, &length, kKey.data()));
    EXPECT_NE(0, MemAllocateEncryptedCopy(bytes, 8, &copy, nullptr, kKey.data()));
    EXPECT_EQ(3u, length);
    EXPECT_NE(0, MemAllocateEncryptedCopy(bytes, 8, &copy, &length, nullptr));
    EXPECT_EQ(nullptr, copy);
    EXPECT_EQ(0u, length);
    EXPECT_NE(0, MemDecrypt(nullptr, 8, kKey.data()));
    EXPECT_NE(0, MemDecrypt(bytes, 0, kKey.data()));
    EXPECT_NE(0, MemDecrypt(bytes, 8, nullptr));
    EXPECT_NE(0, EncryptionSetKey(nullptr));
    EXPECT_NE(0, EncryptionEncrypt(nullptr));
}

TEST(BlockEncryption, DataObjects)
{
    tarvik::Pool pool;
    const void *key = kKey.data();
    NSData *plain = tarvik::nsdata("hello");
    NSData *cipher = [plain encryptedData:key];
    EXPECT_EQ(toHex(encrypted("hello", kKey)), toHex(*tarvik::bytes(cipher)));
    EXPECT_EQ(std::string("hello\0\0\0", 8), tarvik::bytes([cipher decryptedData:key]));
    // A length that is no multiple of 8 is answered as it is, and nothing beyond it is touched.
    NSData *cut = [cipher subdataWithRange:NSMakeRange(0, 5)];
    EXPECT_EQ(5u, [[cut decryptedData:key] length]);
    EXPECT_EQ(nil, [[NSData data] encryptedData:key]);
    EXPECT_EQ(nil, [[NSData data] decryptedData:key]);
    EXPECT_EQ(nil, [plain encryptedData:nullptr]);
    EXPECT_EQ(nil, [cipher decryptedData:nullptr]);

    void *copy = [plain callocCopy];
    EXPECT_EQ("hello", std::string(static_cast<char *>(copy), 5));
    free(copy);
    EXPECT_EQ(nullptr, [[NSData data] callocCopy]);

    NSMutableData *shrinking = [NSMutableData dataWithData:plain];
    [shrinking deleteHead:0];
    [shrinking deleteHead:2];
    EXPECT_EQ("llo", tarvik::bytes(shrinking));
    [shrinking deleteHead:9];
    [shrinking deleteHead:1];
    EXPECT_EQ(0u, [shrinking length]);
}

TEST(BlockEncryption, Strings)
{
    tarvik::Pool pool;
    const void *key = kKey.data();
    for (const char *text : {"a", "hello", "12345678",
                             "gr\xC3\xBC\xC3\x9F"
                             "e \xF0\x9F\x98\x80",
                             "0123456789abcdef"}) {
        NSData *cipher = [tarvik::nsstring(text) encryptedData:key];
        EXPECT_EQ(text, tarvik::utf8([NSString stringWithEncryptedData:cipher decryptKey:key]));
        EXPECT_EQ(text, tarvik::utf8([NSMutableString stringWithEncryptedData:cipher decryptKey:key]));
    }
    NSString *marked = tarvik::nsstring("\xEF\xBB\xBFmarked");
    EXPECT_EQ(7u, [[NSString stringWithEncryptedData:[marked encryptedData:key] decryptKey:key] length]);
    EXPECT_EQ(0u, [[@"" encryptedData:key] length]);
    EXPECT_TRUE([@"" encryptedData:key]);
    EXPECT_TRUE([[NSString stringWithEncryptedData:nil decryptKey:key] isEqualToString:@""]);
    EXPECT_TRUE([[NSString stringWithEncryptedData:[NSData data] decryptKey:key] isEqualToString:@""]);
    EXPECT_EQ(nil, [@"a" encryptedData:nullptr]);
    EXPECT_EQ(nil, [NSString stringWithEncryptedData:tarvik::nsdata("12345678") decryptKey:nullptr]);
    NSString *half = [tarvik::nsstring("\xF0\x9F\x98\x80") substringToIndex:1];
    ASSERT_EQ(1u, [half length]);
    EXPECT_EQ(nil, [half encryptedData:key]);
}

}  // namespace

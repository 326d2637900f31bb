// The published test values of every algorithm that the crypto service provides, through its interface.
#include <gtest/gtest.h>

#include <cstdio>
#include <vector>

#include "tests/support/Crypt.h"
#include "tests/support/Hex.h"

namespace {

class CryptVectors : public testing::Test {
protected:
    ~CryptVectors() override { std::printf("%d known answers\n", answers_); }

    void expect(const std::string &expected, const std::optional<std::string> &actual,
                const std::string &what)
    {
        ++answers_;
        ASSERT_TRUE(actual) << what << ": " << cssmErrorString(session_.status);
        EXPECT_EQ(expected, toHex(*actual)) << what;
    }

    // One message both ways. All in hexadecimal.
    void expectCipher(CSSM_CC_HANDLE context, const std::string &plain, const std::string &cipher,
                      const std::string &what)
    {
        ASSERT_EQ(CSSM_OK, session_.status) << what;
        expect(cipher, session_.crypt(true, context, fromHex(plain)), what);
        expect(plain, session_.crypt(false, context, fromHex(cipher)), what + ", back");
        CSSM_DeleteContext(context);
    }

    CSSM_CC_HANDLE plainContext(CSSM_ALGORITHMS algorithm, const std::string &key,
                                const std::string &vector = {})
    {
        const auto mode = vector.empty() ? CSSM_ALGMODE_ECB : CSSM_ALGMODE_CBC_IV8;
        return session_.cipherContext(algorithm, fromHex(key), fromHex(vector), mode, CSSM_PADDING_NONE);
    }

    void setAttribute(CSSM_CC_HANDLE context, CSSM_ATTRIBUTE_TYPE type, uint32 value)
    {
        CSSM_CONTEXT_ATTRIBUTE attribute{type, sizeof value, {}};
        attribute.Attribute.Uint32 = value;
        ASSERT_EQ(CSSM_OK, CSSM_UpdateContextAttributes(context, 1, &attribute));
    }

    CryptSession session_;

private:
    int answers_ = 0;
};

struct Block {
    const char *key, *plain, *cipher;
};

// RFC 1321 and FIPS 180.
TEST_F(CryptVectors, Digests)
{
    const std::string letters = "abcdefghijklmnopqrstuvwxyz", digits = "1234567890";
    std::string upper = letters, eighty,
                twoBlocks = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
    for (char &c : upper)
        c = static_cast<char>(c - 'a' + 'A');
    for (int i = 0; i < 8; ++i)
        eighty += digits;
    const struct {
        CSSM_ALGORITHMS algorithm;
        std::string text;
        const char *digest;
    } cases[] = {
        {CSSM_ALGID_MD5, "", "d41d8cd98f00b204e9800998ecf8427e"},
        {CSSM_ALGID_MD5, "a", "0cc175b9c0f1b6a831c399e269772661"},
        {CSSM_ALGID_MD5, "abc", "900150983cd24fb0d6963f7d28e17f72"},
        {CSSM_ALGID_MD5, "message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
        {CSSM_ALGID_MD5, letters, "c3fcd3d76192e4007dfb496cca67e13b"},
        {CSSM_ALGID_MD5, upper + letters + "0123456789", "d174ab98d277d9f5a5611c2c9f419d9f"},
        {CSSM_ALGID_MD5, eighty, "57edf4a22be3c955ac49da2e2107b67a"},
        {CSSM_ALGID_SHA1, "", "da39a3ee5e6b4b0d3255bfef95601890afd80709"},
        {CSSM_ALGID_SHA1, "abc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
        {CSSM_ALGID_SHA1, twoBlocks, "84983e441c3bd26ebaae4aa1f95129e5e54670f1"},
        {CSSM_ALGID_SHA1, std::string(1000000, 'a'), "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
    };
    for (const auto &c : cases)
        expect(c.digest, session_.digest(c.algorithm, c.text), c.text.substr(0, 20));
}

// RFC 6070; the fourth, of 16777216 rounds, takes too long.
TEST_F(CryptVectors, KeyDerivation)
{
    const struct {
        std::string password, salt;
        uint32 iterations, bytes;
        const char *key;
    } cases[] = {
        {"password", "salt", 1, 20, "0c60c80f961f0e71f3a9b524af6012062fe037a6"},
        {"password", "salt", 2, 20, "ea6c014dc72d6f8ccd1ed92ace1d41f0d8de8957"},
        {"password", "salt", 4096, 20, "4b007901b765489abead49d926f721d065a429c1"},
        {"passwordPASSWORDpassword", "saltSALTsaltSALTsaltSALTsaltSALTsalt", 4096, 25,
         "3d2eec4fe41c849b80c8d83662c0e44a8b291a964cf2f07038"},
        {std::string("pass\0word", 9), std::string("sa\0lt", 5), 4096, 16,
         "56fa6aa75548099dcc37d7f03425e0c3"},
    };
    for (const auto &c : cases)
        expect(c.key, session_.deriveKey(c.password, c.salt, c.iterations, CSSM_ALGID_RC5, 8 * c.bytes),
               c.key);
}

// SP 800-17: the substitution tables' known answers, and parts of those for variable plain text and key.
TEST_F(CryptVectors, DES)
{
    const Block cases[] = {
        {"7ca110454a1a6e57", "01a1d6d039776742", "690f5b0d9a26939b"},
        {"0131d9619dc1376e", "5cd54ca83def57da", "7a389d10354bd271"},
        {"07a1133e4a0b2686", "0248d43806f67172", "868ebb51cab4599a"},
        {"3849674c2602319e", "51454b582ddf440a", "7178876e01f19b2a"},
        {"04b915ba43feb5b6", "42fd443059577fa2", "af37fb421f8c4095"},
        {"0113b970fd34f2ce", "059b5e0851cf143a", "86a560f10ec6d85b"},
        {"0170f175468fb5e6", "0756d8e0774761d2", "0cd3da020021dc09"},
        {"43297fad38e373fe", "762514b829bf486a", "ea676b2cb7db2b7a"},
        {"07a7137045da2a16", "3bdd119049372802", "dfd64a815caf1a0f"},
        {"04689104c2fd3b2f", "26955f6835af609a", "5c513c9c4886c088"},
        {"37d06bb516cb7546", "164d5e404f275232", "0a2aeeae3ff4ab77"},
        {"1f08260d1ac2465e", "6b056e18759f5cca", "ef1bf03e5dfa575a"},
        {"584023641aba6176", "004bd6ef09176062", "88bf0db6d70dee56"},
        {"025816164629b007", "480d39006ee762f2", "a1f9915541020b56"},
        {"49793ebc79b3258f", "437540c8698f3cfa", "6fbf1cafcffd0556"},
        {"4fb05e1515ab73a7", "072d43a077075292", "2f22e49bab7ca1ac"},
        {"49e95d6d4ca229bf", "02fe55778117f12a", "5a6b612cc26cce4a"},
        {"018310dc409b26d6", "1d9d5c5018f728c2", "5f4c038ed12b2e41"},
        {"1c587f1c13924fef", "305532286d6f295a", "63fac0d034d9f793"},
        {"0101010101010101", "8000000000000000", "95f8a5e5dd31d900"},
        {"0101010101010101", "4000000000000000", "dd7f121ca5015619"},
        {"0101010101010101", "0000000000000001", "166b40b44aba4bd6"},
        {"8001010101010101", "0000000000000000", "95a8d72813daa94d"},
        {"0101010101010102", "0000000000000000", "869efd7f9f265a09"},
    };
    for (const Block &c : cases)
        expectCipher(plainContext(CSSM_ALGID_DES, c.key), c.plain, c.cipher, c.key);
    // Three equal keys make triple DES the single one.
    for (const Block &c : cases)
        expectCipher(plainContext(CSSM_ALGID_3DES_3KEY, std::string(c.key) + c.key + c.key), c.plain,
                     c.cipher, c.key);
    // SP 800-67's example.
    expectCipher(plainContext(CSSM_ALGID_3DES_3KEY, "0123456789abcdef23456789abcdef01456789abcdef0123"),
                 "5468652071756663"
                 "6b2062726f776e20"
                 "666f78206a756d70",
                 "a826fd8ce53b855fcce21c8112256fe668d5c05dd9b6b900", "three keys");
}

// SP 800-38A, F.2.
TEST_F(CryptVectors, AES)
{
    const char *plain = "6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
                        "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710";
    const Block cases[] = {
        {"2b7e151628aed2a6abf7158809cf4f3c", plain,
         "7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b2"
         "73bed6b8e3c1743b7116e69e222295163ff1caa1681fac09120eca307586e1a7"},
        {"8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b", plain,
         "4f021db243bc633d7178183a9fa071e8b4d9ada9ad7dedf4e5e738763f69145a"
         "571b242012fb7ae07fa9baac3df102e008b0e27988598881d920a9e64f5615cd"},
        {"603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4", plain,
         "f58c4c04d6e5f1ba779eabfb5f7bfbd69cfc4e967edb808d679f777bc6702c7d"
         "39f23369a9d9bacfa530e26304231461b2eb05e2c39be9fcda6c19078c6a9d1b"},
    };
    for (const Block &c : cases)
        expectCipher(plainContext(CSSM_ALGID_AES, c.key, "000102030405060708090a0b0c0d0e0f"), c.plain,
                     c.cipher, c.key);
}

// RFC 2268.
TEST_F(CryptVectors, RC2)
{
    const struct {
        uint32 effectiveBits;
        Block block;
    } cases[] = {
        {63, {"0000000000000000", "0000000000000000", "ebb773f993278eff"}},
        {64, {"ffffffffffffffff", "ffffffffffffffff", "278b27e42e2f0d49"}},
        {64, {"3000000000000000", "1000000000000001", "30649edf9be7d2c2"}},
        {64, {"88", "0000000000000000", "61a8a244adacccf0"}},
        {64, {"88bca90e90875a", "0000000000000000", "6ccf4308974c267f"}},
        {64, {"88bca90e90875a7f0f79c384627bafb2", "0000000000000000", "1a807d272bbe5db1"}},
        {128, {"88bca90e90875a7f0f79c384627bafb2", "0000000000000000", "2269552ab0f85ca6"}},
        {129,
         {"88bca90e90875a7f0f79c384627bafb216f80a6f85920584c42fceb0be255daf1e", "0000000000000000",
          "5b78d3a43dfff1f1"}},
    };
    for (const auto &c : cases) {
        const CSSM_CC_HANDLE context = plainContext(CSSM_ALGID_RC2, c.block.key);
        if (c.effectiveBits != 4 * std::string(c.block.key).size())  // what it is without being told
            setAttribute(context, CSSM_ATTRIBUTE_EFFECTIVE_BITS, c.effectiveBits);
        expectCipher(context, c.block.plain, c.block.cipher, c.block.key);
    }
}

// RFC 6229: the keystream at the start, and further on for the first key.
TEST_F(CryptVectors, RC4)
{
    const struct {
        const char *key;
        size_t offset;
        const char *stream;
    } cases[] = {
        {"0102030405", 0, "b2396305f03dc027ccc3524a0a1118a86982944f18fc82d589c403a47a0d0919"},
        {"0102030405", 240, "28cb1132c96ce286421dcaadb8b69eae1cfcf62b03eddb641d77dfcf7f8d8c93"},
        {"01020304050607", 0, "293f02d47f37c9b633f2af5285feb46be620f1390d19bd84e2e0fd752031afc1"},
        {"0102030405060708", 0, "97ab8a1bf0afb96132f2f67258da15a88263efdb45c4a18684ef87e6b19e5b09"},
        {"0102030405060708090a", 0, "ede3b04643e586cc907dc2185170990203516ba78f413beb223aa5d4d2df6711"},
        {"0102030405060708090a0b0c0d0e0f10", 0,
         "9ac7cc9a609d1ef7b2932899cde41b975248c4959014126a6e8a84f11d1a9e1c"},
        {"0102030405060708090a0b0c0d0e0f101112131415161718", 0,
         "0595e57fe5f0bb3c706edac8a4b2db11dfde31344a1af769c74f070aee9e2326"},
        {"0102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f20", 0,
         "eaa6bd25880bf93d3f5d1e4ca2611d91cfa45c9f7e714b54bdfa80027cb14380"},
    };
    for (const auto &c : cases) {
        const CSSM_CC_HANDLE context =
            session_.cipherContext(CSSM_ALGID_RC4, fromHex(c.key), "", CSSM_ALGMODE_NONE, CSSM_PADDING_NONE);
        const auto stream = session_.crypt(true, context, std::string(c.offset + 32, '\0'));
        CSSM_DeleteContext(context);
        expect(c.stream, stream ? std::optional(stream->substr(c.offset)) : stream, c.key);
    }
}

// RFC 2040, section 9: RC5-32 in cipher block chaining, the last two with padding.
TEST_F(CryptVectors, RC5)
{
    const struct {
        uint32 rounds;
        const char *key, *vector, *plain, *cipher;
        bool padded = false;
    } cases[] = {
        {0, "00", "0000000000000000", "0000000000000000", "7a7bba4d79111d1e"},
        {0, "00", "0000000000000000", "ffffffffffffffff", "797bba4d78111d1e"},
        {0, "00", "0000000000000001", "0000000000000000", "7a7bba4d79111d1f"},
        {0, "00", "0000000000000000", "0000000000000001", "7a7bba4d79111d1f"},
        {0, "00", "0102030405060708", "1020304050607080", "8b9ded91ce7794a6"},
        {1, "11", "0000000000000000", "0000000000000000", "2f759fe7ad86a378"},
        {2, "00", "0000000000000000", "0000000000000000", "dca2694bf40e0788"},
        {2, "00000000", "0000000000000000", "0000000000000000", "dca2694bf40e0788"},
        {8, "00", "0000000000000000", "0000000000000000", "dcfe098577eca5ff"},
        {8, "00", "0102030405060708", "1020304050607080", "9646fb77638f9ca8"},
        {12, "00", "0102030405060708", "1020304050607080", "b2b3209db6594da4"},
        {16, "00", "0102030405060708", "1020304050607080", "545f7f32a5fc3836"},
        {8, "01020304", "0000000000000000", "ffffffffffffffff", "8285e7c1b5bc7402"},
        {12, "01020304", "0000000000000000", "ffffffffffffffff", "fc586f92f7080934"},
        {16, "01020304", "0000000000000000", "ffffffffffffffff", "cf270ef9717ff7c4"},
        {12, "0102030405060708", "0000000000000000", "ffffffffffffffff", "e493f1c1bb4d6e8c"},
        {8, "0102030405060708", "0102030405060708", "1020304050607080", "5c4c041e0f217ac3"},
        {12, "0102030405060708", "0102030405060708", "1020304050607080", "921f12485373b4f7"},
        {16, "0102030405060708", "0102030405060708", "1020304050607080", "5ba0ca6bbe7f5fad"},
        {8, "01020304050607081020304050607080", "0102030405060708", "1020304050607080", "c533771cd0110e63"},
        {12, "01020304050607081020304050607080", "0102030405060708", "1020304050607080", "294ddb46b3278d60"},
        {16, "01020304050607081020304050607080", "0102030405060708", "1020304050607080", "dad6bda9dfe8f7e8"},
        {12, "0102030405", "0000000000000000", "ffffffffffffffff", "97e0787837ed317f"},
        {8, "0102030405", "0000000000000000", "ffffffffffffffff", "7875dbf6738c6478"},
        {8, "0102030405", "7875dbf6738c6478", "0808080808080808", "8f34c3c681c99695"},
        {8, "0102030405", "0000000000000000", "0000000000000000", "7cb3f1df34f94811"},
        {8, "0102030405", "7cb3f1df34f94811", "1122334455667701", "7fd1a023a5bba217"},
        {8, "0102030405", "0000000000000000", "ffffffffffffffff", "7875dbf6738c64788f34c3c681c99695", true},
        {8, "0102030405", "0000000000000000",
         "00000000000000001122334455667"
         "7",
         "7cb3f1df34f948117fd1a023a5bba217", true},
    };
    for (const auto &c : cases) {
        const CSSM_CC_HANDLE context =
            session_.cipherContext(CSSM_ALGID_RC5, fromHex(c.key), fromHex(c.vector),
                                   c.padded ? CSSM_ALGMODE_CBCPadIV8 : CSSM_ALGMODE_CBC_IV8,
                                   c.padded ? CSSM_PADDING_PKCS5 : CSSM_PADDING_NONE);
        if (c.rounds != 12)  // what it is without being told
            setAttribute(context, CSSM_ATTRIBUTE_ROUNDS, c.rounds);
        expectCipher(context, c.plain, c.cipher, std::to_string(c.rounds) + " rounds, key " + c.key);
    }
}

}  // namespace

#include <Tarvik/crypto/CDSAUtilityBase.h>
#include <Tarvik/crypto/CSHA_crypt.h>
#include <Tarvik/crypto/MD5.h>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <sstream>

#include "tests/support/Crypt.h"
#include "tests/support/Hex.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"

namespace {

using Utility = CDSAUtilityBase;

std::string take(CSSM_DATA &data)
{
    const std::string bytes(reinterpret_cast<char *>(data.Data), data.Length);
    std::free(data.Data);
    data = {};
    return toHex(bytes);
}

class CDSAUtility : public testing::Test {
protected:
    CDSAUtility() { EXPECT_EQ(CSSM_OK, Utility::cdsaCspAttach(&csp)); }
    ~CDSAUtility() override { EXPECT_EQ(CSSM_OK, Utility::cdsaCspDetach(csp)); }

    std::string staged(CSSM_ALGORITHMS algorithm, const std::string &path)
    {
        CSSM_DATA digest{};
        EXPECT_EQ(CSSM_OK, Utility::stagedDigest(csp, algorithm, path.c_str(), &digest)) << path;
        return take(digest);
    }
    std::string whole(CSSM_ALGORITHMS algorithm, const std::string &path)
    {
        CSSM_DATA digest{};
        EXPECT_EQ(CSSM_OK, Utility::oneShotDigestFromFile(csp, algorithm, path.c_str(), &digest)) << path;
        return take(digest);
    }

    CSSM_CSP_HANDLE csp = 0;
    TemporaryFolder folder;
};

std::string openssl(const std::vector<std::string> &words, const std::string &input = {})
{
    std::vector<std::string> all = {"openssl"};
    all.insert(all.end(), words.begin(), words.end());
    const ProgramResult result = runProgram(all, input);
    EXPECT_EQ(0, result.status) << result.error;
    return result.out;
}

// Every length from 0 to 300, each file by both ways, against one run of openssl for each algorithm.
TEST_F(CDSAUtility, DigestsAgreeWithOpenSSL)
{
    RandomBytes random(3);
    std::vector<std::string> paths, texts;
    for (size_t length = 0; length <= 300; ++length) {
        texts.push_back(random(length));
        paths.push_back(folder.write("data" + std::to_string(length), texts.back()));
    }
    const struct {
        CSSM_ALGORITHMS algorithm;
        const char *name;
    } algorithms[] = {{CSSM_ALGID_MD5, "-md5"}, {CSSM_ALGID_SHA1, "-sha1"}};
    for (const auto &[algorithm, name] : algorithms) {
        std::vector<std::string> words = {"dgst", name, "-r"};
        words.insert(words.end(), paths.begin(), paths.end());
        std::istringstream lines(openssl(words));
        for (size_t i = 0; i < paths.size(); ++i) {
            std::string expected, path;
            lines >> expected >> path;
            CSSM_DATA digest{};
            const auto *bytes = reinterpret_cast<const unsigned char *>(texts[i].data());
            EXPECT_EQ(0, Utility::oneShotDigest(csp, algorithm, bytes, texts[i].size(), &digest));
            EXPECT_EQ(expected, take(digest)) << i;
            EXPECT_EQ(expected, whole(algorithm, paths[i])) << i;
            EXPECT_EQ(expected, staged(algorithm, paths[i])) << i;
        }
    }
    std::printf("%zu comparisons\n", 2 * 3 * paths.size());
}

TEST_F(CDSAUtility, DigestsOfFilesAndPipes)
{
    RandomBytes random(4);
    for (const size_t size : {size_t{131072}, size_t{131072 + 256}, size_t{131072 + 100}, size_t{1000000}}) {
        const std::string path = folder.write("big", random(size));
        EXPECT_EQ(whole(CSSM_ALGID_SHA1, path), staged(CSSM_ALGID_SHA1, path)) << size;
    }
    // The first read that brings less than 256 bytes ends the digest: of a pipe, that is what was there.
    const std::string pipe = folder / "pipe";
    ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
    const int both = open(pipe.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(300, write(both, std::string(300, 'x').data(), 300));
    EXPECT_EQ(whole(CSSM_ALGID_MD5, folder.write("same", std::string(300, 'x'))),
              staged(CSSM_ALGID_MD5, pipe));
    close(both);
    // A file that the kernel makes up says it has no bytes.
    EXPECT_EQ(whole(CSSM_ALGID_MD5, folder.write("version", readFile("/proc/version"))),
              staged(CSSM_ALGID_MD5, "/proc/version"));
}

TEST_F(CDSAUtility, FailingFiles)
{
    const size_t open = openDescriptors();
    unsigned char *bytes = nullptr;
    uint64_t length = 7;
    const std::string missing = folder / "missing", directory = folder.path();
    EXPECT_EQ(ENOENT, Utility::readFile(missing.c_str(), &bytes, &length));
    EXPECT_EQ(0u, length);
    EXPECT_EQ(EISDIR, Utility::readFile(directory.c_str(), &bytes, &length));
    EXPECT_EQ(EINVAL, Utility::readFile(nullptr, &bytes, &length));
    CSSM_DATA digest{7, reinterpret_cast<uint8 *>(7)};  // what it held before does not matter
    EXPECT_EQ(ENOENT, Utility::stagedDigest(csp, CSSM_ALGID_MD5, missing.c_str(), &digest));
    EXPECT_EQ(nullptr, digest.Data);
    EXPECT_EQ(EISDIR, Utility::stagedDigest(csp, CSSM_ALGID_MD5, directory.c_str(), &digest));
    EXPECT_EQ(-1, Utility::oneShotDigestFromFile(csp, CSSM_ALGID_MD5, missing.c_str(), &digest));
    EXPECT_EQ(CSSMERR_CSP_INVALID_ALGORITHM,
              Utility::stagedDigest(csp, CSSM_ALGID_AES, folder.write("f", "x").c_str(), &digest));
    // A file of sysfs says 4096 bytes and has fewer.
    if (struct stat info;
        stat("/sys/kernel/mm/transparent_hugepage/enabled", &info) == 0 && info.st_size == 4096) {
        testing::internal::CaptureStderr();
        EXPECT_EQ(EIO, Utility::readFile("/sys/kernel/mm/transparent_hugepage/enabled", &bytes, &length));
        EXPECT_EQ("readFile: short read\n", testing::internal::GetCapturedStderr());
    }
    EXPECT_EQ(open, openDescriptors());

    testing::internal::CaptureStderr();
    EXPECT_EQ(-1, Utility::oneShotDigest(csp, CSSM_ALGID_AES, "abc", &digest));
    EXPECT_EQ(-1, Utility::oneShotDigest(csp + 1, CSSM_ALGID_MD5, "abc", &digest));
    EXPECT_EQ(-1, Utility::oneShotDigest(csp, CSSM_ALGID_MD5, nullptr, &digest));
    const std::string printed = testing::internal::GetCapturedStderr();
    EXPECT_EQ(0u,
              printed.find(
                  "Attach to CSP: CSSMERR_CSP_INVALID_ALGORITHM: "
                  "the algorithm is not supported [0x80010931]\nAttach to CSP: CSSMERR_CSSM_INVALID_ADDIN_"));
    EXPECT_EQ(nullptr, digest.Data);
}

TEST(DigestFrontEnds, MD5AndSHA1)
{
    unsigned char md5[16], sha1[20];
    const auto text = [](const unsigned char *digest, size_t size) {
        return toHex({reinterpret_cast<const char *>(digest), size});
    };
    MD5Calculate("", md5);
    EXPECT_EQ("d41d8cd98f00b204e9800998ecf8427e", text(md5, 16));
    EncodeMD5("abc", md5);
    EXPECT_EQ("900150983cd24fb0d6963f7d28e17f72", text(md5, 16));
    MD5Calculate(nullptr, md5);
    EXPECT_EQ(0, md5[0]);
    MD5Calculate("abc", nullptr);

    const auto *abc = reinterpret_cast<const unsigned char *>("abc");
    EXPECT_EQ(20u, CSHA_crypt::GetDigestSize());
    CSHA_crypt::EncodeSHA1(abc, sha1, 3);
    EXPECT_EQ("a9993e364706816aba3e25717850c26c9cd0d89d", text(sha1, 20));
    EXPECT_TRUE(CSHA_crypt::VerifyDigest(sha1, abc, 3));
    for (const size_t changed : {0u, 10u, 19u}) {
        unsigned char other[20];
        std::copy(sha1, sha1 + 20, other);
        other[changed] ^= 1;
        EXPECT_FALSE(CSHA_crypt::VerifyDigest(other, abc, 3)) << changed;
    }
    const unsigned char zeros[2] = {};
    CSHA_crypt::CalculateDigest(zeros, sha1, 2);
    EXPECT_EQ("1489f923c4dca729178b3e3233458550d8dddf29", text(sha1, 20));
    CSHA_crypt::CalculateDigest(nullptr, sha1, 5);
    EXPECT_EQ("da39a3ee5e6b4b0d3255bfef95601890afd80709", text(sha1, 20));
}

TEST(Hexadecimal, BothWays)
{
    const struct {
        const char *text, *bytes;
        size_t result;
    } cases[] = {
        {"0aFF", "0aff", 4},
        {"abc", "ab", 3},
        {"", "", 0},
        {"f", "", 1},
        {"AbCdEf09", "abcdef09", 8},
        // Nothing is validated: 'g' is 16, 'G' is 16, ':' is 3, '/' is -1.
        {"0g1G", "1020", 4},
        {":0/0", "30f0", 4},
    };
    for (const auto &c : cases) {
        unsigned char bytes[8] = {};
        EXPECT_EQ(c.result, Utility::convertHEXStringToHEXValue(c.text, bytes)) << c.text;
        EXPECT_EQ(c.bytes, toHex({reinterpret_cast<char *>(bytes), c.result / 2})) << c.text;
    }
    unsigned char byte = 0;
    EXPECT_EQ(1u, Utility::convertHEXStringToHEXValue("00", nullptr));
    EXPECT_EQ(0u, Utility::convertHEXStringToHEXValue(nullptr, &byte));
    char text[5] = "zzzz";
    Utility::convertHEXValueToHEXString(reinterpret_cast<const unsigned char *>("\x0A\xFF"), 2, text);
    EXPECT_STREQ("0aff", text);
    Utility::convertHEXValueToHEXString(&byte, -1, text);
    EXPECT_STREQ("", text);
}

struct CipherCase {
    CSSM_ALGORITHMS algorithm;
    const char *openssl;
    size_t keySize, vectorSize;
};
const CipherCase kCiphers[] = {
    {CSSM_ALGID_DES, "-des-cbc", 8, 8},       {CSSM_ALGID_3DES_3KEY, "-des-ede3-cbc", 24, 8},
    {CSSM_ALGID_RC2, "-rc2-cbc", 16, 8},      {CSSM_ALGID_RC4, "-rc4", 16, 0},
    {CSSM_ALGID_AES, "-aes-128-cbc", 16, 16}, {CSSM_ALGID_AES, "-aes-192-cbc", 24, 16},
    {CSSM_ALGID_AES, "-aes-256-cbc", 32, 16},
};

// Every length from 0 to 300; the ciphers take turns, so that each meets every length modulo its block.
TEST_F(CDSAUtility, CiphersAgreeWithOpenSSL)
{
    RandomBytes random(5);
    // The process-wide vector is known after a call that sets it.
    std::string vector = "f0e1d2c3b4a5968778695a4b3c2d1e0f", ignored;
    ASSERT_EQ(CSSM_OK, Utility::encryptData(CSSM_ALGID_AES, "", "", ignored, vector, true));
    for (size_t length = 0; length <= 300; ++length) {
        const CipherCase &c = kCiphers[length % std::size(kCiphers)];
        const std::string keyBytes = random(c.keySize), plain = random(length);
        const CSSM_KEY key = keyOf(c.algorithm, keyBytes);
        const CSSM_DATA input = dataOf(plain);
        CSSM_DATA output{}, back{};
        ASSERT_EQ(CSSM_OK, Utility::cdsaEncrypt(csp, &key, &input, &output)) << c.openssl << length;
        std::vector<std::string> words = {"enc",       c.openssl, "-K",        toHex(keyBytes),
                                          "-provider", "legacy",  "-provider", "default"};
        if (c.vectorSize > 0)
            words.insert(words.end(), {"-iv", vector.substr(0, 2 * c.vectorSize)});
        ASSERT_EQ(CSSM_OK, Utility::cdsaDecrypt(csp, &key, &output, &back)) << c.openssl << length;
        ASSERT_EQ(toHex(plain), take(back)) << c.openssl << length;
        ASSERT_EQ(toHex(openssl(words, plain)), take(output)) << c.openssl << length;
    }
    std::printf("301 comparisons, and as many round trips\n");
}

TEST_F(CDSAUtility, KeysFromPasswords)
{
    CSSM_KEY key{};
    ASSERT_EQ(CSSM_OK, Utility::cdsaDeriveKey(csp, "password", 8, CSSM_ALGID_AES, 256, &key));
    EXPECT_EQ(256u, key.KeyHeader.LogicalKeySizeInBits);
    const std::string expected =
        openssl({"kdf", "-keylen", "32", "-kdfopt", "digest:SHA1", "-kdfopt", "pass:password", "-kdfopt",
                 "salt:bramWick", "-kdfopt", "iter:1000", "-binary", "PBKDF2"});
    EXPECT_EQ(toHex(expected), toHex({reinterpret_cast<char *>(key.KeyData.Data), key.KeyData.Length}));
    EXPECT_EQ(CSSM_OK, Utility::cdsaFreeKey(csp, &key));
    EXPECT_EQ(nullptr, key.KeyData.Data);
    key.KeyData = {7, reinterpret_cast<uint8 *>(7)};
    EXPECT_EQ(CSSMERR_CSP_UNSUPPORTED_KEY_SIZE,
              Utility::cdsaDeriveKey(csp, "p", 1, CSSM_ALGID_DES, 256, &key));
    EXPECT_EQ(CSSM_OK, Utility::cdsaFreeKey(csp, &key)) << "it is empty";
    // The table of contexts ends here.
    CSSM_CC_HANDLE context = 0;
    const CSSM_KEY unknown = keyOf(99, expected);
    EXPECT_EQ(static_cast<CSSM_RETURN>(0x80010801),
              Utility::genCryptHandle(csp, &unknown, nullptr, &context));
    EXPECT_EQ(0u, context);
}

TEST(EncryptData, RoundTrips)
{
    RandomBytes random(6);
    const std::string vector = "00112233445566778899aabbccddeeff";
    for (const CSSM_ALGORITHMS algorithm :
         {uint32{CSSM_ALGID_AES}, uint32{CSSM_ALGID_RC2}, uint32{CSSM_ALGID_RC4}, uint32{CSSM_ALGID_RC5}})
        for (const size_t length : {0u, 1u, 15u, 16u, 127u, 128u, 255u, 256u, 257u, 5000u}) {
            const std::string plain = random(length), password = random(length % 40);
            std::string secret, back, used = vector;
            ASSERT_EQ(CSSM_OK, Utility::encryptData(algorithm, plain, password, secret, used, true));
            EXPECT_EQ(vector, used);
            for (char &digit : secret)
                digit = static_cast<char>(std::toupper(digit));
            ASSERT_EQ(CSSM_OK, Utility::encryptData(algorithm, secret, password, back, used, false));
            ASSERT_EQ(toHex(plain), toHex(back)) << algorithm << " " << length;
        }
}

TEST(EncryptData, VectorAndFailures)
{
    const auto encrypt = [](CSSM_ALGORITHMS algorithm, std::string &vector) {
        std::string out = "kept";
        testing::internal::CaptureStderr();
        const CSSM_RETURN status = Utility::encryptData(algorithm, "text", "password", out, vector, true);
        const std::string printed = testing::internal::GetCapturedStderr();
        EXPECT_EQ(status != CSSM_OK, out == "kept");
        return std::pair(status, printed.substr(0, printed.find(':')));
    };
    std::string none, shorter = "0102", longer(500, '7');
    EXPECT_EQ(CSSM_OK, encrypt(CSSM_ALGID_AES, none).first);
    EXPECT_EQ(32u, none.size());  // the one that was in force
    EXPECT_EQ(CSSM_OK, encrypt(CSSM_ALGID_AES, shorter).first);
    EXPECT_EQ("01020000000000000000000000000000", shorter);
    EXPECT_EQ(CSSM_OK, encrypt(CSSM_ALGID_AES, longer).first);
    EXPECT_EQ(std::string(32, '7'), longer);

    using Outcome = std::pair<CSSM_RETURN, std::string>;
    EXPECT_EQ(Outcome(CSSMERR_CSP_UNSUPPORTED_KEY_SIZE, "DeriveKey"), encrypt(CSSM_ALGID_DES, none));
    EXPECT_EQ(Outcome(CSSMERR_CSP_UNSUPPORTED_KEY_SIZE, "DeriveKey"), encrypt(CSSM_ALGID_3DES_3KEY, none));
    EXPECT_EQ(Outcome(CSSMERR_CSP_INVALID_ALGORITHM, "cdsaEncrypt"), encrypt(CSSM_ALGID_ASC, none));
    EXPECT_EQ(Outcome(CSSMERR_CSP_INTERNAL_ERROR, "cdsaEncrypt"), encrypt(99, none));

    std::string secret, back = "kept";
    ASSERT_EQ(CSSM_OK, Utility::encryptData(CSSM_ALGID_AES, "text", "password", secret, none, true));
    testing::internal::CaptureStderr();
    EXPECT_EQ(CSSMERR_CSP_INVALID_DATA,
              Utility::encryptData(CSSM_ALGID_AES, secret, "wrong", back, none, false));
    EXPECT_EQ(CSSMERR_CSP_INPUT_LENGTH_ERROR,
              Utility::encryptData(CSSM_ALGID_AES, secret.substr(2), "password", back, none, false));
    EXPECT_EQ(CSSMERR_CSP_INPUT_LENGTH_ERROR,
              Utility::encryptData(CSSM_ALGID_AES, "", "password", back, none, false));
    EXPECT_EQ(0u, testing::internal::GetCapturedStderr().find("cdsaDecrypt: "));
    EXPECT_EQ("kept", back);
}

}  // namespace

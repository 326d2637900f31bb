// The crypto service's own behaviour: sessions, handles, pieces and whole, buffers of either side, keys,
// failures.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "tests/support/Crypt.h"
#include "tests/support/Hex.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"

namespace {

const std::string kVector = fromHex("000102030405060708090a0b0c0d0e0f");

class CryptService : public testing::Test {
protected:
    ~CryptService() override
    {
        EXPECT_EQ(0, session.memory.blocks) << "blocks of the caller's memory not given back";
        auto *peek = reinterpret_cast<unsigned long (*)()>(dlsym(RTLD_DEFAULT, "ERR_peek_error"));
        EXPECT_EQ(0u, peek ? peek() : 1u) << "left in the error queue of a host that uses OpenSSL itself";
    }

    CSSM_CC_HANDLE aes(CSSM_ENCRYPT_MODE mode = CSSM_ALGMODE_CBCPadIV8,
                       CSSM_PADDING padding = CSSM_PADDING_PKCS7)
    {
        return session.cipherContext(CSSM_ALGID_AES, std::string(32, 'k'), kVector, mode, padding);
    }

    CryptSession session;
};

TEST(CryptSessionStart, Statuses)
{
    const CSSM_VERSION two = {2, 0}, three = {3, 0};
    const CSSM_GUID other = {};
    CountedMemory memory, partial;
    partial.functions.free_func = nullptr;
    CSSM_MODULE_HANDLE handle = 0;
    const auto load = [](const CSSM_GUID *guid) { return CSSM_ModuleLoad(guid, 0, nullptr, nullptr); };
    const auto attach = [&](const CSSM_VERSION &version, const CountedMemory &functions, uint32 subservice,
                            CSSM_SERVICE_TYPE service) {
        return CSSM_ModuleAttach(&gGuidAppleCSP, &version, &functions.functions, subservice, service, 0, 0,
                                 nullptr, 0, nullptr, &handle);
    };
    EXPECT_EQ(CSSMERR_CSSM_NOT_INITIALIZED, load(&gGuidAppleCSP));
    EXPECT_EQ(CSSMERR_CSSM_NOT_INITIALIZED, CSSM_Terminate());
    EXPECT_EQ(CSSMERR_CSSM_INCOMPATIBLE_VERSION, CSSM_Init(&three, 0, &other, 0, nullptr, nullptr));
    EXPECT_EQ(CSSMERR_CSSM_SCOPE_NOT_SUPPORTED,
              CSSM_Init(&two, CSSM_PRIVILEGE_SCOPE_THREAD, &other, 0, nullptr, nullptr));
    EXPECT_EQ(CSSMERR_CSSM_INVALID_POINTER, CSSM_Init(nullptr, 0, &other, 0, nullptr, nullptr));
    ASSERT_EQ(CSSM_OK, CSSM_Init(&two, 0, &other, 0, nullptr, nullptr));
    EXPECT_EQ(CSSMERR_CSSM_MODULE_NOT_LOADED, attach(two, memory, 0, CSSM_SERVICE_CSP));
    EXPECT_EQ(CSSMERR_CSSM_INVALID_GUID, load(&other));
    ASSERT_EQ(CSSM_OK, load(&gGuidAppleCSP));
    EXPECT_EQ(CSSMERR_CSSM_INCOMPATIBLE_VERSION, attach(three, memory, 0, CSSM_SERVICE_CSP));
    EXPECT_EQ(CSSMERR_CSSM_INVALID_POINTER, attach(two, partial, 0, CSSM_SERVICE_CSP));
    EXPECT_EQ(CSSMERR_CSSM_INVALID_SUBSERVICEID, attach(two, memory, 1, CSSM_SERVICE_CSP));
    EXPECT_EQ(CSSMERR_CSSM_INVALID_SERVICE_MASK, attach(two, memory, 0, CSSM_SERVICE_CSSM));
    ASSERT_EQ(CSSM_OK, attach(two, memory, 0, CSSM_SERVICE_CSP));
    EXPECT_EQ(CSSM_OK, CSSM_ModuleDetach(handle));
    EXPECT_EQ(CSSMERR_CSSM_INVALID_ADDIN_HANDLE, CSSM_ModuleDetach(handle));
    EXPECT_EQ(CSSM_OK, CSSM_ModuleUnload(&gGuidAppleCSP, nullptr, nullptr));
    EXPECT_EQ(CSSMERR_CSSM_MODULE_NOT_LOADED, CSSM_ModuleUnload(&gGuidAppleCSP, nullptr, nullptr));
    EXPECT_EQ(CSSM_OK, CSSM_Terminate());
}

TEST_F(CryptService, StaleAndForeignHandles)
{
    const CSSM_CC_HANDLE digest = session.digestContext(CSSM_ALGID_SHA1), cipher = aes();
    const CSSM_DATA input = dataOf("abc");
    CSSM_DATA out{}, rest{};
    CSSM_SIZE length = 0;
    EXPECT_EQ(CSSMERR_CSP_INVALID_CONTEXT, CSSM_EncryptData(digest, &input, 1, &out, 1, &length, &rest));
    EXPECT_EQ(CSSMERR_CSP_INVALID_CONTEXT, CSSM_DigestData(cipher, &input, 1, &out));
    EXPECT_EQ(CSSM_OK, CSSM_DeleteContext(digest));
    const CSSM_CC_HANDLE successor = session.digestContext(CSSM_ALGID_MD5);  // in the same slot
    for (const CSSM_CC_HANDLE wrong :
         {digest, CSSM_CC_HANDLE{0}, ~CSSM_CC_HANDLE{0}, successor + 1, CSSM_CC_HANDLE{77}}) {
        EXPECT_EQ(CSSMERR_CSSM_INVALID_CONTEXT_HANDLE, CSSM_DigestData(wrong, &input, 1, &out));
        EXPECT_EQ(CSSMERR_CSSM_INVALID_CONTEXT_HANDLE, CSSM_EncryptDataInit(wrong));
        EXPECT_EQ(CSSMERR_CSSM_INVALID_CONTEXT_HANDLE, CSSM_DeleteContext(wrong));
    }
    // Detaching takes the contexts along.
    EXPECT_EQ(CSSM_OK, CSSM_EncryptDataInit(cipher));
    EXPECT_EQ(CSSM_OK, CSSM_ModuleDetach(session.csp));
    EXPECT_EQ(CSSMERR_CSSM_INVALID_CONTEXT_HANDLE, CSSM_DeleteContext(successor));
    EXPECT_EQ(CSSMERR_CSSM_INVALID_CONTEXT_HANDLE, CSSM_EncryptDataFinal(cipher, &rest));
    session.digestContext(CSSM_ALGID_MD5);
    EXPECT_EQ(CSSMERR_CSSM_INVALID_ADDIN_HANDLE, session.status);
}

TEST_F(CryptService, DigestInPieces)
{
    const std::string text = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
    const CSSM_CC_HANDLE context = session.digestContext(CSSM_ALGID_SHA1);
    const std::string first = text.substr(0, 10), second = text.substr(10);
    const CSSM_DATA pieces[] = {dataOf(first), {0, nullptr}, dataOf(second)};
    CSSM_DATA digest{};
    ASSERT_EQ(CSSM_OK, CSSM_DigestData(context, pieces, 3, &digest));
    EXPECT_EQ("84983e441c3bd26ebaae4aa1f95129e5e54670f1", toHex(session.take(digest)));

    EXPECT_EQ(CSSMERR_CSP_STAGED_OPERATION_NOT_STARTED, CSSM_DigestDataUpdate(context, pieces, 1));
    EXPECT_EQ(CSSMERR_CSP_STAGED_OPERATION_NOT_STARTED, CSSM_DigestDataFinal(context, &digest));
    ASSERT_EQ(CSSM_OK, CSSM_DigestDataInit(context));
    EXPECT_EQ(CSSMERR_CSP_STAGED_OPERATION_IN_PROGRESS, CSSM_DigestData(context, pieces, 1, &digest));
    ASSERT_EQ(CSSM_OK, CSSM_DigestDataUpdate(context, &pieces[0], 1));
    ASSERT_EQ(CSSM_OK, CSSM_DigestDataUpdate(context, &pieces[1], 2));
    uint8 room[20];
    CSSM_DATA own = {sizeof room, room};
    ASSERT_EQ(CSSM_OK, CSSM_DigestDataFinal(context, &own));
    EXPECT_EQ("84983e441c3bd26ebaae4aa1f95129e5e54670f1", toHex({reinterpret_cast<char *>(room), 20}));

    own.Length = 19;
    EXPECT_EQ(CSSMERR_CSP_OUTPUT_LENGTH_ERROR, CSSM_DigestData(context, pieces, 1, &own));
    const CSSM_DATA nowhere = {3, nullptr};
    EXPECT_EQ(CSSMERR_CSP_INVALID_INPUT_VECTOR, CSSM_DigestData(context, &nowhere, 1, &digest));
    EXPECT_EQ(CSSMERR_CSP_INVALID_DATA_COUNT, CSSM_DigestData(context, pieces, 0, &digest));
    EXPECT_EQ(CSSMERR_CSP_INVALID_INPUT_POINTER, CSSM_DigestData(context, nullptr, 1, &digest));
    EXPECT_EQ(CSSMERR_CSP_INVALID_OUTPUT_POINTER, CSSM_DigestData(context, pieces, 1, nullptr));
}

// However the message is cut, and whoever owns the output, the bytes are those of the message in one go.
TEST_F(CryptService, CiphersInPieces)
{
    RandomBytes random(7);
    const struct {
        CSSM_ALGORITHMS algorithm;
        size_t key;
        CSSM_ENCRYPT_MODE mode;
        CSSM_PADDING padding;
    } cases[] = {
        {CSSM_ALGID_AES, 16, CSSM_ALGMODE_CBCPadIV8, CSSM_PADDING_PKCS7},
        {CSSM_ALGID_RC5, 16, CSSM_ALGMODE_CBCPadIV8, CSSM_PADDING_PKCS5},
        {CSSM_ALGID_RC5, 0, CSSM_ALGMODE_ECBPad, CSSM_PADDING_PKCS5},
        {CSSM_ALGID_DES, 8, CSSM_ALGMODE_ECBPad, CSSM_PADDING_PKCS5},
        {CSSM_ALGID_RC4, 5, CSSM_ALGMODE_NONE, CSSM_PADDING_NONE},
    };
    for (const auto &c : cases)
        for (const size_t length : {0u, 1u, 7u, 8u, 9u, 16u, 31u, 32u, 100u}) {
            const CSSM_CC_HANDLE context =
                session.cipherContext(c.algorithm, random(c.key), kVector, c.mode, c.padding);
            const std::string plain = random(length);
            const auto cipher = session.crypt(true, context, plain);
            ASSERT_TRUE(cipher) << c.algorithm << " " << cssmErrorString(session.status);
            for (const size_t piece : {1u, 3u, 8u, 13u, 16u, 40u})
                for (const bool encrypt : {true, false}) {
                    const std::string &input = encrypt ? plain : *cipher;
                    std::string result;
                    ASSERT_EQ(CSSM_OK, (encrypt ? CSSM_EncryptDataInit : CSSM_DecryptDataInit)(context));
                    for (size_t offset = 0; offset < input.size(); offset += piece) {
                        const std::string part = input.substr(offset, piece);
                        const CSSM_DATA data = dataOf(part);
                        uint8 room[64];
                        CSSM_DATA out = offset % 2 ? CSSM_DATA{sizeof room, room} : CSSM_DATA{};
                        CSSM_SIZE done = 0;
                        ASSERT_EQ(CSSM_OK, (encrypt ? CSSM_EncryptDataUpdate : CSSM_DecryptDataUpdate)(
                                               context, &data, 1, &out, 1, &done));
                        result += offset % 2 ? std::string(reinterpret_cast<char *>(room), done)
                                             : session.take(out).substr(0, done);
                    }
                    CSSM_DATA rest{};
                    ASSERT_EQ(CSSM_OK,
                              (encrypt ? CSSM_EncryptDataFinal : CSSM_DecryptDataFinal)(context, &rest));
                    result += session.take(rest);
                    ASSERT_EQ(toHex(encrypt ? *cipher : plain), toHex(result))
                        << c.algorithm << " " << length << " " << piece;
                }
            CSSM_DeleteContext(context);
        }
}

TEST_F(CryptService, CallersBuffers)
{
    const CSSM_CC_HANDLE context = aes();
    const std::string plain(40, 'p');
    const std::string cipher = session.crypt(true, context, plain).value();
    ASSERT_EQ(48u, cipher.size());
    for (const size_t room : {48u, 47u, 32u, 31u, 0u}) {
        std::string buffer(room + 1, '#');
        CSSM_DATA out = {room, reinterpret_cast<uint8 *>(buffer.data())}, rest{};
        const CSSM_DATA input = dataOf(plain);
        CSSM_SIZE done = 0;
        const CSSM_RETURN status = CSSM_EncryptData(context, &input, 1, &out, 1, &done, &rest);
        EXPECT_EQ('#', buffer[room]);
        if (room >= 32) {  // the padded last block may go elsewhere
            ASSERT_EQ(CSSM_OK, status) << room;
            EXPECT_EQ(toHex(cipher), toHex(buffer.substr(0, done) + session.take(rest))) << room;
        } else {
            EXPECT_EQ(CSSMERR_CSP_OUTPUT_LENGTH_ERROR, status) << room;
        }
    }
    // In place, which decrypting fits even without the spare block.
    std::string place = cipher;
    CSSM_DATA both = dataOf(place), rest{};
    const CSSM_DATA input = both;
    CSSM_SIZE done = 0;
    ASSERT_EQ(CSSM_OK, CSSM_DecryptData(context, &input, 1, &both, 1, &done, &rest));
    EXPECT_EQ(plain, place.substr(0, done) + session.take(rest));

    CSSM_DATA two[2] = {};
    EXPECT_EQ(CSSMERR_CSP_VECTOR_OF_BUFS_UNSUPPORTED,
              CSSM_DecryptData(context, &input, 1, two, 2, &done, &rest));
}

TEST_F(CryptService, WrongCipherInputs)
{
    const CSSM_CC_HANDLE padded = aes(), whole = aes(CSSM_ALGMODE_CBC_IV8, CSSM_PADDING_NONE);
    const std::string cipher = session.crypt(true, padded, "some text").value();
    std::string damaged = cipher;
    damaged.back() = static_cast<char>(damaged.back() ^ 1);
    const struct {
        CSSM_CC_HANDLE context;
        bool encrypt;
        std::string input;
        CSSM_RETURN status;
    } cases[] = {
        {padded, false, damaged, CSSMERR_CSP_INVALID_DATA},
        {padded, false, cipher.substr(1), CSSMERR_CSP_INPUT_LENGTH_ERROR},
        {padded, false, "", CSSMERR_CSP_INPUT_LENGTH_ERROR},
        {whole, true, "fifteen bytes..", CSSMERR_CSP_INPUT_LENGTH_ERROR},
        {whole, false, "fifteen bytes..", CSSMERR_CSP_INPUT_LENGTH_ERROR},
        {whole, true, "", CSSM_OK},
    };
    for (const auto &c : cases) {
        session.crypt(c.encrypt, c.context, c.input);
        EXPECT_EQ(c.status, session.status) << c.input;
    }
    // A failing step ends the staged operation.
    CSSM_DATA rest{};
    ASSERT_EQ(CSSM_OK, CSSM_DecryptDataInit(padded));
    EXPECT_EQ(CSSMERR_CSP_STAGED_OPERATION_NOT_STARTED, CSSM_EncryptDataFinal(padded, &rest));
    EXPECT_EQ(CSSMERR_CSP_INPUT_LENGTH_ERROR, CSSM_DecryptDataFinal(padded, &rest));
    EXPECT_EQ(CSSMERR_CSP_STAGED_OPERATION_NOT_STARTED, CSSM_DecryptDataFinal(padded, &rest));
}

TEST_F(CryptService, WrongAttributes)
{
    const struct {
        CSSM_ALGORITHMS algorithm;
        size_t key, vector;
        CSSM_ENCRYPT_MODE mode;
        CSSM_PADDING padding;
        CSSM_RETURN status;
    } cases[] = {
        {CSSM_ALGID_AES, 15, 16, CSSM_ALGMODE_CBCPadIV8, CSSM_PADDING_PKCS7,
         CSSMERR_CSP_UNSUPPORTED_KEY_SIZE},
        {CSSM_ALGID_AES, 40, 16, CSSM_ALGMODE_CBCPadIV8, CSSM_PADDING_PKCS7,
         CSSMERR_CSP_UNSUPPORTED_KEY_SIZE},
        {CSSM_ALGID_DES, 7, 8, CSSM_ALGMODE_CBCPadIV8, CSSM_PADDING_PKCS5, CSSMERR_CSP_UNSUPPORTED_KEY_SIZE},
        {CSSM_ALGID_3DES_3KEY, 16, 8, CSSM_ALGMODE_CBCPadIV8, CSSM_PADDING_PKCS5,
         CSSMERR_CSP_UNSUPPORTED_KEY_SIZE},
        {CSSM_ALGID_RC2, 129, 8, CSSM_ALGMODE_CBCPadIV8, CSSM_PADDING_PKCS5,
         CSSMERR_CSP_UNSUPPORTED_KEY_SIZE},
        {CSSM_ALGID_RC5, 256, 8, CSSM_ALGMODE_CBCPadIV8, CSSM_PADDING_PKCS5,
         CSSMERR_CSP_UNSUPPORTED_KEY_SIZE},
        {CSSM_ALGID_RC4, 0, 0, CSSM_ALGMODE_NONE, CSSM_PADDING_NONE, CSSMERR_CSP_UNSUPPORTED_KEY_SIZE},
        {CSSM_ALGID_AES, 16, 15, CSSM_ALGMODE_CBCPadIV8, CSSM_PADDING_PKCS7,
         CSSMERR_CSP_INVALID_ATTR_INIT_VECTOR},
        {CSSM_ALGID_AES, 16, 0, CSSM_ALGMODE_CBCPadIV8, CSSM_PADDING_PKCS7,
         CSSMERR_CSP_MISSING_ATTR_INIT_VECTOR},
        {CSSM_ALGID_AES, 16, 16, CSSM_ALGMODE_CBCPadIV8, CSSM_PADDING_NONE, CSSMERR_CSP_INVALID_ATTR_PADDING},
        {CSSM_ALGID_AES, 16, 16, CSSM_ALGMODE_ECB, CSSM_PADDING_PKCS7, CSSMERR_CSP_INVALID_ATTR_PADDING},
        {CSSM_ALGID_AES, 16, 16, CSSM_ALGMODE_NONE, CSSM_PADDING_NONE, CSSMERR_CSP_INVALID_ATTR_MODE},
        {CSSM_ALGID_RC4, 16, 0, CSSM_ALGMODE_ECB, CSSM_PADDING_NONE, CSSMERR_CSP_INVALID_ATTR_MODE},
    };
    for (const auto &c : cases) {
        const CSSM_CC_HANDLE context = session.cipherContext(c.algorithm, std::string(c.key, 'k'),
                                                             std::string(c.vector, 'v'), c.mode, c.padding);
        ASSERT_EQ(CSSM_OK, session.status);
        session.crypt(true, context, "text");
        EXPECT_EQ(c.status, session.status) << c.algorithm << " " << c.key;
    }
    session.cipherContext(CSSM_ALGID_ASC, "k", "", CSSM_ALGMODE_NONE, CSSM_PADDING_NONE);
    EXPECT_EQ(CSSMERR_CSP_INVALID_ALGORITHM, session.status);

    // Headers that don't go with the work.
    const std::string bytes(16, 'k');
    const auto statusOf = [&](auto change) {
        CSSM_KEY key = keyOf(CSSM_ALGID_AES, bytes);
        change(key.KeyHeader);
        CSSM_CONTEXT_ATTRIBUTE attribute{CSSM_ATTRIBUTE_KEY, sizeof key, {}};
        attribute.Attribute.Key = &key;
        const CSSM_CC_HANDLE context = aes();
        EXPECT_EQ(CSSM_OK, CSSM_UpdateContextAttributes(context, 1, &attribute));
        session.crypt(true, context, "text");
        return session.status;
    };
    EXPECT_EQ(CSSM_OK, statusOf([](CSSM_KEYHEADER &) {}));
    EXPECT_EQ(CSSMERR_CSP_ALGID_MISMATCH,
              statusOf([](CSSM_KEYHEADER &h) { h.AlgorithmId = CSSM_ALGID_DES; }));
    EXPECT_EQ(CSSMERR_CSP_INVALID_KEY_CLASS,
              statusOf([](CSSM_KEYHEADER &h) { h.KeyClass = CSSM_KEYCLASS_PUBLIC_KEY; }));
    EXPECT_EQ(CSSMERR_CSP_KEY_USAGE_INCORRECT,
              statusOf([](CSSM_KEYHEADER &h) { h.KeyUsage = CSSM_KEYUSE_DECRYPT; }));
    EXPECT_EQ(CSSMERR_CSP_KEY_BLOB_TYPE_INCORRECT,
              statusOf([](CSSM_KEYHEADER &h) { h.BlobType = CSSM_KEYBLOB_WRAPPED; }));

    // All attributes or none.
    CSSM_CONTEXT_ATTRIBUTE attributes[2] = {{CSSM_ATTRIBUTE_MODE, 4, {CSSM_ALGMODE_ECB}},
                                            {CSSM_ATTRIBUTE_SALT, 4, {0}}};
    const CSSM_CC_HANDLE context = aes();
    EXPECT_EQ(CSSMERR_CSSM_INVALID_ATTRIBUTE, CSSM_UpdateContextAttributes(context, 2, attributes));
    EXPECT_TRUE(session.crypt(true, context, "text"));
}

TEST_F(CryptService, DerivedKeys)
{
    const auto statusOf = [&](CSSM_ALGORITHMS type, uint32 bits, uint32 iterations) {
        session.deriveKey("password", "salt", iterations, type, bits);
        return session.status;
    };
    EXPECT_EQ(CSSM_OK, statusOf(CSSM_ALGID_DES, 64, 1));
    EXPECT_EQ(CSSMERR_CSP_UNSUPPORTED_KEY_SIZE, statusOf(CSSM_ALGID_DES, 256, 1));
    EXPECT_EQ(CSSMERR_CSP_UNSUPPORTED_KEY_SIZE, statusOf(CSSM_ALGID_RSA, ~7u, 1));
    EXPECT_EQ(CSSMERR_CSP_INVALID_ATTR_KEY_LENGTH, statusOf(CSSM_ALGID_AES, 0, 1));
    EXPECT_EQ(CSSMERR_CSP_INVALID_ATTR_KEY_LENGTH, statusOf(CSSM_ALGID_AES, 129, 1));
    EXPECT_EQ(CSSMERR_CSP_INVALID_ATTR_ITERATION_COUNT, statusOf(CSSM_ALGID_AES, 128, 0));
}

// Keys are wiped before they go back to the caller's memory.
TEST_F(CryptService, FreedKeysAreWiped)
{
    static std::string seen;
    session.memory.functions.free_func = [](void *memory, void *) {
        seen = std::string(static_cast<char *>(memory), 16);
        std::free(memory);
    };
    const CSSM_VERSION version = {2, 0};
    CSSM_CSP_HANDLE csp = 0;
    ASSERT_EQ(CSSM_OK, CSSM_ModuleAttach(&gGuidAppleCSP, &version, &session.memory.functions, 0,
                                         CSSM_SERVICE_CSP, 0, 0, nullptr, 0, nullptr, &csp));
    CSSM_KEY key = keyOf(CSSM_ALGID_AES, {});
    key.KeyData = {16, static_cast<uint8 *>(std::malloc(16))};
    std::fill(key.KeyData.Data, key.KeyData.Data + 16, 's');
    EXPECT_EQ(CSSM_OK, CSSM_FreeKey(csp, nullptr, &key, CSSM_FALSE));
    EXPECT_EQ(std::string(16, '\0'), seen);
    EXPECT_EQ(CSSM_OK, CSSM_FreeKey(csp, nullptr, &key, CSSM_FALSE));  // nothing left to free
    EXPECT_EQ(CSSM_OK, CSSM_ModuleDetach(csp));
    EXPECT_EQ(CSSMERR_CSSM_INVALID_ADDIN_HANDLE, CSSM_FreeKey(csp, nullptr, &key, CSSM_FALSE));
}

class RSAKeys : public CryptService {
protected:
    RSAKeys()
    {
        const auto run = [](const std::vector<std::string> &words) {
            EXPECT_EQ(0, runProgram(words).status) << words[1];
        };
        run({"openssl", "genrsa", "-out", folder / "pem", "1024"});
        run({"openssl", "rsa", "-in", folder / "pem", "-traditional", "-outform", "DER", "-out",
             folder / "pkcs1"});
        run({"openssl", "pkcs8", "-topk8", "-nocrypt", "-in", folder / "pem", "-outform", "DER", "-out",
             folder / "pkcs8"});
        run({"openssl", "rsa", "-in", folder / "pem", "-pubout", "-outform", "DER", "-out", folder / "spki"});
        run({"openssl", "rsa", "-in", folder / "pem", "-RSAPublicKey_out", "-outform", "DER", "-out",
             folder / "public1"});
    }

    // The result, or none with session.status.
    std::optional<std::string> rsa(bool encrypt, const std::string &der, CSSM_KEYBLOB_FORMAT format,
                                   const std::string &input)
    {
        const CSSM_KEY key = keyOf(CSSM_ALGID_RSA, der,
                                   encrypt ? CSSM_KEYCLASS_PUBLIC_KEY : CSSM_KEYCLASS_PRIVATE_KEY, format);
        CSSM_CC_HANDLE context = 0;
        session.status = CSSM_CSP_CreateAsymmetricContext(session.csp, CSSM_ALGID_RSA, nullptr, &key,
                                                          CSSM_PADDING_PKCS1, &context);
        auto result = session.status ? std::nullopt : session.crypt(encrypt, context, input);
        CSSM_DeleteContext(context);
        return result;
    }

    TemporaryFolder folder;
};

TEST_F(RSAKeys, EitherFormAndOpenSSL)
{
    const struct {
        const char *file;
        CSSM_KEYBLOB_FORMAT format;
    } publicKeys[] = {{"public1", CSSM_KEYBLOB_RAW_FORMAT_PKCS1}, {"spki", CSSM_KEYBLOB_RAW_FORMAT_SPKI}},
      privateKeys[] = {{"pkcs1", CSSM_KEYBLOB_RAW_FORMAT_PKCS1}, {"pkcs8", CSSM_KEYBLOB_RAW_FORMAT_PKCS8}};
    for (const std::string &text : {std::string(), std::string("secret"), std::string(117, 'x')})
        for (const auto &publicKey : publicKeys) {
            const auto cipher = rsa(true, folder.read(publicKey.file), publicKey.format, text);
            ASSERT_TRUE(cipher) << cssmErrorString(session.status);
            for (const auto &privateKey : privateKeys)
                EXPECT_EQ(text, rsa(false, folder.read(privateKey.file), privateKey.format, *cipher));
            const ProgramResult plain =
                runProgram({"openssl", "pkeyutl", "-decrypt", "-inkey", folder / "pem"}, *cipher);
            EXPECT_EQ(text, plain.out);
        }
    const ProgramResult theirs =
        runProgram({"openssl", "pkeyutl", "-encrypt", "-inkey", folder / "pem"}, "from them");
    EXPECT_EQ("from them", rsa(false, folder.read("pkcs1"), CSSM_KEYBLOB_RAW_FORMAT_PKCS1, theirs.out));
}

TEST_F(RSAKeys, Failures)
{
    const std::string publicKey = folder.read("public1"), privateKey = folder.read("pkcs1");
    const auto statusOf = [&](bool encrypt, const std::string &der, CSSM_KEYBLOB_FORMAT format,
                              const std::string &input) {
        EXPECT_FALSE(rsa(encrypt, der, format, input));
        return session.status;
    };
    const CSSM_KEYBLOB_FORMAT pkcs1 = CSSM_KEYBLOB_RAW_FORMAT_PKCS1;
    EXPECT_EQ(CSSMERR_CSP_INPUT_LENGTH_ERROR, statusOf(true, publicKey, pkcs1, std::string(118, 'x')));
    EXPECT_EQ(CSSMERR_CSP_INPUT_LENGTH_ERROR, statusOf(false, privateKey, pkcs1, std::string(127, 'x')));
    EXPECT_EQ(CSSMERR_CSP_INPUT_LENGTH_ERROR, statusOf(false, privateKey, pkcs1, std::string(129, 'x')));
    EXPECT_EQ(CSSMERR_CSP_UNSUPPORTED_KEY_FORMAT,
              statusOf(true, publicKey, CSSM_KEYBLOB_RAW_FORMAT_PKCS8, "x"));
    EXPECT_EQ(CSSMERR_CSP_INVALID_KEY, statusOf(true, privateKey.substr(0, 50), pkcs1, "x"));
    EXPECT_EQ(CSSMERR_CSP_INVALID_KEY, statusOf(true, publicKey + "x", pkcs1, "x"));
    EXPECT_EQ(CSSMERR_CSP_INVALID_KEY, statusOf(false, publicKey, pkcs1, "x"));
    EXPECT_EQ(CSSMERR_CSP_INVALID_KEY, statusOf(true, "", pkcs1, "x"));
}

// Contexts of one attachment at work in several threads; a context of one thread stays its own.
TEST_F(CryptService, Threads)
{
    std::vector<std::thread> threads;
    std::atomic<int> wrong = 0;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&, t] {
            const std::string text(static_cast<size_t>(t) * 100, 'x');
            const CSSM_DATA input = dataOf(text);
            uint8 first[16] = {}, digest[16];
            for (int i = 0; i < 2000; ++i) {
                CSSM_CC_HANDLE context = 0;
                CSSM_DATA out = {sizeof digest, i == 0 ? first : digest};
                wrong += CSSM_CSP_CreateDigestContext(session.csp, CSSM_ALGID_MD5, &context) != CSSM_OK ||
                         CSSM_DigestData(context, &input, 1, &out) != CSSM_OK ||
                         CSSM_DeleteContext(context) != CSSM_OK ||
                         (i > 0 && !std::equal(first, first + 16, digest));
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(0, wrong);
}

TEST(CryptMessages, NameAndReason)
{
    EXPECT_STREQ("CSSMERR_CSP_INTERNAL_ERROR: an internal error of the provider",
                 cssmErrorString(static_cast<CSSM_RETURN>(0x80010801)));
    EXPECT_STREQ("unknown status", cssmErrorString(12345));
    testing::internal::CaptureStderr();
    cssmPerror(nullptr, CSSM_OK);
    EXPECT_EQ(": CSSM_OK: no error [0x00000000]\n", testing::internal::GetCapturedStderr());
}

}  // namespace

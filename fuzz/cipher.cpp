// Cipher text, keys, vectors and cuts from outside, for every algorithm, mode and padding. What one direction
// makes of a message the other undoes; in pieces it is the same as in one go; RSA keys may be anything.
//
// Input: algorithm, mode, padding, key length, vector length, piece; then key, vector, message.
#include <Security/cssm.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>

namespace {

constexpr size_t kHeader = 6;
constexpr CSSM_ALGORITHMS kAlgorithms[] = {CSSM_ALGID_DES, CSSM_ALGID_3DES_3KEY, CSSM_ALGID_RC2,
                                           CSSM_ALGID_RC5, CSSM_ALGID_RC4,       CSSM_ALGID_AES,
                                           CSSM_ALGID_RSA, CSSM_ALGID_ASC};
constexpr CSSM_ENCRYPT_MODE kModes[] = {CSSM_ALGMODE_CBCPadIV8, CSSM_ALGMODE_CBC_IV8, CSSM_ALGMODE_ECBPad,
                                        CSSM_ALGMODE_ECB, CSSM_ALGMODE_NONE};
constexpr CSSM_PADDING kPaddings[] = {CSSM_PADDING_PKCS7, CSSM_PADDING_PKCS5, CSSM_PADDING_NONE,
                                      CSSM_PADDING_PKCS1};

CSSM_CSP_HANDLE attach()
{
    static const CSSM_API_MEMORY_FUNCS memory = {
        [](CSSM_SIZE size, void *) { return std::malloc(size); },
        [](void *block, void *) { std::free(block); },
        [](void *block, CSSM_SIZE size, void *) { return std::realloc(block, size); },
        [](uint32 count, CSSM_SIZE size, void *) { return std::calloc(count, size); }, nullptr};
    const CSSM_VERSION version = {2, 0};
    CSSM_CSP_HANDLE csp = 0;
    CSSM_Init(&version, 0, &gGuidAppleCSP, 0, nullptr, nullptr);
    CSSM_ModuleLoad(&gGuidAppleCSP, 0, nullptr, nullptr);
    if (CSSM_ModuleAttach(&gGuidAppleCSP, &version, &memory, 0, CSSM_SERVICE_CSP, 0, 0, nullptr, 0, nullptr,
                          &csp))
        std::abort();
    return csp;
}

CSSM_DATA dataOf(const std::string &bytes)
{
    return {bytes.size(), reinterpret_cast<uint8 *>(const_cast<char *>(bytes.data()))};
}

void take(CSSM_DATA &data, std::string &result)
{
    result.append(reinterpret_cast<char *>(data.Data), data.Length);
    std::free(data.Data);
    data = {};
}

std::optional<std::string> whole(CSSM_CC_HANDLE context, bool encrypt, const std::string &input)
{
    const CSSM_DATA data = dataOf(input);
    CSSM_DATA output{}, rest{};
    CSSM_SIZE done = 0;
    if ((encrypt ? CSSM_EncryptData : CSSM_DecryptData)(context, &data, 1, &output, 1, &done, &rest))
        return std::nullopt;
    std::string result;
    take(output, result);
    take(rest, result);
    return result;
}

std::optional<std::string> pieces(CSSM_CC_HANDLE context, bool encrypt, const std::string &input,
                                  size_t piece)
{
    if ((encrypt ? CSSM_EncryptDataInit : CSSM_DecryptDataInit)(context))
        return std::nullopt;
    std::string result;
    for (size_t offset = 0; offset < input.size(); offset += piece) {
        const std::string part = input.substr(offset, piece);
        const CSSM_DATA data = dataOf(part);
        CSSM_DATA output{};
        CSSM_SIZE done = 0;
        if ((encrypt ? CSSM_EncryptDataUpdate : CSSM_DecryptDataUpdate)(context, &data, 1, &output, 1, &done))
            return std::nullopt;
        take(output, result);
    }
    CSSM_DATA rest{};
    if ((encrypt ? CSSM_EncryptDataFinal : CSSM_DecryptDataFinal)(context, &rest))
        return std::nullopt;
    take(rest, result);
    return result;
}

CSSM_KEY keyOf(CSSM_ALGORITHMS algorithm, const std::string &bytes, CSSM_KEYCLASS keyClass)
{
    CSSM_KEY key{};
    key.KeyHeader.AlgorithmId = algorithm;
    key.KeyHeader.KeyClass = keyClass;
    key.KeyHeader.KeyUsage = CSSM_KEYUSE_ANY;
    key.KeyData = dataOf(bytes);
    return key;
}

void expect(bool condition)
{
    if (!condition)
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const CSSM_CSP_HANDLE csp = attach();
    if (size < kHeader)
        return 0;
    const CSSM_ALGORITHMS algorithm = kAlgorithms[data[0] % std::size(kAlgorithms)];
    const CSSM_ENCRYPT_MODE mode = kModes[data[1] % std::size(kModes)];
    const CSSM_PADDING padding = kPaddings[data[2] % std::size(kPaddings)];
    const size_t piece = 1 + data[5];
    const std::string bytes(reinterpret_cast<const char *>(data) + kHeader, size - kHeader);
    const std::string keyBytes = bytes.substr(0, data[3]), afterKey = bytes.substr(keyBytes.size());
    const std::string vector = afterKey.substr(0, data[4]), message = afterKey.substr(vector.size());

    for (const bool encrypt : {true, false}) {
        const bool rsa = algorithm == CSSM_ALGID_RSA;
        const CSSM_KEY key = keyOf(algorithm, rsa ? bytes : keyBytes,
                                   !rsa      ? CSSM_KEYCLASS_SESSION_KEY
                                   : encrypt ? CSSM_KEYCLASS_PUBLIC_KEY
                                             : CSSM_KEYCLASS_PRIVATE_KEY);
        const CSSM_DATA initial = dataOf(vector);
        CSSM_CC_HANDLE context = 0;
        const CSSM_RETURN status =
            rsa ? CSSM_CSP_CreateAsymmetricContext(csp, algorithm, nullptr, &key, CSSM_PADDING_PKCS1,
                                                   &context)
                : CSSM_CSP_CreateSymmetricContext(csp, algorithm, mode, nullptr, &key, &initial, padding,
                                                  nullptr, &context);
        if (status)
            continue;
        const auto result = whole(context, encrypt, message);
        if (!rsa) {
            expect(result == pieces(context, encrypt, message, piece));
            if (result)
                expect(!encrypt || whole(context, false, *result) == message);
        }
        expect(CSSM_DeleteContext(context) == CSSM_OK);
        expect(CSSM_DeleteContext(context) != CSSM_OK);
    }
    return 0;
}

#include "Crypt.h"

#include <stdexcept>

CryptSession::CryptSession()
{
    const CSSM_VERSION version = {2, 0};
    const CSSM_GUID caller = {1, 2, 3, {4}};
    const bool attached =
        CSSM_Init(&version, CSSM_PRIVILEGE_SCOPE_NONE, &caller, CSSM_KEY_HIERARCHY_NONE, nullptr, nullptr) ==
            CSSM_OK &&
        CSSM_ModuleLoad(&gGuidAppleCSP, CSSM_KEY_HIERARCHY_NONE, nullptr, nullptr) == CSSM_OK &&
        CSSM_ModuleAttach(&gGuidAppleCSP, &version, &memory.functions, 0, CSSM_SERVICE_CSP, 0, 0, nullptr, 0,
                          nullptr, &csp) == CSSM_OK;
    if (!attached)
        throw std::runtime_error("the crypto service can't be attached");
}

CryptSession::~CryptSession()
{
    CSSM_ModuleDetach(csp);
    CSSM_ModuleUnload(&gGuidAppleCSP, nullptr, nullptr);
    CSSM_Terminate();
}

std::string CryptSession::take(CSSM_DATA &data)
{
    std::string bytes(reinterpret_cast<char *>(data.Data), data.Length);
    if (data.Data)
        memory.functions.free_func(data.Data, &memory);
    data = {};
    return bytes;
}

CSSM_CC_HANDLE CryptSession::digestContext(CSSM_ALGORITHMS algorithm)
{
    CSSM_CC_HANDLE context = 0;
    status = CSSM_CSP_CreateDigestContext(csp, algorithm, &context);
    return context;
}

CSSM_CC_HANDLE CryptSession::cipherContext(CSSM_ALGORITHMS algorithm, const std::string &key,
                                           const std::string &vector, CSSM_ENCRYPT_MODE mode,
                                           CSSM_PADDING padding)
{
    const CSSM_KEY record = keyOf(algorithm, key);
    const CSSM_DATA initial = dataOf(vector);
    CSSM_CC_HANDLE context = 0;
    status = CSSM_CSP_CreateSymmetricContext(csp, algorithm, mode, nullptr, &record,
                                             vector.empty() ? nullptr : &initial, padding, nullptr, &context);
    return context;
}

std::optional<std::string> CryptSession::digest(CSSM_ALGORITHMS algorithm, const std::string &text)
{
    const CSSM_CC_HANDLE context = digestContext(algorithm);
    if (status)
        return std::nullopt;
    const CSSM_DATA input = dataOf(text);
    CSSM_DATA result{};
    status = CSSM_DigestData(context, &input, 1, &result);
    CSSM_DeleteContext(context);
    return status ? std::nullopt : std::optional(take(result));
}

std::optional<std::string> CryptSession::crypt(bool encrypt, CSSM_CC_HANDLE context, const std::string &input)
{
    const CSSM_DATA data = dataOf(input);
    CSSM_DATA output{}, rest{};
    CSSM_SIZE length = 0;
    status = (encrypt ? CSSM_EncryptData : CSSM_DecryptData)(context, &data, 1, &output, 1, &length, &rest);
    if (status)
        return std::nullopt;
    const std::string whole = take(output);
    return whole.substr(0, length) + take(rest);
}

std::optional<std::string> CryptSession::deriveKey(const std::string &password, const std::string &salt,
                                                   uint32 iterations, CSSM_ALGORITHMS type, uint32 bits)
{
    const CSSM_DATA saltData = dataOf(salt);
    CSSM_CC_HANDLE context = 0;
    status = CSSM_CSP_CreateDeriveKeyContext(csp, CSSM_ALGID_PKCS5_PBKDF2, type, bits, nullptr, nullptr,
                                             iterations, &saltData, nullptr, &context);
    if (status)
        return std::nullopt;
    CSSM_PKCS5_PBKDF2_PARAMS parameters = {dataOf(password), CSSM_PKCS5_PBKDF2_PRF_HMAC_SHA1};
    CSSM_DATA parameterData = {sizeof parameters, reinterpret_cast<uint8 *>(&parameters)};
    CSSM_KEY key{};
    status = CSSM_DeriveKey(context, &parameterData, CSSM_KEYUSE_ANY, CSSM_KEYATTR_RETURN_DATA, nullptr,
                            nullptr, &key);
    CSSM_DeleteContext(context);
    if (status)
        return std::nullopt;
    std::string bytes(reinterpret_cast<char *>(key.KeyData.Data), key.KeyData.Length);
    status = CSSM_FreeKey(csp, nullptr, &key, CSSM_FALSE);
    return bytes;
}

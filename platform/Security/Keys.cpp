/// Deriving keys from passwords, checking and freeing keys.
#include <cstring>

#include <openssl/core_names.h>
#include <openssl/params.h>

#include "Buffers.h"
#include "Context.h"

using namespace cssm;

namespace {

constexpr size_t kLongestKey = 64 * 1024;  // bytes; for key types that set no limit of their own

/// PBKDF2 with HMAC-SHA1 into `size` bytes at `key`.
bool derive(const CSSM_DATA &passphrase, const SecureBytes &salt, unsigned iterations, uint8 *key,
            size_t size)
{
    QuietErrors quiet;
    EVP_KDF *function = library::pbkdf2();
    const OwnedKDFContext context(function ? EVP_KDF_CTX_new(function) : nullptr);
    if (!context)
        return false;
    char digest[] = "SHA1";
    int anyLengths = 1;  // no lower bounds on salt and iterations
    const OSSL_PARAM params[] = {
        OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_PASSWORD, passphrase.Data, passphrase.Length),
        OSSL_PARAM_construct_octet_string(OSSL_KDF_PARAM_SALT, const_cast<uint8 *>(salt.data()), salt.size()),
        OSSL_PARAM_construct_uint(OSSL_KDF_PARAM_ITER, &iterations),
        OSSL_PARAM_construct_utf8_string(OSSL_KDF_PARAM_DIGEST, digest, 0),
        OSSL_PARAM_construct_int(OSSL_KDF_PARAM_PKCS5, &anyLengths),
        OSSL_PARAM_construct_end()};
    return EVP_KDF_derive(context.get(), key, size, params) > 0;
}

CSSM_RETURN checkAttributes(const Attributes &attributes)
{
    if (!attributes.salt)
        return CSSMERR_CSP_MISSING_ATTR_SALT;
    if (attributes.iterations == 0)
        return CSSMERR_CSP_INVALID_ATTR_ITERATION_COUNT;
    if (attributes.keyBits == 0 || attributes.keyBits % 8 != 0)
        return CSSMERR_CSP_INVALID_ATTR_KEY_LENGTH;
    const size_t size = attributes.keyBits / 8;
    return size <= kLongestKey && takesKeyOf(attributes.keyType, size) ? CSSM_OK
                                                                       : CSSMERR_CSP_UNSUPPORTED_KEY_SIZE;
}

/// The passphrase in the parameters, or the reason why there is none.
CSSM_RETURN readParameters(const CSSM_DATA *parameters, CSSM_DATA &passphrase)
{
    if (!parameters || !parameters->Data)
        return CSSMERR_CSP_INVALID_INPUT_POINTER;
    if (parameters->Length != sizeof(CSSM_PKCS5_PBKDF2_PARAMS))
        return CSSMERR_CSP_INVALID_ATTR_ALG_PARAMS;
    CSSM_PKCS5_PBKDF2_PARAMS read;
    std::memcpy(&read, parameters->Data, sizeof read);
    if (read.PseudoRandomFunction != CSSM_PKCS5_PBKDF2_PRF_HMAC_SHA1)
        return CSSMERR_CSP_INVALID_ATTR_ALG_PARAMS;
    passphrase = read.Passphrase;
    return passphrase.Data || passphrase.Length == 0 ? CSSM_OK : CSSMERR_CSP_INVALID_INPUT_POINTER;
}

CSSM_KEYHEADER sessionKeyHeader(const Attributes &attributes, CSSM_KEYUSE usage, CSSM_KEYATTR_FLAGS flags)
{
    CSSM_KEYHEADER header{};
    header.HeaderVersion = CSSM_KEYHEADER_VERSION;
    header.CspId = gGuidAppleCSP;
    header.BlobType = CSSM_KEYBLOB_RAW;
    header.Format = CSSM_KEYBLOB_RAW_FORMAT_OCTET_STRING;
    header.AlgorithmId = attributes.keyType;
    header.KeyClass = CSSM_KEYCLASS_SESSION_KEY;
    header.LogicalKeySizeInBits = attributes.keyBits;
    header.KeyAttr = flags;
    header.KeyUsage = usage;
    return header;
}

}  // namespace

CSSM_RETURN cssm::checkKeyHeader(const std::optional<KeyCopy> &key, CSSM_ALGORITHMS algorithm,
                                 CSSM_KEYCLASS keyClass, bool encrypting)
{
    if (!key)
        return CSSMERR_CSP_MISSING_ATTR_KEY;
    const CSSM_KEYHEADER &header = key->header;
    if (header.BlobType != CSSM_KEYBLOB_RAW)
        return CSSMERR_CSP_KEY_BLOB_TYPE_INCORRECT;
    if (header.KeyClass != keyClass)
        return CSSMERR_CSP_INVALID_KEY_CLASS;
    if (header.AlgorithmId != algorithm)
        return CSSMERR_CSP_ALGID_MISMATCH;
    const CSSM_KEYUSE wanted = encrypting ? CSSM_KEYUSE_ENCRYPT : CSSM_KEYUSE_DECRYPT;
    return header.KeyUsage & (CSSM_KEYUSE_ANY | wanted) ? CSSM_OK : CSSMERR_CSP_KEY_USAGE_INCORRECT;
}

CSSM_RETURN CSSM_DeriveKey(CSSM_CC_HANDLE CCHandle, CSSM_DATA_PTR Param, uint32 KeyUsage, uint32 KeyAttr,
                           const CSSM_DATA *, const CSSM_RESOURCE_CONTROL_CONTEXT *, CSSM_KEY_PTR DerivedKey)
{
    if (!DerivedKey)
        return CSSMERR_CSP_INVALID_KEY_POINTER;
    if (KeyAttr & (CSSM_KEYATTR_PERMANENT | CSSM_KEYATTR_RETURN_REF | CSSM_KEYATTR_RETURN_NONE))
        return CSSMERR_CSP_UNSUPPORTED_KEYATTR_MASK;
    return answering(CSSMERR_CSP_MEMORY_ERROR, [&]() -> CSSM_RETURN {
        const Lease context(CCHandle);
        if (context.status())
            return context.status();
        if (context->kind != Kind::deriveKey)
            return CSSMERR_CSP_INVALID_CONTEXT;
        const Attributes &attributes = *context->attributes;
        if (const CSSM_RETURN status = checkAttributes(attributes))
            return status;
        CSSM_DATA passphrase{};
        if (const CSSM_RETURN status = readParameters(Param, passphrase))
            return status;

        CSSM_DATA key{};
        Output output(key, context->memory);
        const size_t size = attributes.keyBits / 8;
        if (const CSSM_RETURN status = output.reserve(size))
            return status;
        if (!derive(passphrase, *attributes.salt, attributes.iterations, output.bytes(), size))
            return CSSMERR_CSP_FUNCTION_FAILED;
        output.commit(size);
        *DerivedKey = {sessionKeyHeader(attributes, KeyUsage, KeyAttr), key};
        return CSSM_OK;
    });
}

CSSM_RETURN CSSM_FreeKey(CSSM_CSP_HANDLE CSPHandle, const CSSM_ACCESS_CREDENTIALS *, CSSM_KEY_PTR KeyPtr,
                         CSSM_BOOL)
{
    if (!KeyPtr)
        return CSSMERR_CSP_INVALID_KEY_POINTER;
    return answering(CSSMERR_CSP_MEMORY_ERROR, [&]() -> CSSM_RETURN {
        CSSM_API_MEMORY_FUNCS memory{};
        if (const CSSM_RETURN status = Registry::shared().memoryOf(CSPHandle, memory))
            return status;
        CSSM_DATA &data = KeyPtr->KeyData;
        if (data.Data) {
            OPENSSL_cleanse(data.Data, data.Length);
            memory.free_func(data.Data, memory.AllocRef);
        }
        data = {};
        return CSSM_OK;
    });
}

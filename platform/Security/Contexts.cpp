/// Making, changing and deleting contexts (those for digests are made in Digests.cpp).
#include "Context.h"

using namespace cssm;

namespace {

KeyCopy copyKey(const CSSM_KEY &key)
{
    return {key.KeyHeader, secureCopy(key.KeyData.Data, key.KeyData.Length)};
}

bool isReadable(const CSSM_DATA &data) { return data.Data || data.Length == 0; }

/// Sets one attribute, if a context of that kind has a use for it.
CSSM_RETURN apply(Kind kind, const CSSM_CONTEXT_ATTRIBUTE &change, Attributes &attributes)
{
    const bool symmetric = kind == Kind::symmetric;
    const bool cipher = symmetric || kind == Kind::asymmetric;
    const bool derive = kind == Kind::deriveKey;
    const auto &value = change.Attribute;
    const auto setWord = [&](bool takes, auto &field) -> CSSM_RETURN {
        if (!takes)
            return CSSMERR_CSSM_INVALID_ATTRIBUTE;
        field = value.Uint32;
        return CSSM_OK;
    };
    const auto setBytes = [&](bool takes, std::optional<SecureBytes> &field) -> CSSM_RETURN {
        if (!takes)
            return CSSMERR_CSSM_INVALID_ATTRIBUTE;
        if (!value.Data || !isReadable(*value.Data))
            return CSSMERR_CSSM_INVALID_POINTER;
        field = secureCopy(value.Data->Data, value.Data->Length);
        return CSSM_OK;
    };

    switch (change.AttributeType) {
    case CSSM_ATTRIBUTE_KEY:
        if (!cipher)
            return CSSMERR_CSSM_INVALID_ATTRIBUTE;
        if (!value.Key || !isReadable(value.Key->KeyData))
            return CSSMERR_CSSM_INVALID_POINTER;
        attributes.key = copyKey(*value.Key);
        return CSSM_OK;
    case CSSM_ATTRIBUTE_INIT_VECTOR: return setBytes(symmetric, attributes.vector);
    case CSSM_ATTRIBUTE_SALT: return setBytes(derive, attributes.salt);
    case CSSM_ATTRIBUTE_MODE: return setWord(symmetric, attributes.mode);
    case CSSM_ATTRIBUTE_PADDING: return setWord(cipher, attributes.padding);
    case CSSM_ATTRIBUTE_ROUNDS: return setWord(symmetric, attributes.rounds);
    case CSSM_ATTRIBUTE_EFFECTIVE_BITS: return setWord(symmetric, attributes.effectiveBits);
    case CSSM_ATTRIBUTE_KEY_TYPE: return setWord(derive, attributes.keyType);
    case CSSM_ATTRIBUTE_KEY_LENGTH: return setWord(derive, attributes.keyBits);
    case CSSM_ATTRIBUTE_ITERATION_COUNT: return setWord(derive, attributes.iterations);
    default: return CSSMERR_CSSM_INVALID_ATTRIBUTE;
    }
}

}  // namespace

CSSM_RETURN CSSM_CSP_CreateSymmetricContext(CSSM_CSP_HANDLE CSPHandle, CSSM_ALGORITHMS AlgorithmID,
                                            CSSM_ENCRYPT_MODE Mode, const CSSM_ACCESS_CREDENTIALS *,
                                            const CSSM_KEY *Key, const CSSM_DATA *InitVector,
                                            CSSM_PADDING Padding, void *, CSSM_CC_HANDLE *NewContextHandle)
{
    if (!NewContextHandle)
        return CSSMERR_CSSM_INVALID_POINTER;
    if (Key && !isReadable(Key->KeyData))
        return CSSMERR_CSSM_INVALID_POINTER;
    if (InitVector && !isReadable(*InitVector))
        return CSSMERR_CSSM_INVALID_POINTER;
    return answering(CSSMERR_CSSM_MEMORY_ERROR, [&]() -> CSSM_RETURN {
        if (!isSymmetric(AlgorithmID))
            return CSSMERR_CSP_INVALID_ALGORITHM;
        auto attributes = std::make_unique<Attributes>();
        if (Key)
            attributes->key = copyKey(*Key);
        if (InitVector)
            attributes->vector = secureCopy(InitVector->Data, InitVector->Length);
        attributes->mode = Mode;
        attributes->padding = Padding;
        return Registry::shared().open(CSPHandle, Kind::symmetric, AlgorithmID, std::move(attributes),
                                       *NewContextHandle);
    });
}

CSSM_RETURN CSSM_CSP_CreateAsymmetricContext(CSSM_CSP_HANDLE CSPHandle, CSSM_ALGORITHMS AlgorithmID,
                                             const CSSM_ACCESS_CREDENTIALS *, const CSSM_KEY *Key,
                                             CSSM_PADDING Padding, CSSM_CC_HANDLE *NewContextHandle)
{
    if (!NewContextHandle)
        return CSSMERR_CSSM_INVALID_POINTER;
    if (Key && !isReadable(Key->KeyData))
        return CSSMERR_CSSM_INVALID_POINTER;
    return answering(CSSMERR_CSSM_MEMORY_ERROR, [&]() -> CSSM_RETURN {
        if (AlgorithmID != CSSM_ALGID_RSA)
            return CSSMERR_CSP_INVALID_ALGORITHM;
        auto attributes = std::make_unique<Attributes>();
        if (Key)
            attributes->key = copyKey(*Key);
        attributes->padding = Padding;
        return Registry::shared().open(CSPHandle, Kind::asymmetric, AlgorithmID, std::move(attributes),
                                       *NewContextHandle);
    });
}

CSSM_RETURN CSSM_CSP_CreateDeriveKeyContext(CSSM_CSP_HANDLE CSPHandle, CSSM_ALGORITHMS AlgorithmID,
                                            CSSM_KEY_TYPE DeriveKeyType, uint32 DeriveKeyLengthInBits,
                                            const CSSM_ACCESS_CREDENTIALS *, const CSSM_KEY *,
                                            uint32 IterationCount, const CSSM_DATA *Salt,
                                            const CSSM_CRYPTO_DATA *, CSSM_CC_HANDLE *NewContextHandle)
{
    if (!NewContextHandle)
        return CSSMERR_CSSM_INVALID_POINTER;
    if (Salt && !isReadable(*Salt))
        return CSSMERR_CSSM_INVALID_POINTER;
    return answering(CSSMERR_CSSM_MEMORY_ERROR, [&]() -> CSSM_RETURN {
        if (AlgorithmID != CSSM_ALGID_PKCS5_PBKDF2)
            return CSSMERR_CSP_INVALID_ALGORITHM;
        auto attributes = std::make_unique<Attributes>();
        if (Salt)
            attributes->salt = secureCopy(Salt->Data, Salt->Length);
        attributes->keyType = DeriveKeyType;
        attributes->keyBits = DeriveKeyLengthInBits;
        attributes->iterations = IterationCount;
        return Registry::shared().open(CSPHandle, Kind::deriveKey, AlgorithmID, std::move(attributes),
                                       *NewContextHandle);
    });
}

CSSM_RETURN CSSM_UpdateContextAttributes(CSSM_CC_HANDLE CCHandle, uint32 NumberOfAttributes,
                                         const CSSM_CONTEXT_ATTRIBUTE *ContextAttributes)
{
    if (!ContextAttributes && NumberOfAttributes > 0)
        return CSSMERR_CSSM_INVALID_POINTER;
    return answering(CSSMERR_CSSM_MEMORY_ERROR, [&]() -> CSSM_RETURN {
        const Lease context(CCHandle);
        if (context.status())
            return context.status();
        auto changed = context->attributes ? std::make_unique<Attributes>(*context->attributes) : nullptr;
        for (const CSSM_CONTEXT_ATTRIBUTE &change : std::span(ContextAttributes, NumberOfAttributes)) {
            if (!changed)
                return CSSMERR_CSSM_INVALID_ATTRIBUTE;  // a digest has none
            if (const CSSM_RETURN status = apply(context->kind, change, *changed))
                return status;
        }
        context->attributes = std::move(changed);
        return CSSM_OK;
    });
}

CSSM_RETURN CSSM_DeleteContext(CSSM_CC_HANDLE CCHandle)
{
    return answering(CSSMERR_CSSM_MEMORY_ERROR, [&] { return Registry::shared().close(CCHandle); });
}

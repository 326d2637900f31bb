/// Digests, in one go and in stages. The work is OpenSSL's; a context keeps its digest object when it is
/// closed, because making one costs as much as digesting a short text.
#include <cstring>

#include "Buffers.h"
#include "Context.h"

using namespace cssm;

namespace {

struct Algorithm {
    const EVP_MD_CTX *started = nullptr;  // just begun; null: not ours
    size_t size = 0;
};

Algorithm find(CSSM_ALGORITHMS algorithm)
{
    switch (algorithm) {
    case CSSM_ALGID_MD5: return {library::startedMD5(), 16};
    case CSSM_ALGID_SHA1: return {library::startedSHA1(), 20};
    default: return {};
    }
}

CSSM_RETURN begin(Context &context)
{
    if (!context.digest && !(context.digest = EVP_MD_CTX_new()))
        return CSSMERR_CSP_MEMORY_ERROR;
    return EVP_MD_CTX_copy_ex(context.digest, find(context.algorithm).started) ? CSSM_OK
                                                                               : CSSMERR_CSP_INTERNAL_ERROR;
}

CSSM_RETURN feed(Context &context, const CSSM_DATA *buffers, uint32 count)
{
    for (const CSSM_DATA &buffer : std::span(buffers, count))
        if (!EVP_DigestUpdate(context.digest, buffer.Data, buffer.Length))
            return CSSMERR_CSP_INTERNAL_ERROR;
    return CSSM_OK;
}

CSSM_RETURN deliver(Context &context, CSSM_DATA &digest)
{
    Output output(digest, context.memory);
    const size_t size = find(context.algorithm).size;
    if (const CSSM_RETURN status = output.reserve(size))
        return status;
    if (!EVP_DigestFinal_ex(context.digest, output.bytes(), nullptr))
        return CSSMERR_CSP_INTERNAL_ERROR;
    output.commit(size);
    return CSSM_OK;
}

CSSM_RETURN checkDigest(const Lease &context)
{
    if (context.status())
        return context.status();
    return context->kind == Kind::digest ? CSSM_OK : CSSMERR_CSP_INVALID_CONTEXT;
}

}  // namespace

CSSM_RETURN CSSM_CSP_CreateDigestContext(CSSM_CSP_HANDLE CSPHandle, CSSM_ALGORITHMS AlgorithmID,
                                         CSSM_CC_HANDLE *NewContextHandle)
{
    if (!NewContextHandle)
        return CSSMERR_CSSM_INVALID_POINTER;
    return answering(CSSMERR_CSSM_MEMORY_ERROR, [&]() -> CSSM_RETURN {
        if (!find(AlgorithmID).started)
            return CSSMERR_CSP_INVALID_ALGORITHM;
        return Registry::shared().open(CSPHandle, Kind::digest, AlgorithmID, nullptr, *NewContextHandle);
    });
}

CSSM_RETURN CSSM_DigestData(CSSM_CC_HANDLE CCHandle, const CSSM_DATA *DataBufs, uint32 DataBufCount,
                            CSSM_DATA_PTR Digest)
{
    if (const CSSM_RETURN status = checkInputs(DataBufs, DataBufCount))
        return status;
    if (!Digest)
        return CSSMERR_CSP_INVALID_OUTPUT_POINTER;
    return answering(CSSMERR_CSP_MEMORY_ERROR, [&]() -> CSSM_RETURN {
        const Lease context(CCHandle);
        if (const CSSM_RETURN status = checkDigest(context))
            return status;
        if (context->digesting)
            return CSSMERR_CSP_STAGED_OPERATION_IN_PROGRESS;
        if (const CSSM_RETURN status = begin(*context))
            return status;
        if (const CSSM_RETURN status = feed(*context, DataBufs, DataBufCount))
            return status;
        return deliver(*context, *Digest);
    });
}

CSSM_RETURN CSSM_DigestDataInit(CSSM_CC_HANDLE CCHandle)
{
    return answering(CSSMERR_CSP_MEMORY_ERROR, [&]() -> CSSM_RETURN {
        const Lease context(CCHandle);
        if (const CSSM_RETURN status = checkDigest(context))
            return status;
        if (context->digesting)
            return CSSMERR_CSP_STAGED_OPERATION_IN_PROGRESS;
        if (const CSSM_RETURN status = begin(*context))
            return status;
        context->digesting = true;
        return CSSM_OK;
    });
}

CSSM_RETURN CSSM_DigestDataUpdate(CSSM_CC_HANDLE CCHandle, const CSSM_DATA *DataBufs, uint32 DataBufCount)
{
    if (const CSSM_RETURN status = checkInputs(DataBufs, DataBufCount))
        return status;
    return answering(CSSMERR_CSP_MEMORY_ERROR, [&]() -> CSSM_RETURN {
        const Lease context(CCHandle);
        if (const CSSM_RETURN status = checkDigest(context))
            return status;
        if (!context->digesting)
            return CSSMERR_CSP_STAGED_OPERATION_NOT_STARTED;
        return feed(*context, DataBufs, DataBufCount);
    });
}

CSSM_RETURN CSSM_DigestDataFinal(CSSM_CC_HANDLE CCHandle, CSSM_DATA_PTR Digest)
{
    if (!Digest)
        return CSSMERR_CSP_INVALID_OUTPUT_POINTER;
    return answering(CSSMERR_CSP_MEMORY_ERROR, [&]() -> CSSM_RETURN {
        const Lease context(CCHandle);
        if (const CSSM_RETURN status = checkDigest(context))
            return status;
        if (!context->digesting)
            return CSSMERR_CSP_STAGED_OPERATION_NOT_STARTED;
        context->digesting = false;
        return deliver(*context, *Digest);
    });
}

/// Encryption and decryption, in one go and in stages, over whatever carries them out.
#include <cstring>

#include "Buffers.h"
#include "Context.h"

using namespace cssm;

namespace {

CSSM_RETURN checkCipher(const Lease &context)
{
    if (context.status())
        return context.status();
    return context->isCipher() ? CSSM_OK : CSSMERR_CSP_INVALID_CONTEXT;
}

CSSM_RETURN start(const Context &context, bool encrypting, std::unique_ptr<CipherRun> &run)
{
    const auto begin = context.kind == Kind::symmetric ? startSymmetric : startAsymmetric;
    return begin(context.algorithm, *context.attributes, encrypting, run);
}

CSSM_RETURN checkOutputs(const CSSM_DATA *buffers, uint32 count, const CSSM_SIZE *written)
{
    if (!buffers || !written)
        return CSSMERR_CSP_INVALID_OUTPUT_POINTER;
    if (count == 0)
        return CSSMERR_CSP_INVALID_DATA_COUNT;
    return count == 1 ? CSSM_OK : CSSMERR_CSP_VECTOR_OF_BUFS_UNSUPPORTED;
}

/// Runs all inputs into one place that has room for them.
CSSM_RETURN updateAll(CipherRun &run, std::span<const CSSM_DATA> inputs, uint8 *output, size_t &written)
{
    written = 0;
    for (const CSSM_DATA &input : inputs) {
        size_t count = 0;
        if (const CSSM_RETURN status = run.update({input.Data, input.Length}, output + written, count))
            return status;
        written += count;
    }
    return CSSM_OK;
}

size_t totalLength(std::span<const CSSM_DATA> inputs)
{
    size_t total = 0;
    for (const CSSM_DATA &input : inputs)
        total += input.Length;
    return total;
}

/// Runs the inputs through `run`. A caller's buffer may be smaller than the bound, which counts a block too
/// many: then the work goes through memory of ours.
CSSM_RETURN updateInto(CipherRun &run, std::span<const CSSM_DATA> inputs, size_t extraRoom, Output &output,
                       const CSSM_DATA &record, SecureBytes &scratch, size_t &written)
{
    const size_t bound = run.updateBound(totalLength(inputs)) + extraRoom;
    if (!output.fromCaller()) {
        if (const CSSM_RETURN status = output.reserve(bound))
            return status;
    } else if (record.Length < bound) {
        scratch.resize(bound);
    }
    return updateAll(run, inputs, scratch.empty() ? output.bytes() : scratch.data(), written);
}

/// Puts what was worked out in scratch memory where the caller wants it.
CSSM_RETURN copyOut(const SecureBytes &scratch, size_t length, Output &output)
{
    if (scratch.empty())
        return CSSM_OK;
    if (const CSSM_RETURN status = output.reserve(length))
        return status;
    if (length > 0)
        std::memcpy(output.bytes(), scratch.data(), length);
    return CSSM_OK;
}

CSSM_RETURN finishInto(CipherRun &run, const CSSM_API_MEMORY_FUNCS &memory, CSSM_DATA &rest)
{
    SecureBytes last(run.finishBound() + 1);
    size_t length = 0;
    if (const CSSM_RETURN status = run.finish(last.data(), length))
        return status;
    if (length == 0) {
        rest.Length = 0;
        return CSSM_OK;
    }
    Output output(rest, memory);
    if (const CSSM_RETURN status = output.reserve(length))
        return status;
    std::memcpy(output.bytes(), last.data(), length);
    output.commit(length);
    return CSSM_OK;
}

// --- The six functions, for either direction

CSSM_RETURN whole(bool encrypting, CSSM_CC_HANDLE handle, const CSSM_DATA *inputs, uint32 inputCount,
                  CSSM_DATA *outputs, uint32 outputCount, CSSM_SIZE *done, CSSM_DATA *rest)
{
    if (const CSSM_RETURN status = checkInputs(inputs, inputCount))
        return status;
    if (const CSSM_RETURN status = checkOutputs(outputs, outputCount, done))
        return status;
    if (!rest)
        return CSSMERR_CSP_INVALID_OUTPUT_POINTER;
    return answering(CSSMERR_CSP_MEMORY_ERROR, [&]() -> CSSM_RETURN {
        const Lease context(handle);
        if (const CSSM_RETURN status = checkCipher(context))
            return status;
        if (context->run)
            return CSSMERR_CSP_STAGED_OPERATION_IN_PROGRESS;
        std::unique_ptr<CipherRun> run;
        if (const CSSM_RETURN status = start(*context, encrypting, run))
            return status;

        Output output(*outputs, context->memory);
        SecureBytes scratch;
        size_t length = 0, last = 0;
        if (const CSSM_RETURN status =
                updateInto(*run, {inputs, inputCount}, run->finishBound(), output, *outputs, scratch, length))
            return status;
        uint8 *written = scratch.empty() ? output.bytes() : scratch.data();
        if (const CSSM_RETURN status = run->finish(written + length, last))
            return status;

        if (scratch.empty() || outputs->Length >= length + last) {
            length += last;
            last = 0;
        }
        if (const CSSM_RETURN status = copyOut(scratch, length, output))
            return status;
        if (last > 0) {  // the last block no longer fits
            Output remainder(*rest, context->memory);
            if (const CSSM_RETURN status = remainder.reserve(last))
                return status;
            std::memcpy(remainder.bytes(), written + length, last);
            remainder.commit(last);
        } else {
            rest->Length = 0;
        }
        output.commit(length);
        *done = length;
        return CSSM_OK;
    });
}

CSSM_RETURN stagedInit(bool encrypting, CSSM_CC_HANDLE handle)
{
    return answering(CSSMERR_CSP_MEMORY_ERROR, [&]() -> CSSM_RETURN {
        const Lease context(handle);
        if (const CSSM_RETURN status = checkCipher(context))
            return status;
        if (context->run)
            return CSSMERR_CSP_STAGED_OPERATION_IN_PROGRESS;
        context->encrypting = encrypting;
        return start(*context, encrypting, context->run);
    });
}

/// The operation that Init began, taken from the context: a step that fails does not give it back.
CSSM_RETURN takeRun(const Lease &context, bool encrypting, std::unique_ptr<CipherRun> &run)
{
    if (const CSSM_RETURN status = checkCipher(context))
        return status;
    if (!context->run || context->encrypting != encrypting)
        return CSSMERR_CSP_STAGED_OPERATION_NOT_STARTED;
    run = std::move(context->run);
    return CSSM_OK;
}

CSSM_RETURN stagedUpdate(bool encrypting, CSSM_CC_HANDLE handle, const CSSM_DATA *inputs, uint32 inputCount,
                         CSSM_DATA *outputs, uint32 outputCount, CSSM_SIZE *done)
{
    if (const CSSM_RETURN status = checkInputs(inputs, inputCount))
        return status;
    if (const CSSM_RETURN status = checkOutputs(outputs, outputCount, done))
        return status;
    return answering(CSSMERR_CSP_MEMORY_ERROR, [&]() -> CSSM_RETURN {
        const Lease context(handle);
        std::unique_ptr<CipherRun> run;
        if (const CSSM_RETURN status = takeRun(context, encrypting, run))
            return status;

        Output output(*outputs, context->memory);
        SecureBytes scratch;
        size_t length = 0;
        if (const CSSM_RETURN status =
                updateInto(*run, {inputs, inputCount}, 0, output, *outputs, scratch, length))
            return status;
        if (const CSSM_RETURN status = copyOut(scratch, length, output))
            return status;
        output.commit(length);
        *done = length;
        context->run = std::move(run);
        return CSSM_OK;
    });
}

CSSM_RETURN stagedFinal(bool encrypting, CSSM_CC_HANDLE handle, CSSM_DATA *rest)
{
    if (!rest)
        return CSSMERR_CSP_INVALID_OUTPUT_POINTER;
    return answering(CSSMERR_CSP_MEMORY_ERROR, [&]() -> CSSM_RETURN {
        const Lease context(handle);
        std::unique_ptr<CipherRun> run;
        if (const CSSM_RETURN status = takeRun(context, encrypting, run))
            return status;
        return finishInto(*run, context->memory, *rest);
    });
}

}  // namespace

CSSM_RETURN CSSM_EncryptData(CSSM_CC_HANDLE CCHandle, const CSSM_DATA *ClearBufs, uint32 ClearBufCount,
                             CSSM_DATA_PTR CipherBufs, uint32 CipherBufCount, CSSM_SIZE *bytesEncrypted,
                             CSSM_DATA_PTR RemData)
{
    return whole(true, CCHandle, ClearBufs, ClearBufCount, CipherBufs, CipherBufCount, bytesEncrypted,
                 RemData);
}

CSSM_RETURN CSSM_DecryptData(CSSM_CC_HANDLE CCHandle, const CSSM_DATA *CipherBufs, uint32 CipherBufCount,
                             CSSM_DATA_PTR ClearBufs, uint32 ClearBufCount, CSSM_SIZE *bytesDecrypted,
                             CSSM_DATA_PTR RemData)
{
    return whole(false, CCHandle, CipherBufs, CipherBufCount, ClearBufs, ClearBufCount, bytesDecrypted,
                 RemData);
}

CSSM_RETURN CSSM_EncryptDataInit(CSSM_CC_HANDLE CCHandle) { return stagedInit(true, CCHandle); }

CSSM_RETURN CSSM_EncryptDataUpdate(CSSM_CC_HANDLE CCHandle, const CSSM_DATA *ClearBufs, uint32 ClearBufCount,
                                   CSSM_DATA_PTR CipherBufs, uint32 CipherBufCount, CSSM_SIZE *bytesEncrypted)
{
    return stagedUpdate(true, CCHandle, ClearBufs, ClearBufCount, CipherBufs, CipherBufCount, bytesEncrypted);
}

CSSM_RETURN CSSM_EncryptDataFinal(CSSM_CC_HANDLE CCHandle, CSSM_DATA_PTR RemData)
{
    return stagedFinal(true, CCHandle, RemData);
}

CSSM_RETURN CSSM_DecryptDataInit(CSSM_CC_HANDLE CCHandle) { return stagedInit(false, CCHandle); }

CSSM_RETURN CSSM_DecryptDataUpdate(CSSM_CC_HANDLE CCHandle, const CSSM_DATA *CipherBufs,
                                   uint32 CipherBufCount, CSSM_DATA_PTR ClearBufs, uint32 ClearBufCount,
                                   CSSM_SIZE *bytesDecrypted)
{
    return stagedUpdate(false, CCHandle, CipherBufs, CipherBufCount, ClearBufs, ClearBufCount,
                        bytesDecrypted);
}

CSSM_RETURN CSSM_DecryptDataFinal(CSSM_CC_HANDLE CCHandle, CSSM_DATA_PTR RemData)
{
    return stagedFinal(false, CCHandle, RemData);
}

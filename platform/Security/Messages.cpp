/// What the status codes mean.
#include <Security/cssm.h>

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace {

struct Message {
    CSSM_RETURN status;
    const char *text;
};

#define CSSM_MESSAGE(status, text)                                                                           \
    {                                                                                                        \
        status, #status ": " text                                                                            \
    }
constexpr Message kMessages[] = {
    CSSM_MESSAGE(CSSM_OK, "no error"),
    CSSM_MESSAGE(CSSMERR_CSSM_INTERNAL_ERROR, "an internal error of the service"),
    CSSM_MESSAGE(CSSMERR_CSSM_MEMORY_ERROR, "out of memory"),
    CSSM_MESSAGE(CSSMERR_CSSM_INVALID_POINTER, "a pointer is null, or set where it must be null"),
    CSSM_MESSAGE(CSSMERR_CSSM_INVALID_GUID, "no module has this identifier"),
    CSSM_MESSAGE(CSSMERR_CSSM_INVALID_CONTEXT_HANDLE, "the context does not exist (any more)"),
    CSSM_MESSAGE(CSSMERR_CSSM_INCOMPATIBLE_VERSION, "the version is not 2.0"),
    CSSM_MESSAGE(CSSMERR_CSSM_INVALID_ADDIN_HANDLE, "the module is not attached (any more)"),
    CSSM_MESSAGE(CSSMERR_CSSM_NOT_INITIALIZED, "the service has not been initialised"),
    CSSM_MESSAGE(CSSMERR_CSSM_INVALID_HANDLE_USAGE, "the context is in use by another call"),
    CSSM_MESSAGE(CSSMERR_CSSM_SCOPE_NOT_SUPPORTED, "the privilege scope is not supported"),
    CSSM_MESSAGE(CSSMERR_CSSM_INVALID_PVC, "the verification policy is not known"),
    CSSM_MESSAGE(CSSMERR_CSSM_ADDIN_LOAD_FAILED, "the module could not be loaded"),
    CSSM_MESSAGE(CSSMERR_CSSM_INVALID_KEY_HIERARCHY, "the key hierarchy is not known"),
    CSSM_MESSAGE(CSSMERR_CSSM_INVALID_SERVICE_MASK, "the module does not give this service"),
    CSSM_MESSAGE(CSSMERR_CSSM_MODULE_NOT_LOADED, "the module has not been loaded"),
    CSSM_MESSAGE(CSSMERR_CSSM_INVALID_SUBSERVICEID, "the module has no such sub-service"),
    CSSM_MESSAGE(CSSMERR_CSSM_INVALID_ATTRIBUTE, "the context has no such attribute"),
    CSSM_MESSAGE(CSSMERR_CSP_INTERNAL_ERROR, "an internal error of the provider"),
    CSSM_MESSAGE(CSSMERR_CSP_MEMORY_ERROR, "out of memory"),
    CSSM_MESSAGE(CSSMERR_CSP_INVALID_POINTER, "a pointer is null"),
    CSSM_MESSAGE(CSSMERR_CSP_INVALID_INPUT_POINTER, "an input pointer is null"),
    CSSM_MESSAGE(CSSMERR_CSP_INVALID_OUTPUT_POINTER, "an output pointer is null"),
    CSSM_MESSAGE(CSSMERR_CSP_FUNCTION_FAILED, "the operation failed"),
    CSSM_MESSAGE(CSSMERR_CSP_INVALID_DATA, "the data is not what was encrypted with this key"),
    CSSM_MESSAGE(CSSMERR_CSP_INVALID_CRYPTO_DATA, "the secret could not be read"),
    CSSM_MESSAGE(CSSMERR_CSP_INPUT_LENGTH_ERROR, "the input has a length that the algorithm does not take"),
    CSSM_MESSAGE(CSSMERR_CSP_OUTPUT_LENGTH_ERROR, "the output buffer is too small"),
    CSSM_MESSAGE(CSSMERR_CSP_INVALID_KEY, "the key can't be read"),
    CSSM_MESSAGE(CSSMERR_CSP_INVALID_KEY_CLASS, "the key is of the wrong class"),
    CSSM_MESSAGE(CSSMERR_CSP_ALGID_MISMATCH, "the key belongs to another algorithm"),
    CSSM_MESSAGE(CSSMERR_CSP_KEY_USAGE_INCORRECT, "the key may not be used for this"),
    CSSM_MESSAGE(CSSMERR_CSP_KEY_BLOB_TYPE_INCORRECT, "the key is not given as raw data"),
    CSSM_MESSAGE(CSSMERR_CSP_UNSUPPORTED_KEY_FORMAT, "the key's format is not supported"),
    CSSM_MESSAGE(CSSMERR_CSP_UNSUPPORTED_KEY_SIZE, "the algorithm does not take a key of this size"),
    CSSM_MESSAGE(CSSMERR_CSP_INVALID_KEY_POINTER, "the key pointer is null"),
    CSSM_MESSAGE(CSSMERR_CSP_UNSUPPORTED_KEYATTR_MASK, "keys are returned as data only"),
    CSSM_MESSAGE(CSSMERR_CSP_INVALID_DATA_COUNT, "the number of buffers is 0"),
    CSSM_MESSAGE(CSSMERR_CSP_VECTOR_OF_BUFS_UNSUPPORTED, "output goes to one buffer only"),
    CSSM_MESSAGE(CSSMERR_CSP_INVALID_INPUT_VECTOR, "an input buffer is null"),
    CSSM_MESSAGE(CSSMERR_CSP_INVALID_CONTEXT, "the context is of another kind"),
    CSSM_MESSAGE(CSSMERR_CSP_INVALID_ALGORITHM, "the algorithm is not supported"),
    CSSM_MESSAGE(CSSMERR_CSP_MISSING_ATTR_KEY, "the context has no key"),
    CSSM_MESSAGE(CSSMERR_CSP_INVALID_ATTR_INIT_VECTOR, "the initialisation vector is too short"),
    CSSM_MESSAGE(CSSMERR_CSP_MISSING_ATTR_INIT_VECTOR, "the context has no initialisation vector"),
    CSSM_MESSAGE(CSSMERR_CSP_MISSING_ATTR_SALT, "the context has no salt"),
    CSSM_MESSAGE(CSSMERR_CSP_INVALID_ATTR_PADDING, "the padding does not go with the mode"),
    CSSM_MESSAGE(CSSMERR_CSP_INVALID_ATTR_KEY_LENGTH, "the key length is not a number of whole bytes"),
    CSSM_MESSAGE(CSSMERR_CSP_INVALID_ATTR_ROUNDS, "the number of rounds is too large"),
    CSSM_MESSAGE(CSSMERR_CSP_INVALID_ATTR_ALG_PARAMS, "the algorithm's parameters can't be read"),
    CSSM_MESSAGE(CSSMERR_CSP_INVALID_ATTR_MODE, "the algorithm does not have this mode"),
    CSSM_MESSAGE(CSSMERR_CSP_INVALID_ATTR_EFFECTIVE_BITS, "the effective key bits are out of range"),
    CSSM_MESSAGE(CSSMERR_CSP_INVALID_ATTR_ITERATION_COUNT, "the iteration count is 0"),
    CSSM_MESSAGE(CSSMERR_CSP_STAGED_OPERATION_IN_PROGRESS, "a staged operation has not been finished"),
    CSSM_MESSAGE(CSSMERR_CSP_STAGED_OPERATION_NOT_STARTED,
                 "no staged operation of this kind has been started"),
};
#undef CSSM_MESSAGE

}  // namespace

const char *cssmErrorString(CSSM_RETURN error)
{
    const auto *found = std::ranges::find(kMessages, error, &Message::status);
    return found == std::end(kMessages) ? "unknown status" : found->text;
}

void cssmPerror(const char *label, CSSM_RETURN error)
{
    std::fprintf(stderr, "%s: %s [0x%08X]\n", label ? label : "", cssmErrorString(error),
                 static_cast<unsigned>(error));
}

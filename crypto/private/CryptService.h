/// \file
/// What the front ends hold of the crypto service, given back by itself.
#pragma once
#include <Tarvik/support/Handle.h>

#include <Security/cssm.h>

namespace tarvik {

struct AttachmentTraits {
    using Value = CSSM_CSP_HANDLE;
    static Value empty() { return CSSM_INVALID_HANDLE; }
    static void close(Value attachment) { CSSM_ModuleDetach(attachment); }
};
/// An attached provider.
using Attachment = Handle<AttachmentTraits>;

struct CryptContextTraits {
    using Value = CSSM_CC_HANDLE;
    static Value empty() { return CSSM_INVALID_HANDLE; }
    static void close(Value context) { CSSM_DeleteContext(context); }
};
using CryptContext = Handle<CryptContextTraits>;

/// Attaches the provider, digests the bytes and copies `size` bytes of the digest to `out`; false, and
/// nothing written, when one of the steps fails.
bool digestInto(CSSM_ALGORITHMS algorithm, const void *bytes, size_t length, unsigned char *out, size_t size);

}  // namespace tarvik

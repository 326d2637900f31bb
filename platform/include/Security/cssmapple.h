/// \file
/// The platform's own additions to CSSM: its standard provider, its vendor algorithms, messages for status
/// codes.
#pragma once

#include <Security/cssmerr.h>
#include <Security/cssmtype.h>

#ifdef __cplusplus
extern "C" {
#endif

/// The platform's standard cryptographic service provider.
extern const CSSM_GUID gGuidAppleCSP;

#define CSSM_ALGID_AES (CSSM_ALGID_VENDOR_DEFINED + 1)
#define CSSM_ALGID_ASC                                                                                       \
    (CSSM_ALGID_VENDOR_DEFINED + 7)  ///< numbered, not provided: CSSMERR_CSP_INVALID_ALGORITHM

/// The provider's message for a status, e.g. "CSSMERR_CSP_INVALID_ALGORITHM: the algorithm is not supported".
/// A static text; a number outside the list gives "unknown status". Never null.
const char *cssmErrorString(CSSM_RETURN error);

/// Prints `label: message [0xNNNNNNNN]` and a line end on standard error. A null label counts as empty.
void cssmPerror(const char *label, CSSM_RETURN error);

#ifdef __cplusplus
}
#endif

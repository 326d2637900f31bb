#include "crypto/private/CryptService.h"

#include <Tarvik/crypto/CDSAUtilityBase.h>

#include <algorithm>
#include <cstdlib>

namespace tarvik {

bool digestInto(CSSM_ALGORITHMS algorithm, const void *bytes, size_t length, unsigned char *out, size_t size)
{
    CSSM_CSP_HANDLE attached = CSSM_INVALID_HANDLE;
    if (CDSAUtilityBase::cdsaCspAttach(&attached) != CSSM_OK)
        return false;
    const Attachment attachment(attached);
    CSSM_DATA digest{};
    if (CDSAUtilityBase::oneShotDigest(attached, algorithm, static_cast<const unsigned char *>(bytes), length,
                                       &digest) != 0)
        return false;
    std::copy_n(digest.Data, std::min<size_t>(digest.Length, size), out);
    std::free(digest.Data);
    return true;
}

}  // namespace tarvik

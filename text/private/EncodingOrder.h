// The encodings in which a text is tried: the system's, then every available one, in the platform's order.
#pragma once
#include <CoreFoundation/CFString.h>

namespace tarvik {

/// The first result that is true (not null), of `attempt(encoding)` in that order; the last, false one when there is none.
template <class Attempt>
auto inFirstEncoding(Attempt &&attempt)
{
    auto result = attempt(CFStringGetSystemEncoding());
    const CFStringEncoding *encoding = CFStringGetListOfAvailableEncodings();
    for (; !result && encoding && *encoding != kCFStringEncodingInvalidId; ++encoding)
        result = attempt(*encoding);
    return result;
}

}  // namespace tarvik

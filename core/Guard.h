/// \file
/// The guard of the object layer: nothing leaves a guarded method.
///
///     - (NSNumber *)intNumber {
///         return tarvik::guarded("-[NSString(FoundationX) intNumber]", __LINE__, [NSNumber numberWithInt:0], [&] { ... });
///     }
///
/// The body's exception is logged, "unexpected exception: name[%@] reason[%@]", under the caller's signature and line,
/// and the failure value is the answer. In a lambda, write `self->mField`, never `mField` alone: g++ compiles the
/// implicit form wrongly.
#pragma once
#if defined(__OBJC__) && defined(__cplusplus)
#include <Tarvik/core/Log.h>
#import <Tarvik/support/Guard.h>

#include <utility>

namespace tarvik {

inline void logUnexpected(const char *signature, unsigned long line, NSException *exception)
{
    LogCore(signature, line, "unexpected exception: name[%@] reason[%@]", [exception name],
            [exception reason]);
}

/// Runs a body that answers; the failure value when it raised.
template <class Failure, class Body>
Failure guarded(const char *signature, unsigned long line, Failure failure, Body &&body)
{
    Failure result = failure;
    Retained<NSException *> raised;
    if (!attempt([&] { result = body(); }, &raised)) {
        logUnexpected(signature, line, raised.get());
        return failure;
    }
    return result;
}

/// Runs a body without an answer; false when it raised.
template <class Body>
bool guarded(const char *signature, unsigned long line, Body &&body)
{
    Retained<NSException *> raised;
    const bool ok = attempt(std::forward<Body>(body), &raised);
    if (!ok)
        logUnexpected(signature, line, raised.get());
    return ok;
}

}  // namespace tarvik
#endif

/// \file
/// Runs a body that may raise, and lets nothing out.
///
///     tarvik::Retained<NSException *> raised;
///     if (!tarvik::attempt([&] { [object doIt]; }, &raised)) NSLog(@"%@", [raised.get() reason]);
///
/// NSException and std::exception are caught, the latter as an NSException named "CxxException"
/// whose reason is `what()`. Anything else (`throw 3`, `@throw` of another object) terminates.
///
/// A typed `@catch` in an Objective-C++ file of g++ crashes at run time, so the one `@try` of the
/// house stands in a plain Objective-C file behind this template.
#pragma once
#if defined(__OBJC__) && defined(__cplusplus)
#import <Foundation/NSException.h>
#import <Foundation/NSString.h>
#import <Tarvik/support/Retained.h>

#include <exception>
#include <type_traits>

/// The house's one `@try`: calls `body(context)`; NO when it raised, `*raised` then being owned by the caller.
extern "C" BOOL TarvikTry(void (*body)(void *context), void *context, NSException **raised);

namespace tarvik {

template <class Body>
bool attempt(Body &&body, Retained<NSException *> *raised = nullptr) noexcept
{
    struct Context {
        std::remove_reference_t<Body> *body;
        NSException *fromCxx;
    } context{&body, nil};
    NSException *exception = nil;
    BOOL passed = TarvikTry(
        [](void *opaque) {
            auto *c = static_cast<Context *>(opaque);
            try {
                (*c->body)();
            } catch (const std::exception &e) {  // typed only: catch(...) would swallow NSException
                NSString *why = [NSString stringWithUTF8String:e.what()];
                c->fromCxx = [[NSException alloc] initWithName:@"CxxException"
                                                        reason:why ? why : @"?"
                                                      userInfo:nil];
            }
        },
        &context, &exception);
    auto caught = adopt(passed ? context.fromCxx : exception);
    const bool ok = !caught;
    if (raised)
        *raised = std::move(caught);
    return ok;
}

}  // namespace tarvik
#endif

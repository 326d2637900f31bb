/// \file
/// A scoped autorelease pool.
///
/// g++ has no `@autoreleasepool`; this is its place in both C++ and Objective-C++:
///
///     tarvik::Pool pool;
///     ... messages that autorelease ...        // drained at the end of the scope
///
/// Works on any thread that GNUstep knows (the main thread, NSThread's, and a std::thread between
/// `GSRegisterCurrentThread` and `GSUnregisterCurrentThread`). An exception that leaves the scope
/// drains the pool too, so an NSException must be retained before it passes one.
#pragma once
#if defined(__OBJC__) && defined(__cplusplus)
#import <Foundation/NSAutoreleasePool.h>

namespace tarvik {

class Pool {
public:
    Pool() : pool_([NSAutoreleasePool new]) {}
    ~Pool() { [pool_ drain]; }
    Pool(const Pool &) = delete;
    Pool &operator=(const Pool &) = delete;

private:
    NSAutoreleasePool *pool_;
};

}  // namespace tarvik
#endif

/// \file
/// Null-safe retain and equality, and the exit pool.
///
///     static NSNumber *yes = nil;
///     if (!yes) { yes = [[NSNumber alloc] initWithBool:YES]; [AddToExitPool(yes) release]; }
///
/// The exit pool keeps shared objects until the process ends and releases them then, so that leak checkers see it.
/// It is filled from the main thread.
#pragma once
#include <CoreFoundation/CFBase.h>

#ifdef __OBJC__
#import <Foundation/NSObject.h>
#endif

#ifdef __cplusplus
extern "C" {
#endif

/// CFRetain; null for null.
CFTypeRef CFTypeRetain(CFTypeRef object);
/// CFEqual; false when either is null.
Boolean CFTypeIsEqualTo(CFTypeRef object, CFTypeRef other);

#ifdef __OBJC__
/// `isEqual:`; false when either is nil, so two nils are not equal.
BOOL NSIsEqual(id object, id other);
/// True for nil and for any NSNull.
BOOL NSIsNull(id object);
/// Adds the object to the exit pool, which retains it, and returns it; nil is returned as it is. An object that
/// can't be kept (said on the console log) simply stays alive with its other owners.
id AddToExitPool(id object);
#endif

/// Releases the exit pool and every object in it; nothing when there is none. Runs by itself at exit.
void ReleaseExitPool(void);

#ifdef __cplusplus
}
#endif

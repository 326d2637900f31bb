/// \file
/// The class `Method`: a target and a selector as one object.
///
///     id<Method> refresh = [MethodClass() methodWithTarget:view selector:@selector(setNeedsDisplay)];
///     if ([refresh responds]) [refresh perform];
///
/// The Objective-C runtime's headers have a type of that name, so that a class can't be declared beside it: in most files the class is
/// `MethodClass()`, or `NSClassFromString(@"Method")`, and its objects are `id<Method>`. A file that needs the class itself (to derive from
/// it, or because it was written so) asks for it before anything else is included; the runtime's type is `ObjCMethod` in that file then:
///
///     #define TARVIK_METHOD_CLASS
///     #import <Tarvik/system/Method.h>
///     ...
///     Method *refresh = [Method methodWithTarget:view selector:@selector(setNeedsDisplay)];
///
/// Thread: as the target.
#pragma once
#ifdef __OBJC__
#ifdef TARVIK_METHOD_CLASS
#ifdef __objc_runtime_INCLUDE_GNU
#error "TARVIK_METHOD_CLASS: include <Tarvik/system/Method.h> before any other header"
#endif
#define Method ObjCMethod
#import <Foundation/NSObject.h>
#import <GNUstepBase/GSObjCRuntime.h>
#include <objc/runtime.h>
#undef Method
#else
#import <Foundation/NSObject.h>
#endif

@protocol Method <NSObject>
/// Nil, and the object released, for a nil target or a null selector. The target is not retained: it has to outlive the object.
- (id)initWithTarget:(id)target selector:(SEL)selector;
/// A new autoreleased object of the receiving class.
+ (id)methodWithTarget:(id)target selector:(SEL)selector;

/// Whether there is a target, and it responds to the selector.
- (BOOL)responds;
/// Sends the selector with none, one or two arguments, and answers what it answers: for a method that answers no object, nothing
/// that can be used. A target that doesn't respond raises as for any message. Nil without a target.
- (id)perform;
- (id)performWithObject:(id)object;
- (id)performWithObject:(id)object1 withObject:(id)object2;
@end

FOUNDATION_EXPORT Class<Method> MethodClass(void);

#ifdef TARVIK_METHOD_CLASS
@interface Method : NSObject <Method> {
    id mTerget;  // not retained; callers know it by this spelling
    SEL mSelector;
}
@end
#endif
#endif

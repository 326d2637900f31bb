/// \file
/// How a Core Foundation function is made of a Foundation object's method.
///
///     CFIndex CFArrayGetCount(CFArrayRef array) { return CFIndex([ns(array) count]); }
///     CFURLRef CFURLCopyAbsoluteURL(CFURLRef url)
///     {
///         return owned<CFURLRef>([&] { return [ns(url) absoluteURL]; });
///     }
///
/// `answer` and `owned` run their body in a pool of its own and let no exception out, so that a caller in
/// plain C needs neither.
#pragma once
#import <Foundation/Foundation.h>

#include <CoreFoundation/CoreFoundation.h>
#include <Tarvik/support/Guard.h>
#include <Tarvik/support/Pool.h>
#include <Tarvik/support/Retained.h>

namespace tarvik::cf {

inline id ns(CFTypeRef object) { return (id) const_cast<void *>(object); }
inline NSString *ns(CFStringRef string) { return (NSString *)string; }
inline NSMutableString *ns(CFMutableStringRef string) { return (NSMutableString *)string; }
inline NSData *ns(CFDataRef data) { return (NSData *)data; }
inline NSMutableData *ns(CFMutableDataRef data) { return (NSMutableData *)data; }
inline NSArray *ns(CFArrayRef array) { return (NSArray *)array; }
inline NSMutableArray *ns(CFMutableArrayRef array) { return (NSMutableArray *)array; }
inline NSDictionary *ns(CFDictionaryRef dictionary) { return (NSDictionary *)dictionary; }
inline NSMutableDictionary *ns(CFMutableDictionaryRef dictionary)
{
    return (NSMutableDictionary *)dictionary;
}
inline NSNumber *ns(CFNumberRef number) { return (NSNumber *)number; }
inline NSNumber *ns(CFBooleanRef boolean) { return (NSNumber *)boolean; }
inline NSDate *ns(CFDateRef date) { return (NSDate *)date; }
inline NSURL *ns(CFURLRef url) { return (NSURL *)url; }
inline NSBundle *ns(CFBundleRef bundle) { return (NSBundle *)bundle; }

template <class Ref>
Ref cf(id object)
{
    return (Ref)object;
}

/// Runs the body in a pool; an exception, C++ or Objective-C, gives the failure.
template <class Result, class Body>
Result answer(Result failure, Body &&body)
{
    Pool pool;
    Result result = failure;
    return attempt([&] { result = body(); }) ? result : failure;
}

/// The same for an object that the body answers borrowed or autoreleased: the caller owns the result.
template <class Ref, class Body>
Ref owned(Body &&body)
{
    return answer<Ref>(nullptr, [&] { return cf<Ref>([body() retain]); });
}

/// The same for an object that the body made (alloc, new, copy).
template <class Ref, class Body>
Ref made(Body &&body)
{
    return answer<Ref>(nullptr, [&] { return cf<Ref>(body()); });
}

template <class Body>
void perform(Body &&body)
{
    Pool pool;
    attempt(body);
}

/// Whether [location, location + length) lies within [0, count).
inline bool contains(CFIndex count, CFRange range)
{
    return range.location >= 0 && range.length >= 0 && range.location <= count &&
           range.length <= count - range.location;
}
inline NSRange nsRange(CFRange range)
{
    return NSMakeRange(NSUInteger(range.location), NSUInteger(range.length));
}

/// Frees a buffer that was handed over, as its deallocator says.
void deallocate(CFAllocatorRef deallocator, const void *buffer);

}  // namespace tarvik::cf

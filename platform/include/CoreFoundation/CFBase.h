/// CFBase.h: what every Core Foundation object shares.
///
/// A reference is toll-free: a CFStringRef is an NSString, a CFArrayRef an NSArray, a CFURLRef an NSURL,
/// a CFBundleRef an NSBundle, and so on. A cast is all it takes, in both directions.
///
///   ownership   a name with Create or Copy hands out a reference that the caller releases with CFRelease;
///               Get hands out a borrowed one, valid as long as the object that it was asked of
///   absent      a null argument is answered with null, 0 or false, never with a crash
///   exceptions  none leaves these functions; what would raise answers the failure value
///   pools       no autorelease pool is needed, and nothing is left in the caller's
///   threads     the functions may be called on every thread; one object is changed by one thread at a time
#pragma once

#include <Carbon/MacTypes.h>
#include <stdarg.h>

#if defined(__cplusplus)
#define CF_EXTERN_C_BEGIN extern "C" {
#define CF_EXTERN_C_END   }
#else
#define CF_EXTERN_C_BEGIN
#define CF_EXTERN_C_END
#endif
#define CF_EXPORT extern __attribute__((visibility("default")))

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

CF_EXTERN_C_BEGIN

typedef unsigned long CFTypeID;
typedef unsigned long CFOptionFlags;
typedef unsigned long CFHashCode;
typedef signed long   CFIndex;

typedef const void                  *CFTypeRef;
typedef const struct __CFString     *CFStringRef;
typedef struct __CFString           *CFMutableStringRef;
typedef const struct __CFArray      *CFArrayRef;
typedef struct __CFArray            *CFMutableArrayRef;
typedef const struct __CFDictionary *CFDictionaryRef;
typedef struct __CFDictionary       *CFMutableDictionaryRef;
typedef const struct __CFData       *CFDataRef;
typedef struct __CFData             *CFMutableDataRef;
typedef const struct __CFBoolean    *CFBooleanRef;
typedef const struct __CFNumber     *CFNumberRef;
typedef const struct __CFDate       *CFDateRef;
typedef const struct __CFURL        *CFURLRef;
typedef const struct __CFUUID       *CFUUIDRef;
typedef const struct __CFNull       *CFNullRef;
typedef struct __CFBundle           *CFBundleRef;
typedef CFTypeRef                    CFPropertyListRef;

enum { kCFNotFound = -1 };

typedef CFIndex CFComparisonResult;
enum { kCFCompareLessThan = -1, kCFCompareEqualTo = 0, kCFCompareGreaterThan = 1 };
typedef CFComparisonResult (*CFComparatorFunction)(const void *value1, const void *value2, void *context);

/// A stretch of indexes: [location, location + length).
typedef struct {
    CFIndex location;
    CFIndex length;
} CFRange;

static inline CFRange CFRangeMake(CFIndex location, CFIndex length) {
    CFRange range;
    range.location = location;
    range.length   = length;
    return range;
}

/// Where objects live. Objects always come from the platform's one heap: the argument of the Create functions may be
/// any of these, and only says of a `contentsDeallocator` how the buffer that is handed over is freed.
typedef const struct __CFAllocator *CFAllocatorRef;
CF_EXPORT const CFAllocatorRef kCFAllocatorDefault;       ///< null; as a deallocator: free()
CF_EXPORT const CFAllocatorRef kCFAllocatorSystemDefault; ///< free()
CF_EXPORT const CFAllocatorRef kCFAllocatorMalloc;        ///< free()
CF_EXPORT const CFAllocatorRef kCFAllocatorNull;          ///< the buffer is not freed: it outlives the object

CF_EXPORT const CFNullRef kCFNull; ///< the placeholder object, an NSNull

CF_EXPORT CFTypeRef   CFRetain(CFTypeRef object);                           ///< answers its argument
CF_EXPORT void        CFRelease(CFTypeRef object);                          ///< null is ignored
CF_EXPORT CFIndex     CFGetRetainCount(CFTypeRef object);                   ///< a hint for debugging
CF_EXPORT Boolean     CFEqual(CFTypeRef object1, CFTypeRef object2);        ///< by contents; two nulls are equal
CF_EXPORT CFHashCode  CFHash(CFTypeRef object);                             ///< equal objects have equal hashes
CF_EXPORT CFTypeID    CFGetTypeID(CFTypeRef object);                        ///< 0 for an object of no type named here
CF_EXPORT CFStringRef CFCopyDescription(CFTypeRef object);                  ///< for people
CF_EXPORT CFStringRef CFCopyTypeIDDescription(CFTypeID type);               ///< "CFString"; null for an unknown one
CF_EXPORT void        CFShow(CFTypeRef object);                             ///< the description and a line end, on standard error
CF_EXPORT CFTypeID    CFNullGetTypeID(void);

CF_EXTERN_C_END

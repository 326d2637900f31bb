/// \file
/// Tests of strings that may be absent, and Pascal strings.
#pragma once
#include <CoreFoundation/CFBase.h>

#ifdef __OBJC__
#import <Foundation/NSString.h>
#endif

#ifdef __cplusplus
extern "C" {
#endif

/// True for null, for any object that is no string, and for the empty string.
Boolean CFStringIsVoid(CFStringRef string);
/// Whether something exists at the POSIX path that the string is; links are followed. False for null.
Boolean CFStringIsExist(CFStringRef path);
/// Copies a length byte and that many bytes; `destination` has room for them. False for a null argument only.
Boolean PascalStringCopy(StringPtr destination, ConstStringPtr source);

#ifdef __OBJC__
/// True for nil and for the empty string.
BOOL NSStringIsVoid(NSString *string);
/// Equality of strings; two nils are not equal.
BOOL NSStringIsEqual(NSString *string, NSString *other);
#endif

#ifdef __cplusplus
}
#endif

/// \file
/// Images among a bundle's resources.
///
///     CGImageRef logo = CGImageCreateWithBundleResource(CFSTR("logo"), CFSTR("png"), NULL);    // the caller releases it
///
/// Null for null, a missing resource and one that does not decode. A null bundle is the main one. Thread: main.
#pragma once
#include <CoreFoundation/CFBundle.h>
#include <CoreGraphics/CGImage.h>

#ifdef __cplusplus
extern "C" {
#endif

CGDataProviderRef CGDataProviderCreateWithBundleResource(CFStringRef name, CFStringRef type,
                                                         CFBundleRef bundle);
/// The type "png", in any case, is decoded as PNG; every other one, whatever it names, as JPEG.
CGImageRef CGImageCreateWithBundleResource(CFStringRef name, CFStringRef type, CFBundleRef bundle);

#ifdef __cplusplus
}
#endif

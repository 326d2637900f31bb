/// CGImage.h: pixels. A CGImageRef is an NSBitmapImageRep.
///
///     CGImageRef image = CGImageCreateWithPNGDataProvider(provider, NULL, false, kCGRenderingIntentDefault);
///     [[[NSImage alloc] initWithSize:...] addRepresentation:(NSBitmapImageRep *)image];
#pragma once
#include <CoreGraphics/CGDataProvider.h>

#include <stdbool.h>
#include <stddef.h>

CF_EXTERN_C_BEGIN

typedef struct CGImage *CGImageRef;

typedef int32_t CGColorRenderingIntent;
enum { kCGRenderingIntentDefault = 0 };

/// One format each: data of another one and data that does not decode give null, as does a decode array, for which there is no
/// support. What is missing from a JPEG that has been cut off is grey. Interpolation and intent are what the drawing context says.
CF_EXPORT CGImageRef CGImageCreateWithPNGDataProvider(CGDataProviderRef source, const double *decode, bool shouldInterpolate, CGColorRenderingIntent intent);
CF_EXPORT CGImageRef CGImageCreateWithJPEGDataProvider(CGDataProviderRef source, const double *decode, bool shouldInterpolate, CGColorRenderingIntent intent);

CF_EXPORT size_t     CGImageGetWidth(CGImageRef image); ///< in pixels
CF_EXPORT size_t     CGImageGetHeight(CGImageRef image);
CF_EXPORT CGImageRef CGImageRetain(CGImageRef image);
CF_EXPORT void       CGImageRelease(CGImageRef image); ///< null is ignored

CF_EXTERN_C_END

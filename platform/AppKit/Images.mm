#import <AppKit/NSBitmapImageRep.h>
#include <CoreGraphics/CGImage.h>
#import <Foundation/Foundation.h>
#import <Tarvik/support/Guard.h>
#import <Tarvik/support/Pool.h>

#include <cstring>
#include <string>
#include <string_view>

namespace {

constexpr std::string_view kPNG("\x89PNG\r\n\x1A\n", 8), kJPEG("\xFF\xD8\xFF", 3);

/// AppKit decodes whatever the bytes are: they must begin as the format does.
bool beginsWith(NSData *bytes, std::string_view signature)
{
    return
        [bytes length] >= signature.size() && !std::memcmp([bytes bytes], signature.data(), signature.size());
}

CGImageRef decode(NSData *bytes)
{
    NSBitmapImageRep *image = nil;
    const tarvik::Pool pool;
    tarvik::attempt([&] { image = [[NSBitmapImageRep imageRepWithData:bytes] retain]; });
    return CGImageRef(image);
}

/// AppKit waits for ever for what is missing from a JPEG that has been cut off. End markers behind it, for longer than any segment is,
/// let it come to an end.
NSData *ended(NSData *jpeg)
{
    constexpr size_t longestSegment = 0x10000;
    std::string markers;
    while (markers.size() < longestSegment)
        markers += "\xFF\xD9";
    NSMutableData *whole = [NSMutableData dataWithCapacity:[jpeg length] + markers.size()];
    [whole appendData:jpeg];
    [whole appendBytes:markers.data() length:markers.size()];
    return whole;
}

}  // namespace

CGDataProviderRef CGDataProviderCreateWithURL(CFURLRef url)
{
    if (![(id)url isKindOfClass:[NSURL class]] || ![(NSURL *)url isFileURL])
        return nullptr;
    return CGDataProviderRef([[NSData alloc] initWithContentsOfFile:[(NSURL *)url path]]);
}

CGDataProviderRef CGDataProviderCreateWithCFData(CFDataRef data)
{
    return CGDataProviderRef([(NSData *)data copy]);
}
CFDataRef CGDataProviderCopyData(CGDataProviderRef provider) { return CFDataRef([(NSData *)provider copy]); }
CGDataProviderRef CGDataProviderRetain(CGDataProviderRef provider)
{
    return CGDataProviderRef([(NSData *)provider retain]);
}
void CGDataProviderRelease(CGDataProviderRef provider) { [(NSData *)provider release]; }

CGImageRef CGImageCreateWithPNGDataProvider(CGDataProviderRef source, const double *decodeArray, bool,
                                            CGColorRenderingIntent)
{
    return !decodeArray && beginsWith((NSData *)source, kPNG) ? decode((NSData *)source) : nullptr;
}

CGImageRef CGImageCreateWithJPEGDataProvider(CGDataProviderRef source, const double *decodeArray, bool,
                                             CGColorRenderingIntent)
{
    return !decodeArray && beginsWith((NSData *)source, kJPEG) ? decode(ended((NSData *)source)) : nullptr;
}

size_t CGImageGetWidth(CGImageRef image) { return size_t([(NSBitmapImageRep *)image pixelsWide]); }
size_t CGImageGetHeight(CGImageRef image) { return size_t([(NSBitmapImageRep *)image pixelsHigh]); }
CGImageRef CGImageRetain(CGImageRef image) { return CGImageRef([(NSBitmapImageRep *)image retain]); }
void CGImageRelease(CGImageRef image) { [(NSBitmapImageRep *)image release]; }

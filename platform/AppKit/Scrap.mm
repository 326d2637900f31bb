#import <AppKit/NSPasteboard.h>
#include <Carbon/Scrap.h>
#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFString.h>
#import <Foundation/Foundation.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Guard.h>

#include "platform/AppKit/private/ScrapFlavors.h"

#include <algorithm>
#include <bit>
#include <cstring>

struct OpaqueScrapRef {};

namespace {

OpaqueScrapRef gScrap;  // there is one clipboard

constexpr NSStringEncoding kNativeUTF16 = std::endian::native == std::endian::little
                                              ? NSUTF16LittleEndianStringEncoding
                                              : NSUTF16BigEndianStringEncoding;

/// Before the code of a flavor that the pasteboard has no type for.
constexpr char kOwnType[] = "CorePasteboardFlavorType 0x";

bool isText(ScrapFlavorType flavor)
{
    return flavor == kScrapFlavorTypeText || flavor == kScrapFlavorTypeUnicode;
}

/// The pasteboard's type for a flavor; one that has no own is passed under its code.
NSString *typeOf(ScrapFlavorType flavor)
{
    switch (flavor) {
    case kScrapFlavorTypeText:
    case kScrapFlavorTypeUnicode: return NSStringPboardType;
    case kScrapFlavorTypeTIFF: return NSTIFFPboardType;
    case kScrapFlavorTypePDF: return NSPDFPboardType;
    case kScrapFlavorTypeRTF: return NSRTFPboardType;
    default: return [NSString stringWithFormat:@"%s%08X", kOwnType, unsigned(flavor)];
    }
}

/// 0 for a type that is no flavor.
ScrapFlavorType flavorOf(NSString *type)
{
    for (const ScrapFlavorType known :
         {kScrapFlavorTypeText, kScrapFlavorTypeTIFF, kScrapFlavorTypePDF, kScrapFlavorTypeRTF})
        if ([type isEqualToString:typeOf(known)])
            return known;
    unsigned code = 0;
    NSString *const prefix = [NSString stringWithUTF8String:kOwnType];
    if ([type hasPrefix:prefix])
        [[NSScanner scannerWithString:[type substringFromIndex:[prefix length]]] scanHexInt:&code]
        ;
    return code;
}

NSData *bytesOfText(NSString *text, ScrapFlavorType flavor)
{
    if (flavor == kScrapFlavorTypeUnicode)
        return [text dataUsingEncoding:kNativeUTF16];
    return [(NSData *)CFStringCreateExternalRepresentation(nullptr, (CFStringRef)text,
                                                           CFStringGetSystemEncoding(), '?') autorelease];
}

NSString *textOfBytes(NSData *bytes, ScrapFlavorType flavor)
{
    if (flavor == kScrapFlavorTypeUnicode)
        return [[[NSString alloc] initWithData:bytes encoding:kNativeUTF16] autorelease];
    return [(NSString *)CFStringCreateFromExternalRepresentation(nullptr, (CFDataRef)bytes,
                                                                 CFStringGetSystemEncoding()) autorelease];
}

/// What an exception of the pasteboard's server becomes.
template <class Body>
OSStatus onPasteboard(Body &&body)
{
    OSStatus status = internalScrapErr;
    tarvik::attempt([&] {
        if (NSPasteboard *pasteboard = [NSPasteboard generalPasteboard])
            status = body(pasteboard);
    });
    return status;
}

OSStatus copyFlavor(ScrapRef scrap, ScrapFlavorType flavor, NSData *&data)
{
    if (scrap != &gScrap)
        return badScrapRefErr;
    return onPasteboard([&](NSPasteboard *pasteboard) -> OSStatus {
        NSString *type = typeOf(flavor);
        if (![[pasteboard types] containsObject:type])
            return scrapFlavorNotFoundErr;
        if (isText(flavor)) {
            NSString *text = [pasteboard stringForType:type];
            data = text ? bytesOfText(text, flavor) : nil;
        } else {
            data = [pasteboard dataForType:type];
        }
        return data ? OSStatus(noErr) : OSStatus(scrapFlavorNotFoundErr);
    });
}

}  // namespace

OSStatus tarvik::scrapFlavors(std::vector<ScrapFlavorType> &flavors)
{
    return onPasteboard([&](NSPasteboard *pasteboard) -> OSStatus {
        for (NSString *type : each<NSString>([pasteboard types]))
            if (const ScrapFlavorType flavor = flavorOf(type);
                flavor && std::find(flavors.begin(), flavors.end(), flavor) == flavors.end())
                flavors.push_back(flavor);
        return noErr;
    });
}

OSStatus GetCurrentScrap(ScrapRef *outScrap)
{
    if (!outScrap)
        return paramErr;
    return onPasteboard([&](NSPasteboard *) -> OSStatus {
        *outScrap = &gScrap;
        return noErr;
    });
}

OSStatus ClearCurrentScrap(void)
{
    return onPasteboard([](NSPasteboard *pasteboard) -> OSStatus {
        [pasteboard declareTypes:[NSArray array] owner:nil];
        return noErr;
    });
}

OSStatus GetScrapFlavorSize(ScrapRef scrap, ScrapFlavorType flavor, Size *outSize)
{
    if (!outSize)
        return paramErr;
    NSData *data = nil;
    if (const OSStatus error = copyFlavor(scrap, flavor, data))
        return error;
    *outSize = Size([data length]);
    return noErr;
}

OSStatus GetScrapFlavorData(ScrapRef scrap, ScrapFlavorType flavor, Size *byteCount, void *buffer)
{
    if (!byteCount || *byteCount < 0 || (!buffer && *byteCount > 0))
        return paramErr;
    NSData *data = nil;
    if (const OSStatus error = copyFlavor(scrap, flavor, data))
        return error;
    const Size size = Size([data length]);
    if (const Size fits = std::min(size, *byteCount))
        std::memcpy(buffer, [data bytes], size_t(fits));
    *byteCount = size;
    return noErr;
}

OSStatus PutScrapFlavor(ScrapRef scrap, ScrapFlavorType flavor, ScrapFlavorFlags flags, Size size,
                        const void *data)
{
    (void)flags;
    if (scrap != &gScrap)
        return badScrapRefErr;
    if (size < 0)
        return illegalScrapFlavorSizeErr;
    if (!data && size > 0)
        return nilScrapFlavorDataErr;
    return onPasteboard([&](NSPasteboard *pasteboard) -> OSStatus {
        NSData *bytes = [NSData dataWithBytes:data length:size_t(size)];
        NSString *type = typeOf(flavor), *text = isText(flavor) ? textOfBytes(bytes, flavor) : nil;
        if (isText(flavor) && !text)
            return paramErr;
        [pasteboard addTypes:[NSArray arrayWithObject:type] owner:nil];
        const BOOL put =
            text ? [pasteboard setString:text forType:type] : [pasteboard setData:bytes forType:type];
        return put ? OSStatus(noErr) : OSStatus(internalScrapErr);
    });
}

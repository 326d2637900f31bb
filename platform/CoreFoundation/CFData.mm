#include "platform/CoreFoundation/private/Bridging.h"

using namespace tarvik::cf;

CFDataRef CFDataCreate(CFAllocatorRef, const UInt8 *bytes, CFIndex length)
{
    if (length < 0 || (!bytes && length > 0))
        return nullptr;
    return made<CFDataRef>([&] { return [[NSData alloc] initWithBytes:bytes length:NSUInteger(length)]; });
}

CFDataRef CFDataCreateWithBytesNoCopy(CFAllocatorRef, const UInt8 *bytes, CFIndex length,
                                      CFAllocatorRef bytesDeallocator)
{
    if (length < 0 || (!bytes && length > 0))
        return nullptr;
    return made<CFDataRef>([&] {
        return [[NSData alloc] initWithBytesNoCopy:const_cast<UInt8 *>(bytes)
                                            length:NSUInteger(length)
                                      freeWhenDone:bytesDeallocator != kCFAllocatorNull];
    });
}

CFDataRef CFDataCreateCopy(CFAllocatorRef, CFDataRef data)
{
    return made<CFDataRef>([&] { return [ns(data) copy]; });
}

CFMutableDataRef CFDataCreateMutable(CFAllocatorRef, CFIndex)
{
    return made<CFMutableDataRef>([] { return [NSMutableData new]; });
}

CFMutableDataRef CFDataCreateMutableCopy(CFAllocatorRef, CFIndex, CFDataRef data)
{
    return made<CFMutableDataRef>([&] { return [ns(data) mutableCopy]; });
}

CFIndex CFDataGetLength(CFDataRef data) { return CFIndex([ns(data) length]); }
const UInt8 *CFDataGetBytePtr(CFDataRef data) { return static_cast<const UInt8 *>([ns(data) bytes]); }
UInt8 *CFDataGetMutableBytePtr(CFMutableDataRef data)
{
    return static_cast<UInt8 *>([ns(data) mutableBytes]);
}

void CFDataGetBytes(CFDataRef data, CFRange range, UInt8 *buffer)
{
    if (buffer && contains(CFDataGetLength(data), range))
        perform([&] { [ns(data) getBytes:buffer range:nsRange(range)]; });
}

void CFDataSetLength(CFMutableDataRef data, CFIndex length)
{
    if (length >= 0)
        perform([&] { [ns(data) setLength:NSUInteger(length)]; });
}

void CFDataIncreaseLength(CFMutableDataRef data, CFIndex extra)
{
    if (extra >= 0)
        perform([&] { [ns(data) increaseLengthBy:NSUInteger(extra)]; });
}

void CFDataAppendBytes(CFMutableDataRef data, const UInt8 *bytes, CFIndex length)
{
    if (bytes && length > 0)
        perform([&] { [ns(data) appendBytes:bytes length:NSUInteger(length)]; });
}

void CFDataReplaceBytes(CFMutableDataRef data, CFRange range, const UInt8 *bytes, CFIndex length)
{
    if (length >= 0 && (bytes || length == 0) && contains(CFDataGetLength(data), range))
        perform(
            [&] { [ns(data) replaceBytesInRange:nsRange(range) withBytes:bytes length:NSUInteger(length)]; });
}

void CFDataDeleteBytes(CFMutableDataRef data, CFRange range) { CFDataReplaceBytes(data, range, nullptr, 0); }

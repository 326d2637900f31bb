#include "platform/CoreFoundation/private/Bridging.h"

#include <sys/random.h>

#include <cstdlib>
#include <cstring>

using namespace tarvik::cf;

namespace {
NSUUID *uuidObject(CFUUIDRef uuid) { return (NSUUID *)uuid; }
}  // namespace

/// Random (RFC 4122, version 4). gnustep-base's own has its version and variant bits wrong.
CFUUIDRef CFUUIDCreate(CFAllocatorRef allocator)
{
    unsigned char raw[16];
    if (getrandom(raw, sizeof raw, 0) != sizeof raw)  // never so for up to 256 bytes
        abort();
    raw[6] = (raw[6] & 0x0F) | 0x40;
    raw[8] = (raw[8] & 0x3F) | 0x80;
    CFUUIDBytes bytes;
    static_assert(sizeof raw == sizeof bytes);
    memcpy(&bytes, raw, sizeof bytes);
    return CFUUIDCreateFromUUIDBytes(allocator, bytes);
}

CFUUIDRef CFUUIDCreateFromString(CFAllocatorRef, CFStringRef string)
{
    if (!string)
        return nullptr;
    return made<CFUUIDRef>([&] { return [[NSUUID alloc] initWithUUIDString:ns(string)]; });
}

CFUUIDRef CFUUIDCreateFromUUIDBytes(CFAllocatorRef, CFUUIDBytes bytes)
{
    return made<CFUUIDRef>([&] {
        gsuuid_t raw;
        static_assert(sizeof raw == sizeof bytes);
        memcpy(&raw, &bytes, sizeof raw);
        return [[NSUUID alloc] initWithUUIDBytes:raw];
    });
}

CFStringRef CFUUIDCreateString(CFAllocatorRef, CFUUIDRef uuid)
{
    return made<CFStringRef>([&] { return [[[uuidObject(uuid) UUIDString] uppercaseString] copy]; });
}

CFUUIDBytes CFUUIDGetUUIDBytes(CFUUIDRef uuid)
{
    CFUUIDBytes bytes = {};
    if (uuid) {
        gsuuid_t raw;
        [uuidObject(uuid) getUUIDBytes:raw];
        memcpy(&bytes, &raw, sizeof bytes);
    }
    return bytes;
}

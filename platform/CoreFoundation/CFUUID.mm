#include "platform/CoreFoundation/private/Bridging.h"

#include <cstring>

using namespace tarvik::cf;

namespace {
NSUUID *uuidObject(CFUUIDRef uuid) { return (NSUUID *)uuid; }
}  // namespace

CFUUIDRef CFUUIDCreate(CFAllocatorRef)
{
    return made<CFUUIDRef>([] { return [NSUUID new]; });
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

#include <CoreFoundation/CFData.h>
#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFUUID.h>
#include <IOKit/IOKitLib.h>
#include <Tarvik/net/SystemInformation.h>

#include <cstdio>

namespace Utils {

namespace {

constexpr size_t kAddressPosition = 24;  // of the last group in the text of a UUID

/// Matches the machine's primary Ethernet interface. Null when there is nothing to match with.
CFMutableDictionaryRef matchPrimaryInterface()
{
    CFMutableDictionaryRef matching = IOServiceMatching(kIOEthernetInterfaceClass);
    if (!matching) {
        printf("IOServiceMatching returned a NULL dictionary.");
        return nullptr;
    }
    CFMutableDictionaryRef properties = CFDictionaryCreateMutable(
        kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks);
    if (!properties) {
        printf("CFDictionaryCreateMutable returned a NULL dictionary.");
        return matching;
    }
    CFDictionarySetValue(properties, CFSTR(kIOPrimaryInterface), kCFBooleanTrue);
    CFDictionarySetValue(matching, CFSTR(kIOPropertyMatchKey), properties);
    CFRelease(properties);
    return matching;
}

/// The hardware address above an interface, where it has one; the status of the way there.
kern_return_t readAddress(io_object_t interface, UInt8 (&address)[6])
{
    io_object_t controller = IO_OBJECT_NULL;
    const kern_return_t status = IORegistryEntryGetParentEntry(interface, kIOServicePlane, &controller);
    if (status != KERN_SUCCESS) {
        printf("IORegistryEntryGetParentEntry returned 0x%08x\n", unsigned(status));
        return status;
    }
    if (CFTypeRef data =
            IORegistryEntryCreateCFProperty(controller, CFSTR(kIOMACAddress), kCFAllocatorDefault, 0)) {
        CFDataGetBytes(static_cast<CFDataRef>(data), CFRangeMake(0, sizeof address), address);
        CFRelease(data);
    }
    IOObjectRelease(controller);
    return status;
}

}  // namespace

std::string generateGUID()
{
    char text[100] = "";
    if (CFUUIDRef uuid = CFUUIDCreate(kCFAllocatorDefault)) {
        if (CFStringRef string = CFUUIDCreateString(kCFAllocatorDefault, uuid)) {
            CFStringGetCString(string, text, sizeof text, kCFStringEncodingASCII);
            CFRelease(string);
        }
        CFRelease(uuid);
    }

    io_iterator_t interfaces = IO_OBJECT_NULL;
    kern_return_t status =
        IOServiceGetMatchingServices(kIOMasterPortDefault, matchPrimaryInterface(), &interfaces);
    if (status != KERN_SUCCESS) {
        printf("IOServiceGetMatchingServices returned 0x%08x\n", unsigned(status));
        return text;
    }
    UInt8 address[6] = {};
    status = KERN_FAILURE;
    while (const io_object_t interface = IOIteratorNext(interfaces)) {  // the last one decides
        status = readAddress(interface, address);
        IOObjectRelease(interface);
    }
    IOObjectRelease(interfaces);
    if (status == KERN_SUCCESS)
        snprintf(text + kAddressPosition, sizeof text - kAddressPosition, "%02X%02X%02X%02X%02X%02X",
                 address[0], address[1], address[2], address[3], address[4], address[5]);
    return text;
}

}  // namespace Utils

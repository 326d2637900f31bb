// Property lists from outside: whatever is read can be written, and reads back as the same.
#import <Foundation/Foundation.h>

#include <CoreFoundation/CFPropertyList.h>

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size)
{
    CFDataRef data = CFDataCreate(nullptr, bytes, CFIndex(size));
    CFStringRef error = nullptr;
    CFPropertyListRef list = CFPropertyListCreateFromXMLData(nullptr, data, size % 3, &error);
    if ((list == nullptr) == (error == nullptr))
        abort();
    if (list) {
        CFDataRef xml = CFPropertyListCreateXMLData(nullptr, list);
        CFPropertyListRef again =
            xml ? CFPropertyListCreateFromXMLData(nullptr, xml, kCFPropertyListImmutable, nullptr) : nullptr;
        CFDataRef xmlAgain = again ? CFPropertyListCreateXMLData(nullptr, again) : nullptr;
        if (!xmlAgain || !CFEqual(xml, xmlAgain))
            abort();
        CFRelease(xmlAgain);
        CFRelease(again);
        CFRelease(xml);
    }
    CFRelease(list);
    CFRelease(error);
    CFRelease(data);
    return 0;
}

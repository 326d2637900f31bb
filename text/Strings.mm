#include <Carbon/Files.h>
#include <CoreFoundation/CFString.h>
#import <Foundation/Foundation.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/text/Strings.h>

#include <cstring>

BOOL NSStringIsVoid(NSString *string) { return [string length] == 0; }

BOOL NSStringIsEqual(NSString *string, NSString *other)
{
    return string && other && [string isEqualToString:other];
}

Boolean CFStringIsVoid(CFStringRef string)
{
    return !string || CFGetTypeID(string) != CFStringGetTypeID() || CFStringGetLength(string) == 0;
}

Boolean CFStringIsExist(CFStringRef path)
{
    const auto bytes = tarvik::utf8((NSString *)path);
    // The platform's call ends at a zero byte, where another item might be.
    if (!bytes || bytes->find('\0') != std::string::npos)
        return false;
    FSRef reference;
    return FSPathMakeRef(reinterpret_cast<const UInt8 *>(bytes->c_str()), &reference, nullptr) == noErr;
}

Boolean PascalStringCopy(StringPtr destination, ConstStringPtr source)
{
    if (!destination || !source)
        return false;
    std::memmove(destination, source, size_t(source[0]) + 1);
    return true;
}

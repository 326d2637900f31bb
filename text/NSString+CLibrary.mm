#include <CoreFoundation/CFBundle.h>
#import <Foundation/Foundation.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/text/NSString+CLibrary.h>

#include "core/private/VaList.h"
#include "text/private/OwnText.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

@implementation NSString (FoundationXCLibrary)

- (int)system
{
    const auto command = tarvik::ownText(self);
    return command ? std::system(command->c_str()) : -1;
}

- (int)setenv:(const char *)value overwrite:(int)overwrite
{
    const auto name = tarvik::ownText(self);
    return name && value ? ::setenv(name->c_str(), value, overwrite) : -1;
}

- (int)sscanf:(const char *)format, ...
{
    va_list arguments;
    va_start(arguments, format);
    const int count = [self vsscanf:format arguments:arguments];
    va_end(arguments);
    return count;
}

- (int)vsscanf:(const char *)format arguments:(va_list)arguments
{
    const auto text = tarvik::ownText(self);
    return text && format && !tarvik::isAbsent(arguments) ? std::vsscanf(text->c_str(), format, arguments)
                                                          : -1;
}

- (char *)allocUTF8String
{
    const auto text = tarvik::ownText(self);
    auto *buffer = text ? static_cast<char *>(std::calloc(1, text->size() + 1)) : nullptr;
    if (buffer)
        std::memcpy(buffer, text->data(), text->size());
    return buffer;
}

- (BOOL)getUTF8String:(char *)buffer maxLength:(uint32_t)size
{
    const auto text = tarvik::ownText(self);
    if (!text || !buffer || size == 0)
        return NO;
    const size_t count = std::min<size_t>(text->size(), size - 1);
    std::memcpy(buffer, text->data(), count);
    buffer[count] = 0;
    return count == text->size();
}

- (CFBundleRef)createCFBundle
{
    CFURLRef url =
        CFURLCreateWithFileSystemPath(kCFAllocatorDefault, (CFStringRef)self, kCFURLPOSIXPathStyle, true);
    CFBundleRef bundle = CFBundleCreate(kCFAllocatorDefault, url);
    CFRelease(url);
    return bundle;
}

@end

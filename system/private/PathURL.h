// File URLs from narrow paths.
#pragma once
#include <CoreFoundation/CFURL.h>

#include <string>

/// A POSIX-style file URL from a path in UTF-8, owned; null when the path is not UTF-8.
inline CFURLRef createPathURL(const std::string &path, bool isDirectory)
{
    CFStringRef text = CFStringCreateWithCString(kCFAllocatorDefault, path.c_str(), kCFStringEncodingUTF8);
    if (!text)
        return nullptr;
    CFURLRef url =
        CFURLCreateWithFileSystemPath(kCFAllocatorDefault, text, kCFURLPOSIXPathStyle, isDirectory);
    CFRelease(text);
    return url;
}

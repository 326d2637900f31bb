#include <Tarvik/text/CStringConversion.h>

#include <cstdlib>

char *CFStringAllocCString(CFStringRef string, CFStringEncoding encoding)
{
    if (!string)
        return nullptr;
    const CFIndex size = 2 * CFStringGetLength(string) + 1;
    auto *text = static_cast<char *>(std::calloc(1, size_t(size)));
    if (text && !CFStringGetCString(string, text, size, encoding)) {
        std::free(text);
        return nullptr;
    }
    return text;
}

char *CFStringAllocConvertableCString(CFStringRef string)
{
    if (char *text = CFStringAllocCString(string, CFStringGetSystemEncoding()))
        return text;
    const CFStringEncoding *encoding = CFStringGetListOfAvailableEncodings();
    for (; encoding && *encoding != kCFStringEncodingInvalidId; ++encoding) {
        if (char *text = CFStringAllocCString(string, *encoding))
            return text;
    }
    return nullptr;
}

#include <Carbon/Gestalt.h>
#include <CoreFoundation/CFLocaleEnvironment.h>
#include <CoreFoundation/CFSystemVersion.h>
#import <Foundation/Foundation.h>
#include <Tarvik/net/SystemInformation.h>
#include <Tarvik/support/Pool.h>
#include <Tarvik/support/Retained.h>

namespace Utils {

namespace {

/// "ProductVersion" of the system's version file; nil when it is not known.
NSString *productVersion()
{
    const auto version = tarvik::adopt((NSDictionary *)CFCopySystemVersionDictionary());
    return [[[version.get() objectForKey:@"ProductVersion"] retain] autorelease];
}

/// Up to the first NUL.
wstring plainText(NSString *text)
{
    wstring wide = nsstring2wstring(text);
    wide.resize(std::min(wide.find(L'\0'), wide.size()));
    return wide;
}

/// What a Gestalt selector answers; 0 when it fails.
SInt32 gestalt(OSType selector)
{
    SInt32 response = 0;
    return Gestalt(selector, &response) == noErr ? response : 0;
}

}  // namespace

wstring getOsName()
{
    static wstring cache;
    tarvik::Pool pool;
    if (cache.empty()) {
        if (NSString *version = productVersion())
            cache = nsstring2wstring([NSString stringWithFormat:@"Apple MacOS %@", version]);
    }
    return cache;
}

wstring getOsVersion()
{
    static wstring cache;
    tarvik::Pool pool;
    if (cache.empty())
        cache = nsstring2wstring(productVersion());
    return cache;
}

uint32_t getOsBuildNumber() { return uint32_t(gestalt(gestaltSystemVersion)); }

wstring getCountry()
{
    tarvik::Pool pool;
    NSString *locale = [[NSUserDefaults standardUserDefaults] stringForKey:@"AppleLocale"];
    if (!locale)
        locale = [(NSString *)CFLocaleCopyEnvironmentIdentifier() autorelease];
    const wstring text = plainText(locale);
    const size_t separator = text.find(L'_');
    if (separator == wstring::npos)
        return text;
    return separator + 1 < text.size() ? text.substr(separator + 1) : text.substr(0, separator);
}

wstring getLanguage()
{
    tarvik::Pool pool;
    NSArray *languages = [[NSUserDefaults standardUserDefaults] arrayForKey:@"AppleLanguages"];
    if (!languages)
        languages = [(NSArray *)CFLocaleCopyEnvironmentLanguages() autorelease];
    NSString *first = [languages count] ? [languages objectAtIndex:0] : nil;
    return [first isKindOfClass:[NSString class]] ? plainText(first) : wstring();
}

wstring getProcessorType()
{
    switch (gestalt(gestaltSysArchitecture)) {
    case gestalt68k: return L"68k";
    case gestaltPowerPC: return L"PowerPC";
    default: return L"Intel";
    }
}

}  // namespace Utils

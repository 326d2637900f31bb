#include <CoreFoundation/CFNumber.h>
#include <CoreFoundation/CFString.h>
#import <Foundation/Foundation.h>
#include <SystemConfiguration/SystemConfiguration.h>
#include <Tarvik/core/Assert.h>
#include <Tarvik/net/CommunicationLibrary.h>
#include <Tarvik/net/FileLog.h>
#include <Tarvik/support/ArrayRange.h>
#include <Tarvik/support/Bridge.h>
#include <Tarvik/support/Handle.h>
#include <Tarvik/support/Pool.h>

#include <optional>
#include <string_view>

namespace
{

struct ProxiesTraits {
    using Value = CFDictionaryRef;
    static Value empty() { return nullptr; }
    static void close(Value dictionary) { CFRelease(dictionary); }
};
using Proxies = tarvik::Handle<ProxiesTraits>;

/// A value of the dictionary; null when it is absent or of another type.
CFTypeRef valueOfType(const Proxies &proxies, CFStringRef key, CFTypeID type)
{
    CFTypeRef value = CFDictionaryGetValue(proxies.get(), key);
    return value && CFGetTypeID(value) == type ? value : nullptr;
}

std::optional<int32_t> number(const Proxies &proxies, CFStringRef key)
{
    const auto value = static_cast<CFNumberRef>(valueOfType(proxies, key, CFNumberGetTypeID()));
    int32_t result = 0;
    if (!value || !CFNumberGetValue(value, kCFNumberSInt32Type, &result))
        return std::nullopt;
    return result;
}

bool isSet(const Proxies &proxies, CFStringRef enable) { return number(proxies, enable).value_or(0) != 0; }

bool readServer(CFStringRef enable, CFStringRef hostKey, CFStringRef portKey, char *host,
                unsigned long hostSize, unsigned short *port)
{
    const Proxies proxies(SCDynamicStoreCopyProxies(nullptr));
    if (proxies && isSet(proxies, enable)) {
        const auto name = static_cast<CFStringRef>(valueOfType(proxies, hostKey, CFStringGetTypeID()));
        const std::optional<int32_t> value = number(proxies, portKey);
        if (name && value && CFStringGetCString(name, host, CFIndex(hostSize), kCFStringEncodingASCII)) {
            *port = static_cast<unsigned short>(*value);
            return true;
        }
    }
    if (hostSize > 0)
        *host = 0;
    *port = 0;
    return false;
}

/// By address: an entry, less one "*" at its end, is a prefix.
bool isExceptedByAddress(NSArray *exceptions, NSString *address)
{
    for (NSString *entry : tarvik::each<NSString>(exceptions)) {
        if ([entry hasSuffix:@"*"])
            entry = [entry substringToIndex:[entry length] - 1];
        if ([entry length] && [address hasPrefix:entry])
            return true;
    }
    return false;
}

/// By name: an entry, which keeps its "*", is the name itself or a domain that it lies in.
bool isExceptedByName(NSArray *exceptions, NSString *name)
{
    for (NSString *entry : tarvik::each<NSString>(exceptions)) {
        if (![name hasSuffix:entry])
            continue;
        if ([name length] == [entry length])
            return true;
        if (![entry hasPrefix:@"."])
            entry = [NSString stringWithFormat:@".%@", entry];
        if ([name hasSuffix:entry])
            return true;
    }
    return false;
}

}  // namespace

bool CommunicationLibrary::GetHTTPProxySetting(char *host, unsigned long hostSize, unsigned short *port)
{
    TARVIK_ASSERT_IN("CommunicationLibraryImpl", host != NULL);
    TARVIK_ASSERT_IN("CommunicationLibraryImpl", port != NULL);
    return readServer(kSCPropNetProxiesHTTPEnable, kSCPropNetProxiesHTTPProxy, kSCPropNetProxiesHTTPPort,
                      host, hostSize, port);
}

bool CommunicationLibrary::GetHTTPSProxySetting(char *host, unsigned long hostSize, unsigned short *port)
{
    TARVIK_ASSERT_IN("CommunicationLibraryImpl", host != NULL);
    TARVIK_ASSERT_IN("CommunicationLibraryImpl", port != NULL);
    return readServer(kSCPropNetProxiesHTTPSEnable, kSCPropNetProxiesHTTPSProxy, kSCPropNetProxiesHTTPSPort,
                      host, hostSize, port);
}

bool CommunicationLibrary::IsProxyRequiredFor(const char *url)
{
    tarvik::Pool pool;
    if (!url)
        return false;
    NSString *text = tarvik::nsstring(url);
    NSURL *destination = text ? [NSURL URLWithString:text] : nil;
    const Proxies proxies(SCDynamicStoreCopyProxies(nullptr));
    if (!proxies)
        return false;

    // The scheme as it is written: NSURL's own has most of its letters in lower case.
    const std::string_view written = destination ? url : "";
    const std::string_view scheme = written.substr(0, written.find(':'));
    CFStringRef enable = nullptr;
    if (scheme == "http")
        enable = kSCPropNetProxiesHTTPEnable;
    else if (scheme == "https")
        enable = kSCPropNetProxiesHTTPSEnable;
    if (!enable) {
        Utils::LogMessage("Commlib, eronate url sheme, not HTTP or HTTPS");
        return false;
    }
    if (!isSet(proxies, enable))
        return false;

    id exceptions = (id)CFDictionaryGetValue(proxies.get(), kSCPropNetProxiesExceptionsList);
    if (!exceptions)
        return true;
    NSString *hostName = [destination host];
    NSHost *host = [NSHost hostWithAddress:hostName];
    if (!host)
        host = [NSHost hostWithName:hostName];
    if (!host || ![exceptions isKindOfClass:[NSArray class]])
        return false;
    return !isExceptedByAddress(exceptions, [host address]) && !isExceptedByName(exceptions, [host name]);
}

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

namespace {

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

/// The entry that excepts a host by address: less one "*" at its end, it is a prefix. nil when none does.
NSString *exceptionByAddress(NSArray *exceptions, NSString *address)
{
    for (NSString *stored : tarvik::each<NSString>(exceptions)) {
        NSString *entry = [stored hasSuffix:@"*"] ? [stored substringToIndex:[stored length] - 1] : stored;
        if ([entry length] && [address hasPrefix:entry])
            return stored;
    }
    return nil;
}

/// The entry that excepts a host by name: with its "*", it is the name itself or a domain that it lies in.
/// nil when none does.
NSString *exceptionByName(NSArray *exceptions, NSString *name)
{
    for (NSString *stored : tarvik::each<NSString>(exceptions)) {
        if (![name hasSuffix:stored])
            continue;
        if ([name length] == [stored length])
            return stored;
        NSString *domain = [stored hasPrefix:@"."] ? stored : [NSString stringWithFormat:@".%@", stored];
        if ([name hasSuffix:domain])
            return stored;
    }
    return nil;
}

/// "its address 10.0.0.5 is excepted by '10.0.0.*'"
std::string exceptedBy(const char *what, NSString *which, NSString *entry)
{
    return tarvik::utf8([NSString stringWithFormat:@"its %s %@ is excepted by '%@'", what, which, entry])
        .value_or("");
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
    std::string rule;
    return IsProxyRequiredFor(url, rule);
}

bool CommunicationLibrary::IsProxyRequiredFor(const char *url, std::string &rule)
{
    tarvik::Pool pool;
    const auto decide = [&](bool isRequired, std::string why) {
        rule = std::move(why);
        return isRequired;
    };
    if (!url)
        return decide(false, "there is no URL");
    NSString *text = tarvik::nsstring(url);
    NSURL *destination = text ? [NSURL URLWithString:text] : nil;
    const Proxies proxies(SCDynamicStoreCopyProxies(nullptr));
    if (!proxies)
        return decide(false, "the system has no proxy settings");

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
        return decide(false, "neither an http nor an https URL");
    }
    if (!isSet(proxies, enable))
        return decide(false, "no proxy is set for " + std::string(scheme));

    id exceptions = (id)CFDictionaryGetValue(proxies.get(), kSCPropNetProxiesExceptionsList);
    if (!exceptions)
        return decide(true, "no exceptions are set");
    NSString *hostName = [destination host];
    NSHost *host = [NSHost hostWithAddress:hostName];
    if (!host)
        host = [NSHost hostWithName:hostName];
    if (!host)
        return decide(false, "its host can't be looked up");
    if (![exceptions isKindOfClass:[NSArray class]])
        return decide(false, "the exceptions are no list");
    if (NSString *entry = exceptionByAddress(exceptions, [host address]))
        return decide(false, exceptedBy("address", [host address], entry));
    if (NSString *entry = exceptionByName(exceptions, [host name]))
        return decide(false, exceptedBy("name", [host name], entry));
    return decide(true, "no exception applies");
}

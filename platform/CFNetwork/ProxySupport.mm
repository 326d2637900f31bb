#include <CFNetwork/CFProxySupport.h>
#include <SystemConfiguration/SystemConfiguration.h>

#include "../SystemConfiguration/ProxySettings.h"

#import <Foundation/Foundation.h>
#include <Tarvik/support/ArrayRange.h>
#include <Tarvik/support/Bridge.h>
#include <Tarvik/support/Pool.h>

#define KEY(name) const CFStringRef name = (CFStringRef) @ #name
KEY(kCFProxyTypeKey);
KEY(kCFProxyHostNameKey);
KEY(kCFProxyPortNumberKey);
KEY(kCFProxyTypeNone);
KEY(kCFProxyTypeHTTP);
KEY(kCFProxyTypeHTTPS);
#undef KEY

namespace {

/// A value of the dictionary; nil when it is absent or of another class.
template <class Kind>
Kind *value(CFDictionaryRef settings, CFStringRef key)
{
    id found = [(NSDictionary *)settings objectForKey:(NSString *)key];
    return [found isKindOfClass:[Kind class]] ? found : nil;
}

std::optional<proxies::Server> server(CFDictionaryRef settings, CFStringRef enable, CFStringRef host,
                                      CFStringRef port)
{
    NSString *name = value<NSString>(settings, host);
    if (![value<NSNumber>(settings, enable) intValue] || !name)
        return std::nullopt;
    proxies::Server result;
    result.host = tarvik::utf8(name).value_or("");
    result.port = uint16_t([value<NSNumber>(settings, port) intValue]);
    return result;
}

}  // namespace

CFArrayRef CFNetworkCopyProxiesForURL(CFURLRef url, CFDictionaryRef given)
{
    if (!url || !given)
        return nullptr;
    tarvik::Pool pool;
    proxies::Settings settings;
    settings.http =
        server(given, kSCPropNetProxiesHTTPEnable, kSCPropNetProxiesHTTPProxy, kSCPropNetProxiesHTTPPort);
    settings.https =
        server(given, kSCPropNetProxiesHTTPSEnable, kSCPropNetProxiesHTTPSProxy, kSCPropNetProxiesHTTPSPort);
    if (NSArray *entries = value<NSArray>(given, kSCPropNetProxiesExceptionsList)) {
        settings.exceptions.emplace();
        for (id entry : tarvik::each<NSObject>(entries)) {
            if ([entry isKindOfClass:[NSString class]])
                settings.exceptions->push_back(tarvik::utf8((NSString *)entry).value_or(""));
        }
    }
    NSString *scheme = [[(NSURL *)url scheme] lowercaseString];
    const bool isHTTPS = [scheme isEqual:@"https"];
    std::optional<proxies::Server> proxy;
    if (isHTTPS || [scheme isEqual:@"http"])
        proxy = proxies::forHost(settings, isHTTPS ? "https" : "http",
                                 tarvik::utf8([(NSURL *)url host]).value_or(""));
    NSMutableDictionary *result = [NSMutableDictionary dictionaryWithObject:(id)(!proxy    ? kCFProxyTypeNone
                                                                                 : isHTTPS ? kCFProxyTypeHTTPS
                                                                                           : kCFProxyTypeHTTP)
                                                                     forKey:(NSString *)kCFProxyTypeKey];
    if (proxy) {
        [result setObject:tarvik::nsstring(proxy->host) forKey:(NSString *)kCFProxyHostNameKey];
        [result setObject:[NSNumber numberWithInt:proxy->port] forKey:(NSString *)kCFProxyPortNumberKey];
    }
    return (CFArrayRef)[[NSArray alloc] initWithObjects:result, nil];
}

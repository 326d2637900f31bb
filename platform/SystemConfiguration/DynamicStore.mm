#include <SystemConfiguration/SystemConfiguration.h>

#include "ProxySettings.h"

#import <Foundation/Foundation.h>
#include <Tarvik/support/Bridge.h>
#include <Tarvik/support/Pool.h>

#define KEY(name, text) const CFStringRef name = (CFStringRef) @text
KEY(kSCPropNetProxiesHTTPEnable, "HTTPEnable");
KEY(kSCPropNetProxiesHTTPProxy, "HTTPProxy");
KEY(kSCPropNetProxiesHTTPPort, "HTTPPort");
KEY(kSCPropNetProxiesHTTPSEnable, "HTTPSEnable");
KEY(kSCPropNetProxiesHTTPSProxy, "HTTPSProxy");
KEY(kSCPropNetProxiesHTTPSPort, "HTTPSPort");
KEY(kSCPropNetProxiesExceptionsList, "ExceptionsList");
KEY(kSCPropNetProxiesProxyAutoConfigEnable, "ProxyAutoConfigEnable");
KEY(kSCPropNetProxiesProxyAutoConfigURLString, "ProxyAutoConfigURLString");
#undef KEY

static void put(NSMutableDictionary *dictionary, CFStringRef key, id value)
{
    if (value)
        [dictionary setObject:value forKey:(NSString *)key];
}

static void putServer(NSMutableDictionary *dictionary, const std::optional<proxies::Server> &server,
                      CFStringRef enable, CFStringRef host, CFStringRef port)
{
    NSString *name = server ? tarvik::nsstring(server->host) : nil;
    put(dictionary, enable, [NSNumber numberWithInt:name ? 1 : 0]);
    if (!name)
        return;
    put(dictionary, host, name);
    put(dictionary, port, [NSNumber numberWithInt:server->port]);
}

CFDictionaryRef SCDynamicStoreCopyProxies(SCDynamicStoreRef)
{
    tarvik::Pool pool;
    const proxies::Settings settings = proxies::current();
    NSMutableDictionary *result = [[NSMutableDictionary alloc] init];
    putServer(result, settings.http, kSCPropNetProxiesHTTPEnable, kSCPropNetProxiesHTTPProxy,
              kSCPropNetProxiesHTTPPort);
    putServer(result, settings.https, kSCPropNetProxiesHTTPSEnable, kSCPropNetProxiesHTTPSProxy,
              kSCPropNetProxiesHTTPSPort);
    if (settings.exceptions) {
        NSMutableArray *entries = [NSMutableArray array];
        for (const std::string &entry : *settings.exceptions) {
            if (NSString *text = tarvik::nsstring(entry))
                [entries addObject:text];
        }
        put(result, kSCPropNetProxiesExceptionsList, entries);
    }
    if (!settings.autoConfigURL.empty()) {
        put(result, kSCPropNetProxiesProxyAutoConfigEnable, [NSNumber numberWithInt:1]);
        put(result, kSCPropNetProxiesProxyAutoConfigURLString, tarvik::nsstring(settings.autoConfigURL));
    }
    return (CFDictionaryRef)result;
}

/// \file
/// Which proxy carries a URL.
///
///     CFDictionaryRef settings = SCDynamicStoreCopyProxies(NULL);
///     CFArrayRef proxies = CFNetworkCopyProxiesForURL(url, settings);   // of dictionaries, at least one
///
/// The exceptions of the settings are compared with the URL's host as it is written; nothing is looked up. It is the
/// answer that URL loading goes by. Thread: any.
#pragma once
#include <CoreFoundation/CFArray.h>
#include <CoreFoundation/CFDictionary.h>
#include <CoreFoundation/CFString.h>
#include <CoreFoundation/CFURL.h>

#ifdef __cplusplus
extern "C" {
#endif

extern const CFStringRef kCFProxyTypeKey;        ///< one of the types below
extern const CFStringRef kCFProxyHostNameKey;    ///< string, not for kCFProxyTypeNone
extern const CFStringRef kCFProxyPortNumberKey;  ///< number, not for kCFProxyTypeNone

extern const CFStringRef kCFProxyTypeNone;   ///< the way is direct
extern const CFStringRef kCFProxyTypeHTTP;   ///< the proxy is asked for the URL
extern const CFStringRef kCFProxyTypeHTTPS;  ///< the proxy is asked for a tunnel to the host

/// The proxies for a URL under the given settings (SCDynamicStoreCopyProxies), in order of preference: one, as the
/// settings have one for each scheme. Owned by the caller; null for a null argument.
CFArrayRef CFNetworkCopyProxiesForURL(CFURLRef url, CFDictionaryRef proxySettings);

#ifdef __cplusplus
}
#endif

// Proxy settings from the environment, as anybody may have written them: three
// lines, the proxy, the exceptions and a host. What is handed out as a host is
// safe to stand in a command line, and never holds the credentials.
#include <CFNetwork/CFProxySupport.h>
#include <SystemConfiguration/SystemConfiguration.h>
#include <Tarvik/net/CommunicationLibrary.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    std::string text(reinterpret_cast<const char *>(data), size);
    for (char &c : text)
        c = c ? c : ' ';
    const size_t first = std::min(text.find('\n'), text.size());
    const size_t second = std::min(text.find('\n', std::min(first + 1, text.size())), text.size());
    const std::string exceptions = second > first ? text.substr(first + 1, second - first - 1) : "";
    setenv("http_proxy", text.substr(0, first).c_str(), 1);
    unsetenv("no_proxy");

    char host[150];
    unsigned short port = 0;
    if (CommunicationLibrary::GetHTTPProxySetting(host, sizeof host, &port)) {
        if (!*host || !port)
            std::abort();
        for (const char *c = host; *c; ++c) {
            if (!isalnum(static_cast<unsigned char>(*c)) && !strchr("-._:%", *c))
                std::abort();
        }
        if (!CommunicationLibrary::IsProxyRequiredFor("http://127.0.0.1/"))
            std::abort();
    } else if (*host || port) {
        std::abort();
    }
    // Without an exception nothing is looked up, so any URL will do; with some,
    // only the one that looks nothing up.
    const std::string rest = second < text.size() ? text.substr(second + 1) : "";
    CommunicationLibrary::IsProxyRequiredFor(rest.c_str());
    setenv("no_proxy", exceptions.c_str(), 1);
    CFDictionaryRef settings = SCDynamicStoreCopyProxies(nullptr);
    const std::string whole = "http://" + CommunicationLibrary::EncodeUrl(rest) + "/";
    CFStringRef string = CFStringCreateWithCString(nullptr, whole.c_str(), kCFStringEncodingUTF8);
    if (CFURLRef url = CFURLCreateWithString(nullptr, string, nullptr)) {
        CFArrayRef proxies = CFNetworkCopyProxiesForURL(url, settings);
        if (!proxies || CFArrayGetCount(proxies) != 1)
            std::abort();
        CFRelease(proxies);
        CFRelease(url);
    }
    CFRelease(string);
    CFRelease(settings);
    return 0;
}

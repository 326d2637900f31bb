#include "Command.h"
#include "ObjectiveC.h"
#include "Streams.h"

#include <SystemConfiguration/SystemConfiguration.h>
#include <Tarvik/Tarvik.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Retained.h>

namespace {

std::string server(bool isHTTPS)
{
    char host[150];
    unsigned short port = 0;
    const bool isSet = isHTTPS ? CommunicationLibrary::GetHTTPSProxySetting(host, sizeof host, &port)
                               : CommunicationLibrary::GetHTTPProxySetting(host, sizeof host, &port);
    return isSet ? std::string(host).append(":").append(std::to_string(port)) : "none";
}

void printSettings()
{
    const auto settings = tarvik::adopt((NSDictionary *)SCDynamicStoreCopyProxies(nullptr));
    writeOutput("http:        " + server(false) + "\nhttps:       " + server(true) + "\n");
    std::string exceptions;
    for (NSString *entry :
         tarvik::each<NSString>([settings.get() objectForKey:(NSString *)kSCPropNetProxiesExceptionsList]))
        exceptions += (exceptions.empty() ? "" : ", ") + utf8Of(entry);
    writeOutput("exceptions:  " + (exceptions.empty() ? "none" : exceptions) + "\n");
    NSString *script = [settings.get() objectForKey:(NSString *)kSCPropNetProxiesProxyAutoConfigURLString];
    if (script)
        writeOutput("script:      " + utf8Of(script) + " (not run)\n");
}

int run(const Arguments &arguments)
{
    if (arguments.rest().empty())
        printSettings();
    for (const std::string &url : arguments.rest()) {
        std::string rule;
        const bool isRequired = CommunicationLibrary::IsProxyRequiredFor(url.c_str(), rule);
        const std::string way = isRequired ? "proxy " + server(url.starts_with("https:")) : "direct";
        writeOutput(url + ": " + way + " (" + rule + ")\n");
    }
    return kSuccess;
}

const Registration registration({
    .name = "proxy",
    .summary = "the proxy settings, and whether a URL needs a proxy",
    .usage = "[URL]...",
    .details =
        "Prints the proxies that the system is set to use: the desktop's where it sets one, else those of "
        "http_proxy,\n"
        "https_proxy and no_proxy. With URLs, prints for each whether it needs the proxy, and the rule that "
        "decides it.\n"
        "With exceptions set, the URL's host is looked up: they apply to its first address and to its "
        "name.\n\n"
        "Examples:\n"
        "  tarvik proxy\n"
        "  tarvik proxy http://intranet.example/ https://www.debian.org/",
    .run = inPool(run),
});

}  // namespace

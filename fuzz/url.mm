// URLs from outside: two lines, a URL and a Location that it answers with. A
// redirect leads to http or https or nowhere, and encoded text holds nothing
// but what is allowed.
#import <Foundation/Foundation.h>
#include <Tarvik/net/CommunicationLibrary.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Pool.h>
#import <platform/Foundation/HTTPRedirects.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    tarvik::Pool pool;
    const std::string text(reinterpret_cast<const char *>(data), size);
    const size_t end = std::min(text.find('\n'), text.size());
    const std::string location = end < text.size() ? text.substr(end + 1) : "";

    NSString *string = tarvik::nsstring(text.substr(0, end));
    NSURL *base = string ? [NSURL URLWithString:string] : nil;
    if ([[base scheme] isEqual:@"http"] && [[base host] length]) {
        NSURL *next = HTTPResolvedLocation(base, location);
        if (next && ![[next scheme] isEqual:@"http"] && ![[next scheme] isEqual:@"https"])
            std::abort();
        if (next && ![[next host] length])
            std::abort();
    }
    for (const std::string &encoded :
         {CommunicationLibrary::EncodeUrl(text), CommunicationLibrary::EncodeFormValue(text)}) {
        for (const char c : encoded) {
            if (!isalnum(static_cast<unsigned char>(c)) && (!c || !strchr("-_.+!*'(),;/?:@=&%", c)))
                std::abort();
        }
    }
    return 0;
}

#include "HTTPCaching.h"

#include <curl/curl.h>
#include <strings.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>

static NSString *const kStoredDate = @"HTTPStoredDate";

static std::string field(NSHTTPURLResponse *response, NSString *name)
{
    const char *text = [[[response allHeaderFields] objectForKey:name] UTF8String];
    return text ? text : "";
}

/// The value of a Cache-Control directive: empty text for a bare one, nothing when absent.
static std::optional<std::string> directive(std::string_view control, std::string_view name)
{
    while (!control.empty()) {
        const size_t comma = std::min(control.find(','), control.size());
        std::string_view part = control.substr(0, comma);
        control.remove_prefix(std::min(comma + 1, control.size()));
        while (part.starts_with(' ') || part.starts_with('\t'))
            part.remove_prefix(1);
        while (part.ends_with(' ') || part.ends_with('\t'))
            part.remove_suffix(1);
        const size_t equals = std::min(part.find('='), part.size());
        if (equals != name.size() || strncasecmp(part.data(), name.data(), name.size()) != 0)
            continue;
        return std::string(part.substr(std::min(equals + 1, part.size())));
    }
    return std::nullopt;
}

static BOOL isFresh(NSCachedURLResponse *stored)
{
    NSHTTPURLResponse *response = static_cast<NSHTTPURLResponse *>([stored response]);
    NSDate *date = [[stored userInfo] objectForKey:kStoredDate];
    if (!date || ![response isKindOfClass:[NSHTTPURLResponse class]])
        return NO;
    const std::string control = field(response, @"Cache-Control");
    if (directive(control, "no-cache"))
        return NO;
    const double age = -[date timeIntervalSinceNow] + atof(field(response, @"Age").c_str());
    if (auto limit = directive(control, "max-age"))
        return age < atof(limit->c_str());
    const time_t expires = curl_getdate(field(response, @"Expires").c_str(), nullptr);
    const time_t sent = curl_getdate(field(response, @"Date").c_str(), nullptr);
    return expires != -1 && sent != -1 && age < difftime(expires, sent);
}

CacheUse HTTPCacheUse(NSURLRequest *request, NSCachedURLResponse *stored)
{
    const BOOL isGet = [[request HTTPMethod] isEqualToString:@"GET"];
    if (!isGet)
        stored = nil;
    switch ([request cachePolicy]) {
    case NSURLRequestReturnCacheDataElseLoad: return stored ? CacheUse::serve : CacheUse::load;
    case NSURLRequestReturnCacheDataDontLoad: return stored ? CacheUse::serve : CacheUse::refuse;
    case NSURLRequestReloadRevalidatingCacheData: return stored ? CacheUse::revalidate : CacheUse::load;
    case NSURLRequestUseProtocolCachePolicy:
        if (!stored)
            return CacheUse::load;
        return isFresh(stored) ? CacheUse::serve : CacheUse::revalidate;
    default: return CacheUse::load;
    }
}

void HTTPAddCacheFields(NSMutableURLRequest *request, NSCachedURLResponse *stored)
{
    const NSURLRequestCachePolicy policy = [request cachePolicy];
    if (policy == NSURLRequestReloadIgnoringLocalCacheData ||
        policy == NSURLRequestReloadIgnoringLocalAndRemoteCacheData) {
        if (![request valueForHTTPHeaderField:@"Cache-Control"])
            [request setValue:@"no-cache" forHTTPHeaderField:@"Cache-Control"];
        if (![request valueForHTTPHeaderField:@"Pragma"])
            [request setValue:@"no-cache" forHTTPHeaderField:@"Pragma"];
    }
    NSHTTPURLResponse *response = static_cast<NSHTTPURLResponse *>([stored response]);
    if (![response isKindOfClass:[NSHTTPURLResponse class]])
        return;
    if (NSString *tag = [[response allHeaderFields] objectForKey:@"ETag"])
        [request setValue:tag forHTTPHeaderField:@"If-None-Match"];
    if (NSString *date = [[response allHeaderFields] objectForKey:@"Last-Modified"])
        [request setValue:date forHTTPHeaderField:@"If-Modified-Since"];
}

BOOL HTTPMayStore(NSURLRequest *request, NSHTTPURLResponse *response)
{
    if (![[request HTTPMethod] isEqualToString:@"GET"] || [response statusCode] != 200)
        return NO;
    if ([request valueForHTTPHeaderField:@"Authorization"] || [request valueForHTTPHeaderField:@"Range"])
        return NO;
    if (NSString *asked = [request valueForHTTPHeaderField:@"Cache-Control"])
        if (directive([asked UTF8String], "no-store"))
            return NO;
    const std::string control = field(response, @"Cache-Control");
    const std::string vary = field(response, @"Vary");
    if (directive(control, "no-store") || (!vary.empty() && strcasecmp(vary.c_str(), "Accept-Encoding") != 0))
        return NO;
    // Without either of these a stored copy could be neither used nor revalidated.
    return directive(control, "max-age") || !field(response, @"Expires").empty() ||
           !field(response, @"ETag").empty() || !field(response, @"Last-Modified").empty();
}

NSCachedURLResponse *HTTPStoredResponse(NSURLResponse *response, NSData *body)
{
    NSDictionary *stamp = [NSDictionary dictionaryWithObject:[NSDate date] forKey:kStoredDate];
    return [[[NSCachedURLResponse alloc] initWithResponse:response
                                                     data:body
                                                 userInfo:stamp
                                            storagePolicy:NSURLCacheStorageAllowedInMemoryOnly] autorelease];
}

#include "HTTPRedirects.h"

#include "LoadedHTTPResponse.h"

#include <curl/curl.h>
#include <strings.h>

#include <algorithm>
#include <initializer_list>

static NSString *const kRedirectCount = @"HTTPRedirectCount";

NSURL *HTTPResolvedLocation(NSURL *base, const std::string &location)
{
    NSURL *result = nil;
    CURLU *url = curl_url();
    char *whole = nullptr;
    char *scheme = nullptr;
    if (curl_url_set(url, CURLUPART_URL, [[base absoluteString] UTF8String], 0) == CURLUE_OK &&
        curl_url_set(url, CURLUPART_URL, location.c_str(), CURLU_URLENCODE) == CURLUE_OK &&
        curl_url_get(url, CURLUPART_URL, &whole, 0) == CURLUE_OK &&
        curl_url_get(url, CURLUPART_SCHEME, &scheme, 0) == CURLUE_OK &&
        (strcasecmp(scheme, "http") == 0 || strcasecmp(scheme, "https") == 0))
        result = [NSURL URLWithString:HTTPText(whole)];
    curl_free(whole);
    curl_free(scheme);
    curl_url_cleanup(url);
    return result;
}

int HTTPPort(NSURL *url)
{
    if (NSNumber *port = [url port])
        return [port intValue];
    return [[url scheme] caseInsensitiveCompare:@"https"] == NSOrderedSame ? 443 : 80;
}

static BOOL haveSameOrigin(NSURL *a, NSURL *b)
{
    return [[a scheme] caseInsensitiveCompare:[b scheme]] == NSOrderedSame &&
           [[a host] caseInsensitiveCompare:[b host]] == NSOrderedSame && HTTPPort(a) == HTTPPort(b);
}

bool HTTPIsRedirect(int status)
{
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

static BOOL isOneOf(NSString *field, std::initializer_list<const char *> names)
{
    return std::any_of(names.begin(), names.end(),
                       [&](const char *name) { return strcasecmp([field UTF8String], name) == 0; });
}

NSURLRequest *HTTPRedirectedRequest(NSURLRequest *request, NSURL *url, int status)
{
    NSString *method = [request HTTPMethod];
    const BOOL isHead = [method isEqualToString:@"HEAD"];
    const BOOL asksByGet =
        (status == 303 && !isHead) || ((status == 301 || status == 302) && [method isEqualToString:@"POST"]);
    // Made anew: gnustep-base has no way to take a header field out of a request.
    NSMutableURLRequest *next = [NSMutableURLRequest requestWithURL:url
                                                        cachePolicy:[request cachePolicy]
                                                    timeoutInterval:[request timeoutInterval]];
    [next setMainDocumentURL:[request mainDocumentURL]];
    [next setHTTPShouldHandleCookies:[request HTTPShouldHandleCookies]];
    [next setHTTPMethod:asksByGet ? @"GET" : method];
    if (!asksByGet && [request HTTPBodyStream])
        [next setHTTPBodyStream:[request HTTPBodyStream]];
    else if (!asksByGet)
        [next setHTTPBody:[request HTTPBody]];

    const BOOL isSameOrigin = haveSameOrigin([request URL], url);
    NSEnumerator *fields = [[request allHTTPHeaderFields] keyEnumerator];
    while (NSString *field = [fields nextObject]) {
        if (isOneOf(field, {"Host", "Cookie"}) || (!isSameOrigin && isOneOf(field, {"Authorization"})) ||
            (asksByGet && isOneOf(field, {"Content-Type", "Content-Length", "Content-Encoding"})))
            continue;
        [next setValue:[request valueForHTTPHeaderField:field] forHTTPHeaderField:field];
    }
    [NSURLProtocol setProperty:[NSNumber numberWithInt:HTTPRedirectCount(request) + 1]
                        forKey:kRedirectCount
                     inRequest:next];
    return next;
}

int HTTPRedirectCount(NSURLRequest *request)
{
    return [[NSURLProtocol propertyForKey:kRedirectCount inRequest:request] intValue];
}

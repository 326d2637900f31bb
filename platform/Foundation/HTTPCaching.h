/// When a stored response may stand for a load (RFC 9111, the rules of a private cache), and when one may be
/// stored.
#pragma once

#import <Foundation/Foundation.h>

enum class CacheUse {
    load,        ///< ask the server
    serve,       ///< answer from the cache
    revalidate,  ///< ask the server whether the stored response still holds
    refuse,      ///< the policy forbids the network and nothing is stored
};

/// What the request's cache policy makes of a stored response (nil for none).
CacheUse HTTPCacheUse(NSURLRequest *request, NSCachedURLResponse *stored);

/// Adds the header fields that the cache policy asks for: no-cache for the reloading policies, the validators
/// of `stored` for revalidation (nil for none).
void HTTPAddCacheFields(NSMutableURLRequest *request, NSCachedURLResponse *stored);

/// Whether the response may be stored: a complete GET with status 200, not forbidden by either side and the
/// same for every asker.
BOOL HTTPMayStore(NSURLRequest *request, NSHTTPURLResponse *response);

/// The stored form of a response, stamped with the present time.
NSCachedURLResponse *HTTPStoredResponse(NSURLResponse *response, NSData *body);

/// HTTP and HTTPS for NSURLConnection and everything that stands on it, registered at load.
///
/// gnustep-base's own loading knows no time limits, takes any certificate, ignores proxies, reports cut
/// bodies as whole and hangs on relative redirects and on HEAD. Here an exchange runs on libcurl from the
/// connection's run loop:
///
///   time limits   timeoutInterval is the longest time without progress, from the look-up of the name on
///   TLS           the chain is verified against the system's store, and the host name
///   proxies       the system's settings (SystemConfiguration/ProxySettings.h)
///   redirects     resolved against the URL, offered to the client, followed to http and https only, 20 at most
///   bodies        streamed as they arrive; a body that is cut short is a failure; gzip and deflate are undone
///   caching       the request's policy over the shared NSURLCache (HTTPCaching.h)
///   challenges    Basic and Digest, through the client
///
/// As on the platform, the connection stays alive until its exchange has ended or is cancelled.

#include "../SystemConfiguration/ProxySettings.h"
#include "HTTPCaching.h"
#include "HTTPEngine.h"
#include "HTTPErrors.h"
#include "HTTPRedirects.h"
#include "LoadedHTTPResponse.h"

#include <strings.h>

#include <algorithm>
#include <climits>
#include <cmath>

@class HTTPURLProtocol;

namespace {

/// Carries the engine's calls to the object.
struct Listener final : http::Client {
    HTTPURLProtocol *owner = nil;
    void receivedHead(const http::Head &head) override;
    void receivedBody(http::Bytes bytes) override;
    void ended(const http::Outcome &outcome) override;
    void abandoned() override;
};

}  // namespace

@interface HTTPURLProtocol : NSURLProtocol <NSURLAuthenticationChallengeSender> {
    Listener _listener;
    http::Engine *_engine;
    NSThread *_thread;
    std::shared_ptr<http::Transfer> _transfer;
    BOOL _active;  ///< between startLoading and the end; the object and its client are retained meanwhile
    NSURLRequest *_asked;  ///< the request as sent: keeps the body's bytes
    LoadedHTTPResponse *_response;
    CacheUse _use;
    NSCachedURLResponse *_stored;  ///< what the cache had when loading began
    NSMutableData *_storing;       ///< the body so far, when it goes into the cache
    NSURLCredential *_credential;
    NSURLAuthenticationChallenge *_challenge;
    NSInteger _refusedCredentials;
}
- (void)receivedHead:(const http::Head &)head;
- (void)receivedBody:(NSData *)data;
- (void)ended:(const http::Outcome &)outcome;
- (void)conclude;
@end

@interface HTTPURLProtocol (Private)
- (void)send;
- (void)failWith:(NSError *)error;
- (void)handOnResponse;
- (BOOL)followTo:(const std::string &)location status:(int)status;
- (void)keepCookies:(const http::Head &)head;
- (void)storeBody:(NSData *)body of:(NSURLResponse *)response;
- (void)serveStored;
- (BOOL)challengeFor:(const http::Head &)head;
@end

/// The connection asks its delegate before a response is stored; gnustep-base leaves that to the protocol.
@interface NSURLConnection (HTTPURLProtocol)
- (id)delegate;
@end

namespace {

const char *text(NSString *string)
{
    const char *bytes = [string UTF8String];
    return bytes ? bytes : "";
}

ssize_t readStream(NSInputStream *stream, char *data, size_t size)
{
    return [stream read:reinterpret_cast<uint8_t *>(data) maxLength:size];
}

}  // namespace

void Listener::receivedHead(const http::Head &head) { [owner receivedHead:head]; }

void Listener::receivedBody(http::Bytes bytes)
{
    NSData *data = [[NSData alloc] initWithBytesNoCopy:bytes.data length:bytes.size freeWhenDone:YES];
    [owner receivedBody:data];
    [data release];
}

void Listener::ended(const http::Outcome &outcome) { [owner ended:outcome]; }

void Listener::abandoned() { [owner conclude]; }

@implementation HTTPURLProtocol

+ (void)load
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    [NSURLProtocol registerClass:self];
    [pool drain];
}

+ (BOOL)canInitWithRequest:(NSURLRequest *)request
{
    const char *scheme = text([[request URL] scheme]);
    return strcasecmp(scheme, "http") == 0 || strcasecmp(scheme, "https") == 0;
}

+ (NSURLRequest *)canonicalRequestForRequest:(NSURLRequest *)request
{
    return request;
}

- (void)dealloc
{
    [_thread release];
    [_asked release];
    [_response release];
    [_stored release];
    [_storing release];
    [_credential release];
    [_challenge release];
    [super dealloc];
}

// Beginning and end

- (void)startLoading
{
    if (_active)
        return;
    _active = YES;
    [self retain];
    [[self client] retain];
    _listener.owner = self;
    _engine = &http::Engine::current();
    [_thread release];
    _thread = [[NSThread currentThread] retain];
    // gnustep-base's connection hands no cached response to its protocol.
    NSCachedURLResponse *given = [self cachedResponse];
    [_stored release];
    _stored =
        [(given ? given : [[NSURLCache sharedURLCache] cachedResponseForRequest:[self request]]) retain];
    _use = HTTPCacheUse([self request], _stored);
    if (_use == CacheUse::load || _use == CacheUse::revalidate) {
        [self send];
        return;
    }
    // Nothing is sent, but the load ends from the run loop like any other.
    _transfer = std::make_shared<http::Transfer>(http::Request(), _listener);
    _transfer->end(CURLE_ABORTED_BY_CALLBACK);
    _engine->start(_transfer);
}

- (void)stopLoading
{
    if (!_active)
        return;
    if (_thread != [NSThread currentThread]) {
        [self performSelector:@selector(stopLoading) onThread:_thread withObject:nil waitUntilDone:NO];
        return;
    }
    if (_transfer)
        _engine->cancel(_transfer);
    [self conclude];
}

/// The exchange is over: lets go of the client and of itself.
- (void)conclude
{
    if (!_active)
        return;
    _active = NO;
    _transfer.reset();
    [_storing release];
    _storing = nil;
    [[self client] autorelease];
    [self autorelease];
}

- (void)failWith:(NSError *)error
{
    [[self client] URLProtocol:self didFailWithError:error];
    [self conclude];
}

// Sending

- (void)send
{
    NSMutableURLRequest *asked = [[self request] mutableCopy];
    HTTPAddCacheFields(asked, _use == CacheUse::revalidate ? _stored : nil);
    [_asked release];
    _asked = asked;

    http::Request request;
    request.url = text([[asked URL] absoluteString]);
    request.method = text([asked HTTPMethod]);
    const double limit = [asked timeoutInterval];
    if (limit > 0 && limit < INT_MAX / 1000.0)
        request.idleLimit = std::chrono::milliseconds(llround(limit * 1000));
    if (NSData *body = [asked HTTPBody]) {
        request.body = [body bytes] ? [body bytes] : "";
        request.bodyLength = [body length];
    } else if (NSInputStream *stream = [asked HTTPBodyStream]) {
        if ([stream streamStatus] == NSStreamStatusNotOpen)
            [stream open];
        request.reader = [stream](char *data, size_t size) { return readStream(stream, data, size); };
    }
    BOOL isSound = http::isMethod(request.method);
    NSDictionary *fields = [asked allHTTPHeaderFields];
    NSEnumerator *names = [fields keyEnumerator];
    while (NSString *name = [names nextObject]) {
        const std::string field = text(name);
        const std::string value = text([fields objectForKey:name]);
        isSound = isSound && http::isHeaderLine(field, value);
        if (strcasecmp(field.c_str(), "Content-Length") == 0) {
            if (request.reader)
                request.streamLength = atoll(value.c_str());
            continue;  // counted from the body, never believed
        }
        if (strcasecmp(field.c_str(), "Transfer-Encoding") == 0 || strcasecmp(field.c_str(), "Expect") == 0)
            continue;
        if (strcasecmp(field.c_str(), "Accept-Encoding") == 0)
            request.decodesContent = false;
        request.headers.push_back(value.empty() ? field + ";" : field + ": " + value);
    }
    if (![fields objectForKey:@"User-Agent"])
        request.headers.push_back("User-Agent: " +
                                  std::string(text([[NSProcessInfo processInfo] processName])));
    if (_credential) {
        request.user = text([_credential user]);
        request.password = text([_credential password]);
    }
    const char *scheme = text([[asked URL] scheme]);
    if (auto proxy = proxies::forHost(proxies::current(), scheme, text([[asked URL] host])))
        request.proxy = {proxy->host, proxy->port, proxy->user, proxy->password};

    _transfer = std::make_shared<http::Transfer>(std::move(request), _listener);
    if (!isSound)
        _transfer->end(CURLE_URL_MALFORMAT);
    _engine->start(_transfer);
}

// What the engine tells. After each call to the client this load may be over: `_active` says so.

- (void)receivedHead:(const http::Head &)head
{
    NSURL *url = [[self request] URL];
    [_response release];
    _response = [[LoadedHTTPResponse alloc] initWithURL:url head:head];
    [self keepCookies:head];

    if (head.status == 304 && _use == CacheUse::revalidate) {
        _engine->cancel(_transfer);
        [self storeBody:[_stored data] of:[_stored response]];
        [self serveStored];
        return;
    }
    const std::string *location = head.find("Location");
    if (HTTPIsRedirect(head.status) && location && ![self followTo:*location status:head.status])
        return;
    if (head.status == 401 && [self challengeFor:head])
        return;
    [self handOnResponse];
}

- (void)handOnResponse
{
    const BOOL stores = HTTPMayStore(_asked, _response);
    if (stores)
        _storing = [[NSMutableData alloc] init];
    [[self client] URLProtocol:self
            didReceiveResponse:_response
            cacheStoragePolicy:stores ? NSURLCacheStorageAllowed : NSURLCacheStorageNotAllowed];
}

- (void)receivedBody:(NSData *)data
{
    if (_storing && [_storing length] + [data length] > [[NSURLCache sharedURLCache] memoryCapacity] / 20) {
        [_storing release];  // too large to be worth its room
        _storing = nil;
    }
    [_storing appendData:data];
    [[self client] URLProtocol:self didLoadData:data];
}

- (void)ended:(const http::Outcome &)outcome
{
    if (_use == CacheUse::serve) {
        [self serveStored];
        return;
    }
    if (_use == CacheUse::refuse) {
        [self failWith:HTTPError(NSURLErrorResourceUnavailable,
                                 "nothing is stored for this URL, and the cache policy forbids loading it",
                                 [[self request] URL])];
        return;
    }
    if (outcome.code != CURLE_OK) {
        [self failWith:HTTPError(HTTPErrorCode(outcome), outcome.message, [[self request] URL])];
        return;
    }
    if (_storing)
        [self storeBody:_storing of:_response];
    [[self client] URLProtocolDidFinishLoading:self];
    [self conclude];
}

// Redirects

/// Offers a redirect to the client. NO when this load is over: the client went on, or nobody may.
- (BOOL)followTo:(const std::string &)location status:(int)status
{
    NSURL *from = [[self request] URL];
    NSURL *url = HTTPResolvedLocation(from, location);
    NSInteger refusal = 0;
    if (!url)
        refusal = NSURLErrorRedirectToNonExistentLocation;
    if (HTTPRedirectCount([self request]) >= kHTTPMostRedirects)
        refusal = NSURLErrorHTTPTooManyRedirects;
    if (refusal) {
        _engine->cancel(_transfer);
        [self failWith:HTTPError(refusal, "redirected to " + location, from)];
        return NO;
    }
    NSURLRequest *next = HTTPRedirectedRequest([self request], url, status);
    [[self client] URLProtocol:self wasRedirectedToRequest:next redirectResponse:_response];
    return _active;
}

// Cookies

- (void)keepCookies:(const http::Head &)head
{
    if (![[self request] HTTPShouldHandleCookies])
        return;
    NSURL *url = [[self request] URL];
    for (const auto &[name, value] : head.fields) {
        if (strcasecmp(name.c_str(), "Set-Cookie") != 0)
            continue;
        NSDictionary *field = [NSDictionary dictionaryWithObject:HTTPText(value) forKey:@"Set-Cookie"];
        NSArray *cookies = [NSHTTPCookie cookiesWithResponseHeaderFields:field forURL:url];
        if ([cookies count])
            [[NSHTTPCookieStorage sharedHTTPCookieStorage] setCookies:cookies
                                                               forURL:url
                                                      mainDocumentURL:[[self request] mainDocumentURL]];
    }
}

// The cache

- (void)storeBody:(NSData *)body of:(NSURLResponse *)response
{
    NSCachedURLResponse *stored = HTTPStoredResponse(response, body);
    id client = [self client];
    if ([client isKindOfClass:[NSURLConnection class]])
        stored = [[client delegate] connection:client willCacheResponse:stored];
    if (stored)
        [[NSURLCache sharedURLCache] storeCachedResponse:stored forRequest:[self request]];
}

- (void)serveStored
{
    NSCachedURLResponse *stored = [[_stored retain] autorelease];
    id<NSURLProtocolClient> client = [self client];
    [client URLProtocol:self cachedResponseIsValid:stored];
    if (_active)
        [client URLProtocol:self
            didReceiveResponse:[stored response]
            cacheStoragePolicy:NSURLCacheStorageNotAllowed];
    if (_active && [[stored data] length])
        [client URLProtocol:self didLoadData:[stored data]];
    if (!_active)
        return;
    [client URLProtocolDidFinishLoading:self];
    [self conclude];
}

// Authentication

/// Asks the client for credentials; NO when the server's methods are none that can be answered.
- (BOOL)challengeFor:(const http::Head &)head
{
    NSString *method = nil;
    const std::string *field = nullptr;
    for (const auto &[name, value] : head.fields) {
        if (strcasecmp(name.c_str(), "WWW-Authenticate") != 0)
            continue;
        const BOOL isDigest = strncasecmp(value.c_str(), "Digest ", 7) == 0;
        if (!isDigest && strncasecmp(value.c_str(), "Basic", 5) != 0)
            continue;
        method = isDigest ? NSURLAuthenticationMethodHTTPDigest : NSURLAuthenticationMethodHTTPBasic;
        field = &value;
        if (isDigest)
            break;
    }
    if (!method)
        return NO;
    if (_credential)
        ++_refusedCredentials;
    NSURL *url = [[self request] URL];
    const size_t blank = std::min(field->find(' '), field->size());
    std::string parameters = field->substr(blank);
    parameters.insert(parameters.begin(), ';');
    std::replace(parameters.begin(), parameters.end(), ',', ';');
    NSURLProtectionSpace *space =
        [[NSURLProtectionSpace alloc] initWithHost:[url host]
                                              port:HTTPPort(url)
                                          protocol:[url scheme]
                                             realm:HTTPFieldParameter(parameters, "realm")
                              authenticationMethod:method];
    NSURLCredential *known =
        [[NSURLCredentialStorage sharedCredentialStorage] defaultCredentialForProtectionSpace:space];
    [_challenge release];
    _challenge = [[NSURLAuthenticationChallenge alloc] initWithProtectionSpace:space
                                                            proposedCredential:known
                                                          previousFailureCount:_refusedCredentials
                                                               failureResponse:_response
                                                                         error:nil
                                                                        sender:self];
    [space release];
    _transfer->hold(true);
    [[self client] URLProtocol:self didReceiveAuthenticationChallenge:_challenge];
    return YES;
}

- (BOOL)takesAnswerTo:(NSURLAuthenticationChallenge *)challenge
{
    if (!_active || !_challenge || challenge != _challenge)
        return NO;
    [_challenge autorelease];
    _challenge = nil;
    return YES;
}

- (void)useCredential:(NSURLCredential *)credential
    forAuthenticationChallenge:(NSURLAuthenticationChallenge *)challenge
{
    if (![self takesAnswerTo:challenge])
        return;
    ASSIGN(_credential, credential);
    _engine->cancel(_transfer);
    _use = CacheUse::load;
    [self send];
}

- (void)continueWithoutCredentialForAuthenticationChallenge:(NSURLAuthenticationChallenge *)challenge
{
    if (![self takesAnswerTo:challenge])
        return;
    [self handOnResponse];
    if (_active)
        _engine->resume(_transfer);
}

- (void)cancelAuthenticationChallenge:(NSURLAuthenticationChallenge *)challenge
{
    if (![self takesAnswerTo:challenge])
        return;
    _engine->cancel(_transfer);
    [self failWith:HTTPError(NSURLErrorUserCancelledAuthentication, "Authentication cancelled",
                             [[self request] URL])];
}

@end

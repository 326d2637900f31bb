/// Loads of URLs that no protocol serves fail at once.
///
/// gnustep-base makes a connection for them all the same, whose delegate is then never told anything.

#include "HTTPEngine.h"
#include "HTTPErrors.h"

#import <Foundation/Foundation.h>

@class UnsupportedURLProtocol;

namespace {

/// An exchange that has ended before it began: the engine tells it through a descriptor, which ends a pass of
/// the run loop. A timer would not, and leave a synchronous load waiting out its time limit.
struct Refusal final : http::Client {
    UnsupportedURLProtocol *owner = nil;
    void receivedHead(const http::Head &) override {}
    void receivedBody(http::Bytes bytes) override { free(bytes.data); }
    void ended(const http::Outcome &) override;
    void abandoned() override;
};

}  // namespace

@interface UnsupportedURLProtocol : NSURLProtocol {
    Refusal _refusal;
    http::Engine *_engine;
    NSThread *_thread;                          ///< the engine's
    std::shared_ptr<http::Transfer> _transfer;  ///< while loading: the object is retained meanwhile
}
- (void)fail;
- (void)conclude;
@end

void Refusal::ended(const http::Outcome &) { [owner fail]; }

void Refusal::abandoned() { [owner conclude]; }

@implementation UnsupportedURLProtocol

+ (void)load
{
    NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
    [NSURLProtocol registerClass:self];
    [pool drain];
}

/// gnustep-base's own protocols come after those that are registered, a host's come before: both go on
/// serving.
+ (BOOL)canInitWithRequest:(NSURLRequest *)request
{
    NSString *scheme = [[[request URL] scheme] lowercaseString];
    return !scheme || ![[NSArray arrayWithObjects:@"http", @"https", @"file", @"ftp", @"data", @"about", nil]
                          containsObject:scheme];
}

+ (NSURLRequest *)canonicalRequestForRequest:(NSURLRequest *)request
{
    return request;
}

- (void)startLoading
{
    if (_transfer)
        return;
    [self retain];
    _refusal.owner = self;
    _engine = &http::Engine::current();
    _thread = [NSThread currentThread];
    _transfer = std::make_shared<http::Transfer>(http::Request(), _refusal);
    _transfer->end(CURLE_UNSUPPORTED_PROTOCOL);
    _engine->start(_transfer);
}

- (void)fail
{
    [[self client] URLProtocol:self
              didFailWithError:HTTPError(NSURLErrorUnsupportedURL, "no protocol serves this URL",
                                         [[self request] URL])];
    [self conclude];
}

- (void)stopLoading
{
    if (!_transfer)
        return;
    if (_thread != [NSThread currentThread]) {
        [self performSelector:_cmd onThread:_thread withObject:nil waitUntilDone:NO];
        return;
    }
    _engine->cancel(_transfer);
    [self conclude];
}

- (void)conclude
{
    if (!_transfer)
        return;
    _transfer.reset();
    [self autorelease];
}

@end

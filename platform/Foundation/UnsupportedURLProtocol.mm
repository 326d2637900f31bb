/// Loads of URLs that no protocol serves fail at once.
///
/// gnustep-base makes a connection for them all the same, whose delegate is then never told anything.

#include "HTTPErrors.h"

#import <Foundation/Foundation.h>

@interface UnsupportedURLProtocol : NSURLProtocol
@end

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
    [self performSelector:@selector(fail) withObject:nil afterDelay:0];
}

- (void)fail
{
    [[self client] URLProtocol:self
              didFailWithError:HTTPError(NSURLErrorUnsupportedURL, "no protocol serves this URL",
                                         [[self request] URL])];
}

- (void)stopLoading
{
    [NSObject cancelPreviousPerformRequestsWithTarget:self];
}

@end

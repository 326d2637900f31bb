/// gnustep-base's connection and its protocol retain each other, and nothing parts them when a load has ended: every
/// load of every scheme leaks both. Here a connection that has told its delegate of the end cancels itself, which lets go
/// of the protocol; it is then alive for as long as its owner, or the pool, wants it.
#import <Foundation/NSURLConnection.h>
#import <Foundation/NSURLError.h>
#import <Foundation/NSURLProtocol.h>

#include "platform/Foundation/private/ReplacedMethod.h"

namespace {

using Finish = void (*)(NSURLConnection *, SEL, NSURLProtocol *);
using Fail = void (*)(NSURLConnection *, SEL, NSURLProtocol *, NSError *);
Finish finishLoading;
Fail failWithError;

void part(NSURLConnection *connection, NSURLProtocol *protocol)
{
    [[connection retain] autorelease];
    [[protocol retain] autorelease];  // it may be in the middle of startLoading
    [connection cancel];
}

void finishAndPart(NSURLConnection *self, SEL command, NSURLProtocol *protocol)
{
    finishLoading(self, command, protocol);
    part(self, protocol);
}

void failAndPart(NSURLConnection *self, SEL command, NSURLProtocol *protocol, NSError *error)
{
    failWithError(self, command, protocol, error);
    part(self, protocol);
}

}  // namespace

@interface NSURLConnectionParting : NSObject
@end

@implementation NSURLConnectionParting

+ (void)load
{
    const auto method = [](SEL name) { return class_getInstanceMethod([NSURLConnection class], name); };
    finishLoading = tarvik::replacedMethod(method(@selector(URLProtocolDidFinishLoading:)), &finishAndPart);
    failWithError = tarvik::replacedMethod(method(@selector(URLProtocol:didFailWithError:)), &failAndPart);
}

@end

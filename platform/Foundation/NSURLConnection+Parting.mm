/// gnustep-base's connection and its protocol retain each other, and nothing parts them when a load has ended: every
/// load of every scheme leaks both. Here a connection that has told its delegate of the end cancels itself, which lets go
/// of the protocol; it is then alive for as long as its owner, or the pool, wants it.
#import <Foundation/NSURLConnection.h>
#import <Foundation/NSURLError.h>
#import <Foundation/NSURLProtocol.h>
#include <objc/runtime.h>

#include <bit>

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

/// Puts a function in the place of the connection's method; returns what stood there.
template <class Function>
Function replace(SEL selector, Function function)
{
    Method method = class_getInstanceMethod([NSURLConnection class], selector);
    return std::bit_cast<Function>(method_setImplementation(method, std::bit_cast<IMP>(function)));
}

}  // namespace

@interface NSURLConnectionParting : NSObject
@end

@implementation NSURLConnectionParting

+ (void)load
{
    finishLoading = replace(@selector(URLProtocolDidFinishLoading:), &finishAndPart);
    failWithError = replace(@selector(URLProtocol:didFailWithError:), &failAndPart);
}

@end

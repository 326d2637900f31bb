#include "Publishing.h"

#include "Closure.h"

#include <Tarvik/Tarvik.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Retained.h>

#include <utility>

@interface Publication : NSObject {
@public
    Closure<std::function<void(NSString *)>> mEnded;
    NSURLConnection *mConnection;  // retains its delegate until it has ended
    NSInteger mStatus;
}
- (void)end:(NSString *)reason;
@end

@implementation Publication

- (void)dealloc
{
    [mConnection release];
    [super dealloc];
}

- (void)connection:(NSURLConnection *)connection didReceiveResponse:(NSURLResponse *)response
{
    (void)connection;
    if ([response isKindOfClass:[NSHTTPURLResponse class]])
        mStatus = [(NSHTTPURLResponse *)response statusCode];
}

- (void)connectionDidFinishLoading:(NSURLConnection *)connection
{
    (void)connection;
    [self end:mStatus < 400 ? nil
                            : [NSString stringWithFormat:[@"The server answered with status %d." localize],
                                                         int(mStatus)]];
}

- (void)connection:(NSURLConnection *)connection didFailWithError:(NSError *)error
{
    (void)connection;
    [self end:[error localizedDescription]];
}

- (void)end:(NSString *)reason
{
    if (const auto ended = mEnded.take())
        ended(reason);
}

@end

namespace shelf {

std::function<void()> publish(NSString *url, const std::string &xml, std::function<void(NSString *)> ended)
{
    constexpr NSTimeInterval kPatience = 60;
    NSURL *destination = [NSURL URLWithString:url];
    if (![[NSArray arrayWithObjects:@"http", @"https", nil]
            containsObject:[[destination scheme] lowercaseString]] ||
        ![[destination host] length]) {
        ended(
            [@"This is no web address. It begins with http:// or https:// and the server's name." localize]);
        return [] {};
    }
    NSMutableURLRequest *request = [NSMutableURLRequest requestWithURL:destination
                                                           cachePolicy:NSURLRequestReloadIgnoringCacheData
                                                       timeoutInterval:kPatience];
    [request setHTTPMethod:@"POST"];
    [request setValue:@"text/xml" forHTTPHeaderField:@"Content-Type"];
    [request setValue:@"Tarvik" forHTTPHeaderField:@"User-Agent"];
    [request setHTTPBody:tarvik::nsdata(xml)];
    const auto publication = tarvik::adopt<Publication>([[Publication alloc] init]);
    publication.get()->mEnded = std::move(ended);
    publication.get()->mConnection = [[NSURLConnection alloc] initWithRequest:request
                                                                     delegate:publication.get()];
    return [publication] {
        publication.get()->mEnded = nullptr;
        [publication.get()->mConnection cancel];
    };
}

}  // namespace shelf

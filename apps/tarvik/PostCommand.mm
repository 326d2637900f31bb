#include "Command.h"
#include "ObjectiveC.h"
#include "Streams.h"

#include <CFNetwork/CFProxySupport.h>
#include <SystemConfiguration/SystemConfiguration.h>
#include <Tarvik/Tarvik.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Retained.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <unistd.h>

/// A transfer that tells what its delegate is told.
@interface ToldTransfer : MyUrlConnection {
@public
    NSHTTPURLResponse *mResponse;
    NSString *mWhy;
    Progress *mProgress;
}
@end

@interface MyUrlConnection (Delegate)
- (void)connection:(NSURLConnection *)connection didReceiveResponse:(NSURLResponse *)response;
- (void)connection:(NSURLConnection *)connection didReceiveData:(NSData *)data;
- (void)connection:(NSURLConnection *)connection didFailWithError:(NSError *)error;
@end

@implementation ToldTransfer

- (void)dealloc
{
    [mResponse release];
    [mWhy release];
    delete mProgress;
    [super dealloc];
}

- (void)connection:(NSURLConnection *)connection didReceiveResponse:(NSURLResponse *)response
{
    [super connection:connection didReceiveResponse:response];
    [mResponse autorelease];
    mResponse = [(NSHTTPURLResponse *)response retain];
    delete mProgress;
    const long long length = [response expectedContentLength];
    mProgress = new Progress("answer", length > 0 ? uint64_t(length) : 0);
}

- (void)connection:(NSURLConnection *)connection didReceiveData:(NSData *)data
{
    [super connection:connection didReceiveData:data];
    if (mProgress)
        mProgress->advance([data length]);
}

- (void)connection:(NSURLConnection *)connection didFailWithError:(NSError *)error
{
    mWhy = [[error localizedDescription] copy];
    [super connection:connection didFailWithError:error];
}

@end

namespace {

constexpr int64_t kUsualLimit = 70;

/// Where the request goes first: "proxy HOST:PORT", or "direct".
std::string wayTo(NSURL *url)
{
    const auto settings = tarvik::adopt((NSDictionary *)SCDynamicStoreCopyProxies(nullptr));
    const auto proxies =
        tarvik::adopt((NSArray *)CFNetworkCopyProxiesForURL((CFURLRef)url, (CFDictionaryRef)settings.get()));
    NSDictionary *first = [proxies.get() objectAtIndex:0];
    NSString *host = [first objectForKey:(NSString *)kCFProxyHostNameKey];
    if (!host)
        return "direct";
    return "proxy " + utf8Of(host) + ":" +
           std::to_string([[first objectForKey:(NSString *)kCFProxyPortNumberKey] intValue]);
}

NSURLRequest *requestFor(NSURL *url, const std::string &body, const Arguments &arguments)
{
    NSMutableURLRequest *request =
        [NSMutableURLRequest requestWithURL:url
                                cachePolicy:NSURLRequestReloadIgnoringCacheData
                            timeoutInterval:double(arguments.number("time", 1, 1 << 30).value_or(60))];
    [request setHTTPMethod:@"POST"];
    [request setValue:textOf(arguments.value("type").value_or("text/xml"))
        forHTTPHeaderField:@"Content-type"];
    [request setValue:@"Tarvik" forHTTPHeaderField:@"User-Agent"];
    [request setHTTPBody:tarvik::nsdata(body)];
    return request;
}

int run(const Arguments &arguments)
{
    const auto &words = arguments.rest(1, 2);
    NSURL *url = [NSURL URLWithString:textOf(words[0])];
    NSString *scheme = [[url scheme] lowercaseString];
    if (![[url host] length] || !([scheme isEqual:@"http"] || [scheme isEqual:@"https"]))
        throw Failure(words[0] +
                      ": is no http or https URL (write http://HOST/..., with other bytes escaped as %20)");
    const std::string body = readInput(words.size() == 2 ? words[1] : "-");
    const bool tells = arguments.has("verbose") || isatty(STDERR_FILENO);
    if (tells)
        std::fprintf(stderr, "%s: %zu bytes, %s\n", words[0].c_str(), body.size(), wayTo(url).c_str());

    const auto limit = int32_t(arguments.number("time", 1, 1 << 30).value_or(kUsualLimit));
    const auto begin = std::chrono::steady_clock::now();
    ToldTransfer *transfer = [[[ToldTransfer alloc] initWithTimeout:limit] autorelease];
    if (![transfer sendRequest:requestFor(url, body, arguments)])
        throw Failure(words[0] + ": no connection could be made");
    NSData *answer = [(MyUrlConnection *)transfer wait];
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
    delete std::exchange(transfer->mProgress, nullptr);  // off the terminal before anything else is said
    if (![transfer hasFinished])
        throw Failure(words[0] + ": " +
                      (transfer->mWhy ? utf8Of(transfer->mWhy)
                                      : "no whole answer within " + std::to_string(limit) +
                                            " s (--time sets the limit)"));
    const int status = int([transfer->mResponse statusCode]);
    if (tells)
        std::fprintf(stderr, "%s: status %d, %zu bytes of answer, %.3f s\n", words[0].c_str(), status,
                     size_t([answer length]), taken.count());
    writeOutput(tarvik::bytes(answer).value_or(""));
    if (status >= 400)
        throw Failure(words[0] + ": the server answered " + std::to_string(status) +
                      " (its answer is on standard output)");
    return kSuccess;
}

const Registration registration({
    .name = "post",
    .summary = "send a document to a server by POST and print the answer",
    .usage = "[OPTION]... URL [FILE]",
    .details =
        "Sends FILE, or standard input, to an http or https URL and writes the answer to standard output. "
        "Certificates are\n"
        "verified; the system's proxy carries the request where one applies ('tarvik proxy' shows it). On a "
        "terminal the way\n"
        "that the request takes is told, and a progress bar for an answer that takes longer than a second.\n"
        "An answer of status 400 or more is written too, and the command fails.\n\n"
        "Examples:\n"
        "  tarvik post https://server.example/report report.xml > answer.xml\n"
        "  tarvik sysinfo | tarvik post --type=text/plain --time=10 -v http://127.0.0.1:8080/",
    .options = {{'t', "time", "SECONDS", "give up after that time (70; without a byte of progress after 60)"},
                {'T', "type", "TYPE", "the document's type (text/xml)"},
                {'v', "verbose", nullptr,
                 "tell on standard error which proxy is used, the status, sizes and time"}},
    .run = inPool(run),
});

}  // namespace

#import "Transfer.h"

#include <chrono>

@interface TransferDelegate : NSObject {
@public
    Transfer *_transfer;
    const Load *_load;
}
@end

@implementation TransferDelegate

- (void)connection:(NSURLConnection *)connection didReceiveResponse:(NSURLResponse *)response
{
    (void)connection;
    _transfer->response = tarvik::retain((NSHTTPURLResponse *)response);
    _transfer->status = int([(NSHTTPURLResponse *)response statusCode]);
}

- (void)connection:(NSURLConnection *)connection didReceiveData:(NSData *)data
{
    _transfer->chunks += 1;
    _transfer->body.append(static_cast<const char *>([data bytes]), [data length]);
    if (_load->onChunk)
        _load->onChunk(connection);
}

- (void)connectionDidFinishLoading:(NSURLConnection *)connection
{
    (void)connection;
    _transfer->ended = true;
}

- (void)connection:(NSURLConnection *)connection didFailWithError:(NSError *)error
{
    (void)connection;
    _transfer->ended = true;
    _transfer->error = [error code];
}

- (NSURLRequest *)connection:(NSURLConnection *)connection
             willSendRequest:(NSURLRequest *)request
            redirectResponse:(NSURLResponse *)response
{
    (void)connection;
    if (!response)
        return request;
    _transfer->redirects += 1;
    return _load->refusesRedirects ? nil : request;
}

- (void)connection:(NSURLConnection *)connection
    didReceiveAuthenticationChallenge:(NSURLAuthenticationChallenge *)challenge
{
    (void)connection;
    _transfer->challenges += 1;
    if (_load->user.empty()) {
        [[challenge sender] continueWithoutCredentialForAuthenticationChallenge:challenge];
    } else if ([challenge previousFailureCount]) {
        [[challenge sender] cancelAuthenticationChallenge:challenge];
    } else {
        NSURLCredential *credential =
            [NSURLCredential credentialWithUser:[NSString stringWithUTF8String:_load->user.c_str()]
                                       password:[NSString stringWithUTF8String:_load->password.c_str()]
                                    persistence:NSURLCredentialPersistenceNone];
        [[challenge sender] useCredential:credential forAuthenticationChallenge:challenge];
    }
}

@end

std::string Transfer::field(const char *name) const
{
    NSString *value = [[response.get() allHeaderFields] objectForKey:[NSString stringWithUTF8String:name]];
    return value ? [value UTF8String] : "";
}

Transfer run(const Load &load)
{
    using Clock = std::chrono::steady_clock;
    Transfer transfer;
    NSMutableURLRequest *request = [NSMutableURLRequest
         requestWithURL:[NSURL URLWithString:[NSString stringWithUTF8String:load.url.c_str()]]
            cachePolicy:load.policy
        timeoutInterval:load.limit];
    [request setHTTPMethod:[NSString stringWithUTF8String:load.method.c_str()]];
    if (!load.body.empty())
        [request setHTTPBody:[NSData dataWithBytes:load.body.data() length:load.body.size()]];
    for (const auto &[name, value] : load.headers)
        [request setValue:[NSString stringWithUTF8String:value.c_str()]
            forHTTPHeaderField:[NSString stringWithUTF8String:name.c_str()]];
    TransferDelegate *delegate = [[[TransferDelegate alloc] init] autorelease];
    delegate->_transfer = &transfer;
    delegate->_load = &load;
    const auto start = Clock::now();
    const auto elapsed = [&] { return std::chrono::duration<double>(Clock::now() - start).count(); };
    NSURLConnection *connection = [NSURLConnection connectionWithRequest:request delegate:delegate];
    while (!transfer.ended && elapsed() < load.patience)
        [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode
                                 beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.2]];
    transfer.seconds = elapsed();
    if (!transfer.ended)
        [connection cancel];
    return transfer;
}

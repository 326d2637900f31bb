#import <Tarvik/net/MyUrlConnection.h>

static const int32_t kDefaultTimeout = 60;
static const NSTimeInterval kSlice = 0.5;

/// A response may state any length: beyond this, room is made as the bytes come.
static const long long kMostExpected = 1LL << 30;

@implementation MyUrlConnection

+ (NSData *)sendMySynchronousRequest:(NSURLRequest *)request transferTimeout:(int32_t)seconds
{
    MyUrlConnection *connection = [[[self alloc] initWithTimeout:seconds] autorelease];
    return [connection sendRequest:request] ? [connection wait] : nil;
}

- (id)initWithTimeout:(int32_t)seconds
{
    if ((self = [super init])) {
        m_timeout = seconds < 1 ? kDefaultTimeout : seconds;
        m_lock = [[NSLock alloc] init];
    }
    return self;
}

- (void)dealloc
{
    [m_timer release];
    [m_lock release];
    [m_data release];  // `wait` has handed out a reference of its own
    [super dealloc];
}

- (BOOL)sendRequest:(NSURLRequest *)request
{
    m_timer = [[NSTimer scheduledTimerWithTimeInterval:m_timeout
                                                target:self
                                              selector:@selector(timeIsUp:)
                                              userInfo:nil
                                               repeats:NO] retain];
    m_urlConn = [NSURLConnection connectionWithRequest:request delegate:self];
    if (!m_urlConn)
        [m_timer invalidate];
    return m_urlConn != nil;
}

- (NSData *)wait
{
    BOOL isCancelled = NO;
    do {
        NSAutoreleasePool *pool = [[NSAutoreleasePool alloc] init];
        [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode
                                 beforeDate:[NSDate dateWithTimeIntervalSinceNow:kSlice]];
        if (m_doCancel) {
            if (![self isTransferDone])  // its end within this slice comes too late, and has parted from it
                [m_urlConn cancel];
            [self setTransferDone:YES];
            m_hasFinished = NO;
            isCancelled = YES;
        }
        [pool drain];
    } while (![self isTransferDone]);
    [m_lock lock];
    NSData *data = isCancelled ? nil : [[m_data retain] autorelease];
    [m_lock unlock];
    return data;
}

- (void)timeIsUp:(NSTimer *)timer
{
    (void)timer;
    [m_timer invalidate];
    m_doCancel = YES;
}

- (void)setTransferDone:(BOOL)done
{
    [m_lock lock];
    m_bDone = done;
    [m_lock unlock];
}

- (BOOL)isTransferDone
{
    [m_lock lock];
    const BOOL done = m_bDone;
    [m_lock unlock];
    return done;
}

- (BOOL)hasFinished
{
    return m_hasFinished;
}

// The connection's delegate

- (void)connection:(NSURLConnection *)connection didReceiveResponse:(NSURLResponse *)response
{
    (void)connection;
    const long long length = [response expectedContentLength];
    m_expected = length > 0 && length <= kMostExpected ? NSUInteger(length) : 0;
}

- (void)connection:(NSURLConnection *)connection didReceiveData:(NSData *)data
{
    (void)connection;
    [m_lock lock];
    if (!m_data) {
        m_data = [data retain];
    } else {
        if (![m_data isKindOfClass:[NSMutableData class]]) {
            NSMutableData *growing =
                [[NSMutableData alloc] initWithCapacity:MAX(m_expected, 2 * [m_data length])];
            [growing appendData:m_data];
            [m_data release];
            m_data = growing;
        }
        [(NSMutableData *)m_data appendData:data];
    }
    [m_lock unlock];
}

- (void)connection:(NSURLConnection *)connection didFailWithError:(NSError *)error
{
    (void)connection;
    (void)error;
    [self setTransferDone:YES];
    [m_timer invalidate];
    [m_lock lock];
    [m_data release];
    m_data = nil;
    [m_lock unlock];
}

- (void)connectionDidFinishLoading:(NSURLConnection *)connection
{
    (void)connection;
    m_hasFinished = YES;
    [self setTransferDone:YES];
    [m_timer invalidate];
}

@end

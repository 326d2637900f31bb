/// \file
/// One transfer by the platform's URL loading, waited for.
///
///     NSData *answer = [MyUrlConnection sendMySynchronousRequest:request transferTimeout:70];
///     // nil: failed or too late
///
/// The calling thread's run loop runs in the default mode meanwhile, in slices of half a second. Any thread
/// that has one.
#pragma once
#ifdef __OBJC__
#import <Foundation/Foundation.h>
#include <stdint.h>

@interface MyUrlConnection : NSObject {
    NSData *m_data;  ///< what has arrived; the delivered object itself until a second chunk comes
    BOOL m_bDone;
    BOOL m_doCancel;
    int32_t m_timeout;
    NSURLConnection *m_urlConn;  ///< keeps itself alive while it runs
    NSTimer *m_timer;
    NSLock *m_lock;         ///< guards m_data and m_bDone
    NSUInteger m_expected;  ///< the response's stated length, so that its bytes are not moved as they grow; 0
                            ///< when unknown
    BOOL m_hasFinished;     ///< done by itself, neither failed nor cancelled
}

/// The response's bytes, autoreleased; nil after a failure and when the transfer takes longer than `seconds`.
/// Less than 1 stands for 60. A response without bytes is nil too.
+ (NSData *)sendMySynchronousRequest:(NSURLRequest *)request transferTimeout:(int32_t)seconds;

- (id)initWithTimeout:(int32_t)seconds;
/// Starts the time limit and the transfer; NO when no connection can be made.
- (BOOL)sendRequest:(NSURLRequest *)request;
/// Runs the run loop until the transfer is done; its bytes, or nil.
- (NSData *)wait;

- (void)timeIsUp:(NSTimer *)timer;
- (void)setTransferDone:(BOOL)done;
- (BOOL)isTransferDone;
/// Whether the response has come whole: tells one without bytes from a failure.
- (BOOL)hasFinished;

@end
#endif

/// \file
/// Diagnostics of the responder chain.
#pragma once
#ifdef __OBJC__
#import <AppKit/NSResponder.h>

@interface NSResponder (AppKitX)
/// Writes the chain to the console log (NSLog): a banner, then each responder's description, the receiver first.
- (void)logResponderChain;
@end
#endif

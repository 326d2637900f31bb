/// \file
/// The chain of responders, lengthened by one.
#pragma once
#ifdef __OBJC__
#import <AppKit/NSResponder.h>

@interface NSResponder (AppKitXChain)
/// Puts a responder behind this one: R, X becomes R, responder, X. Nothing for nil and when it stands there already.
/// Not retained, as the chain never is. Thread: main.
- (void)insertNextResponder:(NSResponder *)responder;
@end
#endif

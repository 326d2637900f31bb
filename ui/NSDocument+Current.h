/// \file
/// The document that the user works on.
#pragma once
#ifdef __OBJC__
#import <AppKit/NSDocument.h>

@interface NSDocument (AppKitX)
/// The shared document controller's; nil without one. Thread: main.
+ (id)current;
@end
#endif

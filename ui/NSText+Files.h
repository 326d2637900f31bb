/// \file
/// Text views filled from a file.
#pragma once
#ifdef __OBJC__
#import <AppKit/NSText.h>

@interface NSText (AppKitX)
/// Shows the file's text; the view stays as it is for nil and for a file that can't be read as text of that encoding.
/// Thread: main.
- (void)setStringFromFile:(NSString *)path encoding:(NSStringEncoding)encoding;
@end
#endif

/// \file
/// Image views that show the workspace's icons.
#pragma once
#ifdef __OBJC__
#import <AppKit/NSImageView.h>

/// Nil leaves the image as it is. Thread: main.
@interface NSImageView (AppKitX)
- (void)setIconImageForFile:(NSString *)path;      ///< "~/Desktop" is accepted
- (void)setIconImageForFiles:(NSArray *)paths;     ///< one icon for all; "~" is not expanded here
- (void)setIconImageForFileType:(NSString *)type;  ///< "txt"
@end
#endif

/// \file
/// Paths and URLs opened and shown by the workspace.
///
///     [@"~/Documents/letter.pdf" open]        // in the application that the user chose for PDF
///     [@"https://www.gnu.org/" openAsURL]     // in the browser
///
/// NO when nothing opens it. None waits for the application. Thread: main.
#pragma once
#ifdef __OBJC__
#import <Foundation/NSString.h>

@interface NSString (AppKitX)
- (BOOL)open;       ///< the file of this path, "~" expanded
- (BOOL)show;       ///< the file of this path, "~" expanded, in the file viewer
- (BOOL)openAsURL;  ///< NO for text that is no URL
@end
#endif

/// \file
/// The resources of the file at a path: see ResourceFiles.h. The receiver is the path; a leading tilde is
/// expanded.
///
///     ResFileRefNum resources = [@"~/Icon" openResourceFork:NO];
///     ... Get1Resource('icns', 128) ...
///     RFClose(&resources);
///
/// Thread: main.
#pragma once
#ifdef __OBJC__
#include <Carbon/Resources.h>
#import <Foundation/NSString.h>

@interface NSString (FoundationXResourceForks)

/// Opens them as the current resource file: for reading, or with the flag, which makes missing ones, for
/// writing too. -1 when nothing is there, or it could not be opened.
- (ResFileRefNum)openResourceFork:(BOOL)create;

@end
#endif

/// \file
/// Strings as scripts, and as paths of script files.
///
/// Results and status are those of <Tarvik/system/Scripts.h>.
#pragma once
#ifdef __OBJC__
#include <Carbon/OSA.h>
#import <Foundation/NSString.h>

@interface NSString (FoundationXScripts)

/// The script in the file at this path, disposed of with OSADispose; 0 when there is none.
- (OSAID)loadOSAFile:(ComponentInstance)component;
/// Runs this text.
- (OSStatus)executeOSAScript:(AEDesc *)text returned:(AEDesc *)result;
/// Runs the file at this path, for an event or (null) as it is.
- (OSStatus)executeOSAScriptFile:(const AppleEvent *)event result:(AEDesc *)text returned:(AEDesc *)result;
- (OSStatus)runOSAScriptFile:(AEDesc *)text returned:(AEDesc *)result;

@end
#endif

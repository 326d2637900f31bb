/// \file
/// The processes of a bundle, and launching. The receiver is the path of an application's folder X.app, or of an executable; no tilde is expanded.
///
///     if (![ink isRunningProcess]) [ink launchWithLaunchFlags:kLSLaunchDefaults];
///     [ink activateProcess];
///     [@"/home/anna/plan.txt" applicationOfRole:kLSRolesEditor]   "/usr/share/applications/gedit.desktop"
///
/// NO and nil for a path that leads nowhere. Thread: one, as for the item flags.
#pragma once
#ifdef __OBJC__
#include <Carbon/LSOpen.h>
#include <Carbon/Processes.h>
#import <Foundation/NSString.h>

@interface NSString (FoundationXProcesses)

- (BOOL)isMachOBinary;

/// Of several processes, the one that was started first.
- (BOOL)isRunningProcess;
- (BOOL)isFrontProcess;
/// Brings it to the front.
- (BOOL)activateProcess;
/// {0, 0} when there is none; NO for a null pointer.
- (BOOL)getProcessSerialNumber:(ProcessSerialNumber *)number;

/// The application that opens the item in one of these roles. Autoreleased.
- (NSString *)applicationOfRole:(LSRolesMask)role;
/// Launches an application, without documents; opens any other item with its default application. YES when that was started (or, for an
/// application that runs already, brought to the front), which is not waited for.
- (BOOL)launchWithLaunchFlags:(LSLaunchFlags)flags;

@end
#endif

/// \file
/// Applications by what is known of them, the one in front, launching by name.
///
///     NSWorkspace *workspace = [NSWorkspace sharedWorkspace];
///     [workspace applicationForName:@"Ink.app" creator:nil identifier:nil]     "/usr/lib/GNUstep/Applications/Ink.app"
///     [workspace frontProcessIdentifier]                                       "org.gnustep.Ink"
///     [workspace launchApplication:@"Ink" withLaunchFlags:kLSLaunchDefaults]
///
/// Results are autoreleased. Thread: the main one.
#pragma once
#ifdef __OBJC__
#import <AppKit/NSWorkspace.h>
#include <Carbon/LSOpen.h>

@interface NSWorkspace (AppKitX)

/// The path of an application: of this bundle identifier, else of this creator code (four characters), else of this name. Each may be nil. Nil
/// when there is none.
- (NSString *)applicationForName:(NSString *)name
                         creator:(NSString *)creator
                      identifier:(NSString *)identifier;

/// The bundle of the frontmost process, and its bundle identifier. Nil without one; the latter also for a process that has no bundle.
- (NSString *)frontProcessPath;
- (NSString *)frontProcessIdentifier;

/// By the name that the workspace knows it by. NO for nil and for an unknown application.
- (BOOL)launchApplication:(NSString *)name withLaunchFlags:(LSLaunchFlags)flags;

@end
#endif

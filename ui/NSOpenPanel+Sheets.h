/// \file
/// An open panel as a sheet, all its settings in one call.
///
///     [NSOpenPanel beginSheetWithSetting:nil prompt:@"Add" canChooseDirectories:NO canChooseFiles:YES
///         allowsMultipleSelection:YES treatsFilePackagesAsDirectories:NO canCreateDirectories:NO message:nil
///         window:window directory:nil file:nil types:[NSArray arrayWithObject:@"dmg"]
///         modalDelegate:self didEndSelector:@selector(panel:didEnd:context:) contextInfo:NULL];
///     -> YES at once; [self panel:thePanel didEnd:NSOKButton context:NULL] when the user has chosen
///
/// Nil for a panel means a new one, for a window the application's main window, for a text the platform's own.
/// gnustep-gui's panels show the prompt beside the name, not on the button, and no message.
/// NO, nothing shown, when there is no window. Thread: main.
#pragma once
#ifdef __OBJC__
#import <AppKit/NSOpenPanel.h>

@interface NSOpenPanel (AppKitX)
+ (BOOL)beginSheetWithSetting:(NSOpenPanel *)panel
                             prompt:(NSString *)prompt
               canChooseDirectories:(BOOL)canChooseDirectories
                     canChooseFiles:(BOOL)canChooseFiles
            allowsMultipleSelection:(BOOL)allowsMultipleSelection
    treatsFilePackagesAsDirectories:(BOOL)treatsFilePackagesAsDirectories
               canCreateDirectories:(BOOL)canCreateDirectories
                            message:(NSString *)message
                             window:(NSWindow *)window
                          directory:(NSString *)directory
                               file:(NSString *)file
                              types:(NSArray *)types
                      modalDelegate:(id)delegate
                     didEndSelector:(SEL)didEnd
                        contextInfo:(void *)context;
@end
#endif

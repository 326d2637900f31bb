/// \file
/// A save panel as a sheet, all its settings in one call.
///
/// Returns at once, YES; the answer arrives through the selector (panel, NSOKButton or NSCancelButton, context).
/// Nil for a panel means a new one, for a window the application's main window, for a text the platform's own.
/// NO, nothing shown, when there is no window. Thread: main.
#pragma once
#ifdef __OBJC__
#import <AppKit/NSSavePanel.h>

@interface NSSavePanel (AppKitX)
+ (BOOL)beginSheetWithSetting:(NSSavePanel *)panel
                   requiredFileType:(NSString *)type
               canCreateDirectories:(BOOL)canCreateDirectories
           canSelectHiddenExtension:(BOOL)canSelectHiddenExtension
                    extensionHidden:(BOOL)extensionHidden
    treatsFilePackagesAsDirectories:(BOOL)treatsFilePackagesAsDirectories
                             prompt:(NSString *)prompt
                              title:(NSString *)title
                     nameFieldLabel:(NSString *)nameFieldLabel
                            message:(NSString *)message
                             window:(NSWindow *)window
                          directory:(NSString *)directory
                               file:(NSString *)file
                      modalDelegate:(id)delegate
                     didEndSelector:(SEL)didEnd
                        contextInfo:(void *)context;
@end
#endif

#import <AppKit/AppKit.h>
#import <Tarvik/ui/NSSavePanel+Sheets.h>

@implementation NSSavePanel (AppKitX)

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
                        contextInfo:(void *)context
{
    if (!panel)
        panel = [NSSavePanel savePanel];
    if (!panel)
        return NO;
    if (type)
        [panel setRequiredFileType:type];
    if ([panel respondsToSelector:@selector(setCanCreateDirectories:)])
        [panel setCanCreateDirectories:canCreateDirectories];
    [panel setCanSelectHiddenExtension:canSelectHiddenExtension];
    [panel setExtensionHidden:extensionHidden];
    [panel setTreatsFilePackagesAsDirectories:treatsFilePackagesAsDirectories];
    if (prompt)
        [panel setPrompt:prompt];
    if (title)
        [panel setTitle:title];
    if (nameFieldLabel && [panel respondsToSelector:@selector(setNameFieldLabel:)])
        [panel setNameFieldLabel:nameFieldLabel];
    if (message && [panel respondsToSelector:@selector(setMessage:)])
        [panel setMessage:message];
    NSWindow *parent = window ? window : [NSApp mainWindow];
    if (!parent)
        return NO;
    [panel beginSheetForDirectory:directory
                             file:file
                   modalForWindow:parent
                    modalDelegate:delegate
                   didEndSelector:didEnd
                      contextInfo:context];
    return YES;
}

@end

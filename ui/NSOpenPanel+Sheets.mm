#import <AppKit/AppKit.h>
#import <Tarvik/ui/NSOpenPanel+Sheets.h>

@implementation NSOpenPanel (AppKitX)

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
                        contextInfo:(void *)context
{
    if (!panel)
        panel = [NSOpenPanel openPanel];
    if (!panel)
        return NO;
    if (prompt)
        [panel setPrompt:prompt];
    [panel setCanChooseDirectories:canChooseDirectories];
    [panel setCanChooseFiles:canChooseFiles];
    [panel setAllowsMultipleSelection:allowsMultipleSelection];
    [panel setTreatsFilePackagesAsDirectories:treatsFilePackagesAsDirectories];
    if ([panel respondsToSelector:@selector(setCanCreateDirectories:)])
        [panel setCanCreateDirectories:canCreateDirectories];
    if (message && [panel respondsToSelector:@selector(setMessage:)])
        [panel setMessage:message];
    NSWindow *parent = window ? window : [NSApp mainWindow];
    if (!parent)
        return NO;
    [panel beginSheetForDirectory:directory
                             file:file
                            types:types
                   modalForWindow:parent
                    modalDelegate:delegate
                   didEndSelector:didEnd
                      contextInfo:context];
    return YES;
}

@end

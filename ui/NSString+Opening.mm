#import <AppKit/NSWorkspace.h>
#import <Foundation/NSURL.h>
#import <Tarvik/ui/NSString+Opening.h>

@implementation NSString (AppKitX)

- (BOOL)open
{
    return [[NSWorkspace sharedWorkspace] openFile:[self stringByExpandingTildeInPath]];
}

- (BOOL)show
{
    return [[NSWorkspace sharedWorkspace] selectFile:[self stringByExpandingTildeInPath]
                            inFileViewerRootedAtPath:@""];
}

- (BOOL)openAsURL
{
    NSURL *url = [NSURL URLWithString:self];
    return url ? [[NSWorkspace sharedWorkspace] openURL:url] : NO;
}

@end

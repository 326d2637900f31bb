#import <AppKit/NSWorkspace.h>
#import <Tarvik/ui/NSImageView+Icons.h>

@implementation NSImageView (AppKitX)

- (void)setIconImageForFile:(NSString *)path
{
    if (path)
        [self setImage:[[NSWorkspace sharedWorkspace] iconForFile:[path stringByExpandingTildeInPath]]];
}

- (void)setIconImageForFiles:(NSArray *)paths
{
    if (paths)
        [self setImage:[[NSWorkspace sharedWorkspace] iconForFiles:paths]];
}

- (void)setIconImageForFileType:(NSString *)type
{
    if (type)
        [self setImage:[[NSWorkspace sharedWorkspace] iconForFileType:type]];
}

@end

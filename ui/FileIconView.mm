#import <AppKit/NSDragging.h>
#import <AppKit/NSEvent.h>
#import <AppKit/NSImage.h>
#import <AppKit/NSNibLoading.h>
#import <AppKit/NSPasteboard.h>
#import <AppKit/NSWorkspace.h>
#import <Foundation/NSArray.h>
#import <Tarvik/ui/FileIconView.h>

@implementation FileIconView

- (id)init
{
    if (!(self = [super init]))
        return nil;
    if (![self makeMembers]) {
        [self release];
        return nil;
    }
    [self registerForDraggedTypes:[NSArray arrayWithObject:NSFilenamesPboardType]];
    return self;
}

- (void)awakeFromNib
{
    [self makeMembers];
}

- (BOOL)makeMembers
{
    if (!mFiles)
        mFiles = [[NSMutableArray alloc] init];
    return mFiles != nil;
}

- (void)dealloc
{
    [mFiles release];
    [super dealloc];
}

- (void)setFile:(NSString *)path
{
    if (!path || ![self makeMembers])
        return;
    [mFiles setArray:[NSArray arrayWithObject:path]];
    [self setImage:[[NSWorkspace sharedWorkspace] iconForFile:path]];
}

- (void)setFiles:(NSArray *)paths
{
    if (!paths || ![self makeMembers])
        return;
    [mFiles setArray:paths];
    [self setImage:[[NSWorkspace sharedWorkspace] iconForFiles:paths]];
}

- (void)mouseDown:(NSEvent *)event
{
    NSPasteboard *pasteboard = [NSPasteboard pasteboardWithName:NSDragPboard];
    if (!pasteboard || ![self makeMembers])
        return;
    [pasteboard declareTypes:[NSArray arrayWithObject:NSFilenamesPboardType] owner:nil];
    [pasteboard setPropertyList:mFiles forType:NSFilenamesPboardType];
    NSImage *icon = [[NSWorkspace sharedWorkspace] iconForFiles:mFiles];
    if (!icon)
        return;
    const NSPoint mouse = [self convertPoint:[event locationInWindow] fromView:nil];
    [self dragImage:icon
                 at:NSMakePoint(mouse.x - 16, mouse.y - 16)
             offset:NSZeroSize
              event:event
         pasteboard:pasteboard
             source:self
          slideBack:YES];
}

@end

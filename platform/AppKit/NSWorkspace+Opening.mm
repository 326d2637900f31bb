// gnustep-gui's own opens only what a GNUstep application has registered for, and shows a modal alert for a URL; it has no icon for
// several files.
#import <AppKit/AppKit.h>
#include <Carbon/LSOpen.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Retained.h>

#include "platform/AppKit/private/FileViewer.h"

#include <algorithm>

namespace {

NSURL *urlOfPath(NSString *path) { return [path isAbsolutePath] ? [NSURL fileURLWithPath:path] : nil; }

constexpr CGFloat kSide = 48, kStep = 6;
constexpr NSUInteger kShown = 3;

/// The icons of the first files, each a little lower and further right than the one behind it.
NSImage *stackedIcon(NSWorkspace *workspace, NSArray *paths)
{
    const NSUInteger shown = std::min([paths count], kShown);
    const CGFloat side = kSide - kStep * CGFloat(shown - 1);
    NSImage *stack = [[[NSImage alloc] initWithSize:NSMakeSize(kSide, kSide)] autorelease];
    [stack lockFocus];
    for (NSUInteger i = shown; i-- > 0;) {
        NSImage *icon = [workspace iconForFile:[paths objectAtIndex:i]];
        const NSSize size = [icon size];
        [icon drawInRect:NSMakeRect(kStep * CGFloat(shown - 1 - i), kStep * CGFloat(i), side, side)
                fromRect:NSMakeRect(0, 0, size.width, size.height)
               operation:NSCompositeSourceOver
                fraction:1];
    }
    [stack unlockFocus];
    return stack;
}

}  // namespace

@implementation NSWorkspace (Opening)

- (BOOL)openFile:(NSString *)path
{
    NSURL *url = urlOfPath(path);
    return url && LSOpenCFURLRef((CFURLRef)url, nullptr) == noErr;
}

- (BOOL)openURL:(NSURL *)url
{
    return url && LSOpenCFURLRef((CFURLRef)url, nullptr) == noErr;
}

/// The root path is for viewers that show one folder per window; here they choose for themselves.
- (BOOL)selectFile:(NSString *)path inFileViewerRootedAtPath:(NSString *)root
{
    (void)root;
    if (![path isAbsolutePath] || ![[NSFileManager defaultManager] fileExistsAtPath:path])
        return NO;
    const auto name = tarvik::utf8(path);
    return (name && tarvik::revealInFileViewer(*name)) ||
           [self openFile:[path stringByDeletingLastPathComponent]];
}

- (NSImage *)iconForFiles:(NSArray *)paths
{
    switch ([paths count]) {
    case 0: return nil;
    case 1: return [self iconForFile:[paths objectAtIndex:0]];
    default: return stackedIcon(self, paths);
    }
}

@end

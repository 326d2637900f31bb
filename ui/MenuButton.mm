#import <AppKit/NSEvent.h>
#import <AppKit/NSMenu.h>
#import <AppKit/NSNibLoading.h>
#import <AppKit/NSWindow.h>
#import <Tarvik/ui/MenuButton.h>
#import <Tarvik/ui/NSView+Geometry.h>

@implementation MenuButton

- (void)awakeFromNib
{
    [self setTarget:self];
    [self setAction:@selector(popPulldownMenu:)];
}

- (void)setPulldownMenu:(NSMenu *)menu
{
    vPulldownMenu = menu;
}

- (IBAction)popPulldownMenu:(id)sender
{
    (void)sender;
    [self pulldownMenuCore:YES];
}

- (NSMenu *)pulldownMenuCore:(BOOL)show
{
    NSWindow *window = [self window];
    NSView *superview = [self superview];
    const NSPoint corner = [self leftBottom];
    NSEvent *event =
        [NSEvent mouseEventWithType:NSLeftMouseUp
                           location:superview ? [superview convertPoint:corner toView:nil] : corner
                      modifierFlags:NSControlKeyMask
                          timestamp:0
                       windowNumber:[window windowNumber]
                            context:[window graphicsContext]
                        eventNumber:0
                         clickCount:0
                           pressure:0];
    NSMenu *menu = vPulldownMenu ? vPulldownMenu : [self menuForEvent:event];
    if (menu && show)
        [NSMenu popUpContextMenu:menu withEvent:event forView:self];
    return menu;
}

- (void)mouseDown:(NSEvent *)event
{
    (void)event;
    [self performClick:self];
}

@end

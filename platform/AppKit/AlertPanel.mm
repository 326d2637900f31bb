#import "platform/AppKit/private/AlertPanel.h"

#import <AppKit/AppKit.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Retained.h>

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

struct Calls {
    AlertFilter filter;
    AlertAnswer answer;
};

constexpr CGFloat kMargin = 20, kIcon = 48, kTextWidth = 340, kButtonHeight = 26, kLeastButton = 84,
                  kGap = 10;

NSTextField *label(NSString *text, NSFont *font, CGFloat width)
{
    NSTextField *field = [[[NSTextField alloc] initWithFrame:NSMakeRect(0, 0, width, 10)] autorelease];
    [field setStringValue:text ? text : @""];
    [field setFont:font];
    [field setEditable:NO];
    [field setSelectable:YES];
    [field setBordered:NO];
    [field setBezeled:NO];
    [field setDrawsBackground:NO];
    [[field cell] setWraps:YES];
    // As the cell breaks it into lines; its own answer counts only the lines that the text has itself.
    constexpr CGFloat kCellMargin = 4;
    NSDictionary *look = [NSDictionary dictionaryWithObject:font forKey:NSFontAttributeName];
    const NSRect lines = [[field stringValue] boundingRectWithSize:NSMakeSize(width - kCellMargin, 10000)
                                                           options:NSStringDrawingUsesLineFragmentOrigin
                                                        attributes:look];
    [field setFrameSize:NSMakeSize(width, [text length] ? ceil(lines.size.height) + kCellMargin : 0)];
    return field;
}

void draw(NSString *sign, NSPoint middle, CGFloat size)
{
    NSDictionary *look =
        [NSDictionary dictionaryWithObjectsAndKeys:[NSFont boldSystemFontOfSize:size], NSFontAttributeName,
                                                   [NSColor whiteColor], NSForegroundColorAttributeName, nil];
    const NSSize needed = [sign sizeWithAttributes:look];
    [sign drawAtPoint:NSMakePoint(middle.x - needed.width / 2, middle.y - needed.height / 2)
        withAttributes:look];
}

}  // namespace

@interface AlertIcon : NSView {
@public
    AlertKind mKind;
}
@end

@implementation AlertIcon

- (void)drawRect:(NSRect)rect
{
    (void)rect;
    const NSRect bounds = NSInsetRect([self bounds], 2, 2);
    const NSPoint middle = NSMakePoint(NSMidX(bounds), NSMidY(bounds));
    if (mKind == AlertKind::Caution) {
        NSBezierPath *triangle = [NSBezierPath bezierPath];
        [triangle moveToPoint:NSMakePoint(NSMinX(bounds), NSMinY(bounds) + 2)];
        [triangle lineToPoint:NSMakePoint(NSMaxX(bounds), NSMinY(bounds) + 2)];
        [triangle lineToPoint:NSMakePoint(NSMidX(bounds), NSMaxY(bounds))];
        [triangle closePath];
        [[NSColor colorWithCalibratedRed:0.93 green:0.65 blue:0.1 alpha:1] set];
        [triangle fill];
        draw(@"!", NSMakePoint(middle.x, middle.y - 5), 24);
        return;
    }
    const bool isStop = mKind == AlertKind::Stop;
    [[NSColor colorWithCalibratedRed:isStop ? 0.8 : 0.2
                               green:isStop ? 0.2 : 0.45
                                blue:isStop ? 0.2 : 0.8
                               alpha:1] set];
    [[NSBezierPath bezierPathWithOvalInRect:bounds] fill];
    draw(isStop ? @"\u00D7" : @"i", middle, isStop ? 34 : 28);
}

@end

/// What an alert without a title bar stands out by from the window under it.
@interface AlertEdge : NSView
@end

@implementation AlertEdge

- (void)drawRect:(NSRect)rect
{
    (void)rect;
    [[NSColor controlShadowColor] set];
    NSFrameRect([self bounds]);
}

@end

@implementation AlertPanel

+ (AlertPanel *)alertOfKind:(AlertKind)kind
                    message:(NSString *)message
                explanation:(NSString *)explanation
                    buttons:(const std::vector<AlertButton> &)buttons
                   helpCode:(NSInteger)helpCode
                    movable:(BOOL)movable
{
    AlertExtras extras;
    extras.helpCode = helpCode;
    extras.movable = movable;
    return [self alertOfKind:kind message:message explanation:explanation buttons:buttons extras:extras];
}

+ (AlertPanel *)alertOfKind:(AlertKind)kind
                    message:(NSString *)message
                explanation:(NSString *)explanation
                    buttons:(const std::vector<AlertButton> &)buttons
                     extras:(const AlertExtras &)extras
{
    NSFont *font = [NSFont systemFontOfSize:[NSFont systemFontSize]];
    NSTextField *head = label(message, [NSFont boldSystemFontOfSize:[NSFont systemFontSize] + 1], kTextWidth);
    NSTextField *body = label(explanation, font, kTextWidth);

    NSMutableArray *right = [NSMutableArray array], *left = [NSMutableArray array];
    const auto make = [&](const AlertButton &described, CGFloat least) {
        NSButton *button =
            [[[NSButton alloc] initWithFrame:NSMakeRect(0, 0, least, kButtonHeight)] autorelease];
        [button setTitle:described.title];
        [button setFont:font];
        [button setBezelStyle:NSRoundedBezelStyle];
        [button setTag:described.code];
        [button setAction:@selector(pressed:)];
        if (described.isDefault)
            [button setKeyEquivalent:@"\r"];
        else if (described.isCancel)
            [button setKeyEquivalent:@"\e"];
        [button setFrameSize:NSMakeSize(std::max(least, [[button cell] cellSize].width + 16), kButtonHeight)];
        return button;
    };
    CGFloat wanted = kGap;
    for (const AlertButton &each : buttons) {
        if (!each.title)
            continue;
        NSButton *button = make(each, kLeastButton);
        [extras.buttonsTogether || [right count] < 2 ? right : left addObject:button];
        wanted += [button frame].size.width + kGap;
    }
    if (extras.helpCode) {
        [left addObject:make({@"?", extras.helpCode}, kButtonHeight)];
        wanted += kButtonHeight + kGap;
    }
    const CGFloat width = std::max(kMargin + kIcon + kMargin + kTextWidth, wanted + kMargin) + kMargin;
    const CGFloat space = [body frame].size.height > 0 ? kGap : 0;
    const CGFloat field = extras.field ? [extras.field frame].size.height : 0;
    const CGFloat text = std::max(kIcon, [head frame].size.height + space + [body frame].size.height +
                                             (field > 0 ? field + kGap : 0));
    const CGFloat height = kMargin + text + kMargin + kButtonHeight + kMargin;

    AlertPanel *panel =
        [[[self alloc] initWithContentRect:NSMakeRect(0, 0, width, height)
                                 styleMask:extras.movable ? NSTitledWindowMask : NSBorderlessWindowMask
                                   backing:NSBackingStoreBuffered
                                     defer:NO] autorelease];
    [panel setReleasedWhenClosed:NO];
    [panel setBecomesKeyOnlyIfNeeded:NO];
    NSView *content = [panel contentView];
    if (!extras.movable)
        [content addSubview:[[[AlertEdge alloc] initWithFrame:[content bounds]] autorelease]];
    if (kind != AlertKind::Plain) {
        AlertIcon *icon = [[[AlertIcon alloc]
            initWithFrame:NSMakeRect(kMargin, height - kMargin - kIcon, kIcon, kIcon)] autorelease];
        icon->mKind = kind;
        [content addSubview:icon];
    }
    [head setFrameOrigin:NSMakePoint(2 * kMargin + kIcon, height - kMargin - [head frame].size.height)];
    [body setFrameOrigin:NSMakePoint(2 * kMargin + kIcon,
                                     NSMinY([head frame]) - space - [body frame].size.height)];
    [content addSubview:head];
    [content addSubview:body];
    if (extras.title)
        [panel setTitle:extras.title];
    if (extras.field) {
        [extras.field
            setFrame:NSMakeRect(2 * kMargin + kIcon, NSMinY([body frame]) - kGap - field, kTextWidth, field)];
        [content addSubview:extras.field];
    }
    CGFloat edge = width - kMargin;
    for (NSButton *button : tarvik::each<NSButton>(right)) {
        [button setFrameOrigin:NSMakePoint(edge - [button frame].size.width, kMargin)];
        edge = NSMinX([button frame]) - kGap;
    }
    edge = kMargin;
    for (NSUInteger i = [left count]; i-- > 0;) {
        NSButton *button = [left objectAtIndex:i];
        [button setFrameOrigin:NSMakePoint(edge, kMargin)];
        edge = NSMaxX([button frame]) + kGap;
    }
    [right addObjectsFromArray:left];
    for (NSButton *button : tarvik::each<NSButton>(right)) {
        [button setTarget:panel];
        [content addSubview:button];
        if ([[button keyEquivalent] isEqual:@"\r"])
            [panel setDefaultButtonCell:[button cell]];
    }
    if (extras.field)
        [panel setInitialFirstResponder:extras.field];
    else if ([right count])
        [panel setInitialFirstResponder:[right objectAtIndex:0]];
    return panel;
}

- (id)initWithContentRect:(NSRect)content
                styleMask:(NSUInteger)style
                  backing:(NSBackingStoreType)backing
                    defer:(BOOL)defer
{
    if ((self = [super initWithContentRect:content styleMask:style backing:backing defer:defer]))
        mCalls = new Calls;
    return self;
}

- (void)dealloc
{
    delete static_cast<Calls *>(mCalls);
    [super dealloc];
}

- (void *)calls
{
    return mCalls;
}
- (BOOL)canBecomeKeyWindow
{
    return YES;
}

- (void)endWithCode:(NSInteger)code
{
    if ([NSApp modalWindow] == self) {
        [NSApp stopModalWithCode:code];
        // The loop looks again with the next event; from a timer there may be none.
        [NSApp postEvent:[NSEvent otherEventWithType:NSApplicationDefined
                                            location:NSZeroPoint
                                       modifierFlags:0
                                           timestamp:0
                                        windowNumber:[self windowNumber]
                                             context:nil
                                             subtype:0
                                               data1:0
                                               data2:0]
                 atStart:NO];
    } else
        [NSApp endSheet:self returnCode:code];
}

- (void)pressed:(id)sender
{
    [self endWithCode:[sender tag]];
}

- (void)sendEvent:(NSEvent *)event
{
    NSInteger code = 0;
    const AlertFilter filter = static_cast<Calls *>(mCalls)->filter;
    if (filter && filter(event, code))
        [self endWithCode:code];
    else
        [super sendEvent:event];
}

- (void)alert:(NSWindow *)alert endedWithCode:(NSInteger)code context:(void *)context
{
    (void)context;
    const auto kept = tarvik::retain(self);
    const AlertAnswer answer = std::exchange(static_cast<Calls *>(mCalls)->answer, nullptr);
    if (answer)
        answer(code, false);
    [alert orderOut:nil];
    if (answer)
        answer(code, true);
}

@end

NSInteger RunAlert(AlertPanel *panel, const AlertFilter &filter)
{
    static_cast<Calls *>([panel calls])->filter = filter;
    const NSInteger code = [NSApp runModalForWindow:panel];
    static_cast<Calls *>([panel calls])->filter = nullptr;
    [panel orderOut:nil];
    return code;
}

void BeginAlert(AlertPanel *panel, NSWindow *parent, const AlertAnswer &answer)
{
    static_cast<Calls *>([panel calls])->answer = answer;
    [NSApp beginSheet:panel
        modalForWindow:parent
         modalDelegate:panel
        didEndSelector:@selector(alert:endedWithCode:context:)
           contextInfo:nullptr];
}

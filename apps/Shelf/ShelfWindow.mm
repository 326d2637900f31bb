#include "ShelfWindow.h"

#include "Catalogue.h"

/// Text that the mouse doesn't see: clicks and drops go to what is under it.
@interface ShelfCaption : NSTextField
@end

@implementation ShelfCaption

- (NSView *)hitTest:(NSPoint)point
{
    (void)point;
    return nil;
}

@end

namespace {

constexpr CGFloat kWidth = 960, kHeight = 560, kEdge = 12, kButtonHeight = 28,
                  kTop = kButtonHeight + 2 * kEdge, kBottom = 74;

NSTextField *plainText(NSRect frame, CGFloat size, NSColor *color, BOOL bold)
{
    NSTextField *field = [[[ShelfCaption alloc] initWithFrame:frame] autorelease];
    [field setEditable:NO];
    [field setSelectable:NO];
    [field setBezeled:NO];
    [field setDrawsBackground:NO];
    [field setFont:bold ? [NSFont boldSystemFontOfSize:size] : [NSFont systemFontOfSize:size]];
    [field setTextColor:color];
    [[field cell] setLineBreakMode:NSLineBreakByTruncatingMiddle];
    return field;
}

void dress(NSButton *button, NSString *title, SEL action, id target)
{
    [button setBezelStyle:NSRoundedBezelStyle];
    [button setFont:[NSFont systemFontOfSize:11]];
    [button setTarget:target];
    [button setAction:action];
    [button setTitle:title];
}

}  // namespace

@implementation ShelfTable

- (void)keyDown:(NSEvent *)event
{
    NSString *keys = [event charactersIgnoringModifiers];
    const unichar key = [keys length] ? [keys characterAtIndex:0] : 0;
    if (key == NSDeleteFunctionKey || key == NSDeleteCharacter || key == NSBackspaceCharacter)
        [self tryToPerform:@selector(delete:) with:self];
    else if ((key == NSCarriageReturnCharacter || key == NSEnterCharacter) && [self selectedRow] >= 0)
        [NSApp sendAction:[self doubleAction] to:[self target] from:self];
    else
        [super keyDown:event];
}

// AppKit drags only what was selected before; here a row that is pressed may be dragged at once.
- (void)mouseDown:(NSEvent *)event
{
    constexpr NSUInteger kModifiers =
        NSShiftKeyMask | NSCommandKeyMask | NSControlKeyMask | NSAlternateKeyMask;
    const NSInteger row = [self rowAtPoint:[self convertPoint:[event locationInWindow] fromView:nil]];
    if (row >= 0 && ![self isRowSelected:row] && !([event modifierFlags] & kModifiers))
        [self selectRowIndexes:[NSIndexSet indexSetWithIndex:NSUInteger(row)] byExtendingSelection:NO];
    [super mouseDown:event];
}

// The whole row is dragged, up and down too, and may move as well as be copied.
- (NSDragOperation)draggingSourceOperationMaskForLocal:(BOOL)isLocal
{
    return isLocal ? NSDragOperationEvery : NSDragOperationCopy | NSDragOperationGeneric;
}

// AppKit marks the place of a drop that isn't accepted, and leaves the mark.
- (NSDragOperation)draggingUpdated:(id<NSDraggingInfo>)info
{
    const NSDragOperation operation = [super draggingUpdated:info];
    if (operation == NSDragOperationNone)
        [self setNeedsDisplay:YES];
    return operation;
}

@end

@interface ShelfWindow (Parts)
- (void)addButtonsTo:(NSView *)content target:(id)target labels:(NSMenu *)labels;
- (void)addTableTo:(NSView *)content;
- (void)addFootTo:(NSView *)content target:(id)target;
@end

@implementation ShelfWindow

- (id)initWithTarget:(id)target labels:(NSMenu *)labels
{
    self = [super initWithContentRect:NSMakeRect(160, 240, kWidth, kHeight)
                            styleMask:NSTitledWindowMask | NSClosableWindowMask | NSMiniaturizableWindowMask |
                                      NSResizableWindowMask
                              backing:NSBackingStoreBuffered
                                defer:NO];
    if (!self)
        return nil;
    [self setTitle:[@"Shelf" localize]];
    [self setReleasedWhenClosed:NO];
    [self setMinSize:NSMakeSize(720, 320)];
    NSView *content = [self contentView];
    [self addButtonsTo:content target:target labels:labels];
    [self addTableTo:content];
    [self addFootTo:content target:target];
    [self setInitialFirstResponder:mTable];
    return self;
}

- (void)dealloc
{
    [mButtons release];
    [super dealloc];
}

- (void)showWork:(NSString *)text fraction:(double)fraction
{
    const BOOL works = text != nil;
    [mProgress setHidden:!works];
    [mCancel setHidden:!works];
    if (!works)
        return;
    [mStatus setStringValue:text];
    mProgress->mFraction = fraction;
    [mProgress setNeedsDisplay:YES];
}

@end

@implementation ShelfWindow (Parts)

- (void)addButtonsTo:(NSView *)content target:(id)target labels:(NSMenu *)labels
{
    struct {
        NSString *title;
        SEL action;
        bool spaceBefore;
    } const buttons[] = {
        {@"Add Images…", @selector(addImages:), false},
        {@"New Image…", @selector(newImageFromFolder:), false},
        {@"Mount", @selector(mountImages:), true},
        {@"Unmount", @selector(unmountImages:), false},
        {@"Reveal", @selector(revealImages:), false},
        {@"Verify", @selector(verifyImages:), true},
        {@"Label", nullptr, false},
    };
    mButtons = [[NSMutableArray alloc] init];
    CGFloat left = kEdge;
    for (const auto &each : buttons) {
        const bool isLabel = !each.action;
        NSString *title = [each.title localize];
        NSButton *button =
            [[[isLabel ? [MenuButton class] : [NSButton class] alloc] initWithFrame:NSZeroRect] autorelease];
        dress(button, isLabel ? [title stringByAppendingString:@" ▾"] : title, each.action, target);
        if (isLabel) {
            [button awakeFromNib];  // its own target, as out of an interface file
            [(MenuButton *)button setPulldownMenu:labels];
        }
        left += each.spaceBefore ? 2 * kEdge : 0;
        const CGFloat width = ceil([[button cell] cellSize].width) + 20;
        [button setFrame:NSMakeRect(left, kHeight - kEdge - kButtonHeight, width, kButtonHeight)];
        [button setAutoresizingMask:NSViewMinYMargin];
        [content addSubview:button];
        [mButtons addObject:button];
        left = [button right] + 6;
    }
}

- (void)addTableTo:(NSView *)content
{
    struct {
        NSString *key, *title;
        CGFloat width;
        bool isEditable;
    } const columns[] = {
        {shelf::kName, @"Name", 150, true},           {shelf::kPath, @"Path", 230, false},
        {shelf::kMounted, @"Mounted at", 140, false}, {shelf::kSize, @"Size", 76, false},
        {shelf::kChecksum, @"Checksum", 110, false},  {shelf::kLabel, @"Label", 82, false},
        {shelf::kNote, @"Note", 140, true},
    };
    NSScrollView *scroller = [[[NSScrollView alloc]
        initWithFrame:NSMakeRect(-1, kBottom, kWidth + 2, kHeight - kBottom - kTop)] autorelease];
    [scroller setHasVerticalScroller:YES];
    [scroller setHasHorizontalScroller:YES];
    [scroller setAutohidesScrollers:YES];
    [scroller setBorderType:NSLineBorder];
    [scroller setAutoresizingMask:NSViewWidthSizable | NSViewHeightSizable];
    mTable = [[[ShelfTable alloc] initWithFrame:NSMakeRect(0, 0, kWidth, 200)] autorelease];
    for (const auto &each : columns) {
        NSTableColumn *column = [[[NSTableColumn alloc] initWithIdentifier:each.key] autorelease];
        const Class kind = each.key == shelf::kLabel ? [LabelCell class] : [LineCell class];
        NSTextFieldCell *cell = [[[kind alloc] initTextCell:@""] autorelease];
        [cell setFont:[NSFont systemFontOfSize:11]];
        [cell setLineBreakMode:each.key == shelf::kPath ? NSLineBreakByTruncatingMiddle
                                                        : NSLineBreakByTruncatingTail];
        if (each.key == shelf::kSize)
            [cell setAlignment:NSRightTextAlignment];
        if (each.key == shelf::kChecksum)
            [cell setFont:[NSFont userFixedPitchFontOfSize:10]];
        [column setDataCell:cell];
        [cell setEditable:each.isEditable];
        [column setHeaderCell:[[[FlatHeaderCell alloc] initTextCell:[each.title localize]] autorelease]];
        [[column headerCell]
            setAlignment:each.key == shelf::kSize ? NSRightTextAlignment : NSLeftTextAlignment];
        [column setEditable:each.isEditable];
        [column setWidth:each.width];
        [column setMinWidth:40];
        [mTable addTableColumn:column];
    }
    [[mTable headerView] setFrameSize:NSMakeSize(kWidth, 24)];
    [mTable setRowHeight:22];
    [mTable setIntercellSpacing:NSMakeSize(10, 0)];
    [mTable setDrawsGrid:NO];
    [mTable setBackgroundColor:[NSColor whiteColor]];
    [mTable setAllowsMultipleSelection:YES];
    [mTable setAllowsEmptySelection:YES];
    [mTable setAllowsColumnSelection:NO];
    [mTable setAllowsColumnReordering:YES];
    [mTable setVerticalMotionCanBeginDrag:YES];
    [mTable setColumnAutoresizingStyle:NSTableViewLastColumnOnlyAutoresizingStyle];
    [mTable setAutosaveName:@"Shelf"];
    [mTable setAutosaveTableColumns:YES];
    [scroller setDocumentView:mTable];
    [content addSubview:scroller];

    mEmpty = plainText(NSMakeRect(40, [scroller verticalCenter] - 24, kWidth - 80, 48), 13,
                       [NSColor colorWithCalibratedWhite:0.45 alpha:1], NO);
    [mEmpty setAlignment:NSCenterTextAlignment];
    [[mEmpty cell] setLineBreakMode:NSLineBreakByWordWrapping];
    [mEmpty setStringValue:[@"No images yet.\nDrag disk images here, or choose Add Images." localize]];
    [mEmpty setAutoresizingMask:NSViewWidthSizable | NSViewMinYMargin | NSViewMaxYMargin];
    [content addSubview:mEmpty];
}

- (void)addFootTo:(NSView *)content target:(id)target
{
    constexpr CGFloat textLeft = kEdge + 48 + kEdge, workWidth = 300, workLeft = kWidth - kEdge - workWidth;
    mIcon = [[[FileIconView alloc] init] autorelease];
    [mIcon setFrame:NSMakeRect(kEdge, (kBottom - 48) / 2, 48, 48)];
    [mIcon setAutoresizingMask:NSViewMaxYMargin];
    NSColor *const gray = [NSColor colorWithCalibratedWhite:0.35 alpha:1];
    mTitle =
        plainText(NSMakeRect(textLeft, 38, workLeft - textLeft - kEdge, 18), 12, [NSColor blackColor], YES);
    mDetail = plainText(NSMakeRect(textLeft, 18, workLeft - textLeft - kEdge, 18), 11, gray, NO);
    mStatus = plainText(NSMakeRect(workLeft, 38, workWidth, 18), 11, gray, NO);
    [mStatus setAlignment:NSRightTextAlignment];
    for (NSTextField *field : {mTitle, mDetail})
        [field setAutoresizingMask:NSViewWidthSizable | NSViewMaxYMargin];
    [mStatus setAutoresizingMask:NSViewMinXMargin | NSViewMaxYMargin];
    mCancel = [[[NSButton alloc] initWithFrame:NSZeroRect] autorelease];
    dress(mCancel, [@"Cancel" localize], @selector(cancelWork:), target);
    const CGFloat width = ceil([[mCancel cell] cellSize].width) + 16;
    [mCancel setFrame:NSMakeRect(kWidth - kEdge - width, 10, width, 24)];
    [mCancel setAutoresizingMask:NSViewMinXMargin | NSViewMaxYMargin];
    mProgress =
        [[[FlatProgress alloc] initWithFrame:NSMakeRect(workLeft, 18, workWidth - width - 8, 8)] autorelease];
    [mProgress setAutoresizingMask:NSViewMinXMargin | NSViewMaxYMargin];
    for (NSView *view : {(NSView *)mIcon, (NSView *)mTitle, (NSView *)mDetail, (NSView *)mStatus,
                         (NSView *)mProgress, (NSView *)mCancel})
        [content addSubview:view];
    [self showWork:nil fraction:0];
}

@end

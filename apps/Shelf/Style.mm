#include "Style.h"

#include "Catalogue.h"

#include <Tarvik/Tarvik.h>

#include <algorithm>
#include <cmath>

namespace {

NSDictionary *look(NSFont *font, NSColor *color)
{
    return [NSDictionary
        dictionaryWithObjectsAndKeys:font, NSFontAttributeName, color, NSForegroundColorAttributeName, nil];
}

/// Of the text in one line. Laying it out takes ten times as long as adding up its letters, and is needed only where a letter
/// may be another font's.
CGFloat widthOf(NSString *text, NSDictionary *look)
{
    constexpr unichar kPastLatin = 0x0250, kEllipsis = 0x2026;
    for (NSUInteger i = [text length]; i-- > 0;) {
        const unichar letter = [text characterAtIndex:i];
        if (letter < ' ' || (letter >= kPastLatin && letter != kEllipsis))
            return [text sizeWithAttributes:look].width;
    }
    return [(NSFont *)[look objectForKey:NSFontAttributeName] widthOfString:text];
}

/// Of a line in the font.
CGFloat heightOf(NSDictionary *look)
{
    static NSMutableDictionary *const heights = [[NSMutableDictionary alloc] init];
    NSFont *const font = [look objectForKey:NSFontAttributeName];
    NSNumber *height = [heights objectForKey:font];
    if (!height) {
        height = [NSNumber numberWithDouble:[@"X" sizeWithAttributes:look].height];
        [heights setObject:height forKey:font];
    }
    return [height doubleValue];
}

/// The text cut to the width, "…" in the place of what is missing: in its middle, or at its end.
NSString *fitting(NSString *text, CGFloat width, NSDictionary *look, bool inTheMiddle)
{
    const auto isTooWide = [=](NSString *some) { return widthOf(some, look) > width; };
    if (!isTooWide(text))
        return text;
    const NSUInteger length = [text length];
    NSUInteger least = 0, most = length - 1;  // characters that stay
    const auto cut = [=](NSUInteger stay) {
        const NSUInteger front = inTheMiddle ? stay / 2 : stay;
        NSRange gone = NSMakeRange(front, length - stay);
        if (gone.location < length)
            gone = [text rangeOfComposedCharacterSequencesForRange:gone];
        return [text stringByReplacingCharactersInRange:gone withString:@"…"];
    };
    while (least < most) {
        const NSUInteger half = (least + most + 1) / 2;
        if (isTooWide(cut(half)))
            most = half - 1;
        else
            least = half;
    }
    return cut(least);
}

/// A disc. Its points are reckoned here: drawing it into an image would take a window of the display's for each.
NSImage *disc(NSColor *color)
{
    constexpr int kSide = 12, kFine = 4;  // points, and parts of a point each way
    constexpr double kRadius = 5;
    NSBitmapImageRep *points = [[[NSBitmapImageRep alloc] initWithBitmapDataPlanes:nullptr
                                                                        pixelsWide:kSide
                                                                        pixelsHigh:kSide
                                                                     bitsPerSample:8
                                                                   samplesPerPixel:4
                                                                          hasAlpha:YES
                                                                          isPlanar:NO
                                                                    colorSpaceName:NSCalibratedRGBColorSpace
                                                                       bytesPerRow:4 * kSide
                                                                      bitsPerPixel:32] autorelease];
    color = [color colorUsingColorSpaceName:NSCalibratedRGBColorSpace];
    unsigned char *point = [points bitmapData];
    for (int place = 0; place < kSide * kSide; ++place) {
        int inside = 0;
        for (int part = 0; part < kFine * kFine; ++part) {
            const double x = place % kSide + (part % kFine + 0.5) / kFine - kSide / 2.0,
                         y = place / kSide + (part / kFine + 0.5) / kFine - kSide / 2.0;
            inside += x * x + y * y <= kRadius * kRadius;
        }
        const CGFloat alpha = [color alphaComponent] * inside / (kFine * kFine);
        for (CGFloat part : {[color redComponent] * alpha,
                             [color greenComponent] * alpha,
                             [color blueComponent] * alpha,
                             alpha})
            *point++ = (unsigned char)(part * 255 + 0.5);
    }
    NSImage *image = [[[NSImage alloc] initWithSize:NSMakeSize(kSide, kSide)] autorelease];
    [image addRepresentation:points];
    return image;
}

/// One line, in the middle of the height.
void drawLine(NSString *text, NSRect frame, NSDictionary *look, NSTextAlignment alignment, bool cutsTheMiddle)
{
    NSString *shown = fitting(text, frame.size.width, look, cutsTheMiddle);
    const CGFloat free =
        alignment == NSLeftTextAlignment ? 0 : std::max<CGFloat>(frame.size.width - widthOf(shown, look), 0);
    const CGFloat left = NSMinX(frame) + (alignment == NSRightTextAlignment    ? free
                                          : alignment == NSCenterTextAlignment ? free / 2
                                                                               : 0);
    [shown drawAtPoint:NSMakePoint(left, floor(NSMidY(frame) - heightOf(look) / 2)) withAttributes:look];
}

}  // namespace

namespace shelf {

NSBezierPath *roundedShape(NSRect edge, CGFloat radius)
{
    const CGFloat left = NSMinX(edge), right = NSMaxX(edge), low = NSMinY(edge), high = NSMaxY(edge);
    NSBezierPath *shape = [NSBezierPath bezierPath];
    [shape moveToPoint:NSMakePoint(left + radius, low)];
    [shape appendBezierPathWithArcFromPoint:NSMakePoint(right, low)
                                    toPoint:NSMakePoint(right, high)
                                     radius:radius];
    [shape appendBezierPathWithArcFromPoint:NSMakePoint(right, high)
                                    toPoint:NSMakePoint(left, high)
                                     radius:radius];
    [shape appendBezierPathWithArcFromPoint:NSMakePoint(left, high)
                                    toPoint:NSMakePoint(left, low)
                                     radius:radius];
    [shape appendBezierPathWithArcFromPoint:NSMakePoint(left, low)
                                    toPoint:NSMakePoint(right, low)
                                     radius:radius];
    [shape closePath];
    return shape;
}

void registerStyle()
{
    NSString *const ground = @"0.95 0.95 0.95", *const line = @"0.80 0.80 0.80",
                    *const chosen = @"0.80 0.88 0.98";
    NSMutableDictionary *style = [NSMutableDictionary dictionary];
    [style setObject:@"NSWindows95InterfaceStyle" forKey:@"NSInterfaceStyleDefault"];
    [style setObject:@"YES" forKey:@"GSSuppressAppIcon"];
    for (NSString *font : {@"NSFont", @"NSUserFont", @"NSLabelFont", @"NSMenuFont", @"NSMessageFont",
                           @"NSToolTipsFont", @"NSControlContentFont", @"NSTitleBarFont", @"NSPaletteFont"}) {
        [style setObject:@"DejaVuSans" forKey:font];
        [style setObject:@"11" forKey:[font stringByAppendingString:@"Size"]];
    }
    [style setObject:@"DejaVuSans-Bold" forKey:@"NSBoldFont"];
    [style setObject:@"11" forKey:@"NSBoldFontSize"];
    [style setObject:@"DejaVuSansMono" forKey:@"NSUserFixedPitchFont"];
    for (NSString *color :
         {@"windowBackgroundColor", @"controlBackgroundColor", @"controlColor", @"knobColor",
          @"selectedKnobColor", @"windowFrameColor", @"controlHighlightColor"})
        [style setObject:ground forKey:color];
    for (NSString *color : {@"controlShadowColor", @"gridColor"})
        [style setObject:line forKey:color];
    [style setObject:@"0.6 0.6 0.6" forKey:@"controlDarkShadowColor"];
    [style setObject:@"0.88 0.88 0.88" forKey:@"scrollBarColor"];
    [style setObject:@"0.2 0.2 0.2" forKey:@"windowFrameTextColor"];  // also the headings of tables
    for (NSString *color :
         {@"selectedControlColor", @"selectedTextBackgroundColor", @"selectedMenuItemColor"})
        [style setObject:chosen forKey:color];
    // Shortcuts with the key that everybody here presses.
    [style setObject:@"Control_L" forKey:@"GSFirstCommandKey"];
    [style setObject:@"Control_R" forKey:@"GSSecondCommandKey"];
    [style setObject:@"Super_L" forKey:@"GSFirstControlKey"];
    [style setObject:@"Super_R" forKey:@"GSSecondControlKey"];
    [style setObject:@"Alt_L" forKey:@"GSFirstAlternateKey"];
    [style setObject:@"Ctrl+" forKey:@"GSCommandKeyString"];
    [style setObject:@"Shift+" forKey:@"GSShiftKeyString"];
    [[NSUserDefaults standardUserDefaults] registerDefaults:style];
}

NSColor *labelColor(int label)
{
    static const float colors[kLabelCount][3] = {{0, 0, 0},          {0.90, 0.26, 0.24}, {0.95, 0.58, 0.20},
                                                 {0.93, 0.78, 0.20}, {0.26, 0.53, 0.88}, {0.65, 0.40, 0.80},
                                                 {0.36, 0.70, 0.34}, {0.58, 0.58, 0.58}};
    if (label <= 0 || label >= kLabelCount)
        return [NSColor clearColor];
    const float *c = colors[label];
    return [NSColor colorWithCalibratedRed:c[0] green:c[1] blue:c[2] alpha:1];
}

NSImage *labelSpot(int label)
{
    static NSImage *spots[kLabelCount];
    if (label < 0 || label >= kLabelCount)
        label = 0;
    if (!spots[label])
        spots[label] = [disc(labelColor(label)) retain];
    return spots[label];
}

}  // namespace shelf

@implementation FlatProgress

- (void)drawRect:(NSRect)dirty
{
    (void)dirty;
    const NSRect bar = NSInsetRect([self bounds], 0.5, 0.5);
    const CGFloat radius = bar.size.height / 2;
    [[NSColor colorWithCalibratedWhite:0.86 alpha:1] set];
    [shelf::roundedShape(bar, radius) fill];
    NSRect done = bar;
    if (mFraction >= 0) {
        done.size.width = std::max(bar.size.width * std::min(mFraction, 1.0), bar.size.height);
    } else {
        constexpr double kTurn = 1.6;  // seconds from one end to the other
        done.size.width = bar.size.width / 4;
        const double place = std::fmod([NSDate timeIntervalSinceReferenceDate] / kTurn, 2);
        done.origin.x += (bar.size.width - done.size.width) * (place < 1 ? place : 2 - place);
    }
    [shelf::labelColor(4) set];
    [shelf::roundedShape(done, radius) fill];
}

@end

@implementation LabelCell

- (void)drawInteriorWithFrame:(NSRect)frame inView:(NSView *)view
{
    const int label = [self intValue];
    if (label <= 0)
        return;
    NSImage *spot = shelf::labelSpot(label);
    const CGFloat top = floor(NSMidY(frame) - 6);
    [spot compositeToPoint:NSMakePoint(NSMinX(frame) + 2, [view isFlipped] ? top + 12 : top)
                 operation:NSCompositeSourceOver];
    drawLine([shelf::labelName(label) localize],
             NSMakeRect(NSMinX(frame) + 19, NSMinY(frame), frame.size.width - 19, frame.size.height),
             look([self font], [NSColor controlTextColor]), NSLeftTextAlignment, false);
}

@end

@implementation LineCell

- (void)drawInteriorWithFrame:(NSRect)frame inView:(NSView *)view
{
    (void)view;
    drawLine([self stringValue], NSInsetRect(frame, 2, 0), look([self font], [self textColor]),
             [self alignment], [self lineBreakMode] == NSLineBreakByTruncatingMiddle);
}

@end

@implementation FlatHeaderCell

- (void)drawWithFrame:(NSRect)frame inView:(NSView *)view
{
    (void)view;
    [[NSColor colorWithCalibratedWhite:0.97 alpha:1] set];
    NSRectFill(frame);
    [[NSColor colorWithCalibratedWhite:0.82 alpha:1] set];
    NSRectFill(NSMakeRect(NSMinX(frame), NSMaxY(frame) - 1, frame.size.width, 1));
    NSRectFill(NSMakeRect(NSMaxX(frame) - 1, NSMinY(frame) + 4, 1, frame.size.height - 8));
    drawLine([self stringValue], NSInsetRect(frame, 7, 0),
             look([NSFont systemFontOfSize:11], [NSColor colorWithCalibratedWhite:0.3 alpha:1]),
             [self alignment], false);
}

- (void)highlight:(BOOL)flag withFrame:(NSRect)frame inView:(NSView *)view
{
    (void)flag;
    [self drawWithFrame:frame inView:view];
}

@end

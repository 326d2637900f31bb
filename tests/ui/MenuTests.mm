#import <Tarvik/TarvikUI.h>
#include <gtest/gtest.h>
#include <tests/ui/Desktop.h>

#include <functional>
#include <memory>

@interface MenuChoice : NSObject {
@public
    int mTag;
}
@end
@implementation MenuChoice
- (void)choose:(id)sender
{
    mTag = int([sender tag]);
}
@end

namespace {

NSMenu *menuOfTags(std::initializer_list<int> tags, id target = nil)
{
    NSMenu *menu = [[[NSMenu alloc] initWithTitle:@"Labels"] autorelease];
    for (int tag : tags) {
        NSMenuItem *item = [menu addItemWithTitle:[NSString stringWithFormat:@"Item %d", tag]
                                           action:@selector(choose:)
                                    keyEquivalent:@""];
        [item setTag:tag];
        [item setTarget:target];
    }
    return menu;
}

NSMenuItem *lookUp(NSMenu *menu, int tag, ...)
{
    va_list tags;
    va_start(tags, tag);
    NSMenuItem *item = [menu itemWithTags:tag arguments:tags];
    va_end(tags);
    return item;
}

TEST(Menu, ItemsAreFoundByTheTagsOnTheWay)
{
    [NSApplication sharedApplication];
    NSMenu *menu = menuOfTags({1, 3}), *inner = menuOfTags({7, 8}), *innermost = menuOfTags({-5});
    [menu setSubmenu:inner forItem:[menu itemWithTag:3]];
    [inner setSubmenu:innermost forItem:[inner itemWithTag:8]];
    EXPECT_EQ(([menu itemWithTags:3, 0]), [menu itemWithTag:3]);
    EXPECT_EQ(([menu itemWithTags:3, 7, 0]), [inner itemWithTag:7]);
    EXPECT_EQ(lookUp(menu, 3, 8, -5, 0), [innermost itemWithTag:-5]);
    for (NSMenuItem *none : {[menu itemWithTags:0], [menu itemWithTags:4, 0], [menu itemWithTags:3, 9, 0],
                             [menu itemWithTags:1, 7, 0], [menu itemWithTags:3 arguments:nullptr]})
        EXPECT_EQ(none, nil);
}

TEST(Menu, AMixedStateCountsAsChecked)
{
    [NSApplication sharedApplication];
    NSMenuItem *item = [menuOfTags({1}) itemWithTag:1];
    NSButton *button = [[[NSButton alloc] init] autorelease];
    NSCell *cell = [[[NSCell alloc] initTextCell:@""] autorelease];
    [button setAllowsMixedState:YES];
    [item setState:NSMixedState], [button setState:NSMixedState];
    EXPECT_TRUE([item checked]);
    EXPECT_TRUE([button checked]);
    EXPECT_FALSE([cell checked]);
    [item toggleChecked];
    EXPECT_EQ([item state], 0);
    [item toggleChecked], [button setChecked:BOOL(2)], [cell setChecked:YES];
    EXPECT_EQ([item state], 1);
    EXPECT_EQ([button state], 1);
    EXPECT_TRUE([cell checked]);
    [item setChecked:NO], [button setChecked:NO], [cell setChecked:NO];
    EXPECT_FALSE([item checked] || [button checked] || [cell checked]);
}

TEST(MenuButton, PopsUpAndAnItemIsChosen)
{
    const TestWindow window;
    MenuChoice *choice = [[[MenuChoice alloc] init] autorelease];
    NSMenu *menu = menuOfTags({1, 2, 3}, choice);
    MenuButton *button =
        window.add([[[MenuButton alloc] initWithFrame:NSMakeRect(40, 120, 100, 30)] autorelease]);
    [button awakeFromNib];
    [button setPulldownMenu:menu];
    window.show();
    EXPECT_EQ([button pulldownMenuCore:NO], menu);
    EXPECT_FALSE([[[menu menuRepresentation] window] isVisible]);

    // Clicked: it opens below the button and stays. Then an item is clicked.
    int looks = 0;
    NSPoint top = NSZeroPoint;
    std::unique_ptr<Hand> second;
    std::function<void()> lookForMenu = [&] {
        NSMenuView *shown = (NSMenuView *)[menu menuRepresentation];
        if (![[shown window] isVisible] || ++looks < 8)  // not the moment before the click has ended
            return later(0.1, lookForMenu);
        const NSRect frame = [[shown window] frame], item = [shown rectOfItemAtIndex:1];
        top = NSMakePoint(NSMinX(frame), NSMaxY(frame));
        second =
            std::make_unique<Hand>("mousemove " + onScreen(shown, NSMakePoint(NSMidX(item), NSMidY(item))) +
                                   " sleep 0.1 mousedown 1 sleep 0.1 mouseup 1");
    };
    later(0.1, lookForMenu);
    const Hand press("mousemove " + middleOf(button) + " sleep 0.1 mousedown 1 sleep 0.1 mouseup 1");
    EXPECT_TRUE(eventually([&] { return choice->mTag != 0; }));
    EXPECT_EQ(choice->mTag, 2);
    const NSPoint corner = [window.get() convertBaseToScreen:NSMakePoint(40, 120)];
    EXPECT_NEAR(top.x, corner.x, 30);
    EXPECT_NEAR(top.y, corner.y, 30);
}

TEST(MenuButton, WithoutItsOwnShowsItsContextMenuOrNothing)
{
    const TestWindow window;
    MenuButton *button =
        window.add([[[MenuButton alloc] initWithFrame:NSMakeRect(10, 10, 100, 30)] autorelease]);
    [button awakeFromNib];
    EXPECT_EQ([button pulldownMenuCore:YES], nil);
    NSMenu *menu = menuOfTags({1});
    [button setMenu:menu];
    EXPECT_EQ([button pulldownMenuCore:NO], menu);
}

}  // namespace

#import <AppKit/AppKit.h>
#include <Carbon/Gestalt.h>
#import <Tarvik/TarvikUI.h>
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>
#include <gtest/gtest.h>
#include <tests/support/Program.h>
#include <tests/support/TemporaryFolder.h>

#include <atomic>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

/// What the selectors of a sheet were told.
@interface SheetAnswers : NSObject {
@public
    std::string mCalls;
    NSWindow *mSheet;  // not retained
}
@end
@implementation SheetAnswers
- (void)sheet:(NSWindow *)sheet ended:(int)code context:(void *)context
{
    mSheet = sheet;
    mCalls += "ended " + std::to_string(code) + " " + static_cast<const char *>(context) + ";";
}
- (void)sheet:(NSWindow *)sheet gone:(int)code context:(void *)context
{
    (void)context;
    EXPECT_FALSE([sheet isVisible]);
    mCalls += "gone " + std::to_string(code) + ";";
}
@end

namespace {

char kContext[] = "here";

/// Keys pressed by somebody else while the caller waits. A panel may get the keyboard later than it is shown.
class Keys {
public:
    explicit Keys(const std::vector<std::string> &names)
    {
        std::vector<std::string> command{"xdotool", "sleep", "0.4", "key", "--delay", "60"};
        command.insert(command.end(), names.begin(), names.end());
        const auto press = [=, this] {
            while (!done_)
                runProgram(command);
        };
        thread_ = std::thread(press);
    }
    ~Keys()
    {
        done_ = true;
        thread_.join();
    }

private:
    std::atomic<bool> done_{false};
    std::thread thread_;
};

class Sheets : public testing::Test {
protected:
    void SetUp() override
    {
        [NSApplication sharedApplication];
        [NSApp finishLaunching];
        window_ = [[NSWindow alloc] initWithContentRect:NSMakeRect(200, 300, 600, 400)
                                              styleMask:NSTitledWindowMask
                                                backing:NSBackingStoreBuffered
                                                  defer:NO];
        [window_ setReleasedWhenClosed:NO];
        field_ = [[[NSTextField alloc] initWithFrame:NSMakeRect(10, 10, 200, 24)] autorelease];
        [[window_ contentView] addSubview:field_];
        [NSApp activateIgnoringOtherApps:YES];
        [window_ makeKeyAndOrderFront:nil];
        [window_ makeFirstResponder:field_];
        answers_ = [[SheetAnswers alloc] init];
        ASSERT_TRUE(turnUntil([&] { return [NSApp isActive] && [NSApp keyWindow] == window_; }));
    }
    void TearDown() override
    {
        [window_ close];
        [window_ release];
        [answers_ release];
    }
    bool turnUntil(const std::function<bool()> &condition, NSTimeInterval limit = 40)
    {
        NSDate *end = [NSDate dateWithTimeIntervalSinceNow:limit];
        while (!condition() && [end timeIntervalSinceNow] > 0) {
            NSEvent *event = [NSApp nextEventMatchingMask:NSAnyEventMask
                                                untilDate:[NSDate dateWithTimeIntervalSinceNow:0.02]
                                                   inMode:NSDefaultRunLoopMode
                                                  dequeue:YES];
            if (event)
                [NSApp sendEvent:event];
        }
        return condition();
    }
    /// Comes to the front, and has keys pressed again and again until what they answer is there.
    std::unique_ptr<Keys> keys(const std::vector<std::string> &names)
    {
        [window_ makeKeyAndOrderFront:nil];
        NSDate *quiet = [NSDate dateWithTimeIntervalSinceNow:0.3];  // what was pressed once too often
        turnUntil([&] { return [quiet timeIntervalSinceNow] < 0; });
        return std::make_unique<Keys>(names);
    }
    /// Again and again: a sheet may be on the display later than it is shown.
    bool clickUntil(NSView *view, const std::function<bool()> &condition)
    {
        for (int tries = 0; tries < 8; ++tries) {
            NSWindow *of = [view window];
            const NSRect bounds = [view bounds];
            const NSPoint middle =
                [of convertBaseToScreen:[view convertPoint:NSMakePoint(NSMidX(bounds), NSMidY(bounds))
                                                    toView:nil]];
            const std::string x = std::to_string(int(middle.x)),
                              y = std::to_string(int(NSMaxY([[NSScreen mainScreen] frame]) - middle.y));
            std::thread mouse([=] {
                runProgram({"xdotool", "mousemove", x, y, "sleep", "0.1", "mousedown", "1", "sleep", "0.08",
                            "mouseup", "1"});
            });
            const bool holds = turnUntil(condition, 5);
            mouse.join();
            if (holds)
                return true;
        }
        return false;
    }
    static NSButton *button(NSWindow *window, NSString *title)
    {
        for (NSView *view : tarvik::each<NSView>([[window contentView] subviews]))
            if ([view isKindOfClass:[NSButton class]] && [[(NSButton *)view title] isEqual:title])
                return (NSButton *)view;
        return nil;
    }
    static size_t buttons(NSWindow *window)
    {
        size_t count = 0;
        for (NSView *view : tarvik::each<NSView>([[window contentView] subviews]))
            count += [view isKindOfClass:[NSButton class]];
        return count;
    }
    int32_t alert(int32_t style, NSWindow *parent, NSString *message = @"50%% done")
    {
        return [NSPanel runGenericAlert:style
                                 parent:parent
                          modalDelegate:answers_
                         didEndSelector:@selector(sheet:ended:context:)
                     didDismissSelector:@selector(sheet:gone:context:)
                            contextInfo:kContext
                                  title:@"Title"
                                message:message
                          defaultButton:@"Yes"
                        alternateButton:@"No"
                            otherButton:@"Perhaps"];
    }

    NSWindow *window_ = nil;
    NSTextField *field_ = nil;
    SheetAnswers *answers_ = nil;
};

TEST_F(Sheets, AnAlertReturnsAtOnceAndIsAnsweredByAClick)
{
    for (const auto &[title, calls] : {std::pair{@"Yes", "ended 1 here;gone 1;"},
                                       {@"No", "ended 0 here;gone 0;"},
                                       {@"Perhaps", "ended -1 here;gone -1;"}}) {
        answers_->mCalls.clear();
        EXPECT_EQ(alert(0, window_), 1);
        NSWindow *sheet = [window_ attachedSheet];
        ASSERT_NE(sheet, nil);
        EXPECT_TRUE([sheet isVisible]);
        EXPECT_EQ(answers_->mCalls, "");
        EXPECT_EQ([NSApp modalWindow], nil);
        EXPECT_TRUE(clickUntil(button(sheet, title), [&] { return answers_->mCalls == calls; }))
            << answers_->mCalls;
        EXPECT_EQ([window_ attachedSheet], nil);
    }
    EXPECT_EQ(alert(3, window_), -2);
    EXPECT_EQ(alert(-1, nil), -2);
    EXPECT_EQ([window_ attachedSheet], nil);
}

TEST_F(Sheets, ItsWindowTakesNoInputAndOthersDo)
{
    alert(2, window_);
    NSWindow *sheet = [window_ attachedSheet];
    NSWindow *other = [[[NSWindow alloc] initWithContentRect:NSMakeRect(850, 300, 200, 100)
                                                   styleMask:NSTitledWindowMask
                                                     backing:NSBackingStoreBuffered
                                                       defer:NO] autorelease];
    [other setReleasedWhenClosed:NO];
    NSTextField *free = [[[NSTextField alloc] initWithFrame:NSMakeRect(10, 10, 100, 24)] autorelease];
    [[other contentView] addSubview:free];
    const auto type = [](NSWindow *into) {
        for (NSEventType kind : {NSKeyDown, NSKeyUp})
            [into sendEvent:[NSEvent keyEventWithType:kind
                                                   location:NSZeroPoint
                                              modifierFlags:0
                                                  timestamp:0
                                               windowNumber:[into windowNumber]
                                                    context:nil
                                                 characters:@"x"
                                charactersIgnoringModifiers:@"x"
                                                  isARepeat:NO
                                                    keyCode:53]];
    };
    type(window_);
    EXPECT_EQ([[field_ stringValue] length] + [[[field_ currentEditor] string] length], 0u);
    [other makeKeyAndOrderFront:nil];
    [other makeFirstResponder:free];
    type(other);
    EXPECT_TRUE([[[free currentEditor] string] isEqual:@"x"]);
    // A second sheet waits for the end of the first; a window that goes takes its sheets along.
    alert(1, window_);
    EXPECT_EQ([window_ attachedSheet], sheet);
    [button(sheet, @"No") performClick:nil];
    EXPECT_EQ(answers_->mCalls, "ended 0 here;gone 0;");
    ASSERT_NE([window_ attachedSheet], nil);
    EXPECT_NE([window_ attachedSheet], sheet);
    [window_ close];
    EXPECT_EQ([window_ attachedSheet], nil);
    EXPECT_EQ(answers_->mCalls, "ended 0 here;gone 0;ended " + std::to_string(NSRunAbortedResponse) +
                                    " here;gone " + std::to_string(NSRunAbortedResponse) + ";");
    [other close];
}

TEST_F(Sheets, AModalAlertWaitsForTheKeyboard)
{
    const std::vector<std::string> first{"Return"}, last{"Tab", "space"};
    for (const auto &[typed, answer] : {std::pair{first, 1}, {last, -1}}) {
        std::unique_ptr<Keys> pressed = keys(typed);
        EXPECT_EQ(alert(1, nil), answer);
        pressed.reset();
    }
    EXPECT_EQ(answers_->mCalls, "");
}

TEST_F(Sheets, AWindowOfOnesOwn)
{
    NSPanel *sheet = [[[NSPanel alloc] initWithContentRect:NSMakeRect(0, 0, 200, 80)
                                                 styleMask:NSTitledWindowMask
                                                   backing:NSBackingStoreBuffered
                                                     defer:NO] autorelease];
    [sheet setReleasedWhenClosed:NO];
    for (const bool withCode : {true, false}) {
        answers_->mCalls.clear();
        [sheet beginSheetForWindow:window_
                     modalDelegate:answers_
                    didEndSelector:@selector(sheet:ended:context:)
                       contextInfo:kContext];
        EXPECT_EQ([window_ attachedSheet], sheet);
        EXPECT_TRUE([sheet isVisible]);
        if (withCode)
            [sheet closeSheetWithReturnCode:7];
        else
            [sheet closeSheet];
        EXPECT_EQ(answers_->mCalls,
                  "ended " + std::to_string(withCode ? 7 : NSRunStoppedResponse) + " here;");
        EXPECT_FALSE([sheet isVisible]);
        EXPECT_EQ(answers_->mSheet, sheet);
    }
    // The platform's other alert goes the same way.
    NSAlert *alert = [[[NSAlert alloc] init] autorelease];
    [alert setMessageText:@"Save?"];
    [alert addButtonWithTitle:@"Save"];
    [alert addButtonWithTitle:@"Cancel"];
    answers_->mCalls.clear();
    [alert beginSheetModalForWindow:window_
                      modalDelegate:answers_
                     didEndSelector:@selector(sheet:ended:context:)
                        contextInfo:kContext];
    EXPECT_EQ(answers_->mCalls, "");
    [button([window_ attachedSheet], @"Cancel") performClick:nil];
    EXPECT_EQ(answers_->mCalls, "ended " + std::to_string(NSAlertSecondButtonReturn) + " here;");
    EXPECT_EQ([window_ attachedSheet], nil);
}

class Panels : public Sheets {
protected:
    BOOL open(NSOpenPanel *panel, NSWindow *window, const TemporaryFolder &folder)
    {
        return [NSOpenPanel beginSheetWithSetting:panel
                                           prompt:@"Take"
                             canChooseDirectories:NO
                                   canChooseFiles:YES
                          allowsMultipleSelection:NO
                  treatsFilePackagesAsDirectories:NO
                             canCreateDirectories:YES
                                          message:@"Which?"
                                           window:window
                                        directory:tarvik::nsstring(folder.path().native())
                                             file:@"one.txt"
                                            types:nil
                                    modalDelegate:answers_
                                   didEndSelector:@selector(sheet:ended:context:)
                                      contextInfo:kContext];
    }
    BOOL save(NSSavePanel *panel, NSWindow *window, const TemporaryFolder &folder)
    {
        return [NSSavePanel beginSheetWithSetting:panel
                                 requiredFileType:@"txt"
                             canCreateDirectories:YES
                         canSelectHiddenExtension:YES
                                  extensionHidden:NO
                  treatsFilePackagesAsDirectories:NO
                                           prompt:@"Keep"
                                            title:@"Keep it"
                                   nameFieldLabel:@"As:"
                                          message:@"Where?"
                                           window:window
                                        directory:tarvik::nsstring(folder.path().native())
                                             file:@"new.txt"
                                    modalDelegate:answers_
                                   didEndSelector:@selector(sheet:ended:context:)
                                      contextInfo:kContext];
    }
};

TEST_F(Panels, AreSheetsThatReturnAtOnce)
{
    TemporaryFolder folder;
    std::ofstream(folder / "one.txt") << "1";
    NSOpenPanel *opener = [NSOpenPanel openPanel];
    std::unique_ptr<Keys> pressed = keys({"Return"});
    ASSERT_TRUE(open(opener, window_, folder));
    EXPECT_EQ([window_ attachedSheet], opener);
    EXPECT_EQ(answers_->mCalls, "");
    EXPECT_FALSE([opener allowsMultipleSelection]);
    EXPECT_FALSE([opener canChooseDirectories]);
    EXPECT_TRUE([[opener prompt] isEqual:@"Take"]);
    EXPECT_TRUE(turnUntil([&] { return !answers_->mCalls.empty(); }));
    pressed.reset();
    EXPECT_EQ(answers_->mCalls, "ended 1 here;");
    EXPECT_TRUE([[opener filename] isEqual:tarvik::nsstring((folder / "one.txt").native())])
        << [[opener filename] UTF8String];
    EXPECT_FALSE([opener isVisible]);
    EXPECT_EQ([window_ attachedSheet], nil);

    answers_->mCalls.clear();
    ASSERT_TRUE(save(nil, nil, folder));  // a new panel, on the main window
    NSSavePanel *saver = (NSSavePanel *)[window_ attachedSheet];
    ASSERT_TRUE([saver isKindOfClass:[NSSavePanel class]]);
    EXPECT_TRUE([[saver title] isEqual:@"Keep it"]);
    EXPECT_TRUE([[saver requiredFileType] isEqual:@"txt"]);
    [saver cancel:nil];
    EXPECT_EQ(answers_->mCalls, "ended 0 here;");
    answers_->mCalls.clear();
    pressed = keys({"Return"});
    ASSERT_TRUE(save(saver, window_, folder));
    EXPECT_TRUE(turnUntil([&] { return !answers_->mCalls.empty(); }));
    pressed.reset();
    EXPECT_EQ(answers_->mCalls, "ended 1 here;");
    EXPECT_TRUE([[saver filename] isEqual:tarvik::nsstring((folder / "new.txt").native())])
        << [[saver filename] UTF8String];
}

TEST_F(Panels, NeedAWindow)
{
    TemporaryFolder folder;
    [window_ orderOut:nil];
    [window_ resignMainWindow];
    ASSERT_EQ([NSApp mainWindow], nil);
    EXPECT_FALSE(open(nil, nil, folder));
    EXPECT_FALSE(save(nil, nil, folder));
    EXPECT_FALSE([[NSOpenPanel openPanel] isVisible]);
}

std::string gRun;  // what the callbacks of an alert were told
NSWindow *gPanel;

void before(DialogRef dialog, void *userData)
{
    gRun += dialog ? "before;" : "before none;";
    gPanel = dialog ? [[[NSWindow alloc] initWithWindowRef:GetDialogWindow(dialog)] autorelease] : nil;
    gRun += static_cast<const char *>(userData);
}
void after(DialogRef, void *) { gRun += "after;"; }
Boolean answersFour(void *, void *event, SInt16 *hit)
{
    EXPECT_TRUE([(id)event isKindOfClass:[NSEvent class]]);
    *hit = 4;
    return true;
}

SInt16 run(WindowRef parent, bool standard, ModalFilterUPP filter = nullptr, EventTargetRef target = nullptr)
{
    gRun.clear();
    return DialogRunGenericAlert(kAlertStopAlert, parent, true, CFSTR("The disk is full."),
                                 CFSTR("Delete something."), false, standard ? nullptr : CFSTR("Again"),
                                 standard ? nullptr : CFSTR("Stop"), standard ? nullptr : CFSTR("Skip"), 0,
                                 standard ? 0 : 2, 0, 0, filter, target, before, after, kContext);
}

TEST_F(Sheets, TheStandardAlertIsAnsweredByKeysAndFilter)
{
    for (const auto &[key, item] : {std::pair{"Return", 1}, {"Escape", 2}}) {
        std::unique_ptr<Keys> pressed = keys({key});
        EXPECT_EQ(run(nullptr, false), item);
        pressed.reset();
        EXPECT_EQ(gRun, "before;hereafter;");
        EXPECT_EQ(buttons(gPanel), 3u);
    }
    std::unique_ptr<Keys> pressed = keys({"Return"});
    EXPECT_EQ(run(nullptr, true), 1);
    pressed.reset();
    EXPECT_EQ(buttons(gPanel), 1u);
    EXPECT_NE(button(gPanel, @"OK"), nil);
    EXPECT_EQ(run(nullptr, true, answersFour), 4);
    AlertStdCFStringAlertParamRec look;
    EXPECT_EQ(GetStandardAlertDefaultParams(&look, 2), paramErr);
    EXPECT_EQ(RunStandardAlert(nullptr, nullptr, nullptr), paramErr);
    EXPECT_EQ(GetDialogWindow(nullptr), nullptr);
}

UInt32 gCommand;
OSStatus chosen(EventHandlerCallRef, EventRef event, void *)
{
    HICommand command{};
    EXPECT_EQ(GetEventParameter(event, kEventParamDirectObject, typeHICommand, nullptr, sizeof command,
                                nullptr, &command),
              noErr);
    gCommand = command.commandID;
    return noErr;
}

TEST_F(Sheets, TheStandardSheetTellsItsTarget)
{
    const EventTypeSpec commands[] = {{kEventClassCommand, kEventCommandProcess}};
    const WindowRef parent = (WindowRef)[window_ windowRef];
    const EventTargetRef target = GetWindowEventTarget(parent);
    EventHandlerRef handler = nullptr;
    ASSERT_EQ(InstallEventHandler(target, chosen, 1, commands, nullptr, &handler), noErr);
    for (const auto &[title, command] :
         {std::pair{@"Again", kHICommandOK}, {@"Stop", kHICommandCancel}, {@"Skip", kHICommandOther}}) {
        gCommand = 0;
        EXPECT_EQ(run(parent, false, nullptr, target), 1);
        EXPECT_EQ(gRun, "before;hereafter;");
        EXPECT_EQ(gCommand, 0u);
        ASSERT_EQ([window_ attachedSheet], gPanel);
        [button(gPanel, title) performClick:nil];
        EXPECT_EQ(gCommand, UInt32(command));
        EXPECT_EQ([window_ attachedSheet], nil);
    }
    EXPECT_EQ(RemoveEventHandler(handler), noErr);
    EXPECT_EQ(RemoveEventHandler(handler), paramErr);
    // A window that does not exist: nothing ran.
    EXPECT_EQ(run(reinterpret_cast<WindowRef>(kContext), false), 0);
    EXPECT_EQ(gRun, "before;here");
}

TEST_F(Sheets, OldSystemsShowTheOldAlert)
{
    const auto old = [](OSType, SInt32 *response) -> OSErr { return *response = 0x0922, noErr; };
    ASSERT_EQ(ReplaceGestalt(gestaltSystemVersion, old, nullptr), noErr);
    std::unique_ptr<Keys> pressed = keys({"Escape"});
    EXPECT_EQ(run(nullptr, false), 2);
    pressed.reset();
    EXPECT_EQ(gRun, "before none;hereafter;");
    SetStandardAlertPresenter(nullptr);
    EXPECT_EQ(run(nullptr, false), 0);
    EXPECT_EQ(gRun, "before none;here");
}

TEST_F(Sheets, WindowsArePlacedByEachMethod)
{
    const WindowRef parent = (WindowRef)[window_ windowRef];
    const NSRect screen = [[NSScreen mainScreen] visibleFrame], over = [window_ frame];
    NSWindow *window = [[[NSWindow alloc] initWithContentRect:NSMakeRect(0, 0, 300, 160)
                                                    styleMask:NSTitledWindowMask
                                                      backing:NSBackingStoreBuffered
                                                        defer:YES] autorelease];
    const NSSize size = [window frame].size;
    const auto place = [&](WindowPositionMethod method, WindowRef by) {
        EXPECT_TRUE([window reposition:method parentWindow:by]);
        EXPECT_EQ([window frame].size.width, size.width);
        EXPECT_EQ([window frame].size.height, size.height);
        return [window frame];
    };
    for (const WindowPositionMethod method : {1, 3, 7, 9})
        EXPECT_NEAR(NSMidX(place(method, parent)), NSMidX(screen), 1);
    for (const WindowPositionMethod method : {2, 8})
        EXPECT_NEAR(NSMidX(place(method, parent)), NSMidX(over), 1);
    EXPECT_GT(NSMinY(place(7, nullptr)), NSMinY(place(1, nullptr)));
    EXPECT_NEAR(NSMidY(place(2, parent)), NSMidY(over), 20);
    for (const WindowPositionMethod method : {4, 6}) {
        const NSPoint first = place(method, parent).origin, second = place(method, parent).origin;
        EXPECT_GT(second.x, first.x);
        EXPECT_LT(second.y, first.y);
    }
    EXPECT_NEAR(NSMinX(place(5, parent)), NSMinX(over) + 20, 1);
    for (int i = 0; i < 100; ++i)
        EXPECT_TRUE(NSContainsRect(NSInsetRect(screen, -1, -1), place(10, parent)));
    const NSRect before = [window frame];
    EXPECT_FALSE([window reposition:2 parentWindow:nullptr]);
    EXPECT_FALSE([window reposition:0 parentWindow:parent]);
    EXPECT_FALSE([window reposition:11 parentWindow:parent]);
    EXPECT_TRUE(NSEqualRects([window frame], before));
}

}  // namespace

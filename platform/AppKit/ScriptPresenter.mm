// What scripts show and take: dialogs as alert panels, the clipboard as the Scrap Manager has it.
#import <AppKit/AppKit.h>
#include <Carbon/Processes.h>
#include <Carbon/Scrap.h>
#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Guard.h>
#include <Tarvik/support/Handle.h>
#import <Tarvik/support/Pool.h>

#import "platform/AppKit/private/AlertPanel.h"
#include "platform/AppKit/private/ScrapFlavors.h"
#include "platform/Foundation/ChildProcess.h"
#include "platform/OpenScripting/private/Presenter.h"

#include <algorithm>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

using namespace tarvik::osa;

namespace {

constexpr NSTimeInterval kTick = 0.1;
constexpr NSInteger kGaveUp = -1, kStopped = -2;  // buttons answer their numbers, from 0
constexpr CGFloat kLineHeight = 16, kFieldMargin = 8;
constexpr size_t kMostLines = 10;

void bringToFront()
{
    const ProcessSerialNumber self = {0, kCurrentProcess};
    ProcessSerialNumber front;
    Boolean isFront = false;
    if (GetFrontProcess(&front) != noErr || SameProcess(&self, &front, &isFront) != noErr || !isFront)
        SetFrontProcess(&self);
}

NSString *text(const std::string &utf8)
{
    NSString *const string = tarvik::nsstring(utf8);
    return string ? string : @"";
}

}  // namespace

/// Looks every now and then whether the dialog is still wanted.
@interface ScriptDialogClock : NSObject {
@public
    AlertPanel *mPanel;  // not retained
    const Dialog *mDialog;
    NSTimeInterval mEnd;  // 0: never
    BOOL mHasAskedForFocus;
}
- (void)tick:(NSTimer *)timer;
@end

@implementation ScriptDialogClock

- (void)tick:(NSTimer *)timer
{
    (void)timer;
    // A window manager may leave the keyboard where it is when a program that has no other window shows one.
    if (!mHasAskedForFocus) {
        mHasAskedForFocus = YES;
        bringToFront();
    }
    if (mDialog->isStopped && mDialog->isStopped())
        [mPanel endWithCode:kStopped];
    else if (mEnd > 0 && [NSDate timeIntervalSinceReferenceDate] >= mEnd)
        [mPanel endWithCode:kGaveUp];
}

@end

/// A command's words are no documents that an application was started with.
@interface ScriptLaunchDelegate : NSObject
@end

@implementation ScriptLaunchDelegate

- (BOOL)application:(NSApplication *)application openFile:(NSString *)path
{
    (void)application, (void)path;
    return YES;
}
- (BOOL)applicationShouldOpenUntitledFile:(NSApplication *)application
{
    (void)application;
    return NO;
}

@end

namespace {

/// Whether the program was no application when a script first asked for something here.
bool isCommand()
{
    static const bool isCommand = !NSApp;
    return isCommand;
}

/// Such a program becomes one, without an icon of its own on the desktop.
void beApplication()
{
    if (isCommand())
        [[NSUserDefaults standardUserDefaults]
            registerDefaults:[NSDictionary dictionaryWithObject:@"YES" forKey:@"GSSuppressAppIcon"]];
    [NSApplication sharedApplication];
    // Before its launch is finished, an application lets nobody give it the keyboard. It doesn't say whether it is.
    if ([[NSApp valueForKey:@"_app_is_launched"] boolValue])
        return;
    ScriptLaunchDelegate *meanwhile = [NSApp delegate] ? nil : [[ScriptLaunchDelegate new] autorelease];
    if (meanwhile)
        [NSApp setDelegate:meanwhile];
    [NSApp finishLaunching];
    if (meanwhile)
        [NSApp setDelegate:nil];
}

NSTextField *fieldFor(const Dialog &dialog)
{
    if (!dialog.answer)
        return nil;
    const size_t breaks = size_t(std::count_if(dialog.answer->begin(), dialog.answer->end(),
                                               [](char c) { return c == '\r' || c == '\n'; }));
    const CGFloat height =
        kLineHeight * CGFloat(dialog.hidesAnswer ? 1 : std::min(breaks + 1, kMostLines)) + kFieldMargin;
    Class kind = dialog.hidesAnswer ? [NSSecureTextField class] : [NSTextField class];
    NSTextField *field = [[[kind alloc] initWithFrame:NSMakeRect(0, 0, 10, height)] autorelease];
    [field setStringValue:text(*dialog.answer)];
    return field;
}

AlertKind kindOf(Dialog::Icon icon)
{
    switch (icon) {
    case Dialog::stop: return AlertKind::Stop;
    case Dialog::caution: return AlertKind::Caution;
    case Dialog::note: return AlertKind::Note;
    default: return AlertKind::Plain;
    }
}

void run(const Dialog &dialog, DialogAnswer &answer)
{
    std::vector<AlertButton> buttons;  // from the right
    for (size_t i = dialog.buttons.size(); i-- > 0;)
        buttons.push_back(
            {text(dialog.buttons[i]), NSInteger(i), int(i) == dialog.byDefault, int(i) == dialog.cancels});
    AlertExtras extras;
    extras.movable = extras.buttonsTogether = true;
    extras.title = dialog.title.empty() ? [[NSProcessInfo processInfo] processName] : text(dialog.title);
    extras.field = fieldFor(dialog);
    AlertPanel *panel = [AlertPanel alertOfKind:kindOf(dialog.icon)
                                        message:text(dialog.message)
                                    explanation:text(dialog.explanation)
                                        buttons:buttons
                                         extras:extras];
    [panel center];
    [NSApp activateIgnoringOtherApps:YES];
    [panel makeKeyAndOrderFront:nil];
    if (extras.field)
        [extras.field selectText:nil];

    ScriptDialogClock *clock = [[ScriptDialogClock new] autorelease];
    clock->mPanel = panel;
    clock->mDialog = &dialog;
    clock->mEnd = dialog.givesUpAfter > 0 ? [NSDate timeIntervalSinceReferenceDate] + dialog.givesUpAfter : 0;
    NSTimer *timer = [NSTimer timerWithTimeInterval:kTick
                                             target:clock
                                           selector:@selector(tick:)
                                           userInfo:nil
                                            repeats:YES];
    for (NSString *mode : {NSModalPanelRunLoopMode, NSEventTrackingRunLoopMode})
        [[NSRunLoop currentRunLoop] addTimer:timer forMode:mode];
    const NSInteger code = RunAlert(panel, [&](NSEvent *event, NSInteger &ended) {
        // The field would keep the key to itself.
        const bool isEscape =
            [event type] == NSKeyDown && [[event charactersIgnoringModifiers] isEqualToString:@"\e"];
        ended = dialog.cancels;
        return isEscape && dialog.cancels >= 0;
    });
    [timer invalidate];
    answer.gaveUp = code == kGaveUp;
    answer.button = code >= 0 && size_t(code) < dialog.buttons.size() ? int(code) : -1;
    if (extras.field)
        answer.text = tarvik::utf8([extras.field stringValue]).value_or("");
}

/// The pasteboard's server ends with the last application that uses it, and the clipboard with it: after a command that is no application, it would be
/// gone at once. So such a command has a server that stays, as other clipboard commands do, until the display ends.
void keepClipboardServer()
{
    NSString *const kService = @"GNUstepGSPasteboardServer";
    static bool isDone = false;
    NSString *const tool = [NSTask launchPathForTool:@"gpbs"];
    const auto serves = [&] { return [NSConnection connectionWithRegisteredName:kService host:@""] != nil; };
    if (!isCommand() || std::exchange(isDone, true) || !tool || serves())
        return;
    const tarvik::FileDescriptor nothing(open("/dev/null", O_RDWR | O_CLOEXEC));
    tarvik::platform::SpawnPlan plan = {
        .path = tarvik::utf8(tool).value_or(""), .arguments = {"--daemon"}, .folder = "/"};
    for (int &stream : plan.streams)
        stream = nothing.get();
    tarvik::platform::ChildProcess server;
    if (server.spawn(plan) != 0)
        return;
    for (int i = 0; i < 200 && !serves(); ++i)  // two seconds
        usleep(10000);
}

/// A command without windows has no pool of its own.
class PanelPresenter : public Presenter {
public:
    bool show(const Dialog &dialog, DialogAnswer &answer) override
    {
        const tarvik::Pool pool;
        if (![NSThread isMainThread])
            return false;
        bool shown = false;
        tarvik::attempt([&] {
            beApplication();
            run(dialog, answer);
            shown = true;
        });
        return shown;
    }
    OSStatus clipboardFlavors(std::vector<ClipboardFlavor> &flavors) override
    {
        const tarvik::Pool pool;
        ScrapRef scrap = nullptr;
        std::vector<ScrapFlavorType> types;
        OSStatus status = GetCurrentScrap(&scrap);
        if (status == noErr)
            status = tarvik::scrapFlavors(types);
        for (const ScrapFlavorType type : types) {
            Size size = 0;
            if (GetScrapFlavorSize(scrap, type, &size) == noErr)
                flavors.push_back({type, size_t(size)});
        }
        return status;
    }
    OSStatus clipboard(uint32_t flavor, std::string &bytes) override
    {
        const tarvik::Pool pool;
        ScrapRef scrap = nullptr;
        Size size = 0;
        OSStatus status = GetCurrentScrap(&scrap);
        if (status == noErr)
            status = GetScrapFlavorSize(scrap, flavor, &size);
        if (status == noErr) {
            bytes.resize(size_t(size));
            status = GetScrapFlavorData(scrap, flavor, &size, bytes.data());
            bytes.resize(std::min(bytes.size(), size_t(size)));  // it may have changed in between
        }
        return status;
    }
    OSStatus setClipboard(uint32_t flavor, const std::string &bytes) override
    {
        const tarvik::Pool pool;
        ScrapRef scrap = nullptr;
        tarvik::attempt(keepClipboardServer);
        OSStatus status = ClearCurrentScrap();
        if (status == noErr)
            status = GetCurrentScrap(&scrap);
        return status == noErr
                   ? PutScrapFlavor(scrap, flavor, kScrapFlavorMaskNone, Size(bytes.size()), bytes.data())
                   : status;
    }
};

const bool kInstalled = [] {
    static PanelPresenter presenter;
    installPresenter(&presenter);
    return true;
}();

}  // namespace

// What scripts show to the user and take from the desktop.
#import "Desktop.h"
#import <Tarvik/support/ArrayRange.h>
#import <Tarvik/support/Bridge.h>
#include <gtest/gtest.h>
#include <tests/support/Program.h>
#include <tests/support/Scripting.h>

#include <algorithm>
#include <memory>
#include <vector>

#ifdef __SANITIZE_ADDRESS__
extern "C" void __lsan_disable();
extern "C" void __lsan_enable();
#endif

namespace {

/// gnustep-gui keeps a cell of each field for secrets that it has edited.
struct LosingSecrets {
#ifdef __SANITIZE_ADDRESS__
    LosingSecrets() { __lsan_disable(); }
    ~LosingSecrets() { __lsan_enable(); }
#else
    LosingSecrets() {}
#endif
};

/// Calls it once the dialog of a script is up and has the keyboard.
void whenAsked(std::function<void(NSWindow *)> answer)
{
    later(0.02, [=] {
        NSWindow *const dialog = [NSApp modalWindow];
        if (dialog && [dialog isKeyWindow])
            answer(dialog);
        else
            whenAsked(answer);
    });
}

template <class View>
std::vector<View *> viewsOf(NSWindow *window)
{
    std::vector<View *> found;
    for (NSView *view : tarvik::each<NSView>([[window contentView] subviews]))
        if ([view isKindOfClass:[View class]])
            found.push_back((View *)view);
    return found;
}

NSTextField *fieldOf(NSWindow *dialog)
{
    for (NSTextField *field : viewsOf<NSTextField>(dialog))
        if ([field isEditable])
            return field;
    return nil;
}

/// The user presses the key until the dialog goes (it may get the keyboard later than it knows); before that, the text is typed over what is in
/// the field.
void atKeyboard(const std::string &key, const std::string &typed = "", NSWindow *known = nil)
{
    const auto work = [=](NSWindow *dialog) {
        NSTextField *const field = fieldOf(dialog);
        const bool isTyped = typed.empty() || tarvik::utf8([[field currentEditor] string]) == typed;
        std::string keys = "key --delay 30";
        for (const char c : typed)
            keys += std::string(" ") + c;
        if (!isTyped && known)  // the script's own text is selected already
            [field selectText:nil];
        const auto hand = std::make_shared<Hand>(isTyped ? "key " + key : keys);
        later(0.3, [=] {
            (void)hand;
            if ([NSApp modalWindow] == dialog)
                atKeyboard(key, typed, dialog);
        });
    };
    known ? work(known) : whenAsked(work);
}

// One dialog for each test: a key that is pressed once more is nobody's then.
TEST(ScriptDialogs, AreTypedInto)
{
    Scripting scripting;
    atKeyboard("Return", "Ann");
    EXPECT_EQ(scripting.run("display dialog \"Your name?\" default answer \"Bob\""),
              "{button returned:\"OK\", text returned:\"Ann\"}");
}

TEST(ScriptDialogs, AreCancelledByEscape)
{
    Scripting scripting;
    atKeyboard("Escape");
    EXPECT_EQ(scripting.run("display dialog \"Your name?\" default answer \"Bob\" buttons {\"No\", \"Yes\"} "
                            "cancel button \"No\" giving up after 60"),
              "error -128: User canceled.");
}

TEST(ScriptDialogs, AreAnsweredByReturn)
{
    Scripting scripting;
    atKeyboard("Return");
    EXPECT_EQ(scripting.run("display alert \"Careful\" message \"It is hot.\" as critical buttons {\"One\", "
                            "\"Two\", \"Three\"} default button 1"),
              "{button returned:\"One\"}");
}

TEST(ScriptDialogs, ShowWhatTheScriptSays)
{
    const LosingSecrets losing;
    Scripting scripting;
    whenAsked([&](NSWindow *dialog) {
        EXPECT_TRUE([[dialog title] isEqualToString:@"Doors"]);
        NSTextField *const field = fieldOf(dialog);
        EXPECT_TRUE([field isKindOfClass:[NSSecureTextField class]]);
        [field setStringValue:@"sésame"];
        std::vector<NSButton *> buttons = viewsOf<NSButton>(dialog);
        std::sort(buttons.begin(), buttons.end(),
                  [](NSButton *one, NSButton *other) { return NSMinX([one frame]) < NSMinX([other frame]); });
        ASSERT_EQ(buttons.size(), 3u);
        EXPECT_TRUE([[buttons[0] title] isEqualToString:@"Shut"]);
        EXPECT_TRUE([[buttons[2] title] isEqualToString:@"Open"]);
        EXPECT_TRUE([[buttons[2] keyEquivalent] isEqualToString:@"\r"]);
        EXPECT_GE(NSMinY([field frame]), NSMaxY([buttons[0] frame]));
        for (NSTextField *label : viewsOf<NSTextField>(dialog))
            if (label != field && NSHeight([label frame]) > 0) {
                EXPECT_TRUE([[label stringValue] isEqualToString:[@"" stringByPaddingToLength:700
                                                                                   withString:@"long "
                                                                              startingAtIndex:0]]);
                EXPECT_GE(NSMinY([label frame]), NSMaxY([field frame]));
            }
        [buttons[1] performClick:nil];
    });
    EXPECT_EQ(scripting.run("set t to \"\"\nrepeat 140 times\nset t to t & \"long \"\nend\n"
                            "display dialog t default answer \"\" buttons {\"Shut\", \"Ajar\", \"Open\"} "
                            "with title \"Doors\" with icon caution with hidden answer"),
              "{button returned:\"Ajar\", text returned:\"sésame\"}");
    EXPECT_EQ(scripting.run("display dialog \"\" buttons {\"Shut\"} default button \"Open\""),
              "error -50: There is no button \"Open\".");
    EXPECT_EQ(scripting.run("display dialog \"\" buttons {\"1\", \"2\", \"3\", \"4\"}"),
              "error -50: An alert has one to three buttons.");
}

TEST(ScriptDialogs, GoAwayByThemselves)
{
    Scripting scripting;
    EXPECT_EQ(scripting.run("display dialog \"Quick!\" default answer \"Bob\" giving up after 0.2"),
              "{button returned:\"\", text returned:\"Bob\", gave up:true}");
    EXPECT_EQ(scripting.run("display alert \"Quick!\" giving up after 0.2"),
              "{button returned:\"\", gave up:true}");
    int asked = 0;
    OSASetActiveProc(
        scripting.get(),
        [](SRefCon counter) { return ++*reinterpret_cast<int *>(counter) > 2 ? OSErr(-128) : OSErr(noErr); },
        SRefCon(&asked));
    EXPECT_EQ(scripting.run("repeat\ntry\ndisplay dialog \"For ever?\"\nend\nend"),
              "error -128: User canceled.");
    EXPECT_EQ([NSApp modalWindow], nil);
}

TEST(ScriptClipboard, IsTheDesktops)
{
    Scripting scripting;
    [NSApplication sharedApplication];
    putOnClipboard("from anothér");
    EXPECT_EQ(scripting.run("{the clipboard, length of (the clipboard as text)}"), "{\"from anothér\", 12}");
    EXPECT_EQ(scripting.run("the clipboard as integer"),
              "error -1700: Can’t make \"from anothér\" into type integer.");
    EXPECT_EQ(scripting.run(
                  "set the clipboard to 6 * 7\n{the clipboard, the clipboard as integer, clipboard info}"),
              "{\"42\", 42, {{string, 2}}}");
    EXPECT_EQ(scripting.run("set the clipboard to {1, {name:\"é\"}}\nthe clipboard"), "{1, {name:\"é\"}}");
    EXPECT_EQ(
        scripting.run("set the clipboard to «data abcd0102»\n{the clipboard, the clipboard as «class abcd»}"),
        "{«data abcd0102», «data abcd0102»}");
    EXPECT_EQ(scripting.run("the clipboard as text"),
              "error -1700: Can’t make some data into the expected type.");
}

// A command that is no application: what it copies is there when it has ended.
TEST(ScriptClipboard, OutlivesACommand)
{
    const ProgramResult set = runTarvik({"script", "-e", "set the clipboard to \"kept: é\""});
    EXPECT_EQ(set.status, 0) << set.error;
    EXPECT_EQ(set.error, "");
    EXPECT_EQ(runProgram({"timeout", "20", "xclip", "-selection", "clipboard", "-o"}).out, "kept: é");
    EXPECT_EQ(runTarvik({"script", "-e", "the clipboard"}).out, "kept: é\n");
    // Its words are no documents, whatever an application would make of them.
    EXPECT_EQ(runTarvik({"script", "-e", "display dialog \"x\" giving up after 0.1", "/etc/hosts"}).out,
              "button returned:, gave up:true\n");
}

}  // namespace

// A window on the display, and the hand of the user before it.
#pragma once
#import <AppKit/AppKit.h>

#include <functional>
#include <string>
#include <sys/types.h>

/// A window that is closed with its scope.
class TestWindow {
public:
    explicit TestWindow(NSRect content = NSMakeRect(200, 300, 300, 200));
    ~TestWindow();
    TestWindow(const TestWindow &) = delete;
    TestWindow &operator=(const TestWindow &) = delete;
    NSWindow *get() const { return window_; }
    /// Puts a view into the content, at its frame; returns it.
    template <class View>
    View *add(View *view) const
    {
        [[window_ contentView] addSubview:view];
        return view;
    }
    void show() const;  ///< in front, key and drawn

private:
    NSWindow *window_;
};

/// "X Y" of a point of a view, as xdotool counts.
std::string onScreen(NSView *view, NSPoint point);
std::string middleOf(NSView *view);

/// What the user does while the application runs on: the words of xdotool, from a process of its own.
class Hand {
public:
    explicit Hand(const std::string &words);
    ~Hand();  ///< waits for the end
    Hand(const Hand &) = delete;
    Hand &operator=(const Hand &) = delete;

private:
    pid_t child_;
};

/// Has another program put a text on the clipboard; returns when it is there.
void putOnClipboard(const std::string &text);
/// Runs the application's event loop until the condition holds, forty seconds at the most; whether it does.
bool eventually(const std::function<bool()> &condition);
/// Calls the function from a timer that also runs in modal panels and while the mouse is tracked.
void later(double seconds, std::function<void()> function);
/// The button of that title, in the view or below it; nil when there is none.
NSButton *buttonTitled(NSView *view, NSString *title);
/// Presses a button of the modal panel that has it, as soon as it is shown.
void pressWhenShown(NSString *title);

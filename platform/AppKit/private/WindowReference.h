// The NSWindow behind a WindowRef.
#pragma once
#import <AppKit/NSWindow.h>
#include <Carbon/MacWindows.h>

#import <Tarvik/support/Retained.h>

#include "platform/CarbonEvents/private/EventTarget.h"

#include <optional>

struct OpaqueWindowPtr {
    explicit OpaqueWindowPtr(NSWindow *aWindow) : window(aWindow) {}
    static Class base() { return [NSWindow class]; }

    NSWindow *window;
    bool owned = false;  // CreateNewWindow's own reference, which DisposeWindow releases
    std::optional<WindowClass> windowClass;
    SRefCon constant = 0;
    tarvik::Retained<NSObject *>
        fileOwner;  // of an interface file: its controls may have it as their target, and retain none
    OpaqueEventTargetRef target{GetApplicationEventTarget()};
};

/// Null for nil.
WindowRef ReferenceOfWindow(NSWindow *window);
/// Nil for null and for a reference that is not known.
NSWindow *WindowOfReference(WindowRef reference);

// Between the screen's coordinates of AppKit (y up from the bottom of the first screen) and the toolbox (y down from its top).
NSRect ScreenRectFromToolbox(const Rect &rect);
Rect ToolboxRectFromScreen(NSRect rect);

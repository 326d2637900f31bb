/// \file
/// A drag that comes in from a program of another kind.
#pragma once
#include "platform/AppKit/private/DragNames.h"

#import <AppKit/NSPasteboard.h>
#import <Tarvik/support/Retained.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tarvik::drags {

/// What the display tells of it is kept from its entry until its data is there, in a pasteboard of its own.
class Incoming {
public:
    using PassOn = std::function<void(XEvent &)>;
    /// Both are kept; what was kept is passed on to the function.
    Incoming(const Names &names, PassOn passOn) : names_(names), passOn_(std::move(passOn)) {}

    /// Whether the event has been dealt with, or is kept.
    bool takes(const XEvent &event);
    /// Gives up what was fetched.
    void end();

private:
    /// What a target is asked for.
    struct Fetch {
        size_t target;
        bool isWhole = false, comesInParts = false;
        std::string bytes = {};
    };

    /// The window that the drag comes from, until it has left or is dropped.
    Window source() const { return Window(entry_.xclient.data.l[0]); }
    bool takesMessage(const XEvent &event);
    void sourceIsGone();
    void ask(const XClientMessageEvent &entry);
    Fetch *fetchOf(Atom target);
    void arrived(const XSelectionEvent &event);
    void continued(const XPropertyEvent &event);
    void passOnWhenWhole();
    void fillPasteboard();

    const Names &names_;
    const PassOn passOn_;
    Window window_ = None;
    XEvent entry_ = {};
    std::vector<XEvent> kept_;
    std::vector<Fetch> fetches_;
    Retained<NSPasteboard *> pasteboard_;
};

}  // namespace tarvik::drags

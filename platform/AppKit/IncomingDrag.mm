#include "platform/AppKit/private/IncomingDrag.h"

#import <AppKit/NSEvent.h>
#import <Foundation/Foundation.h>
#import <GNUstepGUI/GSDisplayServer.h>
#import <GNUstepGUI/GSDragView.h>
#include <Tarvik/support/Owned.h>

#include "platform/AppKit/private/DragData.h"

#include <X11/Xutil.h>

#include <algorithm>
#include <string_view>

@interface GSDragView (DragsFromOthers)
- (void)useDraggingPasteboard:(NSPasteboard *)pasteboard;
@end

@implementation GSDragView (DragsFromOthers)

- (void)useDraggingPasteboard:(NSPasteboard *)pasteboard
{
    ASSIGN(dragPasteboard, pasteboard);
}

@end

namespace tarvik::drags {

namespace {

/// GNUstep's applications hand data to each other through the pasteboard that they share.
bool isGNUstep(Display *display, Window window)
{
    XClassHint hint = {};
    if (!XGetClassHint(display, window, &hint))
        return false;
    const Owned<char, XFree> name(hint.res_name), type(hint.res_class);
    return type && std::string_view(type.get()) == "GNUstep";
}

}  // namespace

bool Incoming::takes(const XEvent &event)
{
    switch (event.type) {
    case ClientMessage: return takesMessage(event);
    case SelectionNotify:
        return event.xselection.requestor == window_ && window_ && (arrived(event.xselection), true);
    case PropertyNotify:
        return event.xproperty.window == window_ && window_ && (continued(event.xproperty), true);
    case DestroyNotify: return event.xdestroywindow.window == source() && source() && (sourceIsGone(), true);
    default: return false;
    }
}

void Incoming::end()
{
    kept_.clear();
    fetches_.clear();
    entry_ = {};
    if (window_)
        XDestroyWindow(names_.display(), std::exchange(window_, None));
    [pasteboard_.get() releaseGlobally];
    pasteboard_ = {};
}

bool Incoming::takesMessage(const XEvent &event)
{
    const Atom message = event.xclient.message_type;
    if (message == names_[kEnter]) {
        end();
        if (isGNUstep(names_.display(), Window(event.xclient.data.l[0])))
            return false;
        entry_ = event;
        XSelectInput(names_.display(), source(), StructureNotifyMask);
        kept_.push_back(event);
        ask(event.xclient);
        passOnWhenWhole();
        return true;
    }
    if (message == names_[kLeave] || message == names_[kDrop])
        entry_ = {};  // it owes no leave any more
    if (kept_.empty())
        return false;
    if (message == names_[kLeave])
        end();
    else if (message == names_[kPosition] || message == names_[kDrop])
        kept_.push_back(event);
    else
        return false;
    return true;
}

/// It won't say that the drag has left.
void Incoming::sourceIsGone()
{
    XEvent leave = std::exchange(entry_, {});
    leave.xclient.message_type = names_[kLeave];
    std::fill_n(leave.xclient.data.l + 1, 4, 0);
    const bool isKnown = kept_.empty();
    end();
    if (isKnown)
        passOn_(leave);
}

/// Asks for each kind of data that is offered, in its best form.
void Incoming::ask(const XClientMessageEvent &entry)
{
    // A window for each drag: answers that come late are to another.
    window_ = XCreateSimpleWindow(names_.display(), DefaultRootWindow(names_.display()), 0, 0, 1, 1, 0, 0, 0);
    XSelectInput(names_.display(), window_, PropertyChangeMask);
    const bool areMany = entry.data.l[1] & 1;
    std::vector<Atom> offered(entry.data.l + 2, entry.data.l + 5);
    if (areMany)
        offered = property(names_, Window(entry.data.l[0]), names_[kTypeList], false).atoms;
    const auto known = targets();
    for (size_t i = 0; i < known.size(); ++i) {
        const auto isSameType = [&](const Fetch &fetch) { return known[fetch.target].type == known[i].type; };
        if (std::ranges::find(offered, names_.targets()[i]) == offered.end() ||
            std::ranges::any_of(fetches_, isSameType))
            continue;
        fetches_.push_back({i});
        XConvertSelection(names_.display(), names_[kSelection], names_.targets()[i], names_.targets()[i],
                          window_, CurrentTime);
    }
    XFlush(names_.display());
}

/// The fetch of a target that isn't whole yet.
Incoming::Fetch *Incoming::fetchOf(Atom target)
{
    const auto found = std::ranges::find_if(fetches_, [&](const Fetch &fetch) {
        return !fetch.isWhole && names_.targets()[fetch.target] == target;
    });
    return found == fetches_.end() ? nullptr : &*found;
}

void Incoming::arrived(const XSelectionEvent &event)
{
    Fetch *fetch = fetchOf(event.target);
    if (!fetch)
        return;
    if (event.property != None) {
        Property found = property(names_, window_, event.property, true);
        fetch->comesInParts = found.type == names_[kIncrement];
        fetch->bytes = std::move(found.bytes);
    }
    fetch->isWhole = !fetch->comesInParts;
    passOnWhenWhole();
}

/// A part of what is too much for one message; after the last comes an empty one.
void Incoming::continued(const XPropertyEvent &event)
{
    Fetch *fetch = event.state == PropertyNewValue ? fetchOf(event.atom) : nullptr;
    if (!fetch || !fetch->comesInParts)
        return;
    const Property part = property(names_, window_, event.atom, true);
    fetch->isWhole = part.bytes.empty() || fetch->bytes.size() + part.bytes.size() > kMost;
    if (part.bytes.empty() || !fetch->isWhole)
        fetch->bytes += part.bytes;
    else
        fetch->bytes.clear();
    passOnWhenWhole();
}

void Incoming::passOnWhenWhole()
{
    if (kept_.empty() || !std::ranges::all_of(fetches_, &Fetch::isWhole))
        return;
    fillPasteboard();
    id view = [GSCurrentServer() dragInfo];
    for (XEvent &event : std::exchange(kept_, {})) {
        passOn_(event);
        if (event.xclient.message_type == names_[kEnter])
            [view useDraggingPasteboard:pasteboard_.get()];
    }
}

void Incoming::fillPasteboard()
{
    pasteboard_ = retain([NSPasteboard pasteboardWithUniqueName]);
    NSMutableArray *types = [NSMutableArray array], *values = [NSMutableArray array];
    std::vector<const Target *> declared;
    for (const Fetch &fetch : fetches_) {
        const Target &target = targets()[fetch.target];
        NSData *data = [NSData dataWithBytes:fetch.bytes.data() length:fetch.bytes.size()];
        if (id value = valueOf(data, target)) {
            [types addObject:*target.type];
            [values addObject:value];
            declared.push_back(&target);
        }
    }
    [pasteboard_.get() declareTypes:types owner:nil];
    for (size_t i = 0; i < declared.size(); ++i)
        put([values objectAtIndex:i], *declared[i], pasteboard_.get());
}

}  // namespace tarvik::drags

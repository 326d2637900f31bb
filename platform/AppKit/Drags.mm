// What is dragged from one program to another. gnustep-back leaves the data to a pasteboard that GNUstep's applications share: a drag
// from another program has none, and another program that asks for a drag's gets no answer.
//
// Here a drag that comes in waits at the door until its data has been fetched, and who asks for what was dragged out is given it.
#import <AppKit/NSApplication.h>
#import <AppKit/NSPasteboard.h>
#import <Foundation/Foundation.h>

#import <Tarvik/support/Guard.h>
#import <Tarvik/support/Pool.h>

#include "platform/AppKit/private/DragData.h"
#include "platform/AppKit/private/IncomingDrag.h"
#include "platform/Foundation/private/ReplacedMethod.h"

#include <X11/Xatom.h>

#include <algorithm>

namespace {

using namespace tarvik;

/// Puts what was dragged out of this application into a property of another's window, as asked for; whether it is there.
bool handOver(const drags::Names &names, const XSelectionRequestEvent &request, Atom place)
{
    NSPasteboard *pasteboard = [NSPasteboard pasteboardWithName:NSDragPboard];
    const auto known = drags::targets();
    if (request.target == names[drags::kTargets]) {
        std::vector<Atom> offered{names[drags::kTargets]};
        NSArray *types = [pasteboard types];
        for (size_t i = 0; i < known.size(); ++i)
            if ([types containsObject:*known[i].type])
                offered.push_back(names.targets()[i]);
        XChangeProperty(names.display(), request.requestor, place, XA_ATOM, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char *>(offered.data()), int(offered.size()));
        return true;
    }
    const auto found = std::ranges::find(names.targets(), request.target);
    if (found == names.targets().end())
        return false;
    NSData *data = drags::contents(pasteboard, known[size_t(found - names.targets().begin())]);
    // What doesn't fit one request to the display (16 MB) is refused.
    const long words = std::max(XExtendedMaxRequestSize(names.display()), XMaxRequestSize(names.display()));
    if (!data || [data length] > size_t(words) * 4 - 64)
        return false;
    XChangeProperty(names.display(), request.requestor, place, request.target, 8, PropModeReplace,
                    static_cast<const unsigned char *>([data bytes]), int([data length]));
    return true;
}

void answer(const drags::Names &names, const XSelectionRequestEvent &request)
{
    const Atom place = request.property == None ? request.target : request.property;
    XEvent reply = {};
    reply.xselection = {.type = SelectionNotify,
                        .serial = 0,
                        .send_event = True,
                        .display = names.display(),
                        .requestor = request.requestor,
                        .selection = request.selection,
                        .target = request.target,
                        .property = handOver(names, request, place) ? place : None,
                        .time = request.time};
    XSendEvent(names.display(), request.requestor, False, NoEventMask, &reply);
    XFlush(names.display());
}

using Process = void (*)(id, SEL, XEvent *);
Process process;
drags::Incoming *incoming;

/// Whether the event was a drag's, and needs no further processing yet.
bool isTaken(id server, SEL command, const XEvent &event)
{
    // AppKit draws on one display.
    static const drags::Names names(event.xany.display);
    if (!incoming)
        incoming = new drags::Incoming(names, [=](XEvent &kept) { process(server, command, &kept); });
    if (event.type != SelectionRequest)
        return incoming->takes(event);
    if (event.xselectionrequest.selection != names[drags::kSelection])
        return false;
    answer(names, event.xselectionrequest);
    return true;
}

void processWithDrags(id server, SEL command, XEvent *event)
{
    bool isDone = false;
    switch (event->type) {
    case ClientMessage:
    case SelectionRequest:
    case SelectionNotify:
    case DestroyNotify:
    case PropertyNotify: attempt([&] { isDone = isTaken(server, command, *event); });
    }
    if (!isDone)
        process(server, command, event);
}

}  // namespace

@interface Drags : NSObject
@end

@implementation Drags

+ (void)load
{
    Pool pool;
    NSNotificationCenter *center = [NSNotificationCenter defaultCenter];
    [center addObserver:self selector:@selector(bundleIsLoaded:) name:NSBundleDidLoadNotification object:nil];
    [center addObserver:self
               selector:@selector(applicationEnds:)
                   name:NSApplicationWillTerminateNotification
                 object:nil];
}

// gnustep-back looks up once what processes its events, when it starts.
+ (void)bundleIsLoaded:(NSNotification *)notification
{
    (void)notification;
    Method method = class_getInstanceMethod(NSClassFromString(@"XGServer"), @selector(processEvent:));
    if (method && !process)
        process = replacedMethod(method, &processWithDrags);
}

+ (void)applicationEnds:(NSNotification *)notification
{
    (void)notification;
    if (incoming)
        attempt([] { incoming->end(); });
}

@end

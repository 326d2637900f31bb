/// \file
/// From an event to the handlers that are installed for it.
#pragma once
#include <Carbon/AppleEvents.h>

namespace tarvik::ae {

/// Calls the handlers that the event is for; its result is the last one's. An error is put into the reply, unless that is null.
OSErr dispatch(const AppleEvent *event, AppleEvent *reply);
/// Calls one handler as dispatch does.
OSErr dispatchTo(AEEventHandlerUPP handler, SRefCon refcon, const AppleEvent *event, AppleEvent *reply);
/// Whether the application has installed a handler that an event would be given to.
bool hasHandler(AEEventClass eventClass, AEEventID eventID);

/// An empty reply to the event. Throws std::bad_alloc.
OSErr newReply(const AppleEvent *event, AppleEvent *reply);

}  // namespace tarvik::ae

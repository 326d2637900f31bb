/// \file
/// A handler is somebody else's code: nothing that it throws may pass.
#pragma once
#include <Carbon/AppleEvents.h>

#include <string>

namespace tarvik::ae {

/// Calls a handler in a pool; an exception gives errAEEventFailed and its reason.
OSErr guardedCall(AEEventHandlerUPP handler, SRefCon refcon, const AppleEvent *event, AppleEvent *reply,
                  std::string &reason);

}  // namespace tarvik::ae

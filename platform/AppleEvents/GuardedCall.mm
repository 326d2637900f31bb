#include "platform/AppleEvents/private/GuardedCall.h"

#import <Tarvik/support/Bridge.h>
#import <Tarvik/support/Guard.h>
#import <Tarvik/support/Pool.h>

namespace tarvik::ae {

OSErr guardedCall(AEEventHandlerUPP handler, SRefCon refcon, const AppleEvent *event, AppleEvent *reply,
                  std::string &reason)
{
    Pool pool;
    Retained<NSException *> raised;
    OSErr error = noErr;
    if (attempt([&] { error = handler(event, reply, refcon); }, &raised))
        return error;
    reason = utf8([raised.get() reason]).value_or("");
    return errAEEventFailed;
}

}  // namespace tarvik::ae

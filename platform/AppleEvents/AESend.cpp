#include "platform/AppleEvents/private/Addresses.h"
#include "platform/AppleEvents/private/Dispatch.h"
#include "platform/AppleEvents/private/Storage.h"

#include <Carbon/AEInteraction.h>
#include <Carbon/AEMach.h>

using namespace tarvik;
using namespace tarvik::ae;

namespace {

constexpr AESendMode kReplyModes = 3;

/// The handler is called here and now.
OSStatus sendToSelf(const AppleEvent *event, AppleEvent *reply, AESendMode mode)
{
    Event &held = *eventOf(event);
    held.source = kAEDirectCall;
    held.replyRequested = mode != kAENoReply;
    held.ticket = 0;
    OwnedDesc answer;
    if (mode != kAENoReply)
        if (const OSErr error = withMemory([&] { return newReply(event, answer.out()); }))
            return error;
    const OSErr error = dispatch(event, answer.get());
    if (mode != kAENoReply)
        *reply = answer.release();
    return error == errAEEventNotHandled ? error : OSErr(noErr);
}

}  // namespace

OSStatus AESend(const AppleEvent *theAppleEvent, AppleEvent *reply, AESendMode sendMode, AESendPriority, SInt32, AEIdleUPP, AEFilterUPP)
{
    AEInitializeDesc(reply);
    const AESendMode replyMode = sendMode & kReplyModes;
    if (!theAppleEvent || (!reply && replyMode != kAENoReply))
        return paramErr;
    if (!eventOf(theAppleEvent))
        return errAENotAppleEvent;
    if (replyMode == 0)
        return errAEUnknownSendMode;
    Address address;
    if (const OSErr error = resolve(*eventOf(theAppleEvent), address))
        return error;
    return address.isSelf ? sendToSelf(theAppleEvent, reply, replyMode) : OSStatus(procNotFound);
}

OSStatus AESendMessage(const AppleEvent *event, AppleEvent *reply, AESendMode sendMode, long timeOutInTicks)
{
    return AESend(event, reply, sendMode, kAENormalPriority, SInt32(timeOutInTicks), nullptr, nullptr);
}

/// AEMach.h: AESend without its interaction: for a thread or a tool.
#pragma once

#include <Carbon/AEInteraction.h>

#ifdef __cplusplus
extern "C" {
#endif

/// AESend with normal priority and neither idle nor filter function.
OSStatus AESendMessage(const AppleEvent *event, AppleEvent *reply, AESendMode sendMode, long timeOutInTicks);

#ifdef __cplusplus
}
#endif

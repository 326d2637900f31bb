/// \file
/// The session's system process: what an event to it asks for is asked of the login manager and of the desktop's session manager.
///
///     'aevt' 'rest', 'shut', 'slep'   org.freedesktop.login1 (system bus): Reboot, PowerOff, Suspend, when its Can... says so
///     'aevt' 'logo', 'rlgo'           org.gnome.SessionManager (session bus), which most desktops have: Logout, with and without a question
#pragma once
#include "platform/AppleEvents/private/Storage.h"

namespace tarvik::ae {

/// Hands the request over without waiting for what comes of it. errAEEventNotHandled: an event that it doesn't know, or that this machine
/// can't do; procNotFound: nobody who could; permErr: the user may not.
OSErr sendToSystemProcess(const Event &event);

}  // namespace tarvik::ae

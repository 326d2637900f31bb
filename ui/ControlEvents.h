/// \file
/// Events about controls.
///
///     const EventTypeSpec hits[] = {EventTypeSpecMake(kEventClassCommand, kEventCommandProcess)};
///     ... in the handler: switch (EventGetControlCommandID(event)) { case 'save': ...
///
/// Thread: main.
#pragma once
#include <Carbon/CarbonEvents.h>
#include <Carbon/Controls.h>

#ifdef __cplusplus
extern "C" {
#endif

/// The command of the control that the event is about (its direct object); 0 without one.
UInt32 EventGetControlCommandID(EventRef event);
EventTypeSpec EventTypeSpecMake(UInt32 eventClass, UInt32 eventKind);

#ifdef __cplusplus
}
#endif

/// Events.h: the record in which the older event loop hands out an event.
#pragma once

#include <Carbon/MacTypes.h>

typedef UInt16 EventKind;
typedef UInt16 EventMask;
typedef UInt16 EventModifiers;

enum {
    nullEvent       = 0,
    kHighLevelEvent = 23 ///< an Apple event waits: AEProcessAppleEvent
};

struct EventRecord {
    EventKind what;
    unsigned long message;
    UInt32 when; ///< ticks
    Point where;
    EventModifiers modifiers;
};
typedef struct EventRecord EventRecord;

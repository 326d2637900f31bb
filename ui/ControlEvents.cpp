#include <Tarvik/ui/ControlEvents.h>

UInt32 EventGetControlCommandID(EventRef event)
{
    ControlRef control = nullptr;
    UInt32 command = 0;
    if (!event || GetEventParameter(event, kEventParamDirectObject, typeControlRef, nullptr, sizeof control,
                                    nullptr, &control) != noErr)
        return 0;
    return control && GetControlCommandID(control, &command) == noErr ? command : 0;
}

EventTypeSpec EventTypeSpecMake(UInt32 eventClass, UInt32 eventKind) { return {eventClass, eventKind}; }
